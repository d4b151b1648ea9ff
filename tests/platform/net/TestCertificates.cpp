#include "tests/platform/net/TestCertificates.h"

#include <QFile>
#include <QProcess>

namespace vandrel {

namespace {

const QString here = QStringLiteral("DNS:localhost,IP:127.0.0.1,IP:::1");
constexpr int longestRun = 30'000;

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

TestCertificates::TestCertificates()
{
    makeAuthority(QStringLiteral("ca"));
    makeAuthority(QStringLiteral("stranger"));
    makeSigned(QStringLiteral("good"), QStringLiteral("ca"), here, 2);
    makeSigned(QStringLiteral("other"), QStringLiteral("ca"), QStringLiteral("DNS:another.example.org"), 2);
    makeSigned(QStringLiteral("expired"), QStringLiteral("ca"), here, -1);
    makeSigned(QStringLiteral("unknown"), QStringLiteral("stranger"), here, 2);
    openssl({u"req"_qs, u"-x509"_qs, u"-newkey"_qs, u"ec"_qs, u"-pkeyopt"_qs, u"ec_paramgen_curve:P-256"_qs,
             u"-nodes"_qs, u"-days"_qs, u"2"_qs, u"-subj"_qs, u"/CN=localhost"_qs, u"-addext"_qs,
             u"subjectAltName="_qs + here, u"-keyout"_qs, path(u"self.key"_qs), u"-out"_qs,
             path(u"self.pem"_qs)});
    qputenv("SSL_CERT_FILE", QFile::encodeName(authorityFile()));
}

TestCertificates::~TestCertificates()
{
    qunsetenv("SSL_CERT_FILE");
}

QString TestCertificates::authorityFile() const
{
    return path(QStringLiteral("ca.pem"));
}

void TestCertificates::openssl(const QStringList &arguments)
{
    if (!m_problem.isEmpty())
        return;
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("openssl"), arguments);
    if (!process.waitForFinished(longestRun) || process.exitCode() != 0)
        m_problem = process.errorString() + QString::fromLocal8Bit(process.readAll());
}

void TestCertificates::makeAuthority(const QString &name)
{
    openssl({u"req"_qs, u"-x509"_qs, u"-newkey"_qs, u"ec"_qs, u"-pkeyopt"_qs, u"ec_paramgen_curve:P-256"_qs,
             u"-nodes"_qs, u"-days"_qs, u"2"_qs, u"-subj"_qs, u"/CN=Test authority "_qs + name, u"-addext"_qs,
             u"basicConstraints=critical,CA:TRUE"_qs, u"-keyout"_qs, path(name + u".key"_qs), u"-out"_qs,
             path(name + u".pem"_qs)});
}

void TestCertificates::makeSigned(const QString &name,
                                  const QString &authority,
                                  const QString &names,
                                  int days)
{
    QFile extensions(path(name + u".ext"_qs));
    if (extensions.open(QIODevice::WriteOnly))
        extensions.write("subjectAltName=" + names.toLatin1() + "\n");
    extensions.close();
    openssl({u"req"_qs, u"-newkey"_qs, u"ec"_qs, u"-pkeyopt"_qs, u"ec_paramgen_curve:P-256"_qs, u"-nodes"_qs,
             u"-subj"_qs, u"/CN=server"_qs, u"-keyout"_qs, path(name + u".key"_qs), u"-out"_qs,
             path(name + u".csr"_qs)});
    openssl({u"x509"_qs, u"-req"_qs, u"-in"_qs, path(name + u".csr"_qs), u"-CA"_qs,
             path(authority + u".pem"_qs), u"-CAkey"_qs, path(authority + u".key"_qs), u"-CAcreateserial"_qs,
             u"-days"_qs, QString::number(days), u"-extfile"_qs, extensions.fileName(), u"-out"_qs,
             path(name + u".pem"_qs)});
}

TestIdentity TestCertificates::identity(const QString &name) const
{
    const QString certificate = path(name + u".pem"_qs);
    const QString key = path(name + u".key"_qs);
    return {QSslCertificate(contents(certificate)), QSslKey(contents(key), QSsl::Ec), certificate, key};
}

} // namespace vandrel
