#include "command.h"

#include "vddatastream.h"

QDataStream& operator<<(QDataStream& out, const CommandType& r)
{
    return out << qint32(r.type) << r.name;
}

QDataStream& operator>>(QDataStream& in, CommandType& r)
{
    qint32 type = 0;
    vdstream::readAll(in, type, r.name);
    r.type = type;
    return in;
}

QDataStream& operator<<(QDataStream& out, const Command& r)
{
    return out << r.id << r.origin << qint32(r.status) << qint32(r.type) << r.name << r.data << r.text;
}

QDataStream& operator>>(QDataStream& in, Command& r)
{
    qint32 status = 0, type = 0;
    vdstream::readAll(in, r.id, r.origin, status, type, r.name, r.data, r.text);
    r.status = status;
    r.type = type;
    return in;
}

QDebug operator<<(QDebug debug, const Command& command)
{
    QDebugStateSaver saver(debug);
    debug.nospace() << "Command(" << command.name << ", id " << command.id << ", status " << command.status
                    << ", " << command.data.size() << " bytes)";
    return debug;
}
