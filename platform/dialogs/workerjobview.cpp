#include "workerjobview.h"

#include "constants.h"
#include "grantedproxymodel.h"
#include "localstorage.h"
#include "ui_workerjobview.h"
#include "vdglobals.h"

#include <QCollator>
#include <QSignalBlocker>

#include <algorithm>

namespace {
const QString JobKey = QStringLiteral("PT_JOB");
}  // namespace

WorkerJobView::WorkerJobView(QWidget* parent) : PropertyBaseWidget(parent), ui(std::make_unique<Ui::WorkerJobView>())
{
    ui->setupUi(this);
    ui->addJobButton->setIcon(QIcon::fromTheme(QStringLiteral("action-add")));
    ui->addJobButton->hide();
    setJobList({});

    auto* units = new GrantedProxyModel(ui->departmentSelector);
    ui->departmentSelector->setProxyModel(units);
    units->setObjectTypeFilter({db::orgstructure::SUBJECT_ROOT, db::orgstructure::FIRM, db::orgstructure::DEPARTMENT});
    units->setFilterAcceptsParents(true);
    ui->departmentSelector->setDataname(vorandel::ORGSTRUCTURE_DATANAME);

    connect(ui->jobCombo, QOverload<int>::of(&QComboBox::activated), this, &PropertyBaseWidget::dataEdited);
    connect(ui->departmentSelector, &VDObjectSelector::currentDataChanged, this, [this] {
        if (newDepartment() != 0)
            emit dataEdited();
    });
    connect(ui->addJobButton, &QToolButton::clicked, this, &WorkerJobView::addJobRequested);
}

WorkerJobView::~WorkerJobView() = default;

void WorkerJobView::setJobList(const vorandel::OBJECT_HASH& jobs)
{
    const vorandel::TYPE_ID shown = ui->jobCombo->currentData().toUInt();
    QList<vorandel::ObjectInfo> sorted = jobs.values();
    QCollator collator;
    std::sort(sorted.begin(), sorted.end(), [&collator](const vorandel::ObjectInfo& a, const vorandel::ObjectInfo& b) {
        return collator.compare(VDGlobals::objectName(a), VDGlobals::objectName(b)) < 0;
    });

    ui->jobCombo->clear();
    ui->jobCombo->addItem(tr("не указана"), 0u);
    for (const vorandel::ObjectInfo& job : qAsConst(sorted))
        ui->jobCombo->addItem(VDGlobals::objectName(job), job.uid);
    showJob(shown);
}

void WorkerJobView::setAddJobsEnabled(bool enabled)
{
    ui->addJobButton->setVisible(enabled);
}

void WorkerJobView::setReadOnly(bool readOnly)
{
    PropertyBaseWidget::setReadOnly(readOnly);
    ui->jobCombo->setEnabled(!readOnly);
    ui->addJobButton->setEnabled(!readOnly);
    ui->departmentSelector->setEnabled(!readOnly);
}

void WorkerJobView::setCurrent(const vorandel::OBJECT_HASH& objects)
{
    PropertyBaseWidget::setCurrent(objects);
    showJob(currentJob());
    const QSignalBlocker blocker(ui->departmentSelector);
    ui->departmentSelector->setCurrentUid(currentObject().parent);
}

QHash<QString, QString> WorkerJobView::editedProperties() const
{
    const vorandel::TYPE_ID chosen = ui->jobCombo->currentData().toUInt();
    if (!currentObject().isValid() || chosen == currentJob())
        return {};
    return {{JobKey, chosen ? QString::number(chosen) : QString()}};
}

vorandel::OBJECT_HASH WorkerJobView::changedObjects() const
{
    const vorandel::ObjectInfo& worker = currentObject();
    const vorandel::TYPE_ID department = newDepartment();
    const QHash<QString, QString> edits = editedProperties();
    if (!worker.isValid() || (department == 0 && edits.isEmpty()))
        return {};
    vorandel::ObjectInfo changed;
    changed.uid = worker.uid;
    changed.type = worker.type;
    changed.parent = department != 0 ? department : worker.parent;
    changed.parameters = edits;
    vorandel::OBJECT_HASH objects;
    objects.insert(changed.uid, changed);
    return objects;
}

void WorkerJobView::saved(vorandel::TYPE_ID uid)
{
    const vorandel::TYPE_ID department = newDepartment();
    PropertyBaseWidget::saved(uid);
    if (uid == 0 || department == 0 || currentObject().uid != uid)
        return;
    vorandel::ObjectInfo moved = currentObject();
    moved.parent = department;
    vorandel::OBJECT_HASH objects;
    objects.insert(uid, moved);
    setCurrent(objects);
}

vorandel::TYPE_ID WorkerJobView::newDepartment() const
{
    const vorandel::TYPE_ID chosen = ui->departmentSelector->currentUid();
    return chosen != 0 && chosen != currentObject().parent ? chosen : 0;
}

vorandel::TYPE_ID WorkerJobView::currentJob() const
{
    return currentObject().parameters.value(JobKey).toUInt();
}

void WorkerJobView::showJob(vorandel::TYPE_ID job)
{
    // A job that the list doesn't hold is kept under its number rather than silently dropped.
    int index = ui->jobCombo->findData(job);
    if (index < 0) {
        ui->jobCombo->addItem(tr("Должность № %1").arg(job), job);
        index = ui->jobCombo->count() - 1;
    }
    ui->jobCombo->setCurrentIndex(index);
}
