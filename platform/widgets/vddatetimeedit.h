#pragma once

#include "vdplatform_export.h"

#include <QDateTimeEdit>

// The console's date and time field: a calendar to pick from, the day first, to the second.
class VDPLATFORM_EXPORT VDDateTimeEdit : public QDateTimeEdit
{
    Q_OBJECT
public:
    explicit VDDateTimeEdit(QWidget* parent = nullptr);
};
