#include "passwordhash.h"

#include "serverlogging.h"

#include <sodium.h>

namespace vdserver {

namespace {
bool ready()
{
    // sodium_init is safe to call from several threads, and again.
    static const bool initialised = sodium_init() >= 0;
    if (!initialised)
        qCCritical(lcServer) << "the password library could not be initialised";
    return initialised;
}
}  // namespace

QByteArray PasswordHash::make(const QString& password)
{
    if (!ready())
        return {};
    const QByteArray utf8 = password.toUtf8();
    char hash[crypto_pwhash_STRBYTES];
    if (crypto_pwhash_str_alg(hash, utf8.constData(), quint64(utf8.size()), crypto_pwhash_OPSLIMIT_INTERACTIVE,
                              crypto_pwhash_MEMLIMIT_INTERACTIVE, crypto_pwhash_ALG_ARGON2ID13)
        != 0)
        return {};
    return QByteArray(hash);
}

bool PasswordHash::verify(const QByteArray& hash, const QString& password)
{
    if (!ready() || hash.isEmpty() || hash.size() >= int(crypto_pwhash_STRBYTES))
        return false;
    const QByteArray utf8 = password.toUtf8();
    // The library wants the hash as a terminated string; QByteArray keeps a terminator.
    return crypto_pwhash_str_verify(hash.constData(), utf8.constData(), quint64(utf8.size())) == 0;
}

const QByteArray& PasswordHash::decoy()
{
    static const QByteArray hash = make(QStringLiteral("no account has this password"));
    return hash;
}

}  // namespace vdserver
