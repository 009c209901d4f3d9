#include "serveroptions.h"

#include <QCommandLineParser>

namespace vdserver {

std::optional<Endpoint> Endpoint::parse(const QString& text, bool anyPort, QString* error)
{
    const int colon = text.lastIndexOf(QLatin1Char(':'));
    QString host = text.left(colon).trimmed();
    const QString portText = text.mid(colon + 1).trimmed();
    if (host.startsWith(QLatin1Char('[')) && host.endsWith(QLatin1Char(']')))
        host = host.mid(1, host.size() - 2);
    bool number = false;
    const uint port = portText.toUInt(&number);
    if (colon < 0 || host.isEmpty()) {
        *error = ServerOptions::tr("'%1' is not HOST:PORT").arg(text);
        return std::nullopt;
    }
    if (!number || port > 65535 || (port == 0 && !anyPort)) {
        *error = ServerOptions::tr("'%1' is not a port").arg(portText);
        return std::nullopt;
    }
    return Endpoint{host, quint16(port)};
}

ServerOptions::Parsed ServerOptions::parse(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        tr("The server of the operator consoles: keeps the objects in a database and serves the consoles that "
           "connect to it over TCP (vdconsole --server HOST:PORT)."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption listen(
        QStringLiteral("listen"),
        tr("Listen on ADDRESS:PORT (default: 127.0.0.1:%1, this machine only). 0.0.0.0 or [::] for every "
           "network; port 0 for any free one, which the server prints.")
            .arg(DefaultPort),
        QStringLiteral("ADDRESS:PORT"));
    const QCommandLineOption database(
        QStringLiteral("database"),
        tr("Keep the data in the SQLite file FILE, or in the PostgreSQL database of the address "
           "postgresql://USER@HOST:PORT/DBNAME (default: store.sqlite in the server's data folder). A new store "
           "is filled with the demo data set."),
        QStringLiteral("FILE|URL"));
    const QCommandLineOption requests(QStringLiteral("requests"),
                                      tr("Seed a fresh demo data set with about N pass requests; the store must "
                                         "be new (name one with --database)."),
                                      QStringLiteral("N"));
    const QCommandLineOption idle(QStringLiteral("idle-timeout"),
                                  tr("Drop a console that sends nothing for SECONDS (default 30; consoles send a "
                                     "sign of life every 10)."),
                                  QStringLiteral("SECONDS"));
    const QCommandLineOption setPassword(
        QStringLiteral("set-password"),
        tr("Set the password of LOGIN to the first line of standard input, and exit."), QStringLiteral("LOGIN"));
    parser.addOptions({listen, database, requests, idle, setPassword});

    if (std::optional<Parsed> settled = Parsed::settle(parser, arguments))
        return *settled;
    const auto failure = &Parsed::failure;

    Parsed parsed;
    ServerOptions& options = parsed.options;
    if (parser.isSet(listen)) {
        QString error;
        const std::optional<Endpoint> endpoint = Endpoint::parse(parser.value(listen), true, &error);
        if (!endpoint)
            return failure(tr("--listen: %1.").arg(error));
        const QString host = endpoint->host;
        if (host == QLatin1String("localhost"))
            options.address = QHostAddress::LocalHost;
        else if (!options.address.setAddress(host))
            return failure(tr("--listen: '%1' is not an address of this machine's networks.").arg(host));
        options.port = endpoint->port;
    }
    if (parser.isSet(database)) {
        QString error;
        options.database = StoreLocation::parse(parser.value(database), &error);
        if (!options.database)
            return failure(tr("--database: %1").arg(error));
    }
    if (parser.isSet(requests)) {
        bool ok = false;
        const int count = parser.value(requests).toInt(&ok);
        if (!ok || count < 0 || count > MaxRequests)
            return failure(tr("--requests takes a whole number from 0 to %1, not '%2'.")
                               .arg(MaxRequests)
                               .arg(parser.value(requests)));
        options.requests = count;
    }
    if (parser.isSet(idle)) {
        bool ok = false;
        const double seconds = parser.value(idle).toDouble(&ok);
        if (!ok || seconds <= 0 || seconds > 24 * 3600)
            return failure(tr("--idle-timeout takes a number of seconds, not '%1'.").arg(parser.value(idle)));
        options.idleTimeoutMs = qRound(seconds * 1000);
    }
    if (parser.isSet(setPassword)) {
        options.setPasswordOf = parser.value(setPassword).trimmed();
        if (options.setPasswordOf.isEmpty())
            return failure(tr("--set-password needs a login."));
    }
    parsed.outcome = Parsed::Run;
    return parsed;
}

}  // namespace vdserver
