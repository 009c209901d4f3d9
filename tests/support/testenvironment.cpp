#include "testenvironment.h"

#include "authdata.h"
#include "settings.h"

#include <QStandardPaths>

TestEnvironment::TestEnvironment()
{
    QStandardPaths::setTestModeEnabled(true);
    Settings::setFileName(m_dir.filePath(QStringLiteral("settings.ini")));
}

TestEnvironment::~TestEnvironment()
{
    Settings::setFileName({});
}

QStringList TestEnvironment::allRoles()
{
    return {QStringLiteral("RL_PASS_REQUESTS_SHOW"),   QStringLiteral("RL_PASS_REQUESTS_SHOW_ALL"),
            QStringLiteral("RL_PASS_REQUESTS_CREATE"), QStringLiteral("RL_PASS_REQUESTS_UPDATE"),
            QStringLiteral("RL_PASS_REQUESTS_DELETE"), QStringLiteral("RL_PASS_REQUESTS_CONFIRM")};
}

void TestEnvironment::login(unsigned int userId, const QStringList& roles, const QString& user)
{
    AuthData::setSession(userId, user, roles, QByteArrayLiteral("\x01\x02\xab\xcd"));
}
