#include "constants.h"
#include "dbquery.h"
#include "desk.h"
#include "framereader.h"
#include "server.h"
#include "serverprocess.h"
#include "wire.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QtEndian>
#include <QtTest>

using namespace vorandel;
using vdserver::FrameReader;

namespace {
const QString Visitor = QStringLiteral("Разовый пропуск посетителя");  // petrov, then sidorova
const QString CarNumber = QStringLiteral("PT_CAR_NUMBER");
// The identity of a plug-in that runs at two desks of one machine.
const QString PluginIdentity = QStringLiteral("requestview:desk.local:1764000000");

ObjectInfo record(TYPE_ID uid, const QString& type, const QHash<QString, QString>& parameters = {})
{
    ObjectInfo object;
    object.uid = uid;
    object.type = type;
    object.parameters = parameters;
    return object;
}

ObjectInfo newRequest(const Desk& desk, const QString& list)
{
    const ObjectInfo confirmList = desk.find(CONFIRM_LIST_DATANAME, QStringLiteral("PT_NAME"), list);
    return record(0, db::misc::PASS_REQUEST,
                  {{db::pass_request::STATE, QStringLiteral("0")},
                   {db::pass_request::PASSID, QStringLiteral("П-СЕТЬ-%1").arg(QDateTime::currentMSecsSinceEpoch())},
                   {db::pass_request::CONFIRM_LIST, QString::number(confirmList.uid)}});
}

// A connection made by hand, frame by frame, as anybody on the network may make one. It waits in
// the event loop, so that the consoles beside it go on with their lives meanwhile.
class RawConnection
{
public:
    explicit RawConnection(quint16 port) { m_socket.connectToHost(QStringLiteral("127.0.0.1"), port); }

    bool isConnected()
    {
        return QTest::qWaitFor([this] { return m_socket.state() == QAbstractSocket::ConnectedState; }, 5000);
    }
    // Sent before this returns: a socket that goes out of scope drops what it hasn't sent.
    void sendBytes(const QByteArray& bytes)
    {
        m_socket.write(bytes);
        m_socket.waitForBytesWritten(5000);
    }
    Command ask(const QString& name, const QByteArray& data)
    {
        Command query;
        query.id = ++m_lastId;
        query.type = 8;
        query.name = name;
        query.data = data;
        sendBytes(FrameReader::frame(query));
        Command answer;
        const bool answered = QTest::qWaitFor(
            [&] {
                m_reader.append(m_socket.readAll());
                while (m_reader.next(answer) == FrameReader::Result::Command) {
                    if (answer.id == query.id)
                        return true;
                }
                return false;
            },
            10000);
        return answered ? answer : Command();
    }
    QByteArray logIn(const QString& login)
    {
        const Command answer = ask(vdserver::wire::Login,
                                   Desk::payload(login, vdserver::SeedData::demoPassword(login), QByteArray()));
        quint32 user = 0;
        QString name, fullName;
        QStringList roles;
        QByteArray session;
        VDDataStream in(answer.data);
        in >> user >> name >> fullName >> roles >> session;
        return session;
    }
    // Whether the server has closed the connection within the time.
    bool closedWithin(int msecs)
    {
        return QTest::qWaitFor([this] { return m_socket.state() == QAbstractSocket::UnconnectedState; }, msecs);
    }

private:
    QTcpSocket m_socket;
    FrameReader m_reader;
    quint64 m_lastId = 0;
};

// A command for the frame reader to read, and frames that hold it or something else.
Command sample()
{
    Command command;
    command.id = 7;
    command.status = Command::StatusOk;
    command.type = 8;
    command.name = QStringLiteral("data.addObject");
    command.data = QByteArray(300, 'x');
    command.text = QStringLiteral("заметка");
    return command;
}

QByteArray lengthOf(quint32 length)
{
    QByteArray bytes(4, Qt::Uninitialized);
    qToBigEndian(length, bytes.data());
    return bytes;
}

// A frame around bytes that are not what its length says they are.
QByteArray framed(const QByteArray& body)
{
    return lengthOf(quint32(body.size())) + body;
}

// A server of the suite's own, or of one test.
std::unique_ptr<ServerProcess> startServer()
{
    auto server = std::make_unique<ServerProcess>(QStringList{"--idle-timeout", "1.5"});
    if (!server->start())
        qWarning().noquote() << server->errorString();
    return server;
}
}  // namespace

class TestNetwork : public QObject
{
    Q_OBJECT

private slots:
    // One server for the tests that don't mind what the others did to it.
    void initTestCase()
    {
        m_server = startServer();
        QVERIFY(m_server->port() != 0);
    }

    void cleanup()
    {
        if (QTest::currentTestFailed())
            qInfo().noquote() << m_server->log();
    }

    // Each desk is sent only the requests its user may see: an approver's table is the office's,
    // less what isn't his; and what he may see follows the chain: off it, the request is taken from
    // his store.
    void eachDeskIsSentWhatItsUserMaySee()
    {
        Desk office(m_server->port());
        Desk petrov(m_server->port());
        QVERIFY(office.open(QStringLiteral("operator")));
        QVERIFY(petrov.open(QStringLiteral("petrov")));
        const Command raised = office.data(QStringLiteral("addObject"), newRequest(office, Visitor));
        QVERIFY2(raised.ok(), qPrintable(Desk::text(raised)));
        const TYPE_ID request = Desk::uid(raised);
        QTRY_VERIFY(petrov.object(PASS_REQUEST_DATANAME, request).isValid());

        const OBJECT_HASH& all = *office.mirror.objects(PASS_REQUEST_DATANAME);
        for (const ObjectInfo& seen : *petrov.mirror.objects(PASS_REQUEST_DATANAME))
            QVERIFY(all.value(seen.uid) == seen);
        QVERIFY(petrov.mirror.objects(PASS_REQUEST_DATANAME)->size() < all.size());

        const Command dropped = office.data(QStringLiteral("updateObjectEx"),
                                            record(request, db::misc::PASS_REQUEST, {{db::pass_request::CONFIRM_LIST, ""}}));
        QVERIFY2(dropped.ok(), qPrintable(Desk::text(dropped)));
        QTRY_VERIFY(!petrov.object(PASS_REQUEST_DATANAME, request).isValid());
        QVERIFY(office.object(PASS_REQUEST_DATANAME, request).isValid());
    }

    // What a console's plug-in asks for comes back to that console alone, though the other desk
    // runs the same plug-ins under the same identity (two consoles on one machine, started in the
    // same second): a fingerprint window opens at the desk that asked for it, and the result of a
    // database query or of a card read goes back to it.
    void aPluginsCommandStaysAtItsDesk_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("pushed");  // the command that comes back to the desk

        QTest::newRow("fingerprint window") << "show:fingerprintwidget" << "show:fingerprintwidget";
        QTest::newRow("database query") << "db.async" << "db.async_result:" + PluginIdentity;
        QTest::newRow("card read") << "devices.readCard" << "command_result:" + PluginIdentity;
    }

    void aPluginsCommandStaysAtItsDesk()
    {
        QFETCH(QString, command);
        QFETCH(QString, pushed);
        Desk first(m_server->port());
        Desk second(m_server->port());
        QVERIFY(first.open(QStringLiteral("operator")));
        QVERIFY(second.open(QStringLiteral("operator")));
        const unsigned int reader = first.mirror.objects(DEVICE_DATANAME)->cbegin()->uid;
        for (Desk* desk : {&first, &second}) {
            QVERIFY(desk->ask(QStringLiteral("exchange.local_plugins_info"), Desk::payload(COMMAND_LIST{{8, pushed}})).ok());
            QVERIFY(desk->ask(QStringLiteral("devices.bind"),
                              Desk::payload(PluginIdentity, reader, QStringList{DEVICE_COMMAND_READ_CARD})).ok());
        }
        QSignalSpy atFirst(&first.client, &vdserver::ServerClient::pushed);
        QSignalSpy atSecond(&second.client, &vdserver::ServerClient::pushed);

        QByteArray arguments;
        if (command == QLatin1String("show:fingerprintwidget"))
            arguments = Desk::payload(first.mirror.objects(SUBJECT_DATANAME)->cbegin()->uid, QStringLiteral("first desk"));
        else if (command == QLatin1String("db.async"))
            arguments = Desk::payload(PluginIdentity, QStringLiteral("get_fingers"), DbQuery());
        else
            arguments = Desk::payload(PluginIdentity, reader);
        const Command asked = first.ask(command, arguments);
        QVERIFY2(asked.ok(), qPrintable(Desk::text(asked)));
        QTRY_COMPARE(atFirst.count(), 1);
        QCOMPARE(atFirst.at(0).at(0).value<Command>().name, pushed);
        // The second desk's own query, answered after the push, proves the push has gone by.
        QVERIFY(second.ask(vdserver::wire::Ping).ok());
        QCOMPARE(atSecond.count(), 0);
    }

    void refusedOnTheWire_data()
    {
        QTest::addColumn<QString>("login");  // empty: not logged in
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("argument");  // what the payload holds after the session
        QTest::addColumn<QString>("text");

        QTest::newRow("raising without the right") << "viewer" << "data.addObject" << "new request"
                                                   << "Нет права создавать заявки";
        QTest::newRow("removing without the right") << "petrov" << "data.removeObject" << "request"
                                                    << "Нет права удалять заявки";
        QTest::newRow("editing without the right") << "petrov" << "data.updateObjectEx" << "edit"
                                                   << "Нет права изменять заявки";
        QTest::newRow("deciding without the right") << "operator" << "data.addObjectInherits" << "decision"
                                                    << "Нет права согласовывать заявки";
        QTest::newRow("a request out of sight") << "kozlov" << "data.updateObjectEx" << "state"
                                                << "Заявка %1 недоступна";
        QTest::newRow("the directory") << "operator" << "data.addObject" << "department"
                                       << "Нет права изменять справочники";
        QTest::newRow("somebody else's session") << "petrov" << "data.getUserFingers" << "admin's session"
                                                 << "Сеанс не найден";
        QTest::newRow("before the login") << "" << "data.getUserFingers" << "" << "Вход не выполнен";
        QTest::newRow("before the login, the store") << "" << vdserver::wire::Snapshot << "" << "Вход не выполнен";
        QTest::newRow("an unknown command") << "viewer" << "rocket.launch" << "" << "Неизвестная команда: rocket.launch";
    }

    // Whatever the console would have allowed, the server decides, and logs who was refused.
    void refusedOnTheWire()
    {
        QFETCH(QString, login);
        QFETCH(QString, command);
        QFETCH(QString, argument);
        QFETCH(QString, text);

        Desk office(m_server->port());
        QVERIFY(office.open(QStringLiteral("operator")));
        const TYPE_ID request = Desk::uid(office.data(QStringLiteral("addObject"), newRequest(office, Visitor)));
        QVERIFY(request != 0);
        Desk admin(m_server->port());
        QVERIFY(admin.logIn(QStringLiteral("admin")).ok());

        RawConnection raw(m_server->port());
        QVERIFY(raw.isConnected());
        const QByteArray session = login.isEmpty() ? QByteArray("forged") : raw.logIn(login);
        QByteArray data;
        if (argument == QLatin1String("new request"))
            data = Desk::payload(session, newRequest(office, Visitor));
        else if (argument == QLatin1String("request"))
            data = Desk::payload(session, record(request, db::misc::PASS_REQUEST));
        else if (argument == QLatin1String("edit"))
            data = Desk::payload(session, record(request, db::misc::PASS_REQUEST, {{CarNumber, "А001АА"}}));
        else if (argument == QLatin1String("state"))
            data = Desk::payload(session, record(request, db::misc::PASS_REQUEST, {{db::pass_request::STATE, "1"}}));
        else if (argument == QLatin1String("decision"))
            data = Desk::payload(session,
                                 QList<INHERIT_DATA>{INHERIT_DATA(request, office.client.session().userId, 24)});
        else if (argument == QLatin1String("department"))
            data = Desk::payload(session, record(0, db::orgstructure::DEPARTMENT, {{"PT_NAME", "Отдел"}}));
        else if (argument == QLatin1String("admin's session"))
            data = Desk::payload(admin.client.session().sessionId, QList<unsigned int>{1});
        else
            data = Desk::payload(session);

        const ObjectInfo before = office.object(PASS_REQUEST_DATANAME, request);
        const int logged = m_server->log().size();
        const Command answer = raw.ask(command, data);
        QCOMPARE(answer.status, int(Command::StatusFailed));
        QCOMPARE(Desk::text(answer), text.contains("%1") ? text.arg(request) : text);
        if (!login.isEmpty() && command.startsWith(QLatin1String("data.")) && argument != QLatin1String("admin's session"))
            QTRY_VERIFY2(m_server->log().mid(logged).contains(QStringLiteral("to %1 -").arg(login)),
                         qPrintable(m_server->log().mid(logged)));
        // Nothing changed: the office's copy, which follows every change, is as it was.
        QCOMPARE(office.ask(vdserver::wire::Ping).status, int(Command::StatusOk));
        QVERIFY(office.object(PASS_REQUEST_DATANAME, request) == before);
    }

    // A wrong password says so and leaves the door open; five in a row slow the next ones down.
    void wrongPasswordsAreRefusedAndSlowedDown()
    {
        // Failures count by address, and the tests all come from the loopback.
        const std::unique_ptr<ServerProcess> server = startServer();
        Desk desk(server->port());
        const QString refusal = QStringLiteral("Неверное имя пользователя или пароль");
        QCOMPARE(desk.logIn(QStringLiteral("petrov"), QStringLiteral("petrov")).error, refusal);
        QCOMPARE(desk.logIn(QStringLiteral("nobody"), QStringLiteral("demo-nobody")).error, refusal);
        QCOMPARE(desk.client.state(), vdserver::ServerClient::State::Connecting);
        QVERIFY(desk.logIn(QStringLiteral("petrov")).ok());
        QCOMPARE(desk.client.session().login, QStringLiteral("petrov"));

        Desk guesser(server->port());
        QElapsedTimer clock;
        for (int i = 0; i < 5; ++i) {
            clock.start();
            QCOMPARE(guesser.logIn(QStringLiteral("admin"), QStringLiteral("guess%1").arg(i)).error, refusal);
        }
        const qint64 free = clock.elapsed();
        clock.start();
        QCOMPARE(guesser.logIn(QStringLiteral("admin"), QStringLiteral("guess5")).error, refusal);
        QVERIFY2(clock.elapsed() >= free + 900, qPrintable(QString::number(clock.elapsed())));
        // The right one still gets in, after its wait, and clears the slate.
        QVERIFY(guesser.logIn(QStringLiteral("admin")).ok());
    }

    void aConsoleComesBackAfterARestart_data()
    {
        QTest::addColumn<bool>("killed");
        QTest::newRow("stopped") << false;
        QTest::newRow("killed") << true;
    }

    // A console whose server goes away, stopped or killed, says so, comes back by itself when
    // the server returns, in the same session, and catches up with what changed meanwhile.
    void aConsoleComesBackAfterARestart()
    {
        QFETCH(bool, killed);
        const std::unique_ptr<ServerProcess> server = startServer();
        Desk desk(server->port());
        QVERIFY(desk.open(QStringLiteral("admin")));
        const QByteArray session = desk.client.session().sessionId;
        const QList<TYPE_ID> requests = desk.mirror.objects(PASS_REQUEST_DATANAME)->keys();
        const TYPE_ID removed = requests.at(0);
        const TYPE_ID changed = requests.at(1);
        QSignalSpy lost(&desk.client, &vdserver::ServerClient::connectionLost);
        QSignalSpy back(&desk.client, &vdserver::ServerClient::reconnected);

        if (killed)
            server->kill();
        else
            QVERIFY(server->stop());
        QTRY_COMPARE(lost.count(), 1);
        QCOMPARE(desk.client.state(), vdserver::ServerClient::State::Reconnecting);
        QCOMPARE(desk.ask(vdserver::wire::Ping).status, int(Command::StatusFailed));
        {
            // While it is down, somebody works on the store directly.
            vdserver::Server offline;
            QVERIFY(offline.open(vdserver::StoreLocation::file(server->storeFile())));
            offline.setPushTarget([](Command&) {});
            const std::optional<vdserver::Session> admin = offline.login(QStringLiteral("admin"));
            Command answer;
            const auto run = [&](const QString& name, const QByteArray& data) {
                Command query;
                query.name = name;
                query.data = data;
                answer = {};
                offline.send(query, [&](Command& reply) { answer = reply; });
                return QTest::qWaitFor([&] { return answer.status != Command::StatusNone; }) && answer.ok();
            };
            QVERIFY(run("data.removeObject", Desk::payload(admin->sessionId, record(removed, db::misc::PASS_REQUEST))));
            QVERIFY(run("data.updateObjectEx", Desk::payload(admin->sessionId,
                                                             record(changed, db::misc::PASS_REQUEST,
                                                                    {{CarNumber, "В777ВВ"}}))));
        }
        QVERIFY2(server->start(), qPrintable(server->errorString()));
        QTRY_COMPARE_WITH_TIMEOUT(back.count(), 1, 10000);
        QVERIFY(desk.waitUntilSynced());
        QCOMPARE(desk.client.session().sessionId, session);
        QVERIFY(!desk.object(PASS_REQUEST_DATANAME, removed).isValid());
        QCOMPARE(desk.object(PASS_REQUEST_DATANAME, changed).parameters.value(CarNumber),
                 QStringLiteral("В777ВВ"));
        // The same session serves again, and the copy is the server's.
        QCOMPARE(desk.data(QStringLiteral("getUserFingers"), QList<unsigned int>{}).status, int(Command::StatusOk));
        Desk fresh(server->port());
        QVERIFY(fresh.open(QStringLiteral("admin")));
        QVERIFY(*fresh.mirror.objects(PASS_REQUEST_DATANAME) == *desk.mirror.objects(PASS_REQUEST_DATANAME));
    }

    void brokenFrames_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("error");  // empty: waits for more, a truncated frame

        const QByteArray whole = FrameReader::frame(sample());
        const QByteArray body = Desk::payload(sample());
        QTest::newRow("truncated frame") << whole.left(whole.size() - 1) << "";
        QTest::newRow("oversized") << lengthOf(FrameReader::MaxFrameSize + 1) << "more than";
        QTest::newRow("length of four gigabytes") << lengthOf(0xffffffffu) + QByteArray(64, 'a') << "more than";
        QTest::newRow("empty frame") << lengthOf(0) << "not a command";
        QTest::newRow("command cut short inside its frame") << framed(body.left(body.size() - 1)) << "not a command";
        QTest::newRow("more than a command") << framed(body + QByteArray("!")) << "more than a command";
        // A name whose length claims two billion characters in a frame of forty bytes.
        QByteArray hugeName = body.left(24) + lengthOf(0x7ffffffe) + QByteArray(12, 'a');
        QTest::newRow("count beyond the frame") << framed(hugeName) << "not a command";
    }

    // A broken frame stops the reader for good; a short one only makes it wait.
    void brokenFrames()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, error);

        FrameReader reader;
        reader.append(bytes);
        Command command;
        const FrameReader::Result result = reader.next(command);
        if (error.isEmpty()) {
            QCOMPARE(result, FrameReader::Result::NeedMore);
            QVERIFY(reader.hasPartialFrame());
            return;
        }
        QCOMPARE(result, FrameReader::Result::Error);
        QVERIFY2(reader.errorString().contains(error), qPrintable(reader.errorString()));
        reader.append(FrameReader::frame(sample()));
        QCOMPARE(reader.next(command), FrameReader::Result::Error);
    }

    void badConnectionsAreClosedAlone_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("logged");

        QTest::newRow("garbage") << QByteArray("\x00\x00\x00\x10GET / HTTP/1.1\r\n", 20) << "not a command";
        QTest::newRow("truncated frame") << QByteArray("\x00\x00\x01\x00\x00\x00", 6) << "truncated";
        QTest::newRow("silence") << QByteArray() << "silent";
    }

    // A connection that breaks the framing, or says nothing, is closed with a line in the log;
    // the console beside it goes on as if nothing happened.
    void badConnectionsAreClosedAlone()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, logged);

        Desk desk(m_server->port());
        QVERIFY(desk.open(QStringLiteral("operator")));
        const int seen = m_server->log().size();
        {
            RawConnection raw(m_server->port());
            QVERIFY(raw.isConnected());
            raw.sendBytes(bytes);
            // A frame cut short waits for the rest until its sender goes away.
            if (logged != QLatin1String("truncated"))
                QVERIFY(raw.closedWithin(5000));
        }
        QTRY_VERIFY2(m_server->log().mid(seen).contains(logged), qPrintable(m_server->log().mid(seen)));
        // The desk's own heartbeat keeps it; queries and pushes still flow.
        QTest::qWait(1600);
        QCOMPARE(desk.ask(vdserver::wire::Ping).status, int(Command::StatusOk));
        const Command raised = desk.data(QStringLiteral("addObject"), newRequest(desk, Visitor));
        QVERIFY(raised.ok());
        QTRY_VERIFY(desk.object(PASS_REQUEST_DATANAME, Desk::uid(raised)).isValid());
    }

private:
    std::unique_ptr<ServerProcess> m_server;
};

QTEST_GUILESS_MAIN(TestNetwork)
#include "tst_network.moc"
