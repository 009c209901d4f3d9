#pragma once

#include "commandline.h"
#include "storelocation.h"

#include <QCoreApplication>
#include <QHostAddress>
#include <QString>
#include <QStringList>

#include <optional>

namespace vdserver {

// A host and a port, as given on a command line: "HOST:PORT", "[IPv6]:PORT".
struct Endpoint
{
    QString host;
    quint16 port = 0;

    // nullopt, with `error` saying what is wrong, for text that isn't one. A port of 0 is taken
    // only where `anyPort` allows it.
    static std::optional<Endpoint> parse(const QString& text, bool anyPort, QString* error);
};

// What vdserver was asked to do on its command line.
struct ServerOptions
{
    Q_DECLARE_TR_FUNCTIONS(ServerOptions)

public:
    static constexpr quint16 DefaultPort = 7430;
    static constexpr int MaxRequests = 1000000;

    QHostAddress address = QHostAddress::LocalHost;
    quint16 port = DefaultPort;
    // Empty: the file in the data folder.
    std::optional<StoreLocation> database;
    std::optional<int> requests;  // seed a fresh demo set of this size into a new store
    int idleTimeoutMs = 30000;
    QString setPasswordOf;  // set this login's password, read from standard input, and exit

    using Parsed = ParsedCommandLine<ServerOptions>;
    // Reads the arguments, the program's name first.
    static Parsed parse(const QStringList& arguments);
};

}  // namespace vdserver
