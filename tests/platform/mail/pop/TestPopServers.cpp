// The mailbox against real servers: one of a Python library, and Dovecot where it is installed.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include "tests/platform/mail/pop/PopRecorder.h"
#include "tests/platform/net/ServerProcess.h"
#include "tests/platform/net/TestCertificates.h"

using namespace vandrel;

namespace {

constexpr int longestWait = 60'000;
constexpr int messages = 3;

void writeFile(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), contents.size());
}

void writeMails(const QString &folder)
{
    QVERIFY(QDir().mkpath(folder));
    for (int i = 1; i <= messages; ++i) {
        writeFile(u"%1/%2.example:2,"_qs.arg(folder).arg(i),
                  "From: Joe Example <joe@example.org>\nSubject: Message " + QByteArray::number(i)
                      + "\n\n.a line with a dot\nThe text of message " + QByteArray::number(i) + ".\n");
    }
}

/// A server and the ports that it listens on.
struct PopServer {
    bool startTwisted(const TestIdentity &identity, const QString &mail, const QStringList &options)
    {
        const QString script
            = qEnvironmentVariable("VANDREL_SOURCE_DIR") + u"/tests/servers/pop3_server.py"_qs;
        const QStringList arguments{
            script,      u"--mail"_qs,    mail, u"--certificate"_qs, identity.certificateFile,
            u"--key"_qs, identity.keyFile};
        const QStringList words = process.startAndHear(u"/usr/bin/python3"_qs, arguments + options);
        if (words.size() != 3)
            return false;
        plainPort = words.at(1).toUShort();
        tlsPort = words.at(2).toUShort();
        return true;
    }

    ServerProcess process;
    quint16 plainPort = 0;
    quint16 tlsPort = 0;
};

} // namespace

class TestPopServers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void twisted_data();
    void twisted();
    void twistedRefusesTheLogin();
    void dovecot_data();
    void dovecot();

private:
    void wholeSession(PopRecorder &pop, const QString &server);
    void startDovecot(PopServer &server, const QTemporaryDir &folder);

    std::unique_ptr<TestCertificates> m_certificates;
};

void TestPopServers::initTestCase()
{
    m_certificates = std::make_unique<TestCertificates>();
    QVERIFY2(m_certificates->isUsable(), qPrintable(m_certificates->problem()));
}

void TestPopServers::cleanupTestCase()
{
    m_certificates.reset();
}

// Logs in, lists, fetches every message, deletes the second, disconnects.
void TestPopServers::wholeSession(PopRecorder &pop, const QString &server)
{
    pop.logIn(server);
    QTRY_VERIFY_WITH_TIMEOUT(pop.has(u"HasMail True"_qs) || !pop.errors.isEmpty(), longestWait);
    QVERIFY2(pop.errors.isEmpty(), qPrintable(pop.errors.join(u'\n')));
    QCOMPARE(pop.mailbox->MailCount(), std::int16_t(messages));

    pop.mailbox->setListNow(true);
    QTRY_VERIFY_WITH_TIMEOUT(pop.has(u"MailList"_qs), longestWait);
    QCOMPARE(pop.listing.count(u"\r\n"), messages);
    QVERIFY2(pop.listing.contains(u"Joe Example") && pop.listing.contains(u"Message 3"),
             qPrintable(pop.listing));

    for (int i = 1; i <= messages; ++i)
        pop.retrieve(i);
    QTRY_COMPARE_WITH_TIMEOUT(pop.mails.size(), messages, longestWait);
    for (int i = 1; i <= messages; ++i) {
        const QString &mail = pop.mails.at(i - 1);
        QVERIFY2(mail.contains(u"Subject: Message %1"_qs.arg(i)), qPrintable(mail));
        QVERIFY2(mail.contains(u"\r\n.a line with a dot\r\nThe text of message %1."_qs.arg(i)),
                 qPrintable(mail));
    }
    pop.remove(2);
    QTRY_VERIFY_WITH_TIMEOUT(pop.has(u"MailDeleted 2"_qs), longestWait);
    pop.mailbox->setDisconnectNow(true);
    QTRY_VERIFY_WITH_TIMEOUT(pop.has(u"Disconnected True"_qs), longestWait);
    QVERIFY2(pop.errors.isEmpty(), qPrintable(pop.errors.join(u'\n')));
    QVERIFY(!pop.shown().contains(u"s3cret"));
}

void TestPopServers::twisted_data()
{
    QTest::addColumn<bool>("implicit");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("command");
    const QString login = u"--login"_qs;
    const QString plain = u"--without-stls"_qs;
    QTest::newRow("plain, USER and PASS") << false << QStringList{plain} << QByteArray("PASS");
    QTest::newRow("plain, APOP") << false << QStringList{plain, login, u"apop"_qs} << QByteArray("APOP");
    QTest::newRow("plain, CRAM-MD5") << false << QStringList{plain, login, u"cram"_qs} << QByteArray("AUTH");
    QTest::newRow("STLS") << false << QStringList{} << QByteArray("STLS");
    QTest::newRow("encrypted from the start") << true << QStringList{} << QByteArray("PASS");
}

void TestPopServers::twisted()
{
    QFETCH(bool, implicit);
    QFETCH(QStringList, options);
    QFETCH(QByteArray, command);
    const QTemporaryDir folder;
    writeMails(folder.path());
    PopServer server;
    QVERIFY2(server.startTwisted(m_certificates->good(), folder.path(), options),
             "is python3-twisted installed?");
    PopRecorder pop;
    const QString address = implicit ? u"pop3s://localhost:%1"_qs.arg(server.tlsPort)
                                     : u"localhost:%1"_qs.arg(server.plainPort);
    wholeSession(pop, address);
    if (QTest::currentTestFailed())
        return;
    const bool encrypted = options.isEmpty();
    QCOMPARE(pop.hasStatus(u"Encrypted with TLS"_qs), encrypted);
    QCOMPARE(pop.hasStatus(u"not encrypted"_qs), !encrypted);
    QByteArray said;
    QTRY_VERIFY_WITH_TIMEOUT((said += server.process.said()).contains("deleted 2\n"), longestWait);
    QVERIFY2(said.contains("command " + command), said.constData());
    QCOMPARE(said.count("connection\n"), 1);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), messages - 1);
}

void TestPopServers::twistedRefusesTheLogin()
{
    const QTemporaryDir folder;
    writeMails(folder.path());
    PopServer server;
    QVERIFY(server.startTwisted(m_certificates->good(), folder.path(), {}));
    PopRecorder pop;
    pop.logIn(u"localhost:%1"_qs.arg(server.plainPort), u"vandrel"_qs, u"wrong"_qs);
    QTRY_VERIFY_WITH_TIMEOUT(pop.has(u"Disconnected True"_qs), longestWait);
    QCOMPARE(pop.events,
             (QStringList{u"Busy True"_qs, u"LoggedIn False"_qs, u"Busy False"_qs, u"Error True 1"_qs,
                          u"Disconnected True"_qs}));
    QVERIFY2(pop.errors.first().contains(u"refused the login"), qPrintable(pop.errors.first()));
}

void TestPopServers::startDovecot(PopServer &server, const QTemporaryDir &folder)
{
    const QString program = ServerProcess::installed(u"dovecot"_qs);
    if (program.isEmpty())
        QSKIP("Dovecot is not installed");
    if (!QFile::exists(u"/usr/lib/dovecot/pop3"_qs))
        QSKIP("Dovecot's POP3 server is not installed");
    // Dovecot drops its rights, which only root can.
    const QString mail = folder.filePath(u"mail"_qs);
    server.plainPort = ServerProcess::freePort();
    server.tlsPort = ServerProcess::freePort();
    const TestIdentity identity = m_certificates->good();
    writeMails(folder.filePath(u"mail/vandrel/cur"_qs));
    QVERIFY(QDir().mkpath(folder.filePath(u"mail/vandrel/new"_qs)));
    QVERIFY(QDir().mkpath(folder.filePath(u"mail/vandrel/tmp"_qs)));
    if (QProcess::execute(u"chown"_qs, {u"-R"_qs, u"65534:65534"_qs, mail}) != 0)
        QSKIP("only root can give Dovecot the user that it runs as");
    QVERIFY(QFile::setPermissions(folder.path(),
                                  QFile::permissions(folder.path()) | QFile::ReadOther | QFile::ExeOther));
    writeFile(folder.filePath(u"users"_qs), "vandrel:{PLAIN}s3cret\n");
    const QString configuration = uR"(base_dir=%1/run
state_dir=%1/run
log_path=%1/log
protocols=pop3
listen=127.0.0.1
ssl=yes
ssl_cert=<%2
ssl_key=<%3
disable_plaintext_auth=no
auth_mechanisms=plain login
first_valid_uid=1
mail_location=maildir:%1/mail/%u
service pop3-login {
  inet_listener pop3 {
    port=%4
  }
  inet_listener pop3s {
    port=%5
    ssl=yes
  }
}
passdb {
  driver=passwd-file
  args=%1/users
}
userdb {
  driver=static
  args=uid=65534 gid=65534 home=%1/mail/%u
}
)"_qs.arg(folder.path(), identity.certificateFile, identity.keyFile)
                                      .arg(server.plainPort)
                                      .arg(server.tlsPort);
    writeFile(folder.filePath(u"dovecot.conf"_qs), configuration.toUtf8());
    QVERIFY(server.process.startAndKnock(program, {u"-F"_qs, u"-c"_qs, folder.filePath(u"dovecot.conf"_qs)},
                                         QHostAddress::LocalHost, server.plainPort));
}

void TestPopServers::dovecot_data()
{
    QTest::addColumn<bool>("implicit");
    QTest::newRow("STLS") << false;
    QTest::newRow("encrypted from the start") << true;
}

void TestPopServers::dovecot()
{
    QFETCH(bool, implicit);
    const QTemporaryDir folder;
    PopServer server;
    startDovecot(server, folder);
    if (QTest::currentTestFailed() || server.plainPort == 0)
        return;
    PopRecorder pop;
    wholeSession(pop,
                 implicit ? u"pop3s://localhost:%1"_qs.arg(server.tlsPort)
                          : u"localhost:%1"_qs.arg(server.plainPort));
    QVERIFY(pop.hasStatus(u"Encrypted with TLS"_qs));
    QTRY_COMPARE_WITH_TIMEOUT(QDir(folder.filePath(u"mail/vandrel/cur"_qs)).entryList(QDir::Files).size(),
                              messages - 1, longestWait);
}

QTEST_GUILESS_MAIN(TestPopServers)
#include "TestPopServers.moc"
