#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include "controls/DriveView.h"
#include "platform/mail/smtp/SmtpSender.h"
#include "tests/platform/mail/smtp/SmtpEvents.h"
#include "tests/platform/net/ServerProcess.h"
#include "tests/platform/net/TestCertificates.h"

using namespace vandrel;

namespace {

constexpr int longestSend = 60'000;

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString sourceFile(const QString &name)
{
    return qEnvironmentVariable("VANDREL_SOURCE_DIR") + u'/' + name;
}

} // namespace

// The control against a real server, which stores what it gets.
class TestSmtpServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void aMessageArrivesWhole_data();
    void aMessageArrivesWhole();
    void theEnvelopeArrives();
    void logins();
    void wrongPasswords();
    void refusedRecipients();
    void faultsAtTheEnd_data();
    void faultsAtTheEnd();
    void tooLargeForTheServer();

private:
    bool startServer(const QStringList &options = {});
    QStringList withTls(const QString &kind) const;
    void sendAndWait(const QString &server);
    QString here() const { return u"127.0.0.1:%1"_qs.arg(m_port); }
    QString stored(const QString &name) const { return m_folder->filePath(name); }
    QJsonObject envelope() const;
    QJsonObject message() const;
    void writeFile(const QString &name, const QByteArray &contents) const;

    std::unique_ptr<TestCertificates> m_certificates;
    std::shared_ptr<DriveView> m_drives = std::make_shared<DriveView>();
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ServerProcess> m_server;
    int m_port = 0;
    std::unique_ptr<SmtpSender> m_smtp;
    std::unique_ptr<SmtpEvents> m_events;
};

void TestSmtpServer::initTestCase()
{
    if (QProcess::execute(u"/usr/bin/python3"_qs, {u"-c"_qs, u"import aiosmtpd"_qs}) != 0)
        QSKIP("the mail server for tests (python3-aiosmtpd) is not installed");
    m_certificates = std::make_unique<TestCertificates>();
    QVERIFY2(m_certificates->isUsable(), qPrintable(m_certificates->problem()));
}

void TestSmtpServer::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_drives->setDrive('c', QFile::encodeName(m_folder->path()));
    m_smtp = std::make_unique<SmtpSender>(m_drives);
    m_events = std::make_unique<SmtpEvents>(*m_smtp);
    m_smtp->setFromAddress(u"Me <me@example.org>"_qs);
    m_smtp->setToAddress(u"you@example.org"_qs);
    m_smtp->setMessageSubject(u"Grüße"_qs);
    m_smtp->setMessageBody(u".\r\n..\r\nFrom here\r\nGrüße\r\n"_qs);
}

void TestSmtpServer::cleanup()
{
    m_smtp.reset();
    m_events.reset();
    // It goes when its input ends, so that no test leaves one behind whatever becomes of it.
    if (m_server)
        QVERIFY(m_server->end());
    m_server.reset();
}

bool TestSmtpServer::startServer(const QStringList &options)
{
    m_server = std::make_unique<ServerProcess>();
    const QStringList words = m_server->startAndHear(
        u"/usr/bin/python3"_qs,
        QStringList{sourceFile(u"tests/servers/smtp_server.py"_qs), m_folder->path()} + options);
    m_port = words.value(1).toInt();
    return m_port > 0;
}

QStringList TestSmtpServer::withTls(const QString &kind) const
{
    const TestIdentity identity = m_certificates->good();
    return {u"--tls"_qs, kind, u"--cert"_qs, identity.certificateFile, u"--key"_qs, identity.keyFile};
}

void TestSmtpServer::sendAndWait(const QString &server)
{
    m_smtp->setServerDomain(server);
    m_smtp->setSendNow(true);
    QTRY_VERIFY_WITH_TIMEOUT(m_events->haveEnded(), longestSend);
}

QJsonObject TestSmtpServer::envelope() const
{
    return QJsonDocument::fromJson(contentsOf(stored(u"1.json"_qs))).object();
}

// What an independent parser reads in the stored message.
QJsonObject TestSmtpServer::message() const
{
    QProcess python;
    python.start(u"/usr/bin/python3"_qs,
                 {sourceFile(u"tests/platform/mail/compose/read_mail.py"_qs), stored(u"1.eml"_qs)});
    if (!python.waitForFinished(longestSend))
        return {};
    return QJsonDocument::fromJson(python.readAllStandardOutput()).object();
}

void TestSmtpServer::writeFile(const QString &name, const QByteArray &contents) const
{
    QFile file(stored(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), contents.size());
}

void TestSmtpServer::aMessageArrivesWhole_data()
{
    QTest::addColumn<QString>("tls");
    QTest::newRow("plain") << QString();
    QTest::newRow("STARTTLS") << u"starttls"_qs;
    QTest::newRow("encrypted from the start") << u"implicit"_qs;
}

void TestSmtpServer::aMessageArrivesWhole()
{
    QFETCH(QString, tls);
    QVERIFY(startServer(tls.isEmpty() ? QStringList() : withTls(tls)));
    QByteArray large(3'000'000, Qt::Uninitialized);
    for (qsizetype i = 0; i < large.size(); ++i)
        large[i] = static_cast<char>((i * i) >> 7);
    writeFile(u"größer.bin"_qs, large);
    writeFile(u"small.txt"_qs, ".\r\n.\r\n");
    m_smtp->setAttachmentList(u"c:\\größer.bin;c:\\small.txt;"_qs);
    sendAndWait(tls == u"implicit"_qs ? u"smtps://"_qs + here() : here());
    QVERIFY2(m_events->error().isEmpty(), qPrintable(m_events->error()));
    QCOMPARE(m_events->sent(), u"250 2.0.0 Stored as 1"_qs);
    QCOMPARE(envelope()[u"encrypted"].toBool(), !tls.isEmpty());
    const QJsonObject found = message();
    QCOMPARE(found[u"subject"].toString(), u"Grüße"_qs);
    QCOMPARE(found[u"text"].toString().replace(u"\r\n"_qs, u"\n"_qs), u".\n..\nFrom here\nGrüße\n"_qs);
    const QJsonArray files = found[u"attachments"].toArray();
    QCOMPARE(files.size(), 2);
    QCOMPARE(files[0][u"name"].toString(), u"größer.bin"_qs);
    QVERIFY(QByteArray::fromBase64(files[0][u"octets"].toString().toLatin1()) == large);
    QCOMPARE(QByteArray::fromBase64(files[1][u"octets"].toString().toLatin1()), QByteArray(".\r\n.\r\n"));
}

void TestSmtpServer::theEnvelopeArrives()
{
    QVERIFY(startServer());
    m_smtp->setToAddress(u"a@x.org; \"Lee, Bob\" <b@x.org>, jörg@x.org"_qs);
    m_smtp->setCcAddress(u"c@x.org, a@X.org"_qs);
    sendAndWait(here());
    QVERIFY2(m_events->error().isEmpty(), qPrintable(m_events->error()));
    const QJsonObject found = envelope();
    QCOMPARE(found[u"from"].toString(), u"me@example.org"_qs);
    QCOMPARE(found[u"to"].toArray(),
             (QJsonArray{u"a@x.org"_qs, u"b@x.org"_qs, u"jörg@x.org"_qs, u"c@x.org"_qs}));
    const QJsonArray options = found[u"options"].toArray();
    QVERIFY(options.contains(u"SMTPUTF8"_qs) && options.contains(u"BODY=8BITMIME"_qs));
    QCOMPARE(found[u"hello"].toString(), u"[127.0.0.1]"_qs);
}

void TestSmtpServer::logins()
{
    QVERIFY(startServer(withTls(u"starttls"_qs) + QStringList{u"--login"_qs, u"me@x:s3 cret"_qs}));
    sendAndWait(u"me%40x:s3%20cret@"_qs + here());
    QVERIFY2(m_events->error().isEmpty(), qPrintable(m_events->error()));
    QCOMPARE(envelope()[u"login"].toBool(), true);
    QVERIFY(!m_events->all().join(u' ').contains(u"cret"));
}

void TestSmtpServer::wrongPasswords()
{
    QVERIFY(startServer(withTls(u"starttls"_qs) + QStringList{u"--login"_qs, u"me:right"_qs}));
    sendAndWait(u"me:wrong@"_qs + here());
    QVERIFY2(m_events->error().contains(u"refuses the login: 535"), qPrintable(m_events->error()));
    QVERIFY(!QFile::exists(stored(u"1.eml"_qs)));
}

void TestSmtpServer::refusedRecipients()
{
    QVERIFY(startServer());
    m_smtp->setToAddress(u"you@x.org, refused550@x.org"_qs);
    m_smtp->setCcAddress(u"refused450@x.org"_qs);
    sendAndWait(here());
    const QString error = m_events->error();
    QVERIFY2(error.contains(u"refused550@x.org: 550 5.1.1 No such user"), qPrintable(error));
    QVERIFY2(error.contains(u"refused450@x.org: 450 4.2.0 Greylisted"), qPrintable(error));
    QVERIFY(!QFile::exists(stored(u"1.eml"_qs)));
}

void TestSmtpServer::faultsAtTheEnd_data()
{
    QTest::addColumn<QString>("recipient");
    QTest::addColumn<QString>("named");
    QTest::newRow("refused") << u"toolarge@x.org"_qs << u"552 5.3.4 Message too big"_qs;
    QTest::newRow("cut") << u"drop@x.org"_qs << u"unknown whether it delivers"_qs;
    QTest::newRow("slow") << u"delay@x.org"_qs << QString();
}

void TestSmtpServer::faultsAtTheEnd()
{
    QFETCH(QString, recipient);
    QFETCH(QString, named);
    QVERIFY(startServer());
    m_smtp->setToAddress(recipient);
    sendAndWait(here());
    QVERIFY2(m_events->error().contains(named), qPrintable(m_events->error()));
    QCOMPARE(m_events->error().isEmpty(), named.isEmpty());
    QCOMPARE(QFile::exists(stored(u"1.eml"_qs)), named.isEmpty());
}

void TestSmtpServer::tooLargeForTheServer()
{
    QVERIFY(startServer({u"--size"_qs, u"100000"_qs}));
    writeFile(u"large.bin"_qs, QByteArray(100'000, 'x'));
    m_smtp->setAttachmentList(u"c:\\large.bin;"_qs);
    sendAndWait(here());
    QVERIFY2(m_events->error().contains(u"at most 100.0 kB"), qPrintable(m_events->error()));
    QVERIFY(!QFile::exists(stored(u"1.eml"_qs)));
}

QTEST_GUILESS_MAIN(TestSmtpServer)

#include "TestSmtpServer.moc"
