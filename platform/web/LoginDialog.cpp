#include "platform/web/LoginDialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>

namespace vandrel {

namespace {

constexpr int longestRealm = 200;

} // namespace

LoginDialog::LoginDialog(const QUrl &url, const QString &realm, QWidget *parent)
    : QDialog(parent), m_user(new QLineEdit(this)), m_password(new QLineEdit(this))
{
    setObjectName(QStringLiteral("LoginDialog"));
    setWindowTitle(tr("Log in"));
    QString text = tr("\"%1\" asks for a name and a password.").arg(url.host());
    if (!realm.isEmpty())
        text += u'\n' + tr("It says: %1").arg(realm.left(longestRealm));
    if (url.scheme() != QStringLiteral("https"))
        text += u'\n' + tr("The connection is not encrypted.");
    auto *label = new QLabel(text, this);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    m_user->setObjectName(QStringLiteral("user"));
    m_user->setAccessibleName(tr("Name"));
    m_password->setObjectName(QStringLiteral("password"));
    m_password->setAccessibleName(tr("Password"));
    m_password->setEchoMode(QLineEdit::Password);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *rows = new QFormLayout(this);
    rows->addRow(label);
    rows->addRow(tr("&Name:"), m_user);
    rows->addRow(tr("&Password:"), m_password);
    rows->addRow(buttons);
}

QString LoginDialog::user() const
{
    return m_user->text();
}

QString LoginDialog::password() const
{
    return m_password->text();
}

} // namespace vandrel
