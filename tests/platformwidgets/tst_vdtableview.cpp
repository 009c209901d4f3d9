#include "vdtableview.h"

#include <QAction>
#include <QHeaderView>
#include <QMenu>
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

    // Until the operator lays the table out, a shown column is as wide as its title and its first
    // rows need, within reason, and the fitting is no layout of his to keep.
    void columnsFitTheirContentsUntilTheOperatorSizesOne()
    {
        QStandardItemModel model(0, 3);
        model.setHorizontalHeaderLabels({QStringLiteral("Дата оформления заявки"), QStringLiteral("Ф"), QString()});
        VDTableView view;
        view.setModel(&model);
        view.restoreHeaderState({});
        view.resize(400, 200);
        QSignalSpy changed(&view, &VDTableView::headerStateChanged);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QVERIFY(view.columnWidth(0) >= view.horizontalHeader()->sectionSizeHint(0));

        // The first rows arrive after the table shows.
        const QString name = QStringLiteral("Константинопольская");
        const int nameWidth = view.fontMetrics().horizontalAdvance(name);
        QVERIFY(nameWidth > view.horizontalHeader()->defaultSectionSize());
        model.appendRow({new QStandardItem(QStringLiteral("a")), new QStandardItem(name)});
        model.appendRow(new QStandardItem(QString(400, QLatin1Char('w'))));
        QTRY_VERIFY(view.columnWidth(1) > nameWidth);
        QVERIFY(view.columnWidth(0) < 2 * view.width());  // one vast text doesn't take it all

        // Rows that come back after a search found nothing don't make the columns jump.
        const int fitted = view.columnWidth(1);
        model.removeRows(0, model.rowCount());
        model.appendRow({new QStandardItem, new QStandardItem(name + name)});
        QTest::qWait(50);
        QCOMPARE(view.columnWidth(1), fitted);

        QTest::qWait(400);
        QCOMPARE(changed.count(), 0);

        // A column that the operator shows from the menu is fitted to what it holds then.
        view.setHeaderMenuColumns({0, 1});
        QAction* showName = view.headerMenu()->actions().at(1);
        showName->trigger();
        const QString longer = name + QStringLiteral(", дом 12");
        model.setItem(0, 1, new QStandardItem(longer));
        showName->trigger();
        QTRY_VERIFY(view.columnWidth(1) > view.fontMetrics().horizontalAdvance(longer));

        // A larger font needs wider columns.
        const int normal = view.columnWidth(1);
        QFont larger = view.font();
        larger.setPointSize(larger.pointSize() * 2);
        view.setFont(larger);
        QTRY_VERIFY(view.columnWidth(1) > normal);

        // Once he sizes a column himself, nothing is fitted any more.
        const int byHand = view.horizontalHeader()->minimumSectionSize() + 3;
        view.setColumnWidth(1, byHand);
        showName->trigger();
        showName->trigger();
        QTest::qWait(50);
        QCOMPARE(view.columnWidth(1), byHand);
    }

    void aSavedLayoutIsNotFitted()
    {
        QStandardItemModel model(3, Columns);
        model.setItem(0, 2, new QStandardItem(QString(60, QLatin1Char('w'))));
        VDTableView view;
        view.setModel(&model);
        view.restoreHeaderState(operatorState());
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        QTest::qWait(50);
        QCOMPARE(view.columnWidth(2), 234);
    }

    // A saved layout comes back whole, and the owner's defaults, set before or after it, hide no
    // column that the operator showed.
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
        view.setHeaderHiddenByDefaultColumns({0, 3});
        QCOMPARE(hiddenColumns(view), (QList<int>{3}));

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
        QTest::newRow("column hidden from the menu") << 3;
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
        } else if (change == 2) {
            view.horizontalHeader()->setSortIndicator(2, Qt::DescendingOrder);
        } else {
            view.setHeaderMenuColumns({2});
            view.headerMenu()->actions().first()->trigger();
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
