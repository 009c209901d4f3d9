#pragma once

#include "command.h"
#include "objectinfo.h"
#include "pluginwidget.h"
#include "servicerecords.h"
#include "taskinfo.h"
#include "userfingers.h"
#include "vdplugininterface.h"

#include <QHash>
#include <QSet>
#include <QVariantMap>

#include <memory>
#include <utility>

class RequestPropertiesView;
class RequestViewPrivate;
class TabbedDialog;
class Ui_RequestView;
class WorkerCardView;

// The tab "Заявки": the console's page of pass requests and, at the same time, a client of the
// server exchange. It keeps its table equal to the local store, runs the operator's decisions
// through the approver chain, and sends everything that dialogs and wizards change through one
// strict queue of tasks.
class RequestView : public PluginWidget, public VDPluginInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "requestview")
    Q_INTERFACES(VDPluginInterface)

public:
    explicit RequestView(QWidget* parent = nullptr);
    ~RequestView() override;

    bool eventFilter(QObject* watched, QEvent* event) override;
    bool canShow() const override;
    void onTabActivated(int index) override;
    QList<PLUGIN_TAB> tabList() const override;

    COMMAND_LIST init(VDServerInterface* server, const QString& path) override;
    void uninit() override;
    void initOnExchangeReady() override;
    QString pluginName() const override;
    int pluginVersion() const override;
    QString pluginBuild() const override;
    QStringList requireList() override;
    QObject* object() override;
    QWidget* widget() override;

    // The requests that the operator may see at all.
    QSet<vorandel::TYPE_ID> defaultFilter() const;

public slots:
    void insertedToInterface() override;
    void restoreHeaderState();
    void saveHeaderState(QByteArray header_state);
    void onSyslogActivated(std::pair<uint, QString> sa);

    void addTask(vorandel::TaskInfo task);
    void processNextTask();
    Q_INVOKABLE void changeAccessHandler();

    void dataChanged(QString dataname, QList<vorandel::TYPE_ID> uids);
    void dataRemoved(QString dataname, QList<vorandel::TYPE_ID> uids);
    void readPassRequestData(QList<vorandel::TYPE_ID> uids);
    void removePassPequestData(QList<vorandel::TYPE_ID> uids);
    void selectRequest(vorandel::TYPE_ID uid);
    void requestSelectionChanged();
    void updateInfoPanelDelayed();
    void updateInfoPanel();

    void confirmRequest(vorandel::TYPE_ID uid = 0);
    void rejectRequest(vorandel::TYPE_ID uid = 0);
    void sendEmail(vorandel::EMAIL_MESSAGE email);
    void generateCard(vorandel::ObjectInfo card_info);

    void showRequestProperties(vorandel::TYPE_ID uid = 0, bool first_show = true);

    void saveRequestWorker();
    void sendSaveRequest(vorandel::TYPE_ID uid, QString type, vorandel::TYPE_ID parent,
                         QHash<QString, QString> parameters);
    void sendAddWorker(vorandel::TYPE_ID uid, QHash<QString, QString> parameters);
    void sendUpdateWorker(vorandel::TYPE_ID uid, vorandel::TYPE_ID parent, QHash<QString, QString> parameters);
    void saveAddedCards(QList<vorandel::CARD_ID> cards);
    void saveRemovedCards(QList<vorandel::TYPE_ID> cards);

    void editFingerptints(vorandel::TYPE_ID uid);
    void sendGetWorkerFingers(QList<vorandel::TYPE_ID> uids);
    void sendReadCard(vorandel::TYPE_ID dev);

    void addRequest();
    void removeRequests();

signals:
    void workerSaved(vorandel::TYPE_ID wuid);
    void requestSaved(vorandel::TYPE_ID ruid);
    void cardRead(vorandel::ObjectInfo card);
    void cardReadFailed();
    void cardsSaved();
    void fingersReceived(QHash<vorandel::TYPE_ID, requestview::UserFingers> fingers);
    void workerFingers(vorandel::TYPE_ID worker, QVariantMap templatesCount);
    void workerFingersScanned(vorandel::TYPE_ID worker, QList<vorandel::TEMPLATE_DATA> fingers);
    void showMessage(QString text);
    void showMessage(QString text, QColor color);

private slots:
    void filterChanged(const QStringList& values);
    void filter(const QString& text = QString());

private:
    friend class RequestViewPrivate;

    // Building the page.
    void initWidgetContents();
    void initInfoPanel();
    void initActions();
    void initModels();
    void initPluginActions();
    void initFilterWidget();
    QList<vorandel::TYPE_ID> selectedRequestUids() const;
    // Tells the table how many requests the operator may see, and, when it is empty, why.
    void updateTableStatus();

    // The properties dialog: made with its own connections (null when there is no memory for it),
    // the connections its tabs get once, and what it does when the store takes its request or
    // worker away.
    TabbedDialog* createPropertiesDialog();
    void connectRequestTab(RequestPropertiesView* view);
    void connectCardTab(WorkerCardView* view);
    void propertiesObjectsRemoved(const QString& dataname, const QList<vorandel::TYPE_ID>& uids);

    // Pushed commands and answers.
    void commandResult(Command& command);
    void dbAsyncResult(Command& command);
    void fingerprintDialogClosedHandler(Command& command);
    void changeSubjectAccessFinishedHandler(Command& command);
    void sendEmailHandler(Command& command);
    void editBiometricsHandler(Command& command);
    void scanBiometricsHandler(Command& command);
    void asyncHandler(Command& command);
    void emptyHandler(Command& command);
    void blobDataRead(Command& command);
    void workerAdded(Command& command);
    void workerUpdated(Command& command);
    void requestUpdated(Command& command);
    void workerCardsChanged(Command& command);
    void requestConfirmed(Command& command);
    void requestRejected(Command& command);
    void onLinkedWorkerDismiss(Command& command);
    void getFingersHandler(Command& command);
    void fingerInfoRead(Command& command);

    // The task pipeline.
    bool processCreateObject(const vorandel::TaskInfo& task);
    bool processSaveObject(const vorandel::TaskInfo& task);
    bool processDeleted(const vorandel::TaskInfo& task);
    bool processChangeSubjectAccess(const vorandel::TaskInfo& task);
    bool processChangeAccess(const vorandel::TaskInfo& task);
    bool processUpdateWorkerCards(const vorandel::TaskInfo& task);
    bool processGetBiometrics(const vorandel::TaskInfo& task);
    bool processScanBiometrics(const vorandel::TaskInfo& task);
    void objectCreatedHandler(Command& command);
    void objectSavedHandler(Command& command);
    void requestRemoved(Command& command);
    void changeSubjectAccessHandler(Command& command);
    void updateWorkerCardsHandler(Command& command);
    void getBiometricsHandler(Command& command);
    // The receiver's slot with the task's uid (0 on failure), or else the operator's pop-up.
    void reportSuccess(const vorandel::TaskInfo& task);
    void reportFailure(const vorandel::TaskInfo& task);

    vorandel::TYPE_ID getLinkedWorker(vorandel::TYPE_ID uid);
    void dismissLinkedIfNecessary(vorandel::TYPE_ID uid);

    // Binds a member handler of this tab as a callback of the exchange.
    VDPluginInterface::Handler bind(void (RequestView::*handler)(Command&));

    const std::unique_ptr<Ui_RequestView> ui;
    const std::unique_ptr<RequestViewPrivate> d;
};
