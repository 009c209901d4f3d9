#pragma once

#include "vdtreebox.h"

#include <QPointer>
#include <QVariant>

class ObjectTreeProxy;

// Chooses one object of a dataname of the store, from a tree where the objects form one (the
// organisation structure) and from a list otherwise. What is offered is decided by the proxy,
// which the selector makes itself unless it is given one.
class VDPLATFORM_EXPORT VDObjectSelector : public VDTreeBox
{
    Q_OBJECT
public:
    explicit VDObjectSelector(QWidget* parent = nullptr);
    ~VDObjectSelector() override;

    // The proxy between the store's model and the selector; the caller keeps ownership (it
    // usually makes the proxy with the selector as parent). Set it before the dataname.
    void setProxyModel(ObjectTreeProxy* proxy);
    ObjectTreeProxy* proxyModel() const;
    // Offers the objects of this dataname, through the store's model of it.
    void setDataname(const QString& dataname);
    QString dataname() const { return m_dataname; }

    // Chooses the object of that uid; 0, or one not offered, chooses nothing.
    void setCurrentUid(unsigned int uid);
    // The chosen object's uid; 0 when nothing is chosen.
    unsigned int currentUid() const;

signals:
    // The choice changed; the value is the new uid (0 for none).
    void currentDataChanged(const QVariant& uid);

private:
    void announce();

    QPointer<ObjectTreeProxy> m_proxy;
    QString m_dataname;
    unsigned int m_announced = 0;
};
