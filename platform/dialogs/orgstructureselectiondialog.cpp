#include "orgstructureselectiondialog.h"

#include "constants.h"
#include "grantedproxymodel.h"
#include "localstorage.h"
#include "objecttreemodel.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>

OrgstructureSelectionDialog::OrgstructureSelectionDialog(QWidget* parent)
    : QDialog(parent),
      m_proxy(new GrantedProxyModel(this)),
      m_tree(new QTreeView(this)),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this))
{
    setWindowTitle(tr("Выбор подразделения"));
    m_buttons->button(QDialogButtonBox::Ok)->setText(tr("Выбрать"));
    m_buttons->button(QDialogButtonBox::Cancel)->setText(tr("Отмена"));
    setWindowIcon(QIcon::fromTheme(QStringLiteral("object-OT_DEPARTMENT")));
    resize(420, 480);

    m_proxy->setObjectTypeFilter({db::orgstructure::SUBJECT_ROOT, db::orgstructure::FIRM, db::orgstructure::DEPARTMENT});
    m_proxy->setFilterAcceptsParents(true);
    m_proxy->setSourceModel(vorandel::LocalStorage::instance()->model(vorandel::ORGSTRUCTURE_DATANAME));
    m_proxy->sort(0);

    m_tree->setObjectName(QStringLiteral("orgstructureTree"));
    m_tree->setModel(m_proxy);
    m_tree->header()->hide();
    m_tree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_tree->setSelectionMode(QAbstractItemView::SingleSelection);
    m_tree->expandAll();
    // Units that arrive while the dialog is open show opened as well.
    connect(m_proxy, &QAbstractItemModel::rowsInserted, m_tree, [this](const QModelIndex& parent, int first, int last) {
        for (int row = first; row <= last; ++row)
            m_tree->expandRecursively(m_proxy->index(row, 0, parent));
    });

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_tree);
    layout->addWidget(m_buttons);

    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_tree->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &OrgstructureSelectionDialog::updateButtons);
    connect(m_tree, &QTreeView::doubleClicked, this, [this] {
        if (selected() != 0)
            accept();
    });
    updateButtons();
}

OrgstructureSelectionDialog::~OrgstructureSelectionDialog() = default;

vorandel::TYPE_ID OrgstructureSelectionDialog::selected() const
{
    const QModelIndex current = m_tree->selectionModel()->currentIndex();
    const auto* objects = qobject_cast<const ObjectTreeModel*>(m_proxy->sourceModel());
    if (!current.isValid() || !objects || !m_tree->selectionModel()->isSelected(current))
        return 0;
    return objects->info(m_proxy->mapToSource(current)).uid;
}

void OrgstructureSelectionDialog::setSelected(vorandel::TYPE_ID uid)
{
    const auto* objects = qobject_cast<const ObjectTreeModel*>(m_proxy->sourceModel());
    const QModelIndex index = objects ? m_proxy->mapFromSource(objects->indexForUid(uid)) : QModelIndex();
    m_tree->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    m_tree->scrollTo(index);
}

void OrgstructureSelectionDialog::updateButtons()
{
    m_buttons->button(QDialogButtonBox::Ok)->setEnabled(selected() != 0);
}
