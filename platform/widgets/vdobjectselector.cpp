#include "vdobjectselector.h"

#include "localstorage.h"
#include "objecttreemodel.h"
#include "objecttreeproxy.h"

VDObjectSelector::VDObjectSelector(QWidget* parent) : VDTreeBox(parent)
{
    connect(this, &VDTreeBox::currentModelIndexChanged, this, &VDObjectSelector::announce);
    connect(this, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &VDObjectSelector::announce);
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
    setModel(m_proxy);
    // A new model puts the combo box on its first row; nothing is chosen until somebody chooses.
    setCurrentIndex(-1);
    setCurrentUid(0);
}

void VDObjectSelector::setCurrentUid(unsigned int uid)
{
    QModelIndex found;
    if (uid != 0 && m_proxy) {
        if (auto* objects = qobject_cast<ObjectTreeModel*>(m_proxy->sourceModel()))
            found = m_proxy->mapFromSource(objects->indexForUid(uid));
    }
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

void VDObjectSelector::announce()
{
    const unsigned int uid = currentUid();
    if (uid == m_announced)
        return;
    m_announced = uid;
    emit currentDataChanged(QVariant(uid));
}
