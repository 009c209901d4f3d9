#pragma once

#include "objectinfo.h"
#include "vdwizardpage.h"

#include <QHash>
#include <QString>

#include <memory>

class Ui_RequestWorkerWizardPage;

// Who the pass is for: an existing worker, picked by typing into one of the two search fields,
// or a person typed in, for whom a new worker will be made. The subject uid tells the two apart:
// not 0 is a worker of the directory, 0 a new one.
class RequestWorkerWizardPage : public VDWizardPage
{
    Q_OBJECT
public:
    explicit RequestWorkerWizardPage(QWidget* parent = nullptr);
    ~RequestWorkerWizardPage() override;

    // A surname and a department.
    bool isComplete() const override;
    // Looks once more whether the name still describes the picked worker; never refuses.
    bool validatePage() override;

    // The worker now stands for the request: the new one once he has been made.
    void setUid(unsigned int uid);
    unsigned int subjectUid() const;
    // The department of the visitor.
    unsigned int parentUid() const;
    // What a new worker is made of.
    QHash<QString, QString> subjectProperties() const;
    // The visitor's particulars that the request keeps a copy of.
    QHash<QString, QString> requestProperties() const;

private slots:
    void selected(vorandel::TYPE_ID uid);
    void manualEdit();
    void birthdayEdited();

private:
    void initScanPassportButton();
    void initDepartmentSelectors();
    bool photosDenied() const;

    const std::unique_ptr<Ui_RequestWorkerWizardPage> ui;
    vorandel::TYPE_ID uid = 0;
    // The birthday field holds a value that counts: one picked up or typed by hand.
    bool birthdayChanged = false;
};
