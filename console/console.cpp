#include "console.h"

#include "authdata.h"
#include "cardreaderdialog.h"
#include "constants.h"
#include "consolelogging.h"
#include "localdatamanager.h"
#include "localstorage.h"
#include "logindialog.h"
#include "mainwindow.h"
#include "screenshot.h"
#include "server.h"
#include "serverclient.h"
#include "storemirror.h"
#include "vdglobals.h"
#include "vdguiglobals.h"
#include "vdserverinterface.h"

#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QLocale>
#include <QPointer>
#include <QProgressDialog>
#include <QStandardPaths>
#include <QTabWidget>
#include <QTextStream>

#include <algorithm>
#include <optional>

namespace {
// The operator's store, in the user's data folder unless --database names another.
const QString StoreFileName = QStringLiteral("store.sqlite");
// From this many requests on, the console says what it is doing while the tab fills its table.
constexpr int ManyRequests = 5000;
// A store file of about as many requests, which the server takes a moment to read.
constexpr qint64 LargeStoreBytes = 4 * 1024 * 1024;

// A window that says what the console is busy with; it shows only if that takes a while.
std::unique_ptr<QProgressDialog> progressWindow(const QString& text)
{
    auto window = std::make_unique<QProgressDialog>(text, QString(), 0, 0);
    window->setWindowTitle(QCoreApplication::translate("Console", "Консоль оператора"));
    window->setWindowModality(Qt::ApplicationModal);
    window->setMinimumDuration(400);
    window->setAutoClose(false);
    window->setAutoReset(false);
    return window;
}

// The same, shown and painted at once: for work that blocks the event loop from its start.
std::unique_ptr<QProgressDialog> shownProgressWindow(const QString& text)
{
    auto window = progressWindow(text);
    window->show();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    return window;
}
}  // namespace

Console::Console(const ConsoleOptions& options, QObject* parent) : QObject(parent), m_options(options)
{
    if (m_options.server) {
        m_client = std::make_unique<vdserver::ServerClient>(m_options.server->host, m_options.server->port);
        m_mirror = std::make_unique<vdserver::StoreMirror>(m_client.get());
        // The store's copy is the mirror's; every other push is for the plug-ins.
        connect(m_client.get(), &vdserver::ServerClient::pushed, this, [](const Command& command) {
            if (command.name.startsWith(QLatin1String("store.")))
                return;
            Command delivered = command;
            VDServerInterface::instance()->deliver(delivered);
        });
    } else {
        m_server = std::make_unique<vdserver::Server>();
        m_server->setPushTarget([](Command& command) { VDServerInterface::instance()->deliver(command); });
        m_server->setCardHolder(true);
        connect(m_server.get(), &vdserver::Server::cardWanted, this, &Console::askForCard);
    }
    m_localData = std::make_unique<LocalDataManager>(source());
}

Console::~Console() = default;

vdserver::ObjectSource* Console::source() const
{
    if (m_server)
        return m_server.get();
    return m_mirror.get();
}

vdserver::Server& Console::server()
{
    Q_ASSERT(m_server);
    return *m_server;
}

bool Console::logIn()
{
    return m_server ? logInEmbedded() : logInRemote();
}

bool Console::logInEmbedded()
{
    const QString login = m_options.user.isEmpty() ? m_server->defaultLogin() : m_options.user;
    // The demo set's users are all there are: a login outside it is refused before a store is
    // made or seeded.
    const QVector<vdserver::SeedData::DemoUser>& users = vdserver::SeedData::demoUsers();
    if (std::none_of(users.cbegin(), users.cend(), [&](const auto& user) { return user.login == login; })) {
        m_error = unknownUserText(login);
        return false;
    }
    if (!openStore())
        return false;

    const std::optional<vdserver::Session> session = m_server->login(login);
    const std::optional<vdserver::Account> account = m_server->account(login);
    if (!session || !account) {
        m_error = unknownUserText(login);
        return false;
    }
    AuthData::setSession(session->userId, session->login, session->roles, session->sessionId);
    m_userName = account->displayName.isEmpty() ? login : account->displayName;
    qCInfo(lcConsole) << "logged in as" << login << session->roles;
    return true;
}

bool Console::openStore()
{
    const bool fresh = m_options.requests.has_value();
    vdserver::StoreLocation location;
    if (m_options.database) {
        location = *m_options.database;
    } else {
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
        if (!QDir().mkpath(folder)) {
            m_error = tr("Cannot make the data folder %1.").arg(QDir::toNativeSeparators(folder));
            return false;
        }
        const QString name = fresh ? QStringLiteral("demo-%1.sqlite").arg(*m_options.requests) : StoreFileName;
        location = vdserver::StoreLocation::file(QDir(folder).filePath(name));
    }
    std::unique_ptr<QProgressDialog> opening;
    if (location.engine() == vdserver::StoreLocation::Engine::SQLite
        && QFileInfo(location.path()).size() >= LargeStoreBytes) {
        // The server reads the whole store before anything else can show: the window comes first.
        opening = shownProgressWindow(tr("Открытие хранилища %1…").arg(QDir::toNativeSeparators(location.path())));
    }
    const bool opened = m_server->open(location);
    opening.reset();
    if (!opened) {
        m_error = m_server->errorString();
        return false;
    }
    // The operator's own store is never seeded over; the demo file of --requests is there for it.
    if (fresh && m_options.database && !m_server->isNewStore()) {
        m_error = tr("%1 already holds a store, and --requests seeds a fresh demo data set into a new one only. "
                     "Remove it, or name another with --database.")
                      .arg(m_server->storeName());
        return false;
    }
    if (!fresh && !m_server->isNewStore()) {
        qCInfo(lcConsole).noquote() << "store" << m_server->storeName();
        return true;
    }
    vdserver::SeedOptions seed;
    if (fresh)
        seed.requests = *m_options.requests;
    const auto progress =
        progressWindow(tr("Создание демонстрационных данных (заявок: %1)…").arg(QLocale().toString(seed.requests)));
    const bool seeded = m_server->seed(seed, [&progress](int done, int total) {
        progress->setMaximum(total);
        progress->setValue(done);
    });
    progress->close();
    if (!seeded) {
        m_error = m_server->errorString();
        return false;
    }
    QTextStream(stdout) << (fresh ? tr("A fresh demo data set of %1 requests is in %2").arg(seed.requests)
                                  : tr("A new store with the demo data set is in %1"))
                                   .arg(m_server->storeName())
                        << Qt::endl;
    return true;
}

bool Console::logInRemote()
{
    std::optional<vdserver::ServerClient::LoginResult> result;
    if (qEnvironmentVariableIsSet(PasswordVariable)) {
        QEventLoop loop;
        m_client->logIn(m_options.user, qEnvironmentVariable(PasswordVariable),
                        [&](const vdserver::ServerClient::LoginResult& given) {
                            result = given;
                            loop.quit();
                        });
        loop.exec();
        if (!result->ok()) {
            // A server that was never reached says so itself, with its address.
            const bool reached = m_client->state() != vdserver::ServerClient::State::Disconnected;
            m_error = reached ? tr("%1 refused the login '%2': %3").arg(m_client->address(), m_options.user, result->error)
                              : result->error;
            return false;
        }
        m_userName = result->displayName;
    } else if (!askForPassword(m_options.user)) {
        return false;
    }

    const vdserver::Session& session = m_client->session();
    AuthData::setSession(session.userId, session.login, session.roles, session.sessionId);
    if (m_userName.isEmpty())
        m_userName = session.login;
    qCInfo(lcConsole).noquote() << "logged in to" << m_client->address() << "as" << session.login << session.roles;
    return loadCopy();
}

bool Console::askForPassword(const QString& login)
{
    LoginDialog dialog(m_client->address(), login);
    const QPointer<LoginDialog> shown(&dialog);
    connect(&dialog, &LoginDialog::submitted, this, [this, shown](const QString& name, const QString& password) {
        m_client->logIn(name, password, [this, shown](const vdserver::ServerClient::LoginResult& result) {
            if (!shown)
                return;
            if (!result.ok()) {
                shown->refuse(result.error);
                return;
            }
            m_userName = result.displayName;
            shown->succeed();
        });
    });
    if (dialog.exec() == QDialog::Accepted)
        return true;
    m_client->close();
    m_error.clear();
    return false;
}

bool Console::loadCopy()
{
    const auto progress = progressWindow(tr("Загрузка данных с сервера %1…").arg(m_client->address()));
    QEventLoop loop;
    QString failure;
    const auto stop = [&](const QString& reason) {
        failure = reason;
        loop.quit();
    };
    const QList<QMetaObject::Connection> connections = {
        connect(m_mirror.get(), &vdserver::StoreMirror::loading, progress.get(),
                [&progress](int received, int total) {
                    progress->setMaximum(total);
                    progress->setValue(received);
                }),
        connect(m_mirror.get(), &vdserver::StoreMirror::synced, &loop, &QEventLoop::quit),
        connect(m_mirror.get(), &vdserver::StoreMirror::failed, &loop, stop),
        connect(m_client.get(), &vdserver::ServerClient::connectionLost, &loop, stop),
    };
    m_mirror->follow();
    loop.exec();
    for (const QMetaObject::Connection& connection : connections)
        disconnect(connection);
    progress->close();
    if (!failure.isEmpty()) {
        m_error = tr("Cannot load the data of %1: %2").arg(m_client->address(), failure);
        return false;
    }
    return true;
}

QString Console::errorString() const
{
    return m_error;
}

QString Console::unknownUserText(const QString& login) const
{
    const QVector<vdserver::SeedData::DemoUser>& users = vdserver::SeedData::demoUsers();
    int loginWidth = 0;
    int nameWidth = 0;
    for (const auto& user : users) {
        loginWidth = std::max(loginWidth, int(user.login.size()));
        nameWidth = std::max(nameWidth, int(user.displayName().size()));
    }
    QStringList lines{tr("Unknown user '%1'. Log in with --user as one of:").arg(login)};
    for (const auto& user : users) {
        const QString roles = user.roles.isEmpty() ? tr("(no rights)") : user.roles.join(QStringLiteral(", "));
        lines << QStringLiteral("  %1  %2  %3")
                     .arg(user.login, -loginWidth)
                     .arg(user.displayName(), -nameWidth)
                     .arg(roles);
    }
    return lines.join(QLatin1Char('\n'));
}

void Console::start()
{
    m_window = std::make_unique<MainWindow>(m_userName);
    // A picture keeps the window's own size, whatever the operator last made of it.
    if (m_options.screenshotFile.isEmpty())
        m_window->rememberGeometry();
    VDGuiGlobals::vdApp = m_window.get();

    m_host.addBuiltIn(m_localData.get());
    const int loaded = m_host.load(m_options.pluginDir);
    std::unique_ptr<QProgressDialog> progress;
    const vorandel::OBJECT_HASH* requests = m_server ? m_server->objects(vorandel::PASS_REQUEST_DATANAME)
                                                     : m_mirror->objects(vorandel::PASS_REQUEST_DATANAME);
    if (requests && requests->size() >= ManyRequests) {
        // The tabs fill their tables in one go: the window is shown and painted before.
        progress =
            shownProgressWindow(tr("Заполнение таблицы (заявок: %1)…").arg(QLocale().toString(requests->size())));
    }
    if (m_server)
        m_host.start(m_window->tabs(), m_server.get());
    else
        m_host.start(m_window->tabs(), m_client.get());
    progress.reset();

    const QStringList problems = m_host.problems();
    if (loaded == 0) {
        m_window->showMessage(tr("Модули консоли не найдены"), problems);
    } else if (m_window->tabs()->count() == 0) {
        m_window->showMessage(tr("Нет доступных вкладок"),
                              QStringList{tr("Пользователю %1 не доступна ни одна вкладка консоли").arg(m_userName)}
                                  + problems);
    } else {
        m_window->showProblems(problems);
    }
    if (m_client)
        followConnection();
    m_window->show();

    if (!m_options.screenshotFile.isEmpty()) {
        auto* screenshot =
            new Screenshot(m_window.get(), m_window->tabs(), m_options.screenshotFile, m_options.screenshot, this);
        connect(screenshot, &Screenshot::finished, this, &Console::finished);
        screenshot->take();
    }
}

void Console::followConnection()
{
    const QString address = m_client->address();
    connect(m_client.get(), &vdserver::ServerClient::connectionLost, m_window.get(), [this, address] {
        m_window->setOffline(tr("Нет связи с сервером %1. Таблица показывает данные на момент потери связи; "
                                "консоль подключится снова, как только сервер ответит.")
                                 .arg(address));
    });
    connect(m_client.get(), &vdserver::ServerClient::reconnected, m_window.get(), [this, address] {
        const vdserver::Session& session = m_client->session();
        AuthData::setSession(session.userId, session.login, session.roles, session.sessionId);
        // A server that started again knows nothing of the plug-ins of this console.
        VDServerInterface::instance()->sendLocalPluginsInfo();
        m_window->setOffline(tr("Связь с сервером %1 восстановлена, данные обновляются…").arg(address));
    });
    connect(m_mirror.get(), &vdserver::StoreMirror::synced, m_window.get(), [this] { m_window->setOffline({}); });
    connect(m_client.get(), &vdserver::ServerClient::reconnectFailed, m_window.get(),
            [this, address](const QString& reason) {
                m_window->setOffline(
                    tr("Сервер %1 не принял вход повторно: %2. Перезапустите консоль.").arg(address, reason));
            });
}

void Console::askForCard(const QString& identity, unsigned int device)
{
    const QString reader =
        VDGlobals::objectName(vorandel::LocalStorage::instance()->constObject(device, vorandel::DEVICE_DATANAME));
    // Over whatever window waits for the card, usually a modal dialog of a tab.
    QWidget* over = QApplication::activeModalWidget();
    auto* dialog = new CardReaderDialog(reader, over ? over : m_window.get());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::ApplicationModal);
    connect(dialog, &QDialog::finished, this,
            [this, dialog, identity, device] { m_server->presentCard(identity, device, dialog->card()); });
    dialog->open();
}

MainWindow* Console::window() const
{
    return m_window.get();
}
