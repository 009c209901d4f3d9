#include "servicerecords.h"

#include "vddatastream.h"

namespace vorandel {

QDataStream& operator<<(QDataStream& out, const ACCESS_CHANGES& r)
{
    return out << r.subject << r.object << r.state << r.set_child << qint32(r.ref_type);
}

QDataStream& operator>>(QDataStream& in, ACCESS_CHANGES& r)
{
    qint32 refType = 0;
    vdstream::readAll(in, r.subject, r.object, r.state, r.set_child, refType);
    r.ref_type = refType;
    return in;
}

QDataStream& operator<<(QDataStream& out, const TEMPLATE_DATA& r)
{
    return out << qint32(r.id) << qint32(r.quality) << qint32(r.device) << qint32(r.kind) << r.data << r.extra
               << r.index;
}

QDataStream& operator>>(QDataStream& in, TEMPLATE_DATA& r)
{
    qint32 id = 0, quality = 255, device = 0, kind = 0;
    vdstream::readAll(in, id, quality, device, kind, r.data, r.extra, r.index);
    r.id = id;
    r.quality = quality;
    r.device = device;
    r.kind = kind;
    return in;
}

QDataStream& operator<<(QDataStream& out, const BLOB_DATA_RESQUEST& r)
{
    return out << r.uid << r.name << r.md5;
}

QDataStream& operator>>(QDataStream& in, BLOB_DATA_RESQUEST& r)
{
    vdstream::readAll(in, r.uid, r.name, r.md5);
    return in;
}

QDataStream& operator<<(QDataStream& out, const SYSLOG_DATA& r)
{
    return out << r.code << r.user << r.text << r.time;
}

QDataStream& operator>>(QDataStream& in, SYSLOG_DATA& r)
{
    vdstream::readAll(in, r.code, r.user, r.text, r.time);
    return in;
}

QDataStream& operator<<(QDataStream& out, const EMAIL_MESSAGE& r)
{
    return out << r.to << r.subject << r.body << r.attachments;
}

QDataStream& operator>>(QDataStream& in, EMAIL_MESSAGE& r)
{
    vdstream::readAll(in, r.to, r.subject, r.body, r.attachments);
    return in;
}

QDataStream& operator<<(QDataStream& out, const SCHEDULE_DATA& r)
{
    return out << qint32(r.id) << r.name << r.intervals;
}

QDataStream& operator>>(QDataStream& in, SCHEDULE_DATA& r)
{
    qint32 id = 0;
    vdstream::readAll(in, id, r.name, r.intervals);
    r.id = id;
    return in;
}

}  // namespace vorandel

QDataStream& operator<<(QDataStream& out, const PLUGIN_TAB& r)
{
    return out << r.title << r.icon << r.index << r.count;
}

QDataStream& operator>>(QDataStream& in, PLUGIN_TAB& r)
{
    return in >> r.title >> r.icon >> r.index >> r.count;
}
