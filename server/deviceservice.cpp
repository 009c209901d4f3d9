#include "deviceservice.h"

#include "constants.h"
#include "objectstore.h"
#include "peer.h"
#include "serverlogging.h"

#include <QRandomGenerator>
#include <QStringList>
#include <QTimer>
#include <QVariant>

namespace vdserver {

namespace {
const QString Prefix = QStringLiteral("devices.");
}  // namespace

DeviceService::DeviceService(const ObjectStore& store, QObject* parent) : Service(parent), m_store(store)
{
}

bool DeviceService::handles(const QString& name) const
{
    return name.startsWith(Prefix) && operations().contains(name.mid(Prefix.size()));
}

Reply DeviceService::handle(const Command& query, Peer& from)
{
    const Operation operation = operations().value(query.name.mid(Prefix.size()));
    VDDataStream in(query.data);
    QString identity;
    if (!read(in, identity))
        return malformed();
    return (this->*operation)(identity, in, from);
}

const QHash<QString, DeviceService::Operation>& DeviceService::operations()
{
    static const QHash<QString, Operation> operations = {
        {QStringLiteral("bind"), &DeviceService::bind},
        {QStringLiteral("unbind"), &DeviceService::unbind},
        {QStringLiteral("readCard"), &DeviceService::readCard},
    };
    return operations;
}

Reply DeviceService::bind(const QString& identity, QDataStream& in, const Peer&)
{
    unsigned int device = 0;
    QStringList commands;
    if (!read(in, device, commands))
        return malformed();
    if (!m_store.object(device, vorandel::DEVICE_DATANAME))
        return unknownDevice(device);
    for (const QString& command : qAsConst(commands))
        m_bindings.emplace(identity, device, command);
    return Reply::success();
}

Reply DeviceService::unbind(const QString& identity, QDataStream& in, const Peer&)
{
    unsigned int device = 0;
    QStringList commands;
    if (!read(in, device, commands))
        return malformed();
    if (!m_store.object(device, vorandel::DEVICE_DATANAME))
        return unknownDevice(device);
    for (const QString& command : qAsConst(commands))
        m_bindings.erase({identity, device, command});
    return Reply::success();
}

Reply DeviceService::readCard(const QString& identity, QDataStream& in, const Peer& from)
{
    unsigned int device = 0;
    if (!read(in, device))
        return malformed();
    if (!m_store.object(device, vorandel::DEVICE_DATANAME))
        return unknownDevice(device);
    const quint64 peer = from.serial();
    if (m_cardHolder) {
        m_waiting.emplace(identity, device, peer);
        QMetaObject::invokeMethod(this, [this, identity, device] { emit cardWanted(identity, device); },
                                  Qt::QueuedConnection);
        return Reply::success();
    }
    QTimer::singleShot(m_resultDelay, this, [this, identity, device, peer] {
        reportRead(identity, device,
                   {{QStringLiteral("status"), QStringLiteral("ok")}, {QStringLiteral("card"), readableCard(0)}},
                   peer);
    });
    return Reply::success();
}

void DeviceService::presentCard(const QString& identity, unsigned int device, std::optional<vorandel::CARD_ID> number)
{
    // Normally one read waits; a card held to the reader answers every read waiting on it.
    QList<quint64> peers;
    for (auto it = m_waiting.lower_bound({identity, device, 0});
         it != m_waiting.end() && std::get<0>(*it) == identity && std::get<1>(*it) == device;) {
        peers.append(std::get<2>(*it));
        it = m_waiting.erase(it);
    }
    if (peers.isEmpty()) {
        qCDebug(lcServer) << "no read waits on" << device << "for" << identity;
        return;
    }
    const QHash<QString, QVariant> result = number
        ? QHash<QString, QVariant>{{QStringLiteral("status"), QStringLiteral("ok")},
                                   {QStringLiteral("card"), readableCard(*number)}}
        : QHash<QString, QVariant>{{QStringLiteral("status"), QStringLiteral("error")}};
    for (quint64 peer : qAsConst(peers))
        reportRead(identity, device, result, peer);
}

void DeviceService::reportRead(const QString& identity, unsigned int device, const QHash<QString, QVariant>& result,
                               quint64 peer)
{
    if (!isBound(identity, device, vorandel::DEVICE_COMMAND_READ_CARD)) {
        qCDebug(lcServer) << "card read on" << device << "has no listener" << identity;
        return;
    }
    emit commandReady(makeCommand(QStringLiteral("command_result:") + identity, 8, device,
                                  vorandel::DEVICE_COMMAND_READ_CARD, result),
                      peer);
}

Reply DeviceService::unknownDevice(unsigned int device) const
{
    return Reply::failure(tr("Устройство %1 не найдено").arg(device));
}

bool DeviceService::isBound(const QString& identity, unsigned int device, const QString& command) const
{
    return m_bindings.count({identity, device, command}) != 0;
}

QByteArray DeviceService::readableCard(vorandel::CARD_ID number) const
{
    while (number == 0) {
        const vorandel::CARD_ID fresh =
            Q_UINT64_C(1000000000) + QRandomGenerator::global()->generate64() % Q_UINT64_C(9000000000);
        if (m_store.cardByNumber(fresh) == 0)
            number = fresh;
    }
    vorandel::ObjectInfo card;
    card.type = db::misc::CARD;
    card.parameters.insert(db::card::NUMBER, QString::number(number));
    return card.toByteArray();
}

}  // namespace vdserver
