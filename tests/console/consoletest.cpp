#include "consoletest.h"

#include "authdata.h"
#include "console.h"
#include "localstorage.h"
#include "mainwindow.h"
#include "server.h"
#include "vdguiglobals.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QProcess>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace {
ConsoleOptions optionsFor(const QString& pluginDir, const QString& user = {})
{
    ConsoleOptions options;
    options.pluginDir = pluginDir;
    options.user = user;
    return options;
}

// The users of the demo set, as the console's own server seeds them.
QList<vdserver::Account> seededAccounts()
{
    vdserver::Server server;
    server.seed();
    return server.accounts();
}

vdserver::Account defaultAccount()
{
    vdserver::Server server;
    server.seed();
    const QList<vdserver::Account> accounts = server.accounts();
    const auto it = std::find_if(accounts.cbegin(), accounts.cend(), [&](const vdserver::Account& account) {
        return account.login == server.defaultLogin();
    });
    return it != accounts.cend() ? *it : vdserver::Account{};
}

struct Run
{
    int exitCode = -1;
    QString out;
    QString err;
};

// Runs the real program off screen, with settings of its own.
Run runConsole(const QStringList& arguments, const QTemporaryDir& home)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.path());
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(VDCONSOLE_BINARY), arguments);
    Run run;
    if (!process.waitForFinished(90000) || process.exitStatus() != QProcess::NormalExit) {
        process.kill();
        process.waitForFinished();
        return run;
    }
    run.exitCode = process.exitCode();
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}
}  // namespace

void ConsoleTest::init()
{
    vorandel::LocalStorage::instance()->clear();
    qApp->setProperty("lifecycle", QStringList());
}

void ConsoleTest::logsIn_data()
{
    QTest::addColumn<QString>("login");  // empty: the default
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QStringList>("roles");

    const vdserver::Account admin = defaultAccount();
    QVERIFY(!admin.login.isEmpty());
    QTest::newRow("by default") << QString() << admin.login << admin.roles;
    const QList<vdserver::Account> accounts = seededAccounts();
    const auto other = std::find_if(accounts.cbegin(), accounts.cend(),
                                    [&](const vdserver::Account& account) { return account.roles != admin.roles; });
    QVERIFY(other != accounts.cend());
    QTest::newRow("with fewer rights") << other->login << other->login << other->roles;
}

void ConsoleTest::logsIn()
{
    QFETCH(QString, login);
    QFETCH(QString, expected);
    QFETCH(QStringList, roles);

    Console console(optionsFor(QString(), login));
    QVERIFY(console.logIn());
    QCOMPARE(AuthData::user(), expected);
    QCOMPARE(AuthData::roles(), roles);
    QVERIFY(!AuthData::sessionId().isEmpty());
}

void ConsoleTest::fillsTheStoreBeforeTheTabsAreBuilt()
{
    Console console(optionsFor(QStringLiteral(TEST_PLUGIN_ROOT "/store")));
    QVERIFY(console.logIn());
    console.start();

    QCOMPARE(console.window()->tabs()->count(), 1);
    QCOMPARE(console.window()->tabs()->tabText(0), QStringLiteral("omega"));
    QVERIFY(qApp->property("omega.requestsAtInsert").toInt() > 0);
    QCOMPARE(VDGuiGlobals::vdApp.data(), console.window());
}

void ConsoleTest::saysWhyThereAreNoTabs_data()
{
    QTest::addColumn<QString>("folder");  // empty: an empty folder
    QTest::addColumn<QString>("named");   // what the page must mention; empty: the folder

    QTest::newRow("no plug-ins") << QString() << QString();
    QTest::newRow("none the user may see") << QStringLiteral(TEST_PLUGIN_ROOT "/hidden")
                                           << defaultAccount().displayName;
}

void ConsoleTest::saysWhyThereAreNoTabs()
{
    QFETCH(QString, folder);
    QFETCH(QString, named);

    const QTemporaryDir empty;
    if (folder.isEmpty()) {
        folder = empty.path();
        named = QDir::toNativeSeparators(folder);
    }
    Console console(optionsFor(folder));
    QVERIFY(console.logIn());
    console.start();

    MainWindow* window = console.window();
    QCOMPARE(window->tabs()->count(), 0);
    const auto* pages = window->findChild<QStackedWidget*>(QStringLiteral("pages"));
    QVERIFY(pages);
    QCOMPARE(pages->currentWidget()->objectName(), QStringLiteral("messagePage"));
    QVERIFY(!window->findChild<QLabel*>(QStringLiteral("messageTitle"))->text().isEmpty());
    const QString details = window->findChild<QLabel*>(QStringLiteral("messageDetails"))->text();
    QVERIFY2(details.contains(named), qPrintable(details));
}

void ConsoleTest::exitsOnAnUnknownUser()
{
    const QTemporaryDir home;
    const Run run = runConsole({"--user", "nobody", "--plugins", home.path()}, home);
    QVERIFY(run.exitCode > 0);
    QVERIFY2(run.err.contains(QStringLiteral("nobody")), qPrintable(run.err));
    // The operator learns whom he may log in as.
    for (const vdserver::Account& account : seededAccounts()) {
        QVERIFY2(run.err.contains(account.login), qPrintable(account.login));
        QVERIFY2(run.err.contains(account.displayName), qPrintable(account.displayName));
    }
}

void ConsoleTest::savesAScreenshot_data()
{
    QTest::addColumn<bool>("withPlugins");

    QTest::newRow("with its plug-in") << true;
    QTest::newRow("without plug-ins") << false;
}

void ConsoleTest::savesAScreenshot()
{
    QFETCH(bool, withPlugins);

    const QTemporaryDir home;
    const QString file = home.filePath(QStringLiteral("console.png"));
    QStringList arguments{"--screenshot", file};
    if (withPlugins) {
        if (!QFileInfo::exists(QStringLiteral(VD_PLUGIN_DIR "/librequestview.so")))
            QSKIP("the plug-in isn't built");
    } else {
        arguments << QStringLiteral("--plugins") << home.filePath(QStringLiteral("no-plugins"));
    }

    const Run run = runConsole(arguments, home);
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QVERIFY(run.out.contains(file));
    QVERIFY(QFileInfo(file).size() > 0);
    QVERIFY(!QImage(file).isNull());
}
