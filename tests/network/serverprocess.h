#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A real vdserver in a process of its own, on a store in a temporary folder and a free port of
// the loopback, as a site would run it. It can be stopped and started again on the same store and
// port.
class ServerProcess
{
public:
    // `arguments` go to the server beside --listen and --database.
    explicit ServerProcess(const QStringList& arguments = {});
    ~ServerProcess();

    // Starts the server and waits until it listens; false, with the reason in errorString().
    bool start();
    // Stops it as an operator would, with SIGTERM; false if it doesn't end.
    bool stop();
    // Kills it on the spot.
    void kill();

    quint16 port() const { return m_port; }
    QString storeFile() const;
    QString errorString() const { return m_error; }
    // What the server wrote to its log so far.
    QString log();

private:
    QTemporaryDir m_folder;
    QStringList m_arguments;
    QProcess m_process;
    quint16 m_port = 0;
    QString m_log;
    QString m_error;
};
