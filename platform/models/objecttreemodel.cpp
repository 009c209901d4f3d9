#include "objecttreemodel.h"

#include "vdglobals.h"

ObjectTreeModel::ObjectTreeModel(QObject* parent) : QAbstractItemModel(parent) {}

ObjectTreeModel::~ObjectTreeModel() = default;

QModelIndex ObjectTreeModel::add(const vorandel::ObjectInfo& info)
{
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
    endResetModel();
}

bool ObjectTreeModel::contains(unsigned int uid) const
{
    return m_rowOf.contains(uid);
}

QList<unsigned int> ObjectTreeModel::uniqueKeys() const
{
    QList<unsigned int> uids;
    uids.reserve(m_rows.size());
    for (const vorandel::ObjectInfo& row : m_rows)
        uids.append(row.uid);
    return uids;
}

const vorandel::ObjectInfo& ObjectTreeModel::info(const QModelIndex& index) const
{
    return infoAt(index.isValid() && index.model() == this ? index.row() : -1);
}

const vorandel::ObjectInfo& ObjectTreeModel::infoAt(int row) const
{
    static const vorandel::ObjectInfo invalid;
    return row >= 0 && row < m_rows.size() ? m_rows.at(row) : invalid;
}

unsigned int ObjectTreeModel::uidAt(int row) const
{
    return row >= 0 && row < m_rows.size() ? m_rows.at(row).uid : 0;
}

QModelIndex ObjectTreeModel::indexForUid(unsigned int uid) const
{
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
    if (parent.isValid() || row < 0 || row >= m_rows.size() || column < 0 || column >= m_columns)
        return {};
    return createIndex(row, column);
}

QModelIndex ObjectTreeModel::parent(const QModelIndex&) const
{
    return {};
}

int ObjectTreeModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_rows.size();
}

int ObjectTreeModel::columnCount(const QModelIndex& parent) const
{
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
    const vorandel::ObjectInfo& row = m_rows.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        if (const QVariant* value = handSet(index.row(), index.column()))
            return *value;
        return columnData(row, index.column());
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
    HandSetColumn& cells = m_handSet[index.column()];
    if (index.row() >= cells.values.size()) {
        cells.values.resize(index.row() + 1);  // grows by doubling as rows are filled top down
        cells.isSet.resize(size_t(index.row()) + 1);
    }
    cells.values[index.row()] = value;
    cells.isSet[size_t(index.row())] = true;
    static const QVector<int> roles{Qt::DisplayRole, Qt::EditRole};
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
