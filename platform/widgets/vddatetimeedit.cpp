#include "vddatetimeedit.h"

VDDateTimeEdit::VDDateTimeEdit(QWidget* parent) : QDateTimeEdit(parent)
{
    setCalendarPopup(true);
    setDisplayFormat(QStringLiteral("dd.MM.yyyy HH:mm:ss"));
}
