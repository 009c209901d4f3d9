#include "testicontheme.h"

#include <QDir>
#include <QFile>
#include <QIcon>
#include <QImage>

namespace {
const QString ThemeName = QStringLiteral("presentation-test");
}

TestIconTheme::TestIconTheme()
{
    const QString folder = m_dir.filePath(ThemeName + QStringLiteral("/24x24"));
    QDir().mkpath(folder);
    QFile index(m_dir.filePath(ThemeName + QStringLiteral("/index.theme")));
    if (index.open(QIODevice::WriteOnly)) {
        index.write("[Icon Theme]\nName=presentation-test\nDirectories=24x24\n\n"
                    "[24x24]\nSize=24\nType=Threshold\n");
    }
    const QStringList icons = names();
    for (const QString& name : icons) {
        QImage image(24, 24, QImage::Format_ARGB32);
        image.fill(colour(name));
        image.save(folder + QLatin1Char('/') + name + QStringLiteral(".png"));
    }
    QIcon::setThemeSearchPaths({m_dir.path()});
    QIcon::setThemeName(ThemeName);
}

TestIconTheme::~TestIconTheme()
{
    QIcon::setThemeName(QString());
}

QStringList TestIconTheme::names()
{
    return {QStringLiteral("common-pause1"),      QStringLiteral("common-cancel"),  QStringLiteral("common-pause"),
            QStringLiteral("common-play"),        QStringLiteral("common-online"),  QStringLiteral("common-nofilter"),
            QStringLiteral("object-OT_WORKER"),   QStringLiteral("object-OT_WORKER-d"),
            QStringLiteral("object-OT_USER"),     QStringLiteral("object-OT_CARD"), QStringLiteral("action-finger"),
            QStringLiteral("action-unlock")};
}

QColor TestIconTheme::colour(const QString& name)
{
    return QColor::fromHsv(int(names().indexOf(name)) * 360 / int(names().size()), 255, 255);
}
