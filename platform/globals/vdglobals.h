#pragma once

#include "objectinfo.h"
#include "vdplatform_export.h"

#include <QHash>
#include <QString>
#include <QVariant>

// Display names of objects, the same everywhere in the console.
class VDPLATFORM_EXPORT VDGlobals
{
public:
    // A worker by his full name, a user by his login, a card by its number, a pass request by
    // its visitor (or its number), anything else by "PT_NAME"; an empty record has no name.
    static QString objectName(const vorandel::ObjectInfo& info);
    static QString objectName(const QString& type, const QHash<QString, QString>& parameters);
    static QString objectName(const QString& type, const QHash<QString, QVariant>& parameters);

private:
    VDGlobals() = delete;
};
