#pragma once

#include "vdwizardpage.h"

#include <memory>

class Ui_RequestProcessWizardPage;

// The last page of the new request wizard: how far the saving has come. The wizard drives it
// stage by stage; the page knows nothing of what is saved.
class RequestProcessWizardPage : public VDWizardPage
{
    Q_OBJECT
public:
    explicit RequestProcessWizardPage(QWidget* parent = nullptr);
    ~RequestProcessWizardPage() override;

    // Complete once the bar stands at its maximum, which only finish() announces.
    bool isComplete() const override;

public slots:
    void showMessage(const QString& text);
    void setStageCount(int count);
    void setCurrentStage(int stage);
    void nextStage();
    // The end, good or bad: the bar jumps to its end; only a good end says so in words.
    void finish(bool good);

private:
    const std::unique_ptr<Ui_RequestProcessWizardPage> ui;
};
