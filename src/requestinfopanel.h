#pragma once

#include <QList>
#include <QModelIndex>
#include <QWidget>

#include <memory>

namespace Ui {
class RequestInfoPanel;
}

// The read-only card beside the request table. It keeps nothing between calls: each call
// writes the card afresh from the store and from the row it is given.
class RequestInfoPanel : public QWidget
{
    Q_OBJECT
public:
    explicit RequestInfoPanel(QWidget* parent = nullptr);
    ~RequestInfoPanel() override;

    // The card of one request; `index` is any cell of its row in the table's proxy.
    void showRequestInfo(const QModelIndex& index);
    // How many requests are selected.
    void showMultiRequestsInfo(const QList<QModelIndex>& rows);
    void clear();

private:
    std::unique_ptr<Ui::RequestInfoPanel> ui;
};
