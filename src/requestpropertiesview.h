#pragma once

#include "objectinfo.h"
#include "propertybasewidget.h"
#include "userfingers.h"

#include <QHash>
#include <QList>
#include <QString>

#include <memory>

class QAction;
class Ui_RequestPropertiesView;

// The first tab of a request's properties dialog: the fields of the request. It keeps a copy of
// the request's parameters as they were last shown or saved; that copy is the yardstick of
// change, so only what really differs is handed on. It never talks to the server itself: its
// signals become tasks of the tab.
class RequestPropertiesView : public PropertyBaseWidget
{
    Q_OBJECT
public:
    explicit RequestPropertiesView(QWidget* parent = nullptr);
    ~RequestPropertiesView() override;

    QString widgetUid() const override;

    void setUid(unsigned int uid);
    void setParameters(const QHash<QString, QString>& parameters);
    // Every field, found recursively, is disabled or enabled.
    void setReadOnly(bool readOnly) override;
    // The fields whose text differs from the stored copy, in a fixed order of eleven keys.
    QHash<QString, QString> changedParameters() const;

public slots:
    void setCurrent(const vorandel::OBJECT_HASH& objs) override;
    // Emits saveRequest with what has changed, also when nothing has: the receiver decides.
    void applyChanges() override;
    void rejectChanges() override;

signals:
    void addWorker(vorandel::TYPE_ID uid, QHash<QString, QString> parameters);
    void saveRequest(vorandel::TYPE_ID uid, QString type, vorandel::TYPE_ID parent, QHash<QString, QString> parameters);
    void getWorkerFingers(QList<vorandel::TYPE_ID> uid);

private slots:
    // What was saved becomes the stored copy; 0 means the save failed.
    void saved(unsigned int uid = 0) override;
    void beginDateChanged();
    // A newly created worker is linked to the request by saving his uid into it.
    void workerSaved(vorandel::TYPE_ID wuid);
    // Kept for a worker chooser; nothing in the form leads here yet.
    void selectWorkerButtonClicked(QAction* act);
    // Kept for a "create worker" button; nothing in the form leads here yet.
    void createWorkerButtonClicked();
    bool checkWorkerNumUnique();
    void fingersReceived(QHash<vorandel::TYPE_ID, requestview::UserFingers> userdata);

private:
    void fillConvoy();

    const std::unique_ptr<Ui_RequestPropertiesView> ui;
    vorandel::TYPE_ID uid = 0;
    QHash<QString, QString> parameters;
};
