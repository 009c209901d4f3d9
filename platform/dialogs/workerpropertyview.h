#pragma once

#include "propertybasewidget.h"

#include <memory>

namespace Ui {
class WorkerPropertyView;
}

// The worker's personal data.
class VDPLATFORM_EXPORT WorkerPropertyView : public PropertyBaseWidget
{
    Q_OBJECT
public:
    explicit WorkerPropertyView(QWidget* parent = nullptr);
    ~WorkerPropertyView() override;

    void setReadOnly(bool readOnly) override;
    void setCurrent(const vorandel::OBJECT_HASH& objects) override;
    QHash<QString, QString> editedProperties() const override;

private:
    std::unique_ptr<Ui::WorkerPropertyView> ui;
};
