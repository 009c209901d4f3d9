#include "vdwizardpage.h"

VDWizardPage::VDWizardPage(QWidget* parent) : QWizardPage(parent) {}

VDWizardPage::~VDWizardPage() = default;

QString VDWizardPage::pageListText() const
{
    return title();
}
