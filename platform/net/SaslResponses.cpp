#include "platform/net/SaslResponses.h"

#include <QCryptographicHash>
#include <QMessageAuthenticationCode>

namespace vandrel {

QByteArray saslPlainResponse(const QByteArray &user, const QByteArray &password)
{
    return ('\0' + user + '\0' + password).toBase64();
}

QByteArray
saslCramMd5Response(const QByteArray &user, const QByteArray &password, const QByteArray &challenge)
{
    const QByteArray digest = QMessageAuthenticationCode::hash(QByteArray::fromBase64(challenge.trimmed()),
                                                               password, QCryptographicHash::Md5);
    return (user + ' ' + digest.toHex()).toBase64();
}

} // namespace vandrel
