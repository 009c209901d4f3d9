#include "consoleoptions.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>

ConsoleOptions::Parsed ConsoleOptions::parse(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        tr("Operator console: runs its plug-ins against an embedded server that keeps its data in a database, "
           "or against a standalone server (vdserver) on the network."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption user(
        QStringLiteral("user"),
        tr("Log in as the seeded user LOGIN (default: an administrator); with --server, the login that the "
           "login window proposes."),
        QStringLiteral("LOGIN"));
    const QCommandLineOption server(
        QStringLiteral("server"),
        tr("Use the standalone server at HOST:PORT instead of the embedded one, logging in with a password "
           "(asked for in a window, or taken from the environment variable VDCONSOLE_PASSWORD)."),
        QStringLiteral("HOST:PORT"));
    const QCommandLineOption requests(
        QStringLiteral("requests"),
        tr("Seed a fresh demo data set with about N pass requests into a fresh store (by default the file "
           "demo-N.sqlite in the data folder) and say where."),
        QStringLiteral("N"));
    const QCommandLineOption database(
        QStringLiteral("database"),
        tr("Keep the data in the SQLite file FILE, or in the PostgreSQL database of the address "
           "postgresql://USER@HOST:PORT/DBNAME (default: store.sqlite in the user's data folder)."),
        QStringLiteral("FILE|URL"));
    const QCommandLineOption screenshot(
        QStringLiteral("screenshot"),
        tr("Once the tabs show their data, save the window as a PNG image to FILE and exit."),
        QStringLiteral("FILE.png"));
    const QCommandLineOption click(
        QStringLiteral("screenshot-click"),
        tr("With --screenshot, repeatable: first click the tab's button OBJECT (its object name, as the state "
           "button tbNotConfirmed)."),
        QStringLiteral("OBJECT"));
    const QCommandLineOption rows(QStringLiteral("screenshot-rows"),
                                  tr("With --screenshot: select the first N rows of the tab's table (default 1)."),
                                  QStringLiteral("N"));
    const QCommandLineOption action(
        QStringLiteral("screenshot-action"),
        tr("With --screenshot: trigger the tab's action NAME (its object name, as actionAddRequest) and "
           "shoot the window it opens instead of the main window."),
        QStringLiteral("NAME"));
    const QCommandLineOption page(
        QStringLiteral("screenshot-page"),
        tr("With --screenshot-action: walk the wizard that opens to page N, pressing Next, or bring tab N "
           "of the dialog that opens to the front."),
        QStringLiteral("N"));
    const QCommandLineOption input(
        QStringLiteral("screenshot-input"),
        tr("With --screenshot-action, repeatable, in order: type TEXT into the widget OBJECT of the window, on "
           "the first page where it shows. {Name} presses a key: {Down}, {Return}, {Space} to press a button."),
        QStringLiteral("OBJECT=TEXT"));
    const QCommandLineOption mainWindow(
        QStringLiteral("screenshot-main"),
        tr("With --screenshot-action: once the window is driven, shoot the main window after all."));
    const QCommandLineOption plugins(QStringLiteral("plugins"),
                                     tr("Load the plug-ins of DIR (default: 'plugins' next to the program)."),
                                     QStringLiteral("DIR"));
    parser.addOptions(
        {user, server, requests, database, screenshot, click, rows, action, page, input, mainWindow, plugins});

    if (std::optional<Parsed> settled = Parsed::settle(parser, arguments))
        return *settled;
    const auto failure = &Parsed::failure;

    Parsed parsed;
    ConsoleOptions& options = parsed.options;
    if (parser.isSet(user)) {
        options.user = parser.value(user).trimmed();
        if (options.user.isEmpty())
            return failure(tr("--user needs a login."));
    }
    if (parser.isSet(requests)) {
        bool ok = false;
        const int count = parser.value(requests).toInt(&ok);
        if (!ok || count < 0 || count > MaxRequests) {
            return failure(tr("--requests takes a whole number from 0 to %1, not '%2'.")
                               .arg(MaxRequests)
                               .arg(parser.value(requests)));
        }
        options.requests = count;
    }
    if (parser.isSet(database)) {
        QString error;
        options.database = vdserver::StoreLocation::parse(parser.value(database), &error);
        if (!options.database)
            return failure(tr("--database: %1").arg(error));
    }
    if (parser.isSet(server)) {
        QString error;
        options.server = vdserver::Endpoint::parse(parser.value(server), false, &error);
        if (!options.server)
            return failure(tr("--server: %1.").arg(error));
        for (const QCommandLineOption& embedded : {database, requests}) {
            if (parser.isSet(embedded))
                return failure(tr("--%1 is for the embedded server; the server of --server keeps its own data.")
                                   .arg(embedded.names().constFirst()));
        }
    }
    if (parser.isSet(screenshot)) {
        options.screenshotFile = parser.value(screenshot);
        if (options.screenshotFile.isEmpty())
            return failure(tr("--screenshot needs a file name."));
    }
    for (const QCommandLineOption& step : {click, rows, action}) {
        if (parser.isSet(step) && !parser.isSet(screenshot))
            return failure(tr("--%1 needs --screenshot.").arg(step.names().constFirst()));
    }
    for (const QCommandLineOption& step : {page, input, mainWindow}) {
        if (parser.isSet(step) && !parser.isSet(action))
            return failure(tr("--%1 needs --screenshot-action.").arg(step.names().constFirst()));
    }
    ScreenshotScript& script = options.screenshot;
    const QStringList clicks = parser.values(click);
    for (const QString& button : clicks) {
        if (button.trimmed().isEmpty())
            return failure(tr("--screenshot-click needs the object name of a button."));
        script.clicks.append(button.trimmed());
    }
    if (parser.isSet(rows)) {
        bool ok = false;
        script.rows = parser.value(rows).toInt(&ok);
        if (!ok || script.rows < 0)
            return failure(tr("--screenshot-rows takes a number of rows, not '%1'.").arg(parser.value(rows)));
    }
    if (parser.isSet(action)) {
        script.action = parser.value(action).trimmed();
        if (script.action.isEmpty())
            return failure(tr("--screenshot-action needs the object name of an action."));
    }
    if (parser.isSet(page)) {
        bool ok = false;
        script.page = parser.value(page).toInt(&ok);
        if (!ok || *script.page < 0)
            return failure(tr("--screenshot-page takes a page number from 0, not '%1'.").arg(parser.value(page)));
    }
    const QStringList typed = parser.values(input);
    for (const QString& given : typed) {
        const int equals = given.indexOf(QLatin1Char('='));
        const QString object = given.left(equals).trimmed();
        if (equals < 0 || object.isEmpty())
            return failure(tr("--screenshot-input takes OBJECT=TEXT, not '%1'.").arg(given));
        QString error;
        const std::optional<Keystrokes> keys = Keystrokes::parse(given.mid(equals + 1), &error);
        if (!keys)
            return failure(tr("--screenshot-input '%1': %2.").arg(given, error));
        script.inputs.append({object, *keys});
    }
    script.mainWindow = parser.isSet(mainWindow);

    options.pluginDir = parser.isSet(plugins)
        ? parser.value(plugins)
        : QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("plugins"));
    if (options.pluginDir.isEmpty())
        return failure(tr("--plugins needs a folder."));

    parsed.outcome = Parsed::Run;
    return parsed;
}
