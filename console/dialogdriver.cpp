#include "dialogdriver.h"

#include "consolelogging.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QTabWidget>
#include <QWidget>
#include <QWizard>

namespace {
// Between two steps the window gets time to follow: a menu of hits, an answer of the server. It
// is longer than the keyboard's interval, so that a list searches afresh for each text typed.
constexpr int StepMs = 450;
// How long an action may take to open its window, and a page to finish its work.
constexpr int MaxWaitMs = 10000;

bool isOrdinaryWindow(const QWidget* widget)
{
    const Qt::WindowType type = widget->windowType();
    return widget->isVisible() && type != Qt::ToolTip && type != Qt::Popup && type != Qt::Desktop;
}
}  // namespace

DialogDriver::DialogDriver(const QList<Input>& inputs, std::optional<int> page, QObject* parent)
    : QObject(parent), m_inputs(inputs), m_page(page)
{
    m_tick.setSingleShot(true);
    m_tick.setInterval(StepMs);
    connect(&m_tick, &QTimer::timeout, this, &DialogDriver::step);
}

void DialogDriver::start(QAction* action)
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        if (isOrdinaryWindow(window))
            m_windowsBefore.insert(window);
    }
    m_elapsed.start();
    // Ticking first: an action that opens a modal dialog returns only when it closes.
    m_tick.start();
    qCDebug(lcConsole) << "screenshot: trigger" << action->objectName();
    action->trigger();
}

QWidget* DialogDriver::openedWindow() const
{
    if (QWidget* modal = QApplication::activeModalWidget(); modal && !m_windowsBefore.contains(modal))
        return modal;
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        if (isOrdinaryWindow(window) && !m_windowsBefore.contains(window))
            return window;
    }
    return nullptr;
}

QWidget* DialogDriver::visibleWidget(const QString& name) const
{
    QWidgetList windows{m_window};
    const QWidgetList all = QApplication::topLevelWidgets();
    for (QWidget* window : all) {
        if (window != m_window && isOrdinaryWindow(window))
            windows << window;
    }
    for (QWidget* window : qAsConst(windows)) {
        if (!window)
            continue;
        if (window->objectName() == name && window->isVisible())
            return window;
        const QList<QWidget*> found = window->findChildren<QWidget*>(name);
        for (QWidget* widget : found) {
            if (widget->isVisible())
                return widget;
        }
    }
    return nullptr;
}

void DialogDriver::step()
{
    if (m_done)
        return;
    if (!m_window && m_opened) {
        fail(tr("the window closed"));
        return;
    }
    if (!m_window) {
        m_window = openedWindow();
        if (!m_window) {
            if (m_elapsed.hasExpired(MaxWaitMs))
                fail(tr("the action opened no window"));
            else
                m_tick.start();
            return;
        }
        m_opened = true;
        qCDebug(lcConsole) << "screenshot: driving" << m_window->objectName() << m_window->windowTitle();
        m_window->activateWindow();
        m_elapsed.restart();
    }

    if (m_next < m_inputs.size()) {
        const Input& input = m_inputs.at(m_next);
        if (QWidget* target = visibleWidget(input.object)) {
            ++m_next;
            // Before the keys: one of them may open a dialog that loops until it is answered.
            m_tick.start();
            qCDebug(lcConsole) << "screenshot: type into" << input.object;
            target->window()->activateWindow();
            target->setFocus(Qt::OtherFocusReason);
            input.keys.send(target);
            return;
        }
        if (!turnPage()) {
            fail(tr("found no field '%1' to type into (%2)").arg(input.object, m_problem));
            return;
        }
        m_tick.start();
        return;
    }
    if (!pageReached()) {
        if (!turnPage())
            fail(m_problem);
        else
            m_tick.start();
        return;
    }
    // A wizard's last page may still be at work: the saving it started goes on.
    const auto* wizard = qobject_cast<QWizard*>(m_window.data());
    if (wizard && wizard->currentPage() && !wizard->currentPage()->isComplete() && !m_elapsed.hasExpired(MaxWaitMs)) {
        m_tick.start();
        return;
    }
    m_done = true;
    emit ready(m_window);
}

bool DialogDriver::pageReached() const
{
    if (!m_page)
        return true;
    if (const auto* wizard = qobject_cast<QWizard*>(m_window.data()))
        return wizard->currentId() == *m_page;
    if (const auto* tabs = m_window->findChild<QTabWidget*>())
        return tabs->currentIndex() == *m_page;
    return false;
}

bool DialogDriver::turnPage()
{
    if (!m_page) {
        m_problem = tr("no page was asked for");
        return false;
    }
    if (auto* wizard = qobject_cast<QWizard*>(m_window.data())) {
        if (wizard->currentId() >= *m_page || !wizard->pageIds().contains(*m_page)) {
            m_problem = tr("the wizard has no page %1 after page %2").arg(*m_page).arg(wizard->currentId());
            return false;
        }
        for (const QWizard::WizardButton which : {QWizard::NextButton, QWizard::CommitButton}) {
            QAbstractButton* button = wizard->button(which);
            if (button->isVisible() && button->isEnabled()) {
                qCDebug(lcConsole) << "screenshot: press" << button->text();
                button->click();
                return true;
            }
        }
        m_problem = tr("page %1 of the wizard is not complete").arg(wizard->currentId());
        return false;
    }
    if (auto* tabs = m_window->findChild<QTabWidget*>()) {
        if (*m_page < 0 || *m_page >= tabs->count()) {
            m_problem = tr("the dialog has %n tab(s)", nullptr, tabs->count());
            return false;
        }
        if (tabs->currentIndex() == *m_page) {
            m_problem = tr("not on tab %1").arg(*m_page);
            return false;
        }
        tabs->setCurrentIndex(*m_page);
        return true;
    }
    m_problem = tr("the window has neither pages nor tabs");
    return false;
}

void DialogDriver::fail(const QString& reason)
{
    m_done = true;
    m_tick.stop();
    emit failed(reason);
}
