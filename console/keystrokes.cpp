#include "keystrokes.h"

#include <QApplication>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <QPointer>
#include <QWidget>

namespace {
// The key that a name in braces stands for: one key, no modifiers.
int namedKey(const QString& name)
{
    const QKeySequence sequence = QKeySequence::fromString(name, QKeySequence::PortableText);
    if (sequence.count() != 1 || (sequence[0] & Qt::KeyboardModifierMask) != 0 || sequence[0] == Qt::Key_unknown)
        return 0;
    return sequence[0];
}

// The text that a key types, if any.
QString keyText(int key)
{
    switch (key) {
    case Qt::Key_Space:
        return QStringLiteral(" ");
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return QStringLiteral("\r");
    case Qt::Key_Tab:
        return QStringLiteral("\t");
    default:
        return {};
    }
}
}  // namespace

std::optional<Keystrokes> Keystrokes::parse(const QString& text, QString* error)
{
    Keystrokes strokes;
    for (int at = 0; at < text.size();) {
        const int close = text.at(at) == QLatin1Char('{') ? text.indexOf(QLatin1Char('}'), at + 1) : -1;
        if (close > at + 1) {
            const QString name = text.mid(at + 1, close - at - 1);
            // Names are words: anything else between braces is text.
            if (name.at(0).isLetter() && !name.contains(QLatin1Char(' '))) {
                const int key = namedKey(name);
                if (key == 0) {
                    if (error)
                        *error = QCoreApplication::translate("Keystrokes", "unknown key {%1}").arg(name);
                    return std::nullopt;
                }
                strokes.m_strokes.append({key, keyText(key)});
                at = close + 1;
                continue;
            }
        }
        strokes.m_strokes.append({Qt::Key_unknown, text.at(at)});
        ++at;
    }
    return strokes;
}

void Keystrokes::send(QWidget* widget) const
{
    // A key may close the widget's window, or open a dialog that runs a loop of its own.
    const QPointer<QWidget> target = widget;
    for (const Stroke& stroke : m_strokes) {
        if (!target)
            return;
        QKeyEvent press(QEvent::KeyPress, stroke.key, Qt::NoModifier, stroke.text);
        QApplication::sendEvent(target, &press);
        if (!target)
            return;
        QKeyEvent release(QEvent::KeyRelease, stroke.key, Qt::NoModifier, stroke.text);
        QApplication::sendEvent(target, &release);
    }
}
