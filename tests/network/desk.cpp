#include "desk.h"

#include <QtTest>

#include <algorithm>
#include <memory>
#include <optional>

Desk::Desk(quint16 port) : client(QStringLiteral("127.0.0.1"), port), mirror(&client)
{
    client.setRetryDelays(100, 400);
    // The servers of the tests drop a console that says nothing for a second and a half.
    client.setHeartbeat(400);
}

vdserver::ServerClient::LoginResult Desk::logIn(const QString& login, const QString& password)
{
    // Shared with the callback, which may come after a wait that gave up.
    const auto result = std::make_shared<std::optional<vdserver::ServerClient::LoginResult>>();
    client.logIn(login, password.isNull() ? vdserver::SeedData::demoPassword(login) : password,
                 [result](const vdserver::ServerClient::LoginResult& given) { *result = given; });
    if (!QTest::qWaitFor([&] { return result->has_value(); }, 60000)) {
        vdserver::ServerClient::LoginResult none;
        none.error = QStringLiteral("no answer to the login");
        return none;
    }
    return **result;
}

bool Desk::open(const QString& login)
{
    if (!logIn(login).ok())
        return false;
    mirror.follow();
    return waitUntilSynced();
}

bool Desk::waitUntilSynced(int msecs)
{
    return QTest::qWaitFor([this] { return mirror.isSynced(); }, msecs);
}

Command Desk::ask(const QString& name, const QByteArray& data)
{
    Command query;
    query.type = 8;
    query.name = name;
    query.data = data;
    const auto answer = std::make_shared<Command>();
    client.send(query, [answer](Command& reply) { *answer = reply; });
    if (!QTest::qWaitFor([&] { return answer->status != Command::StatusNone; }, 10000))
        qWarning() << "no answer to" << name;
    return *answer;
}

QString Desk::text(const Command& answer)
{
    QString value;
    VDDataStream in(answer.data);
    in >> value;
    return value;
}

vorandel::TYPE_ID Desk::uid(const Command& answer)
{
    int value = 0;
    VDDataStream in(answer.data);
    in >> value;
    return vorandel::TYPE_ID(value);
}

vorandel::ObjectInfo Desk::object(const QString& dataname, vorandel::TYPE_ID uid) const
{
    const vorandel::OBJECT_HASH* objects = mirror.objects(dataname);
    return objects ? objects->value(uid) : vorandel::ObjectInfo();
}

vorandel::ObjectInfo Desk::find(const QString& dataname, const QString& key, const QString& value) const
{
    const vorandel::OBJECT_HASH* objects = mirror.objects(dataname);
    if (!objects)
        return {};
    const auto found = std::find_if(objects->cbegin(), objects->cend(),
                                    [&](const vorandel::ObjectInfo& object) { return object.parameters.value(key) == value; });
    return found != objects->cend() ? *found : vorandel::ObjectInfo();
}
