#include "screenshot.h"

#include "consolelogging.h"
#include "vdplugininterface.h"
#include "vdserverinterface.h"

#include <QFileInfo>
#include <QPixmap>
#include <QTabWidget>
#include <QTableView>
#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <cstdio>

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

Screenshot::Screenshot(QWidget* window, QTabWidget* tabs, const QString& fileName, QObject* parent)
    : QObject(parent), m_window(window), m_tabs(tabs), m_fileName(fileName)
{
}

void Screenshot::take()
{
    QTimer::singleShot(0, this, &Screenshot::selectFirstRow);
}

void Screenshot::selectFirstRow()
{
    QWidget* page = m_tabs ? m_tabs->currentWidget() : nullptr;
    if (auto* table = page ? page->findChild<QTableView*>() : nullptr) {
        if (table->model() && table->model()->rowCount() > 0) {
            qCDebug(lcConsole) << "screenshot: select the first row of" << table->objectName();
            table->setFocus();
            table->selectRow(0);
        }
    }
    m_waiting.start();
    QTimer::singleShot(SettleMs, this, &Screenshot::waitForExchange);
}

void Screenshot::waitForExchange()
{
    if (exchangeBusy() && m_waiting.elapsed() < SettleMs + MaxWaitMs) {
        QTimer::singleShot(PollMs, this, &Screenshot::waitForExchange);
        return;
    }
    QTimer::singleShot(QuietMs, this, &Screenshot::save);
}

void Screenshot::save()
{
    if (!m_window) {
        qCCritical(lcConsole) << "screenshot: the window is gone";
        emit finished(1);
        return;
    }
    const QPixmap picture = m_window->grab();
    if (picture.isNull() || !picture.save(m_fileName, "PNG")) {
        qCCritical(lcConsole).noquote() << QStringLiteral("Could not save the screenshot to %1").arg(m_fileName);
        emit finished(1);
        return;
    }
    QTextStream(stdout) << QFileInfo(m_fileName).absoluteFilePath() << Qt::endl;
    emit finished(0);
}
