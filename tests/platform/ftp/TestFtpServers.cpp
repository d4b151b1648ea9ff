// The FTP control against real servers: one of a Python library, and vsftpd and proftpd where they are installed.

#include <QFile>
#include <QTest>

#include "platform/ftp/FtpRequest.h"
#include "tests/platform/ftp/FtpClientTest.h"
#include "tests/platform/ftp/FtpServers.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

namespace {

constexpr int megabyte = 1024 * 1024;

// No two of its pieces are alike, so that nothing can be lost, doubled or exchanged unseen.
QByteArray octetsOf(qsizetype size)
{
    QByteArray octets(size, Qt::Uninitialized);
    quint32 state = 1;
    for (char &octet : octets) {
        state = state * 1664525U + 1013904223U;
        octet = static_cast<char>(state >> 24U);
    }
    return octets;
}

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestFtpServers : public FtpClientTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void library_data();
    void library();
    void libraryEncrypted();
    void everyNameSurvives();
    void textTransfersConvertLineEnds();
    void badCertificatesAreRefused_data();
    void badCertificatesAreRefused();

    void vsftpd_data();
    void vsftpd();
    void vsftpdThatWantsEveryEndAnswered_data();
    void vsftpdThatWantsEveryEndAnswered();
    void proftpd_data();
    void proftpd();
    void proftpdOverIPv6();
    void smallUploadsAreWhole();
    void abortsLeaveAUsableSession_data();
    void abortsLeaveAUsableSession();

private:
    /// Every operation there is, with files of that size, in a new folder that is removed in the end.
    void wholeSession(const FtpServer &server, qsizetype size);
    QStringList withTls(const TestIdentity &identity) const;

    std::unique_ptr<TestCertificates> m_certificates;
};

void TestFtpServers::initTestCase()
{
    m_certificates = std::make_unique<TestCertificates>();
    QVERIFY2(m_certificates->isUsable(), qPrintable(m_certificates->problem()));
}

void TestFtpServers::cleanupTestCase()
{
    m_certificates.reset();
}

QStringList TestFtpServers::withTls(const TestIdentity &identity) const
{
    return {u"--tls"_s, u"--cert"_s, identity.certificateFile, u"--key"_s, identity.keyFile};
}

void TestFtpServers::wholeSession(const FtpServer &server, qsizetype size)
{
    const QByteArray octets = octetsOf(size);
    put(u"up.bin"_s, octets);
    m_control->setReportDirectoryNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_events.size(), 1, patience);
    const QString home = m_events.takeFirst();
    const QString folder = (home.endsWith(u'/') ? home : home + u'/') + u"a folder"_s;

    m_control->setDirectoryName(u"a folder"_s);
    m_control->setCreateDirectoryNow(true);
    m_control->setDirectoryPath(u"a folder"_s);
    m_control->setChangeDirectoryNow(true);
    upload(u"up.bin"_s, u"first.bin"_s);
    m_control->setNewRemoteFileName(u"second.bin"_s);
    m_control->setRenameNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(
        m_events, QStringList({u"DirectoryCreated"_s, folder, u"Uploaded"_s, u"FileRenamed"_s}), patience);
    QVERIFY(contentsOf(server.root() + u"/a folder/second.bin"_s) == octets);

    const QString list = listing();
    QVERIFY2(list.startsWith(u"second.bin  /File "_s), qPrintable(list + errorText()));
    QVERIFY2(list.contains(QLocale(QLocale::English).toString(size)), qPrintable(list));
    QCOMPARE(list.count(u"\r\n"_s), 1);

    m_events.clear();
    download(u"second.bin"_s, u"down.bin"_s);
    m_control->setDeleteNow(true);
    m_control->setDirectoryPath(u".."_s);
    m_control->setChangeDirectoryNow(true);
    m_control->setRemoveDirectoryNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(
        m_events, QStringList({u"Downloaded"_s, u"FileDeleted"_s, home, u"DirectoryRemoved"_s}), patience);
    QVERIFY(contents(u"down.bin"_s) == octets);
    QVERIFY(QDir(server.root()).isEmpty());
    QCOMPARE(localFiles(), QStringList({u"down.bin"_s, u"up.bin"_s}));
}

void TestFtpServers::library_data()
{
    QTest::addColumn<QStringList>("options");
    const QString without = u"--without"_s;
    QTest::newRow("with everything") << QStringList();
    QTest::newRow("without the machine's listing") << QStringList{without, u"MLSD"_s, u"MLST"_s};
    QTest::newRow("without the extended passive mode") << QStringList{without, u"EPSV"_s};
    QTest::newRow("without passive modes") << QStringList{without, u"EPSV"_s, u"PASV"_s};
}

void TestFtpServers::library()
{
    QFETCH(QStringList, options);
    FtpServer server;
    QVERIFY(server.startLibrary(options));
    QVERIFY(connectTo(server.address()));
    wholeSession(server, megabyte);
}

void TestFtpServers::libraryEncrypted()
{
    FtpServer server;
    QVERIFY(server.startLibrary(withTls(m_certificates->good())));
    QVERIFY(connectTo(server.address()));
    wholeSession(server, 3 * megabyte + 1);
}

void TestFtpServers::everyNameSurvives()
{
    FtpServer server;
    const QStringList names{u" lead"_s, u"trail "_s, u"-rf"_s,        u"été €"_s,
                            u"a  b"_s,  u"q\"q"_s,   u"back\\slash"_s};
    for (const QString &name : names) {
        QFile file(server.root() + u'/' + name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("x");
    }
    QVERIFY(server.startLibrary());
    QVERIFY(connectTo(server.address()));
    const QStringList lines = listing().split(u"\r\n"_s, Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), names.size());
    m_events.clear();
    for (const QString &line : lines) {
        m_control->setRemoteFileName(line.left(line.indexOf(u'/') - 2));
        m_control->setDeleteNow(true);
    }
    QTRY_COMPARE_WITH_TIMEOUT(m_events.count(u"FileDeleted"_s), names.size(), patience);
    QVERIFY(QDir(server.root()).isEmpty());
}

void TestFtpServers::textTransfersConvertLineEnds()
{
    FtpServer server;
    QVERIFY(server.startLibrary());
    QVERIFY(connectTo(server.address()));
    put(u"up.txt"_s, "one\ntwo\r\nthree");
    m_control->setTransferType(u"ascii"_s);
    upload(u"up.txt"_s, u"r.txt"_s);
    download(u"r.txt"_s, u"down.txt"_s);
    QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({u"Uploaded"_s, u"Downloaded"_s}), patience);
    QCOMPARE(contents(u"down.txt"_s), QByteArray("one\ntwo\nthree"));
}

void TestFtpServers::badCertificatesAreRefused_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("reason");
    QTest::newRow("signed by itself") << u"self"_s << u"it is signed by nobody but itself"_s;
    QTest::newRow("for another name") << u"other"_s << u"it was made out to another.example.org"_s;
    QTest::newRow("expired") << u"expired"_s << u"it expired on"_s;
    QTest::newRow("by an unknown authority")
        << u"unknown"_s << u"is not among the authorities that this computer trusts"_s;
}

void TestFtpServers::badCertificatesAreRefused()
{
    QFETCH(QString, kind);
    QFETCH(QString, reason);
    const TestIdentity identity = kind == u"self"_s ? m_certificates->selfSigned()
        : kind == u"other"_s                        ? m_certificates->otherName()
        : kind == u"expired"_s                      ? m_certificates->expired()
                                                    : m_certificates->unknownAuthority();
    FtpServer server;
    QVERIFY(server.startLibrary(withTls(identity)));
    m_control->setServerAddress(server.address());
    m_control->setUserName(u"vandrel"_s);
    m_control->setConnectNow(true);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::Encryption));
    QVERIFY2(errorText().contains(reason), qPrintable(errorText()));
    QCOMPARE(m_events, QStringList({u"Error 1005"_s}));
}

void TestFtpServers::vsftpd_data()
{
    QTest::addColumn<QString>("version");
    QTest::newRow("TLS 1.2") << u"TLSv1.2"_s;
    QTest::newRow("TLS 1.3") << u"TLSv1.3"_s;
}

void TestFtpServers::vsftpd()
{
    if (!FtpServer::hasVsftpd())
        QSKIP("vsftpd is not installed");
    QFETCH(QString, version);
    FtpServer server;
    server.limitTls(version);
    QVERIFY(server.startVsftpd(m_certificates->good()));
    QVERIFY(connectTo(server.address(), u"anonymous"_s));
    wholeSession(server, 50 * megabyte);
    // The upload, the listing and the download, each in the control connection's session.
    const QByteArray used = "SSL version: " + version.toLatin1();
    QCOMPARE(server.log().count(used), 4);
    QCOMPARE(server.log().count(", reused,"), 3);
    // Both sides have announced the end of the upload.
    QCOMPARE(server.log().count("SSL shutdown state is: 3"), 1);
}

void TestFtpServers::vsftpdThatWantsEveryEndAnswered_data()
{
    vsftpd_data();
}

// The toolkit does not answer the end of TLS that the peer announces, which such a server calls a failure of what it has
// sent. That is reported in its words, the local file is left as it was, and the session goes on.
void TestFtpServers::vsftpdThatWantsEveryEndAnswered()
{
    if (!FtpServer::hasVsftpd())
        QSKIP("vsftpd is not installed");
    QFETCH(QString, version);
    FtpServer server;
    server.limitTls(version);
    QVERIFY(server.startVsftpd(m_certificates->good(), {u"strict_ssl_write_shutdown=YES"_s}));
    QVERIFY(connectTo(server.address(), u"anonymous"_s));
    const QByteArray octets = octetsOf(megabyte);
    put(u"x"_s, octets);
    put(u"y"_s, "old");
    upload(u"x"_s, u"x"_s);
    download(u"x"_s, u"y"_s);
    QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({u"Uploaded"_s, u"Error 426"_s}), patience);
    QCOMPARE(errorText(), u"Failure writing network stream."_s);
    upload(u"x"_s, u"again"_s);
    QTRY_COMPARE_WITH_TIMEOUT(m_events.size(), 3, patience);
    QCOMPARE(m_events.last(), u"Uploaded"_s);
    QVERIFY(contentsOf(server.root() + u"/again"_s) == octets);
    QCOMPARE(contents(u"y"_s), QByteArray("old"));
}

void TestFtpServers::proftpd_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<bool>("implicit");
    QTest::newRow("TLS 1.2") << u"TLSv1.2"_s << false;
    QTest::newRow("TLS 1.3") << u"TLSv1.3"_s << false;
    QTest::newRow("encrypted from the start") << u"TLSv1.3"_s << true;
}

void TestFtpServers::proftpd()
{
    if (!FtpServer::hasProftpd())
        QSKIP("proftpd is not installed");
    QFETCH(QString, version);
    QFETCH(bool, implicit);
    FtpServer server;
    server.limitTls(version);
    const QStringList settings(implicit ? u"TLSOptions UseImplicitSSL"_s : QString());
    QVERIFY(server.startProftpd(m_certificates->good(), settings));
    QVERIFY(connectTo(implicit ? u"ftps://"_s + server.address() : server.address()));
    wholeSession(server, 50 * megabyte);
    QCOMPARE(server.log().count("client reused TLS session for data connection"), 3);
    QVERIFY(server.log().contains(version.toLatin1() + " connection accepted"));
}

void TestFtpServers::proftpdOverIPv6()
{
    if (!FtpServer::hasProftpd())
        QSKIP("proftpd is not installed");
    if (ServerProcess::freePort(QHostAddress::LocalHostIPv6) == 0)
        QSKIP("this machine has no IPv6");
    FtpServer server;
    QVERIFY(server.startProftpd(m_certificates->good(), {}, QHostAddress::LocalHostIPv6));
    QVERIFY(connectTo(server.address()));
    wholeSession(server, megabyte);
}

void TestFtpServers::smallUploadsAreWhole()
{
    if (!FtpServer::hasVsftpd())
        QSKIP("vsftpd is not installed");
    FtpServer server;
    QVERIFY(server.startVsftpd(m_certificates->good()));
    QVERIFY(connectTo(server.address(), u"anonymous"_s));
    // The shorter an upload is, the sooner it ends after the handshake, whose last messages may not be read yet.
    const QList<qsizetype> sizes{0, 1, 100, 16 * 1024, 300'000};
    for (const qsizetype size : sizes) {
        for (int i = 0; i < 4; ++i) {
            const QString name = u"%1.%2"_s.arg(size).arg(i);
            put(name, octetsOf(size));
            upload(name, name);
        }
    }
    QTRY_COMPARE_WITH_TIMEOUT(m_events.size(), 4 * sizes.size(), patience);
    QCOMPARE(m_events.count(u"Uploaded"_s), 4 * sizes.size());
    for (const QString &name : localFiles())
        QVERIFY2(contentsOf(server.root() + u'/' + name) == contents(name), qPrintable(name));
}

void TestFtpServers::abortsLeaveAUsableSession_data()
{
    QTest::addColumn<bool>("strict");
    QTest::addColumn<bool>("uploads");
    QTest::newRow("a download of the library's") << false << false;
    QTest::newRow("an upload to the library's") << false << true;
    QTest::newRow("an encrypted download of vsftpd's") << true << false;
    QTest::newRow("an encrypted upload to vsftpd") << true << true;
}

void TestFtpServers::abortsLeaveAUsableSession()
{
    QFETCH(bool, strict);
    QFETCH(bool, uploads);
    if (strict && !FtpServer::hasVsftpd())
        QSKIP("vsftpd is not installed");
    FtpServer server;
    const QByteArray octets = octetsOf(50 * megabyte);
    QFile remote(server.root() + u"/x"_s);
    QVERIFY(remote.open(QIODevice::WriteOnly));
    QCOMPARE(remote.write(octets), octets.size());
    remote.close();
    put(u"x"_s, uploads ? octets : QByteArray("old"));
    // As slow as that, no transfer is over before it is aborted.
    QVERIFY(strict ? server.startVsftpd(m_certificates->good())
                   : server.startLibrary({u"--rate"_s, QString::number(5 * megabyte)}));
    QVERIFY(connectTo(server.address(), strict ? u"anonymous"_s : u"vandrel"_s));
    QSignalSpy progress(m_control.get(), &FTPClient::TransferProgress);
    if (uploads)
        upload(u"x"_s, u"y"_s);
    else
        download(u"x"_s, u"x"_s);
    m_control->setListNow(true);
    QTRY_VERIFY_WITH_TIMEOUT(!progress.isEmpty(), patience);
    m_control->setAbortNow(true);
    m_control->setDirectoryName(u"after"_s);
    m_control->setCreateDirectoryNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({u"DirectoryCreated"_s}), patience);
    QVERIFY(contents(u"x"_s) == (uploads ? octets : QByteArray("old")));
    QCOMPARE(localFiles(), QStringList({u"x"_s}));
}

QTEST_GUILESS_MAIN(TestFtpServers)
#include "TestFtpServers.moc"
