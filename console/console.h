#pragma once

#include "consoleoptions.h"
#include "pluginhost.h"

#include <QObject>

#include <memory>

class LocalDataManager;
class MainWindow;
namespace vdserver {
class ObjectSource;
class Server;
class ServerClient;
class StoreMirror;
}

// The console and its server: the embedded one, or a standalone one on the network (--server).
// It holds the session of the operator, the plug-ins and the window that shows them.
class Console : public QObject
{
    Q_OBJECT
public:
    // The environment variable that gives the password of a login to a standalone server, for
    // runs that have nobody to type it (screenshots, scripts).
    static constexpr const char* PasswordVariable = "VDCONSOLE_PASSWORD";

    explicit Console(const ConsoleOptions& options, QObject* parent = nullptr);
    ~Console() override;

    // Embedded: opens the server's store and the session of the chosen user. An unknown login is
    // refused before any store is made; a new store gets the demo data set, and --requests seeds
    // a fresh one, both saying where on standard output.
    // On the network: connects, logs in with the password from the login window (which lets the
    // operator try again after a refusal) or from PasswordVariable, and loads the copy of the
    // store that the server gives this user.
    // False, with errorString() saying why; an empty text when the operator cancelled the login.
    bool logIn();
    QString errorString() const;

    // Loads and starts the plug-ins and shows the window. With a screenshot file, saves the
    // window once it has settled and emits finished.
    void start();
    MainWindow* window() const;
    // The embedded server; only without --server.
    vdserver::Server& server();
    // The connection to the standalone server; null without --server.
    vdserver::ServerClient* client() const { return m_client.get(); }

signals:
    void finished(int exitCode);

private:
    bool logInEmbedded();
    bool openStore();
    bool logInRemote();
    bool askForPassword(const QString& login);
    bool loadCopy();
    // Tells the window when the server goes and comes back.
    void followConnection();
    vdserver::ObjectSource* source() const;
    // Says that the login is unknown and lists those of the demo set.
    QString unknownUserText(const QString& login) const;
    // A card reader of the server waits for a card: the operator says which one he holds to it.
    void askForCard(const QString& identity, unsigned int device);

    const ConsoleOptions m_options;
    std::unique_ptr<vdserver::Server> m_server;
    std::unique_ptr<vdserver::ServerClient> m_client;
    std::unique_ptr<vdserver::StoreMirror> m_mirror;
    std::unique_ptr<LocalDataManager> m_localData;
    QString m_userName;
    QString m_error;
    // Declared after the window, so that the plug-ins hear uninit while their pages still exist.
    std::unique_ptr<MainWindow> m_window;
    PluginHost m_host;
};
