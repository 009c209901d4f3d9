#pragma once

#include "vdplatform_export.h"

#include <QColor>
#include <QDialog>
#include <QIcon>
#include <QPointer>

#include <memory>

class QTabWidget;
class VDActionsToolBar;

namespace Ui {
class TabbedDialog;
}

// The console's properties dialog: a tool bar, tabs with optional sub tabs, a line for
// messages and a save button that appears once something was edited.
//
// A tab with sub tabs holds an inner row of tabs: its own widget first, under the tab's title,
// then the sub tabs. tabWidget() still gives the tab's own widget.
class VDPLATFORM_EXPORT TabbedDialog : public QDialog
{
    Q_OBJECT
public:
    explicit TabbedDialog(QWidget* parent = nullptr);
    ~TabbedDialog() override;

    // The widget of a tab, or null when there is no such tab.
    QWidget* tabWidget(int index) const;
    int addTab(QWidget* widget, const QString& title);
    void addSubTab(int tabIndex, QWidget* widget, const QIcon& icon, const QString& title);
    void setTabEnabled(int index, bool enabled);
    bool isTabEnabled(int index) const;
    int tabCount() const;
    // The index of the tab in front, -1 when there is none.
    int currentTab() const;
    // The inner tabs of a tab that has sub tabs; null otherwise.
    QTabWidget* subTabs(int index) const;

    VDActionsToolBar* toolBar() const;
    void showToolBar();
    void hideToolBar();

    // The last step of showing: the tab in front stays there while it is enabled; otherwise the
    // first enabled tab comes to the front.
    virtual void showEnabledTab();

    QString lastMessage() const;
    bool isSaveButtonShown() const;
    bool isSaveEnabled() const;

public slots:
    void showMessage(const QString& text);
    void showMessage(const QString& text, const QColor& color);
    void showCriticalMessage(const QString& text);
    void showSaveButton();
    // A part of the dialog (by name) says whether saving is possible for it.
    void setSaveEnabled(const QString& part, bool enabled);
    // The save went through: the button goes away until the next edit.
    void saved();

signals:
    void save();

private:
    QTabWidget* makeSubTabs(int index);

    std::unique_ptr<Ui::TabbedDialog> ui;
    QList<QPointer<QTabWidget>> m_subTabs;
    QStringList m_saveBlockedBy;
};
