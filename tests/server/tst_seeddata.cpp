#include "serverfixture.h"

#include "constants.h"

#include <QRegularExpression>
#include <QSet>
#include <QtTest>

#include <algorithm>

using namespace vorandel;
using vdserver::Account;
using vdserver::SeedOptions;
using vdserver::Server;

namespace {
QHash<QString, OBJECT_HASH> everything(const Server& server)
{
    QHash<QString, OBJECT_HASH> tables;
    for (const QString& dataname : vdserver::ObjectStore::datanames())
        tables.insert(dataname, *server.objects(dataname));
    return tables;
}

QList<INHERIT_DATA> sorted(QList<INHERIT_DATA> links)
{
    std::stable_sort(links.begin(), links.end(), SortInheritDataByPriority);
    return links;
}

QStringList users(const QList<INHERIT_DATA>& links)
{
    QStringList uids;
    for (const INHERIT_DATA& link : links)
        uids << QString::number(link.second);
    return uids;
}

const QStringList AllRights = {"RL_PASS_REQUESTS_SHOW",   "RL_PASS_REQUESTS_SHOW_ALL", "RL_PASS_REQUESTS_CREATE",
                               "RL_PASS_REQUESTS_UPDATE", "RL_PASS_REQUESTS_DELETE",   "RL_PASS_REQUESTS_CONFIRM"};
}  // namespace

class TestSeedData : public QObject
{
    Q_OBJECT

private slots:
    void theSameSeedGivesTheSameSet()
    {
        Server first;
        Server second;
        first.seed({48, 7});
        second.seed({48, 7});
        QVERIFY(everything(first) == everything(second));
        QCOMPARE(first.dbSettings(), second.dbSettings());
        QCOMPARE(first.accounts().size(), second.accounts().size());

        second.seed({48, 8});
        QVERIFY(*first.objects(PASS_REQUEST_DATANAME) != *second.objects(PASS_REQUEST_DATANAME));
    }

    void aBigSetHasItsSize()
    {
        Server server;
        server.seed({100000, 1});
        QCOMPARE(server.objects(PASS_REQUEST_DATANAME)->size(), 100000);
        QCOMPARE(server.objects(SUBJECT_DATANAME)->size(), 50000);
        QCOMPARE(server.objects(USER_DATANAME)->size(), 200);
        QCOMPARE(server.objects(POLICY_DATANAME)->size(), 100);
        const auto previews = std::count_if(server.objects(SUBJECT_DATANAME)->cbegin(),
                                            server.objects(SUBJECT_DATANAME)->cend(), [](const ObjectInfo& worker) {
                                                return worker.parameters.contains(QStringLiteral("PT_PHOTO_PREVIEW"));
                                            });
        QCOMPARE(previews, 0);
    }

    void requestsAreConsistent_data()
    {
        QTest::addColumn<int>("requests");
        QTest::newRow("default") << SeedOptions().requests;
        QTest::newRow("larger") << 3000;
    }

    void requestsAreConsistent()
    {
        QFETCH(int, requests);
        Server server;
        server.seed({requests, 20261122});
        const OBJECT_HASH& workers = *server.objects(SUBJECT_DATANAME);
        const OBJECT_HASH& groups = *server.objects(POLICY_DATANAME);
        const OBJECT_HASH& lists = *server.objects(CONFIRM_LIST_DATANAME);
        const QDateTime now = QDateTime::currentDateTime();
        const QRegularExpression number(QStringLiteral("^П-\\d{4}-\\d{6}$"));
        QSet<int> states;
        QSet<QString> numbers;

        for (const ObjectInfo& request : *server.objects(PASS_REQUEST_DATANAME)) {
            const auto value = [&](const QString& key) { return request.parameters.value(key); };
            const int state = value(db::pass_request::STATE).toInt();
            states.insert(state);
            QVERIFY(number.match(value(db::pass_request::PASSID)).hasMatch());
            numbers.insert(value(db::pass_request::PASSID));

            const ObjectInfo worker = workers.value(value(QStringLiteral("PT_SUBJECT_ID")).toUInt());
            QVERIFY(worker.isValid());
            for (const char* key : {"PT_SURNAME", "PT_NAME", "PT_PATRONYMIC"})
                QCOMPARE(value(key), worker.parameters.value(key));
            const QStringList way = value(QStringLiteral("PT_WAY")).split(QLatin1Char(';'));
            QVERIFY(!way.isEmpty() && way.size() <= 3);
            for (const QString& group : way) {
                QVERIFY(groups.contains(group.toUInt()));
                QVERIFY(groups.value(group.toUInt()).parameters.value(QStringLiteral("PT_HIDDEN")) != "true");
            }
            QVERIFY(server.objects(ORGSTRUCTURE_DATANAME)->contains(value(db::pass_request::TO_DEPARTMENT).toUInt()));
            QVERIFY(server.objects(USER_DATANAME)->contains(value(db::pass_request::CREATOR).toUInt()));

            const QDateTime created = QDateTime::fromString(value(db::pass_request::CREATE_DATE), Qt::ISODate);
            const QDateTime begin = QDateTime::fromString(value(QStringLiteral("PT_DATE_BEGIN")), Qt::ISODate);
            const QDateTime end = QDateTime::fromString(value(QStringLiteral("PT_DATE_END")), Qt::ISODate);
            QVERIFY(created.isValid() && begin.isValid() && end.isValid());
            QVERIFY(created < now && created < begin && begin < end);
            if (state == PASS_REQUEST_STATE_ACTIVE)
                QVERIFY(begin < now && now < end);
            if (state == PASS_REQUEST_STATE_FINISHED)
                QVERIFY(end < now);

            const QList<INHERIT_DATA> chain = sorted(request.inherits.values(23));
            const QList<INHERIT_DATA> confirmed = request.inherits.values(24);
            const QList<INHERIT_DATA> rejected = request.inherits.values(25);
            const ObjectInfo list = lists.value(value(db::pass_request::CONFIRM_LIST).toUInt());
            QCOMPARE(users(chain), users(sorted(list.inherits.values(23))));
            QCOMPARE(users(sorted(confirmed)), users(chain.mid(0, confirmed.size())));
            if (chain.isEmpty()) {
                QVERIFY(confirmed.isEmpty() && rejected.isEmpty());
            } else if (state == PASS_REQUEST_STATE_NOT_CONFIRMED) {
                QVERIFY(confirmed.size() < chain.size() && rejected.isEmpty());
            } else if (state == PASS_REQUEST_STATE_REJECTED) {
                QCOMPARE(rejected.size(), 1);
                QVERIFY(confirmed.size() < chain.size());
                QCOMPARE(rejected.first().second, chain.at(confirmed.size()).second);
            } else {
                QCOMPARE(confirmed.size(), chain.size());
                QVERIFY(rejected.isEmpty());
            }
        }
        QCOMPARE(states, (QSet<int>{0, 1, 2, 3, 4, 5}));
        QCOMPARE(numbers.size(), requests);
    }

    void accountsCoverEveryRole()
    {
        ServerFixture f;
        const QList<Account> accounts = f.server.accounts();
        const auto account = [&](const QString& login) {
            return *std::find_if(accounts.cbegin(), accounts.cend(),
                                 [&](const Account& a) { return a.login == login; });
        };
        QCOMPARE(account(f.server.defaultLogin()).roles, AllRights);
        QCOMPARE(account(QStringLiteral("viewer")).roles, QStringList{"RL_PASS_REQUESTS_SHOW"});
        const QStringList office = account(QStringLiteral("operator")).roles;
        QVERIFY(!office.contains("RL_PASS_REQUESTS_CONFIRM"));
        QCOMPARE(office.size(), 5);
        for (const Account& user : accounts) {
            QCOMPARE(f.object(USER_DATANAME, user.uid).parameters.value(QStringLiteral("PT_LOGIN")), user.login);
            QVERIFY(!user.displayName.isEmpty());
        }

        // The approvers stand at different places of one list, and each has requests waiting.
        QSet<TYPE_ID> approvers;
        for (const Account& user : accounts) {
            if (user.roles.contains("RL_PASS_REQUESTS_CONFIRM") && !user.roles.contains("RL_PASS_REQUESTS_SHOW_ALL"))
                approvers.insert(user.uid);
        }
        QVERIFY(approvers.size() >= 2);
        const QList<ObjectInfo> lists = f.objects(CONFIRM_LIST_DATANAME);
        const bool shared = std::any_of(lists.cbegin(), lists.cend(), [&](const ObjectInfo& list) {
            QSet<TYPE_ID> members;
            for (const INHERIT_DATA& member : list.inherits.values(23))
                members.insert(member.second);
            return members.contains(approvers);
        });
        QVERIFY(shared);
        QSet<TYPE_ID> waitedFor;
        for (const ObjectInfo& request : f.objects(PASS_REQUEST_DATANAME)) {
            const QList<INHERIT_DATA> chain = sorted(request.inherits.values(23));
            const int turn = request.inherits.count(24);
            if (request.parameters.value(db::pass_request::STATE) == "0" && turn < chain.size())
                waitedFor.insert(chain.at(turn).second);
        }
        QCOMPARE(waitedFor, approvers);

        QVERIFY(!f.server.login(QStringLiteral("nobody")));
        QVERIFY(f.loginAs(QStringLiteral("petrov")).sessionId != f.loginAs(QStringLiteral("petrov")).sessionId);
    }

    void publishGivesEverything()
    {
        ServerFixture f;
        QStringList order;
        QHash<QString, int> sizes;
        QHash<QString, QString> settings;
        connect(&f.server, &Server::objectsChanged, this,
                [&](const QString& dataname, const QList<ObjectInfo>& objects) {
                    order << dataname;
                    sizes.insert(dataname, objects.size());
                });
        connect(&f.server, &Server::settingsChanged, this, [&](const QHash<QString, QString>& values) {
            order << QStringLiteral("settings");
            settings = values;
        });
        connect(&f.server, &Server::schedulesChanged, this, [&] { order << QStringLiteral("schedules"); });

        f.server.publish();
        const QStringList expected = vdserver::ObjectStore::datanames() << QStringLiteral("settings")
                                                                        << QStringLiteral("schedules");
        QCOMPARE(order, expected);
        for (const QString& dataname : vdserver::ObjectStore::datanames())
            QCOMPARE(sizes.value(dataname), f.server.objects(dataname)->size());
        QCOMPARE(settings.value(db::database::PASS_REQUEST_SEQUENCE), QStringLiteral("П-${year}-${zero6-num}"));
        QCOMPARE(settings.value(db::database::PD_DENY_STORE_USER_PHOTOS), QStringLiteral("false"));
        const TYPE_ID visitors = settings.value(db::database::DEFAULT_DEPARTMENT).toUInt();
        const ObjectInfo department = f.object(ORGSTRUCTURE_DATANAME, visitors);
        QCOMPARE(department.type, db::orgstructure::DEPARTMENT);

        Server empty;
        QStringList datanames;
        connect(&empty, &Server::objectsChanged, this, [&](const QString& dataname, const QList<ObjectInfo>& objects) {
            if (objects.isEmpty())
                datanames << dataname;
        });
        empty.publish();
        QCOMPARE(datanames, vdserver::ObjectStore::datanames());
    }
};

QTEST_MAIN(TestSeedData)
#include "tst_seeddata.moc"
