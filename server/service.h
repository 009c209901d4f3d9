#pragma once

#include "command.h"
#include "reply.h"
#include "vddatastream.h"

#include <QObject>
#include <QString>


namespace vdserver {

class Peer;

// One group of the exchange's commands that the server answers. A service answers a query at
// once through handle(); what it sends of its own accord later goes out through commandReady.
class Service : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    // Whether a command of this name is answered here.
    virtual bool handles(const QString& name) const = 0;
    // Answers a query of a peer. A refused query leaves every object as it was.
    virtual Reply handle(const Command& query, Peer& from) = 0;

signals:
    // A command that the server pushes: to the peer of that serial (Peer::serial), or with 0 to
    // every peer whose plug-ins receive it.
    void commandReady(const Command& command, quint64 peer = 0);

protected:
    // Reads the values of a query in order; false for a short or broken payload (a count that
    // claims more than the payload holds, a value of a type the exchange doesn't carry).
    template <typename... Values>
    static bool read(QDataStream& in, Values&... values)
    {
        return vdstream::readAll(in, values...);
    }

    // The answer to a payload that read() refused.
    Reply malformed() const;

    // A command to push, with these values as its payload.
    template <typename... Values>
    static Command makeCommand(const QString& name, int type, const Values&... values)
    {
        Command command;
        command.name = name;
        command.type = type;
        command.status = Command::StatusOk;
        VDDataStream out(&command.data, QIODevice::WriteOnly);
        (out << ... << values);
        return command;
    }
};

}  // namespace vdserver
