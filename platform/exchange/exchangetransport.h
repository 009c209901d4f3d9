#pragma once

#include "command.h"

#include <functional>

// Where the queries of the exchange go: the console's server, or a test's fake.
class ExchangeTransport
{
public:
    virtual ~ExchangeTransport() = default;
    // Sends a query; must call reply exactly once, later, on the GUI thread.
    virtual void send(const Command& query, std::function<void(Command&)> reply) = 0;
};
