#include "vdactionstoolbar.h"

VDActionsToolBar::VDActionsToolBar(QWidget* parent) : VDActionsToolBar(QString(), parent) {}

VDActionsToolBar::VDActionsToolBar(const QString& title, QWidget* parent) : QToolBar(title, parent)
{
    setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    setIconSize(QSize(24, 24));
}
