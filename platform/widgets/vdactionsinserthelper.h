#pragma once

#include "vdplatform_export.h"

#include <QList>

class QAction;
class QToolBar;
class QWidget;
class VDStackedToolBars;

// Puts actions into tool bars the way the console lays them out.
class VDPLATFORM_EXPORT VDActionsInsertHelper
{
public:
    // One list per page, one list per group of the page; groups are separated.
    using ActionPages = QList<QList<QList<QAction*>>>;

    static void fillStackedWidget(VDStackedToolBars* stacked, const ActionPages& pages);
    // Inserts a button for `action` into `toolBar` before `before` (at the end when null);
    // returns the button.
    static QWidget* insertActionWidget(QToolBar* toolBar, QAction* before, QAction* action);

private:
    VDActionsInsertHelper() = delete;
};
