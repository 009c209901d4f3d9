#include "serverfixture.h"

#include "constants.h"
#include "dbquery.h"
#include "faketransport.h"
#include "localstorage.h"
#include "servicerecords.h"
#include "vdguiglobals.h"

#include <QtTest>

using namespace vorandel;

namespace {
const QString FingersStatement = QStringLiteral(
    "SELECT user_object_id, count( id ), (SELECT child_id FROM object_inherit WHERE ref_type = 3 AND "
    "parent_id = user_object_id)  FROM fingers WHERE user_object_id = ANY( ARRAY[%1]::bigint[] ) "
    "GROUP BY user_object_id;");

ObjectInfo card(CARD_ID number)
{
    ObjectInfo info;
    info.type = db::misc::CARD;
    info.parameters.insert(db::card::NUMBER, QString::number(number));
    return info;
}

QList<CARD_ID> cardNumbers(const ServerFixture& f, TYPE_ID worker)
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

QList<unsigned int> allWorkers(const ServerFixture& f)
{
    QList<unsigned int> uids;
    for (const ObjectInfo& worker : f.objects(SUBJECT_DATANAME))
        uids.append(worker.uid);
    return uids;
}

QMultiMap<unsigned int, TEMPLATE_DATA> fingers(ServerFixture& f, const QList<unsigned int>& workers)
{
    const Command answer = f.data(QStringLiteral("getUserFingers"), workers);
    QMap<unsigned int, TEMPLATE_DATA> map;
    readPayload(answer, map);
    return QMultiMap<unsigned int, TEMPLATE_DATA>(map);
}

struct AsyncResult
{
    QString queryId;
    int status = 0;
    QString error;
    QList<DbResult> results;
};

AsyncResult countFingers(ServerFixture& f, const QString& statement)
{
    DbQuery query;
    query.queries = QStringList{statement};
    const QString identity = QStringLiteral("requestview probe");
    f.pushed.clear();
    const Command delivery = f.call(QStringLiteral("db.async"), identity, QStringLiteral("get_fingers_1"), query);
    if (delivery.status != Command::StatusOk || !QTest::qWaitFor([&] { return !f.pushed.isEmpty(); }))
        return {};
    const Command result = f.pushed.first();
    AsyncResult read;
    VDDataStream in(result.data);
    in >> read.queryId >> read.status >> read.error;
    if (read.status == Command::StatusOk)
        in >> read.results;
    return result.name == QStringLiteral("db.async_result:") + identity && result.type == 1 ? read : AsyncResult();
}

QHash<TYPE_ID, QHash<QString, QByteArray>> changedBlobs(ServerFixture& f, const QList<BLOB_DATA_RESQUEST>& requests)
{
    QHash<TYPE_ID, QHash<QString, QByteArray>> blobs;
    readPayload(f.data(QStringLiteral("getBlobDataChange"), requests), blobs);
    return blobs;
}

BLOB_DATA_RESQUEST photoRequest(TYPE_ID worker, const QByteArray& md5 = {})
{
    BLOB_DATA_RESQUEST request;
    request.uid = worker;
    request.name = QStringLiteral("PT_PHOTO");
    request.md5 = md5;
    return request;
}
}  // namespace

class TestServerWorkers : public QObject
{
    Q_OBJECT

private slots:
    void cardsAreIssuedWholeOrNotAtAll()
    {
        ServerFixture f;
        const TYPE_ID first = f.workerWithoutCards().uid;
        const auto issue = [&](TYPE_ID worker, const QList<ObjectInfo>& add, const QList<ObjectInfo>& remove) {
            return f.data(QStringLiteral("updateWorkerCards"), worker, add, remove, true);
        };

        const Command issued = issue(first, {card(7001), card(7002)}, {});
        QCOMPARE(issued.status, int(Command::StatusOk));
        QCOMPARE(cardNumbers(f, first), (QList<CARD_ID>{7001, 7002}));

        const TYPE_ID second = f.workerWithoutCards().uid;
        QVERIFY(second != first);
        const auto before = f.snapshot();
        const Command taken = issue(second, {card(7003), card(7001)}, {});
        QCOMPARE(taken.status, int(Command::StatusFailed));
        QCOMPARE(ServerFixture::failureText(taken), QStringLiteral("Карта 7001 уже выдана"));
        QVERIFY(f.snapshot() == before);
        QCOMPARE(issue(second, {card(7004), card(7004)}, {}).status, int(Command::StatusFailed));
        QCOMPARE(issue(second, {}, {card(7002)}).status, int(Command::StatusFailed));
        QVERIFY(f.snapshot() == before);

        // A card handed back can be handed out again in the same call.
        QCOMPARE(issue(first, {card(7002)}, {card(7002)}).status, int(Command::StatusOk));
        QCOMPARE(issue(first, {}, {card(7001)}).status, int(Command::StatusOk));
        QCOMPARE(cardNumbers(f, first), QList<CARD_ID>{7002});
        QCOMPARE(issue(second, {card(7001)}, {}).status, int(Command::StatusOk));
        QCOMPARE(cardNumbers(f, second), QList<CARD_ID>{7001});
        QCOMPARE(f.server.objects(CARD_DATANAME)->size(), before.value(CARD_DATANAME).size());

        // A card removed as an object leaves its worker too.
        const INHERIT_DATA link = f.object(SUBJECT_DATANAME, second).inherits.value(INHERIT_CARD);
        QCOMPARE(f.data(QStringLiteral("removeObject"), f.object(CARD_DATANAME, link.second)).status,
                 int(Command::StatusOk));
        QVERIFY(!f.object(SUBJECT_DATANAME, second).inherits.contains(INHERIT_CARD));
    }

    void dismissal()
    {
        ServerFixture f;
        const TYPE_ID worker = f.workerWithoutCards().uid;
        QCOMPARE(f.data(QStringLiteral("dismissWorker"), worker, QDate()).status, int(Command::StatusFailed));
        QVERIFY(!isDismissed(f.object(SUBJECT_DATANAME, worker)));
        QCOMPARE(f.data(QStringLiteral("dismissWorker"), worker, QDate(2026, 12, 1)).status, int(Command::StatusOk));
        const ObjectInfo dismissed = f.object(SUBJECT_DATANAME, worker);
        QVERIFY(isDismissed(dismissed));
        QCOMPARE(dismissed.parameters.value(QStringLiteral("PT_DISMISS_DATE")), QStringLiteral("2026-12-01"));
    }

    void fingersComeSeveralToAWorker()
    {
        ServerFixture f;
        const QMultiMap<unsigned int, TEMPLATE_DATA> all = fingers(f, allWorkers(f));
        QVERIFY(!all.isEmpty());
        const unsigned int worker = all.firstKey();
        QVERIFY(all.count(worker) >= 2);

        const QMultiMap<unsigned int, TEMPLATE_DATA> own = fingers(f, {worker, worker, 999999});
        QCOMPARE(own.uniqueKeys(), QList<unsigned int>{worker});
        QCOMPARE(own.values(worker), all.values(worker));
        for (const TEMPLATE_DATA& data : own) {
            const bool finger = data.index >= 0 && data.index <= 9;
            const bool palm = (data.index == 100 || data.index == 101) && (data.kind == 2 || data.kind == 3);
            QVERIFY(finger || palm || data.index == 200);
            QVERIFY(!data.data.isEmpty());
        }
    }

    // The database's count agrees with the templates; a second card fails the statement.
    void fingersQuery()
    {
        ServerFixture f;
        // Workers of the seed with two cards would fail the statement from the start.
        QList<unsigned int> workers;
        QStringList uids;
        for (unsigned int worker : allWorkers(f)) {
            if (f.object(SUBJECT_DATANAME, worker).inherits.count(INHERIT_CARD) < 2) {
                workers << worker;
                uids << QString::number(worker);
            }
        }
        const QMultiMap<unsigned int, TEMPLATE_DATA> templates = fingers(f, workers);

        const AsyncResult counted = countFingers(f, FingersStatement.arg(uids.join(QLatin1Char(','))));
        QCOMPARE(counted.status, int(Command::StatusOk));
        QCOMPARE(counted.queryId, QStringLiteral("get_fingers_1"));
        QCOMPARE(counted.results.size(), 1);
        const DbResult rows = counted.results.first();
        QCOMPARE(rows.columnCount, 3);
        QCOMPARE(rows.rowCount, templates.uniqueKeys().size());
        for (int row = 0; row < rows.rowCount; ++row) {
            const TYPE_ID worker = rows.cell(row, 0).toUInt();
            QCOMPARE(rows.cell(row, 1).toInt(), templates.count(worker));
            const QList<INHERIT_DATA> cards = f.object(SUBJECT_DATANAME, worker).inherits.values(INHERIT_CARD);
            QCOMPARE(rows.cell(row, 2).toUInt(), cards.isEmpty() ? 0u : cards.first().second);
        }

        const AsyncResult none = countFingers(f, FingersStatement.arg(QString()));
        QCOMPARE(none.status, int(Command::StatusOk));
        QCOMPARE(none.results.first().rowCount, 0);

        unsigned int twoCards = 0;
        for (unsigned int worker : templates.uniqueKeys()) {
            if (!f.object(SUBJECT_DATANAME, worker).inherits.contains(INHERIT_CARD))
                twoCards = worker;
        }
        QVERIFY(twoCards != 0);
        QCOMPARE(f.data(QStringLiteral("updateWorkerCards"), twoCards, QList<ObjectInfo>{card(8001), card(8002)},
                        QList<ObjectInfo>(), true)
                     .status,
                 int(Command::StatusOk));
        const AsyncResult failed = countFingers(f, FingersStatement.arg(uids.join(QLatin1Char(','))));
        QCOMPARE(failed.status, int(Command::StatusFailed));
        QVERIFY(failed.error.contains(QStringLiteral("more than one row")));
        QVERIFY(failed.results.isEmpty());

        const AsyncResult other = countFingers(f, QStringLiteral("DELETE FROM fingers;"));
        QCOMPARE(other.status, int(Command::StatusFailed));
        QCOMPARE(other.error, QStringLiteral("unsupported statement"));
    }

    void blobsComeOnlyWhenTheyDiffer()
    {
        ServerFixture f;
        QList<BLOB_DATA_RESQUEST> unknown;
        for (unsigned int worker : allWorkers(f))
            unknown << photoRequest(worker);
        const auto photos = changedBlobs(f, unknown);
        QVERIFY(!photos.isEmpty());
        QVERIFY(photos.size() < unknown.size());  // some have none

        QList<BLOB_DATA_RESQUEST> known;
        for (auto it = photos.cbegin(); it != photos.cend(); ++it) {
            const QByteArray photo = it.value().value(QStringLiteral("PT_PHOTO"));
            QCOMPARE(VDGuiGlobals::imageFromDB(photo).size(), QSize(240, 300));
            known << photoRequest(it.key(), LocalStorage::md5Of(photo));
        }
        QVERIFY(changedBlobs(f, known).isEmpty());

        const TYPE_ID withPhoto = photos.cbegin().key();
        const auto stale = changedBlobs(f, {photoRequest(withPhoto, "0123")});
        QCOMPARE(stale.value(withPhoto), photos.value(withPhoto));

        // Without a photo on the server, a copy at hand is to be dropped.
        TYPE_ID withoutPhoto = 0;
        for (const BLOB_DATA_RESQUEST& request : qAsConst(unknown)) {
            if (!photos.contains(request.uid))
                withoutPhoto = request.uid;
        }
        const auto dropped = changedBlobs(f, {photoRequest(withoutPhoto, "0123")});
        QVERIFY(dropped.value(withoutPhoto).contains(QStringLiteral("PT_PHOTO")));
        QVERIFY(dropped.value(withoutPhoto).value(QStringLiteral("PT_PHOTO")).isEmpty());

        ServerFixture again;
        QCOMPARE(changedBlobs(again, {photoRequest(withPhoto)}), (QHash<TYPE_ID, QHash<QString, QByteArray>>{
                                                                     {withPhoto, photos.value(withPhoto)}}));
    }

    void aWorkersPhotoIsKeptAsABlob()
    {
        ServerFixture f;
        QImage picture(60, 80, QImage::Format_RGB32);
        picture.fill(Qt::darkCyan);
        const QByteArray photo = VDGuiGlobals::imageToDB(picture);
        ObjectInfo worker;
        worker.type = db::orgstructure::WORKER;
        worker.parameters = {{QStringLiteral("PT_SURNAME"), QStringLiteral("Орлова")},
                             {QStringLiteral("PT_PHOTO"), QString::fromLatin1(photo)}};
        const Command added = f.data(QStringLiteral("addObject"), worker);
        QCOMPARE(added.status, int(Command::StatusOk));
        const TYPE_ID uid = TYPE_ID(ServerFixture::uidOf(added));
        QVERIFY(!f.object(SUBJECT_DATANAME, uid).parameters.contains(QStringLiteral("PT_PHOTO")));
        QCOMPARE(changedBlobs(f, {photoRequest(uid)}).value(uid).value(QStringLiteral("PT_PHOTO")), photo);

        ObjectInfo update;
        update.uid = uid;
        update.parameters.insert(QStringLiteral("PT_PHOTO"), QString());
        QCOMPARE(f.data(QStringLiteral("updateObject"), update).status, int(Command::StatusOk));
        QVERIFY(changedBlobs(f, {photoRequest(uid)}).isEmpty());
    }
};

QTEST_MAIN(TestServerWorkers)
#include "tst_serverworkers.moc"
