#include "platform/mail/smtp/SmtpLogin.h"

#include <QRegularExpression>

#include "platform/net/SaslResponses.h"

namespace vandrel {

namespace {

QRegularExpression wholeWord(const QString &word)
{
    return QRegularExpression(QStringLiteral("(?<!\\w)%1(?!\\w)").arg(QRegularExpression::escape(word)),
                              QRegularExpression::UseUnicodePropertiesOption);
}

} // namespace

SmtpLogin::SmtpLogin(const QString &user, const QString &password)
    : m_user(user.toUtf8()), m_password(password.toUtf8())
{ }

bool SmtpLogin::choose(const QByteArrayList &offered, bool mayTellPassword)
{
    m_answers = 0;
    if (mayTellPassword && offered.contains("PLAIN"))
        m_mechanism = Mechanism::Plain;
    else if (mayTellPassword && offered.contains("LOGIN"))
        m_mechanism = Mechanism::Login;
    else if (offered.contains("CRAM-MD5"))
        m_mechanism = Mechanism::CramMd5;
    else
        return false;
    return true;
}

QByteArray SmtpLogin::command() const
{
    switch (m_mechanism) {
    case Mechanism::Login:
        return QByteArrayLiteral("AUTH LOGIN");
    case Mechanism::CramMd5:
        return QByteArrayLiteral("AUTH CRAM-MD5");
    case Mechanism::Plain:
        break;
    }
    return "AUTH PLAIN " + saslPlainResponse(m_user, m_password);
}

// LOGIN has no standard beyond its use: user, then password, whatever the server's prompts say.
std::optional<QByteArray> SmtpLogin::answer(const QByteArray &challenge)
{
    const int answer = m_answers++;
    if (m_mechanism == Mechanism::Login && answer < 2)
        return (answer == 0 ? m_user : m_password).toBase64();
    if (m_mechanism == Mechanism::CramMd5 && answer == 0)
        return saslCramMd5Response(m_user, m_password, challenge);
    return {};
}

// A password hides wherever it stands; a short one, and a user's name, where it stands as a word, lest the
// rest of the text became unreadable.
QString SmtpLogin::withoutLogin(QString text) const
{
    for (const QByteArray &secret : {saslPlainResponse(m_user, m_password), m_password.toBase64(),
                                     m_user.toBase64(), m_password, m_user}) {
        const QString shown = QString::fromUtf8(secret);
        if (shown.size() > 3 && secret != m_user)
            text.replace(shown, QStringLiteral("***"));
        else if (!shown.isEmpty())
            text.replace(wholeWord(shown), QStringLiteral("***"));
    }
    return text;
}

} // namespace vandrel
