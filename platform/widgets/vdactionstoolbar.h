#pragma once

#include "vdplatform_export.h"

#include <QToolBar>

// The tool bar of a tab page or a dialog: buttons with their text beside the icon.
class VDPLATFORM_EXPORT VDActionsToolBar : public QToolBar
{
    Q_OBJECT
public:
    explicit VDActionsToolBar(QWidget* parent = nullptr);
    explicit VDActionsToolBar(const QString& title, QWidget* parent = nullptr);
};
