#pragma once

#include <functional>

#include <QList>
#include <QObject>
#include <QSslConfiguration>
#include <QSslError>
#include <QString>

namespace vandrel {

/// What a client of ours asks of TLS: version 1.2 or later and a certificate of the system's store. Where the
/// environment variable SSL_CERT_FILE names a file of PEM certificates, those are trusted beside the store.
/// Sessions can be resumed with the configuration of an earlier connection. Usable from any thread. The first call
/// loads the TLS library and the store, which may take some 100 ms.
QSslConfiguration clientTlsConfiguration();

/// Begins to load the TLS library and the store, on a thread of its own, so that the first connection need not wait for
/// them. To be called by who will connect sooner or later; once is enough.
void loadTls();

/// Calls `ready` once clientTlsConfiguration() takes no time any more: the library and the store are loaded on a thread
/// of its own. Right here where they are loaded already, else from the event loop, unless `context` is gone by then.
void whenTlsIsLoaded(QObject *context, const std::function<void()> &ready);

/// Why the certificate shown for `host` was refused, as a sentence that names the host and the reasons.
QString certificateFailureText(const QString &host, const QList<QSslError> &errors);

} // namespace vandrel
