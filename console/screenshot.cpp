#include "screenshot.h"

#include "consolelogging.h"
#include "dialogdriver.h"
#include "vdplugininterface.h"
#include "vdserverinterface.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QFileInfo>
#include <QItemSelection>
#include <QPainter>
#include <QPixmap>
#include <QTabWidget>
#include <QTableView>
#include <QTextStream>
#include <QTimer>

#include <algorithm>

namespace {
// A tab refreshes its card a moment after a selection and then asks for the photo.
constexpr int SettleMs = 1000;
// Then the answers still on their way are awaited, checking this often, but not longer than this.
constexpr int PollMs = 100;
constexpr int MaxWaitMs = 5000;
// An answer may restart a tab's own refresh timer; this lets it run out.
constexpr int QuietMs = 300;

bool exchangeBusy()
{
    const QList<VDPluginInterface*> plugins = VDServerInterface::instance()->queryPlugins();
    return std::any_of(plugins.cbegin(), plugins.cend(),
                       [](const VDPluginInterface* plugin) { return plugin->pendingQueries() > 0; });
}
}  // namespace

Screenshot::Screenshot(QWidget* window, QTabWidget* tabs, const QString& fileName,
                       const ConsoleOptions::ScreenshotScript& script, QObject* parent)
    : QObject(parent), m_window(window), m_tabs(tabs), m_target(window), m_fileName(fileName), m_script(script)
{
}

void Screenshot::take()
{
    QTimer::singleShot(0, this, &Screenshot::selectRows);
}

void Screenshot::selectRows()
{
    QWidget* page = m_tabs ? m_tabs->currentWidget() : nullptr;
    for (const QString& name : qAsConst(m_script.clicks)) {
        auto* button = page ? page->findChild<QAbstractButton*>(name) : nullptr;
        if (!button) {
            fail(tr("The tab has no button '%1'").arg(name));
            return;
        }
        button->click();
    }
    QTableView* table = page ? page->findChild<QTableView*>() : nullptr;
    const int rows = table && table->model() ? std::min(m_script.rows, table->model()->rowCount()) : 0;
    if (rows > 0) {
        qCDebug(lcConsole) << "screenshot: select" << rows << "rows of" << table->objectName();
        const QAbstractItemModel* model = table->model();
        table->setFocus();
        table->selectRow(0);
        const QItemSelection first(model->index(0, 0), model->index(rows - 1, model->columnCount() - 1));
        table->selectionModel()->select(first, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    m_waiting.start();
    QTimer::singleShot(SettleMs, this, m_script.action.isEmpty() ? &Screenshot::waitForExchange : &Screenshot::driveAction);
}

void Screenshot::driveAction()
{
    QWidget* page = m_tabs ? m_tabs->currentWidget() : nullptr;
    QAction* action = page ? page->findChild<QAction*>(m_script.action) : nullptr;
    if (!action) {
        fail(tr("The tab has no action '%1'").arg(m_script.action));
        return;
    }
    if (!action->isEnabled()) {
        fail(tr("The action '%1' is disabled").arg(m_script.action));
        return;
    }
    QList<DialogDriver::Input> inputs;
    for (const ConsoleOptions::ScreenshotInput& input : qAsConst(m_script.inputs))
        inputs.append({input.object, input.keys});
    auto* driver = new DialogDriver(inputs, m_script.page, this);
    connect(driver, &DialogDriver::failed, this, [this](const QString& reason) {
        fail(tr("Could not drive the window of '%1': %2").arg(m_script.action, reason));
    });
    connect(driver, &DialogDriver::ready, this, [this](QWidget* window) {
        m_target = m_script.mainWindow ? m_window.data() : window;
        m_waiting.restart();
        QTimer::singleShot(QuietMs, this, &Screenshot::waitForExchange);
    });
    driver->start(action);
}

void Screenshot::waitForExchange()
{
    if (exchangeBusy() && m_waiting.elapsed() < SettleMs + MaxWaitMs) {
        QTimer::singleShot(PollMs, this, &Screenshot::waitForExchange);
        return;
    }
    QTimer::singleShot(QuietMs, this, &Screenshot::save);
}

QPixmap Screenshot::grabWithPopups(QWidget* widget)
{
    QPixmap picture = widget->grab();
    const QRect area(widget->mapToGlobal(QPoint(0, 0)), widget->size());
    QPainter painter(&picture);
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        const Qt::WindowType type = window->windowType();
        if (window == widget || !window->isVisible() || (type != Qt::ToolTip && type != Qt::Popup))
            continue;
        const QRect placed(window->mapToGlobal(QPoint(0, 0)), window->size());
        if (placed.intersects(area))
            painter.drawPixmap(placed.topLeft() - area.topLeft(), window->grab());
    }
    return picture;
}

void Screenshot::save()
{
    if (!m_target) {
        fail(tr("The window is gone"));
        return;
    }
    const QPixmap picture = grabWithPopups(m_target);
    if (picture.isNull() || !picture.save(m_fileName, "PNG")) {
        fail(tr("Could not save the screenshot to %1").arg(m_fileName));
        return;
    }
    QTextStream(stdout) << QFileInfo(m_fileName).absoluteFilePath() << Qt::endl;
    emit finished(0);
}

void Screenshot::fail(const QString& reason)
{
    qCCritical(lcConsole).noquote() << reason;
    emit finished(1);
}
