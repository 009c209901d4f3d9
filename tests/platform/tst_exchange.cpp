#include "faketransport.h"
#include "vddatastream.h"
#include "vdplugininterface.h"
#include "vdserverinterface.h"

#include <QSignalSpy>
#include <QtTest>

namespace {
class Plugin : public QObject, public VDPluginInterface
{
public:
    QString pluginName() const override { return QStringLiteral("probe"); }
    int pluginVersion() const override { return 0x10000; }
    QString pluginBuild() const override { return QStringLiteral("1.0"); }
    QWidget* widget() override { return nullptr; }
    QObject* object() override { return this; }
    QStringList requireList() override { return {}; }
    void initOnExchangeReady() override { ++exchangeReadyCalls; }

    int exchangeReadyCalls = 0;
};

// Answers at once, inside send(), as a careless transport might.
class HastyTransport : public ExchangeTransport
{
public:
    void send(const Command& query, std::function<void(Command&)> reply) override
    {
        Command answer = query;
        answer.status = Command::StatusOk;
        reply(answer);
    }
};
}  // namespace

class TestExchange : public QObject
{
    Q_OBJECT

private slots:
    // A pushed command reaches the handler registered for its name and no other. Once the plug-in
    // removes that handler, the command is dropped, and its type is no longer announced as one
    // this console receives.
    void pushedCommandsReachTheirHandlerOnly()
    {
        VDServerInterface* server = VDServerInterface::instance();
        Plugin plugin;
        QStringList seen;
        const CommandType type(8, QStringLiteral("command_result:a"));
        plugin.registerCommandHandler(type, [&](Command& c) { seen << c.name; });
        server->addCommandType(type, &plugin);
        QVERIFY(server->localCommandTypes().contains(type));
        QSignalSpy dropped(server, &VDServerInterface::commandDropped);
        Command command;
        command.name = QStringLiteral("command_result:a");
        server->deliver(command);
        command.name = QStringLiteral("command_result:b");
        server->deliver(command);
        QCOMPARE(seen, QStringList{QStringLiteral("command_result:a")});
        QCOMPARE(dropped.count(), 1);

        plugin.removeCommandType(type);
        QVERIFY(!server->localCommandTypes().contains(type));
        command.name = QStringLiteral("command_result:a");
        server->deliver(command);
        QCOMPARE(seen.size(), 1);
        QCOMPARE(dropped.count(), 2);
    }

    void answersNeverArriveInsideSend()
    {
        HastyTransport hasty;
        VDServerInterface::instance()->setTransport(&hasty);
        Plugin plugin;
        int answers = 0;
        plugin.sendQuery(plugin.newCommand(QStringLiteral("data.syslog"), 8), [&](Command&) { ++answers; });
        QCOMPARE(answers, 0);
        QCOMPARE(plugin.pendingQueries(), 1);
        QTRY_COMPARE(answers, 1);
        QCOMPARE(plugin.pendingQueries(), 0);
        VDServerInterface::instance()->setTransport(nullptr);
    }

    void withoutAnExchangeQueriesFailWithAText()
    {
        VDServerInterface::instance()->setTransport(nullptr);
        Plugin plugin;
        Command answer;
        bool answered = false;
        plugin.sendQuery(plugin.newCommand(QStringLiteral("data.syslog"), 8), [&](Command& c) {
            answer = c;
            answered = true;
        });
        QTRY_VERIFY(answered);
        QVERIFY(answer.status != Command::StatusOk);
        QString text;
        VDDataStream in(answer.data);
        in >> text;
        QVERIFY(!text.isEmpty());
    }

    void answersForAGonePluginAreDropped()
    {
        FakeTransport transport;
        bool called = false;
        {
            Plugin plugin;
            plugin.sendQuery(plugin.newCommand(QStringLiteral("data.syslog"), 8), [&](Command&) { called = true; });
        }
        transport.answerAll(Command::StatusOk);
        QTest::qWait(10);
        QVERIFY(!called);
    }

    void temporaryPluginsFollowTheExchange()
    {
        VDServerInterface* server = VDServerInterface::instance();
        server->setTransport(nullptr);
        Plugin plugin;
        server->addTemporaryPlugin(&plugin);
        QVERIFY(server->queryPlugins().contains(&plugin));
        QCOMPARE(plugin.exchangeReadyCalls, 0);
        FakeTransport transport;  // the exchange comes up
        QCOMPARE(plugin.exchangeReadyCalls, 1);
        server->removeTemporaryPlugin(&plugin);
        QVERIFY(!server->queryPlugins().contains(&plugin));
    }
};

QTEST_MAIN(TestExchange)
#include "tst_exchange.moc"
