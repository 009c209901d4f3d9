#pragma once

#include <QString>

// The console's icon theme, compiled into the program: every icon that the plug-ins ask for
// by name through QIcon::fromTheme, drawn in one flat style.
class IconTheme
{
public:
    static QString name();
    // The folder of the theme's scalable icons, one "<icon name>.svg" each.
    static QString iconFolder();
    // Makes it the current theme. Call it before any plug-in is loaded: plug-ins look their
    // icons up when they build their pages.
    static void install();

private:
    IconTheme() = delete;
};
