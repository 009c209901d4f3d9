#include "localstorage.h"
#include "pluginwidget.h"
#include "testenvironment.h"
#include "vdplugininterface.h"
#include "vdserverinterface.h"

#include <QDir>
#include <QJsonObject>
#include <QPluginLoader>
#include <QPointer>
#include <QTableView>
#include <QtTest>

// The built plug-in, loaded the way the console loads it.
class TestPluginLoad : public QObject
{
    Q_OBJECT

    static QString pluginPath()
    {
        return QDir(qEnvironmentVariable("VD_PLUGIN_DIR")).filePath(QStringLiteral("librequestview.so"));
    }

private slots:
    void loadsAndLivesItsLifeCycle()
    {
        TestEnvironment environment;
        TestEnvironment::login(1);
        QPluginLoader loader(pluginPath());
        const QJsonObject meta = loader.metaData();
        QCOMPARE(meta.value(QStringLiteral("IID")).toString(), QStringLiteral("requestview"));
        QCOMPARE(meta.value(QStringLiteral("className")).toString(), QStringLiteral("RequestView"));
        QVERIFY(meta.value(QStringLiteral("MetaData")).toObject().isEmpty());

        QObject* instance = loader.instance();
        QVERIFY2(instance, qPrintable(loader.errorString()));
        QCOMPARE(loader.instance(), instance);  // one instance per library
        auto* plugin = qobject_cast<VDPluginInterface*>(instance);
        auto* page = qobject_cast<PluginWidget*>(instance);
        QVERIFY(plugin && page);
        QCOMPARE(plugin->pluginName(), QStringLiteral("requestview"));
        QCOMPARE(plugin->pluginBuild(), QStringLiteral("1.1777379737"));
        QCOMPARE(plugin->requireList(), QStringList{QStringLiteral("localdatamanager")});

        vorandel::ObjectInfo request;
        request.uid = 5;
        request.type = QStringLiteral("OT_PASS_REQUEST");
        vorandel::LocalStorage::instance()->setObjects(QStringLiteral("pass_request"), {request});
        const COMMAND_LIST types = plugin->init(VDServerInterface::instance(), loader.fileName());
        QCOMPARE(types.size(), 3);
        QVERIFY(page->canShow());
        const QList<PLUGIN_TAB> tabs = page->tabList();
        QCOMPARE(tabs.size(), 1);
        QCOMPARE(tabs.first().title, QStringLiteral("Заявки"));
        page->insertedToInterface();
        auto* table = page->findChild<QTableView*>(QStringLiteral("tblRequests"));
        QVERIFY(table);
        QCOMPARE(table->model()->rowCount(), 1);
        plugin->initOnExchangeReady();
        plugin->uninit();

        QPointer<QObject> guard(instance);
        delete instance;
        QVERIFY(guard.isNull());
        QObject* again = loader.instance();  // a fresh one, not built yet
        QVERIFY(again);
        QVERIFY(!again->findChild<QTableView*>(QStringLiteral("tblRequests")));
        delete again;
    }
};

QTEST_MAIN(TestPluginLoad)
#include "tst_pluginload.moc"
