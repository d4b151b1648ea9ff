#pragma once

#include <QSslCertificate>
#include <QSslKey>
#include <QString>
#include <QTemporaryDir>

namespace vandrel {

/// A certificate with its key, as a server shows it.
struct TestIdentity {
    QSslCertificate certificate;
    QSslKey key;
    /// The files in PEM, for servers that are programs of their own.
    QString certificateFile;
    QString keyFile;
};

/// A certificate authority of the test's own and what it has signed, made by openssl in a temporary folder. While it
/// exists, SSL_CERT_FILE names the authority, so that the connections of this process trust it.
class TestCertificates
{
public:
    TestCertificates();
    ~TestCertificates();
    TestCertificates(const TestCertificates &) = delete;
    TestCertificates &operator=(const TestCertificates &) = delete;

    /// False where openssl is missing or failed; `problem` tells.
    bool isUsable() const { return m_problem.isEmpty(); }
    QString problem() const { return m_problem; }
    QString authorityFile() const;

    /// For localhost, 127.0.0.1 and ::1.
    TestIdentity good() const { return identity(QStringLiteral("good")); }
    /// For another.example.org.
    TestIdentity otherName() const { return identity(QStringLiteral("other")); }
    /// For localhost, ended yesterday.
    TestIdentity expired() const { return identity(QStringLiteral("expired")); }
    /// For localhost, signed by itself.
    TestIdentity selfSigned() const { return identity(QStringLiteral("self")); }
    /// For localhost, signed by an authority that nobody trusts.
    TestIdentity unknownAuthority() const { return identity(QStringLiteral("unknown")); }

private:
    QString path(const QString &name) const { return m_folder.filePath(name); }
    void openssl(const QStringList &arguments);
    void makeAuthority(const QString &name);
    void makeSigned(const QString &name, const QString &authority, const QString &names, int days);
    TestIdentity identity(const QString &name) const;

    QTemporaryDir m_folder;
    QString m_problem;
};

} // namespace vandrel
