#pragma once

#include "vdplatform_export.h"

#include <QSettings>

// The console's settings, keys as "section/name".
//
// By default they live in the user's configuration as an INI file. A test, or a console
// started with another file, calls setFileName() first; under QStandardPaths' test mode the
// file goes to the test location, so that tests never touch the user's real settings.
class VDPLATFORM_EXPORT Settings : public QSettings
{
    Q_OBJECT
public:
    static Settings* instance();
    // Points the singleton at another file (an empty name goes back to the default).
    static void setFileName(const QString& fileName);

private:
    explicit Settings(const QString& fileName);
};
