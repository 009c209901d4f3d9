#include "constants.h"
#include "localstorage.h"
#include "pluginwidget.h"
#include "vdplugininterface.h"
#include "vdserverinterface.h"

#include <QCoreApplication>

// A console plug-in for the host's tests. Built once per situation, its name, requirements and
// visibility come from the build. Every call of the console is written down, as "name:call", in
// the application's property "lifecycle", where the test reads the order back.
class TestPlugin : public PluginWidget, public VDPluginInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "vd.test.TestPlugin")
    Q_INTERFACES(VDPluginInterface)
public:
    TestPlugin() { record(QStringLiteral("instance")); }

    bool canShow() const override
    {
        record(QStringLiteral("canShow"));
        return TEST_PLUGIN_SHOWN;
    }
    QList<PLUGIN_TAB> tabList() const override
    {
        record(QStringLiteral("tabList"));
        return {{pluginName(), QIcon::fromTheme(QStringLiteral("object-OT_PASS_REQUEST")), 0, 1}};
    }
    void insertedToInterface() override
    {
        // The page must be in its tab by now, and the store as full as the server.
        record(parentWidget() ? QStringLiteral("insertedToInterface") : QStringLiteral("insertedToInterface, no tab"));
        const vorandel::OBJECT_HASH* requests =
            vorandel::LocalStorage::instance()->constObjects(vorandel::PASS_REQUEST_DATANAME);
        qApp->setProperty(qPrintable(pluginName() + QStringLiteral(".requestsAtInsert")),
                          requests ? requests->size() : -1);
    }

    COMMAND_LIST init(VDServerInterface* server, const QString& path) override
    {
        record(QStringLiteral("init"));
        const CommandType own(8, QStringLiteral("test.%1").arg(pluginName()));
        registerCommandHandler(own, [](Command&) {});
        return VDPluginInterface::init(server, path) << own;
    }
    void uninit() override { record(QStringLiteral("uninit")); }
    void initOnExchangeReady() override
    {
        record(VDServerInterface::instance()->isExchangeReady() ? QStringLiteral("initOnExchangeReady")
                                                                 : QStringLiteral("initOnExchangeReady, no exchange"));
    }
    QString pluginName() const override { return QStringLiteral(TEST_PLUGIN_NAME); }
    int pluginVersion() const override { return 0x10000; }
    QString pluginBuild() const override { return QStringLiteral("1.0"); }
    QWidget* widget() override { return this; }
    QObject* object() override { return this; }
    QStringList requireList() override
    {
        return QStringLiteral(TEST_PLUGIN_REQUIRES).split(QLatin1Char(','), Qt::SkipEmptyParts);
    }

private:
    void record(const QString& call) const
    {
        const QString entry = pluginName() + QLatin1Char(':') + call;
        qApp->setProperty("lifecycle", qApp->property("lifecycle").toStringList() << entry);
    }
};

#include "testplugin.moc"
