#include "console.h"

#include "authdata.h"
#include "cardreaderdialog.h"
#include "constants.h"
#include "consolelogging.h"
#include "localstorage.h"
#include "mainwindow.h"
#include "screenshot.h"
#include "vdglobals.h"
#include "vdguiglobals.h"
#include "vdserverinterface.h"

#include <QApplication>
#include <QDir>
#include <QStandardPaths>
#include <QTabWidget>
#include <QTextStream>

#include <algorithm>

namespace {
// The operator's store, in the user's data folder unless --database names another.
const QString StoreFileName = QStringLiteral("store.sqlite");
}  // namespace

Console::Console(const ConsoleOptions& options, QObject* parent)
    : QObject(parent), m_options(options), m_localData(&m_server)
{
    m_server.setPushTarget([](Command& command) { VDServerInterface::instance()->deliver(command); });
    m_server.setCardHolder(true);
    connect(&m_server, &vdserver::Server::cardWanted, this, &Console::askForCard);
}

Console::~Console() = default;

bool Console::logIn()
{
    if (!openStore())
        return false;

    const QString login = m_options.user.isEmpty() ? m_server.defaultLogin() : m_options.user;
    const std::optional<vdserver::Session> session = m_server.login(login);
    if (!session) {
        m_error = unknownUserText(login);
        return false;
    }
    AuthData::setSession(session->userId, session->login, session->roles, session->sessionId);
    const QList<vdserver::Account> accounts = m_server.accounts();
    const auto account = std::find_if(accounts.cbegin(), accounts.cend(),
                                      [&](const vdserver::Account& a) { return a.login == session->login; });
    m_userName = account != accounts.cend() && !account->displayName.isEmpty() ? account->displayName : login;
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
    if (!m_server.open(location)) {
        m_error = m_server.errorString();
        return false;
    }
    // The operator's own store is never seeded over; the demo file of --requests is there for it.
    if (fresh && m_options.database && !m_server.isNewStore()) {
        m_error = tr("%1 already holds a store, and --requests seeds a fresh demo data set into a new one only. "
                     "Remove it, or name another with --database.")
                      .arg(m_server.storeName());
        return false;
    }
    if (!fresh && !m_server.isNewStore()) {
        qCInfo(lcConsole).noquote() << "store" << m_server.storeName();
        return true;
    }
    vdserver::SeedOptions seed;
    if (fresh)
        seed.requests = *m_options.requests;
    if (!m_server.seed(seed)) {
        m_error = m_server.errorString();
        return false;
    }
    QTextStream(stdout) << (fresh ? tr("A fresh demo data set of %1 requests is in %2").arg(seed.requests)
                                  : tr("A new store with the demo data set is in %1"))
                                   .arg(m_server.storeName())
                        << Qt::endl;
    return true;
}

QString Console::errorString() const
{
    return m_error;
}

QString Console::unknownUserText(const QString& login) const
{
    const QList<vdserver::Account> accounts = m_server.accounts();
    int loginWidth = 0;
    int nameWidth = 0;
    for (const vdserver::Account& account : accounts) {
        loginWidth = std::max(loginWidth, int(account.login.size()));
        nameWidth = std::max(nameWidth, int(account.displayName.size()));
    }
    QStringList lines{tr("Unknown user '%1'. Log in with --user as one of:").arg(login)};
    for (const vdserver::Account& account : accounts) {
        const QString roles = account.roles.isEmpty() ? tr("(no rights)") : account.roles.join(QStringLiteral(", "));
        lines << QStringLiteral("  %1  %2  %3")
                     .arg(account.login, -loginWidth)
                     .arg(account.displayName, -nameWidth)
                     .arg(roles);
    }
    return lines.join(QLatin1Char('\n'));
}

void Console::start()
{
    m_window = std::make_unique<MainWindow>(m_userName);
    VDGuiGlobals::vdApp = m_window.get();

    m_host.addBuiltIn(&m_localData);
    const int loaded = m_host.load(m_options.pluginDir);
    m_host.start(m_window->tabs(), &m_server);

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
    m_window->show();

    if (!m_options.screenshotFile.isEmpty()) {
        auto* screenshot =
            new Screenshot(m_window.get(), m_window->tabs(), m_options.screenshotFile, m_options.screenshot, this);
        connect(screenshot, &Screenshot::finished, this, &Console::finished);
        screenshot->take();
    }
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
            [this, dialog, identity, device] { m_server.presentCard(identity, device, dialog->card()); });
    dialog->open();
}

MainWindow* Console::window() const
{
    return m_window.get();
}
