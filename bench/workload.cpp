#include "workload.h"

#include "authdata.h"
#include "benchlogging.h"
#include "constants.h"
#include "localstorage.h"

#include <QDateTime>
#include <QElapsedTimer>

#include <algorithm>
#include <numeric>

using namespace vorandel;

namespace {

const QString KeyDateBegin = QStringLiteral("PT_DATE_BEGIN");

const QStringList AllRights{
    QStringLiteral("RL_PASS_REQUESTS_SHOW"),   QStringLiteral("RL_PASS_REQUESTS_SHOW_ALL"),
    QStringLiteral("RL_PASS_REQUESTS_CREATE"), QStringLiteral("RL_PASS_REQUESTS_UPDATE"),
    QStringLiteral("RL_PASS_REQUESTS_DELETE"), QStringLiteral("RL_PASS_REQUESTS_CONFIRM"),
};

}  // namespace

Workload::Workload(int requests)
{
    QElapsedTimer clock;
    clock.start();
    vdserver::SeedOptions options;
    options.requests = requests;
    m_server.seed(options);
    m_seedingMs = clock.restart();

    if (const std::optional<vdserver::Session> session = m_server.login(m_server.defaultLogin()))
        AuthData::setSession(session->userId, session->login, AllRights, session->sessionId);
    else
        qCWarning(lcBench) << "fail: the seeded administrator can't log in";

    LocalStorage* store = LocalStorage::instance();
    QObject::connect(&m_server, &vdserver::Server::objectsChanged, store, &LocalStorage::setObjects);
    QObject::connect(&m_server, &vdserver::Server::objectsRemoved, store, &LocalStorage::removeObjects);
    QObject::connect(&m_server, &vdserver::Server::settingsChanged, store, &LocalStorage::setDbSettings);
    m_server.publish();
    m_publishingMs = clock.elapsed();

    if (const OBJECT_HASH* all = store->constObjects(PASS_REQUEST_DATANAME)) {
        m_uids.reserve(all->size());
        for (auto it = all->cbegin(); it != all->cend(); ++it)
            m_uids.append(it.key());
    }
    std::sort(m_uids.begin(), m_uids.end());
    // About a third of the table apart, and coprime with its size, so that no request comes
    // twice before all have come once.
    m_stride = m_uids.size() / 3 + 1;
    while (m_uids.size() > 1 && std::gcd(m_stride, m_uids.size()) != 1)
        ++m_stride;
}

int Workload::count(const QString& dataname) const
{
    const OBJECT_HASH* objects = m_server.objects(dataname);
    return objects ? objects->size() : 0;
}

ObjectInfo Workload::changedRequest(int i) const
{
    if (m_uids.isEmpty())
        return {};
    const TYPE_ID uid = m_uids.at(int((qint64(i) * m_stride) % m_uids.size()));
    ObjectInfo request = LocalStorage::instance()->constObject(uid, PASS_REQUEST_DATANAME);
    auto& parameters = request.parameters;
    const int state = parameters.value(db::pass_request::STATE).toInt();
    parameters.insert(db::pass_request::STATE, QString::number((state + 1) % (PASS_REQUEST_STATE_FINISHED + 1)));
    const QDateTime begin = QDateTime::fromString(parameters.value(KeyDateBegin), Qt::ISODate);
    parameters.insert(KeyDateBegin, begin.addDays(1).toString(Qt::ISODate));
    return request;
}
