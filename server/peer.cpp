#include "peer.h"

#include <QAtomicInteger>

#include <algorithm>

namespace vdserver {

namespace {
QAtomicInteger<quint64> lastSerial;
}  // namespace

Peer::Peer() : m_serial(++lastSerial) {}

bool Peer::receives(const QString& name) const
{
    return std::any_of(m_receives.cbegin(), m_receives.cend(), [&name](const CommandType& type) { return type.name == name; });
}

}  // namespace vdserver
