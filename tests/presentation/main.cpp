#include "requestinfopaneltest.h"
#include "requestmodeltest.h"

#include "testenvironment.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QIcon>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

namespace {
// A theme holding every icon that the tests look for, so that a cell's icon has a name to tell
// it by and the card draws it.
void installIconTheme(const QString& root)
{
    const QString folder = root + QStringLiteral("/presentation-test/24x24");
    QDir().mkpath(folder);
    QFile index(root + QStringLiteral("/presentation-test/index.theme"));
    if (index.open(QIODevice::WriteOnly))
        index.write("[Icon Theme]\nName=presentation-test\nDirectories=24x24\n\n[24x24]\nSize=24\nType=Threshold\n");
    QImage image(24, 24, QImage::Format_ARGB32);
    image.fill(Qt::red);
    for (const char* name : {"common-pause1", "common-cancel", "common-pause", "common-play", "common-online",
                             "object-OT_WORKER", "object-OT_WORKER-d", "object-OT_USER", "action-unlock"})
        image.save(folder + QLatin1Char('/') + QLatin1String(name) + QStringLiteral(".png"));
    QIcon::setThemeSearchPaths({root});
    QIcon::setThemeName(QStringLiteral("presentation-test"));
}
}  // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    const TestEnvironment environment;
    const QTemporaryDir icons;
    installIconTheme(icons.path());

    RequestModelTest model;
    RequestInfoPanelTest panel;
    int failed = 0;
    for (QObject* test : {static_cast<QObject*>(&model), static_cast<QObject*>(&panel)})
        failed += QTest::qExec(test, argc, argv);
    return failed;
}
