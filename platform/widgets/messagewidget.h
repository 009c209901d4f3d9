#pragma once

#include "vdplatform_export.h"

#include <QFrame>

class QLabel;
class QTimer;

// A short note that shows itself over a page and closes by itself.
class VDPLATFORM_EXPORT MessageWidget : public QFrame
{
    Q_OBJECT
public:
    enum Icon {
        Information = 0,
        Warning = 1,
        Critical = 2,
        Success = 3,
    };
    Q_ENUM(Icon)

    MessageWidget(const QString& text, Icon icon, QWidget* parent);

    QString text() const;
    Icon icon() const { return m_icon; }
    // Shows the note for `msecs` (a default fit for the length of the text when 0), then closes.
    void popup(int msecs = 0);
    // How long popup(0) shows a note with this text: long enough to read it, never for good.
    static int defaultDuration(const QString& text);

    // As wide as the text on one line; a narrower place makes the text wrap.
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    Icon m_icon;
    QLabel* m_text = nullptr;
    QTimer* m_timer = nullptr;
};
