#pragma once

#include <optional>

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

namespace vandrel {

/// A login at an SMTP server (RFC 4954) by one of the mechanisms PLAIN (RFC 4616), LOGIN and CRAM-MD5 (RFC
/// 2195).
class SmtpLogin
{
public:
    SmtpLogin(const QString &user, const QString &password);

    /// Chooses a mechanism of those offered and begins anew. `mayTellPassword` says whether the connection is
    /// one that a password may travel on; where it may not, only CRAM-MD5 remains. False when nothing
    /// remains.
    bool choose(const QByteArrayList &offered, bool mayTellPassword);
    /// The AUTH command, with the first answer where the mechanism has one.
    QByteArray command() const;
    /// The line that answers the server's challenge (the text of a 334 reply); nothing when the mechanism
    /// expects none, and the exchange is to be cancelled.
    std::optional<QByteArray> answer(const QByteArray &challenge);

    /// `text` with every trace of the login replaced, for what a person sees.
    QString withoutLogin(QString text) const;

private:
    enum class Mechanism { Plain, Login, CramMd5 };

    QByteArray m_user;
    QByteArray m_password;
    Mechanism m_mechanism = Mechanism::Plain;
    int m_answers = 0;
};

} // namespace vandrel
