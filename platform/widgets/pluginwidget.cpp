#include "pluginwidget.h"

#include "platformlogging.h"

#include <QCoreApplication>

#include <utility>

namespace {
constexpr int NoteMargin = 12;
constexpr int NoteSpacing = 6;
constexpr int NoteMaximumWidth = 420;

// A plug-in's page belongs to the plug-in loader, which destroys it only in its own clean-up at
// exit, after the application is gone, unless the host deleted it first. A widget can't be torn
// down without the application, so the pages that are still there go with it.
QList<QPointer<PluginWidget>>& livePages()
{
    static QList<QPointer<PluginWidget>> pages;
    return pages;
}

void destroyRemainingPages()
{
    for (const QPointer<PluginWidget>& page : std::exchange(livePages(), {})) {
        if (page && !page->parentWidget())
            delete page.data();
    }
}
}  // namespace

PluginWidget::PluginWidget(QWidget* parent) : QMainWindow(parent)
{
    qRegisterMetaType<PluginWidget::PopupKind>();
    if (livePages().isEmpty())
        qAddPostRoutine(destroyRemainingPages);
    livePages().removeAll(nullptr);
    livePages().append(this);
}

PluginWidget::~PluginWidget()
{
    // The notes tell this page when they go; let them go while the page is still whole.
    for (const QPointer<MessageWidget>& note : std::exchange(m_visible, {}))
        delete note.data();
}

bool PluginWidget::canShow() const
{
    return true;
}

QString PluginWidget::defaultHelpContext() const
{
    return {};
}

void PluginWidget::activated() {}

void PluginWidget::onTabActivated(int) {}

QList<PLUGIN_TAB> PluginWidget::tabList() const
{
    return {};
}

void PluginWidget::insertedToInterface() {}

void PluginWidget::showPopupMessage(const QString& text, MessageWidget::Icon icon, int)
{
    showPopup(PopupKind::Message, icon, text);
}

void PluginWidget::showPopupInformationMessage(const QString& text, int)
{
    showPopup(PopupKind::Information, MessageWidget::Information, text);
}

void PluginWidget::showPopupCriticalMessage(const QString& text, int)
{
    showPopup(PopupKind::Critical, MessageWidget::Critical, text);
}

QList<PluginWidget::Popup> PluginWidget::popups() const
{
    return m_popups;
}

void PluginWidget::clearPopups()
{
    m_popups.clear();
}

void PluginWidget::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    placePopups();
}

void PluginWidget::showPopup(PopupKind kind, MessageWidget::Icon icon, const QString& text)
{
    qCInfo(lcWidgets).noquote() << "popup" << icon << text;
    m_popups.append({kind, icon, text});
    emit popupShown(text, kind);

    auto* note = new MessageWidget(text, icon, this);
    // A widget says it is destroyed before its guard clears, while it is no note any more: the
    // others move up once it has gone.
    connect(note, &QObject::destroyed, this, [this] {
        QMetaObject::invokeMethod(
            this,
            [this] {
                m_visible.removeAll(nullptr);
                placePopups();
            },
            Qt::QueuedConnection);
    });
    m_visible.append(note);
    note->popup();
    placePopups();
}

void PluginWidget::placePopups()
{
    const int widthLimit = qMin(NoteMaximumWidth, width() - 2 * NoteMargin);
    int bottom = height() - NoteMargin;
    for (const QPointer<MessageWidget>& note : qAsConst(m_visible)) {
        if (!note || !note->isVisibleTo(this))
            continue;
        const int noteWidth = qMax(qMin(note->sizeHint().width(), widthLimit), note->minimumSizeHint().width());
        const int noteHeight = note->hasHeightForWidth() ? note->heightForWidth(noteWidth) : note->sizeHint().height();
        note->setGeometry(NoteMargin, bottom - noteHeight, noteWidth, noteHeight);
        note->raise();
        bottom -= noteHeight + NoteSpacing;
    }
}
