#include "serverfixture.h"

#include "constants.h"
#include "dbquery.h"
#include "faketransport.h"
#include "servicerecords.h"
#include "vdserverinterface.h"

#include <QSignalSpy>
#include <QtTest>

using namespace vorandel;
using vdserver::Server;

namespace {
const QString Malformed = QStringLiteral("Неполные или повреждённые данные запроса");
const QString FingersStatement = QStringLiteral(
    "SELECT user_object_id, count( id ), (SELECT child_id FROM object_inherit WHERE ref_type = 3 AND "
    "parent_id = user_object_id)  FROM fingers WHERE user_object_id = ANY( ARRAY[%1]::bigint[] ) "
    "GROUP BY user_object_id;");

ObjectInfo record(TYPE_ID uid, const QString& type, const QHash<QString, QString>& parameters = {})
{
    ObjectInfo info;
    info.uid = uid;
    info.type = type;
    info.parameters = parameters;
    return info;
}
}  // namespace

class TestServerExchange : public QObject
{
    Q_OBJECT

private slots:
    void answersComeLaterAndOnce()
    {
        ServerFixture f;
        const COMMAND_LIST types = {CommandType(8, QStringLiteral("command_result:probe"))};
        Command query;
        query.name = QStringLiteral("exchange.local_plugins_info");
        query.type = 8;
        query.data = ServerFixture::payload(types);
        int answers = 0;
        Command answer;
        f.server.send(query, [&](Command& reply) {
            ++answers;
            answer = reply;
        });
        QCOMPARE(answers, 0);
        QTRY_COMPARE(answers, 1);
        ServerFixture::settle(20);
        QCOMPARE(answers, 1);
        QCOMPARE(answer.status, int(Command::StatusOk));
        QCOMPARE(answer.name, query.name);
        QVERIFY(f.server.localCommandTypes() == types);
    }

    void refusals_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("withSession");
        QTest::addColumn<QByteArray>("arguments");
        QTest::addColumn<QString>("text");

        const auto p = [](const auto&... values) { return ServerFixture::payload(values...); };
        const TYPE_ID none = 999999;
        const ObjectInfo rocket = record(0, QStringLiteral("OT_ROCKET"));
        const ObjectInfo ghost = record(none, db::orgstructure::WORKER);
        ACCESS_CHANGES access;
        access.subject = none;
        access.object = none;
        access.ref_type = 7;

        QTest::newRow("unknown data operation") << "data.teleport" << true << QByteArray()
                                                << "Неизвестная команда: data.teleport";
        QTest::newRow("unknown command") << "rocket.launch" << false << p(QStringLiteral("now"))
                                         << "Неизвестная команда: rocket.launch";
        QTest::newRow("empty payload") << "data.addObject" << false << QByteArray() << Malformed;
        QTest::newRow("stale session") << "data.addObject" << false << p(QByteArray("stale"), rocket)
                                       << "Сеанс не найден";
        QTest::newRow("truncated record") << "data.updateObject" << true << p(ghost).left(10) << Malformed;
        // The stream's containers reserve what the count claims before they read an element.
        QTest::newRow("count of two billion") << "data.addObjectInherits" << true << p(quint32(0x7fffffff))
                                              << Malformed;
        QTest::newRow("unknown type") << "data.addObject" << true << p(rocket)
                                      << "Неизвестный тип объекта: «OT_ROCKET»";
        QTest::newRow("unknown confirm list")
            << "data.addObject" << true
            << p(record(0, db::misc::PASS_REQUEST, {{db::pass_request::CONFIRM_LIST, QString::number(none)}}))
            << "Лист согласования 999999 не найден";
        QTest::newRow("update of nothing") << "data.updateObjectEx" << true << p(ghost) << "Объект 999999 не найден";
        QTest::newRow("removal of nothing") << "data.removeObject" << true << p(ghost) << "Объект 999999 не найден";
        QTest::newRow("decision on nothing") << "data.addObjectInherits" << true
                                             << p(QList<INHERIT_DATA>{INHERIT_DATA(none, 1, 24)})
                                             << "Заявка 999999 не найдена";
        QTest::newRow("access to nothing") << "data.changeUserAccess" << true << p(QList<ACCESS_CHANGES>{access})
                                           << "Группа доступа 999999 не найдена";
        QTest::newRow("cards of nobody") << "data.updateWorkerCards" << true
                                         << p(none, QList<ObjectInfo>(), QList<ObjectInfo>(), true)
                                         << "Сотрудник 999999 не найден";
        QTest::newRow("dismissal of nobody") << "data.dismissWorker" << true << p(none, QDate(2026, 1, 1))
                                             << "Сотрудник 999999 не найден";
        QTest::newRow("unknown device") << "devices.readCard" << false << p(QStringLiteral("probe"), none)
                                        << "Устройство 999999 не найдено";
        QTest::newRow("mail to nobody") << "send_email" << false << p(EMAIL_MESSAGE(), QStringLiteral("admin"))
                                        << "Не указан адрес получателя";
        QTest::newRow("query without identity") << "db.async" << false << p(QString(), QStringLiteral("q"), DbQuery())
                                                << "Не указано, кому вернуть результат запроса";
        QTest::newRow("scan of nobody") << "show:fingerprintwidget.scan" << false << p(none, QStringLiteral("probe"))
                                        << "Сотрудник 999999 не найден";
    }

    void refusals()
    {
        QFETCH(QString, name);
        QFETCH(bool, withSession);
        QFETCH(QByteArray, arguments);
        QFETCH(QString, text);

        ServerFixture f;
        const auto before = f.snapshot();
        QSignalSpy changed(&f.server, &Server::objectsChanged);
        QSignalSpy removed(&f.server, &Server::objectsRemoved);
        const QByteArray session = withSession ? ServerFixture::payload(f.session.sessionId) : QByteArray();
        const Command answer = f.send(name, session + arguments);
        QCOMPARE(answer.status, int(Command::StatusFailed));
        QCOMPARE(ServerFixture::failureText(answer), text);
        ServerFixture::settle(30);
        QVERIFY(f.snapshot() == before);
        QCOMPARE(changed.count(), 0);
        QCOMPARE(removed.count(), 0);
        QVERIFY(f.pushed.isEmpty());
    }

    // Every cut of a valid payload is refused, and nothing changes; the whole payload works.
    void shortPayloadsAreRefused_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("withSession");
        QTest::addColumn<QByteArray>("arguments");

        const auto p = [](const auto&... values) { return ServerFixture::payload(values...); };
        EMAIL_MESSAGE mail;
        mail.to = QStringLiteral("petrov@gorizont.example");
        mail.subject = QStringLiteral("Пропуск");
        DbQuery query;
        query.queries = QStringList{FingersStatement.arg(QStringLiteral("1,2"))};
        SYSLOG_DATA entry;
        entry.code = 7;
        entry.text = QStringLiteral("Вход");
        BLOB_DATA_RESQUEST blob;
        blob.uid = 1;
        blob.name = QStringLiteral("PT_PHOTO");

        QTest::newRow("addObject") << "data.addObject" << true
                                   << p(record(0, db::orgstructure::WORKER, {{"PT_SURNAME", "Орлов"}}));
        QTest::newRow("syslog") << "data.syslog" << true << p(entry);
        QTest::newRow("getUserFingers") << "data.getUserFingers" << true << p(QList<unsigned int>{1, 2});
        QTest::newRow("getBlobDataChange") << "data.getBlobDataChange" << true
                                           << p(QList<BLOB_DATA_RESQUEST>{blob});
        QTest::newRow("send_email") << "send_email" << false << p(mail, QStringLiteral("admin"));
        QTest::newRow("db.async") << "db.async" << false << p(QStringLiteral("probe"), QStringLiteral("q1"), query);
        QTest::newRow("local_plugins_info") << "exchange.local_plugins_info" << false
                                            << p(COMMAND_LIST{CommandType(8, QStringLiteral("x"))});
    }

    void shortPayloadsAreRefused()
    {
        QFETCH(QString, name);
        QFETCH(bool, withSession);
        QFETCH(QByteArray, arguments);

        ServerFixture f;
        const auto before = f.snapshot();
        const QByteArray whole =
            (withSession ? ServerFixture::payload(f.session.sessionId) : QByteArray()) + arguments;
        for (int size = 0; size < whole.size(); ++size) {
            const Command answer = f.send(name, whole.left(size));
            QVERIFY2(answer.status == Command::StatusFailed, qPrintable(QString::number(size)));
            QVERIFY(!ServerFixture::failureText(answer).isEmpty());
        }
        ServerFixture::settle(30);
        QVERIFY(f.snapshot() == before);
        QVERIFY(f.pushed.isEmpty());
        QCOMPARE(f.send(name, whole).status, int(Command::StatusOk));
    }

    void accessNoticeFollowsTheAnswer()
    {
        ServerFixture f;
        f.server.setAccessNoticeDelay(0);
        const ObjectInfo worker = f.workerWithoutCards();
        const TYPE_ID group = f.objects(POLICY_DATANAME).first().uid;
        QStringList events;
        f.server.setPushTarget([&](Command& command) {
            events << command.name;
            f.pushed << command;
        });
        const auto change = [&](bool grant) {
            ACCESS_CHANGES access;
            access.subject = worker.uid;
            access.object = group;
            access.state = grant;
            access.ref_type = 7;
            Command query;
            query.name = QStringLiteral("data.changeUserAccess");
            query.data = ServerFixture::payload(f.session.sessionId, QList<ACCESS_CHANGES>{access});
            f.server.send(query, [&](Command& answer) { events << QString::number(answer.status); });
        };
        const QString notice = QStringLiteral("change_access_result:") + f.session.sessionId.toHex();

        change(true);
        QTRY_COMPARE(events, (QStringList{QStringLiteral("1"), notice}));
        QList<TYPE_ID> subjects;
        readPayload(f.pushed.last(), subjects);
        QCOMPARE(subjects, QList<TYPE_ID>{worker.uid});
        const QList<INHERIT_DATA> granted = f.object(SUBJECT_DATANAME, worker.uid).inherits.values(7);
        QCOMPARE(granted, QList<INHERIT_DATA>{INHERIT_DATA(worker.uid, group, 7)});

        change(false);
        QTRY_COMPARE(events.size(), 4);
        QCOMPARE(events.at(3), notice);
        QVERIFY(!f.object(SUBJECT_DATANAME, worker.uid).inherits.contains(7));
    }

    void cardReadGoesToABoundListenerOnly()
    {
        ServerFixture f;
        const QString identity = QStringLiteral("requestview 10.0.0.5 1767225600");
        const unsigned int reader = f.objects(DEVICE_DATANAME).first().uid;
        const QStringList readCard = {DEVICE_COMMAND_READ_CARD};

        QCOMPARE(f.call(QStringLiteral("devices.readCard"), identity, reader).status, int(Command::StatusOk));
        ServerFixture::settle(60);
        QVERIFY(f.pushed.isEmpty());

        QCOMPARE(f.call(QStringLiteral("devices.bind"), identity, reader, readCard).status, int(Command::StatusOk));
        QCOMPARE(f.call(QStringLiteral("devices.readCard"), identity, reader).status, int(Command::StatusOk));
        QTRY_COMPARE(f.pushed.size(), 1);
        const Command result = f.pushed.first();
        QCOMPARE(result.name, QStringLiteral("command_result:") + identity);
        QCOMPARE(result.type, 8);
        unsigned int device = 0;
        QString command;
        QHash<QString, QVariant> values;
        readPayload(result, device, command, values);
        QCOMPARE(device, reader);
        QCOMPARE(command, DEVICE_COMMAND_READ_CARD);
        QCOMPARE(values.value(QStringLiteral("status")).toString(), QStringLiteral("ok"));
        const ObjectInfo card(values.value(QStringLiteral("card")).toByteArray());
        QCOMPARE(card.type, db::misc::CARD);
        QCOMPARE(card.uid, TYPE_ID(0));
        const CARD_ID number = ot_card::number(card);
        QVERIFY(number != 0);
        for (const ObjectInfo& issued : f.objects(CARD_DATANAME))
            QVERIFY(ot_card::number(issued) != number);

        QCOMPARE(f.call(QStringLiteral("devices.unbind"), identity, reader, readCard).status, int(Command::StatusOk));
        QCOMPARE(f.call(QStringLiteral("devices.readCard"), identity, reader).status, int(Command::StatusOk));
        ServerFixture::settle(60);
        QCOMPARE(f.pushed.size(), 1);
    }

    void biometricsCanBeLocked_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("edit") << "show:fingerprintwidget";
        QTest::newRow("scan") << "show:fingerprintwidget.scan";
    }

    void biometricsCanBeLocked()
    {
        QFETCH(QString, name);
        ServerFixture f;
        const unsigned int worker = f.objects(SUBJECT_DATANAME).first().uid;
        const QString identity = QStringLiteral("requestview probe");
        QCOMPARE(f.call(name, worker, identity).status, int(Command::StatusOk));

        f.server.setDbSetting(db::database::PD_DENY_STORE_USER_PHOTOS, QStringLiteral("true"));
        const Command locked = f.call(name, worker, identity);
        QCOMPARE(locked.status, int(Command::StatusBiometricsLocked));
        QCOMPARE(ServerFixture::failureText(locked),
                 QStringLiteral("Запрещено редактирование биометрической информации"));
    }

    void mailAndLogAreKept()
    {
        ServerFixture f;
        EMAIL_MESSAGE mail;
        mail.to = QStringLiteral("petrov@gorizont.example");
        mail.subject = QStringLiteral("Карта готова");
        mail.body = QStringLiteral("Карта 2000123456 выдана");
        QCOMPARE(f.call(QStringLiteral("send_email"), mail, QStringLiteral("admin")).status, int(Command::StatusOk));
        QCOMPARE(f.server.outbox(), QList<EMAIL_MESSAGE>{mail});

        SYSLOG_DATA entry;
        entry.code = 12;
        entry.user = QString::number(f.session.userId);
        entry.text = QStringLiteral("Открыта вкладка «Заявки»");
        entry.time = QDateTime(QDate(2026, 11, 22), QTime(9, 30));
        QCOMPARE(f.data(QStringLiteral("syslog"), entry).status, int(Command::StatusOk));
        QCOMPARE(f.server.syslogEntries(), QList<SYSLOG_DATA>{entry});
    }

    // The console hands the server to the exchange as its transport: answers still come later.
    void servesTheExchange()
    {
        ServerFixture f;
        VDServerInterface::instance()->setTransport(&f.server);
        bool answered = false;
        Command query;
        query.name = QStringLiteral("data.getUserFingers");
        query.data = ServerFixture::payload(f.session.sessionId, QList<unsigned int>());
        VDServerInterface::instance()->send(query, [&](Command& answer) {
            answered = answer.status == Command::StatusOk;
        });
        QVERIFY(!answered);
        QTRY_VERIFY(answered);
        VDServerInterface::instance()->setTransport(nullptr);
    }
};

QTEST_MAIN(TestServerExchange)
#include "tst_serverexchange.moc"
