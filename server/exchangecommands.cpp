#include "exchangecommands.h"

#include "constants.h"
#include "objectstore.h"
#include "peer.h"
#include "serverlogging.h"

#include <QTimer>

#include <algorithm>

namespace vdserver {

ExchangeCommands::ExchangeCommands(const ObjectStore& store, const QList<Peer*>& peers, QObject* parent)
    : Service(parent), m_store(store), m_queries(store), m_peers(peers)
{
}

namespace {
const QString FingerprintWindow = QStringLiteral("show:fingerprintwidget");
}  // namespace

bool ExchangeCommands::handles(const QString& name) const
{
    return operations().contains(name) || servedLocally(name);
}

Reply ExchangeCommands::handle(const Command& query, Peer& from)
{
    const Operation operation = operations().value(query.name);
    if (!operation)
        return relay(query, from);
    VDDataStream in(query.data);
    const Reply reply = (this->*operation)(in, from);
    if (!reply.ok() || !query.name.startsWith(FingerprintWindow))
        return reply;
    if (!from.receives(query.name))
        return Reply::failure(tr("Окно биометрии недоступно: модуль консоли «fingerprintwidget» не запущен"));
    return relay(query, from);
}

bool ExchangeCommands::servedLocally(const QString& name) const
{
    return std::any_of(m_peers.cbegin(), m_peers.cend(), [&name](const Peer* peer) { return peer->receives(name); });
}

Reply ExchangeCommands::relay(const Command& query, const Peer& from)
{
    // Plug-ins talk to those of their own console: a fingerprint window asked for at one desk
    // opens there, not at every desk.
    if (!from.receives(query.name))
        return Reply::failure(tr("Неизвестная команда: %1").arg(query.name));
    Command passed = query;
    passed.status = Command::StatusOk;
    QMetaObject::invokeMethod(
        this, [this, passed, to = from.serial()] { emit commandReady(passed, to); }, Qt::QueuedConnection);
    return Reply::success();
}

const QHash<QString, ExchangeCommands::Operation>& ExchangeCommands::operations()
{
    static const QHash<QString, Operation> operations = {
        {QStringLiteral("send_email"), &ExchangeCommands::sendEmail},
        {QStringLiteral("show:fingerprintwidget"), &ExchangeCommands::showFingerprintWidget},
        {QStringLiteral("show:fingerprintwidget.scan"), &ExchangeCommands::showFingerprintWidget},
        {QStringLiteral("db.async"), &ExchangeCommands::asyncQuery},
        {QStringLiteral("exchange.local_plugins_info"), &ExchangeCommands::localPluginsInfo},
    };
    return operations;
}

Reply ExchangeCommands::sendEmail(QDataStream& in, Peer&)
{
    vorandel::EMAIL_MESSAGE message;
    QString user;
    if (!read(in, message, user))
        return malformed();
    if (message.to.trimmed().isEmpty())
        return Reply::failure(tr("Не указан адрес получателя"));
    m_outbox.append(message);
    qCInfo(lcServer) << "e-mail from" << user << "to" << message.to << "queued";
    return Reply::success();
}

Reply ExchangeCommands::showFingerprintWidget(QDataStream& in, Peer&)
{
    unsigned int worker = 0;
    QString identity;
    if (!read(in, worker, identity))
        return malformed();
    if (!m_store.object(worker, vorandel::SUBJECT_DATANAME))
        return Reply::failure(tr("Сотрудник %1 не найден").arg(worker));
    if (m_store.settings().value(db::database::PD_DENY_STORE_USER_PHOTOS) == QLatin1String("true"))
        return Reply::failure(tr("Запрещено редактирование биометрической информации"),
                              Command::StatusBiometricsLocked);
    return Reply::success();
}

Reply ExchangeCommands::asyncQuery(QDataStream& in, Peer& from)
{
    QString identity;
    QString queryId;
    DbQuery query;
    if (!read(in, identity, queryId, query))
        return malformed();
    if (identity.isEmpty())
        return Reply::failure(tr("Не указано, кому вернуть результат запроса"));

    const QueryRunner::Result result = m_queries.run(query);
    const QString name = QStringLiteral("db.async_result:") + identity;
    const Command answer = result.error.isEmpty()
        ? makeCommand(name, 1, queryId, int(Command::StatusOk), QString(), result.results)
        : makeCommand(name, 1, queryId, int(Command::StatusFailed), result.error);
    if (!result.error.isEmpty())
        qCInfo(lcServer) << "query" << queryId << "failed:" << result.error;
    // To the console that asked only: the identity names a plug-in, and two consoles on one
    // machine may carry the same one.
    QTimer::singleShot(m_resultDelay, this, [this, answer, to = from.serial()] { emit commandReady(answer, to); });
    return Reply::success();
}

Reply ExchangeCommands::localPluginsInfo(QDataStream& in, Peer& from)
{
    COMMAND_LIST types;
    if (!read(in, types))
        return malformed();
    from.setReceives(types);
    return Reply::success();
}

}  // namespace vdserver
