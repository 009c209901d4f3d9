#include "baselinetable.h"

#include "benchlogging.h"
#include "constants.h"
#include "eventloop.h"
#include "localstorage.h"
#include "requestmodel.h"
#include "vdglobals.h"
#include "vdguiglobals.h"

#include <QDateTime>
#include <QHeaderView>
#include <QStandardItem>

#include <algorithm>

using namespace vorandel;

namespace {

const QString KeySubject = QStringLiteral("PT_SUBJECT_ID");
const QString KeyDateBegin = QStringLiteral("PT_DATE_BEGIN");
const QString KeyDateEnd = QStringLiteral("PT_DATE_END");

const ObjectInfo& user(TYPE_ID uid)
{
    return LocalStorage::instance()->constObject(uid, USER_DATANAME);
}

QString confirmer(const ObjectInfo& request)
{
    const auto rejected = request.inherits.constFind(INHERIT_REJECTED_LIST_PASS_REQUEST);
    if (rejected != request.inherits.cend())
        return VDGlobals::objectName(user(rejected->second));
    const QList<INHERIT_DATA> chain = RequestModel::confirmChain(request);
    const int confirmed = request.inherits.count(INHERIT_CONFIRMED_LIST_PASS_REQUEST);
    return chain.size() > confirmed ? VDGlobals::objectName(user(chain.at(confirmed).second))
                                    : QString();
}

}  // namespace

BaselineTable::BaselineTable() = default;

BaselineTable::~BaselineTable() = default;

void BaselineTable::load()
{
    m_model.setColumnCount(RequestModel::ColumnCount);
    if (const OBJECT_HASH* requests = LocalStorage::instance()->constObjects(PASS_REQUEST_DATANAME)) {
        for (auto it = requests->cbegin(); it != requests->cend(); ++it)
            appendRow(it.value());
    }
    m_proxy.setUids(visibleUids());
    m_proxy.setSourceModel(&m_model);
    m_view.setModel(&m_proxy);
    for (const int column : {0, 6, 7, 11, 12, 13, 14, 15, 16, 17, 18})
        m_view.setColumnHidden(column, true);
    m_view.horizontalHeader()->setSortIndicator(RequestModel::BeginColumn, Qt::DescendingOrder);
    m_view.setSortingEnabled(true);
    connect(LocalStorage::instance(), &LocalStorage::dataChanged, this, &BaselineTable::storeChanged);
    m_view.resize(1280, 800);
    if (!showUntilPainted(&m_view, m_view.viewport()))
        qCWarning(lcBench) << "fail: the baseline was not painted";
}

void BaselineTable::search(const QString& text)
{
    if (text.isEmpty()) {
        m_proxy.setUids(visibleUids());
        return;
    }
    const QString prefix = text.toLower();
    QSet<TYPE_ID> found;
    for (int row = 0; row < m_model.rowCount(); ++row) {
        if (rowStartsWith(row, prefix))
            found.insert(m_model.item(row, RequestModel::UidColumn)->data(Qt::DisplayRole).toUInt());
    }
    m_proxy.setUids(found.intersect(visibleUids()));
}

void BaselineTable::sort(int column, Qt::SortOrder order)
{
    m_view.sortByColumn(column, order);
}

int BaselineTable::shownRows() const
{
    return m_proxy.rowCount();
}

void BaselineTable::storeChanged(const QString& dataname, const QList<TYPE_ID>& uids)
{
    if (dataname != PASS_REQUEST_DATANAME)
        return;
    for (const TYPE_ID uid : uids) {
        const ObjectInfo& request = LocalStorage::instance()->constObject(uid, PASS_REQUEST_DATANAME);
        const auto row = m_rows.constFind(uid);
        if (row == m_rows.cend()) {
            appendRow(request);
            continue;
        }
        const QVector<QVariant> values = rowValues(request);
        for (int column = 0; column < values.size(); ++column)
            m_model.item(*row, column)->setData(values.at(column), Qt::DisplayRole);
    }
    m_proxy.setUids(visibleUids());
}

QVector<QVariant> BaselineTable::rowValues(const ObjectInfo& request) const
{
    const LocalStorage* store = LocalStorage::instance();
    const auto& p = request.parameters;
    const ObjectInfo& worker = store->constObject(p.value(KeySubject).toUInt(), SUBJECT_DATANAME);
    const auto& w = worker.parameters;
    const auto date = [&p](const QString& key) { return QDateTime::fromString(p.value(key), Qt::ISODate); };

    // Empty text, not an invalid value, where a cell shows nothing: an item would otherwise add
    // and drop its value again at every change.
    QVector<QVariant> values(RequestModel::ColumnCount, QString());
    values[RequestModel::UidColumn] = request.uid;
    values[RequestModel::StateColumn] =
        VDGuiGlobals::passRequestStateName(PassRequestState(p.value(db::pass_request::STATE).toInt()));
    values[RequestModel::NumberColumn] = p.value(db::pass_request::PASSID);
    values[RequestModel::CreatedColumn] = date(db::pass_request::CREATE_DATE);
    values[RequestModel::WorkerNumberColumn] = w.value(QStringLiteral("PT_WORKERNUM"));
    values[RequestModel::NameColumn] =
        QStringLiteral("%1 %2 %3")
            .arg(w.value(QStringLiteral("PT_SURNAME")), w.value(QStringLiteral("PT_NAME")),
                 w.value(QStringLiteral("PT_PATRONYMIC")));
    values[RequestModel::BeginColumn] = date(KeyDateBegin);
    values[RequestModel::EndColumn] = date(KeyDateEnd);
    values[RequestModel::ConfirmerColumn] = confirmer(request);
    if (worker.isValid()) {
        switch (w.value(QStringLiteral("PT_CONVOY_TYPE")).toInt()) {
        case 1:
            values[RequestModel::ConvoyColumn] = tr("Сопровождаемый");
            break;
        case 2:
            values[RequestModel::ConvoyColumn] = tr("Сопровождающий");
            break;
        default:
            values[RequestModel::ConvoyColumn] = tr("Не назначен");
            break;
        }
    }
    const ObjectInfo& creator = user(p.value(db::pass_request::CREATOR).toUInt());
    if (creator.isValid())
        values[RequestModel::CreatorColumn] = RequestModel::userText(creator);
    values[RequestModel::AccessGroupsColumn] = RequestModel::accessGroupNames(request).join(QStringLiteral(", "));
    values[RequestModel::CarBrandColumn] = p.value(QStringLiteral("PT_CAR_BRAND"));
    values[RequestModel::CarTypeColumn] = p.value(QStringLiteral("PT_CAR_TYPE"));
    values[RequestModel::CarNumberColumn] = p.value(QStringLiteral("PT_CAR_NUMBER"));
    const TYPE_ID department = p.value(db::pass_request::TO_DEPARTMENT).toUInt();
    values[RequestModel::DepartmentColumn] =
        department ? VDGlobals::objectName(store->constObject(department, ORGSTRUCTURE_DATANAME)) : QString();
    values[RequestModel::OrganisationColumn] = p.value(db::pass_request::FROM_ORGANIZATION);
    return values;
}

void BaselineTable::appendRow(const ObjectInfo& request)
{
    const QVector<QVariant> values = rowValues(request);
    QList<QStandardItem*> items;
    items.reserve(values.size());
    for (const QVariant& value : values) {
        items.append(new QStandardItem);
        items.last()->setData(value, Qt::DisplayRole);
    }
    m_rows.insert(request.uid, m_model.rowCount());
    m_model.appendRow(items);
}

bool BaselineTable::rowStartsWith(int row, const QString& prefix) const
{
    const auto text = [this, row](int column) { return m_model.item(row, column)->text().toLower(); };
    const QStringList words = text(RequestModel::NameColumn).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (std::any_of(words.cbegin(), words.cend(), [&prefix](const QString& word) { return word.startsWith(prefix); }))
        return true;
    if (text(RequestModel::WorkerNumberColumn).startsWith(prefix)
        || text(RequestModel::NumberColumn).startsWith(prefix))
        return true;
    for (const int column : {RequestModel::BeginColumn, RequestModel::EndColumn}) {
        const QDateTime date = m_model.item(row, column)->data(Qt::DisplayRole).toDateTime();
        if (date.toString(QStringLiteral("dd.MM.yyyy hh:mm:ss")).startsWith(prefix))
            return true;
    }
    return false;
}

QSet<TYPE_ID> BaselineTable::visibleUids()
{
    QSet<TYPE_ID> uids;
    if (const OBJECT_HASH* requests = LocalStorage::instance()->constObjects(PASS_REQUEST_DATANAME)) {
        uids.reserve(requests->size());
        for (auto it = requests->cbegin(); it != requests->cend(); ++it)
            uids.insert(it.key());
    }
    return uids;
}
