#pragma once

#include "vdplatform_export.h"

#include <QLineEdit>
#include <QPalette>

// A line edit that can insist on a value: with empty text refused, or with a validator that
// doesn't accept the text, it marks itself (a tinted background) once highlighting is on, for as
// long as the text isn't acceptable and the field is enabled.
class VDPLATFORM_EXPORT ParameterizedEdit : public QLineEdit
{
    Q_OBJECT
public:
    explicit ParameterizedEdit(QWidget* parent = nullptr);
    ~ParameterizedEdit() override;

    void setEmptyTextAllowed(bool allowed);
    bool isEmptyTextAllowed() const { return m_emptyTextAllowed; }
    // Marks the field while its text isn't acceptable.
    void highlightValidation(bool highlight);
    bool isHighlighting() const { return m_highlight; }
    // Whether the text is acceptable: not empty where that is refused, and accepted by the
    // validator if there is one.
    bool isTextValid() const;
    // Whether the field is marked now.
    bool isMarked() const;

protected:
    void changeEvent(QEvent* event) override;

private:
    void updateMark();

    bool m_emptyTextAllowed = true;
    bool m_highlight = false;
    bool m_marked = false;
    QPalette m_unmarked;  // the field's colours while it isn't marked
};
