#pragma once

#include "objectinfo.h"
#include "vdplatform_export.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QVector>

#include <vector>


// A list of objects, one row per uid, with as many columns as the subclass says. The row keeps a
// copy of its record; cells are worked out from it by columnData() at the moment they are read,
// unless a value was set on the cell by hand.
//
// Roles: display and edit give the hand-set value or columnData(); Qt::UserRole gives
// columnData() itself; Qt::UserRole + 1 gives the record's parameters as a QVariantHash.
class VDPLATFORM_EXPORT ObjectTreeModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    static constexpr int ParametersRole = Qt::UserRole + 1;

    explicit ObjectTreeModel(QObject* parent = nullptr);
    ~ObjectTreeModel() override;

    // Adds a row for the record, or replaces the record of the row of its uid (hand-set cells
    // stay). Returns the row's index in column 0.
    QModelIndex add(const vorandel::ObjectInfo& info);
    // Drops the row of that uid.
    void remove(unsigned int uid);
    void clear();

    bool contains(unsigned int uid) const;
    QList<unsigned int> uniqueKeys() const;
    // The record of the row, or a shared invalid one.
    const vorandel::ObjectInfo& info(const QModelIndex& index) const;
    const vorandel::ObjectInfo& infoAt(int row) const;
    unsigned int uidAt(int row) const;
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
    const QVariant* handSet(int row, int column) const;

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
};
