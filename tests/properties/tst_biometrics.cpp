#include "authdata.h"
#include "cardreaderdialog.h"
#include "constants.h"
#include "fingerprintwidget.h"
#include "fingerprintwidgetplugin.h"
#include "localdatamanager.h"
#include "localstorage.h"
#include "server.h"
#include "testenvironment.h"
#include "vd5sdkdata.h"
#include "vddatastream.h"
#include "vdserverinterface.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

using namespace vorandel;

namespace {

TEMPLATE_DATA print(qint16 index, int kind = 0, const QByteArray& data = "t")
{
    TEMPLATE_DATA t;
    t.index = index;
    t.kind = kind;
    t.data = data;
    return t;
}

// A plug-in of the console that asks for things and hears what comes back to it.
class Asker : public QObject, public VDPluginInterface
{
public:
    QString pluginName() const override { return QStringLiteral("asker"); }
    int pluginVersion() const override { return 0x10000; }
    QString pluginBuild() const override { return {}; }
    QWidget* widget() override { return nullptr; }
    QObject* object() override { return this; }
    QStringList requireList() override { return {}; }

    // Sends a query and waits for its answer.
    template <typename... Values>
    Command ask(const QString& name, const Values&... values)
    {
        Command query = newCommand(name, 8);
        VDDataStream out(&query.data, QIODevice::WriteOnly);
        (out << ... << values);
        Command answer;
        sendQuery(query, [&answer](Command& reply) { answer = reply; });
        if (!QTest::qWaitFor([&answer] { return answer.status != Command::StatusNone; }))
            answer.status = -1;
        return answer;
    }
    template <typename... Values>
    Command data(const QString& operation, const Values&... values)
    {
        return ask(QStringLiteral("data.") + operation, AuthData::sessionId(), values...);
    }
    // Receives commands of this name from now on.
    void listen(const QString& name)
    {
        const CommandType type(8, name);
        registerCommandHandler(type, [this](Command& command) {
            command.status = Command::StatusOk;
            heard.append(command);
        });
        server()->addCommandType(type, this);
        server()->sendLocalPluginsInfo();
    }

    QList<Command> heard;
};

QString firstText(const Command& command)
{
    QString text;
    VDDataStream in(command.data);
    in >> text;
    return text;
}

}  // namespace

// Prints and cards of the embedded server, and the console's fingerprint window and card reader
// in front of it.
class TestBiometrics : public QObject
{
    Q_OBJECT

    TestEnvironment environment;
    vdserver::Server server;
    std::unique_ptr<LocalDataManager> store;
    std::unique_ptr<Asker> asker;
    TYPE_ID worker = 0;

    QMap<unsigned int, TEMPLATE_DATA> fingersOf(TYPE_ID uid)
    {
        QMap<unsigned int, TEMPLATE_DATA> map;
        VDDataStream in(asker->data(QStringLiteral("getUserFingers"), QList<unsigned int>{uid}).data);
        in >> map;
        return map;
    }

private slots:
    void initTestCase()
    {
        LocalStorage::instance()->clear();
        server.seed();
        server.setResultDelay(10);
        server.setPushTarget([](Command& command) { VDServerInterface::instance()->deliver(command); });
        const std::optional<vdserver::Session> session = server.login(server.defaultLogin());
        AuthData::setSession(session->userId, session->login, session->roles, session->sessionId);
        VDServerInterface::instance()->setTransport(&server);
        store = std::make_unique<LocalDataManager>(&server);
        store->init(VDServerInterface::instance(), QStringLiteral("localdatamanager"));
        asker = std::make_unique<Asker>();
        asker->init(VDServerInterface::instance(), QStringLiteral("asker"));
        for (const ObjectInfo& candidate : *server.objects(SUBJECT_DATANAME)) {
            if (!candidate.inherits.contains(INHERIT_CARD) && !isDismissed(candidate))
                worker = candidate.uid;
        }
        QVERIFY(worker);
    }

    void cleanupTestCase()
    {
        asker.reset();
        VDServerInterface::instance()->setTransport(nullptr);
    }

    void storedPrintsAreChecked_data()
    {
        QTest::addColumn<QList<TEMPLATE_DATA>>("prints");
        QTest::addColumn<QString>("refusal");
        QTest::newRow("fingers, palms and a face") << QList<TEMPLATE_DATA>{print(0), print(9), print(100, 2), print(100, 3), print(201)}
                                                   << QString();
        QTest::newRow("none at all") << QList<TEMPLATE_DATA>() << QString();
        QTest::newRow("unknown index") << QList<TEMPLATE_DATA>{print(0), print(10)} << "Неизвестный вид шаблона: 10";
        QTest::newRow("no data") << QList<TEMPLATE_DATA>{print(3, 0, QByteArray())} << "Шаблон 3 пуст";
        QTest::newRow("a finger twice") << QList<TEMPLATE_DATA>{print(4), print(4)} << "Шаблон 4 передан дважды";
    }

    // A refused set leaves the prints as they were.
    void storedPrintsAreChecked()
    {
        QFETCH(QList<TEMPLATE_DATA>, prints);
        QFETCH(QString, refusal);
        QCOMPARE(asker->data(QStringLiteral("setUserFingers"), worker, QList<TEMPLATE_DATA>{print(5)}).status,
                 int(Command::StatusOk));
        const Command answer = asker->data(QStringLiteral("setUserFingers"), worker, prints);
        const QList<TEMPLATE_DATA> now = fingersOf(worker).values(worker);
        if (!refusal.isEmpty()) {
            QCOMPARE(answer.status, int(Command::StatusFailed));
            QCOMPARE(firstText(answer), refusal);
            QCOMPARE(now.size(), 1);
            return;
        }
        QCOMPARE(answer.status, int(Command::StatusOk));
        QCOMPARE(now.size(), prints.size());
        for (const TEMPLATE_DATA& stored : now)
            QVERIFY(stored.id != 0);
    }

    void printsAreLockedByTheDatabaseSetting()
    {
        server.setDbSetting(db::database::PD_DENY_STORE_USER_PHOTOS, QStringLiteral("true"));
        const Command answer = asker->data(QStringLiteral("setUserFingers"), worker, QList<TEMPLATE_DATA>{print(1)});
        server.setDbSetting(db::database::PD_DENY_STORE_USER_PHOTOS, QString());
        QCOMPARE(answer.status, int(Command::StatusBiometricsLocked));
    }

    // The window is a plug-in: without it the server refuses to open it, with it the command goes
    // there after the answer, and its report goes back to whoever asked.
    void theWindowAnswersThroughTheExchange()
    {
        const Command missing = asker->ask(QStringLiteral("show:fingerprintwidget"), unsigned(worker), QStringLiteral("asker"));
        QCOMPARE(missing.status, int(Command::StatusFailed));
        QVERIFY(firstText(missing).contains(QStringLiteral("fingerprintwidget")));
        QCOMPARE(asker->ask(QStringLiteral("fingerprint.finished:asker"), qint32(worker)).status, int(Command::StatusFailed));

        FingerprintWidgetPlugin plugin;
        const COMMAND_LIST types = plugin.init(VDServerInterface::instance(), QStringLiteral("fingerprintwidget"));
        VDServerInterface::instance()->addPlugin(&plugin, types);
        plugin.initOnExchangeReady();
        asker->listen(QStringLiteral("fingerprint.finished:asker"));
        auto* window = qobject_cast<FingerprintWidget*>(plugin.widget());
        window->setScanDuration(40);

        asker->data(QStringLiteral("setUserFingers"), worker, QList<TEMPLATE_DATA>{print(1), print(200)});
        QCOMPARE(asker->ask(QStringLiteral("show:fingerprintwidget.scan"), unsigned(worker), QStringLiteral("asker")).status,
                 int(Command::StatusOk));
        QTRY_VERIFY(window->isVisible());
        QCOMPARE(window->user(), worker);
        // Opened to scan: the index finger without a print is taken at once, once his prints are in.
        QTRY_COMPARE(window->findChild<QLabel*>("statusLabel")->text(), QStringLiteral("Отсканировано и сохранено отпечатков: 1"));
        QCOMPARE(window->templates().size(), 3);
        // Scanned again, a finger replaces its print.
        window->chooseFingers({1});
        window->scan();
        QTRY_VERIFY(!window->isScanning() && window->findChild<QPushButton*>("scanButton")->isEnabled());
        QTRY_COMPARE(fingersOf(worker).values(worker).size(), 3);
        window->chooseFingers({1, 6});
        window->removeChosen();
        QTRY_COMPARE(fingersOf(worker).values(worker).size(), 1);

        asker->heard.clear();
        window->close();
        QTRY_COMPARE(asker->heard.size(), 1);
        qint32 reported = 0;
        QList<TEMPLATE_DATA> prints;
        VDDataStream in(asker->heard.first().data);
        in >> reported >> prints;
        QCOMPARE(TYPE_ID(reported), worker);
        QCOMPARE(prints.size(), 1);
        QCOMPARE(prints.first().index, qint16(200));

        // Opened and closed without a scan: the worker alone.
        asker->ask(QStringLiteral("show:fingerprintwidget"), unsigned(worker), QStringLiteral("asker"));
        QTRY_VERIFY(window->isVisible());
        window->close();
        QTRY_COMPARE(asker->heard.size(), 2);
        VDDataStream alone(asker->heard.last().data);
        alone >> reported;
        QVERIFY(alone.atEnd());
        VDServerInterface::instance()->removePlugin(&plugin);
        VDServerInterface::instance()->sendLocalPluginsInfo();
    }

    void theCardHeldToTheReader_data()
    {
        QTest::addColumn<QString>("typed");  // empty: a new card; "-": taken away
        QTest::addColumn<QString>("status");
        QTest::newRow("a number") << "5550002" << "ok";
        QTest::newRow("a new card") << QString() << "ok";
        QTest::newRow("taken away") << "-" << "error";
    }

    void theCardHeldToTheReader()
    {
        QFETCH(QString, typed);
        QFETCH(QString, status);
        server.setCardHolder(true);
        const QString identity = QStringLiteral("asker");
        asker->listen(QStringLiteral("command_result:") + identity);
        QList<std::pair<QString, unsigned int>> wanted;
        const QMetaObject::Connection waiting = connect(&server, &vdserver::Server::cardWanted, this,
            [&wanted](const QString& who, unsigned int device) { wanted.append({who, device}); });
        const TYPE_ID reader = server.objects(DEVICE_DATANAME)->keys().first();
        QCOMPARE(asker->ask(QStringLiteral("devices.bind"), identity, unsigned(reader), QStringList{"read_card"}).status,
                 int(Command::StatusOk));
        asker->heard.clear();
        QCOMPARE(asker->ask(QStringLiteral("devices.readCard"), identity, unsigned(reader)).status, int(Command::StatusOk));
        QTRY_COMPARE(wanted.size(), 1);
        QTest::qWait(30);
        QVERIFY(asker->heard.isEmpty());  // the reader waits for a card

        CardReaderDialog person(QStringLiteral("Считыватель"));
        person.show();
        if (typed == QLatin1String("-")) {
            person.reject();
        } else if (typed.isEmpty()) {
            person.newCardButton()->click();
        } else {
            person.findChild<QLineEdit*>("numberEdit")->setText(typed);
            person.holdButton()->click();
        }
        server.presentCard(wanted.first().first, wanted.first().second, person.card());
        disconnect(waiting);
        server.setCardHolder(false);
        QTRY_COMPARE(asker->heard.size(), 1);
        unsigned int device = 0;
        QString command;
        QHash<QString, QVariant> result;
        VDDataStream in(asker->heard.first().data);
        in >> device >> command >> result;
        QCOMPARE(device, unsigned(reader));
        QCOMPARE(result.value("status").toString(), status);
        if (status == QLatin1String("ok")) {
            const CARD_ID number = ot_card::number(ObjectInfo(result.value("card").toByteArray()));
            QVERIFY(number != 0);
            QVERIFY(typed.isEmpty() ? LocalStorage::instance()->card(number, true).uid == 0 : QString::number(number) == typed);
        }
    }
};

QTEST_MAIN(TestBiometrics)
#include "tst_biometrics.moc"
