#pragma once

#include "objectinfo.h"

#include <QElapsedTimer>
#include <QHash>
#include <QProcess>
#include <QSet>
#include <QString>
#include <QTemporaryDir>
#include <QVector>

#include <functional>
#include <memory>
#include <vector>

namespace vdserver {
class ServerClient;
class StoreMirror;
}

// A pass office on one machine: a real vdserver in its own process and consoles that talk to it
// over the loopback, each a connection and a mirror of the store as vdconsole has them.
//
// The office first raises the requests to decide, then the approvers' consoles each take the next
// request that waits for their login, confirm it and make some reads before the next one, while
// the office's consoles only read. Every answer's round trip is timed, and for every decision the
// moment when the last console that may see the request holds it confirmed in its store.
class NetBench
{
public:
    struct Options
    {
        QString serverBinary;
        int clients = 20;
        int decisions = 1000;
        int readsPerDecision = 2;
        int seedRequests = 200;
    };

    explicit NetBench(const Options& options);
    ~NetBench();

    // Runs the whole thing and prints the figures; the exit code.
    int run();

private:
    struct Console;
    struct Decision
    {
        vorandel::TYPE_ID request = 0;
        qint64 sentNs = 0;
        qint64 answeredNs = 0;
        QSet<unsigned int> chain;  // the users who stand on its chain
        int receivers = 0;         // consoles that may see the request
        int received = 0;
        qint64 lastReceivedNs = 0;
    };

    bool startServer();
    bool connectConsoles();
    bool raiseRequests();
    void decideAndRead();
    void nextStep(Console& console);
    void sendTimed(Console& console, const QString& name, const QByteArray& payload, bool decision,
                   vorandel::TYPE_ID request);
    void watchArrivals(Console& console);
    static bool maySee(const Console& console, const Decision& decision);
    void report() const;
    bool waitUntil(const std::function<bool()>& done, int msecs) const;

    Options m_options;
    QTemporaryDir m_folder;
    QProcess m_server;
    quint16 m_port = 0;
    QElapsedTimer m_clock;
    std::vector<std::unique_ptr<Console>> m_consoles;

    // Requests to decide by the login whose turn it is, and their decisions once made.
    QHash<QString, QVector<vorandel::TYPE_ID>> m_queues;
    QHash<vorandel::TYPE_ID, Decision> m_decisions;
    QVector<unsigned int> m_workers;  // whose templates the reads ask for
    int m_decided = 0;
    QVector<qint64> m_decisionTripsNs;
    QVector<qint64> m_readTripsNs;
    qint64 m_phaseStartNs = 0;
    qint64 m_phaseEndNs = 0;
};
