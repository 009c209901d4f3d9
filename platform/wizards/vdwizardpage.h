#pragma once

#include "vdplatform_export.h"

#include <QWizardPage>

// A page of the console's wizards.
class VDPLATFORM_EXPORT VDWizardPage : public QWizardPage
{
    Q_OBJECT
public:
    explicit VDWizardPage(QWidget* parent = nullptr);
    ~VDWizardPage() override;

    // How the page is named in the wizard's list of pages: its title unless a page says more.
    virtual QString pageListText() const;
};
