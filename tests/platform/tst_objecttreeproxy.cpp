#include "objecttreemodel.h"
#include "objecttreeproxy.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QtTest>

using namespace vorandel;

namespace {
// Four columns: uid, state text, start date, name.
class Model : public ObjectTreeModel
{
public:
    Model() { setColumnCount(4); }
    QVariant columnData(const ObjectInfo& info, int column) const override
    {
        switch (column) {
        case 0:
            return info.uid;
        case 1:
            return info.parameters.value(QStringLiteral("PT_STATE"));
        case 2:
            return QDateTime::fromString(info.parameters.value(QStringLiteral("PT_DATE_BEGIN")), Qt::ISODate);
        case 3:
            return info.parameters.value(QStringLiteral("PT_NAME"));
        }
        return {};
    }
};

// State 6 stands for a record without one.
ObjectInfo object(TYPE_ID uid, int state, int day, const QString& name)
{
    ObjectInfo info;
    info.uid = uid;
    info.type = QStringLiteral("OT_PASS_REQUEST");
    if (state < 6)
        info.parameters.insert(QStringLiteral("PT_STATE"), QString::number(state));
    info.parameters.insert(QStringLiteral("PT_DATE_BEGIN"),
                           QDateTime(QDate(2026, 1, 1).addDays(day), QTime(day % 24, 0)).toString(Qt::ISODate));
    info.parameters.insert(QStringLiteral("PT_NAME"), name);
    return info;
}

QList<TYPE_ID> shownUids(const QAbstractItemModel& proxy)
{
    QList<TYPE_ID> uids;
    for (int row = 0; row < proxy.rowCount(); ++row)
        uids.append(proxy.index(row, 0).data(Qt::EditRole).toUInt());
    return uids;
}
}  // namespace

// The proxy replaces a stock sort-filter proxy for speed, so it is held against the obvious
// answer: filter the rows, sort them stably, compare.
class TestObjectTreeProxy : public QObject
{
    Q_OBJECT

    // What the proxy must show: rows passing the uid and state filters, sorted by `column`
    // (ties in source order), as the plain approach would give them.
    static QList<TYPE_ID> expected(const Model& model, const QSet<unsigned int>* uids, const QStringList& states,
                                   int column, Qt::SortOrder order)
    {
        QList<int> rows;
        for (int row = 0; row < model.rowCount(); ++row) {
            const ObjectInfo& info = model.infoAt(row);
            if (uids && !uids->contains(info.uid))
                continue;
            if (!states.isEmpty() && !states.contains(model.index(row, 1).data(Qt::DisplayRole).toString()))
                continue;
            rows.append(row);
        }
        if (column >= 0) {
            std::stable_sort(rows.begin(), rows.end(), [&](int a, int b) {
                const QVariant l = model.index(a, column).data(), r = model.index(b, column).data();
                const bool less = l.userType() == QMetaType::QDateTime ? l.toDateTime() < r.toDateTime()
                                                                      : l.toString().toCaseFolded() < r.toString().toCaseFolded();
                const bool greater = l.userType() == QMetaType::QDateTime ? r.toDateTime() < l.toDateTime()
                                                                         : r.toString().toCaseFolded() < l.toString().toCaseFolded();
                return order == Qt::AscendingOrder ? less : greater;
            });
        }
        QList<TYPE_ID> result;
        for (int row : rows)
            result.append(model.uidAt(row));
        return result;
    }

private slots:
    // The source keeps hand-set cells apart from its rows: they must move with their rows when one
    // goes, and a value set by hand, even an invalid one, hides what the record would give.
    void handSetCellsStayWithTheirRows()
    {
        Model model;
        for (TYPE_ID uid = 1; uid <= 4; ++uid)
            model.add(object(uid, 0, int(uid), QStringLiteral("n%1").arg(uid)));
        model.setData(model.indexForUid(2).sibling(1, 3), QStringLiteral("second"));
        model.setData(model.indexForUid(4).sibling(3, 3), QVariant());
        model.setData(model.indexForUid(4).sibling(3, 1), QStringLiteral("fourth"));
        model.remove(1);
        QCOMPARE(model.indexForUid(2).siblingAtColumn(3).data().toString(), QStringLiteral("second"));
        QCOMPARE(model.indexForUid(3).siblingAtColumn(3).data().toString(), QStringLiteral("n3"));
        QVERIFY(!model.indexForUid(4).siblingAtColumn(3).data().isValid());
        QCOMPARE(model.indexForUid(4).siblingAtColumn(1).data().toString(), QStringLiteral("fourth"));
        QCOMPARE(model.indexForUid(4).siblingAtColumn(1).data(Qt::UserRole).toString(), QStringLiteral("0"));
        model.add(object(5, 0, 5, QStringLiteral("n5")));  // a new row has nothing set by hand
        QCOMPARE(model.indexForUid(5).siblingAtColumn(3).data().toString(), QStringLiteral("n5"));
    }

    // Ending a search hands back the set from before it: rows that changed meanwhile must show as
    // they are now, not as they were when that set was last applied.
    void theSetBeforeASearchSeesChangesMadeMeanwhile()
    {
        Model model;
        QSet<unsigned int> all;
        for (TYPE_ID uid = 1; uid <= 40; ++uid) {
            model.add(object(uid, int(uid % 2), int(uid), QStringLiteral("n")));
            all.insert(uid);
        }
        ObjectTreeProxy proxy;
        proxy.setSourceModel(&model);
        proxy.setColumnFilter(1, {QStringLiteral("1")});
        const QSet<unsigned int> found{1, 2};
        proxy.setFilterUids(all);
        proxy.setFilterUids(found);
        model.add(object(3, 0, 3, QStringLiteral("n")));
        model.add(object(4, 1, 4, QStringLiteral("n")));
        proxy.setFilterUids(all);
        QSet<unsigned int> want{4};
        for (TYPE_ID uid = 5; uid <= 40; uid += 2)
            want.insert(uid);
        want.insert(1);
        const QList<TYPE_ID> shown = shownUids(proxy);
        QCOMPARE(QSet<unsigned int>(shown.cbegin(), shown.cend()), want);

        proxy.setFilterUids(found);
        proxy.setFilterUids(all);  // nothing changed meanwhile this time
        QCOMPARE(shownUids(proxy), shown);
    }

    // Random changes of rows, filters and sorting, each checked against the plain answer, with
    // Qt's own model tester watching every signal. A record without a state reads as an empty
    // one, which a filter may ask for.
    void agreesWithThePlainApproachThroughRandomChanges()
    {
        QRandomGenerator random(20261122);
        Model model;
        ObjectTreeProxy proxy;
        QAbstractItemModelTester tester(&proxy, QAbstractItemModelTester::FailureReportingMode::QtTest);
        proxy.setSourceModel(&model);
        const QStringList names{QStringLiteral("Иванов"), QStringLiteral("иванова"), QStringLiteral("Петров"),
                                QStringLiteral("Сидоров"), QString()};
        for (TYPE_ID uid = 1; uid <= 300; ++uid)
            model.add(object(uid, random.bounded(7), random.bounded(40), names.at(random.bounded(names.size()))));

        QSet<unsigned int> uids, previousUids;
        bool uidFilter = false;
        QStringList states;
        int column = -1;
        Qt::SortOrder order = Qt::AscendingOrder;
        for (int step = 0; step < 400; ++step) {
            switch (random.bounded(7)) {
            case 0: {  // a new uid set, small or large; or the one before again, as when a search ends
                const QSet<unsigned int> before = uids;
                if (uidFilter && random.bounded(3) == 0) {
                    uids = previousUids;
                } else {
                    uids.clear();
                    const int size = random.bounded(2) ? random.bounded(10) : 150 + random.bounded(150);
                    for (int i = 0; i < size; ++i)
                        uids.insert(1 + random.bounded(320));
                }
                previousUids = before;
                uidFilter = true;
                proxy.setFilterUids(uids);
                break;
            }
            case 1:
                states.clear();
                for (int s = 0; s < 7; ++s) {
                    if (random.bounded(3) == 0)
                        states << (s < 6 ? QString::number(s) : QString());
                }
                proxy.setColumnFilter(1, states);
                break;
            case 2:
                column = random.bounded(3) == 0 ? 3 : 2;
                order = random.bounded(2) ? Qt::AscendingOrder : Qt::DescendingOrder;
                proxy.sort(column, order);
                break;
            case 3:  // a new row
                model.add(object(TYPE_ID(model.rowCount() + 1), random.bounded(7), random.bounded(40),
                                 names.at(random.bounded(names.size()))));
                break;
            default: {  // a changed row: its state, date or name
                const TYPE_ID uid = 1 + random.bounded(model.rowCount());
                model.add(object(uid, random.bounded(7), random.bounded(40), names.at(random.bounded(names.size()))));
                break;
            }
            }
            const QList<TYPE_ID> want = expected(model, uidFilter ? &uids : nullptr, states, column, order);
            const QList<TYPE_ID> have = shownUids(proxy);
            if (want != have)
                QFAIL(qPrintable(QStringLiteral("step %1: %2 rows shown, %3 expected").arg(step).arg(have.size()).arg(want.size())));
        }
    }

    void selectionFollowsItsRowThroughSortsMovesAndLargeFilters()
    {
        Model model;
        for (TYPE_ID uid = 1; uid <= 200; ++uid)
            model.add(object(uid, 0, int(uid), QStringLiteral("n")));
        ObjectTreeProxy proxy;
        proxy.setSourceModel(&model);
        proxy.sort(2, Qt::DescendingOrder);
        QItemSelectionModel selection(&proxy);
        const auto select = [&](TYPE_ID uid) {
            const QModelIndex row = proxy.mapFromSource(model.indexForUid(uid));
            selection.select(row, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        };
        const auto selectedUid = [&]() {
            const QModelIndexList rows = selection.selectedRows(0);
            return rows.size() == 1 ? rows.first().data(Qt::EditRole).toUInt() : 0u;
        };
        select(50);
        proxy.sort(2, Qt::AscendingOrder);
        QCOMPARE(selectedUid(), 50u);
        model.add(object(50, 0, 500, QStringLiteral("n")));  // its date moves it to the end
        QCOMPARE(proxy.index(proxy.rowCount() - 1, 0).data(Qt::EditRole).toUInt(), 50u);
        QCOMPARE(selectedUid(), 50u);
        QSet<unsigned int> most;
        for (unsigned int uid = 1; uid <= 150; ++uid)
            most.insert(uid);
        proxy.setFilterUids(most);  // a large change goes as one layout change
        QCOMPARE(selectedUid(), 50u);
        proxy.setFilterUids({1, 2});
        QCOMPARE(selection.selectedRows().size(), 0);
    }

};

QTEST_MAIN(TestObjectTreeProxy)
#include "tst_objecttreeproxy.moc"
