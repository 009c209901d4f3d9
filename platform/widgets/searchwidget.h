#pragma once

#include "vdplatform_export.h"

#include <QWidget>

class QLineEdit;
class QToolButton;
class QTimer;

// A search field: it starts a search a moment after the operator stops typing, at once on
// Return, and with an empty text when cleared (by its button, by hand or by Escape). Ctrl+F in
// its window brings the cursor to it.
class VDPLATFORM_EXPORT SearchWidget : public QWidget
{
    Q_OBJECT
public:
    explicit SearchWidget(QWidget* parent = nullptr);
    ~SearchWidget() override;

    void setPlaceholderText(const QString& text);
    QString placeholderText() const;
    void showAdvancedButton(bool show);
    QString text() const;
    void setText(const QString& text);
    QLineEdit* lineEdit() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void startSearch(const QString& text);
    void advancedSearchRequested();

private:
    QLineEdit* m_edit = nullptr;
    QToolButton* m_advanced = nullptr;
    QTimer* m_delay = nullptr;
};
