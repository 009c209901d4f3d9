#pragma once

#include "objectinfo.h"

#include <QHash>
#include <QString>

// Records of the store as the server publishes them, reduced to what the table and the card
// read.
namespace records {

using Parameters = QHash<QString, QString>;

vorandel::ObjectInfo request(vorandel::TYPE_ID uid, const Parameters& parameters = {});
vorandel::ObjectInfo worker(vorandel::TYPE_ID uid, const Parameters& parameters = {});
vorandel::ObjectInfo user(vorandel::TYPE_ID uid, const QString& login, const QString& surname = {},
                          const QString& name = {}, const QString& patronymic = {});
// An object known by its "PT_NAME": an access group, a department.
vorandel::ObjectInfo named(vorandel::TYPE_ID uid, const QString& type, const QString& name);

// Links `user` to the request with a link of `type` (23, 24 or 25).
void link(vorandel::ObjectInfo& request, vorandel::TYPE_ID user, unsigned int type, unsigned int priority = 0);

// Publishes the records to the store under their dataname.
void publish(const QString& dataname, const QList<vorandel::ObjectInfo>& objects);

}  // namespace records
