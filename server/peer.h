#pragma once

#include "accounts.h"
#include "command.h"

#include <QString>

namespace vdserver {

// Whoever sends the server its queries and takes the commands it pushes: the console that embeds
// the server, or a console connected over the network.
class Peer
{
public:
    Peer();
    virtual ~Peer() = default;

    // Unique in the process and never reused: a command meant for this peer finds it, and never
    // one that later took its place in memory.
    quint64 serial() const { return m_serial; }

    // Who it is, for the log: an address, and the login once there is one.
    virtual QString describe() const = 0;
    // Whether it has logged in; nothing but a login is served before.
    virtual bool isLoggedIn() const = 0;
    // Whether its queries may act in the name of this session: a connected console acts in its
    // own name only, the embedded one in the name of any session that its server opened.
    virtual bool mayActAs(const Session& session) const = 0;
    // Takes a command that the server pushes.
    virtual void push(const Command& command) = 0;

    // The command types that the plug-ins of its console receive, as they last said.
    COMMAND_LIST receives() const { return m_receives; }
    void setReceives(const COMMAND_LIST& types) { m_receives = types; }
    bool receives(const QString& name) const;

private:
    const quint64 m_serial;
    COMMAND_LIST m_receives;
};

}  // namespace vdserver
