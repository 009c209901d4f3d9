#pragma once

#include "vdplatform_export.h"

#include <QComboBox>

class QStyleOptionComboBox;
class QToolButton;

// The console's combo box. It may offer a small button that clears the choice, for fields where
// choosing nothing is allowed; the button shows only while there is something to clear.
class VDPLATFORM_EXPORT VDComboBox : public QComboBox
{
    Q_OBJECT
public:
    explicit VDComboBox(QWidget* parent = nullptr);
    ~VDComboBox() override;

    void showClearButton(bool show);
    bool isClearButtonShown() const { return m_clearWanted; }
    // Whether something is chosen now; the clear button follows it.
    virtual bool hasChoice() const;

public slots:
    // No entry chosen (current index -1).
    virtual void clearSelection();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    // Shows or hides the clear button after the choice has changed.
    void updateClearButton();
    // The part of the field where the chosen text goes, left of the clear button.
    QRect textRect() const;
    // What the closed box shows: by default the current item's text and icon.
    virtual void initLabel(QStyleOptionComboBox* option) const;

private:
    void placeClearButton();

    QToolButton* m_clear = nullptr;
    bool m_clearWanted = false;
};
