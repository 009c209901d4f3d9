#pragma once

#include "command.h"

#include <QByteArray>
#include <QString>

namespace vdserver {

// The exchange on a TCP connection: one frame per command, a 32-bit length (big-endian) and then
// the command in its VDDataStream form, which fills the frame exactly.
//
// The reader takes the bytes as they come and hands out whole commands. The other side is not
// trusted: a frame longer than MaxFrameSize, or one that doesn't hold exactly one command, is an
// error after which the reader refuses everything, since nothing after it can be framed again.
class FrameReader
{
public:
    // Large enough for a worker's photo of some megabytes, small enough that a forged length
    // can't make the reader hold much.
    static constexpr quint32 MaxFrameSize = 32 * 1024 * 1024;

    enum class Result {
        Command,   // a command was read
        NeedMore,  // nothing whole yet
        Error,     // the stream is broken: see errorString()
    };

    // The frame of a command.
    static QByteArray frame(const Command& command);

    void append(const QByteArray& bytes);
    // The next command from what was appended.
    Result next(Command& command);

    // Whether a frame has begun that has not come whole: at the end of the connection, a
    // truncated frame.
    bool hasPartialFrame() const { return !m_buffer.isEmpty(); }
    QString errorString() const { return m_error; }

private:
    Result fail(const QString& error);

    QByteArray m_buffer;
    QString m_error;
};

}  // namespace vdserver
