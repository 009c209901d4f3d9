#include "objecttreemodel.h"
#include "objecttreeproxy.h"
#include "vdtableview.h"

#include <QHeaderView>
#include <QMenu>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QtTest>

#include <memory>

namespace {
constexpr int Columns = 6;

// Six titled columns; column 4 has no title, only a tool tip. Counts what rows it is asked about.
class CountingModel : public QStandardItemModel
{
public:
    CountingModel(int rows = 20) : QStandardItemModel(rows, Columns)
    {
        setHorizontalHeaderLabels({QStringLiteral("Номер"), QStringLiteral("Статус"), QStringLiteral("ФИО"),
                                   QStringLiteral("Начало"), QString(), QStringLiteral("Конец")});
        setHeaderData(4, Qt::Horizontal, QStringLiteral("Автомобиль"), Qt::ToolTipRole);
        for (int row = 0; row < rows; ++row)
            for (int column = 0; column < Columns; ++column)
                setItem(row, column, new QStandardItem(QStringLiteral("%1-%2").arg(row).arg(column)));
    }

    QVariant data(const QModelIndex& index, int role) const override
    {
        rowsAsked.insert(index.row());
        return QStandardItemModel::data(index, role);
    }

    mutable QSet<int> rowsAsked;
};

QStringList titlesOf(const QMenu* menu)
{
    QStringList titles;
    for (const QAction* action : menu->actions())
        titles << action->text();
    return titles;
}

QAction* actionFor(const QMenu* menu, int column)
{
    for (QAction* action : menu->actions())
        if (action->data().toInt() == column)
            return action;
    return nullptr;
}

QList<int> hiddenColumns(const VDTableView& view)
{
    QList<int> hidden;
    for (int column = 0; column < view.horizontalHeader()->count(); ++column)
        if (view.isColumnHidden(column))
            hidden << column;
    return hidden;
}

// A state with column 1 moved to the end, column 2 wider, column 0 shown and column 3 hidden,
// sorted by column 5 downward.
QByteArray operatorState()
{
    CountingModel model;
    VDTableView view;
    view.setModel(&model);
    view.setSortingEnabled(true);
    view.horizontalHeader()->moveSection(1, Columns - 1);
    view.setColumnWidth(2, 234);
    view.setColumnHidden(3, true);
    view.sortByColumn(5, Qt::DescendingOrder);
    return view.headerState();
}
}  // namespace

class TestVDTableView : public QObject
{
    Q_OBJECT

private slots:
    void headerMenuOffersColumnsInOrderAndTogglesThem()
    {
        CountingModel model;
        VDTableView view;
        view.setModel(&model);
        view.setHeaderMenuColumns({3, 1, 4});
        view.setHeaderHiddenByDefaultColumns({1});

        QMenu* menu = view.headerMenu();
        emit menu->aboutToShow();
        QCOMPARE(titlesOf(menu), (QStringList{QStringLiteral("Начало"), QStringLiteral("Статус"), QStringLiteral("Автомобиль")}));
        QVERIFY(actionFor(menu, 3)->isChecked());
        QVERIFY(!actionFor(menu, 1)->isChecked());

        QSignalSpy changed(&view, &VDTableView::headerStateChanged);
        actionFor(menu, 1)->trigger();
        QVERIFY(!view.isColumnHidden(1));
        actionFor(menu, 3)->trigger();
        QVERIFY(view.isColumnHidden(3));
        QTRY_COMPARE(changed.count(), 1);
        QCOMPARE(changed.first().first().toByteArray(), view.headerState());
    }

    void theLastShownColumnCannotBeHidden()
    {
        CountingModel model;
        VDTableView view;
        view.setModel(&model);
        view.setHeaderMenuColumns({0, 1});
        view.setHeaderHiddenByDefaultColumns({1, 2, 3, 4, 5});
        emit view.headerMenu()->aboutToShow();
        QVERIFY(!actionFor(view.headerMenu(), 0)->isEnabled());
        QVERIFY(actionFor(view.headerMenu(), 1)->isEnabled());
    }

    void defaultsHideColumnsUnlessAStateSaysOtherwise()
    {
        CountingModel model;
        VDTableView view;
        view.setModel(&model);
        view.setHeaderHiddenByDefaultColumns({0, 3});
        QCOMPARE(hiddenColumns(view), (QList<int>{0, 3}));
        view.setHeaderHiddenByDefaultColumns({4});
        QCOMPARE(hiddenColumns(view), (QList<int>{4}));

        VDTableView restored;
        restored.setModel(&model);
        restored.restoreHeaderState(operatorState());
        restored.setHeaderHiddenByDefaultColumns({0, 3});
        QCOMPARE(hiddenColumns(restored), (QList<int>{3}));
        QCOMPARE(restored.headerHiddenByDefaultColumns(), (QList<int>{0, 3}));
    }

    void stateRoundTrips()
    {
        CountingModel model;
        VDTableView view;
        view.setModel(&model);
        view.setSortingEnabled(true);
        view.setHeaderHiddenByDefaultColumns({0});
        QSignalSpy changed(&view, &VDTableView::headerStateChanged);
        view.restoreHeaderState(operatorState());

        const QHeaderView* header = view.horizontalHeader();
        QCOMPARE(hiddenColumns(view), (QList<int>{3}));
        QCOMPARE(header->visualIndex(1), Columns - 1);
        QCOMPARE(view.columnWidth(2), 234);
        QCOMPARE(header->sortIndicatorSection(), 5);
        QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
        QCOMPARE(model.index(0, 0).data(), view.model()->index(0, 0).data());
        QCOMPARE(view.headerState(), operatorState());

        // Restoring is not the operator's doing.
        QTest::qWait(400);
        QCOMPARE(changed.count(), 0);
    }

    void brokenStatesKeepTheDefaults_data()
    {
        QTest::addColumn<QByteArray>("state");
        const QByteArray good = operatorState();
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("garbage") << QByteArray("not a header state at all");
        QTest::newRow("truncated") << good.left(good.size() / 2);
        QTest::newRow("one byte") << good.left(1);

        QStandardItemModel wider(3, Columns + 2);
        VDTableView other;
        other.setModel(&wider);
        QTest::newRow("other column count") << other.headerState();
    }

    void brokenStatesKeepTheDefaults()
    {
        QFETCH(QByteArray, state);
        CountingModel model;
        VDTableView view;
        view.setModel(&model);
        view.setHeaderHiddenByDefaultColumns({1, 4});
        view.restoreHeaderState(operatorState());
        QCOMPARE(hiddenColumns(view), (QList<int>{3}));

        if (!state.isEmpty())
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("header state")));
        view.restoreHeaderState(state);
        QCOMPARE(hiddenColumns(view), (QList<int>{1, 4}));
        QCOMPARE(view.horizontalHeader()->count(), Columns);
    }

    void operatorChangesAreAnnouncedOnce_data()
    {
        QTest::addColumn<int>("change");
        QTest::newRow("drag of a column edge") << 0;
        QTest::newRow("move") << 1;
        QTest::newRow("sort") << 2;
    }

    void operatorChangesAreAnnouncedOnce()
    {
        QFETCH(int, change);
        CountingModel model;
        VDTableView view;
        view.setModel(&model);
        view.setSortingEnabled(true);
        QTest::qWait(400);  // whatever set-up was still to be announced
        QSignalSpy changed(&view, &VDTableView::headerStateChanged);

        switch (change) {
        case 0:
            for (int width = 101; width < 160; ++width)
                view.setColumnWidth(2, width);
            break;
        case 1:
            view.horizontalHeader()->moveSection(0, 3);
            break;
        case 2:
            view.horizontalHeader()->setSortIndicator(2, Qt::DescendingOrder);
            break;
        }
        QTRY_COMPARE(changed.count(), 1);
        QCOMPARE(changed.first().first().toByteArray(), view.headerState());
        QTest::qWait(400);
        QCOMPARE(changed.count(), 1);
    }

    void aPendingChangeIsAnnouncedWhenTheTableHides()
    {
        CountingModel model;
        VDTableView view;
        view.setModel(&model);
        view.show();
        QTest::qWait(400);
        QSignalSpy changed(&view, &VDTableView::headerStateChanged);
        view.setColumnWidth(1, 177);
        view.hide();
        QCOMPARE(changed.count(), 1);
    }

    void typeAheadOnlyOverASearchableProxy()
    {
        ObjectTreeModel objects;
        for (unsigned int uid = 1; uid <= 3; ++uid) {
            vorandel::ObjectInfo info;
            info.uid = uid;
            info.type = QStringLiteral("OT_DEPARTMENT");
            info.parameters.insert(QStringLiteral("PT_NAME"), QStringList{"Архив", "Бухгалтерия", "Склад"}.at(int(uid - 1)));
            objects.add(info);
        }
        ObjectTreeProxy proxy;
        proxy.setSourceModel(&objects);
        VDTableView view;
        view.setModel(&proxy);
        view.setCurrentIndex(proxy.index(0, 0));

        view.keyboardSearch(QStringLiteral("Ск"));
        QCOMPARE(view.currentIndex().row(), 0);
        proxy.setSearchEnabled(true);
        view.keyboardSearch(QStringLiteral("Ск"));
        QCOMPARE(view.currentIndex().data().toString(), QStringLiteral("Склад"));

        QStandardItemModel plain(3, 1);
        plain.setItem(2, 0, new QStandardItem(QStringLiteral("Склад")));
        view.setModel(&plain);
        view.setCurrentIndex(plain.index(0, 0));
        view.keyboardSearch(QStringLiteral("Ск"));
        QCOMPARE(view.currentIndex().row(), 0);
    }

    void oneRowStandsForAllRows()
    {
        CountingModel model(5000);
        VDTableView view;
        view.setModel(&model);
        view.verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
        view.resize(600, 400);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        const int height = view.rowHeight(0);
        QVERIFY(height > view.fontMetrics().height());
        QCOMPARE(view.rowHeight(4999), height);

        // The hint of any row asks the model nothing more.
        const int hint = view.sizeHintForRow(0);
        model.rowsAsked.clear();
        QCOMPARE(view.sizeHintForRow(3000), hint);
        QVERIFY(model.rowsAsked.isEmpty());

        // A larger font, a larger icon: measured again.
        QFont larger = view.font();
        larger.setPointSize(larger.pointSize() * 3);
        view.setFont(larger);
        QVERIFY(view.sizeHintForRow(0) > hint);
        view.setIconSize(QSize(128, 128));
        model.setData(model.index(0, 1), QColor(Qt::red), Qt::DecorationRole);
        QVERIFY(view.sizeHintForRow(0) >= 128);
    }
};

QTEST_MAIN(TestVDTableView)
#include "tst_vdtableview.moc"
