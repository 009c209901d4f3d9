#pragma once

#include "command.h"
#include "reply.h"
#include "vddatastream.h"

#include <QObject>
#include <QString>

#include <new>

namespace vdserver {

// One group of the exchange's commands that the server answers. A service answers a query at
// once through handle(); what it sends of its own accord later goes out through commandReady.
class Service : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    // Whether a command of this name is answered here.
    virtual bool handles(const QString& name) const = 0;
    // Answers a query. A refused query leaves every object as it was.
    virtual Reply handle(const Command& query) = 0;

signals:
    // A command that the server pushes to the console.
    void commandReady(const Command& command);

protected:
    // Reads the values of a query in order; false for a short or broken payload. The stream's
    // containers reserve as many elements as a count claims, so a corrupt count can fail the
    // allocation: that too is a broken payload, not a reason to go down.
    template <typename... Values>
    static bool read(QDataStream& in, Values&... values)
    {
        try {
            (in >> ... >> values);
        } catch (const std::bad_alloc&) {
            in.setStatus(QDataStream::ReadCorruptData);
        }
        return in.status() == QDataStream::Ok;
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
