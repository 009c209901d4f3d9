#include "requestmodel.h"

#include "localstorage.h"
#include "vdglobals.h"
#include "vdguiglobals.h"

#include <QDateTime>

#include <algorithm>

using vorandel::LocalStorage;
using vorandel::ObjectInfo;

namespace {

const char* const headers[RequestModel::ColumnCount] = {
    QT_TRANSLATE_NOOP("RequestModel", "Ид"),
    QT_TRANSLATE_NOOP("RequestModel", "Статус"),
    QT_TRANSLATE_NOOP("RequestModel", "№ заявки"),
    QT_TRANSLATE_NOOP("RequestModel", "Дата оформления"),
    QT_TRANSLATE_NOOP("RequestModel", "Таб. №"),
    QT_TRANSLATE_NOOP("RequestModel", "ФИО"),
    nullptr,
    nullptr,
    QT_TRANSLATE_NOOP("RequestModel", "Дата начала"),
    QT_TRANSLATE_NOOP("RequestModel", "Дата окончания"),
    QT_TRANSLATE_NOOP("RequestModel", "Согласующий"),
    QT_TRANSLATE_NOOP("RequestModel", "Сопровождение"),
    QT_TRANSLATE_NOOP("RequestModel", "Создал"),
    QT_TRANSLATE_NOOP("RequestModel", "Группы доступа"),
    QT_TRANSLATE_NOOP("RequestModel", "Авто: марка"),
    QT_TRANSLATE_NOOP("RequestModel", "Авто: вид"),
    QT_TRANSLATE_NOOP("RequestModel", "Авто: номер"),
    QT_TRANSLATE_NOOP("RequestModel", "Куда (Подразделение)"),
    QT_TRANSLATE_NOOP("RequestModel", "Откуда (Организация)"),
};

// The value of `count` ASCII digits of `text` from `from`, or -1 when one of them is none.
int digits(const QChar* text, int from, int count)
{
    int value = 0;
    for (int i = from; i < from + count; ++i) {
        const ushort c = text[i].unicode();
        if (c < '0' || c > '9')
            return -1;
        value = value * 10 + (c - '0');
    }
    return value;
}

// QDateTime::fromString(text, Qt::ISODate). The store writes its dates as
// "yyyy-MM-ddThh:mm:ss", and reading that form here is twice as fast as Qt's general parser,
// which a sort over every row of the table feels. Any other form, or a value out of range,
// is left to Qt, so the result is always Qt's.
QDateTime isoDateTime(const QString& text)
{
    if (text.size() == 19) {
        const QChar* c = text.constData();
        if (c[4] == QLatin1Char('-') && c[7] == QLatin1Char('-') && c[10] == QLatin1Char('T')
            && c[13] == QLatin1Char(':') && c[16] == QLatin1Char(':')) {
            const int year = digits(c, 0, 4);
            const QDate date(year, digits(c, 5, 2), digits(c, 8, 2));
            const QTime time(digits(c, 11, 2), digits(c, 14, 2), digits(c, 17, 2));
            if (year > 0 && date.isValid() && time.isValid())
                return QDateTime(date, time);
        }
    }
    return QDateTime::fromString(text, Qt::ISODate);
}

const ObjectInfo& user(vorandel::TYPE_ID uid)
{
    return LocalStorage::instance()->constObject(uid, vorandel::USER_DATANAME);
}

const ObjectInfo& creatorOf(const ObjectInfo& request)
{
    return user(request.parameters.value(db::pass_request::CREATOR).toUInt());
}

// A request whose worker is gone looks like one whose worker has been dismissed.
bool workerAbsent(const ObjectInfo& worker)
{
    return worker.uid == 0 || vorandel::isDismissed(worker);
}

// Who decides next: whoever rejected the request, else the confirmer whose turn it is; nobody
// once the whole chain has confirmed. Turns are counted, not matched: the confirmer at index N
// of the chain is next when N have confirmed.
QString confirmerName(const ObjectInfo& request)
{
    const auto& links = request.inherits;
    const auto rejected = links.constFind(vorandel::INHERIT_REJECTED_LIST_PASS_REQUEST);
    if (rejected != links.cend())
        return VDGlobals::objectName(user(rejected->second));
    const int confirmed = links.count(vorandel::INHERIT_CONFIRMED_LIST_PASS_REQUEST);
    if (links.count(vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST) <= confirmed)
        return QString();
    return VDGlobals::objectName(user(RequestModel::confirmChain(request).at(confirmed).second));
}

}  // namespace

RequestModel::RequestModel(QObject* parent) : ObjectTreeModel(parent)
{
    setColumnCount(ColumnCount);
}

QVariant RequestModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        return displayData(index);
    case Qt::DecorationRole:
        if (column == StateColumn)
            return iconByStatus(ObjectTreeModel::data(index, Qt::EditRole).toInt());
        if (column == NameColumn)
            return icon(workerAbsent(workerOf(storedRequest(index))) ? DismissedWorkerIcon : WorkerIcon);
        if (column == CreatorColumn && creatorOf(storedRequest(index)).isValid())
            return icon(UserIcon);
        break;
    case Qt::ToolTipRole:
        if (column == StateColumn)
            return stateName(ObjectTreeModel::data(index, Qt::EditRole).toInt());
        break;
    case Qt::BackgroundRole: {
        const QModelIndex state = index.siblingAtColumn(StateColumn);
        const QColor background = backgroundByStatus(ObjectTreeModel::data(state, Qt::EditRole).toInt());
        if (background.isValid())
            return background;
        break;
    }
    case Qt::ForegroundRole:
        if (column == NameColumn && workerAbsent(workerOf(storedRequest(index))))
            return QColor(Qt::darkGray);
        break;
    case Qt::UserRole:
        // The state filter compares the stored text, so that a request without a state
        // (an empty text) can be told from one in state 0.
        if (column == StateColumn)
            return ObjectTreeModel::data(index, Qt::DisplayRole);
        break;
    default:
        break;
    }
    return ObjectTreeModel::data(index, role);
}

QVariant RequestModel::displayData(const QModelIndex& index) const
{
    switch (index.column()) {
    case StateColumn:
        return stateName(ObjectTreeModel::data(index, Qt::EditRole).toInt());
    case CreatedColumn:
    case BeginColumn:
    case EndColumn:
        // A date, not its text: the view formats it and the proxy sorts it as a date.
        return isoDateTime(ObjectTreeModel::data(index, Qt::EditRole).toString());
    case ConfirmerColumn:
        return confirmerName(storedRequest(index));
    case ConvoyColumn: {
        const ObjectInfo& worker = workerOf(storedRequest(index));
        if (worker.isValid())
            return convoyRole(worker);
        break;
    }
    case CreatorColumn: {
        const ObjectInfo& creator = creatorOf(storedRequest(index));
        if (creator.isValid())
            return userText(creator);
        break;
    }
    case AccessGroupsColumn:
        return accessGroupNames(storedRequest(index)).join(QStringLiteral(", "));
    case DepartmentColumn: {
        const vorandel::TYPE_ID department =
            storedRequest(index).parameters.value(db::database::PASS_TO_DEPARTMENT, QStringLiteral("0")).toUInt();
        if (department == 0)
            return QString();
        return VDGlobals::objectName(
            LocalStorage::instance()->constObject(department, vorandel::ORGSTRUCTURE_DATANAME));
    }
    case OrganisationColumn:
        return storedRequest(index).parameters.value(db::database::PASS_FROM_ORGANIZATION);
    default:
        break;
    }
    return ObjectTreeModel::data(index, Qt::DisplayRole);
}

bool RequestModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    const bool stored = ObjectTreeModel::setData(index, value, role);
    if (stored && index.column() == StateColumn)
        emit dataChanged(index.siblingAtColumn(0), index.siblingAtColumn(columnCount() - 1), {});
    return stored;
}

QVariant RequestModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal) {
        const bool heading = section == BiometricsColumn || section == CardsColumn;
        switch (role) {
        case Qt::DisplayRole:
            if (heading)
                return {};  // these two show their icons instead
            if (section >= 0 && section < ColumnCount)
                return tr(headers[section]);
            break;
        case Qt::DecorationRole:
            if (heading)
                return icon(section == BiometricsColumn ? BiometricsIcon : CardIcon);
            break;
        case Qt::ToolTipRole:
            if (section == BiometricsColumn)
                return tr("Биометрическая информация");
            if (section == CardsColumn)
                return tr("Карты");
            break;
        default:
            break;
        }
    }
    return ObjectTreeModel::headerData(section, orientation, role);
}

QVariant RequestModel::columnData(const ObjectInfo& info, int column) const
{
    const auto text = [&info](const QString& key) { return QVariant(info.parameters.value(key)); };
    switch (column) {
    case UidColumn:
        return info.uid;
    case StateColumn:
        return text(db::pass_request::STATE);
    case NumberColumn:
        return text(db::pass_request::PASSID);
    case CreatedColumn:
        return text(db::pass_request::CREATE_DATE);
    case BeginColumn:
        return text(QStringLiteral("PT_DATE_BEGIN"));
    case EndColumn:
        return text(QStringLiteral("PT_DATE_END"));
    case CarBrandColumn:
        return text(QStringLiteral("PT_CAR_BRAND"));
    case CarTypeColumn:
        return text(QStringLiteral("PT_CAR_TYPE"));
    case CarNumberColumn:
        return text(QStringLiteral("PT_CAR_NUMBER"));
    default:
        return {};
    }
}

QIcon RequestModel::iconByStatus(int status) const
{
    switch (status) {
    case vorandel::PASS_REQUEST_STATE_NOT_CONFIRMED:
        return icon(NotConfirmedIcon);
    case vorandel::PASS_REQUEST_STATE_REJECTED:
        return icon(RejectedIcon);
    case vorandel::PASS_REQUEST_STATE_CONFIRMED:
    case vorandel::PASS_REQUEST_STATE_CONFIRMED_ALT:
        return icon(ConfirmedIcon);
    case vorandel::PASS_REQUEST_STATE_ACTIVE:
        return icon(ActiveIcon);
    case vorandel::PASS_REQUEST_STATE_FINISHED:
        return icon(FinishedIcon);
    default:
        return {};
    }
}

QColor RequestModel::backgroundByStatus(int status) const
{
    switch (status) {
    case vorandel::PASS_REQUEST_STATE_REJECTED:
        return VDGuiGlobals::eventCategoryColor(4);
    case vorandel::PASS_REQUEST_STATE_ACTIVE:
        return VDGuiGlobals::eventCategoryColor(1);
    default:
        return {};
    }
}

const ObjectInfo& RequestModel::workerOf(const ObjectInfo& request)
{
    return LocalStorage::instance()->constObject(request.parameters.value(QStringLiteral("PT_SUBJECT_ID")).toUInt(),
                                                 vorandel::SUBJECT_DATANAME);
}

QString RequestModel::userText(const ObjectInfo& user)
{
    QString text = VDGlobals::objectName(user);
    const auto& p = user.parameters;
    const QString fullName = QStringLiteral("%1 %2 %3")
                                 .arg(p.value(QStringLiteral("PT_SURNAME")), p.value(QStringLiteral("PT_NAME")),
                                      p.value(QStringLiteral("PT_PATRONYMIC")))
                                 .trimmed();
    if (!fullName.isEmpty())
        text += QStringLiteral(" (%1)").arg(fullName);
    return text;
}

QStringList RequestModel::accessGroupNames(const ObjectInfo& request)
{
    const QString way = request.parameters.value(QStringLiteral("PT_WAY"));
    const QVector<QStringRef> groups = way.splitRef(QLatin1Char(';'), Qt::SkipEmptyParts);
    const LocalStorage* storage = LocalStorage::instance();
    QStringList names;
    names.reserve(groups.size());
    for (const QStringRef& group : groups)
        names.append(VDGlobals::objectName(storage->constObject(group.toUInt(), vorandel::POLICY_DATANAME)));
    std::sort(names.begin(), names.end());
    return names;
}

QList<vorandel::INHERIT_DATA> RequestModel::confirmChain(const ObjectInfo& request)
{
    QList<vorandel::INHERIT_DATA> chain = request.inherits.values(vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST);
    std::sort(chain.begin(), chain.end(), vorandel::SortInheritDataByPriority);
    return chain;
}

const ObjectInfo& RequestModel::storedRequest(const QModelIndex& index) const
{
    const vorandel::OBJECT_HASH* requests = LocalStorage::instance()->constObjects(vorandel::PASS_REQUEST_DATANAME);
    static const ObjectInfo none;
    if (!requests)
        return none;
    return requests->constValue(ObjectTreeModel::data(index.siblingAtColumn(UidColumn), Qt::EditRole).toUInt());
}

const QIcon& RequestModel::icon(Icon which) const
{
    static const char* const names[IconCount] = {
        "common-pause1", "common-cancel", "common-pause",  "common-play",  "common-online",
        "object-OT_WORKER", "object-OT_WORKER-d", "object-OT_USER", "action-finger", "object-OT_CARD",
    };
    const QString theme = QIcon::themeName();
    if (theme != m_iconTheme) {
        m_iconTheme = theme;
        m_icons.fill(QIcon());
    }
    QIcon& icon = m_icons[which];
    if (icon.isNull())
        icon = QIcon::fromTheme(QLatin1String(names[which]));
    return icon;
}

QString RequestModel::stateName(int state) const
{
    const auto name = [state] { return VDGuiGlobals::passRequestStateName(vorandel::PassRequestState(state)); };
    if (state < 0 || state >= int(m_stateNames.size()))
        return name();
    QString& cached = m_stateNames[size_t(state)];
    if (cached.isNull())
        cached = name();
    return cached;
}

QString RequestModel::convoyRole(const ObjectInfo& worker) const
{
    if (m_convoyRoles[0].isNull())
        m_convoyRoles = {tr("Не назначен"), tr("Сопровождаемый"), tr("Сопровождающий")};
    const int role = worker.parameters.value(QStringLiteral("PT_CONVOY_TYPE")).toInt();
    return m_convoyRoles[size_t(role == 1 || role == 2 ? role : 0)];
}
