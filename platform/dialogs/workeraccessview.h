#pragma once

#include "propertybasewidget.h"
#include "servicerecords.h"

#include <QMultiHash>

// The worker's access groups.
class VDPLATFORM_EXPORT WorkerAccessView : public PropertyBaseWidget
{
    Q_OBJECT
public:
    explicit WorkerAccessView(QWidget* parent = nullptr);

    void disableLockerView();
    void setAccessSchedule(const VDHash<int, vorandel::SCHEDULE_DATA>& schedules);
    // Worker uid to the uids of his groups, several values under one key.
    void setAccesses(const QMultiHash<unsigned int, unsigned int>& accesses);
    QMultiHash<unsigned int, unsigned int> accesses() const;

public slots:
    // The store changed: names of groups may have changed.
    void dataChanged(const QString& dataname, const QList<vorandel::TYPE_ID>& uids);
};
