#include "vddatastream.h"

#include <QDate>
#include <QDateTime>
#include <QIODevice>
#include <QTime>
#include <QTimeZone>
#include <QtEndian>

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

namespace {
// Whether the length that a string or a byte array is about to claim, in bytes, fits in what is
// left. Qt reads such a length in steps of a megabyte, allocating each before it finds the bytes
// missing.
bool lengthFits(QDataStream& in)
{
    QIODevice* device = in.device();
    if (!device || device->isSequential())
        return true;
    const QByteArray head = device->peek(sizeof(quint32));
    if (head.size() < int(sizeof(quint32)))
        return true;  // too short for a length: Qt's reader says so
    const quint32 length = in.byteOrder() == QDataStream::BigEndian ? qFromBigEndian<quint32>(head.constData())
                                                                    : qFromLittleEndian<quint32>(head.constData());
    const quint32 null = 0xffffffff;
    return length == null || qint64(length) <= device->bytesAvailable() - qint64(sizeof(quint32));
}

template <typename Text>
void readText(QDataStream& in, Text& value)
{
    if (!lengthFits(in)) {
        value = Text();
        in.setStatus(QDataStream::ReadCorruptData);
        return;
    }
    in >> value;
}

// A value of a wire type that has a checked reader of its own.
template <typename T>
void readVariant(QDataStream& in, QVariant& value)
{
    T read;
    vdstream::read(in, read);
    if (in.status() == QDataStream::Ok)
        value = read;
}
}  // namespace

void read(QDataStream& in, QString& value)
{
    readText(in, value);
}

void read(QDataStream& in, QByteArray& value)
{
    readText(in, value);
}

// Qt reads a time in a zone that this machine doesn't know with no zone at all: it names no
// instant, and writing it again dereferences the missing zone.
void read(QDataStream& in, QDateTime& value)
{
    in >> value;
    if (in.status() != QDataStream::Ok)
        return;
    if (value.timeSpec() == Qt::TimeZone && !value.timeZone().isValid()) {
        value = QDateTime();
        in.setStatus(QDataStream::ReadCorruptData);
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
    switch (type) {
    case QMetaType::UnknownType:
        return;
    case QMetaType::QString:
        return readVariant<QString>(in, value);
    case QMetaType::QByteArray:
        return readVariant<QByteArray>(in, value);
    case QMetaType::QDateTime:
        return readVariant<QDateTime>(in, value);
    default:
        break;
    }
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
