#include "constants.h"
#include "faultplan.h"
#include "server.h"
#include "teststore.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>
#include <optional>

using namespace vorandel;

namespace {
// At least this many kills, and no longer than this, however slow the machine.
constexpr int Kills = 55;
constexpr qint64 BudgetMs = 150000;
// How long after it is ready the worker runs before it is killed: long enough for a few
// operations, short enough that many kills fall in the middle of one.
constexpr int LeastRunMs = 5;
constexpr int MostRunMs = 150;

// What the worker acknowledged of one family of operations.
struct Family
{
    int acknowledged = 0;  // operations, in order from the first
    TYPE_ID worker = 0;
    TYPE_ID request = 0;
};

// What the store is found to hold against what was acknowledged.
struct Findings
{
    int lost = 0;          // acknowledged, and not there
    int halfApplied = 0;   // there in part
    QStringList details;
    // The access that the workers of the stream have beside what it grants them: whatever their
    // making gives them, the same for all.
    std::optional<QSet<TYPE_ID>> madeWith;

    void note(int& count, const QString& what)
    {
        ++count;
        if (details.size() < 10)
            details << what;
    }
};

const ObjectInfo* findBy(const vdserver::Server& server, const QString& dataname, const QString& key,
                         const QString& value)
{
    for (const ObjectInfo& object : *server.objects(dataname)) {
        if (object.parameters.value(key) == value)
            return &object;
    }
    return nullptr;
}

// The cards that the store gives a worker, from either side: his links, and the cards that name
// him.
QList<TYPE_ID> cardsOf(const vdserver::Server& server, TYPE_ID worker, QList<TYPE_ID>* named)
{
    QList<TYPE_ID> linked;
    for (const INHERIT_DATA& link : server.objects(SUBJECT_DATANAME)->value(worker).inherits.values(INHERIT_CARD))
        linked << link.second;
    named->clear();
    for (const ObjectInfo& card : *server.objects(CARD_DATANAME)) {
        if (ot_card::uid(card) == worker)
            *named << card.uid;
    }
    std::sort(linked.begin(), linked.end());
    std::sort(named->begin(), named->end());
    return linked;
}

// What holds of the whole store after any operation: cards and their holders agree, and every
// request has the whole chain of its confirm list.
void checkWhole(const vdserver::Server& server, Findings& findings)
{
    for (const ObjectInfo& worker : *server.objects(SUBJECT_DATANAME)) {
        QList<TYPE_ID> named;
        if (cardsOf(server, worker.uid, &named) != named)
            findings.note(findings.halfApplied, QStringLiteral("worker %1: cards and links disagree").arg(worker.uid));
    }
    for (const ObjectInfo& request : *server.objects(PASS_REQUEST_DATANAME)) {
        const TYPE_ID list = request.parameters.value(db::pass_request::CONFIRM_LIST).toUInt();
        const int members = server.objects(CONFIRM_LIST_DATANAME)->value(list).inherits.count(
            INHERIT_CONFIRM_LIST_PASS_REQUEST);
        if (request.inherits.count(INHERIT_CONFIRM_LIST_PASS_REQUEST) != members)
            findings.note(findings.halfApplied, QStringLiteral("request %1: a broken chain").arg(request.uid));
    }
}

// Checks one family against what was acknowledged of it; the operation after those may or may
// not have been kept, but wholly if at all.
void check(const vdserver::Server& server, int number, const Family& family, Findings& findings)
{
    using namespace faultplan;
    const QString tag = faultplan::tag(number);
    const auto acked = [&](Kind kind) { return family.acknowledged > int(kind); };
    const auto lost = [&](const QString& what) { findings.note(findings.lost, tag + ": " + what); };
    const auto half = [&](const QString& what) { findings.note(findings.halfApplied, tag + ": " + what); };

    const ObjectInfo* worker = findBy(server, SUBJECT_DATANAME, QStringLiteral("PT_WORKERNUM"), tag);
    // Removed for sure, or perhaps, when that was the operation under way.
    const bool removed = removesWorker(number) && acked(Finish);
    const bool mayBeRemoved = removesWorker(number) && family.acknowledged >= int(Finish);
    if (acked(Hire) && !mayBeRemoved && !worker)
        lost(QStringLiteral("the worker is gone"));
    if (removed && worker)
        lost(QStringLiteral("the worker was removed and is back"));
    if (worker) {
        const ObjectInfo department = server.objects(ORGSTRUCTURE_DATANAME)->value(worker->parent);
        const QList<TYPE_ID> granted = grantedGroups(server.objects(POLICY_DATANAME)->keys(), department);
        QSet<TYPE_ID> others;
        int groups = 0;
        for (const INHERIT_DATA& link : worker->inherits.values(7)) {
            if (granted.contains(link.second))
                ++groups;
            else
                others.insert(link.second);
        }
        if (groups != 0 && groups != GroupsGranted)
            half(QStringLiteral("%1 of the access groups granted").arg(groups));
        if (acked(Grant) && groups == 0)
            lost(QStringLiteral("the access groups are gone"));
        // What he was made with is his department's access, whole: it comes in the same step.
        QSet<TYPE_ID> fromDepartment;
        const QList<INHERIT_DATA> departmentLinks = department.inherits.values(7);
        for (const INHERIT_DATA& link : departmentLinks) {
            if (!granted.contains(link.second))
                fromDepartment.insert(link.second);
        }
        if (others != fromDepartment)
            half(QStringLiteral("made without his department's access groups"));
        if (!findings.madeWith)
            findings.madeWith = others;
        else if (others != *findings.madeWith)
            half(QStringLiteral("access groups from his making that others don't have"));
    }
    const TYPE_ID workerUid = worker ? worker->uid : family.worker;
    if (workerUid != 0) {
        QList<TYPE_ID> named;
        const QList<TYPE_ID> linked = cardsOf(server, workerUid, &named);
        if (linked != named || (linked.size() != 0 && linked.size() != CardsIssued))
            half(QStringLiteral("cards linked %1, naming him %2").arg(linked.size()).arg(named.size()));
        if (acked(Issue) && !mayBeRemoved && linked.isEmpty())
            lost(QStringLiteral("the cards are gone"));
        if (!worker && !named.isEmpty())
            half(QStringLiteral("cards of a removed worker"));
    }

    const ObjectInfo* request = findBy(server, PASS_REQUEST_DATANAME, db::pass_request::PASSID, tag);
    if (acked(Raise) && !request)
        lost(QStringLiteral("the request is gone"));
    if (!request)
        return;
    const int chain = request->inherits.count(INHERIT_CONFIRM_LIST_PASS_REQUEST);
    const int confirmations = request->inherits.count(INHERIT_CONFIRMED_LIST_PASS_REQUEST);
    const QString state = request->parameters.value(db::pass_request::STATE);
    if (chain != 2)
        half(QStringLiteral("a request with a chain of %1").arg(chain));
    if (acked(Confirm) && confirmations == 0)
        lost(QStringLiteral("the first confirmation is gone"));
    if (!removesWorker(number) && acked(Finish) && confirmations < 2)
        lost(QStringLiteral("the second confirmation is gone"));
    if ((state == QLatin1String("2")) != (confirmations == chain))
        half(QStringLiteral("state %1 with %2 of %3 confirmations").arg(state).arg(confirmations).arg(chain));
}
}  // namespace

class TestStoreFaults : public QObject
{
    Q_OBJECT

private slots:
    // A server killed at random moments loses nothing that it acknowledged and leaves nothing
    // half done, and a uid once given is never given again.
    void killedServerKeepsWhatItAcknowledged()
    {
        TestStore store;
        {
            vdserver::Server seeding;
            QVERIFY2(seeding.open(store.location()), qPrintable(seeding.errorString()));
            QVERIFY(seeding.seed());
        }
        const QString worker = QCoreApplication::applicationDirPath() + QStringLiteral("/storefaultworker");
        const quint32 seed = qEnvironmentVariableIsSet("VD_FAULT_SEED") ? quint32(qEnvironmentVariableIntValue("VD_FAULT_SEED"))
                                                                       : QRandomGenerator::global()->generate();
        QRandomGenerator random(seed);

        QMap<int, Family> families;
        int kills = 0;
        int acknowledged = 0;
        int next = 0;
        TYPE_ID lastUid = 0;
        Findings findings;
        QElapsedTimer clock;
        clock.start();
        while (kills < Kills && !clock.hasExpired(BudgetMs)) {
            QProcess child;
            child.start(worker, {store.address(), QString::number(next)});
            QVERIFY2(child.waitForStarted(), qPrintable(child.errorString()));
            QByteArray output;
            while (!output.contains("ready\n") && !output.contains("error") && child.waitForReadyRead(10000))
                output += child.readAllStandardOutput();
            QVERIFY2(output.startsWith("ready\n"), output.constData());
            QTest::qSleep(LeastRunMs + int(random.bounded(quint32(MostRunMs - LeastRunMs))));
            child.kill();
            QVERIFY(child.waitForFinished(10000));
            output += child.readAllStandardOutput();
            QVERIFY2(!output.contains("refused"), output.constData());
            ++kills;

            // The operation after the last acknowledged one may have been under way: the next
            // run starts with the family after its own.
            int last = next - 1;
            for (const QByteArray& line : output.split('\n')) {
                const QList<QByteArray> words = line.split(' ');
                if (words.size() != 3 || words.first() != "ack")
                    continue;
                const int seq = words.at(1).toInt();
                const TYPE_ID uid = words.at(2).toUInt();
                QCOMPARE(seq, last + 1);
                last = seq;
                ++acknowledged;
                Family& family = families[faultplan::family(seq)];
                family.acknowledged = faultplan::kind(seq) + 1;
                if (uid != 0) {
                    QVERIFY2(uid > lastUid, qPrintable(QStringLiteral("uid %1 after %2").arg(uid).arg(lastUid)));
                    lastUid = uid;
                    (faultplan::kind(seq) == faultplan::Hire ? family.worker : family.request) = uid;
                }
            }
            const int underWay = last + 1;
            families[faultplan::family(underWay)];  // checked even when nothing of it was acknowledged
            next = faultplan::firstOfFamilyAfter(underWay);

            vdserver::Server server;
            QVERIFY2(server.open(store.location()), qPrintable(server.errorString()));
            Findings round;
            checkWhole(server, round);
            for (auto family = families.cbegin(); family != families.cend(); ++family)
                check(server, family.key(), family.value(), round);
            findings = round;
            QVERIFY2(findings.lost == 0 && findings.halfApplied == 0, qPrintable(findings.details.join("; ")));
        }
        qInfo("%s: kills %d, operations acknowledged %d, lost %d, half applied %d, in %lld ms (seed %u)",
              TestStore::onPostgres() ? "PostgreSQL" : "SQLite", kills, acknowledged, findings.lost,
              findings.halfApplied, clock.elapsed(), seed);
        QVERIFY2(kills >= Kills, qPrintable(QStringLiteral("only %1 kills in the time allowed").arg(kills)));
        QVERIFY(acknowledged > Kills);
    }
};

VD_STORE_TEST_MAIN(TestStoreFaults)
#include "tst_storefaults.moc"
