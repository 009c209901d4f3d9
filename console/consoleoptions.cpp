#include "consoleoptions.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>

namespace {
ConsoleOptions::Parsed failure(const QString& text)
{
    ConsoleOptions::Parsed parsed;
    parsed.outcome = ConsoleOptions::Parsed::Error;
    parsed.text = text;
    return parsed;
}
}  // namespace

ConsoleOptions::Parsed ConsoleOptions::parse(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        tr("Operator console: runs its plug-ins against an embedded server that keeps its data in a database."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption user(QStringLiteral("user"),
                                  tr("Log in as the seeded user LOGIN (default: an administrator)."),
                                  QStringLiteral("LOGIN"));
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
    const QCommandLineOption plugins(QStringLiteral("plugins"),
                                     tr("Load the plug-ins of DIR (default: 'plugins' next to the program)."),
                                     QStringLiteral("DIR"));
    parser.addOptions({user, requests, database, screenshot, plugins});

    if (!parser.parse(arguments))
        return failure(parser.errorText());

    Parsed parsed;
    if (parser.isSet(help)) {
        parsed.outcome = Parsed::Help;
        parsed.text = parser.helpText();
        return parsed;
    }
    if (parser.isSet(version)) {
        parsed.outcome = Parsed::Version;
        parsed.text = QStringLiteral("%1 %2\n").arg(QCoreApplication::applicationName(),
                                                    QCoreApplication::applicationVersion());
        return parsed;
    }
    if (!parser.positionalArguments().isEmpty()) {
        return failure(tr("Unexpected argument '%1'; see --help.")
                           .arg(parser.positionalArguments().constFirst()));
    }

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
    if (parser.isSet(screenshot)) {
        options.screenshotFile = parser.value(screenshot);
        if (options.screenshotFile.isEmpty())
            return failure(tr("--screenshot needs a file name."));
    }
    options.pluginDir = parser.isSet(plugins)
        ? parser.value(plugins)
        : QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("plugins"));
    if (options.pluginDir.isEmpty())
        return failure(tr("--plugins needs a folder."));

    parsed.outcome = Parsed::Run;
    return parsed;
}
