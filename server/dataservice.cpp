#include "dataservice.h"

#include "constants.h"
#include "localstorage.h"
#include "objectstore.h"
#include "peer.h"
#include "photos.h"
#include "rights.h"
#include "serverlogging.h"

#include <QDate>
#include <QMultiMap>
#include <QSet>
#include <QTimer>

#include <optional>

namespace vdserver {

using vorandel::INHERIT_DATA;
using vorandel::ObjectInfo;
using vorandel::TYPE_ID;

namespace {
const QString Prefix = QStringLiteral("data.");
// Links from a subject or a department to an access group.
constexpr unsigned int AccessGroupLink = 7;

void dropEmptyValues(QHash<QString, QString>& parameters)
{
    for (auto it = parameters.begin(); it != parameters.end();) {
        if (it.value().isEmpty())
            it = parameters.erase(it);
        else
            ++it;
    }
}

void removeLinks(ObjectInfo& object, unsigned int type, TYPE_ID to)
{
    for (auto it = object.inherits.find(type); it != object.inherits.end() && it.key() == type;) {
        if (it->second == to)
            it = object.inherits.erase(it);
        else
            ++it;
    }
}

// A worker's photo travels as a parameter, but it is kept as a blob.
std::optional<QByteArray> takePhoto(const QString& type, QHash<QString, QString>& parameters)
{
    if (type != db::orgstructure::WORKER || !parameters.contains(PHOTO_KEY))
        return std::nullopt;
    return parameters.take(PHOTO_KEY).toLatin1();
}

QString cardName(const ObjectInfo& card)
{
    const QString number = card.parameters.value(db::card::NUMBER);
    return number.isEmpty() ? QString::number(card.uid) : number;
}
}  // namespace

DataService::DataService(ObjectStore& store, const QHash<QByteArray, Session>& sessions, QObject* parent)
    : Service(parent), m_store(store), m_sessions(sessions), m_workflow(store)
{
}

bool DataService::handles(const QString& name) const
{
    return name.startsWith(Prefix) && operations().contains(name.mid(Prefix.size()));
}

Reply DataService::handle(const Command& query, Peer& from)
{
    const Operation operation = operations().value(query.name.mid(Prefix.size()));
    VDDataStream in(query.data);
    QByteArray sessionId;
    if (!read(in, sessionId))
        return malformed();
    const auto session = m_sessions.constFind(sessionId);
    // Somebody else's session is as unknown as a stale one.
    if (session == m_sessions.cend() || !from.mayActAs(*session))
        return Reply::failure(tr("Сеанс не найден"));
    Reply reply = (this->*operation)(*session, in);
    reply.actor = session->login;
    return reply;
}

namespace {
// The answer to a call that the rights refuse; `refusal` is empty when they allow it.
std::optional<Reply> refused(const QString& refusal)
{
    if (refusal.isEmpty())
        return std::nullopt;
    return Reply::failure(refusal);
}
}  // namespace

const QHash<QString, DataService::Operation>& DataService::operations()
{
    static const QHash<QString, Operation> operations = {
        {QStringLiteral("addObject"), &DataService::addObject},
        {QStringLiteral("updateObject"), &DataService::updateObject},
        {QStringLiteral("updateObjectEx"), &DataService::updateObject},
        {QStringLiteral("removeObject"), &DataService::removeObject},
        {QStringLiteral("addObjectInherits"), &DataService::addObjectInherits},
        {QStringLiteral("changeUserAccess"), &DataService::changeUserAccess},
        {QStringLiteral("updateWorkerCards"), &DataService::updateWorkerCards},
        {QStringLiteral("getUserFingers"), &DataService::getUserFingers},
        {QStringLiteral("setUserFingers"), &DataService::setUserFingers},
        {QStringLiteral("getBlobDataChange"), &DataService::getBlobDataChange},
        {QStringLiteral("syslog"), &DataService::syslog},
        {QStringLiteral("dismissWorker"), &DataService::dismissWorker},
    };
    return operations;
}

Reply DataService::addObject(const Session& session, QDataStream& in)
{
    ObjectInfo object;
    if (!read(in, object))
        return malformed();
    if (ObjectStore::datanameForType(object.type).isEmpty())
        return Reply::failure(tr("Неизвестный тип объекта: «%1»").arg(object.type));
    if (const auto refusal = refused(Rights::mayAdd(session, object)))
        return *refusal;
    dropEmptyValues(object.parameters);
    const std::optional<QByteArray> photo = takePhoto(object.type, object.parameters);
    // A uid that a refusal leaves unused is simply skipped, as a database sequence would.
    object.uid = m_store.newUid();
    for (INHERIT_DATA& link : object.inherits)
        link.first = object.uid;

    QString error;
    if (object.type == db::misc::PASS_REQUEST)
        error = m_workflow.prepareNew(object);
    else if (object.type == db::misc::CARD)
        error = checkCard(object);
    else if (object.type == db::orgstructure::WORKER)
        inheritDepartmentAccess(object);
    if (!error.isEmpty())
        return Reply::failure(error);

    m_store.put(object);
    if (photo)
        m_store.setBlob(object.uid, PHOTO_KEY, *photo);
    qCDebug(lcServer) << "added" << object;
    return Reply::success(int(object.uid));
}

Reply DataService::updateObject(const Session& session, QDataStream& in)
{
    ObjectInfo changes;
    if (!read(in, changes))
        return malformed();
    const ObjectInfo* stored = m_store.object(changes.uid);
    if (!stored)
        return Reply::failure(tr("Объект %1 не найден").arg(changes.uid));
    if (!changes.type.isEmpty() && changes.type != stored->type)
        return Reply::failure(
            tr("Объект %1 имеет тип «%2», а не «%3»").arg(changes.uid).arg(stored->type, changes.type));
    if (const auto refusal = refused(Rights::mayUpdate(session, *stored, changes)))
        return *refusal;

    const std::optional<QByteArray> photo = takePhoto(stored->type, changes.parameters);
    ObjectInfo object = *stored;
    for (auto it = changes.parameters.cbegin(); it != changes.parameters.cend(); ++it) {
        if (it.value().isEmpty())
            object.parameters.remove(it.key());
        else
            object.parameters.insert(it.key(), it.value());
    }
    if (changes.parent != 0)
        object.parent = changes.parent;

    QString error;
    if (object.type == db::misc::PASS_REQUEST)
        error = m_workflow.prepareUpdate(*stored, object);
    else if (object.type == db::misc::CARD)
        error = checkCard(object);
    if (!error.isEmpty())
        return Reply::failure(error);

    m_store.put(object);
    if (photo)
        m_store.setBlob(object.uid, PHOTO_KEY, *photo);
    return Reply::success(int(object.uid));
}

Reply DataService::removeObject(const Session& session, QDataStream& in)
{
    ObjectInfo target;
    if (!read(in, target))
        return malformed();
    const ObjectInfo* stored = m_store.object(target.uid);
    if (!stored)
        return Reply::failure(tr("Объект %1 не найден").arg(target.uid));
    if (const auto refusal = refused(Rights::mayRemove(session, *stored)))
        return *refusal;
    if (stored->type == db::orgstructure::WORKER) {
        const QList<INHERIT_DATA> cards = stored->inherits.values(vorandel::INHERIT_CARD);
        for (const INHERIT_DATA& card : cards)
            m_store.remove(card.second);
    } else if (stored->type == db::misc::CARD) {
        if (const ObjectInfo* owner = m_store.object(ot_card::uid(*stored), vorandel::SUBJECT_DATANAME)) {
            ObjectInfo worker = *owner;
            removeLinks(worker, vorandel::INHERIT_CARD, target.uid);
            m_store.put(worker);
        }
    }
    m_store.remove(target.uid);
    return Reply::success(int(target.uid));
}

Reply DataService::addObjectInherits(const Session& session, QDataStream& in)
{
    QList<INHERIT_DATA> links;
    if (!read(in, links))
        return malformed();
    if (const auto refusal = refused(links.isEmpty() ? QString() : Rights::mayDecide(session)))
        return *refusal;
    // Decisions apply in order, on copies, so that a refused one leaves none applied.
    QHash<TYPE_ID, ObjectInfo> requests;
    for (const INHERIT_DATA& link : qAsConst(links)) {
        auto request = requests.find(link.first);
        if (request == requests.end()) {
            const ObjectInfo* stored = m_store.object(link.first, vorandel::PASS_REQUEST_DATANAME);
            if (!stored)
                return Reply::failure(tr("Заявка %1 не найдена").arg(link.first));
            request = requests.insert(link.first, *stored);
        }
        if (link.type != vorandel::INHERIT_CONFIRMED_LIST_PASS_REQUEST
            && link.type != vorandel::INHERIT_REJECTED_LIST_PASS_REQUEST)
            return Reply::failure(tr("Связь типа %1 с заявкой устанавливает только сервер").arg(link.type));
        const QString error = RequestWorkflow::decide(*request, link, session.userId);
        if (!error.isEmpty())
            return Reply::failure(error);
    }
    for (const ObjectInfo& request : qAsConst(requests)) {
        m_store.put(request);
        qCDebug(lcServer) << "request" << request.uid << "state"
                          << request.parameters.value(db::pass_request::STATE);
    }
    return Reply::success();
}

Reply DataService::changeUserAccess(const Session& session, QDataStream& in)
{
    QList<vorandel::ACCESS_CHANGES> changes;
    if (!read(in, changes))
        return malformed();
    if (const auto refusal = refused(Rights::mayEditVisitors(session)))
        return *refusal;
    QHash<TYPE_ID, ObjectInfo> subjects;
    QList<TYPE_ID> changed;
    for (const vorandel::ACCESS_CHANGES& change : qAsConst(changes)) {
        const bool policy = change.ref_type == 7;
        if (!policy && change.ref_type != 2)
            return Reply::failure(tr("Неизвестный вид доступа: %1").arg(change.ref_type));
        const ObjectInfo* group = policy ? m_store.object(change.object, vorandel::POLICY_DATANAME)
                                         : m_store.object(change.object);
        if (!group)
            return Reply::failure(tr("Группа доступа %1 не найдена").arg(change.object));
        auto subject = subjects.find(change.subject);
        if (subject == subjects.end()) {
            const ObjectInfo* stored = m_store.object(change.subject);
            if (!stored)
                return Reply::failure(tr("Субъект доступа %1 не найден").arg(change.subject));
            subject = subjects.insert(change.subject, *stored);
            changed.append(change.subject);
        }
        const unsigned int type = unsigned(change.ref_type);
        removeLinks(*subject, type, change.object);
        if (change.state)
            subject->inherits.insert(type, INHERIT_DATA(change.subject, change.object, type));
    }
    for (const ObjectInfo& subject : qAsConst(subjects))
        m_store.put(subject);

    // The change is carried out "later": the notice names the session that asked for it.
    const Command notice = makeCommand(
        QStringLiteral("change_access_result:%1").arg(QString::fromLatin1(session.sessionId.toHex())), 8, changed);
    QTimer::singleShot(m_accessNoticeDelay, this, [this, notice] { emit commandReady(notice); });
    return Reply::success();
}

Reply DataService::updateWorkerCards(const Session& session, QDataStream& in)
{
    TYPE_ID workerUid = 0;
    QList<ObjectInfo> toAdd;
    QList<ObjectInfo> toRemove;
    bool replace = false;
    if (!read(in, workerUid, toAdd, toRemove, replace))
        return malformed();
    if (const auto refusal = refused(Rights::mayEditVisitors(session)))
        return *refusal;
    const ObjectInfo* stored = m_store.object(workerUid, vorandel::SUBJECT_DATANAME);
    if (!stored)
        return Reply::failure(tr("Сотрудник %1 не найден").arg(workerUid));
    ObjectInfo worker = *stored;

    QList<TYPE_ID> released;
    for (const ObjectInfo& card : qAsConst(toRemove)) {
        const TYPE_ID uid = card.uid != 0 ? card.uid : m_store.cardByNumber(ot_card::number(card));
        const ObjectInfo* held = m_store.object(uid, vorandel::CARD_DATANAME);
        if (!held)
            return Reply::failure(tr("Карта %1 не найдена").arg(cardName(card)));
        if (ot_card::uid(*held) != workerUid)
            return Reply::failure(tr("Карта %1 выдана другому сотруднику").arg(cardName(*held)));
        released.append(uid);
        removeLinks(worker, vorandel::INHERIT_CARD, uid);
    }

    QList<ObjectInfo> issued;
    QSet<vorandel::CARD_ID> numbers;
    for (ObjectInfo card : qAsConst(toAdd)) {
        card.uid = 0;
        card.type = db::misc::CARD;
        card.inherits.clear();
        dropEmptyValues(card.parameters);
        card.parameters.insert(db::card::OWNER, QString::number(workerUid));
        const vorandel::CARD_ID number = ot_card::number(card);
        const QString error = numbers.contains(number) ? tr("Карта %1 уже выдана").arg(number)
                                                       : checkCard(card, released);
        if (!error.isEmpty())
            return Reply::failure(error);
        numbers.insert(number);
        issued.append(card);
    }

    for (TYPE_ID uid : qAsConst(released))
        m_store.remove(uid);
    for (ObjectInfo& card : issued) {
        card.uid = m_store.newUid();
        m_store.put(card);
        worker.inherits.insert(vorandel::INHERIT_CARD, INHERIT_DATA(workerUid, card.uid, vorandel::INHERIT_CARD));
    }
    m_store.put(worker);
    return Reply::success(int(workerUid), QStringLiteral("ok"));
}

Reply DataService::getUserFingers(const Session&, QDataStream& in)
{
    QList<unsigned int> workers;
    if (!read(in, workers))
        return malformed();
    QMultiMap<unsigned int, vorandel::TEMPLATE_DATA> templates;
    for (unsigned int worker : qAsConst(workers)) {
        if (templates.contains(worker))
            continue;
        const QVector<vorandel::TEMPLATE_DATA> own = m_store.templates(worker);
        for (const vorandel::TEMPLATE_DATA& data : own)
            templates.insert(worker, data);
    }
    return Reply::success(static_cast<const QMap<unsigned int, vorandel::TEMPLATE_DATA>&>(templates));
}

Reply DataService::setUserFingers(const Session& session, QDataStream& in)
{
    TYPE_ID workerUid = 0;
    QList<vorandel::TEMPLATE_DATA> templates;
    if (!read(in, workerUid, templates))
        return malformed();
    if (const auto refusal = refused(Rights::mayEditVisitors(session)))
        return *refusal;
    if (m_store.settings().value(db::database::PD_DENY_STORE_USER_PHOTOS) == QLatin1String("true"))
        return Reply::failure(tr("Запрещено редактирование биометрической информации"), Command::StatusBiometricsLocked);
    if (!m_store.object(workerUid, vorandel::SUBJECT_DATANAME))
        return Reply::failure(tr("Сотрудник %1 не найден").arg(workerUid));

    const auto known = [](qint16 index) {
        return (index >= 0 && index <= 9) || index == 100 || index == 101 || index == 200 || index == 201;
    };
    QVector<vorandel::TEMPLATE_DATA> stored;
    QSet<QPair<qint16, int>> kinds;
    for (vorandel::TEMPLATE_DATA data : qAsConst(templates)) {
        if (!known(data.index))
            return Reply::failure(tr("Неизвестный вид шаблона: %1").arg(data.index));
        if (data.data.isEmpty())
            return Reply::failure(tr("Шаблон %1 пуст").arg(data.index));
        // A palm and a contactless palm of the same hand are two templates.
        if (kinds.contains({data.index, data.kind}))
            return Reply::failure(tr("Шаблон %1 передан дважды").arg(data.index));
        kinds.insert({data.index, data.kind});
        if (data.id == 0)
            data.id = int(m_store.newUid());
        stored.append(data);
    }
    m_store.setTemplates(workerUid, stored);
    qCDebug(lcServer) << "templates of" << workerUid << stored.size();
    return Reply::success(int(workerUid));
}

Reply DataService::getBlobDataChange(const Session&, QDataStream& in)
{
    QList<vorandel::BLOB_DATA_RESQUEST> requests;
    if (!read(in, requests))
        return malformed();
    QHash<TYPE_ID, QHash<QString, QByteArray>> changed;
    for (const vorandel::BLOB_DATA_RESQUEST& request : qAsConst(requests)) {
        if (!m_store.object(request.uid))
            continue;
        const QByteArray bytes = m_store.blob(request.uid, request.name);
        if (vorandel::LocalStorage::md5Of(bytes) != request.md5)
            changed[request.uid].insert(request.name, bytes);
    }
    return Reply::success(changed);
}

Reply DataService::syslog(const Session&, QDataStream& in)
{
    vorandel::SYSLOG_DATA entry;
    if (!read(in, entry))
        return malformed();
    m_store.addSyslog(entry);
    qCInfo(lcServer) << "syslog" << entry.code << entry.user << entry.text;
    return Reply::success();
}

Reply DataService::dismissWorker(const Session& session, QDataStream& in)
{
    TYPE_ID uid = 0;
    QDate date;
    if (!read(in, uid, date))
        return malformed();
    if (const auto refusal = refused(Rights::mayDismiss(session)))
        return *refusal;
    const ObjectInfo* stored = m_store.object(uid, vorandel::SUBJECT_DATANAME);
    if (!stored)
        return Reply::failure(tr("Сотрудник %1 не найден").arg(uid));
    if (!date.isValid())
        return Reply::failure(tr("Не указана дата увольнения"));
    ObjectInfo worker = *stored;
    worker.parameters.insert(QStringLiteral("PT_OBJECTSTATE"), QStringLiteral("d"));
    worker.parameters.insert(QStringLiteral("PT_DISMISS_DATE"), date.toString(Qt::ISODate));
    m_store.put(worker);
    return Reply::success(int(uid));
}

void DataService::inheritDepartmentAccess(ObjectInfo& worker) const
{
    const ObjectInfo* department = m_store.object(worker.parent, vorandel::ORGSTRUCTURE_DATANAME);
    if (!department)
        return;
    const QList<INHERIT_DATA> groups = department->inherits.values(AccessGroupLink);
    for (const INHERIT_DATA& group : groups) {
        removeLinks(worker, AccessGroupLink, group.second);
        worker.inherits.insert(AccessGroupLink, INHERIT_DATA(worker.uid, group.second, AccessGroupLink));
    }
}

QString DataService::checkCard(const ObjectInfo& card, const QList<TYPE_ID>& released) const
{
    const vorandel::CARD_ID number = ot_card::number(card);
    if (number == 0)
        return tr("Не указан номер карты");
    const TYPE_ID holder = m_store.cardByNumber(number);
    if (holder != 0 && holder != card.uid && !released.contains(holder))
        return tr("Карта %1 уже выдана").arg(number);
    return {};
}

}  // namespace vdserver
