#pragma once

#include "exchangetransport.h"
#include "vddatastream.h"

#include <QList>
#include <QString>

#include <functional>

// An exchange transport for tests: it records every query and leaves the answer to the test.
// Installs itself on the process-wide server interface for its lifetime.
class FakeTransport : public ExchangeTransport
{
public:
    struct Query
    {
        Command command;
        std::function<void(Command&)> reply;
        bool answered = false;
    };

    FakeTransport();
    ~FakeTransport() override;

    void send(const Command& query, std::function<void(Command&)> reply) override;

    const QList<Query>& queries() const { return m_queries; }
    // Queries of that name, oldest first.
    QList<Command> sent(const QString& name) const;
    int count(const QString& name) const;
    void clear() { m_queries.clear(); }
    // The oldest unanswered query of that name; fails the test if there is none.
    Query* pending(const QString& name);

    // Answers the oldest unanswered query of that name with a status and a payload written by
    // `write` (nothing when empty). The answer arrives at once; callers drain the event loop.
    bool answer(const QString& name, int status, const std::function<void(VDDataStream&)>& write = {});
    // Answers every unanswered query with the same status and no payload.
    void answerAll(int status);

    // Answers every query on arrival with this status (later, through the event loop).
    void setAutoAnswer(bool on, int status = Command::StatusOk);

private:
    QList<Query> m_queries;
    bool m_autoAnswer = false;
    int m_autoStatus = Command::StatusOk;
};

// Reads a payload the way the receiving side would.
template <typename... Args>
void readPayload(const Command& command, Args&... args)
{
    VDDataStream in(command.data);
    (in >> ... >> args);
}
