#include "logindialog.h"

#include "ui_logindialog.h"
#include "vdstyle.h"

#include <QPushButton>

LoginDialog::LoginDialog(const QString& server, const QString& login, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::LoginDialog>())
{
    ui->setupUi(this);
    ui->serverLabel->setText(server);
    ui->leLogin->setText(login);
    m_loginButton = ui->buttons->button(QDialogButtonBox::Ok);
    m_loginButton->setText(tr("Войти"));
    ui->buttons->button(QDialogButtonBox::Cancel)->setText(tr("Отмена"));
    QPalette warning = ui->messageLabel->palette();
    warning.setColor(QPalette::WindowText, vdstyle::vdOrange);
    ui->messageLabel->setPalette(warning);
    ui->messageLabel->hide();
    connect(ui->buttons, &QDialogButtonBox::accepted, this, &LoginDialog::accept);
    connect(ui->buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(ui->leLogin, &QLineEdit::textChanged, this, &LoginDialog::updateButton);
    // The login given beforehand needs only its password.
    (login.isEmpty() ? ui->leLogin : ui->lePassword)->setFocus();
    updateButton();
}

LoginDialog::~LoginDialog() = default;

QString LoginDialog::login() const
{
    return ui->leLogin->text().trimmed();
}

QString LoginDialog::password() const
{
    return ui->lePassword->text();
}

void LoginDialog::accept()
{
    if (m_checking || login().isEmpty())
        return;
    m_checking = true;
    ui->messageLabel->hide();
    ui->leLogin->setEnabled(false);
    ui->lePassword->setEnabled(false);
    updateButton();
    emit submitted(login(), password());
}

void LoginDialog::succeed()
{
    m_checking = false;
    QDialog::accept();
}

void LoginDialog::refuse(const QString& reason)
{
    m_checking = false;
    ui->messageLabel->setText(reason);
    ui->messageLabel->show();
    ui->leLogin->setEnabled(true);
    ui->lePassword->setEnabled(true);
    ui->lePassword->clear();
    ui->lePassword->setFocus();
    updateButton();
}

void LoginDialog::updateButton()
{
    m_loginButton->setEnabled(!m_checking && !login().isEmpty());
}
