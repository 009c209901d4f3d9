#include "console.h"
#include "consoleoptions.h"
#include "constants.h"
#include "faketransport.h"
#include "icontheme.h"
#include "localdatamanager.h"
#include "localstorage.h"
#include "mainwindow.h"
#include "pluginhost.h"
#include "screenshot.h"
#include "seeddata.h"
#include "server.h"
#include "testenvironment.h"
#include "vdplugininterface.h"
#include "vdserverinterface.h"

#include <QAbstractButton>
#include <QAction>
#include <QDialog>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPointer>
#include <QProcess>
#include <QRegularExpression>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QVBoxLayout>
#include <QWizard>
#include <QtTest>

#include <algorithm>

namespace {
QStringList lifecycle()
{
    return qApp->property("lifecycle").toStringList();
}

void setLifecycle(const QStringList& calls)
{
    qApp->setProperty("lifecycle", calls);
}

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

// A wizard page with one field that must be filled in.
class TextPage : public QWizardPage
{
public:
    explicit TextPage(const QString& name)
    {
        auto* edit = new QLineEdit(this);
        edit->setObjectName(name);
        registerField(name + QLatin1Char('*'), edit);
        (new QVBoxLayout(this))->addWidget(edit);
    }
};

// Runs the real program off screen, with settings of its own; its exit code, -1 if it crashed or hung.
int runConsole(QProcess& process, const QStringList& arguments, const QTemporaryDir& home)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.path());
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home.path());
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(VDCONSOLE_BINARY), arguments);
    if (process.waitForFinished(90000) && process.exitStatus() == QProcess::NormalExit)
        return process.exitCode();
    process.kill();
    process.waitForFinished();
    return -1;
}
}  // namespace

class TestConsole : public QObject
{
    Q_OBJECT

public:
    // As the console does: the theme is there before any plug-in comes.
    TestConsole() { IconTheme::install(); }

private slots:
    void init()
    {
        vorandel::LocalStorage::instance()->clear();
        setLifecycle({});
    }

    void options_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<bool>("refused");
        // user|requests|screenshot|clicks|rows|plug-ins|store|server, or what the error names
        QTest::addColumn<QString>("expected");

        const QString besideTheProgram = QDir(QCoreApplication::applicationDirPath()).filePath("plugins");
        QTest::newRow("defaults") << QStringList() << false << "|-1|||1|" + besideTheProgram + "||";
        QTest::newRow("all of them")
            << QStringList{"--plugins", "p", "--screenshot", "s.png", "--requests", "1000000", "--user", "admin",
                           "--database", "/srv/passes.sqlite", "--screenshot-click", "tbNotConfirmed",
                           "--screenshot-click", "tbActive", "--screenshot-rows", "3"}
            << false << "admin|1000000|s.png|tbNotConfirmed,tbActive|3|p|/srv/passes.sqlite|";
        QTest::newRow("a server by IPv6") << QStringList{"--server", "[::1]:7430", "--user", "petrov"} << false
                                          << "petrov|-1|||1|" + besideTheProgram + "||::1:7430";
        QTest::newRow("server, no port") << QStringList{"--server", "desk-7.site"} << true << "HOST:PORT";
        QTest::newRow("server, port 0") << QStringList{"--server", "desk-7.site:0"} << true << "'0'";
        QTest::newRow("server and a store") << QStringList{"--server", "h:1", "--database", "x.sqlite"} << true
                                            << "--database";
        QTest::newRow("requests, too many") << QStringList{"--requests", "1000001"} << true << "1000001";
        QTest::newRow("user, blank") << QStringList{"--user", " "} << true << "--user";
        QTest::newRow("stray argument") << QStringList{"admin"} << true << "admin";
        const QStringList shot{"--screenshot", "s.png"};
        QTest::newRow("click without a screenshot") << QStringList{"--screenshot-click", "tbAll"} << true
                                                    << "--screenshot-click needs --screenshot";
        QTest::newRow("page without an action") << shot + QStringList{"--screenshot-page", "1"} << true
                                                << "--screenshot-page needs --screenshot-action";
        QTest::newRow("misspelt key") << shot + QStringList{"--screenshot-action", "a", "--screenshot-input", "x=ab{Retrun}"}
                                      << true << "unknown key {Retrun}";
    }

    void options()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, refused);
        QFETCH(QString, expected);

        const ConsoleOptions::Parsed parsed = ConsoleOptions::parse(QStringList{"vdconsole"} + arguments);
        QCOMPARE(parsed.outcome, refused ? ConsoleOptions::Parsed::Error : ConsoleOptions::Parsed::Run);
        const ConsoleOptions& given = parsed.options;
        const QStringList values{given.user, QString::number(given.requests.value_or(-1)), given.screenshotFile,
                                 given.screenshot.clicks.join(QLatin1Char(',')), QString::number(given.screenshot.rows),
                                 given.pluginDir, given.database ? given.database->displayName() : QString(),
                                 given.server ? QStringLiteral("%1:%2").arg(given.server->host).arg(given.server->port)
                                              : QString()};
        if (refused)
            QVERIFY2(parsed.text.contains(expected), qPrintable(parsed.text));
        else
            QCOMPARE(values.join(QLatin1Char('|')), expected);
    }

    // A window of a tab with actions that open a wizard and a dialog with tabs; the picture is of
    // what the action opens, filled in and walked to the page asked for.
    void shootsWhatAnActionOpens_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QStringList>("script");  // what follows --screenshot-action on the command line
        QTest::addColumn<QString>("shown");  // what the picture shows, or why there is none

        const QString input = QStringLiteral("--screenshot-input");
        QTest::newRow("wizard, filled in and walked on")
            << "actionWizard" << QStringList{input, "name=Ива{Return}", input, "note=готово", "--screenshot-page", "1"}
            << "wizard 1 Ива готово";
        QTest::newRow("incomplete page") << "actionWizard" << QStringList{"--screenshot-page", "1"}
                                         << "page 0 of the wizard is not complete";
        QTest::newRow("tab of a dialog") << "actionTabs" << QStringList{"--screenshot-page", "2"} << "tabs 2";
        QTest::newRow("main window after all") << "actionTabs" << QStringList{"--screenshot-page", "1", "--screenshot-main"}
                                               << "main";
        QTest::newRow("no such action") << "actionNone" << QStringList() << "no action 'actionNone'";
    }

    void shootsWhatAnActionOpens()
    {
        QFETCH(QString, action);
        QFETCH(QStringList, script);
        QFETCH(QString, shown);

        QMainWindow window;
        auto* tabs = new QTabWidget(&window);
        window.setCentralWidget(tabs);
        auto* tab = new QWidget;
        tabs->addTab(tab, QStringLiteral("Заявки"));
        QWizard* wizard = nullptr;
        QDialog* dialog = nullptr;
        auto* openWizard = new QAction(tab);
        openWizard->setObjectName(QStringLiteral("actionWizard"));
        connect(openWizard, &QAction::triggered, tab, [&] {
            wizard = new QWizard(tab);
            wizard->setPage(0, new TextPage(QStringLiteral("name")));
            wizard->setPage(1, new TextPage(QStringLiteral("note")));
            wizard->show();
        });
        auto* openTabs = new QAction(tab);
        openTabs->setObjectName(QStringLiteral("actionTabs"));
        connect(openTabs, &QAction::triggered, tab, [&] {
            dialog = new QDialog(tab);
            auto* pages = new QTabWidget(dialog);
            for (int i = 0; i < 3; ++i)
                pages->addTab(new QLabel(QString::number(i)), QString::number(i));
            (new QVBoxLayout(dialog))->addWidget(pages);
            dialog->exec();  // a loop of its own
        });
        window.resize(500, 300);
        window.show();

        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("shot.png"));
        const ConsoleOptions::Parsed parsed = ConsoleOptions::parse(
            QStringList{"vdconsole", "--screenshot", file, "--screenshot-action", action} + script);
        QCOMPARE(parsed.outcome, ConsoleOptions::Parsed::Run);

        Screenshot screenshot(&window, tabs, file, parsed.options.screenshot);
        QSignalSpy finished(&screenshot, &Screenshot::finished);
        // As the console quits, so the dialog's own loop ends.
        connect(&screenshot, &Screenshot::finished, tab, [&] {
            if (dialog)
                dialog->reject();
        });
        QtMessageHandler previous = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
            if (type == QtCriticalMsg)
                qApp->setProperty("complaint", text);
        });
        qApp->setProperty("complaint", QString());
        screenshot.take();
        QVERIFY(finished.wait(20000));
        qInstallMessageHandler(previous);
        const int exitCode = finished.first().first().toInt();
        QString outcome = qApp->property("complaint").toString();
        const QWidget* pictured = nullptr;
        if (exitCode == 0 && script.contains(QStringLiteral("--screenshot-main"))) {
            pictured = &window;
            outcome = QStringLiteral("main");
        } else if (exitCode == 0 && wizard) {
            pictured = wizard;
            outcome = QStringLiteral("wizard %1 %2 %3")
                          .arg(wizard->currentId())
                          .arg(wizard->field("name").toString(), wizard->field("note").toString());
        } else if (exitCode == 0 && dialog) {
            pictured = dialog;
            outcome = QStringLiteral("tabs %1").arg(dialog->findChild<QTabWidget*>()->currentIndex());
        }
        QCOMPARE(exitCode, pictured ? 0 : 1);
        if (!pictured) {
            QVERIFY2(outcome.contains(shown), qPrintable(outcome));
            return;
        }
        QCOMPARE(outcome, shown);
        QCOMPARE(QImage(file).size(), pictured->size());
    }

    void drawsEveryIconOfThePlugin_data()
    {
        QTest::addColumn<QString>("name");

        // Every name the tab and the platform's widgets ask the theme for.
        const QStringList names{
            "common-pause1", "common-pause", "common-play", "common-online", "common-cancel", "common-nofilter",
            "common-info", "common-warning", "common-fingerprint",
            "action-add", "action-remove", "action-config", "action-finger", "action-left", "action-right",
            "action-unlock", "action-search",
            "object-OT_PASS_REQUEST", "object-OT_WORKER", "object-OT_WORKER-d", "object-OT_USER", "object-OT_CARD",
            "object-OT_ACCESS_POLICY", "object-OT_FIRM", "object-OT_DEPARTMENT", "object-OT_SUBJECTROOT",
        };
        for (const QString& name : names)
            QTest::newRow(qPrintable(name)) << name;
    }

    void drawsEveryIconOfThePlugin()
    {
        QFETCH(QString, name);

        QVERIFY(QIcon::hasThemeIcon(name));
        // An icon of its own: the loader would otherwise fall back on a shorter name, so that
        // "object-OT_WORKER-d" silently looked like "object-OT_WORKER".
        QVERIFY(QFileInfo::exists(IconTheme::iconFolder() + QLatin1Char('/') + name + QStringLiteral(".svg")));
        const QIcon icon = QIcon::fromTheme(name);
        for (const int size : {16, 24, 48}) {
            const QImage image = icon.pixmap(size, size).toImage().convertToFormat(QImage::Format_Alpha8);
            QCOMPARE(image.size(), QSize(size, size));
            const auto drawn = std::count_if(image.constBits(), image.constBits() + image.sizeInBytes(),
                                             [](uchar alpha) { return alpha > 0; });
            // Not a speck: a real picture covers a good part of its square.
            QVERIFY2(drawn * 8 > size * size, qPrintable(QStringLiteral("%1 px drawn at %2").arg(drawn).arg(size)));
        }
    }

    void hostDrivesTheLifeCycle()
    {
        // alpha needs beta, beta needs the console's own store keeper; gamma needs nothing and
        // may not be seen. A library of the folder isn't a plug-in at all.
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("skipped.*libnotaplugin")));
        vdserver::Server server;
        server.seed();
        LocalDataManager builtIn(&server);
        FakeTransport transport;
        VDServerInterface::instance()->setTransport(nullptr);
        QTabWidget tabs;
        QList<QPointer<QObject>> pages;
        {
            PluginHost host;
            host.addBuiltIn(&builtIn);
            QCOMPARE(host.load(QStringLiteral(TEST_PLUGIN_ROOT "/ordered")), 3);
            QCOMPARE(lifecycle(), QStringList({"alpha:instance", "beta:instance", "gamma:instance"}));

            setLifecycle({});
            host.start(&tabs, &transport);
            const QStringList expected{
                "beta:init", "beta:canShow", "beta:tabList", "beta:insertedToInterface",
                "gamma:init", "gamma:canShow",
                "alpha:init", "alpha:canShow", "alpha:tabList", "alpha:insertedToInterface",
                "beta:initOnExchangeReady", "gamma:initOnExchangeReady", "alpha:initOnExchangeReady",
            };
            QCOMPARE(lifecycle(), expected);
            QCOMPARE(tabTitles(tabs), QStringList({"beta", "alpha"}));
            // The store was as full as the server by the time the first tab was built.
            QCOMPARE(qApp->property("beta.requestsAtInsert").toInt(),
                     server.objects(vorandel::PASS_REQUEST_DATANAME)->size());
            QCOMPARE(names(host.started()), QStringList({"localdatamanager", "beta", "gamma", "alpha"}));
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
            for (VDPluginInterface* plugin : host.started().mid(1))
                pages << plugin->object();
            setLifecycle({});
        }

        QCOMPARE(lifecycle(), QStringList({"alpha:uninit", "gamma:uninit", "beta:uninit"}));
        // Pages go, the one never shown included, and with them their tabs; the exchange is cut off.
        QCOMPARE(pages.size(), 3);
        QVERIFY(std::all_of(pages.cbegin(), pages.cend(), [](const QPointer<QObject>& page) { return !page; }));
        QCOMPARE(tabs.count(), 0);
        QVERIFY(VDServerInterface::instance()->queryPlugins().isEmpty());
        QCOMPARE(VDServerInterface::instance()->transport(), nullptr);
    }

    void hostRefusesWhatCannotStart()
    {
        FakeTransport transport;
        QTabWidget tabs;
        PluginHost host;
        QCOMPARE(host.load(QStringLiteral(TEST_PLUGIN_ROOT "/refused")), 5);
        host.start(&tabs, &transport);

        // zeta needs nothing and is the only one to run.
        QCOMPARE(names(host.started()), QStringList{"zeta"});
        QCOMPARE(tabTitles(tabs), QStringList{"zeta"});
        const QString problems = host.problems().join(QLatin1Char('\n'));
        QCOMPARE(host.problems().size(), 4);
        // Each with what it lacks: a plug-in that is missing, one refused, one of a circle.
        const QStringList refused{"«delta».*«missing»", "«epsilon».*«delta»", "«eta».*«theta»", "«theta».*«eta»"};
        for (const QString& problem : refused)
            QVERIFY2(problems.contains(QRegularExpression(problem)), qPrintable(problems));
        QCOMPARE(lifecycle().filter(QRegularExpression(QStringLiteral(":init$"))), QStringList{"zeta:init"});
    }

    // The status bar counts the rows of the page in front against what the operator may see.
    void statusBarCountsTheRequestsInSight()
    {
        ConsoleOptions options;
        options.pluginDir = qEnvironmentVariable("VD_PLUGIN_DIR");
        Console console(options);
        QVERIFY(console.logIn());
        console.start();
        MainWindow* window = console.window();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        auto* rows = window->findChild<QLabel*>(QStringLiteral("rowsLabel"));
        QVERIFY(rows);
        const int requests = int(vorandel::LocalStorage::instance()->constObjects(QStringLiteral("pass_request"))->size());
        QTRY_COMPARE(rows->text(), QStringLiteral("Заявки: %1").arg(QLocale().toString(requests)));

        window->findChild<QAbstractButton*>(QStringLiteral("tbRejected"))->click();
        QVERIFY(rows->text().startsWith(QStringLiteral("Заявки: показано ")));
        QVERIFY(rows->text().endsWith(QStringLiteral(" из %1").arg(QLocale().toString(requests))));
    }

    // A login outside the demo set is refused before anything is made: no store, no seeding.
    void exitsOnAnUnknownUser()
    {
        const QTemporaryDir home;
        QProcess process;
        QCOMPARE(runConsole(process, {"--user", "nobody", "--plugins", home.path()}, home), 1);
        const QString err = QString::fromUtf8(process.readAllStandardError());
        QVERIFY2(err.contains(QStringLiteral("nobody")), qPrintable(err));
        QVERIFY(!QFileInfo::exists(QDir(home.path()).filePath(QStringLiteral("vorandel"))));
        QVERIFY(process.readAllStandardOutput().isEmpty());
        // The operator learns whom he may log in as.
        for (const vdserver::SeedData::DemoUser& user : vdserver::SeedData::demoUsers()) {
            QVERIFY2(err.contains(user.login), qPrintable(user.login));
            QVERIFY2(err.contains(user.displayName()), qPrintable(user.displayName()));
        }
    }

    // What needs no window is answered without a display.
    void answersWithoutADisplay_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("said");

        QTest::newRow("help") << QStringList{"--help"} << 0 << "--server";
        QTest::newRow("version") << QStringList{"--version"} << 0 << "vdconsole";
        QTest::newRow("a mistake") << QStringList{"--requests", "many"} << 2 << "many";
    }

    void answersWithoutADisplay()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, said);

        const QTemporaryDir home;
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            environment.remove(QString::fromLatin1(name));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.path());
        environment.insert(QStringLiteral("XDG_DATA_HOME"), home.path());
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(VDCONSOLE_BINARY), arguments);
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), exitCode);
        const QString text = QString::fromUtf8(process.readAllStandardOutput() + process.readAllStandardError());
        QVERIFY2(text.contains(said), qPrintable(text));
        QVERIFY2(!text.contains(QStringLiteral("platform plugin")), qPrintable(text));
    }

    // The store is made and seeded once in the data folder and kept; --requests seeds a fresh
    // one of its own and never seeds over a store that is there.
    void keepsItsStoreInTheDataFolder()
    {
        const QTemporaryDir home;
        const QString folder = QDir(home.path()).filePath(QStringLiteral("vorandel/vdconsole"));
        const QString file = QDir(folder).filePath(QStringLiteral("store.sqlite"));
        // Without plug-ins, a picture ends the run as soon as the window is up.
        const QStringList quick{"--plugins", home.path(), "--screenshot", home.filePath(QStringLiteral("shot.png"))};
        const auto run = [&](const QStringList& arguments, QString* out, QString* err) {
            QProcess process;
            const int exitCode = runConsole(process, arguments + quick, home);
            *out = QString::fromUtf8(process.readAllStandardOutput());
            *err = QString::fromUtf8(process.readAllStandardError());
            return exitCode;
        };
        QString out;
        QString err;
        QCOMPARE(run({}, &out, &err), 0);
        QVERIFY2(out.contains(QStringLiteral("A new store with the demo data set is in ") + file), qPrintable(out));
        QVERIFY(QFile::exists(file));
        QCOMPARE(run({}, &out, &err), 0);
        QVERIFY2(!out.contains(QStringLiteral("new store")), qPrintable(out));

        QFile store(file);
        QVERIFY(store.open(QIODevice::ReadOnly));
        const QByteArray kept = store.readAll();
        store.close();
        QCOMPARE(run({"--requests", "5", "--database", file}, &out, &err), 1);
        QVERIFY2(err.contains(QStringLiteral("already holds a store")), qPrintable(err));
        QVERIFY(store.open(QIODevice::ReadOnly));
        QCOMPARE(store.readAll(), kept);

        QCOMPARE(run({"--requests", "5"}, &out, &err), 0);
        QVERIFY2(out.contains(QStringLiteral("A fresh demo data set of 5 requests is in ")
                              + QDir(folder).filePath(QStringLiteral("demo-5.sqlite"))),
                 qPrintable(out));
    }

    // With the plug-ins beside the program: the tab of the product once it is built, or the page
    // that says there is none.
    void savesAScreenshot()
    {
        const QTemporaryDir home;
        const QString file = home.filePath(QStringLiteral("console.png"));
        QProcess process;
        const int exitCode = runConsole(process, {"--screenshot", file}, home);
        QVERIFY2(exitCode == 0, process.readAllStandardError().constData());
        QVERIFY(QString::fromUtf8(process.readAllStandardOutput()).contains(file));
        QVERIFY(!QImage(file).isNull());
    }

private:
    const TestEnvironment m_environment;
};

QTEST_MAIN(TestConsole)
#include "tst_console.moc"
