#include "platform/net/TlsTrust.h"

#include <memory>

#include <QCoreApplication>
#include <QFutureWatcher>
#include <QLocale>
#include <QMutex>
#include <QPromise>
#include <QSslCertificate>
#include <QThreadPool>

namespace vandrel {

namespace {

QString trustText(const char *text)
{
    return QCoreApplication::translate("TlsTrust", text);
}

QString firstOf(const QStringList &texts)
{
    return texts.isEmpty() ? trustText("an unnamed one") : texts.first();
}

QString namesIn(const QSslCertificate &certificate)
{
    QStringList names = certificate.subjectAlternativeNames().values();
    if (names.isEmpty())
        names = certificate.subjectInfo(QSslCertificate::CommonName);
    constexpr qsizetype most = 5;
    return names.isEmpty() ? trustText("nobody") : names.mid(0, most).join(QStringLiteral(", "));
}

QString dayOf(const QDateTime &time)
{
    return QLocale::c().toString(time.date(), QStringLiteral("d MMMM yyyy"));
}

QString reasonOf(const QSslError &error)
{
    const QSslCertificate certificate = error.certificate();
    switch (error.error()) {
    case QSslError::CertificateExpired:
        return trustText("it expired on %1").arg(dayOf(certificate.expiryDate()));
    case QSslError::CertificateNotYetValid:
        return trustText("it is not valid before %1").arg(dayOf(certificate.effectiveDate()));
    case QSslError::HostNameMismatch:
        return trustText("it was made out to %1").arg(namesIn(certificate));
    case QSslError::SelfSignedCertificate:
        return trustText("it is signed by nobody but itself");
    case QSslError::SelfSignedCertificateInChain:
    case QSslError::UnableToGetIssuerCertificate:
    case QSslError::UnableToGetLocalIssuerCertificate:
    case QSslError::UnableToVerifyFirstCertificate:
        return trustText("its issuer \"%1\" is not among the authorities that this computer trusts")
            .arg(firstOf(certificate.issuerInfo(QSslCertificate::CommonName)));
    case QSslError::CertificateRevoked:
        return trustText("it was revoked");
    case QSslError::NoPeerCertificate:
        return trustText("the server showed none");
    default:
        return error.errorString();
    }
}

// Naming authorities ends the store's look-up on demand, so the whole store is named with them. Reading it takes long
// enough to be done once.
QList<QSslCertificate> storeWith(const QString &added)
{
    static QMutex mutex;
    static QString file;
    static QList<QSslCertificate> store;
    const QMutexLocker lock(&mutex);
    if (file != added) {
        file = added;
        store = QSslConfiguration::systemCaCertificates() + QSslCertificate::fromPath(added);
    }
    return store;
}

QFuture<void> beginLoading()
{
    const auto promise = std::make_shared<QPromise<void>>();
    promise->start();
    QThreadPool::globalInstance()->start([promise] {
        static_cast<void>(clientTlsConfiguration());
        promise->finish();
    });
    return promise->future();
}

const QFuture<void> &loading()
{
    static const QFuture<void> begun = beginLoading();
    return begun;
}

} // namespace

void loadTls()
{
    static_cast<void>(loading());
}

void whenTlsIsLoaded(QObject *context, const std::function<void()> &ready)
{
    const QFuture<void> &loaded = loading();
    if (loaded.isFinished()) {
        ready();
        return;
    }
    auto *watcher = new QFutureWatcher<void>(context);
    QObject::connect(watcher, &QFutureWatcher<void>::finished, context, [watcher, ready] {
        watcher->deleteLater();
        ready();
    });
    watcher->setFuture(loaded);
}

QSslConfiguration clientTlsConfiguration()
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setProtocol(QSsl::TlsV1_2OrLater);
    configuration.setPeerVerifyMode(QSslSocket::VerifyPeer);
    // Tickets stay with the configuration, so that a second connection can resume the session of the first.
    configuration.setSslOption(QSsl::SslOptionDisableSessionPersistence, false);
    configuration.setSslOption(QSsl::SslOptionDisableSessionSharing, false);
    configuration.setSslOption(QSsl::SslOptionDisableSessionTickets, false);
    const QString added = qEnvironmentVariable("SSL_CERT_FILE");
    if (!added.isEmpty())
        configuration.setCaCertificates(storeWith(added));
    return configuration;
}

QString certificateFailureText(const QString &host, const QList<QSslError> &errors)
{
    QStringList reasons;
    for (const QSslError &error : errors) {
        const QString reason = reasonOf(error);
        if (!reasons.contains(reason))
            reasons += reason;
    }
    return trustText("The certificate of \"%1\" is not accepted: %2.")
        .arg(host, reasons.join(trustText("; ")));
}

} // namespace vandrel
