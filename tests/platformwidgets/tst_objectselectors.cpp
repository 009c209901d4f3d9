#include "constants.h"
#include "grantedproxymodel.h"
#include "localstorage.h"
#include "objecttreemodel.h"
#include "orgstructureselectiondialog.h"
#include "vdobjectselector.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QToolButton>
#include <QTreeView>
#include <QtTest>

using namespace vorandel;

namespace {
enum : TYPE_ID { Root = 1, North = 2, South = 3, Sales = 4, Retail = 5, Depot = 6, Worker = 7 };

ObjectInfo unit(TYPE_ID uid, TYPE_ID parent, const QString& type, const QString& name)
{
    ObjectInfo info;
    info.uid = uid;
    info.parent = parent;
    info.type = type;
    info.parameters.insert(QStringLiteral("PT_NAME"), name);
    return info;
}

// Root > North firm > Sales > Retail, Root > South firm > Depot; and a worker, which no department
// selector offers.
void publishOrganisation()
{
    using namespace db::orgstructure;
    LocalStorage::instance()->setObjects(
        ORGSTRUCTURE_DATANAME,
        {unit(Retail, Sales, DEPARTMENT, QStringLiteral("Розница")), unit(Root, 0, SUBJECT_ROOT, QStringLiteral("Горизонт")),
         unit(North, Root, FIRM, QStringLiteral("Север")), unit(South, Root, FIRM, QStringLiteral("Юг")),
         unit(Sales, North, DEPARTMENT, QStringLiteral("Продажи")), unit(Depot, South, DEPARTMENT, QStringLiteral("Склад")),
         unit(Worker, Sales, WORKER, QStringLiteral("Иванов"))});
}

// A department selector made the way the wizard pages make theirs.
struct DepartmentSelector
{
    explicit DepartmentSelector(bool acceptParents = false)
    {
        auto* proxy = new GrantedProxyModel(&selector);
        selector.setProxyModel(proxy);
        proxy->setObjectTypeFilter({db::orgstructure::SUBJECT_ROOT, db::orgstructure::FIRM, db::orgstructure::DEPARTMENT});
        proxy->setFilterAcceptsParents(acceptParents);
        selector.setDataname(ORGSTRUCTURE_DATANAME);
        selector.setDefaultRootIndex(proxy->index(0, 0));
        selector.setCurrentUid(0);
        selector.resize(260, selector.sizeHint().height());
    }
    QString shownName() const { return selector.currentModelIndex().data().toString(); }

    VDObjectSelector selector;
};

QList<TYPE_ID> announced(const QSignalSpy& spy)
{
    QList<TYPE_ID> uids;
    for (const QList<QVariant>& call : spy)
        uids << call.at(0).toUInt();
    return uids;
}
}  // namespace

class TestObjectSelectors : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        LocalStorage::instance()->clear();
        publishOrganisation();
    }

    // Any node can be chosen by uid, whatever its depth; the signal comes once per real change.
    void choosesAnyNodeByUid()
    {
        DepartmentSelector department;
        VDObjectSelector& selector = department.selector;
        QSignalSpy changed(&selector, &VDObjectSelector::currentDataChanged);
        for (const TYPE_ID uid : QList<TYPE_ID>{Retail, Retail, Root, North, Worker, 99, 0, Depot}) {
            selector.setCurrentUid(uid);
            const TYPE_ID chosen = uid == Worker || uid == 99 ? 0 : uid;
            QCOMPARE(selector.currentUid(), chosen);
            QCOMPARE(department.shownName(),
                     LocalStorage::instance()->constObject(chosen, ORGSTRUCTURE_DATANAME).parameters.value(QStringLiteral("PT_NAME")));
        }
        QCOMPARE(announced(changed), (QList<TYPE_ID>{Retail, Root, North, 0, Depot}));
        QCOMPARE(selector.currentIndex(), -1);  // QComboBox's own row plays no part
    }

    // The pop-up shows the tree below the default root; a click on a node chooses it, a click on
    // a branch sign only opens or closes the branch, and Return chooses the node under the cursor.
    void operatorChoosesInThePopup()
    {
        DepartmentSelector department;
        VDObjectSelector& selector = department.selector;
        selector.show();
        QVERIFY(QTest::qWaitForWindowExposed(&selector));
        QSignalSpy changed(&selector, &VDObjectSelector::currentDataChanged);
        QTreeView* tree = selector.findChild<QTreeView*>(QStringLiteral("treeView"));
        QVERIFY(tree);

        selector.showPopup();
        QTRY_VERIFY(tree->isVisible());
        QCOMPARE(tree->rootIndex(), selector.defaultRootIndex());
        QCOMPARE(tree->model()->rowCount(tree->rootIndex()), 2);  // the two firms
        const QModelIndex retail = selector.indexOfUid(Retail);
        QVERIFY(tree->isExpanded(retail.parent()));
        const QRect node = tree->visualRect(retail);
        QTest::mousePress(tree->viewport(), Qt::LeftButton, {}, node.center());
        QTest::mouseRelease(tree->viewport(), Qt::LeftButton, {}, node.center());
        QTRY_VERIFY(!tree->isVisible());
        QCOMPARE(selector.currentUid(), TYPE_ID(Retail));
        QCOMPARE(department.shownName(), QStringLiteral("Розница"));

        selector.showPopup();
        QTRY_VERIFY(tree->isVisible());
        const QModelIndex north = selector.indexOfUid(North);
        const QPoint branchSign(tree->visualRect(north).left() - tree->indentation() / 2, tree->visualRect(north).center().y());
        QTest::mousePress(tree->viewport(), Qt::LeftButton, {}, branchSign);
        QTest::mouseRelease(tree->viewport(), Qt::LeftButton, {}, branchSign);
        QVERIFY(tree->isVisible());
        QVERIFY(!tree->isExpanded(north));
        QCOMPARE(tree->currentIndex(), retail);
        QTest::keyClick(tree, Qt::Key_Up);  // Retail's branch is closed now: up lands on North
        QTest::keyClick(tree, Qt::Key_Return);
        QTRY_VERIFY(!tree->isVisible());
        QCOMPARE(selector.currentUid(), TYPE_ID(North));

        // A wheel turned to scroll the form must not change the choice on its way past.
        QWheelEvent wheel(QPointF(5, 5), selector.mapToGlobal(QPoint(5, 5)), {}, QPoint(0, -120), Qt::NoButton, {},
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(&selector, &wheel);
        QCOMPARE(announced(changed), (QList<TYPE_ID>{Retail, North}));
    }

    // The choice follows the store: renamed and moved it stays, without a signal; removed, or no
    // longer offered, it becomes none, with one signal once the change is over.
    void followsTheStore_data()
    {
        QTest::addColumn<int>("change");
        QTest::addColumn<TYPE_ID>("after");
        QTest::addColumn<QString>("name");
        QTest::newRow("renamed") << 0 << TYPE_ID(Retail) << "Опт";
        QTest::newRow("moved to another firm") << 1 << TYPE_ID(Retail) << "Розница";
        QTest::newRow("parent removed") << 2 << TYPE_ID(Retail) << "Розница";
        QTest::newRow("removed") << 3 << TYPE_ID(0) << "";
        QTest::newRow("became a worker") << 4 << TYPE_ID(0) << "";
        QTest::newRow("store refilled") << 5 << TYPE_ID(Retail) << "Розница";
    }
    void followsTheStore()
    {
        QFETCH(int, change);
        QFETCH(TYPE_ID, after);
        QFETCH(QString, name);
        using namespace db::orgstructure;
        DepartmentSelector department(true);
        VDObjectSelector& selector = department.selector;
        selector.setCurrentUid(Retail);
        QSignalSpy changed(&selector, &VDObjectSelector::currentDataChanged);
        LocalStorage* store = LocalStorage::instance();
        switch (change) {
        case 0:
            store->setObjects(ORGSTRUCTURE_DATANAME, {unit(Retail, Sales, DEPARTMENT, QStringLiteral("Опт"))});
            break;
        case 1:
            store->setObjects(ORGSTRUCTURE_DATANAME, {unit(Retail, Depot, DEPARTMENT, QStringLiteral("Розница"))});
            break;
        case 2:
            store->removeObjects(ORGSTRUCTURE_DATANAME, {Sales});
            break;
        case 3:
            store->removeObjects(ORGSTRUCTURE_DATANAME, {Retail});
            break;
        case 4:
            store->setObjects(ORGSTRUCTURE_DATANAME, {unit(Retail, Sales, WORKER, QStringLiteral("Розница"))});
            break;
        case 5:
            store->model(ORGSTRUCTURE_DATANAME)->clear();
            for (const ObjectInfo& info : *store->constObjects(ORGSTRUCTURE_DATANAME))
                store->model(ORGSTRUCTURE_DATANAME)->add(info);
            break;
        }
        QCoreApplication::processEvents();
        QCOMPARE(selector.currentUid(), after);
        QCOMPARE(department.shownName(), name);
        QCOMPARE(announced(changed), after == Retail ? QList<TYPE_ID>() : QList<TYPE_ID>{after});
    }

    // A list (no tree) with its own proxy and a clear button, as the confirmation list's: sorted by
    // name, the button there only while something is chosen, and a click on it chooses nothing.
    void listWithAClearButton()
    {
        ObjectInfo second = unit(12, 0, QStringLiteral("OT_CONFIRM_LIST"), QStringLiteral("Бухгалтерия"));
        ObjectInfo first = unit(11, 0, QStringLiteral("OT_CONFIRM_LIST"), QStringLiteral("Администрация"));
        LocalStorage::instance()->setObjects(CONFIRM_LIST_DATANAME, {second, first});
        VDObjectSelector selector;
        selector.setDataname(CONFIRM_LIST_DATANAME);
        selector.showClearButton(true);
        selector.show();
        QVERIFY(QTest::qWaitForWindowExposed(&selector));
        QCOMPARE(selector.model()->index(0, 0).data().toString(), QStringLiteral("Администрация"));
        QCOMPARE(selector.currentUid(), TYPE_ID(0));
        auto* clear = selector.findChild<QToolButton*>(QStringLiteral("clearButton"));
        QVERIFY(clear);
        QVERIFY(!clear->isVisible());
        selector.setCurrentUid(12);
        QCOMPARE(selector.currentUid(), TYPE_ID(12));
        QVERIFY(clear->isVisible());
        QSignalSpy changed(&selector, &VDObjectSelector::currentDataChanged);
        QTest::mouseClick(clear, Qt::LeftButton);
        QCOMPARE(selector.currentUid(), TYPE_ID(0));
        QCOMPARE(announced(changed), QList<TYPE_ID>{0});
        QVERIFY(!clear->isVisible());
        selector.setCurrentUid(12);
        selector.setEnabled(false);
        QVERIFY(!clear->isVisible());
    }

    // A worker is added under the unit chosen here: no unit, no OK.
    void organisationDialogGivesTheChosenUnit()
    {
        OrgstructureSelectionDialog dialog;
        QTreeView* tree = dialog.treeView();
        QCOMPARE(tree->model()->rowCount(), 1);
        QPushButton* ok = dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
        QVERIFY(!ok->isEnabled());
        QCOMPARE(dialog.selected(), TYPE_ID(0));
        dialog.setSelected(Retail);
        QVERIFY(ok->isEnabled());
        QCOMPARE(tree->currentIndex().data().toString(), QStringLiteral("Розница"));
        QVERIFY(tree->isExpanded(tree->currentIndex().parent()));
        QTimer::singleShot(0, ok, &QPushButton::click);
        QCOMPARE(dialog.exec(), 1);
        QCOMPARE(dialog.selected(), TYPE_ID(Retail));
    }
};

QTEST_MAIN(TestObjectSelectors)
#include "tst_objectselectors.moc"
