#pragma once

#include "vdplatform_export.h"

#include <QDataStream>

// The data stream of the exchange. Both ends of every payload use it, so it pins the stream
// version and byte order once for everybody.
class VDPLATFORM_EXPORT VDDataStream : public QDataStream
{
public:
    // Writes into (or, with a read mode, reads from) the given payload.
    VDDataStream(QByteArray* bytes, QIODevice::OpenMode mode);
    // Reads a payload.
    explicit VDDataStream(const QByteArray& bytes);

    static constexpr int Version = QDataStream::Qt_5_15;
};
