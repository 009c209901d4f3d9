#pragma once

#include "service.h"

#include <QHash>
#include <QString>

#include <set>
#include <tuple>

namespace vdserver {

class ObjectStore;

// The device service: the commands "devices.<operation>", whose payload is the identity that
// results go back to, and then the operation's arguments. A card reader "reads" a card that no
// card of the store carries yet, and the result goes to "command_result:<identity>" a moment
// later, provided the identity is bound to that device for "read_card" by then.
class DeviceService : public Service
{
    Q_OBJECT
public:
    explicit DeviceService(const ObjectStore& store, QObject* parent = nullptr);

    bool handles(const QString& name) const override;
    Reply handle(const Command& query) override;

    // How long a device takes to report.
    void setResultDelay(int msecs) { m_resultDelay = msecs; }

private:
    using Operation = Reply (DeviceService::*)(const QString& identity, QDataStream&);
    static const QHash<QString, Operation>& operations();

    Reply bind(const QString& identity, QDataStream& in);
    Reply unbind(const QString& identity, QDataStream& in);
    Reply readCard(const QString& identity, QDataStream& in);

    Reply unknownDevice(unsigned int device) const;
    bool isBound(const QString& identity, unsigned int device, const QString& command) const;
    // A card as a reader would give it: not stored, with a number that no card carries.
    QByteArray freshCard() const;

    const ObjectStore& m_store;
    // Who listens to which command of which device.
    std::set<std::tuple<QString, unsigned int, QString>> m_bindings;
    int m_resultDelay = 300;
};

}  // namespace vdserver
