#include "serverfixture.h"

#include "constants.h"

#include <QSignalSpy>
#include <QtTest>

#include <algorithm>

using namespace vorandel;
using vdserver::Server;
using vdserver::Session;

namespace {
const QString Visitor = QStringLiteral("Разовый пропуск посетителя");  // petrov, then sidorova
const QString Contractor = QStringLiteral("Пропуск подрядной организации");  // sidorova, kozlov, petrov

QList<INHERIT_DATA> links(const ObjectInfo& object, unsigned int type)
{
    QList<INHERIT_DATA> found = object.inherits.values(type);
    std::sort(found.begin(), found.end(), SortInheritDataByPriority);
    return found;
}

QString state(const ObjectInfo& request)
{
    return request.parameters.value(db::pass_request::STATE);
}
}  // namespace

class TestServerRequests : public QObject
{
    Q_OBJECT

private:
    // Raises a request on the confirm list of that name (none for an empty name).
    TYPE_ID raise(ServerFixture& f, const QString& list = QString())
    {
        ObjectInfo request;
        request.type = db::misc::PASS_REQUEST;
        request.parameters = {{db::pass_request::STATE, QStringLiteral("0")},
                              {db::pass_request::PASSID, QStringLiteral("П-2026-900001")}};
        if (!list.isEmpty())
            request.parameters.insert(db::pass_request::CONFIRM_LIST, QString::number(f.confirmList(list).uid));
        const Command answer = f.data(QStringLiteral("addObject"), request);
        return answer.status == Command::StatusOk ? TYPE_ID(ServerFixture::uidOf(answer)) : 0;
    }

    // A decision of `actor` in the name of `user`, who must be on the request's chain.
    Command decide(ServerFixture& f, TYPE_ID request, const QString& actor, const QString& user, unsigned int type)
    {
        const TYPE_ID uid = f.userUid(user);
        INHERIT_DATA decision(request, uid, type);
        for (const INHERIT_DATA& member : f.object(PASS_REQUEST_DATANAME, request).inherits.values(23)) {
            if (member.second == uid)
                decision.priority = member.priority;
        }
        return f.dataAs(f.loginAs(actor), QStringLiteral("addObjectInherits"), QList<INHERIT_DATA>{decision});
    }

private slots:
    void aNewRequestGetsTheChainOfItsList()
    {
        ServerFixture f;
        QStringList events;
        connect(&f.server, &Server::objectsChanged, this, [&](const QString& dataname) { events << dataname; });

        ObjectInfo request;
        request.type = db::misc::PASS_REQUEST;
        request.parameters = {{db::pass_request::STATE, QStringLiteral("0")},
                              {db::pass_request::CONFIRM_LIST, QString::number(f.confirmList(Contractor).uid)},
                              {db::pass_request::EXTRA_INFO, QString()}};
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
        QTRY_COMPARE(events, (QStringList{QStringLiteral("answer"), PASS_REQUEST_DATANAME}));
        QCOMPARE(answer.status, int(Command::StatusOk));

        const TYPE_ID uid = TYPE_ID(ServerFixture::uidOf(answer));
        const ObjectInfo stored = f.object(PASS_REQUEST_DATANAME, uid);
        QCOMPARE(stored.uid, uid);
        QVERIFY(!stored.parameters.contains(db::pass_request::EXTRA_INFO));
        QVERIFY(!stored.inherits.contains(24));
        const QList<INHERIT_DATA> chain = links(stored, 23);
        const QList<INHERIT_DATA> members = links(f.confirmList(Contractor), 23);
        QCOMPARE(chain.size(), 3);
        for (int i = 0; i < chain.size(); ++i) {
            QCOMPARE(chain.at(i).first, uid);
            QCOMPARE(chain.at(i).second, members.at(i).second);
            QCOMPARE(chain.at(i).priority, members.at(i).priority);
        }
        QCOMPARE(chain.first().second, f.userUid(QStringLiteral("sidorova")));

        const ObjectInfo plain = f.object(PASS_REQUEST_DATANAME, raise(f));
        QVERIFY(plain.isValid());
        QVERIFY(plain.inherits.isEmpty());
    }

    void decisions_data()
    {
        QTest::addColumn<QStringList>("steps");  // actor, in whose name, type, expected
        QTest::addColumn<QString>("state");

        QTest::newRow("both in turn") << QStringList{"petrov petrov 24 ok", "sidorova sidorova 24 ok"} << "2";
        QTest::newRow("second before first") << QStringList{"sidorova sidorova 24 refused", "petrov petrov 24 ok"}
                                             << "0";
        QTest::newRow("not on the list") << QStringList{"kozlov kozlov 24 refused"} << "0";
        QTest::newRow("for somebody else") << QStringList{"petrov sidorova 24 refused", "sidorova petrov 24 refused"}
                                           << "0";
        QTest::newRow("twice") << QStringList{"petrov petrov 24 ok", "petrov petrov 24 refused"} << "0";
        QTest::newRow("head rejects") << QStringList{"petrov petrov 25 ok"} << "1";
        QTest::newRow("second rejects") << QStringList{"petrov petrov 24 ok", "sidorova sidorova 25 ok"} << "1";
        QTest::newRow("second rejects early") << QStringList{"sidorova sidorova 25 refused"} << "0";
        QTest::newRow("rejection is final") << QStringList{"petrov petrov 25 ok", "sidorova sidorova 24 refused",
                                                           "petrov petrov 25 refused"}
                                            << "1";
        QTest::newRow("walked to the end") << QStringList{"petrov petrov 24 ok", "sidorova sidorova 24 ok",
                                                          "sidorova sidorova 25 refused"}
                                           << "2";
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
            const Command answer = decide(f, request, part.at(0), part.at(1), part.at(2).toUInt());
            if (part.at(3) == QLatin1String("ok")) {
                QVERIFY2(answer.status == Command::StatusOk,
                         qPrintable(step + ": " + ServerFixture::failureText(answer)));
            } else {
                QVERIFY2(answer.status == Command::StatusFailed, qPrintable(step));
                QVERIFY(!ServerFixture::failureText(answer).isEmpty());
                QVERIFY(f.object(PASS_REQUEST_DATANAME, request) == before);
            }
        }
        QCOMPARE(::state(f.object(PASS_REQUEST_DATANAME, request)), state);
    }

    void aDecisionCopiesTheMembersLink()
    {
        ServerFixture f;
        const TYPE_ID request = raise(f, Visitor);
        QVERIFY(decide(f, request, QStringLiteral("petrov"), QStringLiteral("petrov"), 24).status == 1);
        const ObjectInfo stored = f.object(PASS_REQUEST_DATANAME, request);
        const INHERIT_DATA head = links(stored, 23).first();
        QCOMPARE(links(stored, 24), QList<INHERIT_DATA>{INHERIT_DATA(request, head.second, 24, head.priority)});
    }

    void membersOfEqualPriorityGoInAnyOrder()
    {
        ServerFixture f;
        ObjectInfo list;
        list.type = QStringLiteral("OT_CONFIRM_LIST");
        list.parameters.insert(QStringLiteral("PT_NAME"), QStringLiteral("Совет директоров"));
        for (const QString& login : {QStringLiteral("petrov"), QStringLiteral("sidorova")})
            list.inherits.insert(23, INHERIT_DATA(0, f.userUid(login), 23, 5));
        list.inherits.insert(23, INHERIT_DATA(0, f.userUid(QStringLiteral("kozlov")), 23, 9));
        QCOMPARE(f.data(QStringLiteral("addObject"), list).status, int(Command::StatusOk));

        const TYPE_ID request = raise(f, QStringLiteral("Совет директоров"));
        QCOMPARE(decide(f, request, QStringLiteral("kozlov"), QStringLiteral("kozlov"), 24).status, 2);
        QCOMPARE(decide(f, request, QStringLiteral("sidorova"), QStringLiteral("sidorova"), 24).status, 1);
        QCOMPARE(decide(f, request, QStringLiteral("kozlov"), QStringLiteral("kozlov"), 24).status, 2);
        QCOMPARE(decide(f, request, QStringLiteral("petrov"), QStringLiteral("petrov"), 24).status, 1);
        QCOMPARE(state(f.object(PASS_REQUEST_DATANAME, request)), QStringLiteral("0"));
        QCOMPARE(decide(f, request, QStringLiteral("kozlov"), QStringLiteral("kozlov"), 24).status, 1);
        QCOMPARE(state(f.object(PASS_REQUEST_DATANAME, request)), QStringLiteral("2"));
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
        const Session petrovs = f.loginAs(QStringLiteral("petrov"));
        const Command answer = f.dataAs(petrovs, QStringLiteral("addObjectInherits"), batch);
        QCOMPARE(answer.status, int(Command::StatusFailed));
        QVERIFY(f.snapshot() == before);

        const Command empty = f.data(QStringLiteral("addObjectInherits"), QList<INHERIT_DATA>());
        QCOMPARE(empty.status, int(Command::StatusOk));
    }

    void statesWrittenDirectly_data()
    {
        QTest::addColumn<QString>("list");
        QTest::addColumn<QStringList>("confirmedBy");
        QTest::addColumn<QString>("written");
        QTest::addColumn<bool>("accepted");

        QTest::newRow("confirm without chain") << QString() << QStringList() << "2" << true;
        QTest::newRow("reject without chain") << QString() << QStringList() << "1" << true;
        QTest::newRow("confirm past the chain") << Visitor << QStringList{"petrov"} << "2" << false;
        QTest::newRow("confirm a walked chain") << Visitor << QStringList{"petrov", "sidorova"} << "3" << true;
        QTest::newRow("reject a walked chain") << Visitor << QStringList{"petrov", "sidorova"} << "1" << true;
        QTest::newRow("unknown state") << QString() << QStringList() << "7" << false;
        QTest::newRow("not a number") << QString() << QStringList() << "два" << false;
    }

    void statesWrittenDirectly()
    {
        QFETCH(QString, list);
        QFETCH(QStringList, confirmedBy);
        QFETCH(QString, written);
        QFETCH(bool, accepted);

        ServerFixture f;
        const TYPE_ID request = raise(f, list);
        for (const QString& login : qAsConst(confirmedBy))
            QCOMPARE(decide(f, request, login, login, 24).status, 1);
        const QString before = state(f.object(PASS_REQUEST_DATANAME, request));

        ObjectInfo update;
        update.uid = request;
        update.type = db::misc::PASS_REQUEST;
        update.parameters.insert(db::pass_request::STATE, written);
        const Command answer = f.data(QStringLiteral("updateObjectEx"), update);
        QCOMPARE(answer.status == Command::StatusOk, accepted);
        if (accepted)
            QCOMPARE(ServerFixture::uidOf(answer), int(request));
        QCOMPARE(state(f.object(PASS_REQUEST_DATANAME, request)), accepted ? written : before);
    }

    void anUpdateMergesItsValues()
    {
        ServerFixture f;
        const ObjectInfo stored = f.objects(PASS_REQUEST_DATANAME).first();
        QSignalSpy changed(&f.server, &Server::objectsChanged);
        ObjectInfo update;
        update.uid = stored.uid;
        update.parameters = {{db::pass_request::EXTRA_INFO, QStringLiteral("Приедет к 10:00")},
                             {QStringLiteral("PT_DATE_END"), QString()}};
        QCOMPARE(f.data(QStringLiteral("updateObject"), update).status, int(Command::StatusOk));

        ObjectInfo expected = stored;
        expected.parameters.insert(db::pass_request::EXTRA_INFO, QStringLiteral("Приедет к 10:00"));
        expected.parameters.remove(QStringLiteral("PT_DATE_END"));
        QCOMPARE(f.object(PASS_REQUEST_DATANAME, stored.uid), expected);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().at(1).value<QList<ObjectInfo>>(), QList<ObjectInfo>{expected});

        update.type = db::orgstructure::WORKER;
        QCOMPARE(f.data(QStringLiteral("updateObject"), update).status, int(Command::StatusFailed));
    }

    void aNewListIsTakenUntilSomebodyDecides()
    {
        ServerFixture f;
        const TYPE_ID request = raise(f, Visitor);
        ObjectInfo update;
        update.uid = request;
        update.parameters.insert(db::pass_request::CONFIRM_LIST, QString::number(f.confirmList(Contractor).uid));
        QCOMPARE(f.data(QStringLiteral("updateObjectEx"), update).status, int(Command::StatusOk));
        QCOMPARE(links(f.object(PASS_REQUEST_DATANAME, request), 23).first().second,
                 f.userUid(QStringLiteral("sidorova")));

        QCOMPARE(decide(f, request, QStringLiteral("sidorova"), QStringLiteral("sidorova"), 24).status, 1);
        update.parameters.insert(db::pass_request::CONFIRM_LIST, QString::number(f.confirmList(Visitor).uid));
        QCOMPARE(f.data(QStringLiteral("updateObjectEx"), update).status, int(Command::StatusFailed));
        QCOMPARE(links(f.object(PASS_REQUEST_DATANAME, request), 23).size(), 3);
    }

    void removalIsAnnounced()
    {
        ServerFixture f;
        ObjectInfo worker;
        for (const ObjectInfo& candidate : f.objects(SUBJECT_DATANAME)) {
            if (candidate.inherits.count(INHERIT_CARD) == 1)
                worker = candidate;
        }
        QVERIFY(worker.isValid());
        const TYPE_ID card = worker.inherits.value(INHERIT_CARD).second;
        QSignalSpy removed(&f.server, &Server::objectsRemoved);

        const Command answer = f.data(QStringLiteral("removeObject"), worker);
        QCOMPARE(answer.status, int(Command::StatusOk));
        QVERIFY(!f.server.objects(SUBJECT_DATANAME)->contains(worker.uid));
        QVERIFY(!f.server.objects(CARD_DATANAME)->contains(card));
        QCOMPARE(removed.count(), 2);
        QHash<QString, QList<TYPE_ID>> announced;
        for (const QList<QVariant>& signal : qAsConst(removed))
            announced.insert(signal.at(0).toString(), signal.at(1).value<QList<TYPE_ID>>());
        QCOMPARE(announced.value(SUBJECT_DATANAME), QList<TYPE_ID>{worker.uid});
        QCOMPARE(announced.value(CARD_DATANAME), QList<TYPE_ID>{card});
    }
};

QTEST_MAIN(TestServerRequests)
#include "tst_serverrequests.moc"
