#include "consoleoptionstest.h"

#include "consoleoptions.h"

#include <QCoreApplication>
#include <QDir>
#include <QTest>

namespace {
ConsoleOptions::Parsed parse(const QStringList& arguments)
{
    return ConsoleOptions::parse(QStringList{QStringLiteral("vdconsole")} + arguments);
}
}  // namespace

void ConsoleOptionsTest::defaults()
{
    const ConsoleOptions::Parsed parsed = parse({});
    QCOMPARE(parsed.outcome, ConsoleOptions::Parsed::Run);
    QVERIFY(parsed.options.user.isEmpty());
    QVERIFY(!parsed.options.requests.has_value());
    QVERIFY(parsed.options.screenshotFile.isEmpty());
    QCOMPARE(QDir(parsed.options.pluginDir),
             QDir(QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("plugins"))));
}

void ConsoleOptionsTest::goodValues_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("user");
    QTest::addColumn<int>("requests");  // -1: not given
    QTest::addColumn<QString>("screenshot");
    QTest::addColumn<QString>("plugins");  // empty: the default

    QTest::newRow("user") << QStringList{"--user", "petrova"} << "petrova" << -1 << "" << "";
    QTest::newRow("user=") << QStringList{"--user=petrova"} << "petrova" << -1 << "" << "";
    QTest::newRow("requests") << QStringList{"--requests", "500"} << "" << 500 << "" << "";
    QTest::newRow("no requests") << QStringList{"--requests", "0"} << "" << 0 << "" << "";
    QTest::newRow("most requests") << QStringList{"--requests", "1000000"} << "" << 1000000 << "" << "";
    QTest::newRow("screenshot") << QStringList{"--screenshot", "/tmp/shot.png"} << "" << -1 << "/tmp/shot.png"
                                << "";
    QTest::newRow("plugins") << QStringList{"--plugins", "/opt/vd/plugins"} << "" << -1 << ""
                             << "/opt/vd/plugins";
    QTest::newRow("all of them") << QStringList{"--plugins", "p", "--screenshot", "s.png", "--requests", "7",
                                                "--user", "admin"}
                                 << "admin" << 7 << "s.png" << "p";
}

void ConsoleOptionsTest::goodValues()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, user);
    QFETCH(int, requests);
    QFETCH(QString, screenshot);
    QFETCH(QString, plugins);

    const ConsoleOptions::Parsed parsed = parse(arguments);
    QCOMPARE(parsed.outcome, ConsoleOptions::Parsed::Run);
    QCOMPARE(parsed.options.user, user);
    QCOMPARE(parsed.options.requests.value_or(-1), requests);
    QCOMPARE(parsed.options.screenshotFile, screenshot);
    if (!plugins.isEmpty())
        QCOMPARE(parsed.options.pluginDir, plugins);
}

void ConsoleOptionsTest::badValues_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("named");  // what the message must point at

    QTest::newRow("requests, a word") << QStringList{"--requests", "many"} << "many";
    QTest::newRow("requests, negative") << QStringList{"--requests", "-5"} << "-5";
    QTest::newRow("requests, too many") << QStringList{"--requests", "1000001"} << "1000001";
    QTest::newRow("requests, a fraction") << QStringList{"--requests", "2.5"} << "2.5";
    QTest::newRow("requests, empty") << QStringList{"--requests", ""} << "--requests";
    QTest::newRow("requests, no value") << QStringList{"--requests"} << "requests";
    QTest::newRow("user, empty") << QStringList{"--user", " "} << "--user";
    QTest::newRow("screenshot, empty") << QStringList{"--screenshot", ""} << "--screenshot";
    QTest::newRow("plugins, empty") << QStringList{"--plugins", ""} << "--plugins";
    QTest::newRow("unknown option") << QStringList{"--colour", "red"} << "colour";
    QTest::newRow("stray argument") << QStringList{"admin"} << "admin";
}

void ConsoleOptionsTest::badValues()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, named);

    const ConsoleOptions::Parsed parsed = parse(arguments);
    QCOMPARE(parsed.outcome, ConsoleOptions::Parsed::Error);
    QVERIFY2(parsed.text.contains(named), qPrintable(parsed.text));
}

void ConsoleOptionsTest::helpAndVersion_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<int>("outcome");
    QTest::addColumn<QStringList>("mentions");

    const QStringList options{"--user", "--requests", "--screenshot", "--plugins", "--help", "--version"};
    QTest::newRow("--help") << "--help" << int(ConsoleOptions::Parsed::Help) << options;
    QTest::newRow("-h") << "-h" << int(ConsoleOptions::Parsed::Help) << options;
    QTest::newRow("--version") << "--version" << int(ConsoleOptions::Parsed::Version)
                               << QStringList{QCoreApplication::applicationName(),
                                              QCoreApplication::applicationVersion()};
}

void ConsoleOptionsTest::helpAndVersion()
{
    QFETCH(QString, argument);
    QFETCH(int, outcome);
    QFETCH(QStringList, mentions);

    // Help and version win over anything wrong beside them.
    const ConsoleOptions::Parsed parsed = parse({argument, QStringLiteral("--requests"), QStringLiteral("x")});
    QCOMPARE(int(parsed.outcome), outcome);
    for (const QString& mention : qAsConst(mentions))
        QVERIFY2(parsed.text.contains(mention), qPrintable(mention));
}
