#include "requestworkflow.h"

#include "constants.h"
#include "objectstore.h"

#include <algorithm>

namespace vdserver {

using vorandel::INHERIT_DATA;
using vorandel::ObjectInfo;

namespace {
constexpr unsigned int Chain = vorandel::INHERIT_CONFIRM_LIST_PASS_REQUEST;
constexpr unsigned int Confirmed = vorandel::INHERIT_CONFIRMED_LIST_PASS_REQUEST;
constexpr unsigned int Rejected = vorandel::INHERIT_REJECTED_LIST_PASS_REQUEST;

bool hasDecisions(const ObjectInfo& request)
{
    return request.inherits.contains(Confirmed) || request.inherits.contains(Rejected);
}

// Without a chain the console confirms a request by writing its state, so that is walked too.
bool chainWalked(const ObjectInfo& request)
{
    return request.inherits.count(Confirmed) >= request.inherits.count(Chain);
}
}  // namespace

RequestWorkflow::RequestWorkflow(const ObjectStore& store) : m_store(store)
{
}

QString RequestWorkflow::prepareNew(ObjectInfo& request) const
{
    request.inherits.clear();
    return attachChain(request);
}

QString RequestWorkflow::prepareUpdate(const ObjectInfo& stored, ObjectInfo& request) const
{
    const QString state = request.parameters.value(db::pass_request::STATE);
    if (state != stored.parameters.value(db::pass_request::STATE)) {
        bool number = false;
        const int value = state.toInt(&number);
        if (!state.isEmpty() && (!number || value < vorandel::PASS_REQUEST_STATE_NOT_CONFIRMED
                                 || value > vorandel::PASS_REQUEST_STATE_FINISHED))
            return tr("Недопустимое состояние заявки: «%1»").arg(state);
        const bool confirming = value == vorandel::PASS_REQUEST_STATE_CONFIRMED
            || value == vorandel::PASS_REQUEST_STATE_CONFIRMED_ALT;
        if (confirming && !chainWalked(stored))
            return tr("Заявку %1 ещё не согласовали все участники листа согласования").arg(stored.uid);
    }
    if (request.parameters.value(db::pass_request::CONFIRM_LIST)
        != stored.parameters.value(db::pass_request::CONFIRM_LIST)) {
        if (hasDecisions(stored))
            return tr("По заявке %1 уже приняты решения: лист согласования сменить нельзя").arg(stored.uid);
        return attachChain(request);
    }
    return {};
}

QString RequestWorkflow::decide(ObjectInfo& request, const INHERIT_DATA& decision, vorandel::TYPE_ID actor)
{
    if (decision.second != actor)
        return tr("Решение по заявке можно принять только от своего имени");
    if (request.inherits.contains(Rejected))
        return tr("Заявка %1 уже отклонена").arg(request.uid);
    const QList<INHERIT_DATA> members = chain(request);
    if (members.isEmpty())
        return tr("У заявки %1 нет листа согласования").arg(request.uid);
    const auto isActor = [actor](const INHERIT_DATA& link) { return link.second == actor; };
    if (std::none_of(members.cbegin(), members.cend(), isActor))
        return tr("Пользователь %1 не входит в лист согласования заявки %2").arg(actor).arg(request.uid);
    // Confirmations are counted, not matched: the turn is at the place that their number has
    // reached. One person may stand at several places; members of equal priority have no order
    // among themselves, so any of them may take that priority's next turn, each once per place.
    const QList<INHERIT_DATA> confirmations = request.inherits.values(Confirmed);
    const int turn = confirmations.size();
    if (turn >= members.size())
        return tr("Заявку %1 уже согласовали все участники листа").arg(request.uid);
    const unsigned int priority = members.at(turn).priority;
    const auto atThisPriority = [&](const INHERIT_DATA& link) { return isActor(link) && link.priority == priority; };
    const auto places = std::count_if(members.cbegin(), members.cend(), atThisPriority);
    const auto taken = std::count_if(confirmations.cbegin(), confirmations.cend(), atThisPriority);
    if (taken >= places)
        return tr("Заявку %1 сейчас согласует другой участник листа").arg(request.uid);

    request.inherits.insert(decision.type, INHERIT_DATA(request.uid, actor, decision.type, priority,
                                                        decision.dateFrom, decision.dateTo));
    if (decision.type == Rejected)
        request.parameters.insert(db::pass_request::STATE, QString::number(vorandel::PASS_REQUEST_STATE_REJECTED));
    else if (turn + 1 == members.size())
        request.parameters.insert(db::pass_request::STATE, QString::number(vorandel::PASS_REQUEST_STATE_CONFIRMED));
    return {};
}

QList<INHERIT_DATA> RequestWorkflow::chain(const ObjectInfo& request)
{
    QList<INHERIT_DATA> members = request.inherits.values(Chain);
    std::stable_sort(members.begin(), members.end(), vorandel::SortInheritDataByPriority);
    return members;
}

QString RequestWorkflow::attachChain(ObjectInfo& request) const
{
    request.inherits.remove(Chain);
    const vorandel::TYPE_ID listUid = request.parameters.value(db::pass_request::CONFIRM_LIST).toUInt();
    if (listUid == 0)
        return {};
    const ObjectInfo* list = m_store.object(listUid, vorandel::CONFIRM_LIST_DATANAME);
    if (!list)
        return tr("Лист согласования %1 не найден").arg(listUid);
    const QList<INHERIT_DATA> members = list->inherits.values(Chain);
    for (const INHERIT_DATA& member : members)
        request.inherits.insert(Chain, INHERIT_DATA(request.uid, member.second, Chain, member.priority));
    return {};
}

}  // namespace vdserver
