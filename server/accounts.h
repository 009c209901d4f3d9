#pragma once

#include "objectinfo.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace vdserver {

// A seeded user who can log in.
struct Account
{
    vorandel::TYPE_ID uid = 0;
    QString login;
    QString displayName;
    QStringList roles;
};

// Whoever sends queries with this session id.
struct Session
{
    vorandel::TYPE_ID userId = 0;
    QString login;
    QStringList roles;
    QByteArray sessionId;
};

}  // namespace vdserver
