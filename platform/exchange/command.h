#pragma once

#include "vdplatform_export.h"

#include <QByteArray>
#include <QDataStream>
#include <QDebug>
#include <QList>
#include <QMetaType>
#include <QString>

// A kind of message at the exchange: its class and its full name.
struct VDPLATFORM_EXPORT CommandType
{
    int type = 8;
    QString name;

    CommandType() = default;
    CommandType(int type, const QString& name) : type(type), name(name) {}
    bool operator==(const CommandType& o) const { return type == o.type && name == o.name; }
};

using COMMAND_LIST = QList<CommandType>;

// One message of the exchange. A query and its answer share `id`.
struct VDPLATFORM_EXPORT Command
{
    // Status values that every handler tells apart; any other value is a failure.
    enum Status : int {
        StatusNone = 0,
        StatusOk = 1,
        StatusFailed = 2,
        StatusBiometricsLocked = 18,  // the server forbids editing biometric data
    };

    quint64 id = 0;      // set by newCommand
    quint64 origin = 0;  // the exchange's number of the sender
    int status = StatusNone;
    int type = 0;
    QString name;
    QByteArray data;  // payload, written and read with a VDDataStream
    QString text;     // the exchange's own note; plug-ins never touch it

    bool ok() const { return status == StatusOk; }
};

VDPLATFORM_EXPORT QDataStream& operator<<(QDataStream& out, const CommandType& r);
VDPLATFORM_EXPORT QDataStream& operator>>(QDataStream& in, CommandType& r);
VDPLATFORM_EXPORT QDataStream& operator<<(QDataStream& out, const Command& r);
VDPLATFORM_EXPORT QDataStream& operator>>(QDataStream& in, Command& r);
VDPLATFORM_EXPORT QDebug operator<<(QDebug debug, const Command& command);

Q_DECLARE_METATYPE(CommandType)
Q_DECLARE_METATYPE(Command)
