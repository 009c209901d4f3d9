#include "netbench.h"

#include "constants.h"
#include "rights.h"
#include "seeddata.h"
#include "serverclient.h"
#include "storemirror.h"
#include "vddatastream.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSet>
#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <unistd.h>

using vorandel::INHERIT_DATA;
using vorandel::ObjectInfo;
using vorandel::TYPE_ID;

namespace {
// The office's consoles, which raise the requests and then only read; every other console is an
// approver's, the approvers taking turns.
constexpr int OfficeConsoles = 2;
const QStringList Approvers = {QStringLiteral("petrov"), QStringLiteral("sidorova"), QStringLiteral("kozlov")};

Command query(const QString& name, const QByteArray& payload)
{
    Command command;
    command.type = 8;
    command.name = name;
    command.data = payload;
    return command;
}

template <typename... Values>
QByteArray payload(const Values&... values)
{
    QByteArray bytes;
    VDDataStream out(&bytes, QIODevice::WriteOnly);
    (out << ... << values);
    return bytes;
}

QString failureText(const Command& answer)
{
    QString text;
    VDDataStream in(answer.data);
    in >> text;
    return text;
}

double ms(qint64 ns)
{
    return double(ns) / 1e6;
}

// The value below which `share` of the figures lie.
qint64 percentile(QVector<qint64> values, double share)
{
    if (values.isEmpty())
        return 0;
    std::sort(values.begin(), values.end());
    const int index = std::min(int(values.size()) - 1, int(share * values.size()));
    return values.at(index);
}

QString distribution(const QVector<qint64>& ns)
{
    return QStringLiteral("p50 %1 ms, p99 %2 ms, max %3 ms")
        .arg(ms(percentile(ns, 0.50)), 0, 'f', 2)
        .arg(ms(percentile(ns, 0.99)), 0, 'f', 2)
        .arg(ms(percentile(ns, 1.0)), 0, 'f', 2);
}

// Processor time of a process so far, from the kernel's accounts.
qint64 processorMs(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray line = stat.readAll();
    // The fields after the command's name, which is in parentheses and may hold spaces.
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 13)
        return -1;
    const qint64 ticks = fields.at(11).toLongLong() + fields.at(12).toLongLong();
    return ticks * 1000 / ::sysconf(_SC_CLK_TCK);
}
}  // namespace

struct NetBench::Console
{
    QString login;
    std::unique_ptr<vdserver::ServerClient> client;
    std::unique_ptr<vdserver::StoreMirror> mirror;
    bool approver = false;
    bool done = false;
    int readsLeft = 0;
    QSet<TYPE_ID> arrived;  // decided requests that its store holds confirmed
};

NetBench::NetBench(const Options& options) : m_options(options)
{
    m_clock.start();
}

NetBench::~NetBench()
{
    m_consoles.clear();
    if (m_server.state() != QProcess::NotRunning) {
        m_server.terminate();
        if (!m_server.waitForFinished(10000))
            m_server.kill();
    }
}

int NetBench::run()
{
    QTextStream out(stdout);
    if (!startServer() || !connectConsoles() || !raiseRequests())
        return 1;
    out << QStringLiteral("%1 consoles on 127.0.0.1:%2, %3 requests to decide\n")
               .arg(m_consoles.size())
               .arg(m_port)
               .arg(m_decisions.size())
        << Qt::flush;
    decideAndRead();
    report();
    return m_decided == m_options.decisions ? 0 : 1;
}

bool NetBench::startServer()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), m_folder.path());
    m_server.setProcessEnvironment(environment);
    m_server.setStandardErrorFile(m_folder.filePath(QStringLiteral("vdserver.log")));
    m_server.start(m_options.serverBinary,
                   {"--listen", "127.0.0.1:0", "--database", m_folder.filePath(QStringLiteral("store.sqlite")),
                    "--requests", QString::number(m_options.seedRequests)});
    static const QRegularExpression Listening(QStringLiteral("listening on 127\\.0\\.0\\.1:(\\d+)"));
    QString said;
    const QDeadlineTimer deadline(120000);
    while (!deadline.hasExpired() && m_server.state() != QProcess::NotRunning) {
        m_server.waitForReadyRead(100);
        said += QString::fromUtf8(m_server.readAllStandardOutput());
        const QRegularExpressionMatch match = Listening.match(said);
        if (match.hasMatch()) {
            m_port = quint16(match.captured(1).toUInt());
            return true;
        }
    }
    QTextStream(stderr) << "vdserver did not start: " << m_server.errorString() << "\n" << said << Qt::endl;
    return false;
}

bool NetBench::connectConsoles()
{
    for (int i = 0; i < m_options.clients; ++i) {
        auto console = std::make_unique<Console>();
        console->approver = i >= OfficeConsoles;
        console->login = console->approver ? Approvers.at((i - OfficeConsoles) % Approvers.size())
                                           : QStringLiteral("operator");
        console->client = std::make_unique<vdserver::ServerClient>(QStringLiteral("127.0.0.1"), m_port);
        console->mirror = std::make_unique<vdserver::StoreMirror>(console->client.get());
        m_consoles.push_back(std::move(console));
    }
    int loggedIn = 0;
    QString refusal;
    for (auto& console : m_consoles) {
        console->client->logIn(console->login, vdserver::SeedData::demoPassword(console->login),
                               [&](const vdserver::ServerClient::LoginResult& result) {
                                   ++loggedIn;
                                   if (!result.ok())
                                       refusal = result.error;
                               });
    }
    if (!waitUntil([&] { return loggedIn == int(m_consoles.size()); }, 120000) || !refusal.isEmpty()) {
        QTextStream(stderr) << "the consoles could not log in: " << refusal << Qt::endl;
        return false;
    }
    for (auto& console : m_consoles)
        console->mirror->follow();
    if (!waitUntil([&] {
            return std::all_of(m_consoles.cbegin(), m_consoles.cend(), [](const auto& c) { return c->mirror->isSynced(); });
        }, 120000)) {
        QTextStream(stderr) << "the consoles did not get their copies of the store" << Qt::endl;
        return false;
    }
    for (const ObjectInfo& worker : *m_consoles.front()->mirror->objects(vorandel::SUBJECT_DATANAME))
        m_workers.append(worker.uid);
    for (auto& console : m_consoles)
        watchArrivals(*console);
    return !m_workers.isEmpty();
}

bool NetBench::raiseRequests()
{
    Console& office = *m_consoles.front();
    // The confirm lists of the demo set, each with the login of its first approver and who stands on it.
    struct List
    {
        TYPE_ID uid = 0;
        QString first;
        QSet<unsigned int> members;
    };
    QHash<unsigned int, QString> logins;
    for (const ObjectInfo& user : *office.mirror->objects(vorandel::USER_DATANAME))
        logins.insert(user.uid, user.parameters.value(QStringLiteral("PT_LOGIN")));
    QVector<List> lists;
    for (const ObjectInfo& object : *office.mirror->objects(vorandel::CONFIRM_LIST_DATANAME)) {
        QList<INHERIT_DATA> chain = object.inherits.values(vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST);
        std::sort(chain.begin(), chain.end(), vorandel::SortInheritDataByPriority);
        if (chain.isEmpty() || !Approvers.contains(logins.value(chain.first().second)))
            continue;
        List list{object.uid, logins.value(chain.first().second), {}};
        for (const INHERIT_DATA& member : chain)
            list.members.insert(member.second);
        lists.append(list);
    }
    if (lists.isEmpty()) {
        QTextStream(stderr) << "the demo set has no confirm lists" << Qt::endl;
        return false;
    }

    // Raised all at once: the office's console waits for none of the answers before the next.
    int answered = 0;
    QString failure;
    for (int i = 0; i < m_options.decisions; ++i) {
        const List& list = lists.at(i % lists.size());
        ObjectInfo request;
        request.type = db::misc::PASS_REQUEST;
        request.parameters = {{db::pass_request::STATE, QStringLiteral("0")},
                              {db::pass_request::PASSID, QStringLiteral("П-НАГР-%1").arg(i + 1, 5, 10, QLatin1Char('0'))},
                              {db::pass_request::CONFIRM_LIST, QString::number(list.uid)}};
        office.client->send(query(QStringLiteral("data.addObject"), payload(office.client->session().sessionId, request)),
                            [&, list](Command& answer) {
                                ++answered;
                                if (!answer.ok()) {
                                    failure = failureText(answer);
                                    return;
                                }
                                int uid = 0;
                                VDDataStream in(answer.data);
                                in >> uid;
                                Decision decision;
                                decision.request = TYPE_ID(uid);
                                decision.chain = list.members;
                                decision.receivers = int(std::count_if(
                                    m_consoles.cbegin(), m_consoles.cend(),
                                    [&](const auto& console) { return maySee(*console, decision); }));
                                m_decisions.insert(decision.request, decision);
                                m_queues[list.first].append(decision.request);
                            });
    }
    if (!waitUntil([&] { return answered == m_options.decisions; }, 300000) || !failure.isEmpty()) {
        QTextStream(stderr) << "the office could not raise the requests: " << failure << Qt::endl;
        return false;
    }
    // Every console holds what it may see of them before the clock starts.
    return waitUntil(
        [this] {
            for (const auto& console : m_consoles) {
                const vorandel::OBJECT_HASH* requests = console->mirror->objects(vorandel::PASS_REQUEST_DATANAME);
                for (const Decision& decision : qAsConst(m_decisions)) {
                    if (maySee(*console, decision) && !requests->contains(decision.request))
                        return false;
                }
            }
            return true;
        },
        120000);
}

bool NetBench::maySee(const Console& console, const Decision& decision)
{
    const vdserver::Session& session = console.client->session();
    return session.roles.contains(vdserver::Rights::ShowAll) || decision.chain.contains(session.userId);
}

void NetBench::watchArrivals(Console& console)
{
    QObject::connect(console.mirror.get(), &vdserver::StoreMirror::objectsChanged, console.mirror.get(),
                     [this, &console](const QString& dataname, const QList<ObjectInfo>& objects) {
                         if (dataname != vorandel::PASS_REQUEST_DATANAME)
                             return;
                         const qint64 now = m_clock.nsecsElapsed();
                         for (const ObjectInfo& object : objects) {
                             const auto decision = m_decisions.find(object.uid);
                             if (decision == m_decisions.end() || decision->sentNs == 0
                                 || !object.inherits.contains(vorandel::INHERIT_CONFIRMED_LIST_PASS_REQUEST)
                                 || console.arrived.contains(object.uid))
                                 continue;
                             console.arrived.insert(object.uid);
                             ++decision->received;
                             decision->lastReceivedNs = std::max(decision->lastReceivedNs, now);
                         }
                     });
}

void NetBench::decideAndRead()
{
    const qint64 serverBefore = processorMs(m_server.processId());
    const qint64 ownBefore = processorMs(QCoreApplication::applicationPid());
    m_phaseStartNs = m_clock.nsecsElapsed();
    for (auto& console : m_consoles)
        nextStep(*console);
    const bool finished = waitUntil(
        [this] {
            const bool allDone = std::all_of(m_consoles.cbegin(), m_consoles.cend(), [](const auto& c) { return c->done; });
            return allDone && std::all_of(m_decisions.cbegin(), m_decisions.cend(), [](const Decision& d) {
                       return d.received >= d.receivers;
                   });
        },
        600000);
    m_phaseEndNs = m_clock.nsecsElapsed();
    if (!finished)
        QTextStream(stderr) << "the consoles did not finish in ten minutes" << Qt::endl;
    const qint64 serverMs = processorMs(m_server.processId()) - serverBefore;
    const qint64 ownMs = processorMs(QCoreApplication::applicationPid()) - ownBefore;
    QTextStream(stdout) << QStringLiteral("processor time: vdserver %1 ms, the consoles %2 ms\n").arg(serverMs).arg(ownMs);
}

void NetBench::nextStep(Console& console)
{
    if (console.done)
        return;
    if (console.approver && console.readsLeft == 0) {
        QVector<TYPE_ID>& queue = m_queues[console.login];
        if (queue.isEmpty()) {
            console.done = true;
            return;
        }
        const TYPE_ID uid = queue.takeFirst();
        const unsigned int user = console.client->session().userId;
        INHERIT_DATA decision(uid, user, vorandel::INHERIT_CONFIRMED_LIST_PASS_REQUEST);
        const ObjectInfo request = console.mirror->objects(vorandel::PASS_REQUEST_DATANAME)->value(uid);
        for (const INHERIT_DATA& member : request.inherits.values(vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST)) {
            if (member.second == user)
                decision.priority = member.priority;
        }
        console.readsLeft = m_options.readsPerDecision;
        sendTimed(console, QStringLiteral("data.addObjectInherits"),
                  payload(console.client->session().sessionId, QList<INHERIT_DATA>{decision}), true, uid);
        return;
    }
    if (!console.approver && m_decided >= m_options.decisions) {
        console.done = true;
        return;
    }
    console.readsLeft = std::max(0, console.readsLeft - 1);
    const unsigned int worker = m_workers.at(int(QRandomGenerator::global()->bounded(m_workers.size())));
    sendTimed(console, QStringLiteral("data.getUserFingers"),
              payload(console.client->session().sessionId, QList<unsigned int>{worker}), false, 0);
}

void NetBench::sendTimed(Console& console, const QString& name, const QByteArray& data, bool decision, TYPE_ID request)
{
    const qint64 sent = m_clock.nsecsElapsed();
    if (decision)
        m_decisions[request].sentNs = sent;
    console.client->send(query(name, data), [this, &console, sent, decision, request](Command& answer) {
        const qint64 now = m_clock.nsecsElapsed();
        if (!answer.ok()) {
            QTextStream(stderr) << console.login << ": " << answer.name << " refused: " << failureText(answer) << Qt::endl;
            console.done = true;
            return;
        }
        if (decision) {
            m_decisionTripsNs.append(now - sent);
            m_decisions[request].answeredNs = now;
            ++m_decided;
        } else {
            m_readTripsNs.append(now - sent);
        }
        nextStep(console);
    });
}

void NetBench::report() const
{
    const double seconds = double(m_phaseEndNs - m_phaseStartNs) / 1e9;
    const int queries = m_decisionTripsNs.size() + m_readTripsNs.size();
    QVector<qint64> fromQuery;
    QVector<qint64> fromAnswer;
    for (const Decision& decision : m_decisions) {
        if (decision.received < decision.receivers || decision.answeredNs == 0)
            continue;
        fromQuery.append(decision.lastReceivedNs - decision.sentNs);
        fromAnswer.append(std::max<qint64>(0, decision.lastReceivedNs - decision.answeredNs));
    }
    QTextStream out(stdout);
    out << QStringLiteral("decisions %1, reads %2 in %3 s\n").arg(m_decisionTripsNs.size()).arg(m_readTripsNs.size()).arg(seconds, 0, 'f', 2);
    out << QStringLiteral("throughput: %1 queries/s (%2 decisions/s)\n")
               .arg(queries / seconds, 0, 'f', 0)
               .arg(m_decisionTripsNs.size() / seconds, 0, 'f', 0);
    QVector<qint64> all = m_decisionTripsNs + m_readTripsNs;
    out << "round trip, all queries: " << distribution(all) << "\n";
    out << "round trip, decisions:   " << distribution(m_decisionTripsNs) << "\n";
    out << "round trip, reads:       " << distribution(m_readTripsNs) << "\n";
    // The server commits a decision before it answers, and pushes it to every console right after.
    out << "commit to the last console's store, counted from the decider's answer: " << distribution(fromAnswer) << "\n";
    out << "the same, counted from the decision's query:                      " << distribution(fromQuery) << "\n";
    out << Qt::flush;
}

bool NetBench::waitUntil(const std::function<bool()>& done, int msecs) const
{
    // Sleeps between events, so that the consoles take no processor time from the server; the
    // timer wakes it up to look at the deadline.
    const QDeadlineTimer deadline(msecs);
    QTimer wakeUp;
    wakeUp.start(50);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}
