#pragma once

#include "constants.h"
#include "localstorage.h"
#include "objectinfo.h"

// Records of the store as the server publishes them, reduced to what the table and the card
// read.
namespace records {

using Parameters = QHash<QString, QString>;

inline vorandel::ObjectInfo object(vorandel::TYPE_ID uid, const QString& type, const Parameters& parameters)
{
    vorandel::ObjectInfo info;
    info.uid = uid;
    info.type = type;
    info.parameters = parameters;
    return info;
}

inline vorandel::ObjectInfo request(vorandel::TYPE_ID uid, const Parameters& parameters = {})
{
    return object(uid, db::misc::PASS_REQUEST, parameters);
}

inline vorandel::ObjectInfo user(vorandel::TYPE_ID uid, const QString& login, const QString& surname = {},
                                 const QString& name = {}, const QString& patronymic = {})
{
    return object(uid, db::user::USER,
                  {{QStringLiteral("PT_LOGIN"), login},
                   {QStringLiteral("PT_SURNAME"), surname},
                   {QStringLiteral("PT_NAME"), name},
                   {QStringLiteral("PT_PATRONYMIC"), patronymic}});
}

inline vorandel::ObjectInfo policy(vorandel::TYPE_ID uid, const QString& name)
{
    return object(uid, db::access::POLICY, {{QStringLiteral("PT_NAME"), name}});
}

// Links `user` to the request with a link of `type` (23, 24 or 25).
inline void link(vorandel::ObjectInfo& request, vorandel::TYPE_ID user, unsigned int type, unsigned int priority = 0)
{
    request.inherits.insert(type, vorandel::INHERIT_DATA(request.uid, user, type, priority));
}

// Publishes the records to the store under their dataname.
inline void publish(const QString& dataname, const QList<vorandel::ObjectInfo>& objects)
{
    vorandel::LocalStorage::instance()->setObjects(dataname, objects);
}

}  // namespace records
