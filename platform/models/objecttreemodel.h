#pragma once

#include "objectinfo.h"
#include "vdplatform_export.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QVector>

#include <memory>
#include <vector>

// Objects, one row per uid, with as many columns as the subclass says. The row keeps a copy of
// its record; cells are worked out from it by columnData() at the moment they are read, unless a
// value was set on the cell by hand.
//
// A model is either a list (the default: every object is a top-level row, as the large tables
// need) or a tree, where an object sits under the object that its `parent` names, when that one
// is in the same model, and at the top otherwise. A tree follows re-parenting, keeps children
// waiting at the top until their parent arrives, and puts the children of a removed object at
// the top. An object is never put under itself or under one of its own descendants.
//
// Roles: display and edit give the hand-set value or columnData(); in a tree, decoration gives
// the icon of the object's type ("object-" and the type, from the theme); Qt::UserRole gives
// columnData() itself; Qt::UserRole + 1 gives the record's parameters as a QVariantHash.
class VDPLATFORM_EXPORT ObjectTreeModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    static constexpr int ParametersRole = Qt::UserRole + 1;

    enum Shape { List, Tree };

    explicit ObjectTreeModel(QObject* parent = nullptr);
    explicit ObjectTreeModel(Shape shape, QObject* parent = nullptr);
    ~ObjectTreeModel() override;

    Shape shape() const { return m_tree ? Tree : List; }

    // Adds a row for the record, or replaces the record of the row of its uid (hand-set cells
    // stay; in a tree the row moves when the record names another parent). Returns the row's
    // index in column 0.
    QModelIndex add(const vorandel::ObjectInfo& info);
    // Drops the row of that uid.
    void remove(unsigned int uid);
    void clear();

    bool contains(unsigned int uid) const;
    // Every uid of the model; in a tree, parents before their children.
    QList<unsigned int> uniqueKeys() const;
    // The record of the row, or a shared invalid one.
    const vorandel::ObjectInfo& info(const QModelIndex& index) const;
    // Top-level rows.
    const vorandel::ObjectInfo& infoAt(int row) const;
    unsigned int uidAt(int row) const;
    // The row of that uid, at any depth; invalid when there is none.
    QModelIndex indexForUid(unsigned int uid) const;

    void setColumnCount(int columns);

    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    // Stores a display value for a cell (roles display and edit); other roles are refused.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // The value of a cell worked out from the record: the object's name in column 0.
    virtual QVariant columnData(const vorandel::ObjectInfo& info, int column) const;

private:
    struct TreeState;
    struct Node;

    const QVariant* handSet(int row, int column) const;
    // Tree shape.
    QIcon typeIcon(const QString& type) const;
    Node* nodeOf(const QModelIndex& index) const;
    QModelIndex indexOf(const Node& node, int column = 0) const;
    QModelIndex treeAdd(const vorandel::ObjectInfo& info);
    void treeRemove(unsigned int uid);
    // Where a record belongs: the uid of the node to sit under, 0 for the top.
    unsigned int placeOf(const vorandel::ObjectInfo& info) const;
    void moveNode(Node& node, unsigned int under);
    // Children that waited at the top for a parent which is there now.
    void adoptWaiting();

    QVector<vorandel::ObjectInfo> m_rows;
    QHash<unsigned int, int> m_rowOf;
    // Hand-set values of one column by row; the vectors may stop short of the last rows. Kept by
    // column, a subclass that sets a few cells of every row of a large list costs no allocation
    // per row.
    struct HandSetColumn
    {
        QVector<QVariant> values;
        std::vector<bool> isSet;  // an invalid value may be set by hand too
    };
    QHash<int, HandSetColumn> m_handSet;  // a column nobody sets has none
    int m_columns = 1;
    std::unique_ptr<TreeState> m_tree;  // only in the tree shape; then m_rows stays empty
};
