#include "settings.h"

#include "processwide.h"

#include <QDir>
#include <QStandardPaths>

namespace {
QString& chosenFile()
{
    static QString file;
    return file;
}

QString defaultFile()
{
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return QDir(dir).filePath(QStringLiteral("vorandel/vdconsole.ini"));
}
}  // namespace

Settings::Settings(const QString& fileName) : QSettings(fileName, QSettings::IniFormat) {}

Settings* Settings::instance()
{
    return ProcessWide<Settings>::get(
        true, [] { return new Settings(chosenFile().isEmpty() ? defaultFile() : chosenFile()); });
}

void Settings::setFileName(const QString& fileName)
{
    if (Settings* settings = ProcessWide<Settings>::get())
        settings->sync();
    ProcessWide<Settings>::reset();
    chosenFile() = fileName;
}
