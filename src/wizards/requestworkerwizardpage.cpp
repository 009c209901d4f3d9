#include "requestworkerwizardpage.h"

#include "ui_requestworkerwizardpage.h"

#include "constants.h"
#include "emptytextvalidator.h"
#include "grantedproxymodel.h"
#include "localstorage.h"
#include "requestviewlogging.h"
#include "requestworkercontentsfactory.h"
#include "requiredlabels.h"
#include "vdguiglobals.h"

#include <QDate>

using namespace vorandel;

namespace {

const QString KeyWorkerNumber = QStringLiteral("PT_WORKERNUM");
const QString KeySurname = QStringLiteral("PT_SURNAME");
const QString KeyName = QStringLiteral("PT_NAME");
const QString KeyPatronymic = QStringLiteral("PT_PATRONYMIC");
const QString KeyBirthday = QStringLiteral("PT_BIRTHDAY");
const QString KeyDateBegin = QStringLiteral("PT_DATE_BEGIN");
const QString KeyPhoto = QStringLiteral("PT_PHOTO");
const QString KeyPhotoPreview = QStringLiteral("PT_PHOTO_PREVIEW");

const QDate BirthdayUnknown(2000, 1, 1);

// The worker of that uid, or an empty record.
const ObjectInfo& storedWorker(TYPE_ID uid)
{
    return LocalStorage::instance()->constObject(uid, SUBJECT_DATANAME);
}

void insertUnlessEmpty(QHash<QString, QString>& properties, const QString& key, const QString& value)
{
    if (!value.isEmpty())
        properties.insert(key, value);
}

}  // namespace

RequestWorkerWizardPage::RequestWorkerWizardPage(QWidget* parent)
    : VDWizardPage(parent), ui(std::make_unique<Ui_RequestWorkerWizardPage>())
{
    ui->setupUi(this);
    requestview::markRequired({ui->label_6, ui->label_9, ui->label_14, ui->lbNewWorker});
    ui->lbNewWorker->hide();

    ui->leSurname->setValidator(new EmptyTextValidator(ui->leSurname));
    ui->leSurname->setEmptyTextAllowed(false);
    ui->leSurname->highlightValidation(true);

    for (QLineEdit* field : {static_cast<QLineEdit*>(ui->leWorkernum), static_cast<QLineEdit*>(ui->leSurname),
                             static_cast<QLineEdit*>(ui->leName), static_cast<QLineEdit*>(ui->lePatronymic)}) {
        connect(field, &QLineEdit::textEdited, this, &RequestWorkerWizardPage::manualEdit);
        connect(field, &QLineEdit::textChanged, this, &QWizardPage::completeChanged);
    }
    connect(ui->cbDepartment, &VDObjectSelector::currentDataChanged, this, &QWizardPage::completeChanged);

    LocalStorage* store = LocalStorage::instance();
    ui->leWorkernum->setSearcher(store->index(SUBJECT_WORKERNUM_INDEX));
    ui->leWorkernum->setMenuFactory(new RequestWorkerContentsFactory);
    ui->leSurname->setSearcher(store->index(SUBJECT_SURNAME_INDEX));
    ui->leSurname->setMenuFactory(new RequestWorkerContentsFactory);
    connect(ui->leWorkernum, &PromptMenuEdit::found, this, &RequestWorkerWizardPage::selected);
    connect(ui->leSurname, &PromptMenuEdit::found, this, &RequestWorkerWizardPage::selected);

    initDepartmentSelectors();

    const bool denied = photosDenied();
    ui->photoWidget->setDefaultPixmap(QPixmap(denied ? QStringLiteral(":/accessctl/fz152")
                                                     : QStringLiteral(":/accessctl/no_photo")));
    ui->photoWidget->setEnabled(!denied);

    connect(ui->deBirthday, &QDateTimeEdit::dateTimeChanged, this, &RequestWorkerWizardPage::birthdayEdited);
    initScanPassportButton();
}

RequestWorkerWizardPage::~RequestWorkerWizardPage() = default;

void RequestWorkerWizardPage::initDepartmentSelectors()
{
    const QStringList units{db::orgstructure::SUBJECT_ROOT, db::orgstructure::FIRM, db::orgstructure::DEPARTMENT};
    const auto offerUnits = [&units](VDObjectSelector* selector) {
        auto* proxy = new GrantedProxyModel(selector);
        proxy->setObjectTypeFilter(units);
        selector->setProxyModel(proxy);
        selector->setDataname(ORGSTRUCTURE_DATANAME);
        selector->setDefaultRootIndex(proxy->index(0, 0));
        return proxy;
    };
    offerUnits(ui->cbDepartment);

    const unsigned int department =
        LocalStorage::instance()->dbSettings().value(db::database::DEFAULT_DEPARTMENT, QStringLiteral("0")).toUInt();
    qCDebug(rvc) << "DEFAULT_DEPARTMENT=" << department;
    if (department != 0) {
        qCDebug(rvc) << "Setting DEFAULT_DEPARTMENT";
        ui->cbDepartment->setCurrentUid(department);
    }

    offerUnits(ui->cbDepTo)->setFilterAcceptsParents(true);
}

bool RequestWorkerWizardPage::photosDenied() const
{
    return LocalStorage::instance()->dbSettings().value(db::database::PD_DENY_STORE_USER_PHOTOS)
        == QLatin1String("true");
}

void RequestWorkerWizardPage::initScanPassportButton()
{
    ui->scanWidget->hide();
    if (photosDenied())
        ui->scanWidget->setEnabled(false);
}

bool RequestWorkerWizardPage::isComplete() const
{
    return !ui->leSurname->text().isEmpty() && ui->cbDepartment->currentUid() != 0;
}

bool RequestWorkerWizardPage::validatePage()
{
    manualEdit();
    return true;
}

void RequestWorkerWizardPage::setUid(unsigned int uid)
{
    this->uid = uid;
    ui->lbNewWorker->setVisible(uid != 0);
}

unsigned int RequestWorkerWizardPage::subjectUid() const
{
    return uid;
}

unsigned int RequestWorkerWizardPage::parentUid() const
{
    return ui->cbDepartment->currentUid();
}

void RequestWorkerWizardPage::selected(TYPE_ID uid)
{
    if (!LocalStorage::instance()->constObjects(SUBJECT_DATANAME) || uid == 0) {
        this->uid = 0;
        ui->lbNewWorker->show();
        ui->cbDepartment->setEnabled(true);
        return;
    }
    this->uid = uid;
    const ObjectInfo& worker = storedWorker(uid);
    const QHash<QString, QString>& parameters = worker.parameters;
    ui->leWorkernum->setText(parameters.value(KeyWorkerNumber));
    ui->leSurname->setText(parameters.value(KeySurname));
    ui->leName->setText(parameters.value(KeyName));
    ui->lePatronymic->setText(parameters.value(KeyPatronymic));
    ui->leDocType->setText(parameters.value(db::pass_request::DOC_TYPE));
    ui->leDocSeries->setText(parameters.value(db::pass_request::DOC_SERIES));
    ui->leDocNumber->setText(parameters.value(db::pass_request::DOC_NUMBER));
    ui->leCarBrand->clear();
    ui->leCarType->clear();
    ui->leCarNumber->clear();
    ui->cbDepartment->setCurrentUid(worker.parent);

    // The field shows the day the worker was taken on, which is what a new worker's record gets
    // in this key; putting it in is not the operator's edit.
    const QDate date = QDate::fromString(parameters.value(KeyDateBegin), Qt::ISODate);
    disconnect(ui->deBirthday, &QDateTimeEdit::dateTimeChanged, this, &RequestWorkerWizardPage::birthdayEdited);
    birthdayChanged = date.isValid();
    ui->deBirthday->setDate(date.isValid() ? date : BirthdayUnknown);
    connect(ui->deBirthday, &QDateTimeEdit::dateTimeChanged, this, &RequestWorkerWizardPage::birthdayEdited);

    ui->lbNewWorker->hide();
    ui->cbDepartment->setEnabled(false);
    emit completeChanged();
}

void RequestWorkerWizardPage::manualEdit()
{
    if (!LocalStorage::instance()->constObjects(SUBJECT_DATANAME)) {
        uid = 0;
        ui->lbNewWorker->show();
        return;
    }
    const QHash<QString, QString>& parameters = storedWorker(uid).parameters;
    const bool same = ui->leWorkernum->text() == parameters.value(KeyWorkerNumber)
        && ui->leSurname->text() == parameters.value(KeySurname) && ui->leName->text() == parameters.value(KeyName)
        && ui->lePatronymic->text() == parameters.value(KeyPatronymic);
    // One changed letter makes a new person; the department stays as the picked worker's.
    if (!same) {
        uid = 0;
        ui->lbNewWorker->show();
    } else {
        ui->lbNewWorker->hide();
    }
}

void RequestWorkerWizardPage::birthdayEdited()
{
    birthdayChanged = true;
}

QHash<QString, QString> RequestWorkerWizardPage::subjectProperties() const
{
    QHash<QString, QString> properties;
    insertUnlessEmpty(properties, KeyWorkerNumber, ui->leWorkernum->text());
    properties.insert(KeySurname, ui->leSurname->text());
    insertUnlessEmpty(properties, KeyName, ui->leName->text());
    insertUnlessEmpty(properties, KeyPatronymic, ui->lePatronymic->text());
    if (!photosDenied() && ui->photoWidget->isPhotoSet()) {
        const QImage photo = ui->photoWidget->pixmap().toImage();
        const QImage preview = photo.scaled(64, 64, Qt::KeepAspectRatio, Qt::FastTransformation);
        properties.insert(KeyPhoto, QString::fromLatin1(VDGuiGlobals::imageToDB(photo, 50)));
        properties.insert(KeyPhotoPreview, QString::fromLatin1(VDGuiGlobals::imageToDB(preview, 45)));
    }
    if (birthdayChanged)
        properties.insert(KeyBirthday, ui->deBirthday->date().toString(Qt::ISODate));
    if (uid == 0) {
        insertUnlessEmpty(properties, db::pass_request::DOC_TYPE, ui->leDocType->text());
        insertUnlessEmpty(properties, db::pass_request::DOC_SERIES, ui->leDocSeries->text());
        insertUnlessEmpty(properties, db::pass_request::DOC_NUMBER, ui->leDocNumber->text());
        properties.insert(KeyDateBegin, QDate::currentDate().toString(Qt::ISODate));
    }
    return properties;
}

QHash<QString, QString> RequestWorkerWizardPage::requestProperties() const
{
    QHash<QString, QString> properties;
    properties.insert(KeySurname, ui->leSurname->text());
    insertUnlessEmpty(properties, KeyName, ui->leName->text());
    insertUnlessEmpty(properties, KeyPatronymic, ui->lePatronymic->text());
    insertUnlessEmpty(properties, db::pass_request::DOC_TYPE, ui->leDocType->text());
    insertUnlessEmpty(properties, db::pass_request::DOC_SERIES, ui->leDocSeries->text());
    insertUnlessEmpty(properties, db::pass_request::DOC_NUMBER, ui->leDocNumber->text());
    insertUnlessEmpty(properties, QStringLiteral("PT_CAR_TYPE"), ui->leCarType->text());
    insertUnlessEmpty(properties, QStringLiteral("PT_CAR_BRAND"), ui->leCarBrand->text());
    insertUnlessEmpty(properties, QStringLiteral("PT_CAR_NUMBER"), ui->leCarNumber->text());
    insertUnlessEmpty(properties, db::pass_request::EXTRA_INFO, ui->descriptionEdit->toPlainText());
    if (ui->cbNeedDismissLinked->isChecked())
        properties.insert(db::pass_request::DISMISS_LINKED, QStringLiteral("true"));
    insertUnlessEmpty(properties, db::database::PASS_FROM_ORGANIZATION, ui->leFromOrg->text());
    if (const unsigned int department = ui->cbDepTo->currentUid())
        properties.insert(db::database::PASS_TO_DEPARTMENT, QString::number(department));
    return properties;
}
