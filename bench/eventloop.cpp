#include "eventloop.h"

#include "paintwatcher.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QWidget>

void drainEvents()
{
    // A round that handled nothing ends it; the bound only guards against a source that is
    // always ready.
    constexpr int MaxRounds = 10000;
    QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance();
    for (int round = 0; round < MaxRounds && dispatcher->processEvents(QEventLoop::AllEvents); ++round) {
    }
}

bool showUntilPainted(QWidget* window, QWidget* canvas)
{
    PaintWatcher watcher(canvas);
    window->show();
    const QDeadlineTimer deadline(10000);
    while (!watcher.painted() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 100);
    drainEvents();
    return watcher.painted();
}
