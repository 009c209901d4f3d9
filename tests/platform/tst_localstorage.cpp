#include "constants.h"
#include "localstorage.h"
#include "objecttreemodel.h"

#include <QSignalSpy>
#include <QtTest>

using namespace vorandel;

namespace {
ObjectInfo worker(TYPE_ID uid, const QString& surname, const QString& number)
{
    ObjectInfo info;
    info.uid = uid;
    info.type = QStringLiteral("OT_WORKER");
    info.parameters.insert(QStringLiteral("PT_SURNAME"), surname);
    info.parameters.insert(QStringLiteral("PT_WORKERNUM"), number);
    return info;
}
}  // namespace

class TestLocalStorage : public QObject
{
    Q_OBJECT

    LocalStorage* store = LocalStorage::instance();

private slots:
    void init() { store->clear(); }

    // A table exists once set. Readers keep the pointer they get: changes, removals and even a
    // cleared store must leave it valid.
    void changesAreSignalledOnceAndPointersStay()
    {
        QVERIFY(!store->constObjects(SUBJECT_DATANAME));
        QVERIFY(!store->constObject(5, SUBJECT_DATANAME).isValid());
        QSignalSpy changed(store, &LocalStorage::dataChanged);
        QSignalSpy removed(store, &LocalStorage::dataRemoved);
        store->setObjects(SUBJECT_DATANAME, {worker(1, QStringLiteral("Иванов"), QStringLiteral("A1")),
                                             worker(2, QStringLiteral("Петров"), QStringLiteral("A2"))});
        const OBJECT_HASH* workers = store->constObjects(SUBJECT_DATANAME);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().at(1).value<QList<TYPE_ID>>(), (QList<TYPE_ID>{1, 2}));
        store->setObjects(SUBJECT_DATANAME, {worker(1, QStringLiteral("Иванова"), QStringLiteral("A1"))});
        QCOMPARE(workers->value(1).parameters.value(QStringLiteral("PT_SURNAME")), QStringLiteral("Иванова"));
        QCOMPARE(store->object(2).uid, 2u);
        store->removeObjects(SUBJECT_DATANAME, {2});
        QCOMPARE(removed.count(), 1);
        QVERIFY(!workers->contains(2));
        store->clear();
        QCOMPARE(workers->size(), 0);  // forgotten, yet still a valid pointer
        QVERIFY(!store->constObjects(SUBJECT_DATANAME));
        QCOMPARE(changed.count(), 2);
    }

    void modelsAndIndicesFollowTheTable()
    {
        store->setObjects(SUBJECT_DATANAME, {worker(1, QStringLiteral("Иванов"), QStringLiteral("A-17"))});
        ObjectTreeModel* model = store->model(SUBJECT_DATANAME);
        TrieStatic<unsigned int>* surnames = store->index(SUBJECT_SURNAME_INDEX);
        TrieStatic<unsigned int>* numbers = store->index(SUBJECT_WORKERNUM_INDEX);
        QVERIFY(!store->index(QStringLiteral("nonsense")));
        QCOMPARE(model->rowCount(), 1);
        store->setObjects(SUBJECT_DATANAME, {worker(2, QStringLiteral("Петров"), QStringLiteral("B-3"))});
        QCOMPARE(model->rowCount(), 2);
        QSet<unsigned int> found;
        surnames->contains(QStringLiteral("пет"), found);
        QCOMPARE(found, QSet<unsigned int>{2});
        found.clear();
        numbers->contains(QStringLiteral("a-1"), found);
        QCOMPARE(found, QSet<unsigned int>{1});
        store->removeObjects(SUBJECT_DATANAME, {2});
        QCOMPARE(model->rowCount(), 1);
        found.clear();
        surnames->contains(QStringLiteral("пет"), found);
        QVERIFY(found.isEmpty());
    }

};

QTEST_MAIN(TestLocalStorage)
#include "tst_localstorage.moc"
