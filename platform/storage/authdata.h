#pragma once

#include "vdplatform_export.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

// The session of the logged-in operator.
class VDPLATFORM_EXPORT AuthData
{
public:
    static QStringList roles();
    static QByteArray sessionId();
    static QString user();
    static unsigned int userId();

    static void setSession(unsigned int userId, const QString& user, const QStringList& roles,
                           const QByteArray& sessionId);

private:
    AuthData() = delete;
};
