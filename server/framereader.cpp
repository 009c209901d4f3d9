#include "framereader.h"

#include "vddatastream.h"

#include <QtEndian>

namespace vdserver {

namespace {
constexpr int LengthSize = sizeof(quint32);
}  // namespace

QByteArray FrameReader::frame(const Command& command)
{
    QByteArray bytes(LengthSize, Qt::Uninitialized);
    {
        VDDataStream out(&bytes, QIODevice::WriteOnly | QIODevice::Append);
        out << command;
    }
    qToBigEndian(quint32(bytes.size() - LengthSize), bytes.data());
    return bytes;
}

void FrameReader::append(const QByteArray& bytes)
{
    if (m_error.isEmpty())
        m_buffer.append(bytes);
}

FrameReader::Result FrameReader::next(Command& command)
{
    if (!m_error.isEmpty())
        return Result::Error;
    if (m_buffer.size() < LengthSize)
        return Result::NeedMore;
    const quint32 length = qFromBigEndian<quint32>(m_buffer.constData());
    if (length > MaxFrameSize)
        return fail(QStringLiteral("frame of %1 bytes, more than %2").arg(length).arg(MaxFrameSize));
    if (quint32(m_buffer.size() - LengthSize) < length)
        return Result::NeedMore;

    const QByteArray body = m_buffer.mid(LengthSize, int(length));
    m_buffer.remove(0, LengthSize + int(length));
    VDDataStream in(body);
    Command read;
    in >> read;
    if (in.status() != QDataStream::Ok)
        return fail(QStringLiteral("frame of %1 bytes is not a command").arg(length));
    if (!in.atEnd())
        return fail(QStringLiteral("frame of %1 bytes holds more than a command").arg(length));
    command = read;
    return Result::Command;
}

FrameReader::Result FrameReader::fail(const QString& error)
{
    m_error = error;
    m_buffer.clear();
    return Result::Error;
}

}  // namespace vdserver
