#include "testenvironment.h"

#include "authdata.h"
#include "settings.h"

#include <QDir>
#include <QStandardPaths>

TestEnvironment::TestEnvironment()
{
    QStandardPaths::setTestModeEnabled(true);
    // The data folder of test mode outlives the run: what a console stored in the last run
    // (its database) must not meet this one. Cleared once per test program, so that a test can
    // still see what another part of it stored.
    static const bool cleared = QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)).removeRecursively();
    Q_UNUSED(cleared)
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
