#pragma once

#include "objectinfo.h"
#include "vdplatform_export.h"

#include <QAbstractProxyModel>
#include <QHash>
#include <QSet>
#include <QStringList>
#include <QVector>

#include <functional>
#include <memory>
#include <vector>

class ObjectTreeModel;

// Sorting and filtering proxy over a list of objects, built for tables of hundreds of thousands
// of rows that change one at a time; and over a tree of objects (an ObjectTreeModel shaped as a
// tree), where every node is filtered by the same rules and sorted among its siblings. Any other
// source is taken as a list of its top-level rows.
//
// A row passes when all filters let it through:
//  - the uid filter (setFilterUids): only rows whose uid is in the set; inactive until first set,
//    and an empty set then passes no row;
//  - the column filters: the value of filterRole() in the column equals one of the values;
//  - the parameter filters (ObjectTreeModel sources): a record's parameter among given values.
//
// In a tree a node is shown when it passes and its parent is shown; with setFilterAcceptsParents
// also when one of its descendants passes, so that the way down to it stays open. Trees are
// small (the organisation structure): each change works out the whole tree anew and tells the
// views only what differs.
//
// A list keeps every source row in a sorted order of all rows, with its sort key computed once
// per change rather than at every comparison. A change of a single row therefore costs one key
// and a binary search, and a new filter re-examines the rows without sorting anything again.
class VDPLATFORM_EXPORT ObjectTreeProxy : public QAbstractProxyModel
{
    Q_OBJECT
public:
    enum ParameterFilterType {
        KeepMatching = 0,  // only objects whose parameter has one of the values
        DropMatching = 1,  // objects whose parameter has one of the values are kept out
    };

    explicit ObjectTreeProxy(QObject* parent = nullptr);
    ~ObjectTreeProxy() override;

    void setSourceModel(QAbstractItemModel* model) override;

    void setFilterUids(const QSet<unsigned int>& uids);
    void addFilterUids(const QSet<unsigned int>& uids);
    void removeFilterUids(const QSet<unsigned int>& uids);
    // The current uid set of the uid filter.
    QSet<unsigned int> filterResult() const;

    // A row passes when the filter role of `column` equals one of `values`; an empty list
    // removes the filter of that column.
    void setColumnFilter(int column, const QStringList& values);
    void addParameterFilter(const QString& name, const QStringList& values, int type);
    void clearParameterFilters();
    // In a tree: a node that doesn't pass is still shown when one of its descendants passes.
    void setFilterAcceptsParents(bool accepts);
    bool filterAcceptsParents() const { return m_acceptsParents; }

    void setFilterRole(int role);
    int filterRole() const { return m_filterRole; }
    void setSortRole(int role);
    int sortRole() const { return m_sortRole; }
    int sortColumn() const { return m_sortColumn; }
    Qt::SortOrder sortOrder() const { return m_sortOrder; }

    // Whether views may offer type-ahead search over this proxy.
    void setSearchEnabled(bool enabled) { m_searchEnabled = enabled; }
    bool isSearchEnabled() const { return m_searchEnabled; }

    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    QModelIndex mapToSource(const QModelIndex& proxyIndex) const override;
    QModelIndex mapFromSource(const QModelIndex& sourceIndex) const override;
    QModelIndex index(int row, int column, const QModelIndex& parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    QModelIndex sibling(int row, int column, const QModelIndex& idx) const override;

protected:
    // Whether a source row passes (its parent is invalid in a list); a subclass adds its own
    // rules and calls this one.
    virtual bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const;
    // The record of a row of an ObjectTreeModel source; a shared invalid one for other sources.
    const vorandel::ObjectInfo& sourceObject(int sourceRow, const QModelIndex& sourceParent) const;
    // Re-examines every row after a rule of a subclass has changed.
    void invalidateFilter();

private:
    struct SortKey
    {
        enum Kind : quint8 { Empty, Number, Text };
        Kind kind = Empty;
        double number = 0;
        QString text;
    };

    unsigned int uidOfRow(int sourceRow, const QModelIndex& sourceParent) const;
    SortKey makeKey(int sourceRow, const QModelIndex& sourceParent = QModelIndex()) const;
    static int compareKeys(const SortKey& a, const SortKey& b);
    bool lessRow(int left, int right) const;  // in the order of the view; ties by source row
    bool isSorted() const;

    void rebuildAll();      // every structure from the source; callers signal
    void resort();          // keys (if stale) and the order of all rows
    void rebuildVisible();  // m_proxyToSource from m_order and m_accepted
    // Runs `change`, which may reorder, show and hide rows (source rows keep their numbers),
    // as one layout change that keeps persistent indexes on their rows.
    void changeLayout(const std::function<void()>& change, LayoutChangeHint hint = NoLayoutChangeHint);
    // Re-examines the given source rows (all with `all`) and publishes what changed.
    void refilter(const QVector<int>& rows, bool all);
    // Turns over the acceptance of the given source rows and tells the views.
    void publishChanged(const QVector<int>& changed);
    void updateRow(int sourceRow, bool keyMayChange, int firstColumn, int lastColumn,
                   const QVector<int>& roles);
    void showRow(int sourceRow);
    void hideRow(int sourceRow);
    int orderIndexOf(int sourceRow) const;  // m_order must be sorted by the current keys
    // `list` is in view order but perhaps at `at`, whose key has just changed: where that
    // element belongs, as an index into the list without it.
    int newPlace(const QVector<int>& list, int at) const;
    void renumber(int fromProxyRow, int toProxyRow);

    void onDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles);
    void onRowsInserted(const QModelIndex& parent, int first, int last);
    void onRowsAboutToBeRemoved(const QModelIndex& parent, int first, int last);
    void onRowsRemoved(const QModelIndex& parent, int first, int last);
    void onModelAboutToBeReset();
    void onModelReset();
    void onLayoutAboutToBeChanged();
    void onLayoutChanged();

    // Tree sources.
    struct TreeNode;
    struct TreeState;
    using WantedTree = QHash<unsigned int, QVector<unsigned int>>;  // parent uid (0: top) -> children
    WantedTree wantedTree() const;
    bool collectWanted(const QModelIndex& sourceParent, unsigned int parentUid, WantedTree& wanted) const;
    void treeRebuild();  // silently; callers signal a reset
    void treeSync();     // brings the shown tree to the wanted one, telling the views
    void treeDrop(TreeNode& parent, const WantedTree& wanted);
    void treeArrange(TreeNode& parent, const WantedTree& wanted);
    std::unique_ptr<TreeNode> treeBuild(unsigned int uid, TreeNode* parent, const WantedTree& wanted);
    void treeForget(const TreeNode& node);
    QModelIndex treeIndex(const TreeNode& node, int column = 0) const;
    TreeNode* treeNode(const QModelIndex& proxyIndex) const;
    void treeSourceDataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles);
    void treeSourceRowsLeaving(const QModelIndex& parent, int first, int last);

    ObjectTreeModel* m_objects = nullptr;  // the source when it is one: uids without data()
    QVector<QMetaObject::Connection> m_connections;

    bool m_uidFilterActive = false;
    QSet<unsigned int> m_uids;
    QHash<int, QSet<QString>> m_columnFilters;
    struct ParameterFilter
    {
        QString name;
        QSet<QString> values;
        int type;
    };
    QVector<ParameterFilter> m_parameterFilters;
    bool m_acceptsParents = false;

    int m_filterRole = Qt::DisplayRole;
    int m_sortRole = Qt::DisplayRole;
    int m_sortColumn = -1;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
    bool m_searchEnabled = false;

    QVector<SortKey> m_keys;          // by source row, for m_sortColumn and m_sortRole
    bool m_keysValid = false;
    QVector<int> m_order;             // all source rows in the order of the view
    QVector<int> m_proxyToSource;     // the rows that pass, in that order
    QVector<int> m_sourceToProxy;     // -1 for a row that doesn't pass
    std::vector<char> m_accepted;     // by source row
    // The uid set before the present one and what it let through, while only the uid set has
    // changed since.
    struct Previous
    {
        QSet<unsigned int> uids;
        std::vector<char> accepted;
        bool valid = false;
    };
    Previous m_previous;
    bool m_resetting = false;

    std::unique_ptr<TreeState> m_tree;  // only over a tree source
};
