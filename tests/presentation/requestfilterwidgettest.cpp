#include "requestfilterwidgettest.h"

#include "requestfilterwidget.h"

#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

void RequestFilterWidgetTest::values_data()
{
    QTest::addColumn<QStringList>("clicks");
    QTest::addColumn<QStringList>("values");

    QTest::newRow("confirmed takes both confirmed states") << QStringList{"tbConfirmed"} << QStringList{"2", "3"};
    QTest::newRow("not confirmed takes requests without a state")
        << QStringList{"tbNotConfirmed"} << QStringList{"0", ""};
    QTest::newRow("group order, not click order")
        << QStringList{"tbRejected", "tbActive", "tbConfirmed"} << QStringList{"2", "3", "4", "1"};
    QTest::newRow("on and off again") << QStringList{"tbFinished", "tbRejected", "tbFinished"} << QStringList{"1"};
    QTest::newRow("all clears") << QStringList{"tbConfirmed", "tbRejected", "tbAll"} << QStringList{};
    QTest::newRow("all with nothing on") << QStringList{"tbAll"} << QStringList{};
}

void RequestFilterWidgetTest::values()
{
    QFETCH(QStringList, clicks);
    QFETCH(QStringList, values);

    RequestFilterWidget bar;
    QSignalSpy sent(&bar, &RequestFilterWidget::filterChanged);
    for (const QString& name : qAsConst(clicks)) {
        auto* button = bar.findChild<QToolButton*>(name);
        QVERIFY2(button, qPrintable(name));
        button->click();
    }

    // One list per click, and the buttons left on are the list's.
    QCOMPARE(sent.count(), clicks.size());
    QCOMPARE(sent.last().at(0).toStringList(), values);
    QCOMPARE(bar.currentFilter(), values);
}
