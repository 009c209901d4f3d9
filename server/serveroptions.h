#pragma once

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

    struct Parsed;
    // Reads the arguments, the program's name first.
    static Parsed parse(const QStringList& arguments);
};

struct ServerOptions::Parsed
{
    enum Outcome {
        Run,      // `options` holds what to do
        Help,     // print `text` to standard output and exit with success
        Version,  // likewise
        Error,    // print `text` to standard error and exit with failure
    };

    Outcome outcome = Error;
    ServerOptions options;
    QString text;
};

}  // namespace vdserver
