#include "rights.h"

#include "constants.h"

#include <algorithm>
#include <initializer_list>

namespace vdserver {

using vorandel::ObjectInfo;

const QString Rights::Show = QStringLiteral("RL_PASS_REQUESTS_SHOW");
const QString Rights::ShowAll = QStringLiteral("RL_PASS_REQUESTS_SHOW_ALL");
const QString Rights::Create = QStringLiteral("RL_PASS_REQUESTS_CREATE");
const QString Rights::Update = QStringLiteral("RL_PASS_REQUESTS_UPDATE");
const QString Rights::Delete = QStringLiteral("RL_PASS_REQUESTS_DELETE");
const QString Rights::Confirm = QStringLiteral("RL_PASS_REQUESTS_CONFIRM");

namespace {
bool holdsAny(const Session& session, std::initializer_list<QString> rights)
{
    return std::any_of(rights.begin(), rights.end(), [&](const QString& right) { return session.roles.contains(right); });
}

bool holdsAll(const Session& session)
{
    for (const QString& right : {Rights::Show, Rights::ShowAll, Rights::Create, Rights::Update, Rights::Delete,
                                 Rights::Confirm}) {
        if (!session.roles.contains(right))
            return false;
    }
    return true;
}

bool isVisitorRecord(const QString& type)
{
    return type == db::orgstructure::WORKER || type == db::misc::CARD;
}
}  // namespace

bool Rights::seesRequest(const Session& session, const ObjectInfo& request)
{
    if (!session.roles.contains(Show))
        return false;
    if (session.roles.contains(ShowAll))
        return true;
    const auto chain = request.inherits.equal_range(vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST);
    return std::any_of(chain.first, chain.second,
                       [&](const vorandel::INHERIT_DATA& link) { return link.second == session.userId; });
}

QString Rights::mayAdd(const Session& session, const ObjectInfo& object)
{
    if (object.type == db::misc::PASS_REQUEST)
        return session.roles.contains(Create) ? QString() : tr("Нет права создавать заявки");
    if (isVisitorRecord(object.type))
        return mayEditVisitors(session);
    return holdsAll(session) ? QString() : tr("Нет права изменять справочники");
}

QString Rights::mayUpdate(const Session& session, const ObjectInfo& stored, const ObjectInfo& changes)
{
    if (stored.type != db::misc::PASS_REQUEST) {
        if (isVisitorRecord(stored.type))
            return mayEditVisitors(session);
        return holdsAll(session) ? QString() : tr("Нет права изменять справочники");
    }
    if (!seesRequest(session, stored))
        return tr("Заявка %1 недоступна").arg(stored.uid);
    const bool decides = changes.parameters.contains(db::pass_request::STATE)
        && changes.parameters.value(db::pass_request::STATE) != stored.parameters.value(db::pass_request::STATE);
    const bool edits = std::any_of(changes.parameters.keyBegin(), changes.parameters.keyEnd(), [&](const QString& key) {
        return key != db::pass_request::STATE && changes.parameters.value(key) != stored.parameters.value(key);
    });
    if (decides && !session.roles.contains(Confirm))
        return tr("Нет права согласовывать заявки");
    if ((edits || changes.parent != 0) && !session.roles.contains(Update))
        return tr("Нет права изменять заявки");
    return {};
}

QString Rights::mayRemove(const Session& session, const ObjectInfo& stored)
{
    if (stored.type != db::misc::PASS_REQUEST) {
        if (isVisitorRecord(stored.type))
            return mayEditVisitors(session);
        return holdsAll(session) ? QString() : tr("Нет права изменять справочники");
    }
    if (!seesRequest(session, stored))
        return tr("Заявка %1 недоступна").arg(stored.uid);
    return session.roles.contains(Delete) ? QString() : tr("Нет права удалять заявки");
}

QString Rights::mayDecide(const Session& session)
{
    return session.roles.contains(Confirm) ? QString() : tr("Нет права согласовывать заявки");
}

QString Rights::mayEditVisitors(const Session& session)
{
    return holdsAny(session, {Create, Update, Delete}) ? QString() : tr("Нет права изменять данные посетителей");
}

QString Rights::mayDismiss(const Session& session)
{
    return holdsAny(session, {Confirm, Delete}) ? QString() : tr("Нет права увольнять посетителей");
}

}  // namespace vdserver
