#pragma once

#include <QColor>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A small icon theme made for the tests: every icon that the tab asks for, each one square of
// its own colour, so that a test can tell which icon ended up where. Installed as the current
// theme for the life of the object.
class TestIconTheme
{
public:
    TestIconTheme();
    ~TestIconTheme();

    static QStringList names();
    // The colour that the icon of this name is filled with.
    static QColor colour(const QString& name);

private:
    QTemporaryDir m_dir;
};
