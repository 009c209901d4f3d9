#pragma once

#include "keystrokes.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>
#include <QTimer>

#include <optional>

class QAction;
class QWidget;

// Drives the window that an action opens, as an operator would: types into its fields, in the
// order given, and walks it to a page, pressing Next (a wizard) or choosing a tab (a dialog with
// tabs). A field that isn't on the page in front is looked for on the following pages, as far
// as the page asked for. Then it waits while a wizard's page is still at work, and says the
// window is ready.
class DialogDriver : public QObject
{
    Q_OBJECT
public:
    struct Input
    {
        QString object;  // object name of the widget
        Keystrokes keys;
    };

    DialogDriver(const QList<Input>& inputs, std::optional<int> page, QObject* parent = nullptr);

    // Triggers the action and drives what it opens. The action may open a dialog that runs a
    // loop of its own; the driver goes on inside it.
    void start(QAction* action);

signals:
    void ready(QWidget* window);
    void failed(const QString& reason);

private:
    void step();
    QWidget* openedWindow() const;
    // The visible widget of that name: in the driven window first, then in any other window,
    // such as a file dialog that a field opened.
    QWidget* visibleWidget(const QString& name) const;
    bool pageReached() const;
    // One page on towards the page asked for; false, with `m_problem` set, when there is none.
    bool turnPage();
    void fail(const QString& reason);

    const QList<Input> m_inputs;
    const std::optional<int> m_page;
    int m_next = 0;
    QSet<QWidget*> m_windowsBefore;
    QPointer<QWidget> m_window;
    QString m_problem;
    QTimer m_tick;
    QElapsedTimer m_elapsed;
    bool m_opened = false;
    bool m_done = false;
};
