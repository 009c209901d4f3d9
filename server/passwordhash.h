#pragma once

#include <QByteArray>
#include <QString>

namespace vdserver {

// Passwords are kept only as salted Argon2id hashes in the encoded form of the hashing library
// (algorithm, parameters, salt and hash in one text), never as they were typed. The cost is the
// library's one for interactive logins: a fraction of a second and 64 MiB per check, which is
// why the server checks them away from its event loop.
class PasswordHash
{
public:
    // A new hash with a fresh salt; empty if the library could not make one (out of memory).
    static QByteArray make(const QString& password);
    // Whether the password is the one of the hash. A hash that is not of this form matches nothing.
    static bool verify(const QByteArray& hash, const QString& password);
    // A hash that no password is checked against in earnest: an unknown login takes as long to
    // refuse as a wrong password.
    static const QByteArray& decoy();

private:
    PasswordHash() = delete;
};

}  // namespace vdserver
