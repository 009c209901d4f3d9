#include "vddatastream.h"

#include <QDate>
#include <QDateTime>
#include <QIODevice>
#include <QTime>

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

namespace vdstream {

bool countFits(QDataStream& in, quint32 count)
{
    const QIODevice* device = in.device();
    return device && (device->isSequential() || qint64(count) <= device->bytesAvailable());
}

bool isWireType(int type)
{
    switch (type) {
    case QMetaType::UnknownType:
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::QString:
    case QMetaType::QByteArray:
    case QMetaType::QDate:
    case QMetaType::QTime:
    case QMetaType::QDateTime:
        return true;
    default:
        return false;
    }
}

// The stream form of QVariant: the type's number, a null flag, then the value as its type writes
// it. A named user type is never one of the wire's.
void read(QDataStream& in, QVariant& value)
{
    value = QVariant();
    quint32 type = 0;
    qint8 isNull = 0;
    in >> type >> isNull;
    if (in.status() != QDataStream::Ok)
        return;
    if (!isWireType(int(type))) {
        in.setStatus(QDataStream::ReadCorruptData);
        return;
    }
    if (type == QMetaType::UnknownType)
        return;
    QVariant read(int(type), nullptr);
    if (!QMetaType::load(in, int(type), read.data()) || in.status() != QDataStream::Ok) {
        in.setStatus(QDataStream::ReadCorruptData);
        return;
    }
    value = read;
}

void read(QDataStream& in, QStringList& list)
{
    detail::readSequence(in, list);
}

}  // namespace vdstream
