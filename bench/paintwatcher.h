#pragma once

#include <QObject>
#include <QPointer>

class QWidget;

// Notes when a widget has been painted, so that a measurement can end with the first paint.
class PaintWatcher : public QObject
{
    Q_OBJECT
public:
    explicit PaintWatcher(QWidget* watched);
    ~PaintWatcher() override;

    bool painted() const { return m_painted; }

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QPointer<QWidget> m_watched;
    bool m_painted = false;
};
