#pragma once

#include "objectinfo.h"
#include "pagelistwizard.h"
#include "servicerecords.h"
#include "taskinfo.h"

#include <QList>
#include <QMetaObject>
#include <QPointer>

#include <memory>

class RequestProcessWizardPage;
class RequestPropertiesWizardPage;
class RequestWorkerWizardPage;
class Ui_NewRequestWizard;

// Raises a new pass request: the visitor (a worker of the directory or a new one), then the
// parameters, then the saving, which runs as a chain of tasks through the tab's queue: the
// worker if he is new, the removal of the access he took from his department, the request. The
// wizard has no connection of its own to the server and never closes itself.
class NewRequestWizard : public PageListWizard
{
    Q_OBJECT
public:
    enum PageId { WorkerPage = 0, ParametersPage = 1, ProcessPage = 2 };

    explicit NewRequestWizard(QWidget* parent = nullptr);
    ~NewRequestWizard() override;

    // The console's fingerprint widget, for a page that would enrol the visitor; no page takes
    // it at present.
    void setFingerprintWidget(const QPointer<QWidget>& widget);

signals:
    void appendTask(vorandel::TaskInfo task);
    // The new request is in the local store.
    void selectRequest(vorandel::TYPE_ID uid);

public slots:
    // Results of the tasks; 0 is a failure.
    void requestSaved(vorandel::TYPE_ID uid);
    void subjectSaved(vorandel::TYPE_ID uid);
    void accessSaved(vorandel::TYPE_ID uid);

protected slots:
    void showButtons(int id) override;

private slots:
    void parametersPageCompleteChanged();
    void dataChanged(QString dataname, QList<vorandel::TYPE_ID> uids);

private:
    void saveObjects();
    void saveSubject();
    void removeSubjectAccess();
    void saveRequest();
    // Hands the worker to the pages that would take his biometrics and card; none at present.
    void setSubjectToPages(unsigned int uid);

    RequestWorkerWizardPage* workerPage() const;
    RequestPropertiesWizardPage* parametersPage() const;
    RequestProcessWizardPage* processPage() const;
    // A task whose result comes back to the slot of that name.
    vorandel::TaskInfo newTask(const QString& type, const QString& slot);

    const std::unique_ptr<Ui_NewRequestWizard> ui;
    vorandel::TYPE_ID subjectUid = 0;
    vorandel::TYPE_ID requestUid = 0;
    // The worker was made by this wizard, and so took his department's access.
    bool subjectCreated = false;
    // Access removals awaiting their results, oldest first: results match them by order alone.
    QList<vorandel::ACCESS_CHANGES> accessChanges;
    QMetaObject::Connection waitingForStore;
};
