#pragma once

#include "consoleoptions.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QString>

class QTabWidget;
class QWidget;

// Saves a picture of the console once its current tab has settled: the first rows of the tab's
// table selected, and the card of the first filled in, photo included. With an action to
// trigger, the picture is of the window that the action opens, filled in and walked to the
// page asked for, with the pop-ups that stand over it.
class Screenshot : public QObject
{
    Q_OBJECT
public:
    Screenshot(QWidget* window, QTabWidget* tabs, const QString& fileName,
               const ConsoleOptions::ScreenshotScript& script = {}, QObject* parent = nullptr);

    // Starts in the next turn of the event loop; emits finished when the file is written or
    // could not be.
    void take();

    // The widget as it shows, with the pop-ups and tool tips that stand over it.
    static QPixmap grabWithPopups(QWidget* widget);

signals:
    void finished(int exitCode);

private:
    void selectRows();
    void driveAction();
    void waitForExchange();
    void save();
    void fail(const QString& reason);

    QPointer<QWidget> m_window;
    QPointer<QTabWidget> m_tabs;
    QPointer<QWidget> m_target;
    QString m_fileName;
    ConsoleOptions::ScreenshotScript m_script;
    QElapsedTimer m_waiting;
};
