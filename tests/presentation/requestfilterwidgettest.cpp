#include "requestfilterwidgettest.h"

#include "requestfilterwidget.h"

#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

namespace {
QToolButton* button(const RequestFilterWidget& bar, const QString& name)
{
    auto* found = bar.findChild<QToolButton*>(name);
    if (!found)
        qFatal("no button %s", qPrintable(name));
    return found;
}
}  // namespace

void RequestFilterWidgetTest::values_data()
{
    QTest::addColumn<QStringList>("clicks");
    QTest::addColumn<QStringList>("values");

    QTest::newRow("confirmed takes both confirmed states") << QStringList{"tbConfirmed"} << QStringList{"2", "3"};
    QTest::newRow("not confirmed takes requests without a state")
        << QStringList{"tbNotConfirmed"} << QStringList{"0", ""};
    QTest::newRow("group order, not click order")
        << QStringList{"tbActive", "tbConfirmed"} << QStringList{"2", "3", "4"};
    QTest::newRow("all five") << QStringList{"tbRejected", "tbFinished", "tbActive", "tbNotConfirmed", "tbConfirmed"}
                              << QStringList{"2", "3", "0", "", "4", "5", "1"};
    QTest::newRow("on and off again") << QStringList{"tbFinished", "tbRejected", "tbFinished"} << QStringList{"1"};
}

void RequestFilterWidgetTest::values()
{
    QFETCH(QStringList, clicks);
    QFETCH(QStringList, values);

    RequestFilterWidget bar;
    QSignalSpy sent(&bar, &RequestFilterWidget::filterChanged);
    for (const QString& name : qAsConst(clicks))
        button(bar, name)->click();

    QCOMPARE(sent.count(), clicks.size());
    QCOMPARE(sent.last().at(0).toStringList(), values);
    QCOMPARE(bar.currentFilter(), values);
}

void RequestFilterWidgetTest::allClears_data()
{
    QTest::addColumn<QStringList>("checked");

    QTest::newRow("two on") << QStringList{"tbConfirmed", "tbRejected"};
    QTest::newRow("nothing on") << QStringList{};
}

void RequestFilterWidgetTest::allClears()
{
    QFETCH(QStringList, checked);

    RequestFilterWidget bar;
    for (const QString& name : qAsConst(checked))
        button(bar, name)->click();
    QSignalSpy sent(&bar, &RequestFilterWidget::filterChanged);

    QToolButton* all = button(bar, QStringLiteral("tbAll"));
    all->click();

    QCOMPARE(sent.count(), 1);
    QCOMPARE(sent.first().at(0).toStringList(), QStringList());
    QVERIFY(!all->isChecked());
    for (const char* name : {"tbConfirmed", "tbNotConfirmed", "tbActive", "tbFinished", "tbRejected"})
        QVERIFY2(!button(bar, QLatin1String(name))->isChecked(), name);
}
