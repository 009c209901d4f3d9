#include "consoleoptionstest.h"
#include "consoletest.h"
#include "iconthemetest.h"
#include "pluginhosttest.h"

#include "icontheme.h"
#include "testenvironment.h"

#include <QApplication>
#include <QTest>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("vdconsole"));
    QApplication::setApplicationVersion(QStringLiteral("1.0"));
    // As the console does: the theme is there before any plug-in comes.
    IconTheme::install();
    const TestEnvironment environment;

    ConsoleOptionsTest options;
    IconThemeTest icons;
    PluginHostTest host;
    ConsoleTest console;
    int failed = 0;
    for (QObject* test : {static_cast<QObject*>(&options), static_cast<QObject*>(&icons),
                          static_cast<QObject*>(&host), static_cast<QObject*>(&console)}) {
        failed += QTest::qExec(test, argc, argv);
    }
    return failed;
}
