#pragma once

#include "vdplatform_export.h"

#include <QFrame>

class QLabel;
class QToolButton;
class QVBoxLayout;

// A side panel with a title bar that folds its content away and back.
class VDPLATFORM_EXPORT HiddenPanel : public QFrame
{
    Q_OBJECT
public:
    explicit HiddenPanel(QWidget* parent = nullptr);
    ~HiddenPanel() override;

    void setTitle(const QString& title);
    QString title() const;
    void setTitleVisible(bool visible);
    bool isTitleVisible() const;
    // Adds a widget under the title; the panel becomes its parent.
    void addWidget(QWidget* widget);
    void setCollapsed(bool collapsed);
    bool isCollapsed() const;

    // Wide enough for a card with a photo and a name beside it, whatever its content asks.
    QSize sizeHint() const override;

signals:
    void collapsedChanged(bool collapsed);

private:
    QWidget* m_titleBar = nullptr;
    QLabel* m_title = nullptr;
    QToolButton* m_fold = nullptr;
    QWidget* m_content = nullptr;
    QVBoxLayout* m_contentLayout = nullptr;
};
