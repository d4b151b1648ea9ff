#pragma once

#include <QByteArray>

namespace vandrel {

/// What a client answers in a SASL login, in base64 as every line protocol sends it. User and password are UTF-8; NUL
/// may stand in neither.

/// The initial response of PLAIN (RFC 4616).
QByteArray saslPlainResponse(const QByteArray &user, const QByteArray &password);

/// The answer to a challenge of CRAM-MD5 (RFC 2195). `challenge` is in base64, as it came; blanks around it, and
/// octets that are no base64, are passed over.
QByteArray
saslCramMd5Response(const QByteArray &user, const QByteArray &password, const QByteArray &challenge);

} // namespace vandrel
