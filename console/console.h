#pragma once

#include "consoleoptions.h"
#include "localdatamanager.h"
#include "pluginhost.h"
#include "server.h"

#include <QObject>

#include <memory>

class MainWindow;

// The console with its embedded server: the session of the operator, the plug-ins and the
// window that shows them.
class Console : public QObject
{
    Q_OBJECT
public:
    explicit Console(const ConsoleOptions& options, QObject* parent = nullptr);
    ~Console() override;

    // Opens the server's store and the session of the chosen user. A new store gets the demo
    // data set, and --requests seeds a fresh one; both say where on standard output. False, with
    // errorString() saying why, for a store that can't be opened or a login the server doesn't
    // know.
    bool logIn();
    QString errorString() const;

    // Loads and starts the plug-ins and shows the window. With a screenshot file, saves the
    // window once it has settled and emits finished.
    void start();
    MainWindow* window() const;
    vdserver::Server& server() { return m_server; }

signals:
    void finished(int exitCode);

private:
    bool openStore();
    QString unknownUserText(const QString& login) const;
    // A card reader of the server waits for a card: the operator says which one he holds to it.
    void askForCard(const QString& identity, unsigned int device);

    const ConsoleOptions m_options;
    vdserver::Server m_server;
    LocalDataManager m_localData;
    QString m_userName;
    QString m_error;
    // Declared after the window, so that the plug-ins hear uninit while their pages still exist.
    std::unique_ptr<MainWindow> m_window;
    PluginHost m_host;
};
