#include "vdtreebox.h"

#include <QHeaderView>
#include <QTreeView>

VDTreeBox::VDTreeBox(QWidget* parent) : VDComboBox(parent), m_tree(new QTreeView(this))
{
    m_tree->header()->hide();
    m_tree->setItemsExpandable(true);
    m_tree->setRootIsDecorated(true);
    setView(m_tree);
    // QComboBox lists the children of its root index only; the chosen node's parent becomes
    // that root for as long as the node is shown, and the tree is put back when it pops up.
    connect(m_tree, &QTreeView::pressed, this, [this](const QModelIndex& index) { setCurrentModelIndex(index); });
}

VDTreeBox::~VDTreeBox() = default;

void VDTreeBox::setDefaultRootIndex(const QModelIndex& index)
{
    m_defaultRoot = index;
}

QModelIndex VDTreeBox::defaultRootIndex() const
{
    return m_defaultRoot;
}

QModelIndex VDTreeBox::currentModelIndex() const
{
    return m_current;
}

void VDTreeBox::setCurrentModelIndex(const QModelIndex& index)
{
    if (QModelIndex(m_current) == index)
        return;
    m_current = index;
    setRootModelIndex(index.parent());
    setCurrentIndex(index.isValid() ? index.row() : -1);
    emit currentModelIndexChanged(index);
}

void VDTreeBox::showPopup()
{
    setRootModelIndex(m_defaultRoot);
    m_tree->expandAll();
    if (m_current.isValid())
        m_tree->setCurrentIndex(m_current);
    VDComboBox::showPopup();
}

void VDTreeBox::clearSelection()
{
    setCurrentModelIndex(QModelIndex());
}
