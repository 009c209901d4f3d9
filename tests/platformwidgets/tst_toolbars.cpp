#include "vdactionsinserthelper.h"
#include "vdstackedtoolbars.h"

#include <QAction>
#include <QToolBar>
#include <QToolButton>
#include <QtTest>

namespace {
// What a tool bar shows, in order: the text of each button's action, "|" for a separator.
QStringList layoutOf(const QToolBar* toolBar)
{
    QStringList items;
    for (QAction* action : toolBar->actions()) {
        if (action->isSeparator()) {
            items << QStringLiteral("|");
            continue;
        }
        auto* button = qobject_cast<QToolButton*>(toolBar->widgetForAction(action));
        items << (button && button->defaultAction() ? button->defaultAction()->text() : action->text());
    }
    return items;
}
}  // namespace

class TestToolBars : public QObject
{
    Q_OBJECT

private slots:
    void fillingMakesAPagePerListAndSeparatesGroups()
    {
        QObject owner;
        const auto make = [&owner](const char* text) { return new QAction(QString::fromUtf8(text), &owner); };
        QAction* add = make("Добавить");
        QAction* settings = make("Свойства");
        QAction* remove = make("Удалить");
        QAction* confirm = make("Подтвердить");
        QAction* reject = make("Отклонить");
        QAction* print = make("Печать");

        VDStackedToolBars stacked;
        VDActionsInsertHelper::fillStackedWidget(
            &stacked, {{{add}, {settings, remove}, {}, {confirm, reject}}, {{print}}});

        QCOMPARE(stacked.pageCount(), 2);
        QCOMPARE(layoutOf(stacked.page(0)),
                 (QStringList{"Добавить", "|", "Свойства", "Удалить", "|", "Подтвердить", "Отклонить"}));
        QCOMPARE(layoutOf(stacked.page(1)), QStringList{"Печать"});
        QVERIFY(!stacked.page(2));
    }
};

QTEST_MAIN(TestToolBars)
#include "tst_toolbars.moc"
