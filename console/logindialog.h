#pragma once

#include <QDialog>

#include <memory>

class QPushButton;
namespace Ui {
class LoginDialog;
}

// Asks for a login and password to a server. «Войти» does not close it: it hands both on
// (submitted) and waits for the verdict. A refusal is shown under the fields, the password is
// cleared, and the operator tries again; an acceptance closes the dialog.
class LoginDialog : public QDialog
{
    Q_OBJECT
public:
    // `server` as the operator should read it; `login` filled in already, may be empty.
    LoginDialog(const QString& server, const QString& login, QWidget* parent = nullptr);
    ~LoginDialog() override;

    QString login() const;
    QString password() const;

    // The server took the login.
    void succeed();
    // The server refused it, or could not be asked.
    void refuse(const QString& reason);

    QPushButton* loginButton() const { return m_loginButton; }

signals:
    void submitted(const QString& login, const QString& password);

public slots:
    void accept() override;

private:
    void updateButton();

    std::unique_ptr<Ui::LoginDialog> ui;
    QPushButton* m_loginButton = nullptr;
    bool m_checking = false;
};
