#include "parameterizededit.h"

#include <QValidator>

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

void ParameterizedEdit::updateMark()
{
    const bool marked = m_highlight && !isTextValid();
    if (marked == m_marked)
        return;
    m_marked = marked;
    // A tinted background keeps the look of the style; only the base colour changes.
    setStyleSheet(marked ? QStringLiteral("QLineEdit { background-color: #ffe4e1; }") : QString());
}
