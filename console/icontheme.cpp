#include "icontheme.h"

#include <QIcon>

// The resources of a static library must be pulled in by name, or the linker drops them. Not in
// a namespace: the macro declares the resource's initialiser where it stands.
static void initResources()
{
    Q_INIT_RESOURCE(vdconsoleicons);
}

namespace {
const QString SearchPath = QStringLiteral(":/icons");
}  // namespace

QString IconTheme::name()
{
    return QStringLiteral("vdconsole");
}

QString IconTheme::iconFolder()
{
    return SearchPath + QLatin1Char('/') + name() + QStringLiteral("/scalable");
}

void IconTheme::install()
{
    initResources();
    // Ours first; the system's folders stay for the theme that every theme falls back on.
    QStringList paths = QIcon::themeSearchPaths();
    paths.removeAll(SearchPath);
    paths.prepend(SearchPath);
    QIcon::setThemeSearchPaths(paths);
    QIcon::setThemeName(name());
}
