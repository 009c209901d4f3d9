#include "command.h"
#include "constants.h"
#include "dbquery.h"
#include "faketransport.h"
#include "localstorage.h"
#include "serverfixture.h"
#include "server.h"
#include "servicerecords.h"
#include "vddatastream.h"
#include "vdguiglobals.h"

#include <QSignalSpy>
#include <QtTest>

#include <algorithm>

using namespace vorandel;
using vdserver::Server;

namespace {
const QString Malformed = QStringLiteral("Неполные или повреждённые данные запроса");
const QString Photo = QStringLiteral("PT_PHOTO");
const QString FingersStatement = QStringLiteral(
    "SELECT user_object_id, count( id ), (SELECT child_id FROM object_inherit WHERE ref_type = 3 AND "
    "parent_id = user_object_id)  FROM fingers WHERE user_object_id = ANY( ARRAY[%1]::bigint[] ) "
    "GROUP BY user_object_id;");

QList<INHERIT_DATA> links(const ObjectInfo& object, unsigned int type)
{
    QList<INHERIT_DATA> found = object.inherits.values(type);
    std::stable_sort(found.begin(), found.end(), SortInheritDataByPriority);
    return found;
}

QList<CARD_ID> cardNumbers(ServerFixture& f, TYPE_ID worker)
{
    QList<CARD_ID> numbers;
    for (const INHERIT_DATA& link : f.object(SUBJECT_DATANAME, worker).inherits.values(INHERIT_CARD)) {
        const ObjectInfo held = f.object(CARD_DATANAME, link.second);
        if (ot_card::uid(held) == worker)
            numbers.append(ot_card::number(held));
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

QHash<TYPE_ID, QHash<QString, QByteArray>> changedBlobs(ServerFixture& f, const QList<BLOB_DATA_RESQUEST>& requests)
{
    QHash<TYPE_ID, QHash<QString, QByteArray>> blobs;
    readPayload(f.data(QStringLiteral("getBlobDataChange"), requests), blobs);
    return blobs;
}
}  // namespace

class TestServer : public QObject
{
    Q_OBJECT

private slots:
    // Answered in a later turn, once, and only then is the change announced.
    void aNewRequestGetsTheChainOfItsList()
    {
        ServerFixture f;
        QStringList events;
        connect(&f.server, &Server::objectsChanged, this, [&](const QString& dataname) { events << dataname; });
        ObjectInfo request = record(0, db::misc::PASS_REQUEST,
                                    {{db::pass_request::CONFIRM_LIST, QString::number(f.confirmList(Contractor).uid)},
                                     {db::pass_request::EXTRA_INFO, QString()}});
        // Links are the server's: what a client slips in is dropped.
        request.inherits.insert(24, INHERIT_DATA(0, f.userUid(QStringLiteral("kozlov")), 24));
        Command query;
        query.name = QStringLiteral("data.addObject");
        query.data = ServerFixture::payload(f.session.sessionId, request);
        Command answer;
        f.server.send(query, [&](Command& reply) {
            answer = reply;
            events << QStringLiteral("answer");
        });
        QVERIFY(events.isEmpty());
        QTRY_COMPARE(events, (QStringList{QStringLiteral("answer"), PASS_REQUEST_DATANAME}));
        QTest::qWait(20);
        QCOMPARE(events.size(), 2);
        QCOMPARE(answer.status, int(Command::StatusOk));

        const TYPE_ID uid = ServerFixture::first<int>(answer);
        const ObjectInfo stored = f.object(PASS_REQUEST_DATANAME, uid);
        QVERIFY(!stored.parameters.contains(db::pass_request::EXTRA_INFO));
        QVERIFY(!stored.inherits.contains(24));
        const QList<INHERIT_DATA> chain = links(stored, 23);
        const QList<INHERIT_DATA> members = links(f.confirmList(Contractor), 23);
        QCOMPARE(chain.size(), 3);
        for (int i = 0; i < chain.size(); ++i)
            QCOMPARE(chain.at(i), INHERIT_DATA(uid, members.at(i).second, 23, members.at(i).priority));
        // Without a list there is no chain, and the request is confirmed by writing its state.
        const TYPE_ID plain = raise(f);
        QVERIFY(f.object(PASS_REQUEST_DATANAME, plain).inherits.isEmpty());
        const ObjectInfo confirmed = record(plain, QString(), {{db::pass_request::STATE, QStringLiteral("2")}});
        QCOMPARE(ServerFixture::first<int>(f.data(QStringLiteral("updateObjectEx"), confirmed)), int(plain));
        QCOMPARE(f.object(PASS_REQUEST_DATANAME, plain).parameters.value(db::pass_request::STATE), QStringLiteral("2"));
    }

    void refusals_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("withSession");
        QTest::addColumn<QByteArray>("arguments");
        QTest::addColumn<QString>("text");

        const auto p = [](const auto&... values) { return ServerFixture::payload(values...); };
        const ObjectInfo rocket = record(0, QStringLiteral("OT_ROCKET"));
        QTest::newRow("unknown data operation") << "data.teleport" << true << QByteArray()
                                                << "Неизвестная команда: data.teleport";
        QTest::newRow("stale session") << "data.addObject" << false << p(QByteArray("stale"), rocket)
                                       << "Сеанс не найден";
        // The stream's containers reserve what the count claims before they read an element.
        QTest::newRow("count of two billion") << "data.addObjectInherits" << true << p(quint32(0x7fffffff))
                                              << Malformed;
        QTest::newRow("unknown type") << "data.addObject" << true << p(rocket)
                                      << "Неизвестный тип объекта: «OT_ROCKET»";
        QTest::newRow("unknown confirm list")
            << "data.addObject" << true
            << p(record(0, db::misc::PASS_REQUEST, {{db::pass_request::CONFIRM_LIST, QStringLiteral("999999")}}))
            << "Лист согласования 999999 не найден";
    }

    void refusals()
    {
        QFETCH(QString, name);
        QFETCH(bool, withSession);
        QFETCH(QByteArray, arguments);
        QFETCH(QString, text);

        ServerFixture f;
        const auto before = f.snapshot();
        QSignalSpy changed(&f.server, &Server::objectsChanged);
        QSignalSpy removed(&f.server, &Server::objectsRemoved);
        const QByteArray session = withSession ? ServerFixture::payload(f.session.sessionId) : QByteArray();
        const Command answer = f.send(name, session + arguments);
        QCOMPARE(answer.status, int(Command::StatusFailed));
        QCOMPARE(ServerFixture::first<QString>(answer), text);
        QTest::qWait(30);
        QVERIFY(f.snapshot() == before);
        QCOMPARE(changed.count() + removed.count(), 0);
        QVERIFY(f.pushed.isEmpty());
    }

    // Every cut of a valid payload is refused, and nothing changes; the whole payload works.
    void shortPayloadsAreRefused()
    {
        ServerFixture f;
        const auto before = f.snapshot();
        const QByteArray whole = ServerFixture::payload(f.session.sessionId, record(0, db::orgstructure::WORKER,
                                                                                    {{"PT_NAME", "Ян"}}));
        for (int size = 0; size < whole.size(); ++size) {
            const Command answer = f.send(QStringLiteral("data.addObject"), whole.left(size));
            QVERIFY2(answer.status == Command::StatusFailed, qPrintable(QString::number(size)));
            QCOMPARE(ServerFixture::first<QString>(answer), Malformed);
        }
        QTest::qWait(30);
        QVERIFY(f.snapshot() == before);
        QCOMPARE(f.send(QStringLiteral("data.addObject"), whole).status, int(Command::StatusOk));
    }

    // The change is answered at once and carried out "later": its notice follows the answer.
    void accessNoticeFollowsTheAnswer()
    {
        ServerFixture f;
        f.server.setAccessNoticeDelay(0);
        const TYPE_ID worker = hire(f);
        const TYPE_ID group = f.objects(POLICY_DATANAME).first().uid;
        QStringList events;
        f.server.setPushTarget([&](Command& command) {
            events << command.name;
            f.pushed << command;
        });
        Command query;
        query.name = QStringLiteral("data.changeUserAccess");
        const ACCESS_CHANGES grant{worker, group, true, false, 7};
        query.data = ServerFixture::payload(f.session.sessionId, QList<ACCESS_CHANGES>{grant});
        f.server.send(query, [&](Command& answer) { events << QString::number(answer.status); });
        const QString notice = QStringLiteral("change_access_result:") + f.session.sessionId.toHex();
        QTRY_COMPARE(events, (QStringList{QStringLiteral("1"), notice}));
        QList<TYPE_ID> subjects;
        readPayload(f.pushed.last(), subjects);
        QCOMPARE(subjects, QList<TYPE_ID>{worker});
        QCOMPARE(f.object(SUBJECT_DATANAME, worker).inherits.values(7),
                 QList<INHERIT_DATA>{INHERIT_DATA(worker, group, 7)});
    }

    void decisions_data()
    {
        // Who, in whose name, the type of link, and how it goes; or who writes which state.
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QString>("state");

        QTest::newRow("not on the list") << QStringList{"kozlov kozlov 24 refused"} << "0";
        QTest::newRow("for somebody else") << QStringList{"petrov sidorova 24 refused", "sidorova petrov 24 refused"}
                                           << "0";
        QTest::newRow("second rejects") << QStringList{"petrov petrov 24 ok", "sidorova sidorova 25 ok"} << "1";
        QTest::newRow("rejection is final") << QStringList{"petrov petrov 25 ok", "petrov petrov 24 refused"} << "1";
        QTest::newRow("written past the chain") << QStringList{"petrov petrov 24 ok", "admin writes 2 refused"} << "0";
        QTest::newRow("written when walked")
            << QStringList{"petrov petrov 24 ok", "sidorova sidorova 24 ok", "admin writes 3 ok"} << "3";
        QTest::newRow("unknown state") << QStringList{"admin writes 7 refused"} << "0";
    }

    void decisions()
    {
        QFETCH(QStringList, steps);
        QFETCH(QString, state);

        ServerFixture f;
        const TYPE_ID request = raise(f, Visitor);
        for (const QString& step : qAsConst(steps)) {
            const QStringList part = step.split(QLatin1Char(' '));
            const ObjectInfo before = f.object(PASS_REQUEST_DATANAME, request);
            const Command answer = part.at(1) == QLatin1String("writes")
                ? f.dataAs(f.login(part.at(0)), QStringLiteral("updateObjectEx"),
                           record(request, db::misc::PASS_REQUEST, {{db::pass_request::STATE, part.at(2)}}))
                : decide(f, request, part.at(0), part.at(1), part.at(2).toUInt());
            const QString text = ServerFixture::first<QString>(answer);
            if (part.at(3) == QLatin1String("ok")) {
                QVERIFY2(answer.status == Command::StatusOk, qPrintable(step + ": " + text));
            } else {
                QVERIFY2(answer.status == Command::StatusFailed && !text.isEmpty(), qPrintable(step));
                QVERIFY(f.object(PASS_REQUEST_DATANAME, request) == before);
            }
        }
        QCOMPARE(f.object(PASS_REQUEST_DATANAME, request).parameters.value(db::pass_request::STATE), state);
    }

    // Members of equal priority decide in any order, each once, after those before them.
    void membersOfEqualPriorityGoInAnyOrder()
    {
        ServerFixture f;
        ObjectInfo board = record(0, QStringLiteral("OT_CONFIRM_LIST"), {{"PT_NAME", "Совет директоров"}});
        const QList<QPair<QString, unsigned int>> members = {{"petrov", 5}, {"sidorova", 5}, {"kozlov", 9}};
        for (const auto& [login, priority] : members)
            board.inherits.insert(23, INHERIT_DATA(0, f.userUid(login), 23, priority));
        QCOMPARE(f.data(QStringLiteral("addObject"), board).status, int(Command::StatusOk));
        const TYPE_ID request = raise(f, QStringLiteral("Совет директоров"));
        QList<int> statuses;
        for (const char* login : {"kozlov", "sidorova", "sidorova", "kozlov", "petrov", "kozlov"})
            statuses << decide(f, request, login, login, 24).status;
        QCOMPARE(statuses, (QList<int>{2, 1, 2, 2, 1, 1}));
        QCOMPARE(f.object(PASS_REQUEST_DATANAME, request).parameters.value(db::pass_request::STATE), "2");
    }

    void aRefusedBatchAppliesNothing()
    {
        ServerFixture f;
        const TYPE_ID first = raise(f, Visitor);
        const TYPE_ID second = raise(f, Visitor);
        const auto before = f.snapshot();
        const TYPE_ID petrov = f.userUid(QStringLiteral("petrov"));
        const QList<INHERIT_DATA> batch = {INHERIT_DATA(first, petrov, 24, 10), INHERIT_DATA(second, petrov, 24, 10),
                                           INHERIT_DATA(first, petrov, 24, 10)};
        const Command answer = f.dataAs(f.login(QStringLiteral("petrov")), QStringLiteral("addObjectInherits"), batch);
        QCOMPARE(answer.status, int(Command::StatusFailed));
        QVERIFY(f.snapshot() == before);
        QCOMPARE(f.data(QStringLiteral("addObjectInherits"), QList<INHERIT_DATA>()).status, int(Command::StatusOk));
    }

    void cardsAreIssuedWholeOrNotAtAll()
    {
        ServerFixture f;
        const auto issue = [&](TYPE_ID worker, const QList<ObjectInfo>& add, const QList<ObjectInfo>& remove) {
            return f.data(QStringLiteral("updateWorkerCards"), worker, add, remove, true);
        };
        const TYPE_ID first = hire(f);
        QCOMPARE(issue(first, {card(7001), card(7002)}, {}).status, int(Command::StatusOk));
        QCOMPARE(cardNumbers(f, first), (QList<CARD_ID>{7001, 7002}));

        const TYPE_ID second = hire(f);
        const auto before = f.snapshot();
        const Command taken = issue(second, {card(7003), card(7001)}, {});
        QCOMPARE(taken.status, int(Command::StatusFailed));
        QCOMPARE(ServerFixture::first<QString>(taken), QStringLiteral("Карта 7001 уже выдана"));
        QCOMPARE(issue(second, {card(7004), card(7004)}, {}).status, int(Command::StatusFailed));
        QCOMPARE(issue(second, {}, {card(7002)}).status, int(Command::StatusFailed));
        QCOMPARE(issue(first, {card(7002)}, {card(7001)}).status, int(Command::StatusFailed));
        QVERIFY(f.snapshot() == before);

        // A card handed back can be handed out again in the same call.
        QCOMPARE(issue(first, {card(7002)}, {card(7002)}).status, int(Command::StatusOk));
        QCOMPARE(issue(first, {}, {card(7001)}).status, int(Command::StatusOk));
        QCOMPARE(cardNumbers(f, first), QList<CARD_ID>{7002});
        QCOMPARE(issue(second, {card(7001)}, {}).status, int(Command::StatusOk));
        QCOMPARE(cardNumbers(f, second), QList<CARD_ID>{7001});
        QCOMPARE(f.server.objects(CARD_DATANAME)->size(), before.value(CARD_DATANAME).size());
    }

    // The database's count agrees with the templates; a second card fails the statement.
    void fingersQuery()
    {
        ServerFixture f;
        // Workers of the seed with two cards would fail the statement from the start.
        QList<unsigned int> workers;
        QStringList uids;
        for (const ObjectInfo& worker : f.objects(SUBJECT_DATANAME)) {
            if (worker.inherits.count(INHERIT_CARD) < 2) {
                workers << worker.uid;
                uids << QString::number(worker.uid);
            }
        }
        QMap<unsigned int, TEMPLATE_DATA> map;
        readPayload(f.data(QStringLiteral("getUserFingers"), workers), map);
        const QMultiMap<unsigned int, TEMPLATE_DATA> templates(map);
        DbQuery query;
        query.queries = QStringList{FingersStatement.arg(uids.join(QLatin1Char(',')))};
        const QByteArray asked = ServerFixture::payload(QStringLiteral("probe"), QStringLiteral("q1"), query);
        QString queryId;
        int status = 0;
        QString error;
        QList<DbResult> tables;

        QCOMPARE(f.send(QStringLiteral("db.async"), asked).status, int(Command::StatusOk));
        QTRY_COMPARE(f.pushed.size(), 1);
        QCOMPARE(f.pushed.first().name, QStringLiteral("db.async_result:probe"));
        QCOMPARE(f.pushed.first().type, 1);
        readPayload(f.pushed.first(), queryId, status, error, tables);
        QCOMPARE(queryId, QStringLiteral("q1"));
        QCOMPARE(status, int(Command::StatusOk));
        QCOMPARE(tables.size(), 1);
        QCOMPARE(tables.first().columnCount, 3);
        QCOMPARE(tables.first().rowCount, templates.uniqueKeys().size());
        for (int row = 0; row < tables.first().rowCount; ++row) {
            const TYPE_ID worker = tables.first().cell(row, 0).toUInt();
            QCOMPARE(tables.first().cell(row, 1).toInt(), templates.count(worker));
            const QList<INHERIT_DATA> cards = f.object(SUBJECT_DATANAME, worker).inherits.values(INHERIT_CARD);
            QCOMPARE(tables.first().cell(row, 2).toUInt(), cards.isEmpty() ? 0u : cards.first().second);
        }

        const auto cardless = std::find_if(templates.keyBegin(), templates.keyEnd(), [&](unsigned int worker) {
            return !f.object(SUBJECT_DATANAME, worker).inherits.contains(INHERIT_CARD);
        });
        QVERIFY(cardless != templates.keyEnd());
        QCOMPARE(f.data(QStringLiteral("updateWorkerCards"), *cardless, QList<ObjectInfo>{card(8001), card(8002)},
                        QList<ObjectInfo>(), true).status, int(Command::StatusOk));
        QCOMPARE(f.send(QStringLiteral("db.async"), asked).status, int(Command::StatusOk));
        QTRY_COMPARE(f.pushed.size(), 2);
        readPayload(f.pushed.last(), queryId, status, error);
        QCOMPARE(status, int(Command::StatusFailed));
        QVERIFY(error.contains(QStringLiteral("more than one row")));
    }

    void blobsComeOnlyWhenTheyDiffer()
    {
        ServerFixture f;
        QList<BLOB_DATA_RESQUEST> unknown;
        for (const ObjectInfo& worker : f.objects(SUBJECT_DATANAME))
            unknown << BLOB_DATA_RESQUEST{worker.uid, Photo, {}};
        const auto photos = changedBlobs(f, unknown);
        QVERIFY(!photos.isEmpty());
        QVERIFY(photos.size() < unknown.size());  // some have none

        QList<BLOB_DATA_RESQUEST> known;
        for (auto it = photos.cbegin(); it != photos.cend(); ++it) {
            QCOMPARE(VDGuiGlobals::imageFromDB(it->value(Photo)).size(), QSize(240, 300));
            known << BLOB_DATA_RESQUEST{it.key(), Photo, LocalStorage::md5Of(it->value(Photo))};
        }
        QVERIFY(changedBlobs(f, known).isEmpty());
        const TYPE_ID withPhoto = photos.cbegin().key();
        QCOMPARE(changedBlobs(f, {{withPhoto, Photo, "0123"}}).value(withPhoto), photos.value(withPhoto));

        // Without a photo on the server, a copy at hand is to be dropped.
        const auto without = std::find_if(unknown.cbegin(), unknown.cend(),
                                          [&](const BLOB_DATA_RESQUEST& r) { return !photos.contains(r.uid); });
        QCOMPARE(changedBlobs(f, {{without->uid, Photo, "0123"}}).value(without->uid),
                 (QHash<QString, QByteArray>{{Photo, QByteArray()}}));
    }

};

VD_STORE_TEST_MAIN(TestServer)
#include "tst_server.moc"
