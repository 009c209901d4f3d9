#include "objecttreemodel.h"

#include "platformlogging.h"
#include "vdglobals.h"

#include <QIcon>

#include <unordered_map>

// One object of the tree shape. Its index carries the uid of the node it sits under as its
// internal id (0 at the top), which stays the same whatever rows come and go around it.
struct ObjectTreeModel::Node
{
    vorandel::ObjectInfo info;
    unsigned int under = 0;
    int row = 0;  // among the children of `under`
    QVector<unsigned int> children;
    QHash<int, QVariant> handSet;  // by column
};

struct ObjectTreeModel::TreeState
{
    std::unordered_map<unsigned int, Node> nodes;  // node addresses stay put as others come and go
    Node top;                                      // the top-level rows are its children
    QHash<QString, QIcon> icons;                   // by object type

    Node* find(unsigned int uid)
    {
        if (uid == 0)
            return &top;
        const auto it = nodes.find(uid);
        return it == nodes.end() ? nullptr : &it->second;
    }
    const Node* find(unsigned int uid) const { return const_cast<TreeState*>(this)->find(uid); }
    void renumber(const Node& parent, int from)
    {
        for (int row = from; row < parent.children.size(); ++row)
            nodes.at(parent.children.at(row)).row = row;
    }
};

ObjectTreeModel::ObjectTreeModel(QObject* parent) : QAbstractItemModel(parent) {}

ObjectTreeModel::ObjectTreeModel(Shape shape, QObject* parent) : QAbstractItemModel(parent)
{
    if (shape == Tree)
        m_tree = std::make_unique<TreeState>();
}

ObjectTreeModel::~ObjectTreeModel() = default;

QModelIndex ObjectTreeModel::add(const vorandel::ObjectInfo& info)
{
    if (m_tree)
        return treeAdd(info);
    const auto it = m_rowOf.constFind(info.uid);
    if (it != m_rowOf.cend()) {
        const int row = it.value();
        m_rows[row] = info;
        emit dataChanged(index(row, 0), index(row, m_columns - 1));
        return index(row, 0);
    }
    const int row = m_rows.size();
    // A row added at the end moves no persistent index; with nobody listening (the owner fills
    // the model with its signals blocked) there is nothing to announce either.
    const bool announce = !signalsBlocked();
    if (announce)
        beginInsertRows({}, row, row);
    m_rows.append(info);
    m_rowOf.insert(info.uid, row);
    if (announce)
        endInsertRows();
    return index(row, 0);
}

void ObjectTreeModel::remove(unsigned int uid)
{
    if (m_tree)
        return treeRemove(uid);
    const auto it = m_rowOf.constFind(uid);
    if (it == m_rowOf.cend())
        return;
    const int row = it.value();
    beginRemoveRows({}, row, row);
    m_rows.removeAt(row);
    m_rowOf.remove(uid);
    for (HandSetColumn& column : m_handSet) {
        if (row < column.values.size()) {
            column.values.removeAt(row);
            column.isSet.erase(column.isSet.begin() + row);
        }
    }
    for (int r = row; r < m_rows.size(); ++r)
        m_rowOf[m_rows.at(r).uid] = r;
    endRemoveRows();
}

void ObjectTreeModel::clear()
{
    beginResetModel();
    m_rows.clear();
    m_rowOf.clear();
    m_handSet.clear();
    if (m_tree)
        m_tree = std::make_unique<TreeState>();
    endResetModel();
}

bool ObjectTreeModel::contains(unsigned int uid) const
{
    if (m_tree)
        return uid != 0 && m_tree->nodes.count(uid) != 0;
    return m_rowOf.contains(uid);
}

QList<unsigned int> ObjectTreeModel::uniqueKeys() const
{
    QList<unsigned int> uids;
    if (m_tree) {
        uids.reserve(int(m_tree->nodes.size()));
        uids += m_tree->top.children.toList();
        for (int i = 0; i < uids.size(); ++i)  // breadth first: parents come before children
            uids += m_tree->find(uids.at(i))->children.toList();
        return uids;
    }
    uids.reserve(m_rows.size());
    for (const vorandel::ObjectInfo& row : m_rows)
        uids.append(row.uid);
    return uids;
}

const vorandel::ObjectInfo& ObjectTreeModel::info(const QModelIndex& index) const
{
    if (m_tree) {
        static const vorandel::ObjectInfo invalid;
        const Node* node = nodeOf(index);
        return node ? node->info : invalid;
    }
    return infoAt(index.isValid() && index.model() == this ? index.row() : -1);
}

const vorandel::ObjectInfo& ObjectTreeModel::infoAt(int row) const
{
    static const vorandel::ObjectInfo invalid;
    if (m_tree)
        return row >= 0 && row < m_tree->top.children.size() ? m_tree->find(m_tree->top.children.at(row))->info : invalid;
    return row >= 0 && row < m_rows.size() ? m_rows.at(row) : invalid;
}

unsigned int ObjectTreeModel::uidAt(int row) const
{
    if (m_tree)
        return m_tree->top.children.value(row);
    return row >= 0 && row < m_rows.size() ? m_rows.at(row).uid : 0;
}

QModelIndex ObjectTreeModel::indexForUid(unsigned int uid) const
{
    if (m_tree) {
        const Node* node = uid == 0 ? nullptr : m_tree->find(uid);
        return node ? indexOf(*node) : QModelIndex();
    }
    const auto it = m_rowOf.constFind(uid);
    return it == m_rowOf.cend() ? QModelIndex() : index(it.value(), 0);
}

void ObjectTreeModel::setColumnCount(int columns)
{
    columns = qMax(1, columns);
    if (columns == m_columns)
        return;
    if (columns > m_columns) {
        beginInsertColumns({}, m_columns, columns - 1);
        m_columns = columns;
        endInsertColumns();
    } else {
        beginRemoveColumns({}, columns, m_columns - 1);
        m_columns = columns;
        endRemoveColumns();
    }
}

QModelIndex ObjectTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    if (m_tree) {
        // Only column 0 has children.
        const Node* under = parent.isValid() ? (parent.column() == 0 ? nodeOf(parent) : nullptr) : &m_tree->top;
        if (!under || row < 0 || row >= under->children.size() || column < 0 || column >= m_columns)
            return {};
        return createIndex(row, column, quintptr(under == &m_tree->top ? 0 : under->info.uid));
    }
    if (parent.isValid() || row < 0 || row >= m_rows.size() || column < 0 || column >= m_columns)
        return {};
    return createIndex(row, column);
}

QModelIndex ObjectTreeModel::parent(const QModelIndex& child) const
{
    if (!m_tree || !child.isValid() || child.internalId() == 0)
        return {};
    const Node* under = m_tree->find(unsigned(child.internalId()));
    return under ? indexOf(*under) : QModelIndex();
}

int ObjectTreeModel::rowCount(const QModelIndex& parent) const
{
    if (m_tree) {
        if (!parent.isValid())
            return m_tree->top.children.size();
        const Node* node = parent.column() == 0 ? nodeOf(parent) : nullptr;
        return node ? node->children.size() : 0;
    }
    return parent.isValid() ? 0 : m_rows.size();
}

int ObjectTreeModel::columnCount(const QModelIndex& parent) const
{
    if (m_tree)
        return !parent.isValid() || nodeOf(parent) ? m_columns : 0;
    return parent.isValid() ? 0 : m_columns;
}

const QVariant* ObjectTreeModel::handSet(int row, int column) const
{
    const auto cells = m_handSet.constFind(column);
    if (cells == m_handSet.cend() || row >= cells->values.size() || !cells->isSet[size_t(row)])
        return nullptr;
    return &cells->values.at(row);
}

QVariant ObjectTreeModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.model() != this)
        return {};
    const Node* node = m_tree ? nodeOf(index) : nullptr;
    if (m_tree && !node)
        return {};
    const vorandel::ObjectInfo& row = node ? node->info : m_rows.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        if (node) {
            const auto value = node->handSet.constFind(index.column());
            if (value != node->handSet.cend())
                return *value;
        } else if (const QVariant* value = handSet(index.row(), index.column())) {
            return *value;
        }
        return columnData(row, index.column());
    case Qt::DecorationRole:
        // A tree is read by the kind of each node, so each shows the icon of its type.
        if (node && index.column() == 0)
            return typeIcon(row.type);
        return {};
    case Qt::UserRole:
        return columnData(row, index.column());
    case ParametersRole: {
        QVariantHash parameters;
        for (auto it = row.parameters.cbegin(); it != row.parameters.cend(); ++it)
            parameters.insert(it.key(), it.value());
        return parameters;
    }
    default:
        return {};
    }
}

bool ObjectTreeModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || index.model() != this || (role != Qt::DisplayRole && role != Qt::EditRole))
        return false;
    static const QVector<int> roles{Qt::DisplayRole, Qt::EditRole};
    if (m_tree) {
        Node* node = nodeOf(index);
        if (!node)
            return false;
        node->handSet.insert(index.column(), value);
        emit dataChanged(index, index, roles);
        return true;
    }
    HandSetColumn& cells = m_handSet[index.column()];
    if (index.row() >= cells.values.size()) {
        cells.values.resize(index.row() + 1);  // grows by doubling as rows are filled top down
        cells.isSet.resize(size_t(index.row()) + 1);
    }
    cells.values[index.row()] = value;
    cells.isSet[size_t(index.row())] = true;
    emit dataChanged(index, index, roles);
    return true;
}

QVariant ObjectTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    return QAbstractItemModel::headerData(section, orientation, role);
}

Qt::ItemFlags ObjectTreeModel::flags(const QModelIndex& index) const
{
    return index.isValid() ? Qt::ItemIsSelectable | Qt::ItemIsEnabled : Qt::NoItemFlags;
}

QVariant ObjectTreeModel::columnData(const vorandel::ObjectInfo& info, int column) const
{
    if (column == 0)
        return VDGlobals::objectName(info);
    return {};
}

// --- tree shape ----------------------------------------------------------------------------

QIcon ObjectTreeModel::typeIcon(const QString& type) const
{
    auto it = m_tree->icons.find(type);
    if (it == m_tree->icons.end())
        it = m_tree->icons.insert(type, QIcon::fromTheme(QStringLiteral("object-") + type));
    return *it;
}

ObjectTreeModel::Node* ObjectTreeModel::nodeOf(const QModelIndex& index) const
{
    if (!index.isValid() || index.model() != this)
        return nullptr;
    Node* under = m_tree->find(unsigned(index.internalId()));
    if (!under || index.row() >= under->children.size())
        return nullptr;
    return m_tree->find(under->children.at(index.row()));
}

QModelIndex ObjectTreeModel::indexOf(const Node& node, int column) const
{
    return createIndex(node.row, column, quintptr(node.under));
}

unsigned int ObjectTreeModel::placeOf(const vorandel::ObjectInfo& info) const
{
    const unsigned int parent = info.parent;
    if (parent == 0 || parent == info.uid || !m_tree->find(parent))
        return 0;
    // Under one of its own descendants it would hang in the air, cut off from the top.
    for (unsigned int above = parent; above != 0; above = m_tree->find(above)->under) {
        if (above == info.uid)
            return 0;
    }
    return parent;
}

QModelIndex ObjectTreeModel::treeAdd(const vorandel::ObjectInfo& info)
{
    if (info.uid == 0) {
        qCWarning(lcStorage) << "fail: an object without uid has no place in the tree" << info.type;
        return {};
    }
    if (Node* node = m_tree->find(info.uid)) {
        node->info = info;
        const unsigned int under = placeOf(info);
        emit dataChanged(indexOf(*node), indexOf(*node, m_columns - 1));
        if (under != node->under)
            moveNode(*node, under);
        adoptWaiting();
        return indexOf(*node);
    }
    const unsigned int under = placeOf(info);
    Node* parent = m_tree->find(under);
    const QModelIndex parentIndex = under == 0 ? QModelIndex() : indexOf(*parent);
    const int row = parent->children.size();
    beginInsertRows(parentIndex, row, row);
    Node& node = m_tree->nodes[info.uid];
    node.info = info;
    node.under = under;
    node.row = row;
    parent->children.append(info.uid);
    endInsertRows();
    adoptWaiting();
    return indexOf(node);
}

void ObjectTreeModel::adoptWaiting()
{
    QVector<unsigned int> waiting;
    for (unsigned int uid : qAsConst(m_tree->top.children)) {
        if (m_tree->find(uid)->info.parent != 0)
            waiting.append(uid);
    }
    for (unsigned int uid : qAsConst(waiting)) {
        Node& node = *m_tree->find(uid);
        const unsigned int under = placeOf(node.info);
        if (under != 0)
            moveNode(node, under);
    }
}

void ObjectTreeModel::moveNode(Node& node, unsigned int under)
{
    Node& from = *m_tree->find(node.under);
    Node& to = *m_tree->find(under);
    const QModelIndex fromIndex = node.under == 0 ? QModelIndex() : indexOf(from);
    const QModelIndex toIndex = under == 0 ? QModelIndex() : indexOf(to);
    const int row = node.row;
    if (!beginMoveRows(fromIndex, row, row, toIndex, to.children.size()))
        return;
    from.children.remove(row);
    m_tree->renumber(from, row);
    node.under = under;
    node.row = to.children.size();
    to.children.append(node.info.uid);
    endMoveRows();
}

void ObjectTreeModel::treeRemove(unsigned int uid)
{
    Node* node = uid == 0 ? nullptr : m_tree->find(uid);
    if (!node)
        return;
    // Its children stay in the model: they wait at the top, as any child whose parent is missing.
    if (!node->children.isEmpty()) {
        Node& top = m_tree->top;
        const int count = node->children.size();
        beginMoveRows(indexOf(*node), 0, count - 1, QModelIndex(), top.children.size());
        for (unsigned int child : qAsConst(node->children)) {
            Node& moved = *m_tree->find(child);
            moved.under = 0;
            moved.row = top.children.size();
            top.children.append(child);
        }
        node->children.clear();
        endMoveRows();
    }
    Node& parent = *m_tree->find(node->under);
    const int row = node->row;
    beginRemoveRows(node->under == 0 ? QModelIndex() : indexOf(parent), row, row);
    parent.children.remove(row);
    m_tree->renumber(parent, row);
    m_tree->nodes.erase(uid);
    endRemoveRows();
}
