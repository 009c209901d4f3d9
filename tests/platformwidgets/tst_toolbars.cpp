#include "hiddenpanel.h"
#include "vdactionsinserthelper.h"
#include "vdactionstoolbar.h"
#include "vdstackedtoolbars.h"

#include <QAction>
#include <QLabel>
#include <QSignalSpy>
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
        QCOMPARE(layoutOf(stacked.page(0)), (QStringList{"Добавить", "|", "Свойства", "Удалить", "|", "Подтвердить", "Отклонить"}));
        QCOMPARE(layoutOf(stacked.page(1)), QStringList{"Печать"});
        QVERIFY(!stacked.page(2));

        // The buttons follow their actions.
        auto* button = qobject_cast<QToolButton*>(stacked.page(0)->widgetForAction(stacked.page(0)->actions().first()));
        QCOMPARE(button->toolButtonStyle(), Qt::ToolButtonTextBesideIcon);
        QSignalSpy triggered(add, &QAction::triggered);
        button->click();
        QCOMPARE(triggered.count(), 1);
        add->setEnabled(false);
        QVERIFY(!button->isEnabled());
    }

    void buttonsGoBeforeAnActionOrAtTheEnd()
    {
        VDActionsToolBar toolBar;
        QCOMPARE(toolBar.iconSize(), QSize(24, 24));
        QCOMPARE(toolBar.toolButtonStyle(), Qt::ToolButtonTextBesideIcon);
        QAction first(QStringLiteral("Первое"));
        QAction last(QStringLiteral("Последнее"));
        QAction middle(QStringLiteral("Среднее"));
        toolBar.addAction(&first);
        QWidget* lastButton = VDActionsInsertHelper::insertActionWidget(&toolBar, nullptr, &last);
        VDActionsInsertHelper::insertActionWidget(&toolBar, toolBar.actions().at(1), &middle);
        QCOMPARE(layoutOf(&toolBar), (QStringList{"Первое", "Среднее", "Последнее"}));
        QCOMPARE(lastButton->parent(), &toolBar);
        QCOMPARE(qobject_cast<QToolButton*>(lastButton)->defaultAction(), &last);
    }

    void stackedToolBarsAreAsBigAsTheirCurrentPage()
    {
        VDStackedToolBars stacked;
        QToolBar* small = stacked.addPage();
        QToolBar* large = stacked.addPage();
        small->addAction(QStringLiteral("А"));
        for (int i = 0; i < 8; ++i)
            large->addAction(QStringLiteral("Действие с длинным названием %1").arg(i));
        stacked.setCurrentIndex(0);
        QCOMPARE(stacked.sizeHint(), small->sizeHint());
        stacked.setCurrentIndex(1);
        QCOMPARE(stacked.sizeHint(), large->sizeHint());
        QCOMPARE(stacked.minimumSizeHint(), large->minimumSizeHint());
    }

    void panelFoldsItsContent()
    {
        HiddenPanel panel;
        auto* content = new QLabel(QStringLiteral("Карточка"));
        panel.addWidget(content);
        panel.setTitle(QStringLiteral("Свойства"));
        panel.show();
        QCOMPARE(content->parentWidget()->parentWidget(), &panel);
        QCOMPARE(panel.title(), QStringLiteral("Свойства"));
        QVERIFY(panel.isTitleVisible());

        QSignalSpy folded(&panel, &HiddenPanel::collapsedChanged);
        panel.setCollapsed(true);
        panel.setCollapsed(true);
        QVERIFY(panel.isCollapsed());
        QVERIFY(!content->isVisible());
        QCOMPARE(folded.count(), 1);

        panel.findChild<QToolButton*>()->click();
        QVERIFY(!panel.isCollapsed());
        QVERIFY(content->isVisible());
        QCOMPARE(folded.count(), 2);
        QCOMPARE(folded.last().first().toBool(), false);

        panel.setTitleVisible(false);
        QVERIFY(!panel.isTitleVisible());
        QVERIFY(content->isVisible());
    }
};

QTEST_MAIN(TestToolBars)
#include "tst_toolbars.moc"
