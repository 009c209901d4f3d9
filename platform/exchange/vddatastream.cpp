#include "vddatastream.h"

VDDataStream::VDDataStream(QByteArray* bytes, QIODevice::OpenMode mode) : QDataStream(bytes, mode)
{
    setVersion(Version);
    setByteOrder(QDataStream::BigEndian);
}

VDDataStream::VDDataStream(const QByteArray& bytes) : QDataStream(bytes)
{
    setVersion(Version);
    setByteOrder(QDataStream::BigEndian);
}
