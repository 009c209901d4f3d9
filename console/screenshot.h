#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QString>

class QTabWidget;
class QWidget;

// Saves a picture of the console once its current tab has settled: the first row of the tab's
// table selected, and the card of that row filled in, photo included.
class Screenshot : public QObject
{
    Q_OBJECT
public:
    Screenshot(QWidget* window, QTabWidget* tabs, const QString& fileName, QObject* parent = nullptr);

    // Starts in the next turn of the event loop; emits finished when the file is written or
    // could not be.
    void take();

signals:
    void finished(int exitCode);

private:
    void selectFirstRow();
    void waitForExchange();
    void save();

    QPointer<QWidget> m_window;
    QPointer<QTabWidget> m_tabs;
    QString m_fileName;
    QElapsedTimer m_waiting;
};
