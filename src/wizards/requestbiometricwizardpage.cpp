#include "requestbiometricwizardpage.h"

#include "ui_requestbiometricwizardpage.h"

#include "objectinfo.h"

#include <QLayout>
#include <QVBoxLayout>

RequestBiometricWizardPage::RequestBiometricWizardPage(QWidget* parent)
    : VDWizardPage(parent), ui(std::make_unique<Ui_RequestBiometricWizardPage>())
{
    ui->setupUi(this);
}

RequestBiometricWizardPage::~RequestBiometricWizardPage()
{
    if (!fingerprintWidget)
        return;
    fingerprintWidget->setParent(oldParent);
    fingerprintWidget->setWindowFlags(Qt::Dialog);
    if (QLayout* own = fingerprintWidget->layout())
        own->setContentsMargins(oldMargin, oldMargin, oldMargin, oldMargin);
    fingerprintWidget->move(oldPos);
    fingerprintWidget->close();
}

void RequestBiometricWizardPage::setFingerprintWidget(const QPointer<QWidget>& widget)
{
    fingerprintWidget = widget;
    oldParent = widget->parentWidget();
    if (const QLayout* own = widget->layout())
        oldMargin = own->contentsMargins().left();
    oldPos = widget->pos();

    widget->setWindowFlags(Qt::Widget);
    widget->setParent(this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(widget);
    widget->show();
    QMetaObject::invokeMethod(widget, "setCaller", Qt::AutoConnection, Q_ARG(QString, QStringLiteral("requestview")));
}

void RequestBiometricWizardPage::setSubjectUid(unsigned int uid)
{
    subjectUid = uid;
    if (fingerprintWidget)
        QMetaObject::invokeMethod(fingerprintWidget, "setUser", Qt::AutoConnection, Q_ARG(vorandel::TYPE_ID, uid));
}
