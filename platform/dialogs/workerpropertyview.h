#pragma once

#include "propertybasewidget.h"

// The worker's personal data.
class VDPLATFORM_EXPORT WorkerPropertyView : public PropertyBaseWidget
{
    Q_OBJECT
public:
    explicit WorkerPropertyView(QWidget* parent = nullptr);
};
