#pragma once

#include "command.h"
#include "vddatastream.h"

#include <QByteArray>
#include <QString>

namespace vdserver {

// The server's answer to one query: a status and its payload.
struct Reply
{
    int status = Command::StatusOk;
    QByteArray data;
    // The login in whose name the query acted, for the log; empty when it names no session.
    QString actor;

    // Success, with these values as the payload.
    template <typename... Values>
    static Reply success(const Values&... values)
    {
        Reply reply;
        if constexpr (sizeof...(Values) > 0) {
            VDDataStream out(&reply.data, QIODevice::WriteOnly);
            (out << ... << values);
        }
        return reply;
    }

    // Failure; the text for the operator is the first value of the payload.
    static Reply failure(const QString& text, int status = Command::StatusFailed)
    {
        Reply reply = success(text);
        reply.status = status;
        return reply;
    }

    bool ok() const { return status == Command::StatusOk; }
};

}  // namespace vdserver
