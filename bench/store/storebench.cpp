#include "storebench.h"

#include "benchlogging.h"
#include "console.h"
#include "constants.h"
#include "localstorage.h"
#include "mainwindow.h"
#include "paintwatcher.h"
#include "requestworkflow.h"
#include "server.h"
#include "settings.h"
#include "vddatastream.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QScopeGuard>
#include <QTableView>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <optional>

#include <sys/resource.h>

using namespace vorandel;

namespace {
// The approver whose turn the timed confirmations are.
const QString Approver = QStringLiteral("petrov");
constexpr int ChildTimeoutMs = 20 * 60 * 1000;
constexpr int PaintTimeoutMs = 120 * 1000;
constexpr int DecisionTimeoutMs = 10 * 1000;

void print(const QString& line)
{
    QTextStream(stdout) << line << Qt::endl;
}

int fail(const QString& text)
{
    QTextStream(stderr) << text << Qt::endl;
    return 1;
}

// The processor time of the whole process so far, all its threads: on a machine that others share,
// a steadier figure than the clock's.
qint64 processorMs()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto ms = [](const timeval& time) { return qint64(time.tv_sec) * 1000 + time.tv_usec / 1000; };
    return ms(usage.ru_utime) + ms(usage.ru_stime);
}

double median(QVector<double> values)
{
    std::sort(values.begin(), values.end());
    const int middle = values.size() / 2;
    return values.size() % 2 ? values.at(middle) : (values.at(middle - 1) + values.at(middle)) / 2;
}

// Requests whose turn on the chain is the approver's, with his link to confirm them by.
QVector<INHERIT_DATA> turnsOf(const vdserver::Server& server, TYPE_ID approver)
{
    QVector<INHERIT_DATA> turns;
    for (const ObjectInfo& request : *server.objects(PASS_REQUEST_DATANAME)) {
        if (request.inherits.contains(INHERIT_REJECTED_LIST_PASS_REQUEST))
            continue;
        const QList<INHERIT_DATA> chain = vdserver::RequestWorkflow::chain(request);
        const int turn = request.inherits.count(INHERIT_CONFIRMED_LIST_PASS_REQUEST);
        if (turn < chain.size() && chain.at(turn).second == approver)
            turns.append(INHERIT_DATA(request.uid, approver, INHERIT_CONFIRMED_LIST_PASS_REQUEST,
                                      chain.at(turn).priority));
    }
    return turns;
}
}  // namespace

StoreBench::StoreBench(const QString& database, int requests, int decisions)
    : m_database(database), m_requests(requests), m_decisions(decisions)
{
}

int StoreBench::run()
{
    const QTemporaryDir folder;
    const QString database = m_database.isEmpty() ? folder.filePath(QStringLiteral("store.sqlite")) : m_database;
    QString error;
    const std::optional<vdserver::StoreLocation> location = vdserver::StoreLocation::parse(database, &error);
    if (!location)
        return fail(error);
    print(QStringLiteral("# storebench store=%1").arg(location->displayName()));
    {
        vdserver::Server server;
        if (!server.open(*location))
            return fail(server.errorString());
        if (server.isNewStore()) {
            QElapsedTimer clock;
            clock.start();
            if (!server.seed({m_requests}))
                return fail(server.errorString());
            print(QStringLiteral("seeding_ms=%1 requests=%2 workers=%3")
                      .arg(clock.elapsed())
                      .arg(server.objects(PASS_REQUEST_DATANAME)->size())
                      .arg(server.objects(SUBJECT_DATANAME)->size()));
        } else {
            print(QStringLiteral("# the store holds %1 requests already; not seeded")
                      .arg(server.objects(PASS_REQUEST_DATANAME)->size()));
        }
    }

    // The figures come from a process that has done nothing before, as a console that starts.
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedChannels);
    child.start(QCoreApplication::applicationFilePath(),
                {QStringLiteral("--measure"), QStringLiteral("--database"), database, QStringLiteral("--decisions"),
                 QString::number(m_decisions)});
    if (!child.waitForFinished(ChildTimeoutMs) || child.exitStatus() != QProcess::NormalExit) {
        child.kill();
        return fail(QStringLiteral("The measuring process did not finish."));
    }
    if (child.exitCode() != 0)
        return child.exitCode();
    if (location->engine() == vdserver::StoreLocation::Engine::SQLite) {
        const qint64 bytes = QFileInfo(location->path()).size()
            + QFileInfo(location->path() + QStringLiteral("-wal")).size();
        print(QStringLiteral("file_mb=%1").arg(double(bytes) / (1024 * 1024), 0, 'f', 1));
    }
    return 0;
}

int StoreBench::measure()
{
    // The tab saves its header layout; the user's own settings stay untouched.
    const QTemporaryDir settingsDir;
    Settings::setFileName(settingsDir.filePath(QStringLiteral("settings.ini")));
    const auto done = qScopeGuard([] { Settings::setFileName({}); });

    QString error;
    ConsoleOptions options;
    options.database = vdserver::StoreLocation::parse(m_database, &error);
    options.pluginDir = QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("plugins"));
    if (!options.database)
        return fail(error);

    QElapsedTimer clock;
    clock.start();
    const qint64 processorAtStart = processorMs();
    Console console(options);
    if (!console.logIn())
        return fail(console.errorString());
    const qint64 opened = clock.elapsed();
    const qint64 openedProcessor = processorMs() - processorAtStart;
    console.start();
    QTableView* table = console.window()->findChild<QTableView*>();
    if (!table)
        return fail(QStringLiteral("The console shows no table: are the plug-ins in %1?").arg(options.pluginDir));
    const PaintWatcher painted(table->viewport());
    const QDeadlineTimer paintDeadline(PaintTimeoutMs);
    while (!painted.painted() && !paintDeadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    if (!painted.painted())
        return fail(QStringLiteral("The table was not painted."));
    print(QStringLiteral("open_ms=%1 first_paint_ms=%2 rows=%3 (processor time: open %4 ms, to the first paint %5 ms)")
              .arg(opened)
              .arg(clock.elapsed())
              .arg(table->model()->rowCount())
              .arg(openedProcessor)
              .arg(processorMs() - processorAtStart));

    vdserver::Server& server = console.server();
    const std::optional<vdserver::Session> session = server.login(Approver);
    if (!session)
        return fail(QStringLiteral("The store has no approver %1.").arg(Approver));
    const QVector<INHERIT_DATA> turns = turnsOf(server, session->userId);
    QVector<double> decisions;
    for (const INHERIT_DATA& decision : turns) {
        if (decisions.size() == m_decisions)
            break;
        Command query;
        query.name = QStringLiteral("data.addObjectInherits");
        query.type = 8;
        VDDataStream out(&query.data, QIODevice::WriteOnly);
        out << session->sessionId << QList<INHERIT_DATA>{decision};

        bool answered = false;
        bool shown = false;
        const QMetaObject::Connection watch = QObject::connect(
            LocalStorage::instance(), &LocalStorage::dataChanged,
            [&](const QString& dataname, const QList<TYPE_ID>& uids) {
                shown = shown || (dataname == PASS_REQUEST_DATANAME && uids.contains(decision.first));
            });
        QElapsedTimer roundTrip;
        roundTrip.start();
        server.send(query, [&](Command& answer) {
            answered = true;
            if (!answer.ok())
                qCWarning(lcBench) << "fail: the decision on" << decision.first << "was refused";
        });
        const QDeadlineTimer deadline(DecisionTimeoutMs);
        while (!shown && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 5);
        QObject::disconnect(watch);
        if (!answered || !shown)
            return fail(QStringLiteral("The decision on %1 did not come back.").arg(decision.first));
        decisions.append(double(roundTrip.nsecsElapsed()) / 1e6);
    }
    if (decisions.isEmpty())
        return fail(QStringLiteral("No request waits for %1.").arg(Approver));
    print(QStringLiteral("decision_ms=%1 decisions=%2 (median; max %3)")
              .arg(median(decisions), 0, 'f', 1)
              .arg(decisions.size())
              .arg(*std::max_element(decisions.cbegin(), decisions.cend()), 0, 'f', 1));
    return 0;
}
