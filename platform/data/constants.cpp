#include "constants.h"

namespace vorandel {

bool isDismissed(const ObjectInfo& worker)
{
    return worker.parameters.value(QStringLiteral("PT_OBJECTSTATE")) == QLatin1String("d");
}

}  // namespace vorandel

namespace ot_card {

vorandel::TYPE_ID uid(const vorandel::ObjectInfo& card)
{
    return card.parameters.value(db::card::OWNER).toUInt();
}

vorandel::CARD_ID number(const vorandel::ObjectInfo& card)
{
    return card.parameters.value(db::card::NUMBER).toULongLong();
}

}  // namespace ot_card
