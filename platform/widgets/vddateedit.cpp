#include "vddateedit.h"

VDDateEdit::VDDateEdit(QWidget* parent) : QDateEdit(parent)
{
    setCalendarPopup(true);
    setDisplayFormat(QStringLiteral("dd.MM.yyyy"));
}
