#include "logingate.h"

#include "passwordhash.h"
#include "server.h"
#include "serverlogging.h"

#include <QFutureWatcher>
#include <QTimer>
#include <QtConcurrent>

#include <algorithm>

namespace vdserver {

namespace {
// An address that has kept quiet this long starts afresh.
constexpr qint64 ForgetAfterMs = 15 * 60 * 1000;
}  // namespace

LoginGate::LoginGate(Server& server, QObject* parent) : QObject(parent), m_server(server)
{
    m_clock.start();
}

int LoginGate::failures(const QHostAddress& address) const
{
    const Record record = m_records.value(address.toString());
    return m_clock.elapsed() - record.lastFailure > ForgetAfterMs ? 0 : record.failures;
}

void LoginGate::check(const QHostAddress& address, const QString& login, const QString& password, QObject* receiver,
                      Done done)
{
    const QString key = address.toString();
    const qint64 now = m_clock.elapsed();
    Record& record = m_records[key];
    if (record.failures > 0 && now - record.lastFailure > ForgetAfterMs)
        record = Record();
    qint64 wait = 0;
    if (record.failures >= FreeFailures) {
        const int doublings = std::min(record.failures - FreeFailures, 5);
        const qint64 pause = std::min<qint64>(1000LL << doublings, MaxPauseMs);
        const qint64 start = std::max(now, record.notBefore);
        record.notBefore = start + pause;
        wait = record.notBefore - now;
        qCInfo(lcServer).noquote() << "login of" << login << "from" << key << "waits" << wait << "ms after"
                                   << record.failures << "failures in a row";
    }
    QTimer::singleShot(int(wait), this, [this, key, login, password, receiver = QPointer<QObject>(receiver), done] {
        verify(key, login, password, receiver, done);
    });
}

void LoginGate::verify(const QString& address, const QString& login, const QString& password,
                       QPointer<QObject> receiver, Done done)
{
    // Read when the attempt's turn comes: the password may have changed while it waited.
    const std::optional<Account> account = m_server.account(login);
    const QByteArray hash = account ? m_server.passwordHash(account->uid) : QByteArray();
    if (account && hash.isEmpty())
        qCWarning(lcServer).noquote() << login << "has no password yet: set one with vdserver --set-password";
    auto* watcher = new QFutureWatcher<bool>(this);
    connect(watcher, &QFutureWatcher<bool>::finished, this, [=] {
        const bool accepted = watcher->result() && account && !hash.isEmpty();
        watcher->deleteLater();
        settle(address, login, accepted);
        if (receiver)
            done(accepted ? account : std::nullopt);
    });
    watcher->setFuture(QtConcurrent::run([hash, password] {
        return PasswordHash::verify(hash.isEmpty() ? PasswordHash::decoy() : hash, password);
    }));
}

void LoginGate::settle(const QString& address, const QString& login, bool accepted)
{
    if (accepted) {
        m_records.remove(address);
        return;
    }
    const qint64 now = m_clock.elapsed();
    // Addresses that gave up long ago are forgotten before they pile up.
    if (m_records.size() > 4096) {
        for (auto it = m_records.begin(); it != m_records.end();)
            it = now - it->lastFailure > ForgetAfterMs ? m_records.erase(it) : std::next(it);
    }
    Record& record = m_records[address];
    ++record.failures;
    record.lastFailure = now;
    qCWarning(lcServer).noquote() << "refused the login of" << login << "from" << address << "-" << record.failures
                                  << "failures in a row";
}

}  // namespace vdserver
