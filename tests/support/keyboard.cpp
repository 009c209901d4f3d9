#include "keyboard.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>

void typeText(QWidget* widget, const QString& text)
{
    for (const QChar c : text) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, QString(c));
        QApplication::sendEvent(widget, &press);
        QKeyEvent release(QEvent::KeyRelease, Qt::Key_unknown, Qt::NoModifier, QString(c));
        QApplication::sendEvent(widget, &release);
    }
}
