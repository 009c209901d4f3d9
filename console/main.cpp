#include "console.h"
#include "consoleoptions.h"
#include "icontheme.h"

#include <QApplication>
#include <QFontDatabase>
#include <QLibraryInfo>
#include <QLocale>
#include <QLoggingCategory>
#include <QTextStream>
#include <QTranslator>

namespace {
void nameTheApplication()
{
    QCoreApplication::setOrganizationName(QStringLiteral("vorandel"));
    QCoreApplication::setApplicationName(QStringLiteral("vdconsole"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VDCONSOLE_VERSION));
}

// The command line is read before there is a window system to connect to: --help, --version and
// a mistake are answered without a display.
ConsoleOptions::Parsed parseOptions(int argc, char* argv[])
{
    QCoreApplication reader(argc, argv);
    nameTheApplication();
    return ConsoleOptions::parse(QCoreApplication::arguments());
}

bool hasDisplay()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
        || !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}
}  // namespace

int main(int argc, char* argv[])
{
    // Without TZ the C library looks at /etc/localtime again for every local date it works out,
    // and a table of requests works out hundreds of thousands. The same zone, named once, is read
    // once.
    if (!qEnvironmentVariableIsSet("TZ"))
        qputenv("TZ", ":/etc/localtime");

    const ConsoleOptions::Parsed parsed = parseOptions(argc, argv);
    if (const std::optional<int> exitCode = parsed.answer())
        return *exitCode;
    if (!hasDisplay()) {
        // Still of use for --screenshot, which renders off screen.
        qputenv("QT_QPA_PLATFORM", "offscreen");
        if (parsed.options.screenshotFile.isEmpty())
            QTextStream(stderr) << "vdconsole: no display found, running off screen" << Qt::endl;
    }

    QApplication app(argc, argv);
    nameTheApplication();
    // The operator's terminal gets what went wrong, not the running commentary; QT_LOGGING_RULES
    // brings the debug lines back.
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false"));
    // The operator's console speaks Russian: dates and numbers too, whatever the machine says.
    QLocale::setDefault(QLocale(QLocale::Russian, QLocale::Russia));
    // A bare machine's default font may lack Cyrillic; DejaVu Sans has it and reads well.
    if (QFontDatabase().families().contains(QStringLiteral("DejaVu Sans")))
        QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 10));

    // The toolkit's own words, the buttons of wizards and message boxes, in the operator's tongue;
    // the command line above stays in English.
    QTranslator toolkitWords;
    if (toolkitWords.load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"),
                          QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
        app.installTranslator(&toolkitWords);

    IconTheme::install();
    Console console(parsed.options);
    if (!console.logIn()) {
        // Nothing to say when the operator closed the login window himself.
        if (console.errorString().isEmpty())
            return 0;
        QTextStream(stderr) << console.errorString() << Qt::endl;
        return 1;
    }
    QObject::connect(&console, &Console::finished, &app, &QCoreApplication::exit, Qt::QueuedConnection);
    console.start();
    return app.exec();
}
