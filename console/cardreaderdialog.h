#pragma once

#include "objectinfo.h"

#include <QDialog>

#include <memory>
#include <optional>

class QPushButton;
namespace Ui {
class CardReaderDialog;
}

// The person at a simulated card reader: asks the operator which card he holds to the reader
// that waits for one. He types its number or takes a new card; cancelling takes the card away,
// and the read fails.
class CardReaderDialog : public QDialog
{
    Q_OBJECT
public:
    CardReaderDialog(const QString& readerName, QWidget* parent = nullptr);
    ~CardReaderDialog() override;

    // After acceptance: the number typed, or 0 for a new card. Nothing when cancelled.
    std::optional<vorandel::CARD_ID> card() const { return m_card; }

    QPushButton* holdButton() const { return m_hold; }
    QPushButton* newCardButton() const { return m_newCard; }

private:
    std::unique_ptr<Ui::CardReaderDialog> ui;
    QPushButton* m_hold = nullptr;
    QPushButton* m_newCard = nullptr;
    std::optional<vorandel::CARD_ID> m_card;
};
