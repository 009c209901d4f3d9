#pragma once

#include "vdcombobox.h"

#include <QPersistentModelIndex>

class QTreeView;

// A combo box whose pop-up is a tree: any node of a hierarchical model can be chosen, not only
// the top rows. The pop-up shows the tree below the default root (the whole tree when it is
// invalid).
class VDPLATFORM_EXPORT VDTreeBox : public VDComboBox
{
    Q_OBJECT
public:
    explicit VDTreeBox(QWidget* parent = nullptr);
    ~VDTreeBox() override;

    void setDefaultRootIndex(const QModelIndex& index);
    QModelIndex defaultRootIndex() const;
    // The chosen node, anywhere in the tree; invalid when nothing is chosen.
    QModelIndex currentModelIndex() const;
    void setCurrentModelIndex(const QModelIndex& index);

    void showPopup() override;
    void clearSelection() override;

signals:
    // The chosen node changed (also to none).
    void currentModelIndexChanged(const QModelIndex& index);

protected:
    QTreeView* treeView() const { return m_tree; }

private:
    QTreeView* m_tree = nullptr;
    QPersistentModelIndex m_defaultRoot;
    QPersistentModelIndex m_current;
};
