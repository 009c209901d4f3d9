#pragma once

#include "propertybasewidget.h"
#include "servicerecords.h"

#include <QMultiHash>

#include <memory>

class QListWidgetItem;

namespace Ui {
class WorkerAccessView;
}

// The worker's access groups: every group of the store, those of the worker checked.
class VDPLATFORM_EXPORT WorkerAccessView : public PropertyBaseWidget
{
    Q_OBJECT
public:
    explicit WorkerAccessView(QWidget* parent = nullptr);
    ~WorkerAccessView() override;

    void disableLockerView();
    void setAccessSchedule(const VDHash<int, vorandel::SCHEDULE_DATA>& schedules);
    // Worker uid to the uids of his groups, several values under one key.
    void setAccesses(const QMultiHash<unsigned int, unsigned int>& accesses);
    // What setAccesses gave, with the operator's changes: groups he added come after the
    // worker's others in the order of insertion, so an untouched view gives back its input.
    QMultiHash<unsigned int, unsigned int> accesses() const;

    void setReadOnly(bool readOnly) override;
    void setCurrent(const vorandel::OBJECT_HASH& objects) override;

public slots:
    // The store changed: names of groups may have changed.
    void dataChanged(const QString& dataname, const QList<vorandel::TYPE_ID>& uids);

private:
    void fillGroups();
    void groupToggled(QListWidgetItem* item);

    std::unique_ptr<Ui::WorkerAccessView> ui;
    QHash<unsigned int, QList<unsigned int>> m_groups;  // by worker, in the order of insertion
};
