#pragma once

#include "objectinfo.h"

#include <QHash>
#include <QMetaType>

namespace requestview {

// One row of the fingers count: a worker, a card of his, and how many templates he has.
struct UserFingers
{
    vorandel::TYPE_ID worker = 0;
    vorandel::TYPE_ID card = 0;
    qint32 count = 0;
};

}  // namespace requestview

Q_DECLARE_METATYPE(requestview::UserFingers)
