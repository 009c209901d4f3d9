#include "workerjobview.h"

#include "constants.h"
#include "localstorage.h"
#include "ui_workerjobview.h"
#include "vdglobals.h"

#include <QCollator>

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
    connect(ui->jobCombo, QOverload<int>::of(&QComboBox::activated), this, &PropertyBaseWidget::dataEdited);
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
}

void WorkerJobView::setCurrent(const vorandel::OBJECT_HASH& objects)
{
    PropertyBaseWidget::setCurrent(objects);
    showJob(currentJob());

    const vorandel::ObjectInfo& worker = currentObject();
    const vorandel::LocalStorage* store = vorandel::LocalStorage::instance();
    const QString department = worker.parent
        ? VDGlobals::objectName(store->constObject(worker.parent, vorandel::ORGSTRUCTURE_DATANAME))
        : QString();
    ui->departmentLabel->setText(department.isEmpty() ? QStringLiteral("—") : department);
}

QHash<QString, QString> WorkerJobView::editedProperties() const
{
    const vorandel::TYPE_ID chosen = ui->jobCombo->currentData().toUInt();
    if (!currentObject().isValid() || chosen == currentJob())
        return {};
    return {{JobKey, chosen ? QString::number(chosen) : QString()}};
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
