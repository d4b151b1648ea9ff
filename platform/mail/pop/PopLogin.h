#pragma once

#include <QByteArray>
#include <QString>

#include "platform/mail/pop/PopReply.h"

namespace vandrel {

/// The ways to log in: SASL (RFC 4616, 2195; LOGIN as commonly spoken) and RFC 1939's own.
enum class PopLogin {
    /// The server offers none that is known here.
    None,
    Plain,
    Login,
    CramMd5,
    Apop,
    UserAndPass,
};

/// Chooses one way, and only one: a server that refuses it is not offered a weaker one. On a connection that is not
/// encrypted those come first that do not send the password; on an encrypted one those that every server stores
/// passwords for.
PopLogin chooseLogin(const PopCapabilities &offered, bool encrypted, bool stamped);

/// The digest that APOP sends for a greeting's time stamp.
QByteArray apopDigest(const QByteArray &stamp, const QByteArray &password);

/// What is wrong with a user or a password that no command could carry; empty when both can be sent. Names neither.
QString loginProblem(const QString &user, const QString &password);

} // namespace vandrel
