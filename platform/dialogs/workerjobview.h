#pragma once

#include "propertybasewidget.h"

// The worker's job: title and department.
class VDPLATFORM_EXPORT WorkerJobView : public PropertyBaseWidget
{
    Q_OBJECT
public:
    explicit WorkerJobView(QWidget* parent = nullptr);

    void setJobList(const vorandel::OBJECT_HASH& jobs);
    void setAddJobsEnabled(bool enabled);
};
