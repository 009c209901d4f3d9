#include "requestprocesswizardpage.h"

#include "ui_requestprocesswizardpage.h"

RequestProcessWizardPage::RequestProcessWizardPage(QWidget* parent)
    : VDWizardPage(parent), ui(std::make_unique<Ui_RequestProcessWizardPage>())
{
    ui->setupUi(this);
    ui->finalMessage->hide();
}

RequestProcessWizardPage::~RequestProcessWizardPage() = default;

bool RequestProcessWizardPage::isComplete() const
{
    return ui->progressBar->value() == ui->progressBar->maximum();
}

void RequestProcessWizardPage::showMessage(const QString& text)
{
    ui->lbMessage->setText(text);
    ui->additionalMessages->setPlainText(tr("Дополнительные параметры изменяются в свойствах заявки"));
}

void RequestProcessWizardPage::setStageCount(int count)
{
    ui->progressBar->setMaximum(count);
}

void RequestProcessWizardPage::setCurrentStage(int stage)
{
    ui->progressBar->setValue(stage);
}

void RequestProcessWizardPage::nextStage()
{
    setCurrentStage(ui->progressBar->value() + 1);
}

void RequestProcessWizardPage::finish(bool good)
{
    ui->progressBar->setValue(ui->progressBar->maximum());
    emit completeChanged();
    if (good)
        ui->finalMessage->show();
}
