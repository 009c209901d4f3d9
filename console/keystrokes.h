#pragma once

#include <QList>
#include <QString>

#include <optional>

class QWidget;

// What an operator types into a widget: letters, and keys named in braces ("Ива{Down}{Return}",
// "{Space}"). A brace pair that names no key is typed as it stands.
class Keystrokes
{
public:
    // The keystrokes of a text; nullopt, with the reason in `error`, for a key name in braces
    // that the keyboard doesn't know ("{Retrun}").
    static std::optional<Keystrokes> parse(const QString& text, QString* error = nullptr);

    // Sends each stroke to the widget as a key press and release, the way the keyboard would.
    void send(QWidget* widget) const;

    bool isEmpty() const { return m_strokes.isEmpty(); }

private:
    struct Stroke
    {
        int key = 0;  // Qt::Key; Qt::Key_unknown for a plain letter
        QString text;
    };
    QList<Stroke> m_strokes;
};
