#pragma once

#include "objectinfo.h"
#include "service.h"

#include <QHash>
#include <QString>

#include <optional>
#include <set>
#include <tuple>

namespace vdserver {

class ObjectStore;

// The device service: the commands "devices.<operation>", whose payload is the identity that
// results go back to, and then the operation's arguments. The readers are simulated. Left alone, a
// reader "reads" a card that no card of the store carries yet, a moment later. With a card holder
// (setCardHolder), a read waits until somebody holds a card to the reader (presentCard), as a
// real one waits for a card. The result goes to "command_result:<identity>" provided the identity
// is bound to that device for "read_card" by then, and only to the console that asked for the
// read: two consoles may well carry the same identity.
class DeviceService : public Service
{
    Q_OBJECT
public:
    explicit DeviceService(const ObjectStore& store, QObject* parent = nullptr);

    bool handles(const QString& name) const override;
    Reply handle(const Command& query, Peer& from) override;

    // How long a device takes to report.
    void setResultDelay(int msecs) { m_resultDelay = msecs; }

    // Whether somebody holds the cards to the readers; cardWanted tells him when one waits.
    void setCardHolder(bool present) { m_cardHolder = present; }
    // A card held to a reader that waits for one: its number, or 0 for a card that nobody
    // carries yet. Without a number the card is taken away, and the read fails.
    void presentCard(const QString& identity, unsigned int device, std::optional<vorandel::CARD_ID> number);

signals:
    void cardWanted(const QString& identity, unsigned int device);

private:
    using Operation = Reply (DeviceService::*)(const QString& identity, QDataStream&, const Peer& from);
    static const QHash<QString, Operation>& operations();

    Reply bind(const QString& identity, QDataStream& in, const Peer& from);
    Reply unbind(const QString& identity, QDataStream& in, const Peer& from);
    Reply readCard(const QString& identity, QDataStream& in, const Peer& from);

    Reply unknownDevice(unsigned int device) const;
    bool isBound(const QString& identity, unsigned int device, const QString& command) const;
    // A card as a reader would give it: its number only. 0 makes a number that no card carries.
    QByteArray readableCard(vorandel::CARD_ID number) const;
    // Tells the peer of that serial (Peer::serial) what the reader read.
    void reportRead(const QString& identity, unsigned int device, const QHash<QString, QVariant>& result,
                    quint64 peer);

    const ObjectStore& m_store;
    // Who listens to which command of which device.
    std::set<std::tuple<QString, unsigned int, QString>> m_bindings;
    // Reads that wait for a card: identity, reader and the serial of the peer that asked.
    std::set<std::tuple<QString, unsigned int, quint64>> m_waiting;
    bool m_cardHolder = false;
    int m_resultDelay = 300;
};

}  // namespace vdserver
