#pragma once

#include "vdcombobox.h"

#include <QPersistentModelIndex>
#include <QPointer>
#include <QVector>

class QTreeView;

// A combo box whose pop-up is a tree: any node of a hierarchical model can be chosen, not only
// the top rows, by mouse or by keyboard (arrows move through the nodes in the order of the tree,
// also while the box is closed; letters jump to the next node of that initial). The pop-up shows
// the tree below the default root (the whole tree when it is invalid); the closed box shows the
// chosen node's name.
//
// The choice is the node, not a row of the combo box: currentIndex() of QComboBox stays -1, and
// currentModelIndex() is what counts. Set the model through this class's setModel.
class VDPLATFORM_EXPORT VDTreeBox : public VDComboBox
{
    Q_OBJECT
public:
    explicit VDTreeBox(QWidget* parent = nullptr);
    ~VDTreeBox() override;

    void setModel(QAbstractItemModel* model);

    void setDefaultRootIndex(const QModelIndex& index);
    QModelIndex defaultRootIndex() const;
    // The chosen node, anywhere in the tree; invalid when nothing is chosen.
    QModelIndex currentModelIndex() const;
    void setCurrentModelIndex(const QModelIndex& index);

    bool hasChoice() const override;
    void showPopup() override;
    void clearSelection() override;

signals:
    // The chosen node changed (also to none, and when it left the model).
    void currentModelIndexChanged(const QModelIndex& index);

protected:
    QTreeView* treeView() const { return m_tree; }

    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void initLabel(QStyleOptionComboBox* option) const override;

    // The chosen node has gone from the model (removed, filtered out, or the model was reset).
    // By default the choice becomes none.
    virtual void currentLost();
    // The model has changed its rows or its layout.
    virtual void modelChanged();

private:
    void pick(const QModelIndex& index);
    void keepComboEmpty();
    void checkCurrent();
    // Every node below the default root, in the order of the tree.
    QVector<QModelIndex> nodesInOrder() const;
    void moveBy(int step);
    void jumpToInitial(const QString& text);

    QTreeView* m_tree = nullptr;
    QPersistentModelIndex m_defaultRoot;
    QPersistentModelIndex m_current;
    bool m_hasCurrent = false;        // m_current was set to a valid node and not lost since
    bool m_pressedInPopup = false;    // a release only chooses after a press inside the pop-up
    QPointer<QAbstractItemModel> m_watched;
    QVector<QMetaObject::Connection> m_modelConnections;
};
