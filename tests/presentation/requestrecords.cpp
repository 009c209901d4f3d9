#include "requestrecords.h"

#include "constants.h"
#include "localstorage.h"

namespace records {

namespace {
vorandel::ObjectInfo object(vorandel::TYPE_ID uid, const QString& type, const Parameters& parameters)
{
    vorandel::ObjectInfo info;
    info.uid = uid;
    info.type = type;
    info.parameters = parameters;
    return info;
}
}  // namespace

vorandel::ObjectInfo request(vorandel::TYPE_ID uid, const Parameters& parameters)
{
    return object(uid, db::misc::PASS_REQUEST, parameters);
}

vorandel::ObjectInfo worker(vorandel::TYPE_ID uid, const Parameters& parameters)
{
    return object(uid, db::orgstructure::WORKER, parameters);
}

vorandel::ObjectInfo user(vorandel::TYPE_ID uid, const QString& login, const QString& surname, const QString& name,
                          const QString& patronymic)
{
    Parameters parameters{{QStringLiteral("PT_LOGIN"), login}};
    if (!surname.isEmpty())
        parameters.insert(QStringLiteral("PT_SURNAME"), surname);
    if (!name.isEmpty())
        parameters.insert(QStringLiteral("PT_NAME"), name);
    if (!patronymic.isEmpty())
        parameters.insert(QStringLiteral("PT_PATRONYMIC"), patronymic);
    return object(uid, db::user::USER, parameters);
}

vorandel::ObjectInfo named(vorandel::TYPE_ID uid, const QString& type, const QString& name)
{
    return object(uid, type, {{QStringLiteral("PT_NAME"), name}});
}

void link(vorandel::ObjectInfo& request, vorandel::TYPE_ID user, unsigned int type, unsigned int priority)
{
    request.inherits.insert(type, vorandel::INHERIT_DATA(request.uid, user, type, priority));
}

void publish(const QString& dataname, const QList<vorandel::ObjectInfo>& objects)
{
    vorandel::LocalStorage::instance()->setObjects(dataname, objects);
}

}  // namespace records
