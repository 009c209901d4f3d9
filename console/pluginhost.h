#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>

class ExchangeTransport;
class QTabWidget;
class VDPluginInterface;

// Loads the console's plug-ins and drives their life cycle. A plug-in starts after the
// plug-ins it requires: init, its tab inserted if the user may see it, insertedToInterface; once
// all have started the exchange goes up, learns the command types of the plug-ins, and each of
// them hears initOnExchangeReady. Destroying
// the host cuts the exchange off, calls uninit in the reverse order and deletes the plug-ins it
// loaded, pages included, while the application still runs.
class PluginHost : public QObject
{
    Q_OBJECT
public:
    explicit PluginHost(QObject* parent = nullptr);
    ~PluginHost() override;

    // A plug-in made by the console itself; the caller keeps it alive while the host lives.
    // Built-in plug-ins start before every loaded one.
    void addBuiltIn(VDPluginInterface* plugin);
    // Loads every plug-in library of `folder`, in the order of the file names, and returns how
    // many plug-ins it found. A file that isn't a plug-in of the console is skipped.
    int load(const QString& folder);
    // Starts what was added and loaded. Tabs go to `tabs`; queries then go to `transport`.
    void start(QTabWidget* tabs, ExchangeTransport* transport);

    // The started plug-ins that are still alive, in start order.
    QList<VDPluginInterface*> started() const;
    // What went wrong while loading and starting, in the operator's words.
    QStringList problems() const;

private:
    struct Candidate
    {
        VDPluginInterface* plugin = nullptr;
        QPointer<QObject> object;  // null once the plug-in is gone, e.g. deleted with its tab
        QString name;
        QStringList required;  // names of the plug-ins that must start first
        QString path;
        bool builtIn = false;
    };

    bool loadFile(const QString& path);
    void addCandidate(VDPluginInterface* plugin, const QString& path, bool builtIn);
    QList<Candidate> startOrder();
    void startPlugin(const Candidate& candidate, QTabWidget* tabs);
    void report(const QString& problem);

    QList<Candidate> m_candidates;
    QList<Candidate> m_started;
    QStringList m_problems;
    ExchangeTransport* m_transport = nullptr;
};
