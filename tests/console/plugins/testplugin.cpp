#include "testplugin.h"

#include "constants.h"
#include "localstorage.h"
#include "vdserverinterface.h"

#include <QCoreApplication>

TestPlugin::TestPlugin()
{
    record(QStringLiteral("instance"));
}

bool TestPlugin::canShow() const
{
    record(QStringLiteral("canShow"));
    return TEST_PLUGIN_SHOWN;
}

QList<PLUGIN_TAB> TestPlugin::tabList() const
{
    record(QStringLiteral("tabList"));
    return {{pluginName(), QIcon::fromTheme(QStringLiteral("object-OT_PASS_REQUEST")), 0, 1}};
}

void TestPlugin::insertedToInterface()
{
    // The page must be in its tab by now, and the store as full as the server.
    record(parentWidget() ? QStringLiteral("insertedToInterface") : QStringLiteral("insertedToInterface, no tab"));
    const vorandel::OBJECT_HASH* requests =
        vorandel::LocalStorage::instance()->constObjects(vorandel::PASS_REQUEST_DATANAME);
    qApp->setProperty(qPrintable(pluginName() + QStringLiteral(".requestsAtInsert")),
                      requests ? requests->size() : -1);
}

COMMAND_LIST TestPlugin::init(VDServerInterface* server, const QString& path)
{
    record(QStringLiteral("init"));
    const CommandType own(8, QStringLiteral("test.%1").arg(pluginName()));
    registerCommandHandler(own, [](Command&) {});
    return VDPluginInterface::init(server, path) << own;
}

void TestPlugin::uninit()
{
    record(QStringLiteral("uninit"));
}

void TestPlugin::initOnExchangeReady()
{
    record(VDServerInterface::instance()->isExchangeReady() ? QStringLiteral("initOnExchangeReady")
                                                             : QStringLiteral("initOnExchangeReady, no exchange"));
}

QString TestPlugin::pluginName() const
{
    return QStringLiteral(TEST_PLUGIN_NAME);
}

int TestPlugin::pluginVersion() const
{
    return 0x10000;
}

QString TestPlugin::pluginBuild() const
{
    return QStringLiteral("1.0");
}

QWidget* TestPlugin::widget()
{
    return this;
}

QObject* TestPlugin::object()
{
    return this;
}

QStringList TestPlugin::requireList()
{
    return QStringLiteral(TEST_PLUGIN_REQUIRES).split(QLatin1Char(','), Qt::SkipEmptyParts);
}

void TestPlugin::record(const QString& call) const
{
    QStringList calls = qApp->property("lifecycle").toStringList();
    calls << pluginName() + QLatin1Char(':') + call;
    qApp->setProperty("lifecycle", calls);
}
