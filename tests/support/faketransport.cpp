#include "faketransport.h"

#include "vdserverinterface.h"

#include <QTest>
#include <QTimer>

FakeTransport::FakeTransport()
{
    VDServerInterface::instance()->setTransport(this);
}

FakeTransport::~FakeTransport()
{
    if (VDServerInterface::instance()->transport() == this)
        VDServerInterface::instance()->setTransport(nullptr);
}

void FakeTransport::send(const Command& query, std::function<void(Command&)> reply)
{
    m_queries.append({query, std::move(reply), false});
    if (m_autoAnswer) {
        const int index = m_queries.size() - 1;
        const int status = m_autoStatus;
        QTimer::singleShot(0, [this, index, status] {
            if (index < m_queries.size() && !m_queries[index].answered) {
                Query& q = m_queries[index];
                q.answered = true;
                Command answer = q.command;
                answer.status = status;
                answer.data.clear();
                q.reply(answer);
            }
        });
    }
}

QList<Command> FakeTransport::sent(const QString& name) const
{
    QList<Command> commands;
    for (const Query& q : m_queries) {
        if (q.command.name == name)
            commands.append(q.command);
    }
    return commands;
}

int FakeTransport::count(const QString& name) const
{
    return sent(name).size();
}

FakeTransport::Query* FakeTransport::pending(const QString& name)
{
    for (Query& q : m_queries) {
        if (!q.answered && q.command.name == name)
            return &q;
    }
    return nullptr;
}

bool FakeTransport::answer(const QString& name, int status, const std::function<void(VDDataStream&)>& write)
{
    Query* q = pending(name);
    if (!q) {
        qWarning("FakeTransport: no unanswered query named %s", qPrintable(name));
        return false;
    }
    q->answered = true;
    Command answer = q->command;
    answer.status = status;
    answer.data.clear();
    if (write) {
        VDDataStream out(&answer.data, QIODevice::WriteOnly);
        write(out);
    }
    // The reply function may append queries: keep a copy of it.
    const auto reply = q->reply;
    reply(answer);
    return true;
}

void FakeTransport::answerAll(int status)
{
    for (int i = 0; i < m_queries.size(); ++i) {
        if (m_queries[i].answered)
            continue;
        m_queries[i].answered = true;
        Command answer = m_queries[i].command;
        answer.status = status;
        answer.data.clear();
        const auto reply = m_queries[i].reply;
        reply(answer);
    }
}

void FakeTransport::setAutoAnswer(bool on, int status)
{
    m_autoAnswer = on;
    m_autoStatus = status;
}
