#include "authdata.h"

namespace {
struct Session
{
    unsigned int userId = 0;
    QString user;
    QStringList roles;
    QByteArray sessionId;
};

Session& session()
{
    static Session s;
    return s;
}
}  // namespace

QStringList AuthData::roles()
{
    return session().roles;
}

QByteArray AuthData::sessionId()
{
    return session().sessionId;
}

QString AuthData::user()
{
    return session().user;
}

unsigned int AuthData::userId()
{
    return session().userId;
}

void AuthData::setSession(unsigned int userId, const QString& user, const QStringList& roles,
                          const QByteArray& sessionId)
{
    session() = {userId, user, roles, sessionId};
}
