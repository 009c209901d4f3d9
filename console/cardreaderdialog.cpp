#include "cardreaderdialog.h"

#include "ui_cardreaderdialog.h"

#include <QPushButton>
#include <QRegularExpressionValidator>

CardReaderDialog::CardReaderDialog(const QString& readerName, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::CardReaderDialog>())
{
    ui->setupUi(this);
    ui->messageLabel->setText(tr("Считыватель «%1» ждёт карту.\nВведите номер карты, которую к нему подносят, "
                                 "или возьмите новую карту.")
                                  .arg(readerName));
    // Up to nineteen digits: every such number fits a card's.
    ui->numberEdit->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[1-9]\\d{0,18}")), ui->numberEdit));
    m_hold = ui->buttons->addButton(tr("Поднести карту"), QDialogButtonBox::AcceptRole);
    m_newCard = ui->buttons->addButton(tr("Новая карта"), QDialogButtonBox::AcceptRole);
    ui->buttons->addButton(tr("Убрать карту"), QDialogButtonBox::RejectRole);
    m_hold->setEnabled(false);
    connect(ui->numberEdit, &QLineEdit::textChanged, this,
            [this] { m_hold->setEnabled(ui->numberEdit->hasAcceptableInput()); });
    connect(m_hold, &QPushButton::clicked, this, [this] {
        m_card = ui->numberEdit->text().toULongLong();
        accept();
    });
    connect(m_newCard, &QPushButton::clicked, this, [this] {
        m_card = 0;
        accept();
    });
    connect(ui->buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

CardReaderDialog::~CardReaderDialog() = default;
