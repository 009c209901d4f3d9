#include "pluginhosttest.h"

#include "faketransport.h"
#include "pluginhost.h"
#include "vdplugininterface.h"
#include "vdserverinterface.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QPointer>
#include <QRegularExpression>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace {
QString pluginFolder(const QString& situation)
{
    return QStringLiteral(TEST_PLUGIN_ROOT "/") + situation;
}

QStringList lifecycle()
{
    return qApp->property("lifecycle").toStringList();
}

void record(const QString& call)
{
    qApp->setProperty("lifecycle", lifecycle() << call);
}

void clearLifecycle()
{
    qApp->setProperty("lifecycle", QStringList());
}

// A built-in plug-in, as the console makes its own: no page, no file.
class CorePlugin : public VDPluginInterface
{
public:
    COMMAND_LIST init(VDServerInterface* server, const QString& path) override
    {
        record(QStringLiteral("core:init"));
        return VDPluginInterface::init(server, path);
    }
    void uninit() override { record(QStringLiteral("core:uninit")); }
    void initOnExchangeReady() override { record(QStringLiteral("core:initOnExchangeReady")); }
    QString pluginName() const override { return QStringLiteral("core"); }
    int pluginVersion() const override { return 0x10000; }
    QString pluginBuild() const override { return QStringLiteral("1.0"); }
    QWidget* widget() override { return nullptr; }
    QObject* object() override { return &m_object; }
    QStringList requireList() override { return {}; }

private:
    QObject m_object;
};

QStringList tabTitles(const QTabWidget& tabs)
{
    QStringList titles;
    for (int i = 0; i < tabs.count(); ++i)
        titles << tabs.tabText(i);
    return titles;
}

QStringList names(const QList<VDPluginInterface*>& plugins)
{
    QStringList names;
    for (const VDPluginInterface* plugin : plugins)
        names << plugin->pluginName();
    return names;
}
}  // namespace

void PluginHostTest::init()
{
    clearLifecycle();
}

void PluginHostTest::startsInTheOrderOfRequirements()
{
    // alpha needs beta, beta needs the built-in core; gamma needs nothing and may not be seen.
    // Two libraries of the folder aren't plug-ins of the console.
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("skipped.*libnotaplugin")));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("skipped.*libforeign")));
    CorePlugin core;
    FakeTransport transport;
    VDServerInterface::instance()->setTransport(nullptr);
    QTabWidget tabs;
    PluginHost host;
    host.addBuiltIn(&core);
    QCOMPARE(host.load(pluginFolder(QStringLiteral("ordered"))), 3);
    QCOMPARE(lifecycle(), QStringList({"alpha:instance", "beta:instance", "gamma:instance"}));

    clearLifecycle();
    host.start(&tabs, &transport);

    const QStringList expected{
        "core:init",
        "beta:init", "beta:canShow", "beta:tabList", "beta:insertedToInterface",
        "gamma:init", "gamma:canShow",
        "alpha:init", "alpha:canShow", "alpha:tabList", "alpha:insertedToInterface",
        "core:initOnExchangeReady", "beta:initOnExchangeReady", "gamma:initOnExchangeReady",
        "alpha:initOnExchangeReady",
    };
    QCOMPARE(lifecycle(), expected);
    QCOMPARE(tabTitles(tabs), QStringList({"beta", "alpha"}));
    QCOMPARE(names(host.started()), QStringList({"core", "beta", "gamma", "alpha"}));
    QCOMPARE(names(VDServerInterface::instance()->queryPlugins()), names(host.started()));
    // The server hears what the plug-ins receive once they have all said it.
    QCOMPARE(VDServerInterface::instance()->transport(), &transport);
    const QList<Command> infos = transport.sent(QStringLiteral("exchange.local_plugins_info"));
    QCOMPARE(infos.size(), 1);
    COMMAND_LIST types;
    readPayload(infos.constFirst(), types);
    QCOMPARE(types, COMMAND_LIST({{8, QStringLiteral("test.beta")}, {8, QStringLiteral("test.gamma")},
                                  {8, QStringLiteral("test.alpha")}}));
    QVERIFY(host.problems().isEmpty());
}

void PluginHostTest::refusesWhatCannotStart_data()
{
    QTest::addColumn<QString>("plugin");
    QTest::addColumn<QString>("requirement");

    QTest::newRow("requirement missing") << "delta" << "missing";
    QTest::newRow("requirement refused") << "epsilon" << "delta";
    QTest::newRow("circle, one way") << "eta" << "theta";
    QTest::newRow("circle, other way") << "theta" << "eta";
}

void PluginHostTest::refusesWhatCannotStart()
{
    QFETCH(QString, plugin);
    QFETCH(QString, requirement);

    FakeTransport transport;
    QTabWidget tabs;
    PluginHost host;
    QCOMPARE(host.load(pluginFolder(QStringLiteral("refused"))), 5);
    host.start(&tabs, &transport);

    // zeta needs nothing and is the only one to run.
    QCOMPARE(names(host.started()), QStringList{"zeta"});
    QCOMPARE(tabTitles(tabs), QStringList{"zeta"});
    QVERIFY(!lifecycle().contains(plugin + QStringLiteral(":init")));

    const QStringList problems = host.problems();
    QCOMPARE(problems.size(), 4);
    const QString quoted = QStringLiteral("«%1»");
    const auto problem = std::find_if(problems.cbegin(), problems.cend(), [&](const QString& text) {
        return text.contains(quoted.arg(plugin)) && text.contains(quoted.arg(requirement));
    });
    QVERIFY2(problem != problems.cend(), qPrintable(problems.join(QLatin1Char('\n'))));
}

void PluginHostTest::reportsAFolderWithoutPlugins_data()
{
    QTest::addColumn<QString>("content");

    QTest::newRow("empty") << "";
    QTest::newRow("missing") << "missing";
    QTest::newRow("no plug-in among its libraries") << "library";
}

void PluginHostTest::reportsAFolderWithoutPlugins()
{
    QFETCH(QString, content);

    QTemporaryDir dir;
    QString folder = dir.path();
    if (content == QLatin1String("missing")) {
        folder = dir.filePath(QStringLiteral("nowhere"));
    } else if (content == QLatin1String("library")) {
        QVERIFY(QFile::copy(pluginFolder(QStringLiteral("ordered/libnotaplugin.so")),
                            dir.filePath(QStringLiteral("libnotaplugin.so"))));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("skipped.*libnotaplugin")));
    }

    CorePlugin core;
    FakeTransport transport;
    QTabWidget tabs;
    PluginHost host;
    host.addBuiltIn(&core);
    QCOMPARE(host.load(folder), 0);
    host.start(&tabs, &transport);

    QCOMPARE(host.problems().size(), 1);
    QVERIFY2(host.problems().constFirst().contains(QDir::toNativeSeparators(folder)),
             qPrintable(host.problems().constFirst()));
    // What the console brings along still runs.
    QCOMPARE(names(host.started()), QStringList{"core"});
    QCOMPARE(tabs.count(), 0);
}

void PluginHostTest::endsThePluginsInReverseOrder()
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("skipped")));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("skipped")));
    CorePlugin core;
    FakeTransport transport;
    QTabWidget tabs;
    QList<QPointer<QObject>> loaded;
    {
        PluginHost host;
        host.addBuiltIn(&core);
        host.load(pluginFolder(QStringLiteral("ordered")));
        host.start(&tabs, &transport);
        for (VDPluginInterface* plugin : host.started()) {
            if (plugin != &core)
                loaded << plugin->object();
        }
        clearLifecycle();
    }

    QCOMPARE(lifecycle(), QStringList({"alpha:uninit", "gamma:uninit", "beta:uninit", "core:uninit"}));
    // Pages go, the one never shown included, and with them their tabs; the exchange is cut off.
    QCOMPARE(loaded.size(), 3);
    QVERIFY(std::all_of(loaded.cbegin(), loaded.cend(), [](const QPointer<QObject>& p) { return p.isNull(); }));
    QCOMPARE(tabs.count(), 0);
    QVERIFY(VDServerInterface::instance()->queryPlugins().isEmpty());
    QCOMPARE(VDServerInterface::instance()->transport(), nullptr);
}
