#pragma once

#include "vdplatform_export.h"

#include <QStackedWidget>

class QToolBar;

// Pages of tool bars of which one shows at a time; each page holds groups of buttons with a
// separator between groups.
class VDPLATFORM_EXPORT VDStackedToolBars : public QStackedWidget
{
    Q_OBJECT
public:
    explicit VDStackedToolBars(QWidget* parent = nullptr);

    // Adds an empty page and returns its tool bar.
    QToolBar* addPage();
    QToolBar* page(int index) const;
    int pageCount() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
};
