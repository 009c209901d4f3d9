// An outside program that hosts the plug-in and simply returns from main(): no uninit, no
// unload. The plug-in loader then destroys the tab in its own clean-up at exit, after every
// object of main() and perhaps after the platform's process-wide objects; whatever the order,
// the process must end cleanly. The test is this program's exit status.

#include "localstorage.h"
#include "pluginwidget.h"
#include "settings.h"
#include "vdplugininterface.h"
#include "vdserverinterface.h"

#include <QApplication>
#include <QDir>
#include <QPluginLoader>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTextStream>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QTemporaryDir settingsDir;
    Settings::setFileName(settingsDir.filePath(QStringLiteral("settings.ini")));

    vorandel::ObjectInfo request;
    request.uid = 5;
    request.type = QStringLiteral("OT_PASS_REQUEST");
    vorandel::LocalStorage::instance()->setObjects(QStringLiteral("pass_request"), {request});

    QPluginLoader loader(QDir(qEnvironmentVariable("VD_PLUGIN_DIR")).filePath(QStringLiteral("librequestview.so")));
    auto* plugin = qobject_cast<VDPluginInterface*>(loader.instance());
    auto* page = qobject_cast<PluginWidget*>(loader.instance());
    if (!plugin || !page) {
        QTextStream(stderr) << "no plug-in: " << loader.errorString() << '\n';
        return 2;
    }
    plugin->init(VDServerInterface::instance(), loader.fileName());
    QTabWidget tabs;
    tabs.addTab(page, page->windowTitle());
    page->insertedToInterface();
    // The tab leaves the tab widget again before the widget goes, as a console would on its way
    // out, so that the loader is the one that destroys it.
    tabs.removeTab(0);
    page->setParent(nullptr);
    return 0;
}
