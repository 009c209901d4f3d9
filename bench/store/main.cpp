#include "storebench.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QLocale>
#include <QLoggingCategory>
#include <QTextStream>

int main(int argc, char* argv[])
{
    // As requestbench: anywhere, a terminal without a display included, with the zone read once.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!qEnvironmentVariableIsSet("TZ"))
        qputenv("TZ", ":/etc/localtime");
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("storebench"));
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\nvd.server.info=false\nvd.console.info=false"));
    QLocale::setDefault(QLocale(QLocale::Russian, QLocale::Russia));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Opens a store of N pass requests as the console does, seeding it first when it is new, and prints\n"
        "open_ms, first_paint_ms, decision_ms and file_mb."));
    parser.addHelpOption();
    const QCommandLineOption requests(QStringLiteral("n"), QStringLiteral("Requests to seed a new store with."),
                                      QStringLiteral("N"), QStringLiteral("100000"));
    const QCommandLineOption database(QStringLiteral("database"),
                                      QStringLiteral("The store, as vdconsole takes it (default: a new file in a "
                                                     "temporary folder)."),
                                      QStringLiteral("FILE|URL"));
    const QCommandLineOption decisions(QStringLiteral("decisions"), QStringLiteral("Confirmations to time."),
                                       QStringLiteral("K"), QStringLiteral("20"));
    QCommandLineOption measure(QStringLiteral("measure"), QStringLiteral("Internal: take the figures."));
    measure.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOptions({requests, database, decisions, measure});
    parser.process(app);

    bool numbers = true;
    bool ok = false;
    const int n = parser.value(requests).toInt(&ok);
    numbers = numbers && ok && n > 0;
    const int k = parser.value(decisions).toInt(&ok);
    numbers = numbers && ok && k > 0;
    if (!numbers) {
        QTextStream(stderr) << "--n and --decisions want whole numbers of at least 1.\n";
        return 2;
    }
    StoreBench bench(parser.value(database), n, k);
    return parser.isSet(measure) ? bench.measure() : bench.run();
}
