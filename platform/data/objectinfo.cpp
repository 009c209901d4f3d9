#include "objectinfo.h"

#include "vddatastream.h"

#include <QDebug>

namespace vorandel {

INHERIT_DATA::INHERIT_DATA(TYPE_ID first, TYPE_ID second, unsigned int type, unsigned int priority,
                           const QDateTime& dateFrom, const QDateTime& dateTo)
    : first(first), second(second), type(type), priority(priority), dateFrom(dateFrom), dateTo(dateTo)
{
}

bool INHERIT_DATA::operator==(const INHERIT_DATA& other) const
{
    return first == other.first && second == other.second && type == other.type
        && priority == other.priority && dateFrom == other.dateFrom && dateTo == other.dateTo;
}

bool SortInheritDataByPriority(const INHERIT_DATA& a, const INHERIT_DATA& b)
{
    return a.priority < b.priority;
}

ObjectInfo::ObjectInfo(const QByteArray& serialized)
{
    if (serialized.isEmpty())
        return;
    VDDataStream in(serialized);
    ObjectInfo read;
    in >> read;
    if (in.status() == QDataStream::Ok)
        *this = read;
}

QByteArray ObjectInfo::toByteArray() const
{
    QByteArray bytes;
    VDDataStream out(&bytes, QIODevice::WriteOnly);
    out << *this;
    return bytes;
}

bool ObjectInfo::operator==(const ObjectInfo& other) const
{
    return uid == other.uid && type == other.type && parent == other.parent
        && parameters == other.parameters && modified == other.modified && inherits == other.inherits
        && inheritedBy == other.inheritedBy;
}

QDataStream& operator<<(QDataStream& out, const INHERIT_DATA& data)
{
    return out << data.first << data.second << data.type << data.priority << data.dateFrom << data.dateTo;
}

QDataStream& operator>>(QDataStream& in, INHERIT_DATA& data)
{
    vdstream::readAll(in, data.first, data.second, data.type, data.priority, data.dateFrom, data.dateTo);
    return in;
}

QDataStream& operator<<(QDataStream& out, const ObjectInfo& info)
{
    return out << info.uid << info.type << info.parent << info.parameters << info.modified << info.inherits
               << info.inheritedBy;
}

QDataStream& operator>>(QDataStream& in, ObjectInfo& info)
{
    vdstream::readAll(in, info.uid, info.type, info.parent, info.parameters, info.modified, info.inherits,
                      info.inheritedBy);
    return in;
}

QDebug operator<<(QDebug debug, const INHERIT_DATA& data)
{
    QDebugStateSaver saver(debug);
    debug.nospace() << "INHERIT_DATA(" << data.first << " -> " << data.second << ", type " << data.type
                    << ", priority " << data.priority << ')';
    return debug;
}

QDebug operator<<(QDebug debug, const ObjectInfo& info)
{
    QDebugStateSaver saver(debug);
    debug.nospace() << "ObjectInfo(" << info.uid << ", " << info.type << ", parent " << info.parent << ", "
                    << info.parameters.size() << " parameters, " << info.inherits.size() << " links)";
    return debug;
}

}  // namespace vorandel
