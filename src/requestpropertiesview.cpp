#include "requestpropertiesview.h"

#include "ui_requestpropertiesview.h"

#include "constants.h"
#include "grantedproxymodel.h"
#include "localstorage.h"
#include "vdglobals.h"

#include <QAction>
#include <QHeaderView>
#include <QMessageBox>
#include <QSignalBlocker>

using namespace vorandel;

namespace {

const QString KeyDateBegin = QStringLiteral("PT_DATE_BEGIN");
const QString KeyDateEnd = QStringLiteral("PT_DATE_END");
const QString KeySubject = QStringLiteral("PT_SUBJECT_ID");
const QString KeyWorkerNumber = QStringLiteral("PT_WORKERNUM");
const QString KeyObjectState = QStringLiteral("PT_OBJECTSTATE");
const QString KeyConvoyType = QStringLiteral("PT_CONVOY_TYPE");
const QString KeyName = QStringLiteral("PT_NAME");

// A request lasts at least this long.
constexpr int MinimumLengthSecs = 60;

// Uids in a ";"-separated list that read as numbers other than 0.
QList<TYPE_ID> convoyUids(const QString& convoy)
{
    QList<TYPE_ID> uids;
    const QStringList parts = convoy.split(QLatin1Char(';'));
    for (const QString& part : parts) {
        if (const TYPE_ID uid = part.toUInt())
            uids.append(uid);
    }
    return uids;
}

}  // namespace

RequestPropertiesView::RequestPropertiesView(QWidget* parent)
    : PropertyBaseWidget(parent), ui(std::make_unique<Ui_RequestPropertiesView>())
{
    ui->setupUi(this);
    ui->groupBoxConvoy->hide();
    ui->tblConvoy->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    ui->tblConvoy->horizontalHeader()->setStretchLastSection(true);

    auto* departments = new GrantedProxyModel(ui->cbDepTo);
    ui->cbDepTo->setProxyModel(departments);
    departments->setObjectTypeFilter(
        {db::orgstructure::SUBJECT_ROOT, db::orgstructure::FIRM, db::orgstructure::DEPARTMENT});
    ui->cbDepTo->setDataname(ORGSTRUCTURE_DATANAME);
    ui->cbDepTo->setDefaultRootIndex(departments->index(0, 0));
    ui->cbDepTo->setCurrentUid(0);

    connect(ui->dtBegin, &QDateTimeEdit::dateTimeChanged, this, &RequestPropertiesView::beginDateChanged);
    connect(ui->dtEnd, &QDateTimeEdit::dateTimeChanged, this, &PropertyBaseWidget::dataEdited);
    for (QLineEdit* edit : {static_cast<QLineEdit*>(ui->leDocType), static_cast<QLineEdit*>(ui->leDocSeries),
                            static_cast<QLineEdit*>(ui->leDocNumber), static_cast<QLineEdit*>(ui->leCarBrand),
                            static_cast<QLineEdit*>(ui->leCarType), static_cast<QLineEdit*>(ui->leCarNumber)})
        connect(edit, &QLineEdit::textEdited, this, &PropertyBaseWidget::dataEdited);
    connect(ui->teAdditions, &QTextEdit::textChanged, this, &PropertyBaseWidget::dataEdited);
    connect(ui->cbDepTo, &VDObjectSelector::currentDataChanged, this, &PropertyBaseWidget::dataEdited);
    // Not textEdited: filling the form may announce an edit here, and changedParameters() sorts
    // out whether anything really differs.
    connect(ui->leOrgFrom, &QLineEdit::textChanged, this, &PropertyBaseWidget::dataEdited);
}

RequestPropertiesView::~RequestPropertiesView() = default;

QString RequestPropertiesView::widgetUid() const
{
    return QStringLiteral("RequestPropertiesView");
}

void RequestPropertiesView::setUid(unsigned int uid)
{
    this->uid = uid;
}

void RequestPropertiesView::setParameters(const QHash<QString, QString>& parameters)
{
    this->parameters = parameters;
    ui->leName->setText(VDGlobals::objectName(db::orgstructure::WORKER, parameters));

    // A request without a worker yet: whoever carries its personnel number may be the one, and
    // his fingerprints are asked for.
    if (parameters.value(KeySubject, QStringLiteral("0")).toUInt() == 0) {
        const QString number = parameters.value(db::pass_request::WORKERNUM);
        QList<TYPE_ID> namesakes;
        if (const OBJECT_HASH* workers = LocalStorage::instance()->constObjects(SUBJECT_DATANAME)) {
            for (auto it = workers->cbegin(); it != workers->cend(); ++it) {
                if (it.value().parameters.value(KeyWorkerNumber) == number)
                    namesakes.append(it.key());
            }
        }
        if (!namesakes.isEmpty())
            emit getWorkerFingers(namesakes);
    }

    {
        const QSignalBlocker blocker(ui->dtBegin);
        ui->dtBegin->setDateTime(QDateTime::fromString(parameters.value(KeyDateBegin), Qt::ISODate));
    }
    {
        const QSignalBlocker blocker(ui->dtEnd);
        ui->dtEnd->setDateTime(QDateTime::fromString(parameters.value(KeyDateEnd), Qt::ISODate));
        ui->dtEnd->setMinimumDateTime(ui->dtBegin->dateTime().addSecs(MinimumLengthSecs));
    }
    ui->leDocType->setText(parameters.value(db::pass_request::DOC_TYPE));
    ui->leDocSeries->setText(parameters.value(db::pass_request::DOC_SERIES));
    ui->leDocNumber->setText(parameters.value(db::pass_request::DOC_NUMBER));
    ui->leCarBrand->setText(parameters.value(QStringLiteral("PT_CAR_BRAND")));
    ui->leCarType->setText(parameters.value(QStringLiteral("PT_CAR_TYPE")));
    ui->leCarNumber->setText(parameters.value(QStringLiteral("PT_CAR_NUMBER")));
    {
        const QSignalBlocker blocker(ui->teAdditions);
        ui->teAdditions->setPlainText(parameters.value(db::pass_request::EXTRA_INFO));
    }
    ui->leOrgFrom->setText(parameters.value(db::database::PASS_FROM_ORGANIZATION));

    // A request without a department leaves the selector as it stands.
    if (const TYPE_ID department = parameters.value(db::database::PASS_TO_DEPARTMENT, QStringLiteral("0")).toUInt())
        ui->cbDepTo->setCurrentUid(department);

    fillConvoy();
}

void RequestPropertiesView::fillConvoy()
{
    // The table isn't cleared: the group is hidden, and a second filling only adds rows nobody sees.
    const LocalStorage* store = LocalStorage::instance();
    const QList<TYPE_ID> convoy = convoyUids(parameters.value(db::pass_request::CONVOY));
    int row = 0;
    for (const TYPE_ID member : convoy) {
        const ObjectInfo& worker = store->constObject(member, SUBJECT_DATANAME);
        const ObjectInfo& department = store->constObject(worker.parent, ORGSTRUCTURE_DATANAME);
        ui->tblConvoy->insertRow(row);
        auto* name = new QTableWidgetItem(VDGlobals::objectName(worker.type, worker.parameters));
        auto* unit = new QTableWidgetItem(VDGlobals::objectName(department));
        name->setFlags(name->flags() & ~Qt::ItemIsEditable);
        unit->setFlags(unit->flags() & ~Qt::ItemIsEditable);
        ui->tblConvoy->setItem(row, 0, name);
        ui->tblConvoy->setItem(row, 1, unit);
        ++row;
    }
}

void RequestPropertiesView::setReadOnly(bool readOnly)
{
    PropertyBaseWidget::setReadOnly(readOnly);
    const QList<QWidget*> children = findChildren<QWidget*>();
    for (QWidget* child : children)
        child->setEnabled(!readOnly);
}

QHash<QString, QString> RequestPropertiesView::changedParameters() const
{
    const QList<QPair<QString, QString>> fields = {
        {KeyDateBegin, ui->dtBegin->dateTime().toString(Qt::ISODate)},
        {KeyDateEnd, ui->dtEnd->dateTime().toString(Qt::ISODate)},
        {db::pass_request::DOC_TYPE, ui->leDocType->text()},
        {db::pass_request::DOC_SERIES, ui->leDocSeries->text()},
        {db::pass_request::DOC_NUMBER, ui->leDocNumber->text()},
        {QStringLiteral("PT_CAR_BRAND"), ui->leCarBrand->text()},
        {QStringLiteral("PT_CAR_TYPE"), ui->leCarType->text()},
        {QStringLiteral("PT_CAR_NUMBER"), ui->leCarNumber->text()},
        {db::pass_request::EXTRA_INFO, ui->teAdditions->toPlainText()},
        {db::database::PASS_FROM_ORGANIZATION, ui->leOrgFrom->text()},
        {db::database::PASS_TO_DEPARTMENT, QString::number(ui->cbDepTo->currentUid())},
    };
    QHash<QString, QString> changed;
    for (const auto& field : fields) {
        if (field.second != parameters.value(field.first))
            changed.insert(field.first, field.second);
    }
    return changed;
}

void RequestPropertiesView::setCurrent(const OBJECT_HASH&) {}

void RequestPropertiesView::applyChanges()
{
    emit saveRequest(uid, db::misc::PASS_REQUEST, 0, changedParameters());
}

void RequestPropertiesView::rejectChanges() {}

void RequestPropertiesView::saved(unsigned int uid)
{
    if (uid == 0)
        return;
    const QHash<QString, QString> changed = changedParameters();
    for (auto it = changed.cbegin(); it != changed.cend(); ++it)
        parameters.insert(it.key(), it.value());
}

void RequestPropertiesView::beginDateChanged()
{
    const QDateTime earliestEnd = ui->dtBegin->dateTime().addSecs(MinimumLengthSecs);
    ui->dtEnd->setMinimumDateTime(earliestEnd);
    if (ui->dtEnd->dateTime() < earliestEnd)
        ui->dtEnd->setDateTime(earliestEnd);
    emit dataEdited();
}

void RequestPropertiesView::workerSaved(TYPE_ID wuid)
{
    emit saveRequest(uid, db::misc::PASS_REQUEST, 0, {{KeySubject, QString::number(wuid)}});
}

void RequestPropertiesView::selectWorkerButtonClicked(QAction* act)
{
    if (!act)
        return;
    emit saveRequest(uid, db::misc::PASS_REQUEST, 0, {{KeySubject, act->data().toString()}});
}

void RequestPropertiesView::createWorkerButtonClicked()
{
    if (!checkWorkerNumUnique())
        return;
    QHash<QString, QString> worker;
    worker.insert(KeyWorkerNumber, parameters.value(db::pass_request::WORKERNUM));
    worker.insert(KeyName, parameters.value(KeyName));
    worker.insert(db::pass_request::LAST_NAME, parameters.value(db::pass_request::LAST_NAME));
    worker.insert(db::pass_request::MIDDLE_NAME, parameters.value(db::pass_request::MIDDLE_NAME));
    worker.insert(KeyObjectState, QString());
    const bool accompanied = !convoyUids(parameters.value(db::pass_request::CONVOY)).isEmpty();
    worker.insert(KeyConvoyType, accompanied ? QStringLiteral("1") : QStringLiteral("0"));
    emit addWorker(parameters.value(KeySubject).toUInt(), worker);
}

bool RequestPropertiesView::checkWorkerNumUnique()
{
    const QString number = parameters.value(db::pass_request::WORKERNUM);
    QStringList holders;
    if (const OBJECT_HASH* workers = LocalStorage::instance()->constObjects(SUBJECT_DATANAME)) {
        for (const ObjectInfo& worker : *workers) {
            if (worker.parameters.value(KeyObjectState).toLower() == QLatin1String("d"))
                continue;
            if (worker.parameters.value(KeyWorkerNumber) == number)
                holders.append(VDGlobals::objectName(worker.type, worker.parameters));
        }
    }
    if (holders.isEmpty())
        return true;
    return QMessageBox::question(this, tr("Совпадение табельных номеров"),
                                 tr("Обнаружено совпадение табельных номеров:\n%1\nПродолжить?")
                                     .arg(holders.join(QStringLiteral(", "))),
                                 QMessageBox::Yes | QMessageBox::No, QMessageBox::No)
        == QMessageBox::Yes;
}

void RequestPropertiesView::fingersReceived(QHash<TYPE_ID, requestview::UserFingers>) {}
