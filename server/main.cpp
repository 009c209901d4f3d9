#include "networkserver.h"
#include "server.h"
#include "serverlogging.h"
#include "serveroptions.h"

#include <QDir>
#include <QGuiApplication>
#include <QSocketNotifier>
#include <QStandardPaths>
#include <QTextStream>

#include <csignal>
#include <cstdio>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

namespace {
int signalPipe[2] = {-1, -1};

// Quits the event loop on SIGINT and SIGTERM, by way of a socket: a signal handler may do little
// more than write a byte.
void quitOnSignals(QCoreApplication& app)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) != 0)
        return;
    auto* notifier = new QSocketNotifier(signalPipe[1], QSocketNotifier::Read, &app);
    QObject::connect(notifier, &QSocketNotifier::activated, &app, [&app] {
        char signal = 0;
        if (::read(signalPipe[1], &signal, 1) == 1)
            qCInfo(vdserver::lcServer) << "stopping on signal" << int(signal);
        app.quit();
    });
    struct sigaction action = {};
    action.sa_handler = [](int signal) {
        const char byte = char(signal);
        [[maybe_unused]] const auto written = ::write(signalPipe[0], &byte, 1);
    };
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

// A line of standard input; asked for twice, without echo, when that is a terminal.
QString readPassword(const QString& login, QString* error)
{
    QTextStream in(stdin);
    if (!::isatty(STDIN_FILENO))
        return in.readLine();
    termios saved = {};
    ::tcgetattr(STDIN_FILENO, &saved);
    termios quiet = saved;
    quiet.c_lflag &= ~tcflag_t(ECHO);
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    QTextStream err(stderr);
    err << QCoreApplication::translate("vdserver", "New password of %1: ").arg(login) << Qt::flush;
    const QString first = in.readLine();
    err << '\n' << QCoreApplication::translate("vdserver", "Once more: ") << Qt::flush;
    const QString second = in.readLine();
    err << '\n' << Qt::flush;
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
    if (first != second) {
        *error = QCoreApplication::translate("vdserver", "The two passwords differ.");
        return {};
    }
    return first;
}

int fail(const QString& text)
{
    QTextStream(stderr) << text << Qt::endl;
    return 1;
}
}  // namespace

int main(int argc, char* argv[])
{
    // The demo set's portraits are drawn, and drawing text needs fonts, which come with a GUI
    // application; a server has no screen, so it draws off screen.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("vorandel"));
    QCoreApplication::setApplicationName(QStringLiteral("vdserver"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VDSERVER_VERSION));
    qSetMessagePattern(QStringLiteral("%{time yyyy-MM-dd hh:mm:ss.zzz} %{if-warning}warning: %{endif}"
                                      "%{if-critical}error: %{endif}%{message}"));

    const vdserver::ServerOptions::Parsed parsed = vdserver::ServerOptions::parse(QCoreApplication::arguments());
    if (const std::optional<int> exitCode = parsed.answer())
        return *exitCode;
    const vdserver::ServerOptions& options = parsed.options;

    vdserver::StoreLocation location;
    if (options.database) {
        location = *options.database;
    } else {
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
        if (!QDir().mkpath(folder))
            return fail(QCoreApplication::translate("vdserver", "Cannot make the data folder %1.").arg(folder));
        location = vdserver::StoreLocation::file(QDir(folder).filePath(QStringLiteral("store.sqlite")));
    }
    vdserver::Server server;
    if (!server.open(location))
        return fail(server.errorString());
    if (options.requests && !server.isNewStore())
        return fail(QCoreApplication::translate("vdserver", "%1 already holds a store, and --requests seeds a fresh "
                                                            "demo data set into a new one only.")
                        .arg(server.storeName()));
    if (server.isNewStore()) {
        vdserver::SeedOptions seed;
        if (options.requests)
            seed.requests = *options.requests;
        QTextStream(stdout) << QCoreApplication::translate("vdserver", "Seeding a demo data set of %1 requests into %2")
                                   .arg(seed.requests)
                                   .arg(server.storeName())
                            << Qt::endl;
        if (!server.seed(seed))
            return fail(server.errorString());
    }

    if (!options.setPasswordOf.isEmpty()) {
        QString error;
        const QString password = readPassword(options.setPasswordOf, &error);
        if (!error.isEmpty())
            return fail(error);
        if (password.isEmpty())
            return fail(QCoreApplication::translate("vdserver", "An empty password is no password."));
        if (!server.setPassword(options.setPasswordOf, password))
            return fail(server.errorString());
        return 0;
    }

    vdserver::NetworkServer network(server);
    network.setIdleTimeout(options.idleTimeoutMs);
    if (!network.listen(options.address, options.port))
        return fail(QCoreApplication::translate("vdserver", "Cannot listen on %1:%2: %3")
                        .arg(options.address.toString())
                        .arg(options.port)
                        .arg(network.errorString()));
    const QString address = network.address().protocol() == QAbstractSocket::IPv6Protocol
        ? QStringLiteral("[%1]").arg(network.address().toString())
        : network.address().toString();
    // Whoever started the server may want to know the port that it took.
    QTextStream(stdout) << QCoreApplication::translate("vdserver", "vdserver: listening on %1:%2")
                               .arg(address)
                               .arg(network.port())
                        << Qt::endl;
    quitOnSignals(app);
    const int code = app.exec();
    qCInfo(vdserver::lcServer) << "stopped";
    return code;
}
