#include "settings.h"

#include <QDir>
#include <QStandardPaths>

#include <memory>

namespace {
std::unique_ptr<Settings>& storage()
{
    static std::unique_ptr<Settings> settings;
    return settings;
}

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
    auto& settings = storage();
    if (!settings)
        settings.reset(new Settings(chosenFile().isEmpty() ? defaultFile() : chosenFile()));
    return settings.get();
}

void Settings::setFileName(const QString& fileName)
{
    if (auto& settings = storage())
        settings->sync();
    storage().reset();
    chosenFile() = fileName;
}
