#include "objecttreeproxy.h"

#include "objecttreemodel.h"

#include <QDateTime>

#include <algorithm>
#include <numeric>

// A shown node of a tree source. Proxy indexes point at their node; a node's place among its
// siblings is `row`.
struct ObjectTreeProxy::TreeNode
{
    unsigned int uid = 0;  // 0 for the invisible node above the top-level rows
    TreeNode* parent = nullptr;
    int row = 0;
    std::vector<std::unique_ptr<TreeNode>> children;
};

struct ObjectTreeProxy::TreeState
{
    TreeNode top;
    QHash<unsigned int, TreeNode*> byUid;
    QSet<unsigned int> leaving;  // source rows about to be removed, already out of the wanted tree
};

namespace {
// Up to this many rows appear or disappear one by one; more make one layout change, which is
// cheaper for the views than thousands of single inserts and keeps selections all the same.
constexpr int SmallChange = 64;
}  // namespace

ObjectTreeProxy::ObjectTreeProxy(QObject* parent) : QAbstractProxyModel(parent) {}

ObjectTreeProxy::~ObjectTreeProxy() = default;

void ObjectTreeProxy::setSourceModel(QAbstractItemModel* model)
{
    beginResetModel();
    for (const auto& connection : qAsConst(m_connections))
        disconnect(connection);
    m_connections.clear();
    QAbstractProxyModel::setSourceModel(model);
    m_objects = qobject_cast<ObjectTreeModel*>(model);
    m_tree.reset(m_objects && m_objects->shape() == ObjectTreeModel::Tree ? new TreeState : nullptr);
    if (model) {
        using M = QAbstractItemModel;
        m_connections << connect(model, &M::dataChanged, this, &ObjectTreeProxy::onDataChanged)
                      << connect(model, &M::rowsInserted, this, &ObjectTreeProxy::onRowsInserted)
                      << connect(model, &M::rowsAboutToBeRemoved, this, &ObjectTreeProxy::onRowsAboutToBeRemoved)
                      << connect(model, &M::rowsRemoved, this, &ObjectTreeProxy::onRowsRemoved)
                      << connect(model, &M::modelAboutToBeReset, this, &ObjectTreeProxy::onModelAboutToBeReset)
                      << connect(model, &M::modelReset, this, &ObjectTreeProxy::onModelReset)
                      << connect(model, &M::columnsAboutToBeInserted, this, &ObjectTreeProxy::onModelAboutToBeReset)
                      << connect(model, &M::columnsInserted, this, &ObjectTreeProxy::onModelReset)
                      << connect(model, &M::columnsAboutToBeRemoved, this, &ObjectTreeProxy::onModelAboutToBeReset)
                      << connect(model, &M::columnsRemoved, this, &ObjectTreeProxy::onModelReset)
                      << connect(model, &M::layoutAboutToBeChanged, this, &ObjectTreeProxy::onLayoutAboutToBeChanged)
                      << connect(model, &M::layoutChanged, this, &ObjectTreeProxy::onLayoutChanged)
                      << connect(model, &M::rowsAboutToBeMoved, this, &ObjectTreeProxy::onLayoutAboutToBeChanged)
                      << connect(model, &M::rowsMoved, this, &ObjectTreeProxy::onLayoutChanged)
                      << connect(model, &M::headerDataChanged, this, &ObjectTreeProxy::headerDataChanged);
    }
    m_keysValid = false;
    if (m_tree)
        treeRebuild();
    else
        rebuildAll();
    endResetModel();
}

// --- filters -------------------------------------------------------------------------------

void ObjectTreeProxy::setFilterUids(const QSet<unsigned int>& uids)
{
    // Sets handed on unchanged share their data, and compare in no time.
    if (m_uidFilterActive && uids == m_uids)
        return;
    if (m_tree) {
        m_uids = uids;
        m_uidFilterActive = true;
        return treeSync();
    }
    // A search and then its end hand back the set that was there before. While nothing else has
    // changed, the rows that set let through are known without a lookup per row.
    const bool back = m_previous.valid && uids.size() == m_previous.uids.size() && uids == m_previous.uids;
    Previous before{m_uids, m_accepted, m_uidFilterActive};
    m_uids = uids;
    m_uidFilterActive = true;
    if (back) {
        QVector<int> changed;
        for (int row = 0, rows = int(m_accepted.size()); row < rows; ++row) {
            if (m_accepted[size_t(row)] != m_previous.accepted[size_t(row)])
                changed.append(row);
        }
        publishChanged(changed);
    } else {
        refilter({}, true);
    }
    m_previous = std::move(before);
}

void ObjectTreeProxy::addFilterUids(const QSet<unsigned int>& uids)
{
    m_previous = {};
    m_uids.unite(uids);
    if (!m_uidFilterActive) {
        m_uidFilterActive = true;
        invalidateFilter();
        return;
    }
    QVector<int> rows;
    if (!m_objects)
        return invalidateFilter();
    for (unsigned int uid : uids) {
        const QModelIndex index = m_objects->indexForUid(uid);
        if (index.isValid())
            rows.append(index.row());
    }
    refilter(rows, false);
}

void ObjectTreeProxy::removeFilterUids(const QSet<unsigned int>& uids)
{
    m_previous = {};
    m_uids.subtract(uids);
    if (!m_uidFilterActive) {
        m_uidFilterActive = true;
        invalidateFilter();
        return;
    }
    if (!m_objects)
        return invalidateFilter();
    QVector<int> rows;
    for (unsigned int uid : uids) {
        const QModelIndex index = m_objects->indexForUid(uid);
        if (index.isValid())
            rows.append(index.row());
    }
    refilter(rows, false);
}

QSet<unsigned int> ObjectTreeProxy::filterResult() const
{
    return m_uids;
}

void ObjectTreeProxy::setColumnFilter(int column, const QStringList& values)
{
    if (values.isEmpty()) {
        if (m_columnFilters.remove(column) == 0)
            return;
    } else {
        m_columnFilters.insert(column, QSet<QString>(values.cbegin(), values.cend()));
    }
    invalidateFilter();
}

void ObjectTreeProxy::addParameterFilter(const QString& name, const QStringList& values, int type)
{
    m_parameterFilters.append({name, QSet<QString>(values.cbegin(), values.cend()), type});
    invalidateFilter();
}

void ObjectTreeProxy::setFilterAcceptsParents(bool accepts)
{
    if (accepts == m_acceptsParents)
        return;
    m_acceptsParents = accepts;
    invalidateFilter();
}

void ObjectTreeProxy::clearParameterFilters()
{
    if (m_parameterFilters.isEmpty())
        return;
    m_parameterFilters.clear();
    invalidateFilter();
}

void ObjectTreeProxy::setFilterRole(int role)
{
    if (role == m_filterRole)
        return;
    m_filterRole = role;
    if (!m_columnFilters.isEmpty())
        invalidateFilter();
}

void ObjectTreeProxy::invalidateFilter()
{
    m_previous = {};
    refilter({}, true);
}

bool ObjectTreeProxy::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    if (m_uidFilterActive && !m_uids.contains(uidOfRow(sourceRow, sourceParent)))
        return false;
    for (auto it = m_columnFilters.cbegin(); it != m_columnFilters.cend(); ++it) {
        const QModelIndex cell = sourceModel()->index(sourceRow, it.key(), sourceParent);
        if (!it.value().contains(sourceModel()->data(cell, m_filterRole).toString()))
            return false;
    }
    if (!m_parameterFilters.isEmpty() && m_objects) {
        const auto& parameters = sourceObject(sourceRow, sourceParent).parameters;
        for (const ParameterFilter& filter : m_parameterFilters) {
            const bool matches = filter.values.contains(parameters.value(filter.name));
            if (matches != (filter.type == KeepMatching))
                return false;
        }
    }
    return true;
}

const vorandel::ObjectInfo& ObjectTreeProxy::sourceObject(int sourceRow, const QModelIndex& sourceParent) const
{
    if (m_objects && !sourceParent.isValid())
        return m_objects->infoAt(sourceRow);
    static const vorandel::ObjectInfo invalid;
    return m_objects ? m_objects->info(m_objects->index(sourceRow, 0, sourceParent)) : invalid;
}

unsigned int ObjectTreeProxy::uidOfRow(int sourceRow, const QModelIndex& sourceParent) const
{
    if (m_objects)
        return sourceParent.isValid() ? sourceObject(sourceRow, sourceParent).uid : m_objects->uidAt(sourceRow);
    return sourceModel()->data(sourceModel()->index(sourceRow, 0, sourceParent), Qt::EditRole).toUInt();
}

void ObjectTreeProxy::refilter(const QVector<int>& rows, bool all)
{
    if (m_tree)
        return treeSync();
    const int count = all ? m_accepted.size() : rows.size();
    QVector<int> changed;
    for (int i = 0; i < count; ++i) {
        const int row = all ? i : rows.at(i);
        if (bool(m_accepted[row]) != filterAcceptsRow(row, {}))
            changed.append(row);
    }
    publishChanged(changed);
}

void ObjectTreeProxy::publishChanged(const QVector<int>& changed)
{
    if (changed.isEmpty())
        return;
    if (changed.size() <= SmallChange) {
        for (int row : qAsConst(changed)) {
            m_accepted[row] = !m_accepted[row];
            if (m_accepted[row])
                showRow(row);
            else
                hideRow(row);
        }
        return;
    }
    changeLayout([&] {
        for (int row : qAsConst(changed))
            m_accepted[row] = !m_accepted[row];
        rebuildVisible();
    });
}

// --- sorting -------------------------------------------------------------------------------

void ObjectTreeProxy::setSortRole(int role)
{
    if (role == m_sortRole)
        return;
    m_sortRole = role;
    m_keysValid = false;
    if (isSorted())
        sort(m_sortColumn, m_sortOrder);
}

void ObjectTreeProxy::sort(int column, Qt::SortOrder order)
{
    // The order is kept up to date through every change, so sorting again by the same column
    // would find everything in place.
    if (column == m_sortColumn && order == m_sortOrder && (m_keysValid || !isSorted()))
        return;
    if (column != m_sortColumn)
        m_keysValid = false;
    if (m_tree) {
        m_sortColumn = column;
        m_sortOrder = order;
        m_keysValid = isSorted();  // worked out at each change; nothing is stale
        return treeSync();
    }
    changeLayout(
        [&] {
            m_sortColumn = column;
            m_sortOrder = order;
            resort();
            rebuildVisible();
        },
        VerticalSortHint);
}

bool ObjectTreeProxy::isSorted() const
{
    return m_sortColumn >= 0 && sourceModel() && m_sortColumn < sourceModel()->columnCount();
}

ObjectTreeProxy::SortKey ObjectTreeProxy::makeKey(int sourceRow, const QModelIndex& sourceParent) const
{
    const QVariant value = sourceModel()->data(sourceModel()->index(sourceRow, m_sortColumn, sourceParent), m_sortRole);
    SortKey key;
    switch (value.userType()) {
    case QMetaType::UnknownType:
        break;
    case QMetaType::QDateTime: {
        // Local date and time as they read, without a round trip through time zones.
        const QDateTime dt = value.toDateTime();
        if (dt.isValid()) {
            key.kind = SortKey::Number;
            key.number = double(dt.date().toJulianDay()) * 86400000.0 + dt.time().msecsSinceStartOfDay();
        }
        break;
    }
    case QMetaType::QDate:
        if (value.toDate().isValid()) {
            key.kind = SortKey::Number;
            key.number = double(value.toDate().toJulianDay());
        }
        break;
    case QMetaType::QTime:
        if (value.toTime().isValid()) {
            key.kind = SortKey::Number;
            key.number = value.toTime().msecsSinceStartOfDay();
        }
        break;
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Double:
    case QMetaType::Float:
        key.kind = SortKey::Number;
        key.number = value.toDouble();
        break;
    default:
        key.kind = SortKey::Text;
        key.text = value.toString().toCaseFolded();
        break;
    }
    return key;
}

int ObjectTreeProxy::compareKeys(const SortKey& a, const SortKey& b)
{
    if (a.kind != b.kind)
        return a.kind < b.kind ? -1 : 1;
    switch (a.kind) {
    case SortKey::Empty:
        return 0;
    case SortKey::Number:
        return a.number < b.number ? -1 : (b.number < a.number ? 1 : 0);
    case SortKey::Text:
        return a.text.compare(b.text);
    }
    return 0;
}

bool ObjectTreeProxy::lessRow(int left, int right) const
{
    if (m_keysValid) {
        const int c = compareKeys(m_keys.at(left), m_keys.at(right));
        if (c != 0)
            return m_sortOrder == Qt::AscendingOrder ? c < 0 : c > 0;
    }
    return left < right;
}

int ObjectTreeProxy::orderIndexOf(int sourceRow) const
{
    const auto less = [this](int a, int b) { return lessRow(a, b); };
    return int(std::lower_bound(m_order.cbegin(), m_order.cend(), sourceRow, less) - m_order.cbegin());
}

int ObjectTreeProxy::newPlace(const QVector<int>& list, int at) const
{
    const auto less = [this](int a, int b) { return lessRow(a, b); };
    const int row = list.at(at);
    if (at > 0 && lessRow(row, list.at(at - 1)))
        return int(std::lower_bound(list.cbegin(), list.cbegin() + at, row, less) - list.cbegin());
    if (at + 1 < list.size() && lessRow(list.at(at + 1), row))
        return int(std::lower_bound(list.cbegin() + at + 1, list.cend(), row, less) - list.cbegin()) - 1;
    return at;
}

// --- structures ----------------------------------------------------------------------------

void ObjectTreeProxy::rebuildAll()
{
    m_previous = {};
    const int rows = sourceModel() ? sourceModel()->rowCount() : 0;
    m_accepted.assign(size_t(rows), 0);
    for (int row = 0; row < rows; ++row)
        m_accepted[size_t(row)] = filterAcceptsRow(row, {});
    m_keysValid = false;
    resort();
    rebuildVisible();
}

void ObjectTreeProxy::resort()
{
    const int rows = int(m_accepted.size());
    m_order.resize(rows);
    std::iota(m_order.begin(), m_order.end(), 0);
    if (!isSorted()) {
        m_keys.clear();
        m_keysValid = false;
        return;
    }
    if (!m_keysValid || m_keys.size() != rows) {
        m_keys.resize(rows);
        for (int row = 0; row < rows; ++row)
            m_keys[row] = makeKey(row);
        m_keysValid = true;
    }
    std::sort(m_order.begin(), m_order.end(), [this](int a, int b) { return lessRow(a, b); });
}

void ObjectTreeProxy::rebuildVisible()
{
    m_proxyToSource.clear();
    m_proxyToSource.reserve(m_order.size());
    m_sourceToProxy.fill(-1, m_order.size());
    for (int row : qAsConst(m_order)) {
        if (m_accepted[size_t(row)]) {
            m_sourceToProxy[row] = m_proxyToSource.size();
            m_proxyToSource.append(row);
        }
    }
}

void ObjectTreeProxy::changeLayout(const std::function<void()>& change, LayoutChangeHint hint)
{
    emit layoutAboutToBeChanged({}, hint);
    const QModelIndexList from = persistentIndexList();
    QVector<int> sourceRows;
    sourceRows.reserve(from.size());
    for (const QModelIndex& index : from)
        sourceRows.append(m_proxyToSource.value(index.row(), -1));
    change();
    QModelIndexList to;
    to.reserve(from.size());
    for (int i = 0; i < from.size(); ++i) {
        const int proxyRow = m_sourceToProxy.value(sourceRows.at(i), -1);
        to.append(proxyRow < 0 ? QModelIndex() : index(proxyRow, from.at(i).column()));
    }
    changePersistentIndexList(from, to);
    emit layoutChanged({}, hint);
}

void ObjectTreeProxy::renumber(int fromProxyRow, int toProxyRow)
{
    for (int p = fromProxyRow; p <= toProxyRow && p < m_proxyToSource.size(); ++p)
        m_sourceToProxy[m_proxyToSource.at(p)] = p;
}

void ObjectTreeProxy::showRow(int sourceRow)
{
    const auto less = [this](int a, int b) { return lessRow(a, b); };
    const int at = int(std::lower_bound(m_proxyToSource.cbegin(), m_proxyToSource.cend(), sourceRow, less)
                       - m_proxyToSource.cbegin());
    beginInsertRows({}, at, at);
    m_proxyToSource.insert(at, sourceRow);
    renumber(at, m_proxyToSource.size() - 1);
    endInsertRows();
}

void ObjectTreeProxy::hideRow(int sourceRow)
{
    const int at = m_sourceToProxy.at(sourceRow);
    if (at < 0)
        return;
    beginRemoveRows({}, at, at);
    m_proxyToSource.remove(at);
    m_sourceToProxy[sourceRow] = -1;
    renumber(at, m_proxyToSource.size() - 1);
    endRemoveRows();
}

void ObjectTreeProxy::updateRow(int sourceRow, bool keyMayChange, int firstColumn, int lastColumn,
                                const QVector<int>& roles)
{
    bool moved = false;
    if (keyMayChange && m_keysValid) {
        SortKey key = makeKey(sourceRow);
        const SortKey& old = m_keys.at(sourceRow);
        if (key.kind != old.kind || compareKeys(key, old) != 0) {
            const int at = orderIndexOf(sourceRow);
            m_keys[sourceRow] = std::move(key);
            const int to = newPlace(m_order, at);
            if (to != at) {
                if (to < at)
                    std::rotate(m_order.begin() + to, m_order.begin() + at, m_order.begin() + at + 1);
                else
                    std::rotate(m_order.begin() + at, m_order.begin() + at + 1, m_order.begin() + to + 1);
            }
            moved = true;
        }
    }
    const bool accepted = filterAcceptsRow(sourceRow, {});
    if (accepted != bool(m_accepted[size_t(sourceRow)])) {
        m_accepted[size_t(sourceRow)] = accepted;
        if (accepted)
            showRow(sourceRow);
        else
            hideRow(sourceRow);
        return;
    }
    if (!accepted)
        return;
    int at = m_sourceToProxy.at(sourceRow);
    if (moved) {
        const int to = newPlace(m_proxyToSource, at);
        if (to != at) {
            // A move, not a removal and an insertion: the row stays selected while it travels.
            beginMoveRows({}, at, at, {}, to > at ? to + 1 : to);
            if (to < at)
                std::rotate(m_proxyToSource.begin() + to, m_proxyToSource.begin() + at,
                            m_proxyToSource.begin() + at + 1);
            else
                std::rotate(m_proxyToSource.begin() + at, m_proxyToSource.begin() + at + 1,
                            m_proxyToSource.begin() + to + 1);
            renumber(qMin(at, to), qMax(at, to));
            endMoveRows();
            at = to;
        }
    }
    emit dataChanged(index(at, firstColumn), index(at, lastColumn), roles);
}

// --- source signals ------------------------------------------------------------------------

void ObjectTreeProxy::onDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                    const QVector<int>& roles)
{
    if (m_tree)
        return treeSourceDataChanged(topLeft, bottomRight, roles);
    if (!topLeft.isValid() || topLeft.parent().isValid() || m_resetting)
        return;
    m_previous = {};
    const int first = topLeft.row();
    const int last = qMin(bottomRight.row(), int(m_accepted.size()) - 1);
    const bool keyMayChange = m_keysValid && m_sortColumn >= topLeft.column() && m_sortColumn <= bottomRight.column()
        && (roles.isEmpty() || roles.contains(m_sortRole));
    if (last - first + 1 <= SmallChange) {
        for (int row = first; row <= last; ++row)
            updateRow(row, keyMayChange, topLeft.column(), bottomRight.column(), roles);
        return;
    }
    changeLayout([&] {
        for (int row = first; row <= last; ++row) {
            m_accepted[size_t(row)] = filterAcceptsRow(row, {});
            if (keyMayChange)
                m_keys[row] = makeKey(row);
        }
        resort();
        rebuildVisible();
    });
    if (!m_proxyToSource.isEmpty())
        emit dataChanged(index(0, topLeft.column()), index(m_proxyToSource.size() - 1, bottomRight.column()), roles);
}

void ObjectTreeProxy::onRowsInserted(const QModelIndex& parent, int first, int last)
{
    if (m_tree)
        return treeSync();
    if (parent.isValid() || m_resetting)
        return;
    m_previous = {};
    if (first != int(m_accepted.size())) {
        // Rows in the middle renumber the source rows behind them: start afresh.
        beginResetModel();
        rebuildAll();
        endResetModel();
        return;
    }
    if (last - first + 1 > SmallChange) {
        changeLayout([&] { rebuildAll(); });
        return;
    }
    for (int row = first; row <= last; ++row) {
        m_accepted.push_back(filterAcceptsRow(row, {}));
        m_sourceToProxy.append(-1);
        if (m_keysValid) {
            m_keys.append(makeKey(row));
            const auto less = [this](int a, int b) { return lessRow(a, b); };
            m_order.insert(std::lower_bound(m_order.begin(), m_order.end(), row, less), row);
        } else {
            m_order.append(row);
        }
        if (m_accepted.back())
            showRow(row);
    }
}

void ObjectTreeProxy::onRowsAboutToBeRemoved(const QModelIndex& parent, int first, int last)
{
    if (m_tree)
        return treeSourceRowsLeaving(parent, first, last);
    if (parent.isValid() || m_resetting)
        return;
    beginResetModel();
    m_resetting = true;
}

void ObjectTreeProxy::onRowsRemoved(const QModelIndex& parent, int, int)
{
    if (m_tree) {
        m_tree->leaving.clear();
        return treeSync();
    }
    if (parent.isValid() || !m_resetting)
        return;
    m_resetting = false;
    rebuildAll();
    endResetModel();
}

void ObjectTreeProxy::onModelAboutToBeReset()
{
    if (m_resetting)
        return;
    beginResetModel();
    m_resetting = true;
}

void ObjectTreeProxy::onModelReset()
{
    m_resetting = false;
    m_keysValid = false;
    if (m_tree)
        treeRebuild();
    else
        rebuildAll();
    endResetModel();
}

void ObjectTreeProxy::onLayoutAboutToBeChanged()
{
    // A tree keeps its nodes by uid, which a new layout of the source doesn't touch.
    if (!m_tree)
        onModelAboutToBeReset();
}

void ObjectTreeProxy::onLayoutChanged()
{
    if (m_tree)
        return treeSync();
    onModelReset();
}

// --- the proxy's own model -----------------------------------------------------------------

QModelIndex ObjectTreeProxy::mapToSource(const QModelIndex& proxyIndex) const
{
    if (m_tree) {
        const TreeNode* node = treeNode(proxyIndex);
        const QModelIndex source = node ? m_objects->indexForUid(node->uid) : QModelIndex();
        return source.isValid() ? m_objects->index(source.row(), proxyIndex.column(), source.parent()) : QModelIndex();
    }
    if (!proxyIndex.isValid() || !sourceModel() || proxyIndex.row() >= m_proxyToSource.size())
        return {};
    return sourceModel()->index(m_proxyToSource.at(proxyIndex.row()), proxyIndex.column());
}

QModelIndex ObjectTreeProxy::mapFromSource(const QModelIndex& sourceIndex) const
{
    if (m_tree) {
        if (!sourceIndex.isValid() || sourceIndex.model() != m_objects)
            return {};
        const TreeNode* node = m_tree->byUid.value(m_objects->info(sourceIndex).uid);
        return node ? treeIndex(*node, sourceIndex.column()) : QModelIndex();
    }
    if (!sourceIndex.isValid() || sourceIndex.model() != sourceModel() || sourceIndex.parent().isValid())
        return {};
    const int row = m_sourceToProxy.value(sourceIndex.row(), -1);
    return row < 0 ? QModelIndex() : index(row, sourceIndex.column());
}

QModelIndex ObjectTreeProxy::index(int row, int column, const QModelIndex& parent) const
{
    if (m_tree) {
        // Only column 0 has children.
        const TreeNode* under = parent.isValid() ? (parent.column() == 0 ? treeNode(parent) : nullptr) : &m_tree->top;
        if (!under || row < 0 || row >= int(under->children.size()) || column < 0 || column >= columnCount())
            return {};
        return createIndex(row, column, under->children[size_t(row)].get());
    }
    if (parent.isValid() || row < 0 || row >= m_proxyToSource.size() || column < 0 || column >= columnCount())
        return {};
    return createIndex(row, column);
}

QModelIndex ObjectTreeProxy::parent(const QModelIndex& child) const
{
    const TreeNode* node = m_tree ? treeNode(child) : nullptr;
    if (!node || node->parent == &m_tree->top)
        return {};
    return treeIndex(*node->parent);
}

QModelIndex ObjectTreeProxy::sibling(int row, int column, const QModelIndex& idx) const
{
    return m_tree ? index(row, column, idx.parent()) : index(row, column);
}

int ObjectTreeProxy::rowCount(const QModelIndex& parent) const
{
    if (m_tree) {
        const TreeNode* under = parent.isValid() ? (parent.column() == 0 ? treeNode(parent) : nullptr) : &m_tree->top;
        return under ? int(under->children.size()) : 0;
    }
    return parent.isValid() ? 0 : m_proxyToSource.size();
}

int ObjectTreeProxy::columnCount(const QModelIndex& parent) const
{
    if (m_tree)
        return sourceModel()->columnCount();
    return parent.isValid() || !sourceModel() ? 0 : sourceModel()->columnCount();
}

bool ObjectTreeProxy::hasChildren(const QModelIndex& parent) const
{
    if (m_tree)
        return rowCount(parent) > 0;
    return !parent.isValid() && !m_proxyToSource.isEmpty();
}

QVariant ObjectTreeProxy::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && sourceModel())
        return sourceModel()->headerData(section, orientation, role);
    return QAbstractItemModel::headerData(section, orientation, role);
}

// --- tree sources --------------------------------------------------------------------------

ObjectTreeProxy::TreeNode* ObjectTreeProxy::treeNode(const QModelIndex& proxyIndex) const
{
    if (!proxyIndex.isValid() || proxyIndex.model() != this)
        return nullptr;
    return static_cast<TreeNode*>(proxyIndex.internalPointer());
}

QModelIndex ObjectTreeProxy::treeIndex(const TreeNode& node, int column) const
{
    if (&node == &m_tree->top)
        return {};
    return createIndex(node.row, column, const_cast<TreeNode*>(&node));
}

ObjectTreeProxy::WantedTree ObjectTreeProxy::wantedTree() const
{
    WantedTree wanted;
    collectWanted(QModelIndex(), 0, wanted);
    return wanted;
}

bool ObjectTreeProxy::collectWanted(const QModelIndex& sourceParent, unsigned int parentUid, WantedTree& wanted) const
{
    struct Shown
    {
        int row;
        unsigned int uid;
        SortKey key;
    };
    std::vector<Shown> shown;
    const bool sorted = isSorted();
    const int rows = m_objects->rowCount(sourceParent);
    for (int row = 0; row < rows; ++row) {
        const QModelIndex child = m_objects->index(row, 0, sourceParent);
        const unsigned int uid = m_objects->info(child).uid;
        if (m_tree->leaving.contains(uid))
            continue;
        const bool below = collectWanted(child, uid, wanted);
        if ((below && m_acceptsParents) || filterAcceptsRow(row, sourceParent))
            shown.push_back({row, uid, sorted ? makeKey(row, sourceParent) : SortKey()});
    }
    if (sorted) {
        std::sort(shown.begin(), shown.end(), [this](const Shown& a, const Shown& b) {
            const int c = compareKeys(a.key, b.key);
            if (c != 0)
                return m_sortOrder == Qt::AscendingOrder ? c < 0 : c > 0;
            return a.row < b.row;
        });
    }
    QVector<unsigned int>& children = wanted[parentUid];
    children.reserve(int(shown.size()));
    for (const Shown& entry : shown)
        children.append(entry.uid);
    return !children.isEmpty();
}

void ObjectTreeProxy::treeRebuild()
{
    m_tree->top.children.clear();
    m_tree->byUid.clear();
    const WantedTree wanted = wantedTree();
    for (unsigned int uid : wanted.value(0))
        m_tree->top.children.push_back(treeBuild(uid, &m_tree->top, wanted));
}

std::unique_ptr<ObjectTreeProxy::TreeNode> ObjectTreeProxy::treeBuild(unsigned int uid, TreeNode* parent,
                                                                         const WantedTree& wanted)
{
    auto node = std::make_unique<TreeNode>();
    node->uid = uid;
    node->parent = parent;
    node->row = int(parent->children.size());
    m_tree->byUid.insert(uid, node.get());
    for (unsigned int child : wanted.value(uid))
        node->children.push_back(treeBuild(child, node.get(), wanted));
    return node;
}

void ObjectTreeProxy::treeForget(const TreeNode& node)
{
    const auto it = m_tree->byUid.find(node.uid);
    if (it != m_tree->byUid.end() && it.value() == &node)
        m_tree->byUid.erase(it);
    for (const auto& child : node.children)
        treeForget(*child);
}

void ObjectTreeProxy::treeSync()
{
    // Removals first, everywhere, then moves and insertions: an object that changed its parent
    // leaves its old place before it appears at the new one.
    const WantedTree wanted = wantedTree();
    treeDrop(m_tree->top, wanted);
    treeArrange(m_tree->top, wanted);
}

void ObjectTreeProxy::treeDrop(TreeNode& parent, const WantedTree& wanted)
{
    const QVector<unsigned int> want = wanted.value(parent.uid);
    const QSet<unsigned int> keep(want.cbegin(), want.cend());
    auto& children = parent.children;
    for (int last = int(children.size()) - 1; last >= 0; --last) {
        if (keep.contains(children[size_t(last)]->uid))
            continue;
        int first = last;
        while (first > 0 && !keep.contains(children[size_t(first) - 1]->uid))
            --first;
        beginRemoveRows(treeIndex(parent), first, last);
        for (int row = first; row <= last; ++row)
            treeForget(*children[size_t(row)]);
        children.erase(children.begin() + first, children.begin() + last + 1);
        for (size_t row = size_t(first); row < children.size(); ++row)
            children[row]->row = int(row);
        endRemoveRows();
        last = first;
    }
    for (const auto& child : children)
        treeDrop(*child, wanted);
}

void ObjectTreeProxy::treeArrange(TreeNode& parent, const WantedTree& wanted)
{
    const QVector<unsigned int> want = wanted.value(parent.uid);
    auto& children = parent.children;
    QHash<unsigned int, TreeNode*> present;
    for (const auto& child : children)
        present.insert(child->uid, child.get());

    // What stays keeps its nodes; only its order may have to follow the sorting.
    QVector<TreeNode*> order;
    for (unsigned int uid : want) {
        if (TreeNode* node = present.value(uid))
            order.append(node);
    }
    bool inOrder = true;
    for (int row = 0; row < order.size() && inOrder; ++row)
        inOrder = order.at(row) == children[size_t(row)].get();
    if (!inOrder) {
        const QModelIndex parentIndex = treeIndex(parent);
        emit layoutAboutToBeChanged({parentIndex}, VerticalSortHint);
        QModelIndexList from, to;
        for (const QModelIndex& index : persistentIndexList()) {
            if (treeNode(index) && treeNode(index)->parent == &parent)
                from.append(index);
        }
        std::vector<std::unique_ptr<TreeNode>> arranged;
        for (TreeNode* node : qAsConst(order)) {
            auto it = std::find_if(children.begin(), children.end(), [node](const auto& c) { return c.get() == node; });
            node->row = int(arranged.size());
            arranged.push_back(std::move(*it));
        }
        children = std::move(arranged);
        for (const QModelIndex& index : qAsConst(from))
            to.append(treeIndex(*treeNode(index), index.column()));
        changePersistentIndexList(from, to);
        emit layoutChanged({parentIndex}, VerticalSortHint);
    }

    // The new ones go in by runs, each with its whole subtree.
    QSet<const TreeNode*> fresh;
    for (int at = 0; at < want.size();) {
        if (at < int(children.size()) && children[size_t(at)]->uid == want.at(at)) {
            ++at;
            continue;
        }
        int end = at;
        while (end < want.size() && !present.contains(want.at(end)))
            ++end;
        beginInsertRows(treeIndex(parent), at, end - 1);
        for (int row = at; row < end; ++row) {
            auto node = treeBuild(want.at(row), &parent, wanted);
            fresh.insert(node.get());
            children.insert(children.begin() + row, std::move(node));
        }
        for (size_t row = size_t(at); row < children.size(); ++row)
            children[row]->row = int(row);
        endInsertRows();
        at = end;
    }
    for (const auto& child : children) {
        if (!fresh.contains(child.get()))
            treeArrange(*child, wanted);
    }
}

void ObjectTreeProxy::treeSourceDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                            const QVector<int>& roles)
{
    if (!topLeft.isValid() || m_resetting)
        return;
    treeSync();
    for (int row = topLeft.row(); row <= bottomRight.row(); ++row) {
        const unsigned int uid = m_objects->info(m_objects->index(row, 0, topLeft.parent())).uid;
        if (const TreeNode* node = m_tree->byUid.value(uid))
            emit dataChanged(treeIndex(*node, topLeft.column()), treeIndex(*node, bottomRight.column()), roles);
    }
}

void ObjectTreeProxy::treeSourceRowsLeaving(const QModelIndex& parent, int first, int last)
{
    // They go from the proxy while the source can still tell what they were.
    QVector<QModelIndex> pending;
    for (int row = first; row <= last; ++row)
        pending.append(m_objects->index(row, 0, parent));
    while (!pending.isEmpty()) {
        const QModelIndex index = pending.takeLast();
        m_tree->leaving.insert(m_objects->info(index).uid);
        for (int row = 0, rows = m_objects->rowCount(index); row < rows; ++row)
            pending.append(m_objects->index(row, 0, index));
    }
    treeSync();
}
