#include "peer.h"

#include <algorithm>

namespace vdserver {

bool Peer::receives(const QString& name) const
{
    return std::any_of(m_receives.cbegin(), m_receives.cend(), [&name](const CommandType& type) { return type.name == name; });
}

}  // namespace vdserver
