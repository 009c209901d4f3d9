#include "parameterizededit.h"

#include <QEvent>
#include <QValidator>

namespace {
// Soft enough to read through, clear enough to notice beside the other fields.
const QColor MarkColour(255, 228, 225);
}  // namespace

ParameterizedEdit::ParameterizedEdit(QWidget* parent) : QLineEdit(parent)
{
    connect(this, &QLineEdit::textChanged, this, &ParameterizedEdit::updateMark);
}

ParameterizedEdit::~ParameterizedEdit() = default;

void ParameterizedEdit::setEmptyTextAllowed(bool allowed)
{
    m_emptyTextAllowed = allowed;
    updateMark();
}

void ParameterizedEdit::highlightValidation(bool highlight)
{
    m_highlight = highlight;
    updateMark();
}

bool ParameterizedEdit::isTextValid() const
{
    if (!m_emptyTextAllowed && text().isEmpty())
        return false;
    if (const QValidator* check = validator()) {
        QString value = text();
        int position = cursorPosition();
        return check->validate(value, position) == QValidator::Acceptable;
    }
    return true;
}

bool ParameterizedEdit::isMarked() const
{
    return m_marked;
}

void ParameterizedEdit::changeEvent(QEvent* event)
{
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::EnabledChange)
        updateMark();
}

void ParameterizedEdit::updateMark()
{
    const bool marked = m_highlight && isEnabled() && !isTextValid();
    if (marked == m_marked)
        return;
    m_marked = marked;
    // Only the base colour changes, so the field keeps the frame and look of its neighbours.
    if (marked) {
        m_unmarked = palette();
        QPalette tinted = m_unmarked;
        tinted.setColor(QPalette::Active, QPalette::Base, MarkColour);
        tinted.setColor(QPalette::Inactive, QPalette::Base, MarkColour);
        setPalette(tinted);
    } else {
        setPalette(m_unmarked);
    }
}
