#include "workeraccessview.h"

#include "constants.h"
#include "localstorage.h"
#include "ui_workeraccessview.h"
#include "vdglobals.h"

#include <QCollator>
#include <QSignalBlocker>

#include <algorithm>

WorkerAccessView::WorkerAccessView(QWidget* parent)
    : PropertyBaseWidget(parent), ui(std::make_unique<Ui::WorkerAccessView>())
{
    ui->setupUi(this);
    ui->scheduleBox->hide();
    connect(ui->groupList, &QListWidget::itemChanged, this, &WorkerAccessView::groupToggled);
    connect(vorandel::LocalStorage::instance(), &vorandel::LocalStorage::dataChanged, this,
            &WorkerAccessView::dataChanged);
    fillGroups();
}

WorkerAccessView::~WorkerAccessView() = default;

// The stand-in keeps no lockers, so there is no locker part to take away.
void WorkerAccessView::disableLockerView() {}

void WorkerAccessView::setAccessSchedule(const VDHash<int, vorandel::SCHEDULE_DATA>& schedules)
{
    QList<int> ids = schedules.keys();
    std::sort(ids.begin(), ids.end());
    ui->scheduleList->clear();
    for (int id : qAsConst(ids)) {
        const vorandel::SCHEDULE_DATA& schedule = schedules.constValue(id);
        ui->scheduleList->addItem(QStringLiteral("%1: %2").arg(schedule.name, schedule.intervals));
    }
    ui->scheduleBox->setVisible(!ids.isEmpty());
}

void WorkerAccessView::setAccesses(const QMultiHash<unsigned int, unsigned int>& accesses)
{
    m_groups.clear();
    const QList<unsigned int> workers = accesses.uniqueKeys();
    for (unsigned int worker : workers) {
        // values() gives the latest insertion first.
        QList<unsigned int> groups = accesses.values(worker);
        std::reverse(groups.begin(), groups.end());
        m_groups.insert(worker, groups);
    }
    fillGroups();
}

QMultiHash<unsigned int, unsigned int> WorkerAccessView::accesses() const
{
    QMultiHash<unsigned int, unsigned int> accesses;
    for (auto it = m_groups.cbegin(); it != m_groups.cend(); ++it) {
        for (unsigned int group : it.value())
            accesses.insert(it.key(), group);
    }
    return accesses;
}

void WorkerAccessView::setReadOnly(bool readOnly)
{
    PropertyBaseWidget::setReadOnly(readOnly);
    fillGroups();
}

void WorkerAccessView::setCurrent(const vorandel::OBJECT_HASH& objects)
{
    PropertyBaseWidget::setCurrent(objects);
    fillGroups();
}

void WorkerAccessView::dataChanged(const QString& dataname, const QList<vorandel::TYPE_ID>&)
{
    if (dataname == vorandel::POLICY_DATANAME)
        fillGroups();
}

void WorkerAccessView::fillGroups()
{
    struct Group
    {
        unsigned int uid;
        QString name;
    };
    const auto numbered = [this](unsigned int uid) { return tr("Группа № %1").arg(uid); };
    QList<Group> groups;
    if (const vorandel::OBJECT_HASH* policies = vorandel::LocalStorage::instance()->constObjects(vorandel::POLICY_DATANAME)) {
        for (auto it = policies->cbegin(); it != policies->cend(); ++it) {
            const QString name = VDGlobals::objectName(it.value());
            groups.append({it.key(), name.isEmpty() ? numbered(it.key()) : name});
        }
    }
    const QList<unsigned int> own = m_groups.value(currentObject().uid);
    // Groups of the worker that the store doesn't know (yet) stay in view, under their number.
    for (unsigned int uid : own) {
        if (std::none_of(groups.cbegin(), groups.cend(), [uid](const Group& group) { return group.uid == uid; }))
            groups.append({uid, numbered(uid)});
    }
    QCollator collator;
    std::sort(groups.begin(), groups.end(),
              [&collator](const Group& a, const Group& b) { return collator.compare(a.name, b.name) < 0; });

    const bool editable = !m_readOnly && currentObject().isValid();
    const QSignalBlocker blocker(ui->groupList);
    ui->groupList->clear();
    for (const Group& group : qAsConst(groups)) {
        auto* item = new QListWidgetItem(group.name, ui->groupList);
        item->setData(Qt::UserRole, group.uid);
        item->setFlags(editable ? Qt::ItemIsEnabled | Qt::ItemIsUserCheckable : Qt::ItemIsEnabled);
        item->setCheckState(own.contains(group.uid) ? Qt::Checked : Qt::Unchecked);
    }
}

void WorkerAccessView::groupToggled(QListWidgetItem* item)
{
    const unsigned int worker = currentObject().uid;
    const unsigned int group = item->data(Qt::UserRole).toUInt();
    QList<unsigned int>& own = m_groups[worker];
    if (item->checkState() == Qt::Checked) {
        if (!own.contains(group))
            own.append(group);
    } else {
        own.removeAll(group);
    }
    emit dataEdited();
}
