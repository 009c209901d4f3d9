#include "vdactionsinserthelper.h"

#include "vdstackedtoolbars.h"

#include <QAction>
#include <QToolBar>
#include <QToolButton>

void VDActionsInsertHelper::fillStackedWidget(VDStackedToolBars* stacked, const ActionPages& pages)
{
    for (const QList<QList<QAction*>>& groups : pages) {
        QToolBar* toolBar = stacked->addPage();
        bool groupBefore = false;
        for (const QList<QAction*>& group : groups) {
            if (group.isEmpty())
                continue;
            if (groupBefore)
                toolBar->addSeparator();
            for (QAction* action : group)
                insertActionWidget(toolBar, nullptr, action);
            groupBefore = true;
        }
    }
}

QWidget* VDActionsInsertHelper::insertActionWidget(QToolBar* toolBar, QAction* before, QAction* action)
{
    auto* button = new QToolButton(toolBar);
    button->setDefaultAction(action);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setAutoRaise(true);
    button->setIconSize(toolBar->iconSize());
    QObject::connect(toolBar, &QToolBar::iconSizeChanged, button, &QToolButton::setIconSize);
    toolBar->insertWidget(before, button);
    return button;
}
