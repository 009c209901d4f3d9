#pragma once

#include "exchangetransport.h"

// An exchange with nobody behind it: every query is answered, in a later turn of the event loop,
// with success and no payload. The tab asks for photos as rows get selected; the benchmark
// measures the table, not a server. Installs itself for its lifetime.
class NullTransport : public ExchangeTransport
{
public:
    NullTransport();
    ~NullTransport() override;

    void send(const Command& query, std::function<void(Command&)> reply) override;
};
