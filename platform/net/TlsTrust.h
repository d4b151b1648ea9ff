#pragma once

#include <QList>
#include <QSslConfiguration>
#include <QSslError>
#include <QString>

namespace vandrel {

/// What a client of ours asks of TLS: version 1.2 or later and a certificate of the system's store. Where the
/// environment variable SSL_CERT_FILE names a file of PEM certificates, those are trusted beside the store.
/// Sessions can be resumed with the configuration of an earlier connection. Usable from any thread. The first call
/// loads the TLS library and the store; made on a worker, it keeps that time from the event loop.
QSslConfiguration clientTlsConfiguration();

/// Why the certificate shown for `host` was refused, as a sentence that names the host and the reasons.
QString certificateFailureText(const QString &host, const QList<QSslError> &errors);

} // namespace vandrel
