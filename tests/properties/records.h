#pragma once

#include "constants.h"
#include "objectinfo.h"

#include <QHash>
#include <QString>

// Store objects as the suites of the properties dialog build them.
namespace records {

inline vorandel::ObjectInfo object(vorandel::TYPE_ID uid, const QString& type,
                                   const QHash<QString, QString>& parameters = {}, vorandel::TYPE_ID parent = 0)
{
    vorandel::ObjectInfo info;
    info.uid = uid;
    info.type = type;
    info.parent = parent;
    info.parameters = parameters;
    return info;
}

// A card of that number; `uid` 0 for one the server hasn't stored, `holder` 0 for nobody's.
inline vorandel::ObjectInfo card(vorandel::CARD_ID number, vorandel::TYPE_ID holder = 0, vorandel::TYPE_ID uid = 0)
{
    vorandel::ObjectInfo info = object(uid, db::misc::CARD, {{db::card::NUMBER, QString::number(number)}});
    if (holder)
        info.parameters.insert(db::card::OWNER, QString::number(holder));
    return info;
}

}  // namespace records
