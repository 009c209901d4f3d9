#include "serverfixture.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>

using vorandel::INHERIT_DATA;
using vorandel::ObjectInfo;
using vorandel::TYPE_ID;

ServerFixture::ServerFixture()
{
    if (!server.open(store.location()))
        qFatal("%s", qPrintable(server.errorString()));
    server.seed();
    session = login(server.defaultLogin());
    server.setAccessNoticeDelay(10);
    server.setResultDelay(10);
    server.setPushTarget([this](Command& command) { pushed.append(command); });
}

bool ServerFixture::reopen()
{
    if (!server.open(store.location()))
        return false;
    session = login(server.defaultLogin());
    return true;
}

Command ServerFixture::send(const QString& name, const QByteArray& data)
{
    Command query;
    query.name = name;
    query.type = 8;
    query.data = data;
    Command answer;
    server.send(query, [&](Command& reply) { answer = reply; });
    // Not QTest::qWaitFor: it sleeps between turns, and a test may send hundreds of queries.
    QElapsedTimer waiting;
    waiting.start();
    while (answer.status == Command::StatusNone && !waiting.hasExpired(5000))
        QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    return answer;
}

QHash<QString, vorandel::OBJECT_HASH> ServerFixture::snapshot() const
{
    QHash<QString, vorandel::OBJECT_HASH> tables;
    for (const QString& dataname : vdserver::ObjectStore::datanames())
        tables.insert(dataname, *server.objects(dataname));
    return tables;
}

ObjectInfo ServerFixture::find(const QString& dataname, const QString& key, const QString& value) const
{
    const QList<ObjectInfo> all = objects(dataname);
    const auto found = std::find_if(all.cbegin(), all.cend(),
                                    [&](const ObjectInfo& object) { return object.parameters.value(key) == value; });
    return found != all.cend() ? *found : ObjectInfo();
}

vorandel::TYPE_ID ServerFixture::userUid(const QString& login) const
{
    return find(vorandel::USER_DATANAME, QStringLiteral("PT_LOGIN"), login).uid;
}

ObjectInfo ServerFixture::confirmList(const QString& name) const
{
    return find(vorandel::CONFIRM_LIST_DATANAME, QStringLiteral("PT_NAME"), name);
}

ObjectInfo record(TYPE_ID uid, const QString& type, const QHash<QString, QString>& parameters)
{
    ObjectInfo info;
    info.uid = uid;
    info.type = type;
    info.parameters = parameters;
    return info;
}

ObjectInfo card(vorandel::CARD_ID number)
{
    return record(0, db::misc::CARD, {{db::card::NUMBER, QString::number(number)}});
}

TYPE_ID hire(ServerFixture& f, const QHash<QString, QString>& parameters)
{
    return ServerFixture::first<int>(f.data(QStringLiteral("addObject"), record(0, db::orgstructure::WORKER, parameters)));
}

TYPE_ID raise(ServerFixture& f, const QString& list)
{
    ObjectInfo request = record(0, db::misc::PASS_REQUEST, {{db::pass_request::STATE, QStringLiteral("0")}});
    if (!list.isEmpty())
        request.parameters.insert(db::pass_request::CONFIRM_LIST, QString::number(f.confirmList(list).uid));
    const Command answer = f.data(QStringLiteral("addObject"), request);
    return answer.status == Command::StatusOk ? ServerFixture::first<int>(answer) : 0;
}

Command decide(ServerFixture& f, TYPE_ID request, const QString& actor, const QString& user, unsigned int type)
{
    INHERIT_DATA decision(request, f.userUid(user), type);
    const QList<INHERIT_DATA> chain =
        f.object(vorandel::PASS_REQUEST_DATANAME, request).inherits.values(vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST);
    for (const INHERIT_DATA& member : chain) {
        if (member.second == decision.second)
            decision.priority = member.priority;
    }
    return f.dataAs(f.login(actor), QStringLiteral("addObjectInherits"), QList<INHERIT_DATA>{decision});
}
