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
#include <QTabWidget>

#include <algorithm>

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
    vdserver::SeedOptions seed;
    if (m_options.requests)
        seed.requests = *m_options.requests;
    m_server.seed(seed);

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
