#include "vdtableview.h"

#include <QHeaderView>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QtTest>

namespace {
constexpr int Columns = 6;

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
    QStandardItemModel model(3, Columns);
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
    void defaultsHideColumnsUnlessAStateSaysOtherwise()
    {
        QStandardItemModel model(3, Columns);
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
    }

    // The last column stretches to the table's edge by itself: a table made wider or narrower
    // is no layout of the operator's to keep.
    void theStretchingLastColumnIsNotTheOperators()
    {
        QStandardItemModel model(3, 3);
        VDTableView view;
        view.setModel(&model);
        view.restoreHeaderState({});
        view.resize(400, 200);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QTest::qWait(400);
        QSignalSpy changed(&view, &VDTableView::headerStateChanged);
        view.resize(600, 200);
        QTRY_VERIFY(view.columnWidth(2) > 200);
        QTest::qWait(400);
        QCOMPARE(changed.count(), 0);
    }

    void stateRoundTripsQuietly()
    {
        QStandardItemModel model(3, Columns);
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
        QCOMPARE(view.headerState(), operatorState());

        // Restoring is not the operator's doing.
        QTest::qWait(400);
        QCOMPARE(changed.count(), 0);

        // Nor is what the owner sets up before it finds no saved layout.
        VDTableView fresh;
        fresh.setModel(&model);
        fresh.setSortingEnabled(true);
        QSignalSpy freshChanged(&fresh, &VDTableView::headerStateChanged);
        fresh.horizontalHeader()->setSortIndicator(2, Qt::DescendingOrder);
        fresh.restoreHeaderState({});
        QTest::qWait(400);
        QCOMPARE(freshChanged.count(), 0);
    }

    // The owner keeps the layout only if it hears of it: once per change, however many steps.
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
        QStandardItemModel model(3, Columns);
        VDTableView view;
        view.setModel(&model);
        view.setSortingEnabled(true);
        QTest::qWait(400);  // whatever set-up was still to be announced
        QSignalSpy changed(&view, &VDTableView::headerStateChanged);
        if (change == 0) {
            for (int width = 101; width < 160; ++width)
                view.setColumnWidth(2, width);
        } else if (change == 1) {
            view.horizontalHeader()->moveSection(0, 3);
        } else {
            view.horizontalHeader()->setSortIndicator(2, Qt::DescendingOrder);
        }
        QTRY_COMPARE(changed.count(), 1);
        QCOMPARE(changed.first().first().toByteArray(), view.headerState());
        QTest::qWait(400);
        QCOMPARE(changed.count(), 1);
    }

    void brokenStatesKeepTheDefaults_data()
    {
        QTest::addColumn<QByteArray>("state");
        const QByteArray good = operatorState();
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("garbage") << QByteArray("not a header state at all");
        QTest::newRow("truncated") << good.left(good.size() / 2);

        QStandardItemModel wider(3, Columns + 2);
        VDTableView other;
        other.setModel(&wider);
        QTest::newRow("other column count") << other.headerState();
    }

    void brokenStatesKeepTheDefaults()
    {
        QFETCH(QByteArray, state);
        QStandardItemModel model(3, Columns);
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
};

QTEST_MAIN(TestVDTableView)
#include "tst_vdtableview.moc"
