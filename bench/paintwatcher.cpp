#include "paintwatcher.h"

#include <QEvent>
#include <QWidget>

PaintWatcher::PaintWatcher(QWidget* watched) : m_watched(watched)
{
    watched->installEventFilter(this);
}

PaintWatcher::~PaintWatcher()
{
    if (m_watched)
        m_watched->removeEventFilter(this);
}

bool PaintWatcher::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_watched && event->type() == QEvent::Paint)
        m_painted = true;
    return QObject::eventFilter(watched, event);
}
