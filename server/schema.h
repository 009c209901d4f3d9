#pragma once

#include "storelocation.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace vdserver {

// The numbered migrations that make and keep up the store's tables, the files
// schema/NNN_name.sql. A store records the ones applied to it; opening it applies those that it
// lacks, in order, so that a store of an older build opens in a newer one.
class Schema
{
public:
    struct Migration
    {
        int version = 0;
        QString name;
        QStringList statements;  // in the dialect of the engine asked for
    };

    // The version that the newest migration brings a store to.
    static int latestVersion();
    // The migrations after `version`, in order.
    static QList<Migration> after(int version, StoreLocation::Engine engine);

private:
    Schema() = delete;
};

}  // namespace vdserver
