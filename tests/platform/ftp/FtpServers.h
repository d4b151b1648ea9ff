#pragma once

#include <QHostAddress>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include "tests/platform/net/ServerProcess.h"
#include "tests/platform/net/TestCertificates.h"

namespace vandrel::test {

/// A real FTP server on loopback that serves one folder to "vandrel" with "s3cret". It ends with this object, which has
/// a temporary folder for all that it needs. Where the test is root's, the daemons are an ordinary user's.
class FtpServer
{
public:
    FtpServer();

    /// The Python library's, with the options of tests/servers/ftp_server.py.
    bool startLibrary(const QStringList &options = {});
    /// vsftpd, which takes no data connection that does not resume the control connection's TLS session, and no
    /// upload whose end TLS does not announce. It lets in the user "anonymous" alone.
    bool startVsftpd(const TestIdentity &identity, const QStringList &settings = {});
    /// proftpd, which wants the TLS session resumed as well. `settings` are lines of its configuration.
    bool startProftpd(const TestIdentity &identity,
                      const QStringList &settings = {},
                      const QHostAddress &address = QHostAddress::LocalHost);
    static bool hasVsftpd() { return !ServerProcess::installed(QStringLiteral("vsftpd")).isEmpty(); }
    static bool hasProftpd();

    /// The highest TLS version that the server knows, such as "TLSv1.2". Before it is started.
    void limitTls(const QString &version);

    /// The folder that it serves.
    QString root() const { return path(QStringLiteral("root")); }
    /// As it is typed to connect.
    QString address() const { return m_address; }
    /// What the server has written about its work.
    QByteArray log() const;

private:
    bool write(const QString &name, const QString &text) const;
    bool startAsOrdinaryUser(const QString &program,
                             const QStringList &arguments,
                             const QHostAddress &address,
                             quint16 port);
    QString copied(const QString &file) const;
    QString path(const QString &name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
    QString m_address;
    ServerProcess m_process;
};

} // namespace vandrel::test
