#include "pluginhost.h"

#include "consolelogging.h"
#include "pluginwidget.h"
#include "vdplugininterface.h"
#include "vdserverinterface.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibrary>
#include <QPluginLoader>
#include <QTabWidget>

#include <algorithm>

PluginHost::PluginHost(QObject* parent) : QObject(parent) {}

PluginHost::~PluginHost()
{
    VDServerInterface* server = VDServerInterface::instance(false);
    if (server && m_transport && server->transport() == m_transport)
        server->setTransport(nullptr);
    for (auto it = m_started.crbegin(); it != m_started.crend(); ++it) {
        if (!it->object)
            continue;
        qCDebug(lcConsole) << "uninit" << it->name;
        it->plugin->uninit();
        if (server)
            server->removePlugin(it->plugin);
    }
    // Left to the library, a page that was never shown would outlive the application.
    for (const Candidate& candidate : qAsConst(m_candidates)) {
        if (!candidate.builtIn)
            delete candidate.object.data();
    }
}

void PluginHost::addBuiltIn(VDPluginInterface* plugin)
{
    // A built-in plug-in lives in the program itself.
    addCandidate(plugin, QCoreApplication::applicationFilePath(), true);
}

int PluginHost::load(const QString& folder)
{
    const QDir dir(folder);
    const QString shownFolder = QDir::toNativeSeparators(dir.absolutePath());
    if (!dir.exists()) {
        report(tr("Папка модулей консоли %1 не найдена").arg(shownFolder));
        return 0;
    }
    int found = 0;
    const QStringList files = dir.entryList(QDir::Files, QDir::Name);
    for (const QString& file : files) {
        const QString path = dir.absoluteFilePath(file);
        if (QLibrary::isLibrary(path) && loadFile(path))
            ++found;
    }
    if (found == 0)
        report(tr("В папке %1 нет модулей консоли").arg(shownFolder));
    return found;
}

bool PluginHost::loadFile(const QString& path)
{
    QPluginLoader loader(path);
    QObject* instance = loader.instance();
    if (!instance) {
        qCWarning(lcConsole) << "skipped, not a plug-in:" << path << loader.errorString();
        return false;
    }
    auto* plugin = qobject_cast<VDPluginInterface*>(instance);
    if (!plugin) {
        qCWarning(lcConsole) << "skipped, not a plug-in of the console:" << path
                             << instance->metaObject()->className();
        loader.unload();
        return false;
    }
    // Another name of a library already loaded, as a versioned file and its link.
    const bool known = std::any_of(m_candidates.cbegin(), m_candidates.cend(),
                                   [&](const Candidate& candidate) { return candidate.plugin == plugin; });
    if (known) {
        qCDebug(lcConsole) << "already loaded:" << path;
        return false;
    }
    qCDebug(lcConsole) << "instance" << plugin->pluginName() << path;
    addCandidate(plugin, path, false);
    return true;
}

void PluginHost::addCandidate(VDPluginInterface* plugin, const QString& path, bool builtIn)
{
    m_candidates.append({plugin, plugin->object(), plugin->pluginName(), plugin->requireList(), path, builtIn});
}

void PluginHost::start(QTabWidget* tabs, ExchangeTransport* transport)
{
    const QList<Candidate> order = startOrder();
    for (const Candidate& candidate : order)
        startPlugin(candidate, tabs);

    m_transport = transport;
    VDServerInterface* server = VDServerInterface::instance();
    server->setTransport(transport);
    // The server learns which commands the plug-ins of this console receive.
    server->sendLocalPluginsInfo();
    QStringList names;
    for (const Candidate& candidate : qAsConst(m_started)) {
        qCDebug(lcConsole) << "initOnExchangeReady" << candidate.name;
        candidate.plugin->initOnExchangeReady();
        names << candidate.name;
    }
    qCInfo(lcConsole) << "started" << names;
}

QList<PluginHost::Candidate> PluginHost::startOrder()
{
    // Each pass takes, in the order they came, the plug-ins whose requirements have all been
    // placed; what is left after the last pass lacks a plug-in or waits for itself in a circle.
    QList<Candidate> pending = m_candidates;
    QList<Candidate> order;
    QStringList placed;
    for (bool progress = true; progress;) {
        progress = false;
        for (auto it = pending.begin(); it != pending.end();) {
            const bool ready = std::all_of(it->required.cbegin(), it->required.cend(),
                                           [&](const QString& name) { return placed.contains(name); });
            if (!ready) {
                ++it;
                continue;
            }
            placed << it->name;
            order << *it;
            it = pending.erase(it);
            progress = true;
        }
    }

    QStringList known;
    for (const Candidate& candidate : qAsConst(m_candidates))
        known << candidate.name;
    for (const Candidate& candidate : qAsConst(pending)) {
        for (const QString& name : candidate.required) {
            if (placed.contains(name))
                continue;
            report(known.contains(name)
                       ? tr("Модуль «%1» не запущен: не запущен нужный ему модуль «%2»").arg(candidate.name, name)
                       : tr("Модуль «%1» не запущен: нет нужного ему модуля «%2»").arg(candidate.name, name));
        }
    }
    return order;
}

void PluginHost::startPlugin(const Candidate& candidate, QTabWidget* tabs)
{
    VDServerInterface* server = VDServerInterface::instance();
    qCDebug(lcConsole) << "init" << candidate.name;
    const COMMAND_LIST types = candidate.plugin->init(server, candidate.path);
    server->addPlugin(candidate.plugin, types);
    m_started.append(candidate);

    QWidget* widget = candidate.plugin->widget();
    if (!widget)
        return;
    auto* page = qobject_cast<PluginWidget*>(widget);
    if (!page) {
        // A window of its own, as the fingerprint window, and no tab.
        qCDebug(lcConsole) << candidate.name << "has a window and no page";
        return;
    }
    if (!page->canShow()) {
        qCInfo(lcConsole) << "the user may not see" << candidate.name;
        return;
    }
    const PLUGIN_TAB tab = page->tabList().value(0, {page->windowTitle(), page->windowIcon()});
    qCDebug(lcConsole) << "insert tab" << tab.title << "of" << candidate.name;
    tabs->addTab(page, tab.icon, tab.title);
    page->insertedToInterface();
}

QList<VDPluginInterface*> PluginHost::started() const
{
    QList<VDPluginInterface*> plugins;
    for (const Candidate& candidate : m_started) {
        if (candidate.object)
            plugins << candidate.plugin;
    }
    return plugins;
}

QStringList PluginHost::problems() const
{
    return m_problems;
}

void PluginHost::report(const QString& problem)
{
    qCWarning(lcConsole).noquote() << problem;
    m_problems << problem;
}
