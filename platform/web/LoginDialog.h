#pragma once

#include <QDialog>
#include <QUrl>

class QLineEdit;

namespace vandrel {

/// Asks for the name and the password that a server wants. What the server says of itself is shown as plain text, and
/// whether the password would travel unencrypted.
class LoginDialog : public QDialog
{
    Q_OBJECT

public:
    LoginDialog(const QUrl &url, const QString &realm, QWidget *parent = nullptr);

    QString user() const;
    QString password() const;

private:
    QLineEdit *m_user;
    QLineEdit *m_password;
};

} // namespace vandrel
