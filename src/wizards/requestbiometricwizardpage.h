#pragma once

#include "vdwizardpage.h"

#include <QPoint>
#include <QPointer>

#include <memory>

class Ui_RequestBiometricWizardPage;

// Hosts the console's fingerprint enrolment widget for as long as the page lives, and gives it
// back afterwards, to its old parent, margin and place, as the free dialog it was.
class RequestBiometricWizardPage : public VDWizardPage
{
    Q_OBJECT
public:
    explicit RequestBiometricWizardPage(QWidget* parent = nullptr);
    ~RequestBiometricWizardPage() override;

    // Borrows the widget, which must not be null, and tells it whom it serves.
    void setFingerprintWidget(const QPointer<QWidget>& widget);
    // The worker to enrol, passed on to the widget.
    void setSubjectUid(unsigned int uid);

private:
    const std::unique_ptr<Ui_RequestBiometricWizardPage> ui;
    QPointer<QWidget> fingerprintWidget;
    QWidget* oldParent = nullptr;
    int oldMargin = 0;
    QPoint oldPos;
    unsigned int subjectUid = 0;
};
