#pragma once

#include "propertybasewidget.h"

#include <memory>

namespace Ui {
class WorkerJobView;
}

// The worker's job: his title and the unit he works in. Moving him to another unit changes his
// parent, which changedObjects() reports.
class VDPLATFORM_EXPORT WorkerJobView : public PropertyBaseWidget
{
    Q_OBJECT
public:
    explicit WorkerJobView(QWidget* parent = nullptr);
    ~WorkerJobView() override;

    // The jobs to choose from, each named by "PT_NAME".
    void setJobList(const vorandel::OBJECT_HASH& jobs);
    // Offers a button that asks the owner for a new job (addJobRequested).
    void setAddJobsEnabled(bool enabled);

    void setReadOnly(bool readOnly) override;
    void setCurrent(const vorandel::OBJECT_HASH& objects) override;
    QHash<QString, QString> editedProperties() const override;
    vorandel::OBJECT_HASH changedObjects() const override;

public slots:
    void saved(vorandel::TYPE_ID uid) override;

signals:
    void addJobRequested();

private:
    vorandel::TYPE_ID currentJob() const;
    // The unit chosen, when it isn't the one the worker is in; 0 otherwise.
    vorandel::TYPE_ID newDepartment() const;
    void showJob(vorandel::TYPE_ID job);

    std::unique_ptr<Ui::WorkerJobView> ui;
};
