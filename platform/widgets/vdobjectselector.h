#pragma once

#include "vdtreebox.h"

#include <QPointer>
#include <QVariant>

class ObjectTreeProxy;

// Chooses one object of a dataname of the store, from a tree where the objects form one (the
// organisation structure) and from a list otherwise. What is offered is decided by the proxy,
// which the selector makes itself unless it is given one.
//
// The choice follows the store: a chosen object that is renamed shows its new name, one that
// moves stays chosen, and one that goes (removed, or no longer offered) leaves the choice empty.
// A change of the store that takes an object away and brings it back at once (a move to another
// parent) isn't taken for a loss: the loss is declared once the changes are over.
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
    // Offers the objects of this dataname, through the store's model of it, sorted by name
    // unless the proxy is sorted already. Chooses nothing.
    void setDataname(const QString& dataname);
    QString dataname() const { return m_dataname; }

    // Chooses the object of that uid, at any depth; 0, or one not offered, chooses nothing.
    void setCurrentUid(unsigned int uid);
    // The chosen object's uid; 0 when nothing is chosen.
    unsigned int currentUid() const;
    // The proxy's index of the object of that uid; invalid when it isn't offered.
    QModelIndex indexOfUid(unsigned int uid) const;

signals:
    // The choice changed; the value is the new uid (0 for none). Once per change, whether the
    // operator, the program or the store made it.
    void currentDataChanged(const QVariant& uid);

protected:
    void currentLost() override;
    void modelChanged() override;

private:
    void choiceChanged();
    void announce();
    // Chooses the wanted object again where it is now; whether it is there.
    bool findAgain();
    void declareLoss();

    QPointer<ObjectTreeProxy> m_proxy;
    QString m_dataname;
    unsigned int m_wanted = 0;     // the object chosen, also while it is away for a moment
    unsigned int m_announced = 0;  // the uid of the last currentDataChanged
    bool m_finding = false;        // choosing again an object that moved
    bool m_lossPending = false;
};
