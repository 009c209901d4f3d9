#pragma once

#include <QStringList>
#include <QWidget>

#include <memory>

class QAbstractButton;
class QButtonGroup;

namespace Ui {
class RequestFilterWidget;
}

// The bar of state buttons above the request table. Any number of states may be on at once;
// with none on, every state shows. Each button stands for the values of "PT_STATE" that it
// selects, kept in its dynamic property "data".
class RequestFilterWidget : public QWidget
{
    Q_OBJECT
public:
    explicit RequestFilterWidget(QWidget* parent = nullptr);
    ~RequestFilterWidget() override;

    // The values of all checked buttons, in the order of the group.
    QStringList currentFilter() const;

public slots:
    void clearFilter();

signals:
    void filterChanged(const QStringList& list);

private slots:
    void buttonClicked(QAbstractButton* button);

private:
    std::unique_ptr<Ui::RequestFilterWidget> ui;
    QButtonGroup* m_buttons;
};
