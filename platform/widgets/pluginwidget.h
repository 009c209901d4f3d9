#pragma once

#include "messagewidget.h"
#include "servicerecords.h"
#include "vdplatform_export.h"

#include <QList>
#include <QMainWindow>
#include <QPointer>

// The base of a plug-in's tab page. Its pop-ups are real notes in the page, and every one of
// them is also kept in a record that tests and the console can read.
class VDPLATFORM_EXPORT PluginWidget : public QMainWindow
{
    Q_OBJECT
public:
    enum class PopupKind { Message, Information, Critical };
    struct Popup
    {
        PopupKind kind;
        MessageWidget::Icon icon;
        QString text;
    };

    explicit PluginWidget(QWidget* parent = nullptr);
    ~PluginWidget() override;

    virtual bool canShow() const;
    virtual QString defaultHelpContext() const;
    virtual void activated();
    virtual void onTabActivated(int index);
    virtual QList<PLUGIN_TAB> tabList() const;

    // The last int of each is reserved; plug-ins pass 0.
    void showPopupMessage(const QString& text, MessageWidget::Icon icon, int reserved);
    void showPopupInformationMessage(const QString& text, int reserved);
    void showPopupCriticalMessage(const QString& text, int reserved);

    // Every pop-up shown so far, oldest first.
    QList<Popup> popups() const;
    void clearPopups();

public slots:
    virtual void insertedToInterface();

signals:
    void popupShown(const QString& text, PluginWidget::PopupKind kind);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void showPopup(PopupKind kind, MessageWidget::Icon icon, const QString& text);
    // Stacks the notes from the bottom-left corner upward, the oldest lowest: pages keep their
    // lists on the left and what the operator reads on the right, and a note must not hide that.
    void placePopups();

    QList<Popup> m_popups;
    QList<QPointer<MessageWidget>> m_visible;
};

Q_DECLARE_METATYPE(PluginWidget::PopupKind)
