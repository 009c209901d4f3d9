#pragma once

#include "vdplugininterface.h"

#include <QObject>
#include <QPointer>
#include <QString>

class FingerprintWidget;
namespace vd5sdk {
class Data;
}

// The console's plug-in "fingerprintwidget". Any plug-in opens its window through the exchange
// with "show:fingerprintwidget" (or ".scan", which starts scanning at once), giving a worker and
// its own identity; when the window closes, that identity hears "fingerprint.finished:<identity>"
// with the worker and, if prints were stored, all his templates now. A page may also borrow the
// window as a widget of its own (widget()).
class FingerprintWidgetPlugin : public QObject, public VDPluginInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "fingerprintwidget")
    Q_INTERFACES(VDPluginInterface)
public:
    explicit FingerprintWidgetPlugin(QObject* parent = nullptr);
    ~FingerprintWidgetPlugin() override;

    COMMAND_LIST init(VDServerInterface* server, const QString& path) override;
    void initOnExchangeReady() override;
    QString pluginName() const override;
    int pluginVersion() const override;
    QString pluginBuild() const override;
    // The enrolment window; not a tab.
    QWidget* widget() override;
    QObject* object() override;
    QStringList requireList() override;

private:
    void showWindow(Command& command);
    void windowClosed();

    // Made on first use and owned here; a page that borrows it gives it back before it goes.
    QPointer<FingerprintWidget> m_widget;
    vd5sdk::Data* m_data = nullptr;  // belongs to this object
    QString m_reportTo;  // the identity whose request the open window serves
};
