#include "benchmark.h"
#include "benchoptions.h"
#include "nulltransport.h"
#include "settings.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QTextStream>

int main(int argc, char* argv[])
{
    // A measuring tool runs anywhere, a terminal without a display included.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // As the console does: without TZ the C library reads /etc/localtime again for every local
    // date, and the table works out hundreds of thousands of them.
    if (!qEnvironmentVariableIsSet("TZ"))
        qputenv("TZ", ":/etc/localtime");
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("requestbench"));
    // The figures are of the table, not of a terminal that scrolls debug lines; QT_LOGGING_RULES
    // still turns them on.
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));

    QString error;
    const std::optional<BenchOptions> options = BenchOptions::parse(QApplication::arguments(), &error);
    if (!options) {
        QTextStream(stderr) << error << "\nTry --help.\n";
        return 2;
    }

    // The tab saves its header layout; the user's own settings stay untouched.
    const QTemporaryDir settingsDir;
    if (!settingsDir.isValid()) {
        QTextStream(stderr) << "No temporary folder for the settings: " << settingsDir.errorString() << '\n';
        return 1;
    }
    Settings::setFileName(settingsDir.filePath(QStringLiteral("settings.ini")));
    const NullTransport transport;

    Benchmark benchmark(*options);
    const int code = options->memoryOf ? benchmark.printMemory(*options->memoryOf) : benchmark.run();
    // The settings are written out while their folder is still there.
    Settings::setFileName({});
    return code;
}
