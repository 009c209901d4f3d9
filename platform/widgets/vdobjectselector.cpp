#include "vdobjectselector.h"

#include "localstorage.h"
#include "objecttreemodel.h"
#include "objecttreeproxy.h"

#include <QTimer>

VDObjectSelector::VDObjectSelector(QWidget* parent) : VDTreeBox(parent)
{
    connect(this, &VDTreeBox::currentModelIndexChanged, this, &VDObjectSelector::choiceChanged);
}

VDObjectSelector::~VDObjectSelector() = default;

void VDObjectSelector::setProxyModel(ObjectTreeProxy* proxy)
{
    m_proxy = proxy;
    setModel(proxy);
}

ObjectTreeProxy* VDObjectSelector::proxyModel() const
{
    return m_proxy;
}

void VDObjectSelector::setDataname(const QString& dataname)
{
    m_dataname = dataname;
    if (!m_proxy)
        setProxyModel(new ObjectTreeProxy(this));
    m_proxy->setSourceModel(vorandel::LocalStorage::instance()->model(dataname));
    if (m_proxy->sortColumn() < 0)
        m_proxy->sort(0);
    setModel(m_proxy);
    // A new model puts the combo box on its first row; nothing is chosen until somebody chooses.
    setCurrentIndex(-1);
    setCurrentUid(0);
}

QModelIndex VDObjectSelector::indexOfUid(unsigned int uid) const
{
    const auto* objects = m_proxy ? qobject_cast<const ObjectTreeModel*>(m_proxy->sourceModel()) : nullptr;
    if (uid == 0 || !objects)
        return {};
    return m_proxy->mapFromSource(objects->indexForUid(uid));
}

void VDObjectSelector::setCurrentUid(unsigned int uid)
{
    const QModelIndex found = indexOfUid(uid);
    m_lossPending = false;
    m_wanted = found.isValid() ? uid : 0;
    setCurrentModelIndex(found);
    announce();
}

unsigned int VDObjectSelector::currentUid() const
{
    const QModelIndex current = currentModelIndex();
    if (!current.isValid() || !m_proxy)
        return 0;
    const auto* objects = qobject_cast<const ObjectTreeModel*>(m_proxy->sourceModel());
    return objects ? objects->info(m_proxy->mapToSource(current)).uid : 0;
}

void VDObjectSelector::choiceChanged()
{
    if (m_finding)
        return;
    // A choice of the operator or of the program; a loss comes through currentLost instead.
    m_wanted = currentUid();
    m_lossPending = false;
    announce();
}

void VDObjectSelector::currentLost()
{
    // Maybe it has only moved, or it comes back in the next change of the same batch.
    if (findAgain() || m_wanted == 0 || m_lossPending)
        return;
    m_lossPending = true;
    updateClearButton();
    QTimer::singleShot(0, this, &VDObjectSelector::declareLoss);
}

void VDObjectSelector::modelChanged()
{
    VDTreeBox::modelChanged();
    findAgain();
}

bool VDObjectSelector::findAgain()
{
    if (m_wanted == 0 || currentModelIndex().isValid())
        return currentModelIndex().isValid();
    const QModelIndex found = indexOfUid(m_wanted);
    if (!found.isValid())
        return false;
    m_finding = true;
    setCurrentModelIndex(found);
    m_finding = false;
    m_lossPending = false;
    return true;
}

void VDObjectSelector::declareLoss()
{
    if (!m_lossPending)
        return;
    m_lossPending = false;
    emit currentModelIndexChanged({});
}

void VDObjectSelector::announce()
{
    const unsigned int uid = currentUid();
    if (uid == m_announced)
        return;
    m_announced = uid;
    emit currentDataChanged(QVariant(uid));
}
