#include "constants.h"
#include "grantedproxymodel.h"
#include "objecttreemodel.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QTreeView>
#include <QtTest>

using namespace vorandel;

namespace {
ObjectInfo unit(TYPE_ID uid, TYPE_ID parent, const QString& type = db::orgstructure::DEPARTMENT,
                const QString& name = QString())
{
    ObjectInfo info;
    info.uid = uid;
    info.parent = parent;
    info.type = type;
    info.parameters.insert(QStringLiteral("PT_NAME"), name.isEmpty() ? QStringLiteral("u%1").arg(uid) : name);
    return info;
}

// The tree as text, "1(2(4),3),5": uids in row order, children in brackets.
QString describe(const QAbstractItemModel& model, const std::function<unsigned int(const QModelIndex&)>& uidOf,
                 const QModelIndex& parent = {})
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        const QString below = describe(model, uidOf, index);
        rows << QString::number(uidOf(index)) + (below.isEmpty() ? QString() : QLatin1Char('(') + below + QLatin1Char(')'));
    }
    return rows.join(QLatin1Char(','));
}

QString describe(const ObjectTreeModel& model)
{
    return describe(model, [&](const QModelIndex& index) { return model.info(index).uid; });
}

QString describe(const ObjectTreeProxy& proxy)
{
    const auto* source = static_cast<const ObjectTreeModel*>(proxy.sourceModel());
    return describe(proxy, [&](const QModelIndex& index) { return source->info(proxy.mapToSource(index)).uid; });
}
}  // namespace

class TestObjectTree : public QObject
{
    Q_OBJECT

private slots:
    // Whatever the order in which objects arrive, each ends under its parent; one whose parent is
    // missing, or who would close a cycle, waits at the top.
    void objectsFindTheirParents_data()
    {
        QTest::addColumn<QList<ObjectInfo>>("objects");
        QTest::addColumn<QString>("tree");
        QTest::newRow("parents first") << QList<ObjectInfo>{unit(1, 0), unit(2, 1), unit(3, 1), unit(4, 2)}
                                       << "1(2(4),3)";
        QTest::newRow("children first") << QList<ObjectInfo>{unit(4, 2), unit(3, 1), unit(2, 1), unit(1, 0)}
                                        << "1(3,2(4))";
        QTest::newRow("parent never comes") << QList<ObjectInfo>{unit(1, 0), unit(2, 9), unit(3, 2)} << "1,2(3)";
        QTest::newRow("own parent") << QList<ObjectInfo>{unit(1, 1), unit(2, 1)} << "1(2)";
        QTest::newRow("cycle") << QList<ObjectInfo>{unit(1, 2), unit(2, 1), unit(3, 2)} << "1(2(3))";
    }
    void objectsFindTheirParents()
    {
        QFETCH(QList<ObjectInfo>, objects);
        QFETCH(QString, tree);
        ObjectTreeModel model(ObjectTreeModel::Tree);
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        for (const ObjectInfo& info : objects)
            model.add(info);
        QCOMPARE(describe(model), tree);
        QCOMPARE(model.uniqueKeys().size(), objects.size());
        for (const ObjectInfo& info : objects) {
            const QModelIndex index = model.indexForUid(info.uid);
            QCOMPARE(model.info(index).uid, info.uid);
            QCOMPARE(model.data(index).toString(), info.parameters.value(QStringLiteral("PT_NAME")));
        }
    }

    // Changes move rows rather than remove them, so selections and hand-set cells go along.
    void rowsMoveWithTheirParents()
    {
        ObjectTreeModel model(ObjectTreeModel::Tree);
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        for (const ObjectInfo& info : {unit(1, 0), unit(2, 1), unit(3, 1), unit(4, 2), unit(5, 4)})
            model.add(info);
        QPersistentModelIndex four = model.indexForUid(4);
        model.setData(four, QStringLiteral("set by hand"));
        model.add(unit(4, 3, db::orgstructure::DEPARTMENT, QStringLiteral("renamed")));
        QCOMPARE(describe(model), QStringLiteral("1(2,3(4(5)))"));
        QCOMPARE(QModelIndex(four), model.indexForUid(4));
        QCOMPARE(four.data().toString(), QStringLiteral("set by hand"));
        QCOMPARE(four.data(Qt::UserRole).toString(), QStringLiteral("renamed"));

        model.add(unit(3, 5));  // under its own descendant: refused, it goes to the top
        QCOMPARE(describe(model), QStringLiteral("1(2),3(4(5))"));
        model.add(unit(3, 2));
        QCOMPARE(describe(model), QStringLiteral("1(2(3(4(5))))"));
        model.remove(3);  // its child waits at the top
        QCOMPARE(describe(model), QStringLiteral("1(2),4(5)"));
        QCOMPARE(QModelIndex(four), model.indexForUid(4));
        model.add(unit(3, 2));  // and comes back under it
        QCOMPARE(describe(model), QStringLiteral("1(2(3(4(5))))"));
    }

    // Random changes of the objects (new, renamed, re-parented, hidden, removed) and of the filters
    // and the sorting, with a proxy, a view and Qt's model testers attached, each step held against
    // the tree worked out plainly from the source.
    void agreesWithThePlainTreeThroughRandomChanges()
    {
        QRandomGenerator random(20261123);
        ObjectTreeModel model(ObjectTreeModel::Tree);
        GrantedProxyModel proxy;
        QAbstractItemModelTester sourceTester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QAbstractItemModelTester proxyTester(&proxy, QAbstractItemModelTester::FailureReportingMode::QtTest);
        proxy.setSourceModel(&model);
        QTreeView view;
        view.setModel(&proxy);
        view.expandAll();
        view.show();
        QItemSelectionModel* selection = view.selectionModel();

        const QStringList types{db::orgstructure::FIRM, db::orgstructure::DEPARTMENT, db::orgstructure::WORKER};
        const QStringList names{QStringLiteral("Бета"), QStringLiteral("альфа"), QStringLiteral("Гамма"),
                                QStringLiteral("Альфа")};
        const auto randomUnit = [&](TYPE_ID uid) {
            const TYPE_ID parent = random.bounded(5) == 0 ? 0 : TYPE_ID(random.bounded(40));
            ObjectInfo info = unit(uid, parent, types.at(random.bounded(types.size())), names.at(random.bounded(names.size())));
            if (random.bounded(4) == 0)
                info.parameters.insert(QStringLiteral("PT_HIDDEN"), QStringLiteral("true"));
            return info;
        };
        for (TYPE_ID uid = 1; uid <= 30; ++uid)
            model.add(randomUnit(uid));

        QSet<unsigned int> uids;
        bool uidFilter = false;
        QStringList typeFilter;
        bool acceptParents = false;
        bool hideHidden = false;
        int column = -1;
        Qt::SortOrder order = Qt::AscendingOrder;
        // The plain answer: each node's children in the source, filtered and stably sorted. Every
        // filter applies to every node; a node is shown under a shown parent, or, with parents
        // accepted, when something below it passes.
        std::function<QString(const QModelIndex&)> expected = [&](const QModelIndex& parent) -> QString {
            struct Entry
            {
                int row;
                QString text;
                QString name;
            };
            QVector<Entry> shown;
            for (int row = 0; row < model.rowCount(parent); ++row) {
                const QModelIndex index = model.index(row, 0, parent);
                const ObjectInfo& info = model.info(index);
                const QString below = expected(index);
                const bool passes = (!uidFilter || uids.contains(info.uid))
                    && (typeFilter.isEmpty() || typeFilter.contains(info.type))
                    && !(hideHidden && info.parameters.value(QStringLiteral("PT_HIDDEN")) == QLatin1String("true"));
                if (passes || (acceptParents && !below.isEmpty()))
                    shown.append({row, QString::number(info.uid) + (below.isEmpty() ? QString() : '(' + below + ')'),
                                  index.data().toString().toCaseFolded()});
            }
            if (column == 0) {
                std::stable_sort(shown.begin(), shown.end(), [&](const Entry& a, const Entry& b) {
                    return order == Qt::AscendingOrder ? a.name < b.name : b.name < a.name;
                });
            }
            QStringList parts;
            for (const Entry& entry : shown)
                parts << entry.text;
            return parts.join(',');
        };

        TYPE_ID next = 31;
        for (int step = 0; step < 300; ++step) {
            switch (random.bounded(10)) {
            case 0:  // a few uids, or all there are and will be
                uids.clear();
                for (TYPE_ID uid = 1, all = random.bounded(3) == 0; uid <= next + 50; ++uid) {
                    if (all || random.bounded(3) == 0)
                        uids.insert(uid);
                }
                uidFilter = true;
                proxy.setFilterUids(uids);
                break;
            case 1:
                typeFilter = random.bounded(2) ? QStringList() : QStringList{types.at(random.bounded(types.size()))};
                proxy.setObjectTypeFilter(typeFilter);
                break;
            case 2:
                acceptParents = !acceptParents;
                proxy.setFilterAcceptsParents(acceptParents);
                break;
            case 3:
                column = 0;
                order = random.bounded(2) ? Qt::AscendingOrder : Qt::DescendingOrder;
                proxy.sort(column, order);
                break;
            case 4:
                if (!hideHidden) {
                    hideHidden = true;
                    proxy.addParameterFilter(QStringLiteral("PT_HIDDEN"), {QStringLiteral("true")},
                                             ObjectTreeProxy::DropMatching);
                } else {
                    hideHidden = false;
                    proxy.clearParameterFilters();
                }
                break;
            case 5:
            case 6:
                model.add(randomUnit(next++));
                break;
            case 7:
                model.remove(1 + random.bounded(next));
                break;
            default:
                model.add(randomUnit(1 + random.bounded(next)));
                break;
            }
            if (random.bounded(4) == 0 && proxy.rowCount() > 0)
                selection->select(proxy.index(random.bounded(proxy.rowCount()), 0), QItemSelectionModel::ClearAndSelect);
            view.expandAll();
            const QString want = expected({});
            const QString have = describe(proxy);
            if (want != have)
                QFAIL(qPrintable(QStringLiteral("step %1:\n have %2\n want %3").arg(step).arg(have, want)));
            for (const QModelIndex& index : selection->selectedIndexes())
                QVERIFY(index.isValid() && index.model() == &proxy);
        }
    }
};

QTEST_MAIN(TestObjectTree)
#include "tst_objecttree.moc"
