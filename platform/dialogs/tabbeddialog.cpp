#include "tabbeddialog.h"

#include "platformlogging.h"
#include "ui_tabbeddialog.h"
#include "vdactionstoolbar.h"

namespace {
const QColor CriticalColor(0xc6, 0x28, 0x28);
}  // namespace

TabbedDialog::TabbedDialog(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::TabbedDialog>())
{
    ui->setupUi(this);
    ui->toolBar->hide();
    ui->saveButton->hide();
    connect(ui->saveButton, &QPushButton::clicked, this, &TabbedDialog::save);
    connect(ui->closeButton, &QPushButton::clicked, this, &QDialog::reject);
}

TabbedDialog::~TabbedDialog() = default;

QWidget* TabbedDialog::tabWidget(int index) const
{
    if (QTabWidget* inner = subTabs(index))
        return inner->widget(0);
    return ui->tabs->widget(index);
}

int TabbedDialog::addTab(QWidget* widget, const QString& title)
{
    if (!widget) {
        qCWarning(lcWidgets) << "no widget for the tab" << title;
        return -1;
    }
    return ui->tabs->addTab(widget, title);
}

void TabbedDialog::addSubTab(int tabIndex, QWidget* widget, const QIcon& icon, const QString& title)
{
    if (!widget || tabIndex < 0 || tabIndex >= tabCount()) {
        qCWarning(lcWidgets) << "no tab" << tabIndex << "or no widget for the sub tab" << title;
        return;
    }
    QTabWidget* inner = subTabs(tabIndex);
    if (!inner)
        inner = makeSubTabs(tabIndex);
    inner->addTab(widget, icon, title);
}

void TabbedDialog::setTabEnabled(int index, bool enabled)
{
    ui->tabs->setTabEnabled(index, enabled);
}

bool TabbedDialog::isTabEnabled(int index) const
{
    return ui->tabs->isTabEnabled(index);
}

int TabbedDialog::tabCount() const
{
    return ui->tabs->count();
}

int TabbedDialog::currentTab() const
{
    return ui->tabs->currentIndex();
}

QTabWidget* TabbedDialog::subTabs(int index) const
{
    auto* page = qobject_cast<QTabWidget*>(ui->tabs->widget(index));
    return page && m_subTabs.contains(page) ? page : nullptr;
}

VDActionsToolBar* TabbedDialog::toolBar() const
{
    return ui->toolBar;
}

void TabbedDialog::showToolBar()
{
    ui->toolBar->show();
}

void TabbedDialog::hideToolBar()
{
    ui->toolBar->hide();
}

void TabbedDialog::showEnabledTab()
{
    if (isTabEnabled(currentTab()))
        return;
    for (int index = 0; index < tabCount(); ++index) {
        if (isTabEnabled(index)) {
            ui->tabs->setCurrentIndex(index);
            return;
        }
    }
}

QString TabbedDialog::lastMessage() const
{
    return ui->message->text();
}

bool TabbedDialog::isSaveButtonShown() const
{
    return !ui->saveButton->isHidden();
}

bool TabbedDialog::isSaveEnabled() const
{
    return ui->saveButton->isEnabled();
}

void TabbedDialog::showMessage(const QString& text)
{
    showMessage(text, palette().color(QPalette::WindowText));
}

void TabbedDialog::showMessage(const QString& text, const QColor& color)
{
    QPalette palette = ui->message->palette();
    palette.setColor(QPalette::WindowText, color);
    ui->message->setPalette(palette);
    ui->message->setText(text);
}

void TabbedDialog::showCriticalMessage(const QString& text)
{
    qCInfo(lcWidgets).noquote() << "dialog message" << text;
    showMessage(text, CriticalColor);
}

void TabbedDialog::showSaveButton()
{
    // Tabs announce edits while they are being filled; only the operator's count, and he can
    // edit nothing before the dialog shows.
    if (!isVisible())
        return;
    ui->saveButton->show();
}

void TabbedDialog::setSaveEnabled(const QString& part, bool enabled)
{
    if (enabled)
        m_saveBlockedBy.removeAll(part);
    else if (!m_saveBlockedBy.contains(part))
        m_saveBlockedBy.append(part);
    ui->saveButton->setEnabled(m_saveBlockedBy.isEmpty());
}

void TabbedDialog::saved()
{
    ui->saveButton->hide();
}

QTabWidget* TabbedDialog::makeSubTabs(int index)
{
    QWidget* own = ui->tabs->widget(index);
    const QString title = ui->tabs->tabText(index);
    const QIcon icon = ui->tabs->tabIcon(index);
    const bool enabled = ui->tabs->isTabEnabled(index);
    const bool current = ui->tabs->currentIndex() == index;

    auto* inner = new QTabWidget(this);
    inner->setDocumentMode(true);
    m_subTabs.append(inner);
    ui->tabs->removeTab(index);
    inner->addTab(own, icon, title);
    ui->tabs->insertTab(index, inner, icon, title);
    ui->tabs->setTabEnabled(index, enabled);
    if (current)
        ui->tabs->setCurrentIndex(index);
    return inner;
}
