#pragma once

#include "vdplatform_export.h"

#include <QComboBox>

class QToolButton;

// The console's combo box. It may offer a small button that clears the choice, for fields where
// choosing nothing is allowed.
class VDPLATFORM_EXPORT VDComboBox : public QComboBox
{
    Q_OBJECT
public:
    explicit VDComboBox(QWidget* parent = nullptr);
    ~VDComboBox() override;

    void showClearButton(bool show);
    bool isClearButtonShown() const;

public slots:
    // No entry chosen (current index -1).
    virtual void clearSelection();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void placeClearButton();

    QToolButton* m_clear = nullptr;
};
