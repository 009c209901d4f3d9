#pragma once

#include "vdplatform_export.h"

#include <QDateEdit>

// The console's date field: a calendar to pick from and the day first.
class VDPLATFORM_EXPORT VDDateEdit : public QDateEdit
{
    Q_OBJECT
public:
    explicit VDDateEdit(QWidget* parent = nullptr);
};
