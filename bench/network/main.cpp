#include "netbench.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QLoggingCategory>
#include <QTextStream>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("netbench"));
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\nvd.server.info=false"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Starts a vdserver on the loopback and lets consoles decide and read on it at once; prints the\n"
        "server's throughput, the round trips of the queries and how long a decision takes to reach\n"
        "the store of the last console that may see it."));
    parser.addHelpOption();
    NetBench::Options defaults;
    const QCommandLineOption clients(QStringLiteral("clients"), QStringLiteral("Consoles."), QStringLiteral("N"),
                                     QString::number(defaults.clients));
    const QCommandLineOption decisions(QStringLiteral("decisions"), QStringLiteral("Confirmations, all told."),
                                       QStringLiteral("N"), QString::number(defaults.decisions));
    const QCommandLineOption reads(QStringLiteral("reads"), QStringLiteral("Reads of an approver after each decision."),
                                   QStringLiteral("N"), QString::number(defaults.readsPerDecision));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("Requests of the demo set the store starts with."),
                                  QStringLiteral("N"), QString::number(defaults.seedRequests));
    const QCommandLineOption server(QStringLiteral("vdserver"), QStringLiteral("The server program (default: the one beside this)."),
                                    QStringLiteral("PATH"), QDir(QCoreApplication::applicationDirPath()).filePath("vdserver"));
    parser.addOptions({clients, decisions, reads, seed, server});
    parser.process(app);

    NetBench::Options options;
    options.serverBinary = parser.value(server);
    bool numbers = true;
    const auto number = [&](const QCommandLineOption& option, int least) {
        bool ok = false;
        const int value = parser.value(option).toInt(&ok);
        numbers = numbers && ok && value >= least;
        return value;
    };
    options.clients = number(clients, 3);
    options.decisions = number(decisions, 1);
    options.readsPerDecision = number(reads, 0);
    options.seedRequests = number(seed, 0);
    if (!numbers) {
        QTextStream(stderr) << "--decisions, --reads and --seed want whole numbers, --clients at least 3.\n";
        return 2;
    }
    NetBench bench(options);
    return bench.run();
}
