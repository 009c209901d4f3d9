#pragma once

#include "command.h"
#include "objectinfo.h"
#include "vdplugininterface.h"
#include "vdwizardpage.h"

#include <QHash>
#include <QString>

#include <memory>

class Ui_RequestCardWizardPage;
namespace vd5sdk {
class Devices;
}

// A wizard page for the cards of a worker, with a card reader behind it. To hear the reader it
// needs an identity at the exchange, so the page is a small plug-in of its own, registered for as
// long as it lives under a name made up at run time.
class RequestCardWizardPage : public VDWizardPage, public VDPluginInterface
{
    Q_OBJECT
    Q_INTERFACES(VDPluginInterface)
public:
    explicit RequestCardWizardPage(QWidget* parent = nullptr);
    ~RequestCardWizardPage() override;

    COMMAND_LIST init(VDServerInterface* server, const QString& name) override;
    void uninit() override;
    void initOnExchangeReady() override;
    QString pluginName() const override;
    QObject* object() override;
    QWidget* widget() override;
    int pluginVersion() const override;
    QString pluginBuild() const override;
    QStringList requireList() override;

    // The cards as the operator has changed them.
    QHash<QString, QString> subjectProperties() const;
    // The name under which the page hears its reader; empty before init.
    QString exchangeName() const { return m_exchangeName; }

public slots:
    void setSubjectUid(vorandel::TYPE_ID uid);

signals:
    void showMessage(const QString& text);
    void showCriticalMessage(const QString& text);

private slots:
    void sendReadCard(vorandel::TYPE_ID dev);

private:
    void commandResult(Command& command);
    void bindForReadCard(Command& command);
    void emptyHandler(Command& command);

    const std::unique_ptr<Ui_RequestCardWizardPage> ui;
    QString m_exchangeName;
    vd5sdk::Devices* m_devices = nullptr;  // belongs to the page
    vorandel::TYPE_ID m_device = 0;
};
