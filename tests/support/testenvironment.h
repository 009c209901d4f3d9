#pragma once

#include <QStringList>
#include <QTemporaryDir>

// Keeps a test away from the user's real settings and gives it a known session.
class TestEnvironment
{
public:
    // Settings go to a fresh temporary file for the life of this object.
    TestEnvironment();
    ~TestEnvironment();

    static QStringList allRoles();
    // Logs in as user `userId` with these roles and a fixed session id.
    static void login(unsigned int userId, const QStringList& roles = allRoles(),
                      const QString& user = QStringLiteral("tester"));

private:
    QTemporaryDir m_dir;
};
