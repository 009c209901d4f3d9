#include "fuzztarget.h"

#include "constants.h"
#include "dbquery.h"
#include "framereader.h"
#include "objectstore.h"
#include "server.h"
#include "servicerecords.h"

#include <QCoreApplication>
#include <QDate>

#include <memory>

using namespace vorandel;
using vdserver::Server;

namespace {

const QString DataPrefix = QStringLiteral("data.");

// A small seeded server with its administrator logged in. A data operation's payload starts
// with the session, as every console's does; the input is the rest. Every input meets the same
// store: one that the server took leaves a freshly seeded server behind.
class ServerUnderTest
{
public:
    static ServerUnderTest& instance()
    {
        static ServerUnderTest* const server = new ServerUnderTest;  // never destroyed, as the application
        return *server;
    }

    // Sends a query and waits until its answer and what follows it (announcements, notices,
    // results pushed at once) have gone out.
    void ask(const QString& name, const QByteArray& arguments)
    {
        Command query;
        query.name = name;
        query.type = 8;
        query.data = name.startsWith(DataPrefix) ? payload(m_sessionId) + arguments : arguments;
        const QHash<QString, OBJECT_HASH> before = snapshot();
        int status = Command::StatusNone;
        m_server->send(query, [&status](Command& answer) { status = answer.status; });
        while (status == Command::StatusNone)
            QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        if (status == Command::StatusOk) {
            reset();
        } else if (snapshot() != before) {
            fuzzFailure(QStringLiteral("server.") + name, QStringLiteral("a refused query changed the objects"));
        }
    }

    // The lowest uid of a dataname: the seeded objects that the seeds refer to.
    TYPE_ID first(const QString& dataname) const
    {
        const QList<TYPE_ID> uids = m_server->objects(dataname)->keys();
        return uids.isEmpty() ? 0 : *std::min_element(uids.cbegin(), uids.cend());
    }
    ObjectInfo object(const QString& dataname, TYPE_ID uid) const { return m_server->objects(dataname)->value(uid); }

private:
    ServerUnderTest() { reset(); }

    void reset()
    {
        m_server = std::make_unique<Server>();
        m_server->seed({12, 20261123});
        m_server->setAccessNoticeDelay(0);
        m_server->setResultDelay(0);
        m_server->setPushTarget([](Command&) {});
        m_sessionId = m_server->login(m_server->defaultLogin())->sessionId;
    }

    QHash<QString, OBJECT_HASH> snapshot() const
    {
        QHash<QString, OBJECT_HASH> tables;
        for (const QString& dataname : vdserver::ObjectStore::datanames())
            tables.insert(dataname, *m_server->objects(dataname));
        return tables;
    }

    std::unique_ptr<Server> m_server;
    QByteArray m_sessionId;
};

// Valid arguments of each operation, written with the seeded objects.
QList<QByteArray> seedsOf(const QString& name)
{
    const ServerUnderTest& server = ServerUnderTest::instance();
    const TYPE_ID request = server.first(PASS_REQUEST_DATANAME);
    const TYPE_ID worker = server.first(SUBJECT_DATANAME);
    const TYPE_ID card = server.first(CARD_DATANAME);
    const TYPE_ID device = server.first(DEVICE_DATANAME);
    const TYPE_ID policy = server.first(POLICY_DATANAME);
    const TYPE_ID user = server.first(USER_DATANAME);
    const TYPE_ID list = server.first(CONFIRM_LIST_DATANAME);
    const QString identity = QStringLiteral("requestview 1 10.0.0.7 1795420800");

    ObjectInfo newWorker;
    newWorker.type = db::orgstructure::WORKER;
    newWorker.parent = server.first(ORGSTRUCTURE_DATANAME);
    newWorker.parameters = {{QStringLiteral("PT_SURNAME"), QStringLiteral("Комаров")},
                            {QStringLiteral("PT_PHOTO"), QStringLiteral("iVBORw0KGgo=")}};
    ObjectInfo newRequest = server.object(PASS_REQUEST_DATANAME, request);
    newRequest.uid = 0;
    newRequest.parameters.insert(db::pass_request::CONFIRM_LIST, QString::number(list));
    ObjectInfo newCard;
    newCard.type = db::misc::CARD;
    newCard.parameters.insert(db::card::NUMBER, QStringLiteral("4000000001"));
    ObjectInfo changed;
    changed.uid = request;
    changed.parameters = {{db::pass_request::STATE, QStringLiteral("4")}, {QStringLiteral("PT_CONVOY"), QString()}};
    ObjectInfo target;
    target.uid = request;
    DbQuery fingers;
    fingers.queries.append(QStringLiteral("SELECT user_object_id, count( id ), (SELECT child_id FROM object_inherit "
                                          "WHERE ref_type = 3 AND parent_id = user_object_id)  FROM fingers WHERE "
                                          "user_object_id = ANY( ARRAY[%1,%2]::bigint[] ) GROUP BY user_object_id;")
                               .arg(worker)
                               .arg(worker + 1));

    const QHash<QString, QList<QByteArray>> seeds{
        {QStringLiteral("data.addObject"), {payload(newWorker), payload(newRequest), payload(newCard)}},
        {QStringLiteral("data.updateObject"), {payload(changed), payload(server.object(SUBJECT_DATANAME, worker))}},
        {QStringLiteral("data.updateObjectEx"), {payload(changed)}},
        {QStringLiteral("data.removeObject"), {payload(target)}},
        {QStringLiteral("data.addObjectInherits"),
         {payload(QList<INHERIT_DATA>{INHERIT_DATA(request, user, INHERIT_CONFIRMED_LIST_PASS_REQUEST)})}},
        {QStringLiteral("data.changeUserAccess"),
         {payload(QList<ACCESS_CHANGES>{{worker, policy, true, false, 7}, {worker, policy + 1, false, false, 2}})}},
        {QStringLiteral("data.updateWorkerCards"),
         {payload(worker, QList<ObjectInfo>{newCard}, QList<ObjectInfo>{server.object(CARD_DATANAME, card)}, true)}},
        {QStringLiteral("data.getUserFingers"), {payload(QList<unsigned int>{worker, worker + 1})}},
        {QStringLiteral("data.getBlobDataChange"),
         {payload(QList<BLOB_DATA_RESQUEST>{{worker, QStringLiteral("PT_PHOTO"), QByteArray(32, '0')}})}},
        {QStringLiteral("data.syslog"),
         {payload(SYSLOG_DATA{7, QString::number(user), QStringLiteral("открыт пропуск"),
                              QDateTime(QDate(2026, 11, 23), QTime(9, 30))})}},
        {QStringLiteral("data.dismissWorker"), {payload(worker, QDate(2026, 12, 1))}},
        {QStringLiteral("devices.bind"), {payload(identity, device, QStringList{DEVICE_COMMAND_READ_CARD})}},
        {QStringLiteral("devices.unbind"), {payload(identity, device, QStringList{DEVICE_COMMAND_READ_CARD})}},
        {QStringLiteral("devices.readCard"), {payload(identity, device)}},
        {QStringLiteral("send_email"),
         {payload(EMAIL_MESSAGE{QStringLiteral("pass@example.org"), QStringLiteral("Пропуск"), QStringLiteral("Готов."),
                                {QStringLiteral("card.pdf")}},
                  QStringLiteral("admin"))}},
        {QStringLiteral("show:fingerprintwidget"), {payload(worker, identity)}},
        {QStringLiteral("show:fingerprintwidget.scan"), {payload(worker, identity)}},
        {QStringLiteral("db.async"), {payload(identity, QStringLiteral("get_fingers_093000123"), fingers)}},
        {QStringLiteral("exchange.local_plugins_info"),
         {payload(COMMAND_LIST{CommandType(8, QStringLiteral("command_result:") + identity),
                               CommandType(1, QStringLiteral("db.async_result:") + identity)})}},
    };
    return seeds.value(name);
}

}  // namespace

namespace {

// What a reader hands out of a byte stream: the frames in turn, and how it ended.
QString readFrames(const QList<QByteArray>& pieces)
{
    vdserver::FrameReader reader;
    QString outcome;
    for (const QByteArray& piece : pieces) {
        reader.append(piece);
        Command command;
        vdserver::FrameReader::Result result;
        while ((result = reader.next(command)) == vdserver::FrameReader::Result::Command)
            outcome += QString::number(command.id) + command.name + QString::fromLatin1(command.data.toHex()) + '|';
        if (result == vdserver::FrameReader::Result::Error)
            return outcome + QStringLiteral("error");
    }
    return outcome + (reader.hasPartialFrame() ? QStringLiteral("partial") : QStringLiteral("end"));
}

// A console's bytes on the wire, as TCP may cut them anywhere: the reader must frame them the
// same whether they come at once or a few at a time.
FuzzTarget frameTarget()
{
    const QString name = QStringLiteral("server.frames");
    return {name,
            [name](const QByteArray& input) {
                QList<QByteArray> pieces;
                const int step = input.isEmpty() ? 1 : 1 + quint8(input.front()) % 7;
                for (int at = 0; at < input.size(); at += step)
                    pieces.append(input.mid(at, step));
                if (readFrames({input}) != readFrames(pieces))
                    fuzzFailure(name, QStringLiteral("the frames depend on how the bytes were cut"));
            },
            [] {
                Command query;
                query.id = 7;
                query.type = 8;
                query.name = QStringLiteral("data.removeObject");
                query.data = payload(QByteArray("session"), 42u);
                Command answer = query;
                answer.status = Command::StatusOk;
                answer.data.clear();
                const QByteArray one = vdserver::FrameReader::frame(query);
                return QList<QByteArray>{one, one + vdserver::FrameReader::frame(answer), one.left(one.size() - 3)};
            }};
}

}  // namespace

QList<FuzzTarget> serverTargets()
{
    const QStringList operations{
        QStringLiteral("data.addObject"),         QStringLiteral("data.updateObject"),
        QStringLiteral("data.updateObjectEx"),    QStringLiteral("data.removeObject"),
        QStringLiteral("data.addObjectInherits"), QStringLiteral("data.changeUserAccess"),
        QStringLiteral("data.updateWorkerCards"), QStringLiteral("data.getUserFingers"),
        QStringLiteral("data.getBlobDataChange"), QStringLiteral("data.syslog"),
        QStringLiteral("data.dismissWorker"),     QStringLiteral("devices.bind"),
        QStringLiteral("devices.unbind"),         QStringLiteral("devices.readCard"),
        QStringLiteral("send_email"),             QStringLiteral("show:fingerprintwidget"),
        QStringLiteral("show:fingerprintwidget.scan"), QStringLiteral("db.async"),
        QStringLiteral("exchange.local_plugins_info"),
    };
    QList<FuzzTarget> targets{frameTarget()};
    for (const QString& operation : operations) {
        targets.append({QStringLiteral("server.") + operation,
                        [operation](const QByteArray& input) { ServerUnderTest::instance().ask(operation, input); },
                        [operation] { return seedsOf(operation); }});
    }
    return targets;
}
