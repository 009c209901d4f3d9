#include "serverfixture.h"

#include "constants.h"

#include <QElapsedTimer>
#include <QTest>

using namespace vorandel;

ServerFixture::ServerFixture(int requests)
{
    server.seed({requests, 20261122});
    session = loginAs(server.defaultLogin());
    server.setAccessNoticeDelay(10);
    server.setResultDelay(10);
    server.setPushTarget([this](Command& command) { pushed.append(command); });
}

Command ServerFixture::send(const QString& name, const QByteArray& data)
{
    Command query;
    query.name = name;
    query.type = 8;
    query.data = data;
    Command answer;
    bool answered = false;
    server.send(query, [&](Command& reply) {
        answer = reply;
        answered = true;
    });
    // Not QTest::qWaitFor: it sleeps between turns, and some tests send thousands of queries.
    QElapsedTimer waiting;
    waiting.start();
    while (!answered && !waiting.hasExpired(5000))
        QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    return answer;
}

vdserver::Session ServerFixture::loginAs(const QString& login)
{
    const std::optional<vdserver::Session> opened = server.login(login);
    return opened ? *opened : vdserver::Session();
}

void ServerFixture::settle(int msecs)
{
    QTest::qWait(msecs);
    QCoreApplication::processEvents();
}

ObjectInfo ServerFixture::object(const QString& dataname, TYPE_ID uid) const
{
    const OBJECT_HASH* table = server.objects(dataname);
    return table ? table->value(uid) : ObjectInfo();
}

QList<ObjectInfo> ServerFixture::objects(const QString& dataname) const
{
    const OBJECT_HASH* table = server.objects(dataname);
    return table ? table->values() : QList<ObjectInfo>();
}

QHash<QString, OBJECT_HASH> ServerFixture::snapshot() const
{
    QHash<QString, OBJECT_HASH> tables;
    for (const QString& dataname : vdserver::ObjectStore::datanames())
        tables.insert(dataname, *server.objects(dataname));
    return tables;
}

TYPE_ID ServerFixture::userUid(const QString& login) const
{
    for (const ObjectInfo& user : objects(USER_DATANAME)) {
        if (user.parameters.value(QStringLiteral("PT_LOGIN")) == login)
            return user.uid;
    }
    return 0;
}

ObjectInfo ServerFixture::confirmList(const QString& name) const
{
    for (const ObjectInfo& list : objects(CONFIRM_LIST_DATANAME)) {
        if (list.parameters.value(QStringLiteral("PT_NAME")) == name)
            return list;
    }
    return {};
}

ObjectInfo ServerFixture::workerWithoutCards() const
{
    for (const ObjectInfo& worker : objects(SUBJECT_DATANAME)) {
        if (!worker.inherits.contains(INHERIT_CARD) && !isDismissed(worker))
            return worker;
    }
    return {};
}

QString ServerFixture::failureText(const Command& answer)
{
    QString text;
    VDDataStream in(answer.data);
    in >> text;
    return text;
}

int ServerFixture::uidOf(const Command& answer)
{
    int uid = 0;
    VDDataStream in(answer.data);
    in >> uid;
    return uid;
}
