#include "vdstackedtoolbars.h"

#include "vdactionstoolbar.h"

VDStackedToolBars::VDStackedToolBars(QWidget* parent) : QStackedWidget(parent)
{
    // The hints follow the page on show, not the largest page.
    connect(this, &QStackedWidget::currentChanged, this, &QWidget::updateGeometry);
}

QToolBar* VDStackedToolBars::addPage()
{
    auto* toolBar = new VDActionsToolBar(this);
    toolBar->setMovable(false);
    toolBar->setFloatable(false);
    addWidget(toolBar);
    return toolBar;
}

QToolBar* VDStackedToolBars::page(int index) const
{
    return qobject_cast<QToolBar*>(widget(index));
}

int VDStackedToolBars::pageCount() const
{
    return count();
}

QSize VDStackedToolBars::sizeHint() const
{
    return currentWidget() ? currentWidget()->sizeHint() : QStackedWidget::sizeHint();
}

QSize VDStackedToolBars::minimumSizeHint() const
{
    return currentWidget() ? currentWidget()->minimumSizeHint() : QStackedWidget::minimumSizeHint();
}
