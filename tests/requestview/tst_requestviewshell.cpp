#include "requestfixture.h"

#include "constants.h"
#include "dbquery.h"
#include "requestview.h"
#include "settings.h"
#include "vdserverinterface.h"

#include <QSignalSpy>
#include <QElapsedTimer>
#include <QtTest>

using namespace vorandel;

// The tab as the console meets it: identity, command types, pushed commands, rights.
class TestRequestViewShell : public QObject
{
    Q_OBJECT

    static QString clientIdOf(const COMMAND_LIST& types)
    {
        const QString name = types.value(0).name;
        return name.mid(name.indexOf(QLatin1Char(':')) + 1);  // the identity may hold colons itself
    }

    static Command pushed(const QString& name, const std::function<void(VDDataStream&)>& write)
    {
        Command command;
        command.name = name;
        command.status = 0;
        VDDataStream out(&command.data, QIODevice::WriteOnly);
        write(out);
        return command;
    }

private slots:
    void initTestCase()
    {
        qRegisterMetaType<ObjectInfo>();
    }

    void identityAndCommandTypes_data()
    {
        QTest::addColumn<QString>("monitoringId");
        QTest::addColumn<QString>("word");
        QTest::newRow("set") << QStringLiteral("17") << QStringLiteral("17");
        QTest::newRow("unset") << QString() << QStringLiteral("1");
    }

    void identityAndCommandTypes()
    {
        QFETCH(QString, monitoringId);
        QFETCH(QString, word);
        TestEnvironment environment;
        if (!monitoringId.isEmpty())
            Settings::instance()->setValue(QStringLiteral("monitoring/id"), monitoringId);
        RequestView view;
        const qint64 before = QDateTime::currentSecsSinceEpoch();
        const COMMAND_LIST types = view.init(VDServerInterface::instance(), QStringLiteral("requestview"));
        // Two consoles on one server must never share an identity: the host's own address and
        // the start time tell them apart.
        const QString id = clientIdOf(types);
        const QStringList words = id.split(QLatin1Char(' '));
        QCOMPARE(words.size(), 4);
        QCOMPARE(words.at(0), QStringLiteral("requestview"));
        QCOMPARE(words.at(1), word);
        QVERIFY(!words.at(2).isEmpty());
        QVERIFY(words.at(2) != QLatin1String("127.0.0.1") && words.at(2) != QLatin1String("::1"));
        QVERIFY(words.at(3).toLongLong() >= before);
        QCOMPARE(types, (COMMAND_LIST{CommandType(8, QStringLiteral("command_result:") + id),
                                      CommandType(8, QStringLiteral("fingerprint.finished:") + id),
                                      CommandType(1, QStringLiteral("db.async_result:") + id)}));
        for (const CommandType& type : types)
            QVERIFY(view.handlesCommand(type.name));
    }

    void canShowFollowsTheRight_data()
    {
        QTest::addColumn<QStringList>("roles");
        QTest::addColumn<bool>("shown");
        QTest::newRow("others only") << QStringList{QStringLiteral("RL_PASS_REQUESTS_SHOW_ALL")} << false;
        QTest::newRow("other case") << QStringList{QStringLiteral("rl_pass_requests_show")} << false;
        QTest::newRow("show") << QStringList{QStringLiteral("RL_PASS_REQUESTS_SHOW")} << true;
    }

    void canShowFollowsTheRight()
    {
        QFETCH(QStringList, roles);
        QFETCH(bool, shown);
        TestEnvironment::login(1, roles);
        RequestView view;
        QCOMPARE(view.canShow(), shown);
    }

    void cardResults()
    {
        RequestFixture fixture;
        RequestView* view = fixture.build();
        const QString id = clientIdOf({CommandType(8, view->registeredCommandTypes().first().name)});
        const QString name = QStringLiteral("command_result:") + id;
        QSignalSpy read(view, &RequestView::cardRead);
        QSignalSpy failed(view, &RequestView::cardReadFailed);

        ObjectInfo card;
        card.uid = 77;
        card.type = QStringLiteral("OT_CARD");
        Command command = pushed(name, [&](VDDataStream& out) {
            out << 5u << DEVICE_COMMAND_READ_CARD
                << QHash<QString, QVariant>{{QStringLiteral("status"), QStringLiteral("ok")},
                                            {QStringLiteral("card"), card.toByteArray()}};
        });
        VDServerInterface::instance()->deliver(command);
        QCOMPARE(command.status, 1);
        QCOMPARE(read.count(), 1);
        QCOMPARE(read.first().first().value<ObjectInfo>().uid, 77u);
        QCOMPARE(fixture.transport().count(QStringLiteral("devices.unbind")), 1);

        command = pushed(name, [&](VDDataStream& out) {
            out << 5u << DEVICE_COMMAND_READ_CARD << QHash<QString, QVariant>{{QStringLiteral("status"), QStringLiteral("error")}};
        });
        VDServerInterface::instance()->deliver(command);
        QCOMPARE(failed.count(), 1);
        QCOMPARE(read.count(), 1);

        // No card in the result is still a card read, of empty bytes.
        command = pushed(name, [&](VDDataStream& out) { out << 5u << DEVICE_COMMAND_READ_CARD << QHash<QString, QVariant>(); });
        VDServerInterface::instance()->deliver(command);
        QCOMPARE(read.count(), 2);
        QVERIFY(!read.last().first().value<ObjectInfo>().isValid());

        // Another device command changes nothing and keeps the binding.
        command = pushed(name, [&](VDDataStream& out) { out << 5u << QStringLiteral("open_door") << QHash<QString, QVariant>(); });
        VDServerInterface::instance()->deliver(command);
        QCOMPARE(read.count() + failed.count(), 3);
        QCOMPARE(fixture.transport().count(QStringLiteral("devices.unbind")), 3);

        // A payload cut short reads as defaults: no command, nothing happens.
        command = pushed(name, [](VDDataStream& out) { out << quint16(1); });
        VDServerInterface::instance()->deliver(command);
        QCOMPARE(read.count() + failed.count(), 3);
    }

    void databaseResults()
    {
        RequestFixture fixture;
        RequestView* view = fixture.build();
        const QString id = clientIdOf({view->registeredCommandTypes().first()});
        const QString name = QStringLiteral("db.async_result:") + id;
        QSignalSpy fingers(view, &RequestView::fingersReceived);

        DbResult rows;
        rows.rowCount = 2;
        rows.columnCount = 3;
        rows.cells = {QVariant(10u), QVariant(4), QVariant(900u), QVariant(11u), QVariant(2)};  // the last cell is missing
        // Answers that don't hold what they claim: first a row cut short.
        Command command = pushed(name, [&](VDDataStream& out) {
            out << QStringLiteral("get_fingers_101010") << 1 << QString() << QList<DbResult>{rows};
        });
        VDServerInterface::instance()->deliver(command);
        QCOMPARE(command.status, 1);
        QCOMPARE(fingers.count(), 1);
        const auto hash = fingers.first().first().value<QHash<TYPE_ID, requestview::UserFingers>>();
        QCOMPARE(hash.size(), 2);
        QCOMPARE(hash.value(10).count, 4);
        QCOMPARE(hash.value(10).card, 900u);
        QCOMPARE(hash.value(11).card, 0u);

        // An answer that claims two billion rows and carries no cell ends at once, with nothing.
        DbResult claims;
        claims.rowCount = 0x7fffffff;
        claims.columnCount = 3;
        command = pushed(name, [&](VDDataStream& out) {
            out << QStringLiteral("get_fingers_2") << 1 << QString() << QList<DbResult>{claims};
        });
        QElapsedTimer clock;
        clock.start();
        VDServerInterface::instance()->deliver(command);
        QVERIFY(clock.elapsed() < 1000);
        QCOMPARE(fingers.count(), 2);
        using Fingers = QHash<TYPE_ID, requestview::UserFingers>;
        QVERIFY(fingers.last().first().value<Fingers>().isEmpty());

        // Nor do two billion columns over a row of two cells make a row count out of reach.
        claims.rowCount = 5;
        claims.columnCount = 0x7fffffff;
        claims.cells = {QVariant(10u), QVariant(4)};
        command = pushed(name, [&](VDDataStream& out) {
            out << QStringLiteral("get_fingers_3") << 1 << QString() << QList<DbResult>{claims};
        });
        VDServerInterface::instance()->deliver(command);
        QCOMPARE(fingers.count(), 3);
        const Fingers one = fingers.last().first().value<Fingers>();
        QCOMPARE(one.size(), 1);
        QCOMPARE(one.value(10).count, 4);
    }
};

QTEST_MAIN(TestRequestViewShell)
#include "tst_requestviewshell.moc"
