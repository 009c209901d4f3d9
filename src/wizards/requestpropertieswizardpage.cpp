#include "requestpropertieswizardpage.h"

#include "ui_requestpropertieswizardpage.h"

#include "constants.h"
#include "localstorage.h"
#include "objecttreemodel.h"
#include "objecttreeproxy.h"
#include "requestviewlogging.h"
#include "requiredlabels.h"
#include "styleditemdelegate.h"

#include <QDateTime>
#include <QRegExp>

#include <algorithm>

using namespace vorandel;

namespace {

const QString KeyHidden = QStringLiteral("PT_HIDDEN");

// The macros of a number template. Anything else of their form is dropped.
const QString MacroYear = QStringLiteral("${year}");
const QString MacroMonth = QStringLiteral("${month}");
const QString MacroDay = QStringLiteral("${day}");
const QString MacroNumber = QStringLiteral("${num}");
const QString MacroNumber10 = QStringLiteral("${zero10-num}");
const QString MacroNumber8 = QStringLiteral("${zero8-num}");
const QString MacroNumber6 = QStringLiteral("${zero6-num}");

const QRegExp& anyMacro()
{
    static const QRegExp macro(QStringLiteral("\\$\\{[^\\}]*\\}"), Qt::CaseSensitive, QRegExp::RegExp);
    return macro;
}

QString zeroPadded(qint64 value, int width)
{
    return QStringLiteral("%1").arg(value, width, 10, QLatin1Char('0'));
}

QString zeroPadded(quint64 value, int width)
{
    return QStringLiteral("%1").arg(value, width, 10, QLatin1Char('0'));
}

// The group that a row of a list stands for. The console's lists may carry the uid as the row's
// text and leave naming to the delegate; ours carry the name, and the record behind the row
// knows the uid.
unsigned int groupUid(const QModelIndex& row)
{
    const auto* proxy = qobject_cast<const ObjectTreeProxy*>(row.model());
    if (const auto* objects = proxy ? qobject_cast<const ObjectTreeModel*>(proxy->sourceModel()) : nullptr)
        return objects->info(proxy->mapToSource(row)).uid;
    return row.model()->data(row.siblingAtColumn(0), Qt::DisplayRole).toUInt();
}

}  // namespace

RequestPropertiesWizardPage::RequestPropertiesWizardPage(QWidget* parent)
    : VDWizardPage(parent), ui(std::make_unique<Ui_RequestPropertiesWizardPage>())
{
    ui->setupUi(this);
    requestview::markRequired({ui->label_2, ui->label_8, ui->label_10});
    const QDateTime now = QDateTime::currentDateTime();
    ui->dateBegin->setDateTime(now);
    ui->dateEnd->setDateTime(now);

    connect(ui->lePassId, &QLineEdit::textEdited, this, &QWizardPage::completeChanged);
    connect(ui->dateBegin, &QDateTimeEdit::dateTimeChanged, this, &QWizardPage::completeChanged);
    connect(ui->dateEnd, &QDateTimeEdit::dateTimeChanged, this, &QWizardPage::completeChanged);
    connect(ui->tbAddPolicy, &QToolButton::clicked, this, &RequestPropertiesWizardPage::addPolicy);
    connect(ui->tbRemovePolicy, &QToolButton::clicked, this, &RequestPropertiesWizardPage::removePolicy);
    // A double click moves a group as the buttons do.
    connect(ui->listAvailablePolicies, &QAbstractItemView::doubleClicked, this, &RequestPropertiesWizardPage::addPolicy);
    connect(ui->listSelectedPolicies, &QAbstractItemView::doubleClicked, this, &RequestPropertiesWizardPage::removePolicy);

    setCommitPage(true);
    setButtonText(QWizard::CommitButton, tr("Сохранить"));
    initModels();
}

RequestPropertiesWizardPage::~RequestPropertiesWizardPage() = default;

void RequestPropertiesWizardPage::initModels()
{
    LocalStorage* store = LocalStorage::instance();
    ObjectTreeModel* policies = store->model(POLICY_DATANAME);
    const QList<unsigned int> all = policies->uniqueKeys();

    const auto makeList = [this, policies](QListView* view, const QSet<unsigned int>& uids) {
        auto* proxy = new ObjectTreeProxy(this);
        proxy->setSourceModel(policies);
        proxy->setFilterUids(uids);
        proxy->addParameterFilter(KeyHidden, {QStringLiteral("1"), QStringLiteral("true")},
                                  ObjectTreeProxy::DropMatching);
        proxy->sort(0);
        view->setModel(proxy);
        view->setItemDelegate(new StyledItemDelegate(view));
        return proxy;
    };
    availablePolicies = makeList(ui->listAvailablePolicies, QSet<unsigned int>(all.cbegin(), all.cend()));
    selectedPolicies = makeList(ui->listSelectedPolicies, {});

    ui->cbConfirmList->setDataname(CONFIRM_LIST_DATANAME);
    ui->cbConfirmList->setDefaultRootIndex(QModelIndex());
    ui->cbConfirmList->showClearButton(true);

    if (const OBJECT_HASH* requests = store->constObjects(PASS_REQUEST_DATANAME)) {
        for (const ObjectInfo& request : *requests) {
            const QString number = request.parameters.value(db::pass_request::PASSID);
            if (!number.isEmpty())
                passIds.insert(number);
        }
    }
    ui->lePassId->setText(nextPassId());
}

QString RequestPropertiesWizardPage::nextPassId() const
{
    const QDate today = QDate::currentDate();
    QString text = LocalStorage::instance()->dbSettings().value(db::database::PASS_REQUEST_SEQUENCE);
    text.replace(MacroYear, zeroPadded(qint64(today.year()), 4))
        .replace(MacroMonth, zeroPadded(qint64(today.month()), 2))
        .replace(MacroDay, zeroPadded(qint64(today.day()), 2));

    // From here `text` becomes the pattern, and `result` keeps the number macros to fill.
    QString result = text;
    // The backslash goes first, or it would double the escapes of the others. "$", "{" and "}"
    // stay as they are for the macros; "+", "?" and "|" of the fixed text stay operators.
    for (const char special : {'\\', '.', '*', '^', '(', ')', '[', ']'}) {
        const QChar c = QLatin1Char(special);
        text.replace(c, QStringLiteral("\\%1").arg(c));
    }
    text.replace(MacroNumber, QStringLiteral("(\\d*)"))
        .replace(MacroNumber10, QStringLiteral("(\\d*){10,10}"))
        .replace(MacroNumber8, QStringLiteral("(\\d*){8,8}"))
        .replace(MacroNumber6, QStringLiteral("(\\d*){6,6}"));
    text.remove(anyMacro());

    // Only QRegExp captures a quantified group the way the templates have always been read.
    QRegExp pattern(text, Qt::CaseSensitive, QRegExp::RegExp);
    qCDebug(rvc) << "RequestPropertiesWizardPage::nextPassId" << text << pattern.isValid();

    quint64 highest = 0;
    for (const QString& number : passIds) {
        if (pattern.exactMatch(number))
            highest = std::max(highest, pattern.cap(1).toULongLong(nullptr, 10));
    }
    const quint64 next = highest + 1;

    result.replace(MacroNumber, QString::number(next, 10))
        .replace(MacroNumber10, zeroPadded(next, 10))
        .replace(MacroNumber8, zeroPadded(next, 8))
        .replace(MacroNumber6, zeroPadded(next, 6));
    result.remove(anyMacro());
    return result;
}

bool RequestPropertiesWizardPage::isComplete() const
{
    const QString number = ui->lePassId->text();
    if (number.isEmpty() || passIds.contains(number))
        return false;
    if (selectedPolicies->filterResult().isEmpty())
        return false;
    // Both spans are read as 32-bit seconds: a period of more than 68 years may come out negative.
    const QDateTime end = ui->dateEnd->dateTime();
    if (qint32(ui->dateBegin->dateTime().secsTo(end)) <= 59)
        return false;
    return qint32(QDateTime::currentDateTime().secsTo(end)) > 0;
}

QHash<QString, QString> RequestPropertiesWizardPage::requestProperties() const
{
    QHash<QString, QString> properties;
    properties.insert(db::pass_request::PASSID, ui->lePassId->text());
    properties.insert(QStringLiteral("PT_DATE_BEGIN"), ui->dateBegin->dateTime().toString(Qt::ISODate));
    properties.insert(QStringLiteral("PT_DATE_END"), ui->dateEnd->dateTime().toString(Qt::ISODate));
    properties.insert(db::pass_request::CREATE_DATE, QDateTime::currentDateTime().toString(Qt::ISODate));
    properties.insert(db::pass_request::STATE, QString::number(PASS_REQUEST_STATE_NOT_CONFIRMED));
    if (const unsigned int list = ui->cbConfirmList->currentUid())
        properties.insert(db::pass_request::CONFIRM_LIST, QString::number(list));
    QStringList way;
    const QSet<unsigned int> groups = selectedPolicies->filterResult();
    for (const unsigned int group : groups)
        way.append(QString::number(group));
    properties.insert(QStringLiteral("PT_WAY"), way.join(QLatin1Char(';')));
    return properties;
}

void RequestPropertiesWizardPage::addPolicy()
{
    movePolicies(ui->listAvailablePolicies, availablePolicies, selectedPolicies);
}

void RequestPropertiesWizardPage::removePolicy()
{
    movePolicies(ui->listSelectedPolicies, selectedPolicies, availablePolicies);
}

void RequestPropertiesWizardPage::movePolicies(QListView* from, ObjectTreeProxy* source, ObjectTreeProxy* target)
{
    QSet<unsigned int> uids;
    const QModelIndexList rows = from->selectionModel()->selectedRows(0);
    for (const QModelIndex& row : rows) {
        if (const unsigned int uid = groupUid(row))
            uids.insert(uid);
    }
    source->removeFilterUids(uids);
    target->addFilterUids(uids);
    emit completeChanged();
}
