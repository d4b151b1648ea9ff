#include <QFile>
#include <QNetworkInterface>
#include <QPointer>
#include <QTemporaryDir>
#include <QTest>

#include "controls/DriveView.h"
#include "platform/mail/smtp/SmtpSender.h"
#include "runtime/EventGate.h"
#include "tests/platform/mail/smtp/SmtpEvents.h"
#include "tests/platform/net/ScriptedServer.h"

using namespace vandrel;

namespace {

using Script = ScriptedServer::Script;

constexpr int longestSend = 60'000;
const QStringList success{u"Busy True"_qs, u"Sent"_qs, u"Disconnected True"_qs, u"Busy False"_qs};
const QStringList failure{u"Busy True"_qs, u"Error"_qs, u"Disconnected True"_qs, u"Busy False"_qs};
const QStringList unconnected{u"Busy True"_qs, u"Error"_qs, u"Busy False"_qs};

Script operator+(Script script, const Script &more)
{
    script.insert(script.end(), more.begin(), more.end());
    return script;
}

Script hello(const QByteArray &services = "250 test\r\n")
{
    return {say("220 test ready\r\n"), hear("EHLO ["), say(services)};
}

Script envelope()
{
    return {hear("MAIL FROM:<me@example.org>"),
            say("250 sender ok\r\n"),
            hear("RCPT TO:<you@example.org>"),
            say("250 recipient ok\r\n"),
            hear("DATA"),
            say("354 go on\r\n")};
}

Script end()
{
    return {hearUntil("."), say("250 queued as 1\r\n"), hear("QUIT"), say("221 bye\r\n"), hangUp()};
}

// Answers that the test gives, asked about one domain at a time.
class ScriptedExchangers : public MailExchangers
{
public:
    void ask(const QString &domain) override
    {
        asked += domain;
        if (answer)
            QMetaObject::invokeMethod(this, answer, Qt::QueuedConnection);
    }

    QStringList asked;
    std::function<void()> answer;
};

/// Assigns one of the texts of a message, counted from 0: From, To, the subject, Cc, the attachments.
void assign(Smtp &smtp, int field, const QString &value)
{
    switch (field) {
    case 0:
        return smtp.setFromAddress(value);
    case 1:
        return smtp.setToAddress(value);
    case 2:
        return smtp.setMessageSubject(value);
    case 3:
        return smtp.setCcAddress(value);
    default:
        return smtp.setAttachmentList(value);
    }
}

} // namespace

// The control against servers that follow a script, good and bad.
class TestSmtpSender : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void aMessageIsHandedOver();
    void settersRaiseNothing();
    void sendsWaitForTheirTurn();
    void theMessageBoxHoldsEverythingBack();
    void destroyedInAnEvent_data();
    void destroyedInAnEvent();
    void destroyedWhileSending();

    void refusalAtEachStep_data();
    void refusalAtEachStep();
    void dropAtEachStep_data();
    void dropAtEachStep();
    void lossBehindTheDotIsUnknown_data();
    void lossBehindTheDotIsUnknown();
    void badReplies_data();
    void badReplies();
    void repliesInOctets();
    void silence_data();
    void silence();
    void aServerThatStopsReading();
    void anInterruptedMessage();

    void refusedRecipientsAreAllNamed();
    void oldServersAreGreetedTheOldWay();
    void largeMessagesAreRefusedBeforehand();
    void theSizeIsTold();
    void foreignAddressesNeedAnExtension();
    void foreignAddressesAreSent();

    void encryptionIsUsedWhereOffered();
    void encryptionNeverFallsBack_data();
    void encryptionNeverFallsBack();
    void encryptedFromTheStart();
    void certificatesAreChecked_data();
    void certificatesAreChecked();

    void logins_data();
    void logins();
    void loginFailures_data();
    void loginFailures();
    void noPasswordInTheClear();
    void aLoginIsAskedFor();

    void fieldsThatCannotBeSent_data();
    void fieldsThatCannotBeSent();
    void serverFields_data();
    void serverFields();
    void attachmentsThatChangeAbortTheMessage_data();
    void attachmentsThatChangeAbortTheMessage();
    void progressIsShownInSteps();

    void domainsWithoutAnAddress_data();
    void domainsWithoutAnAddress();
    void exchangersAreTriedInTurn();

private:
    void serve(const Script &script);
    void send(const QString &server = {});
    void sendAndWait(const QString &server = {});
    QString here() const { return u"127.0.0.1:%1"_qs.arg(m_server->serverPort()); }
    bool heard(const QByteArray &prefix) const;

    const QTemporaryDir m_folder;
    std::shared_ptr<DriveView> m_drives = std::make_shared<DriveView>();
    std::unique_ptr<TestCertificates> m_certificates;
    SmtpTimes m_times;
    std::unique_ptr<ScriptedServer> m_server;
    ScriptedExchangers *m_exchangers = nullptr;
    std::unique_ptr<SmtpSender> m_smtp;
    std::unique_ptr<SmtpEvents> m_events;
};

void TestSmtpSender::initTestCase()
{
    QVERIFY(m_folder.isValid());
    m_drives->setDrive('c', QFile::encodeName(m_folder.path()));
    m_certificates = std::make_unique<TestCertificates>();
    QVERIFY2(m_certificates->isUsable(), qPrintable(m_certificates->problem()));
}

void TestSmtpSender::init()
{
    m_times = {};
    m_times.farewell = 200;
    auto exchangers = std::make_unique<ScriptedExchangers>();
    m_exchangers = exchangers.get();
    m_smtp = std::make_unique<SmtpSender>(m_drives, m_times, std::move(exchangers));
    m_events = std::make_unique<SmtpEvents>(*m_smtp);
    m_smtp->setFromAddress(u"me@example.org"_qs);
    m_smtp->setToAddress(u"you@example.org"_qs);
    m_smtp->setMessageSubject(u"Hello"_qs);
    m_smtp->setMessageBody(u"One line\r\n.\r\nanother\r\n"_qs);
}

void TestSmtpSender::cleanup()
{
    m_smtp.reset();
    m_events.reset();
    m_server.reset();
}

void TestSmtpSender::serve(const Script &script)
{
    m_server = std::make_unique<ScriptedServer>(script);
    m_server->setIdentity(m_certificates->good());
}

void TestSmtpSender::send(const QString &server)
{
    m_smtp->setServerDomain(server.isNull() ? here() : server);
    m_smtp->setSendNow(true);
}

void TestSmtpSender::sendAndWait(const QString &server)
{
    send(server);
    QTRY_VERIFY_WITH_TIMEOUT(m_events->haveEnded(), longestSend);
}

bool TestSmtpSender::heard(const QByteArray &prefix) const
{
    const QByteArrayList &lines = m_server->heard();
    return std::any_of(lines.begin(), lines.end(),
                       [&](const QByteArray &line) { return line.startsWith(prefix); });
}

// --- The usual
// -----------------------------------------------------------------------------------------------

void TestSmtpSender::aMessageIsHandedOver()
{
    serve(hello() + envelope() + end());
    sendAndWait();
    QCOMPARE(m_events->main(), success);
    QCOMPARE(m_events->sent(), u"250 queued as 1"_qs);
    QTRY_VERIFY(m_server->isScriptDone());
    QCOMPARE(m_server->mismatch(), QByteArray());
    QCOMPARE(m_server->connections(), 1);
    QVERIFY(m_server->heard().contains("Subject: Hello"));
    // The dot of the text is doubled, the last line ended.
    const QByteArrayList lines = m_server->heard();
    QCOMPARE(lines.mid(lines.size() - 5), (QByteArrayList{"One line", "..", "another", ".", "QUIT"}));
    // Each line of the log ends in its own line break and repeats what the server said.
    for (const QString &event : m_events->all()) {
        if (event.startsWith(u"Status "))
            QVERIFY2(event.endsWith(u"\r\n") && event.count(u'\n') == 1, qPrintable(event));
    }
    for (const char *const words : {"220 test ready", "250 sender ok", "250 recipient ok", "250 queued as 1",
                                    "not encrypted", "me@example.org", "you@example.org"})
        QVERIFY2(m_events->log().contains(QLatin1String(words)), words);
}

void TestSmtpSender::settersRaiseNothing()
{
    serve(hello() + envelope() + end());
    m_smtp->setSendNow(false);
    QCoreApplication::processEvents();
    QVERIFY(m_events->all().isEmpty());
    send();
    QVERIFY(m_events->all().isEmpty());
    QTRY_VERIFY(m_events->haveEnded());
}

void TestSmtpSender::sendsWaitForTheirTurn()
{
    serve(hello() + envelope() + end());
    send();
    m_smtp->setMessageSubject(u"Second"_qs);
    send();
    m_smtp->setMessageSubject(u"Never sent"_qs);
    QTRY_VERIFY_WITH_TIMEOUT(m_events->haveEnded(2), longestSend);
    QCOMPARE(m_events->main(), success + success);
    QCOMPARE(m_server->connections(), 2);
    QVERIFY(m_server->heard().indexOf("Subject: Hello") < m_server->heard().indexOf("Subject: Second"));
    QVERIFY(m_server->heard().contains("Subject: Second"));
    QVERIFY(!heard("Subject: Never"));
}

void TestSmtpSender::theMessageBoxHoldsEverythingBack()
{
    serve(hello() + envelope() + end());
    {
        const EventGate::Hold hold;
        send();
        QTRY_VERIFY(m_server->isScriptDone());
        QVERIFY(m_events->all().isEmpty());
    }
    QTRY_VERIFY(m_events->haveEnded());
    QCOMPARE(m_events->main(), success);
}

void TestSmtpSender::destroyedInAnEvent_data()
{
    QTest::addColumn<int>("event");
    QTest::addColumn<bool>("refused");
    const char *const names[] = {"Busy", "StatusText", "MailSent", "Error", "Disconnected"};
    for (int i = 0; i < 5; ++i)
        QTest::newRow(names[i]) << i << (i == 3);
}

void TestSmtpSender::destroyedInAnEvent()
{
    QFETCH(int, event);
    QFETCH(bool, refused);
    serve(refused ? Script{say("554 no\r\n"), hear("QUIT")} : hello() + envelope() + end());
    bool destroyed = false;
    const auto destroy = [&] {
        destroyed = true;
        m_smtp.reset();
    };
    switch (event) {
    case 0:
        connect(m_smtp.get(), &Smtp::Busy, this, destroy);
        break;
    case 1:
        connect(m_smtp.get(), &Smtp::StatusText, this, destroy);
        break;
    case 2:
        connect(m_smtp.get(), &Smtp::MailSent, this, destroy);
        break;
    case 3:
        connect(m_smtp.get(), &Smtp::Error, this, destroy);
        break;
    default:
        connect(m_smtp.get(), &Smtp::Disconnected, this, destroy);
    }
    send();
    QTRY_VERIFY_WITH_TIMEOUT(destroyed, longestSend);
    const qsizetype events = m_events->all().size();
    QTRY_VERIFY(!m_server->hasClient());
    QCoreApplication::processEvents();
    QCOMPARE(m_events->all().size(), events);
}

void TestSmtpSender::destroyedWhileSending()
{
    QFile file(m_folder.filePath(u"large.bin"_qs));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(30'000'000));
    m_smtp->setAttachmentList(u"c:\\large.bin;"_qs);
    bool begun = false;
    serve(hello() + envelope() + Script{hear("Date:"), act([&] { begun = true; })});
    send();
    QTRY_VERIFY_WITH_TIMEOUT(begun, longestSend);
    m_smtp.reset();
    QTRY_VERIFY(!m_server->hasClient());
    QVERIFY(!m_server->heard().contains("."));
}

// --- Servers that fail
// ---------------------------------------------------------------------------------------

void TestSmtpSender::refusalAtEachStep_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<QByteArray>("reply");
    const char *const steps[] = {"greeting", "EHLO", "MAIL", "RCPT", "DATA", "end"};
    for (int step = 0; step < 6; ++step) {
        for (const char *const reply : {"421 closing", "451 later", "550 never"})
            QTest::addRow("%s, %s", steps[step], reply) << step << QByteArray(reply);
    }
}

void TestSmtpSender::refusalAtEachStep()
{
    QFETCH(int, step);
    QFETCH(QByteArray, reply);
    // Where the replies of the good script stand.
    const std::size_t replies[] = {0, 2, 4, 6, 8, 10};
    Script script = hello() + envelope() + end();
    script.resize(replies[step]);
    script.push_back(say(reply + "\r\n"));
    if (step == 1 && reply.startsWith('5')) {
        script.push_back(hear("HELO ["));
        script.push_back(say(reply + "\r\n"));
    }
    script.push_back(reply.startsWith("421") ? hangUp() : hear(step == 3 ? "RSET" : "QUIT"));
    serve(script);
    sendAndWait();
    QCOMPARE(m_events->main(), failure);
    QVERIFY2(m_events->error().contains(QString::fromLatin1(reply)), qPrintable(m_events->error()));
    QCOMPARE(m_server->mismatch(), QByteArray());
    QCOMPARE(m_server->connections(), 1);
}

void TestSmtpSender::dropAtEachStep_data()
{
    QTest::addColumn<int>("steps");
    QTest::addColumn<Script>("last");
    // Before the greeting, and behind each line that the client sends up to the message's text.
    for (const int steps : {0, 2, 4, 6, 8, 9}) {
        QTest::addRow("closed after %d steps", steps) << steps << Script{hangUp()};
        QTest::addRow("cut after %d steps", steps) << steps << Script{cutOff()};
        // One that comes with the connection may also be seen as a server that refuses it.
        if (steps > 0)
            QTest::addRow("reset after %d steps", steps) << steps << Script{resetConnection()};
    }
}

void TestSmtpSender::dropAtEachStep()
{
    QFETCH(int, steps);
    QFETCH(Script, last);
    Script script = hello() + envelope() + end();
    script.resize(static_cast<std::size_t>(steps));
    if (steps == 9)
        script.push_back(hear("Date:"));
    serve(script + last);
    if (steps == 9) {
        // More than the sockets hold, so that the end of the message cannot have been sent.
        QFile file(m_folder.filePath(u"large.bin"_qs));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(30'000'000));
        m_smtp->setAttachmentList(u"c:\\large.bin;"_qs);
    }
    sendAndWait();
    QCOMPARE(m_events->main(), failure);
    QVERIFY2(m_events->error().contains(u"127.0.0.1"), qPrintable(m_events->error()));
    QVERIFY2(!m_events->error().contains(u"unknown"), qPrintable(m_events->error()));
    QCOMPARE(m_server->connections(), 1);
}

void TestSmtpSender::lossBehindTheDotIsUnknown_data()
{
    QTest::addColumn<Script>("last");
    QTest::newRow("cut") << Script{cutOff()};
    QTest::newRow("reset") << Script{resetConnection()};
}

void TestSmtpSender::lossBehindTheDotIsUnknown()
{
    QFETCH(Script, last);
    serve(hello() + envelope() + Script{hearUntil(".")} + last);
    sendAndWait();
    QCOMPARE(m_events->main(), failure);
    QVERIFY2(m_events->error().contains(u"unknown whether it delivers"), qPrintable(m_events->error()));
    QCOMPARE(m_server->connections(), 1);
}

void TestSmtpSender::badReplies_data()
{
    QTest::addColumn<QByteArray>("octets");
    QTest::addColumn<bool>("forEver");
    const auto row
        = [](const char *name, const QByteArray &octets) { QTest::newRow(name) << octets << false; };
    row("0xx", "099 what\r\n");
    row("1xx", "150 what\r\n");
    row("6xx", "600 what\r\n");
    row("letters", "2x0 what\r\n");
    row("no code", "hello what\r\n");
    row("codes change", "250-a what\r\n251 b what\r\n");
    row("binary", QByteArray("\x00\x01\xff\xfe what\r\n", 11));
    row("two replies", "250 a\r\n250 b what\r\n");
    row("a reply too many behind several lines", "250-a\r\n250 b\r\n220 c what\r\n");
    QTest::newRow("endless line") << QByteArray(10'000, 'x') << true;
    QTest::newRow("endless reply") << QByteArray("250-what\r\n").repeated(100) << true;
    QTest::newRow("flood") << QByteArray("250 what\r\n").repeated(100) << true;
}

void TestSmtpSender::badReplies()
{
    QFETCH(QByteArray, octets);
    QFETCH(bool, forEver);
    const ServerStep bad = forEver ? sayForEver(octets) : say(octets);
    for (const bool greeting : {true, false}) {
        cleanup();
        init();
        const Script before = greeting ? Script{} : Script{say("220 test\r\n"), hear("EHLO")};
        serve(before + Script{bad});
        sendAndWait();
        QCOMPARE(m_events->main(), failure);
        QVERIFY(!heard("MAIL"));
        QCOMPARE(m_server->connections(), 1);
        QTRY_VERIFY(!m_server->hasClient());
    }
}

void TestSmtpSender::repliesInOctets()
{
    serve({sayInOctets("220-test\r\n220 ready\r\n"), hear("EHLO ["),
           sayInOctets("250-test\r\n250-SIZE\r\n250 HELP\r\n"), hear("MAIL"), sayInOctets("250 ok\r\n"),
           hear("RCPT"), sayInOctets("250 ok\r\n"), hear("DATA"), sayInOctets("354 go\r\n"), hearUntil("."),
           sayInOctets("250 queued\r\n"), hear("QUIT"), hangUp()});
    sendAndWait();
    QCOMPARE(m_events->main(), success);
}

void TestSmtpSender::silence_data()
{
    QTest::addColumn<int>("steps");
    QTest::addColumn<QString>("awaited");
    QTest::newRow("greeting") << 0 << u"its greeting"_qs;
    QTest::newRow("EHLO") << 2 << u"the reply to EHLO"_qs;
    QTest::newRow("MAIL") << 4 << u"the reply to the sender"_qs;
    QTest::newRow("DATA") << 8 << u"the reply to DATA"_qs;
    QTest::newRow("end") << 10 << u"the confirmation"_qs;
}

void TestSmtpSender::silence()
{
    QFETCH(int, steps);
    QFETCH(QString, awaited);
    Script script = hello() + envelope() + end();
    script.resize(static_cast<std::size_t>(steps));
    script.push_back(hear("nothing more"));
    serve(script);
    m_times.reply = m_times.confirmation = 1000;
    m_smtp = std::make_unique<SmtpSender>(m_drives, m_times, std::make_unique<ScriptedExchangers>());
    m_events = std::make_unique<SmtpEvents>(*m_smtp);
    m_smtp->setFromAddress(u"me@example.org"_qs);
    m_smtp->setToAddress(u"you@example.org"_qs);
    sendAndWait();
    QCOMPARE(m_events->main(), failure);
    QVERIFY2(m_events->error().contains(awaited), qPrintable(m_events->error()));
    QCOMPARE(m_events->error().contains(u"unknown whether"), steps == 10);
}

void TestSmtpSender::aServerThatStopsReading()
{
    QFile file(m_folder.filePath(u"large.bin"_qs));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(30'000'000));
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    // Once the message begins, nothing is read any more, and the sockets fill up.
    connect(&server, &QTcpServer::newConnection, this, [&] {
        QTcpSocket *const socket = server.nextPendingConnection();
        socket->setReadBufferSize(4096);
        socket->write("220 test\r\n");
        connect(socket, &QTcpSocket::readyRead, socket, [socket] {
            while (socket->canReadLine()) {
                const QByteArray command = socket->readLine().left(4);
                if (command == "Date") {
                    socket->disconnect();
                    return;
                }
                if (command == "EHLO" || command == "MAIL" || command == "RCPT" || command == "DATA")
                    socket->write(command == "DATA" ? "354 go\r\n" : "250 ok\r\n");
            }
        });
    });
    m_times.block = 1000;
    m_smtp = std::make_unique<SmtpSender>(m_drives, m_times, std::make_unique<ScriptedExchangers>());
    m_events = std::make_unique<SmtpEvents>(*m_smtp);
    m_smtp->setFromAddress(u"me@example.org"_qs);
    m_smtp->setToAddress(u"you@example.org"_qs);
    m_smtp->setAttachmentList(u"c:\\large.bin;"_qs);
    sendAndWait(u"127.0.0.1:%1"_qs.arg(server.serverPort()));
    QCOMPARE(m_events->main(), failure);
    QVERIFY2(m_events->error().contains(u"the server to take the message"), qPrintable(m_events->error()));
}

void TestSmtpSender::anInterruptedMessage()
{
    QFile file(m_folder.filePath(u"large.bin"_qs));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(30'000'000));
    m_smtp->setAttachmentList(u"c:\\large.bin;"_qs);
    serve(hello() + envelope() + Script{hear("Date:"), say("552 disk full\r\n"), hearUntil("nothing more")});
    sendAndWait();
    QCOMPARE(m_events->main(), failure);
    QVERIFY2(m_events->error().contains(u"552 disk full"), qPrintable(m_events->error()));
    QVERIFY2(m_events->error().contains(u"Nobody gets the message"), qPrintable(m_events->error()));
}

// --- Envelope
// ------------------------------------------------------------------------------------------------

void TestSmtpSender::refusedRecipientsAreAllNamed()
{
    m_smtp->setToAddress(u"a@x.org, b@x.org; c@x.org"_qs);
    m_smtp->setCcAddress(u"d@x.org, a@x.org"_qs);
    serve(hello()
          + Script{hear("MAIL"), say("250 ok\r\n"), hear("RCPT TO:<a@x.org>"), say("250 ok\r\n"),
                   hear("RCPT TO:<b@x.org>"), say("550 no such user\r\n"), hear("RCPT TO:<c@x.org>"),
                   say("251 forwarded\r\n"), hear("RCPT TO:<d@x.org>"), say("450-busy\r\n450 come back\r\n"),
                   hear("RSET"), say("250 ok\r\n"), hear("QUIT"), say("221 bye\r\n"), hangUp()});
    sendAndWait();
    QCOMPARE(m_events->main(), failure);
    QCOMPARE(m_server->mismatch(), QByteArray());
    const QString error = m_events->error();
    QVERIFY2(error.contains(u"\r\nb@x.org: 550 no such user\r\n"), qPrintable(error));
    QVERIFY2(error.endsWith(u"\r\nd@x.org: 450 busy come back"), qPrintable(error));
    QVERIFY2(!error.contains(u"a@x.org") && !error.contains(u"c@x.org"), qPrintable(error));
}

void TestSmtpSender::oldServersAreGreetedTheOldWay()
{
    serve(Script{say("220 old\r\n"), hear("EHLO"), say("502 what\r\n"), hear("HELO ["), say("250 ok\r\n")}
          + envelope() + end());
    sendAndWait();
    QCOMPARE(m_events->main(), success);
}

void TestSmtpSender::largeMessagesAreRefusedBeforehand()
{
    m_smtp->setMessageBody(QString(100'000, u'x'));
    serve(hello("250-test\r\n250 SIZE 10000\r\n") + Script{hear("QUIT"), hangUp()});
    sendAndWait();
    QCOMPARE(m_events->main(), failure);
    QVERIFY2(m_events->error().contains(u"at most 10.0 kB"), qPrintable(m_events->error()));
    QCOMPARE(m_server->mismatch(), QByteArray());
}

void TestSmtpSender::theSizeIsTold()
{
    serve(hello("250-test\r\n250-8BITMIME\r\n250-SMTPUTF8\r\n250 SIZE 0\r\n") + envelope() + end());
    sendAndWait();
    QCOMPARE(m_events->main(), success);
    const QByteArrayList lines = m_server->heard();
    // What is not needed is not asked for.
    const QByteArray command = lines[1];
    QVERIFY2(command.startsWith("MAIL FROM:<me@example.org> SIZE="), command.constData());
    QCOMPARE(command.count(' '), 2);
    qint64 size = 0;
    const qsizetype first = lines.indexOf("DATA") + 1;
    const qsizetype dot = lines.indexOf(".");
    for (const QByteArray &line : lines.mid(first, dot - first))
        size += line.size() + 2 - (line.startsWith('.') ? 1 : 0);
    QCOMPARE(command.mid(command.indexOf("SIZE=") + 5).toLongLong(), size);
}

void TestSmtpSender::foreignAddressesNeedAnExtension()
{
    m_smtp->setToAddress(u"you@example.org, jörg@example.org"_qs);
    serve(hello("250-test\r\n250 8BITMIME\r\n") + Script{hear("QUIT"), hangUp()});
    sendAndWait();
    QCOMPARE(m_events->main(), failure);
    QVERIFY2(m_events->error().contains(u"jörg@example.org"), qPrintable(m_events->error()));
}

void TestSmtpSender::foreignAddressesAreSent()
{
    m_smtp->setToAddress(u"Jörg <jörg@bücher.example>"_qs);
    serve(hello("250-test\r\n250-8BITMIME\r\n250 SMTPUTF8\r\n")
          + Script{hear("MAIL FROM:<me@example.org> BODY=8BITMIME SMTPUTF8"), say("250 ok\r\n"),
                   hear("RCPT TO:<jörg@xn--bcher-kva.example>"), say("250 ok\r\n"), hear("DATA"),
                   say("354 go\r\n")}
          + end());
    sendAndWait();
    QCOMPARE(m_events->main(), success);
    QCOMPARE(m_server->mismatch(), QByteArray());
}

// --- Encryption
// ----------------------------------------------------------------------------------------------

void TestSmtpSender::encryptionIsUsedWhereOffered()
{
    serve(hello("250-test\r\n250-AUTH PLAIN\r\n250 STARTTLS\r\n")
          + Script{hear("STARTTLS"), say("220 go\r\n"), encrypt(), hear("EHLO ["),
                   say("250-test\r\n250 SIZE 1000000\r\n")}
          + envelope() + end());
    sendAndWait();
    QCOMPARE(m_events->main(), success);
    QCOMPARE(m_server->mismatch(), QByteArray());
    QVERIFY(m_events->log().contains(u"is encrypted (TLS 1."));
    QVERIFY(!m_events->log().contains(u"not encrypted"));
}

void TestSmtpSender::encryptionNeverFallsBack_data()
{
    QTest::addColumn<int>("fault");
    QTest::addColumn<QString>("named");
    QTest::newRow("refused for now") << 0 << u"454 not now"_qs;
    QTest::newRow("refused") << 1 << u"502 what"_qs;
    QTest::newRow("text behind the agreement") << 2 << QString();
    QTest::newRow("text without a line end behind the agreement") << 3 << u"interfere"_qs;
    QTest::newRow("no handshake") << 4 << u"could not be encrypted"_qs;
    QTest::newRow("hung up") << 5 << u"could not be encrypted"_qs;
    QTest::newRow("certificate of another name") << 6 << u"127.0.0.1"_qs;
}

void TestSmtpSender::encryptionNeverFallsBack()
{
    QFETCH(int, fault);
    QFETCH(QString, named);
    const Script faults[] = {{say("454 not now\r\n"), hear("QUIT")},
                             {say("502 what\r\n"), hear("QUIT")},
                             {say("220 go\r\n250 injected\r\n"), hear("nothing more")},
                             {say("220 go\r\n250 inj"), hear("nothing more")},
                             {say("220 go\r\n"), hear("\x16"), say("this is no TLS\r\n")},
                             {say("220 go\r\n"), hangUp()},
                             {say("220 go\r\n"), encrypt(), hear("nothing more")}};
    serve(hello("250-test\r\n250 STARTTLS\r\n") + Script{hear("STARTTLS")} + faults[fault]);
    if (fault == 6)
        m_server->setIdentity(m_certificates->otherName());
    sendAndWait();
    QCOMPARE(m_events->main(), failure);
    QVERIFY2(m_events->error().contains(named), qPrintable(m_events->error()));
    QVERIFY(!heard("MAIL"));
    QCOMPARE(m_server->connections(), 1);
}

void TestSmtpSender::encryptedFromTheStart()
{
    serve(Script{encrypt()} + hello() + envelope() + end());
    sendAndWait(u"smtps://localhost:%1"_qs.arg(m_server->serverPort()));
    QCOMPARE(m_events->main(), success);
    QVERIFY(m_events->log().contains(u"is encrypted (TLS 1."));
}

void TestSmtpSender::certificatesAreChecked_data()
{
    QTest::addColumn<int>("identity");
    QTest::newRow("other name") << 0;
    QTest::newRow("expired") << 1;
    QTest::newRow("signed by itself") << 2;
    QTest::newRow("unknown authority") << 3;
}

void TestSmtpSender::certificatesAreChecked()
{
    QFETCH(int, identity);
    const TestIdentity identities[] = {m_certificates->otherName(), m_certificates->expired(),
                                       m_certificates->selfSigned(), m_certificates->unknownAuthority()};
    serve(Script{encrypt()} + hello() + envelope() + end());
    m_server->setIdentity(identities[identity]);
    sendAndWait(u"smtps://localhost:%1"_qs.arg(m_server->serverPort()));
    QCOMPARE(m_events->main().value(1), u"Error"_qs);
    QVERIFY2(m_events->error().contains(u"localhost"), qPrintable(m_events->error()));
    QVERIFY(!heard("EHLO"));
}

// --- Logins
// --------------------------------------------------------------------------------------------------

void TestSmtpSender::logins_data()
{
    QTest::addColumn<QByteArray>("offered");
    QTest::newRow("PLAIN") << QByteArray("GSSAPI PLAIN LOGIN");
    QTest::newRow("LOGIN") << QByteArray("LOGIN");
    QTest::newRow("CRAM-MD5") << QByteArray("CRAM-MD5");
}

void TestSmtpSender::logins()
{
    QFETCH(QByteArray, offered);
    const QByteArray plain = QByteArray("\0us er@x\0p%w:/", 14).toBase64();
    const QHash<QByteArray, Script> exchanges{
        {"GSSAPI PLAIN LOGIN", {hear("AUTH PLAIN " + plain)}},
        {"LOGIN",
         {hear("AUTH LOGIN"), say("334 VXNlcm5hbWU6\r\n"), hear(QByteArray("us er@x").toBase64()),
          say("334 UGFzc3dvcmQ6\r\n"), hear(QByteArray("p%w:/").toBase64())}},
        {"CRAM-MD5",
         {hear("AUTH CRAM-MD5"), say("334 PDFAeD4=\r\n"), hear(QByteArray("us er@x ").toBase64().left(8))}}};
    serve(hello("250-test\r\n250 AUTH " + offered + "\r\n") + exchanges[offered]
          + Script{say("235 welcome us er@x, your p%w:/ is fine\r\n")} + envelope() + end());
    sendAndWait(u"us%20er%40x:p%25w%3A%2F@"_qs + here());
    QCOMPARE(m_server->mismatch(), QByteArray());
    QCOMPARE(m_events->main(), success);
    const QString all = m_events->all().join(u'\n');
    QVERIFY(all.contains(u"235 welcome ***, your *** is fine"));
    for (const QString &secret : {u"us er"_qs, u"p%w"_qs, u"p%25w"_qs, QString::fromLatin1(plain)})
        QVERIFY2(!all.contains(secret), qPrintable(all));
}

void TestSmtpSender::loginFailures_data()
{
    QTest::addColumn<int>("fault");
    QTest::addColumn<QString>("named");
    QTest::newRow("refused") << 0 << u"535 wrong"_qs;
    QTest::newRow("none offered") << 1 << u"offers no login"_qs;
    QTest::newRow("none known") << 2 << u"no way to log in that is known"_qs;
    QTest::newRow("challenges for ever") << 3 << u"asks for more"_qs;
    QTest::newRow("too old a server") << 4 << u"offers no login"_qs;
}

void TestSmtpSender::loginFailures()
{
    QFETCH(int, fault);
    QFETCH(QString, named);
    const Script faults[]
        = {hello("250-test\r\n250 AUTH PLAIN\r\n")
               + Script{hear("AUTH PLAIN"), say("535 wrong secret1\r\n"), hear("QUIT")},
           hello() + Script{hear("QUIT")},
           hello("250-test\r\n250 AUTH XOAUTH2 GSSAPI\r\n") + Script{hear("QUIT")},
           hello("250-test\r\n250 AUTH LOGIN\r\n")
               + Script{hear("AUTH LOGIN"), say("334 a\r\n"), hear(""), say("334 b\r\n"), hear(""),
                        say("334 c\r\n"), hear("*"), say("334 d\r\n"), hear("QUIT")},
           Script{say("220 old\r\n"), hear("EHLO"), say("502 what\r\n"), hear("HELO"), say("250 ok\r\n"),
                  hear("QUIT")}};
    serve(faults[fault]);
    sendAndWait(u"user1:secret1@"_qs + here());
    QCOMPARE(m_events->main(), failure);
    QCOMPARE(m_server->mismatch(), QByteArray());
    QVERIFY2(m_events->error().contains(named), qPrintable(m_events->error()));
    QVERIFY(!heard("MAIL"));
    const QString all = m_events->all().join(u'\n');
    QVERIFY2(!all.contains(u"secret1") && !all.contains(u"user1"), qPrintable(all));
}

// A server on another address of this machine counts as any other.
void TestSmtpSender::noPasswordInTheClear()
{
    QHostAddress outside;
    for (const QHostAddress &address : QNetworkInterface::allAddresses()) {
        if (!address.isLoopback() && address.protocol() == QAbstractSocket::IPv4Protocol)
            outside = address;
    }
    if (outside.isNull())
        QSKIP("this machine has no address but loopback");
    m_server = std::make_unique<ScriptedServer>(
        hello("250-test\r\n250 AUTH PLAIN LOGIN\r\n") + Script{hear("QUIT")}, outside);
    sendAndWait(u"user1:secret1@%1:%2"_qs.arg(outside.toString()).arg(m_server->serverPort()));
    QCOMPARE(m_events->main(), failure);
    QCOMPARE(m_server->mismatch(), QByteArray());
    QVERIFY2(m_events->error().contains(u"not encrypted, so the password is not sent"),
             qPrintable(m_events->error()));
}

void TestSmtpSender::aLoginIsAskedFor()
{
    serve(hello() + Script{hear("MAIL"), say("530 5.7.0 Authentication required\r\n"), hear("QUIT")});
    sendAndWait();
    QCOMPARE(m_events->main(), failure);
    QVERIFY2(m_events->error().contains(u"user:password@"), qPrintable(m_events->error()));
}

// --- Fields
// --------------------------------------------------------------------------------------------------

void TestSmtpSender::fieldsThatCannotBeSent_data()
{
    QTest::addColumn<int>("field");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("named");
    QTest::newRow("no sender") << 0 << QString() << u"no sender"_qs;
    QTest::newRow("no recipient") << 1 << QString() << u"no recipient"_qs;
    QTest::newRow("bad recipient") << 1 << u"you"_qs << u"\"you\""_qs;
    QTest::newRow("command in a recipient") << 1 << u"you@x.org>\r\nRSET"_qs << u"field To"_qs;
    QTest::newRow("field in the subject") << 2 << u"a\r\nBcc: b@x.org"_qs << u"subject"_qs;
    QTest::newRow("field in CC") << 3 << u"c@x.org\nX: y"_qs << u"field CC"_qs;
    QTest::newRow("missing file") << 4 << u"c:\\missing.txt;"_qs << u"missing.txt"_qs;
    QTest::newRow("folder") << 4 << u"c:\\;"_qs << u"c:\\"_qs;
}

void TestSmtpSender::fieldsThatCannotBeSent()
{
    QFETCH(int, field);
    QFETCH(QString, value);
    QFETCH(QString, named);
    serve(hello());
    assign(*m_smtp, field, value);
    sendAndWait();
    QCOMPARE(m_events->main(), unconnected);
    QVERIFY2(m_events->error().contains(named), qPrintable(m_events->error()));
    QCOMPARE(m_server->connections(), 0);
}

void TestSmtpSender::serverFields_data()
{
    QTest::addColumn<QString>("server");
    QTest::addColumn<QString>("named");
    QTest::newRow("empty") << u""_qs << u"No mail server is named"_qs;
    QTest::newRow("blank") << u"  "_qs << u"No mail server is named"_qs;
    QTest::newRow("other scheme") << u"http://x.org"_qs << u"smtp://"_qs;
    QTest::newRow("line break") << u"x.org\r\nRSET"_qs << u"line breaks"_qs;
    QTest::newRow("bad port") << u"x.org:99999"_qs << u"99999"_qs;
    QTest::newRow("password with a slash") << u"me:hid/den@x.org"_qs << u"%2F"_qs;
    QTest::newRow("bad percent code") << u"me:hidden%zz@x.org"_qs << u"user:password@host"_qs;
    QTest::newRow("path") << u"smtp://x.org/folder"_qs << u"ends with its name"_qs;
    QTest::newRow("nobody listens") << u"127.0.0.1:1"_qs << u"port 1"_qs;
    QTest::newRow("the port for logins") << u"a:b@127.0.0.99"_qs << u"port 587"_qs;
    QTest::newRow("the port for encryption") << u"smtps://a:b@127.0.0.99"_qs << u"port 465"_qs;
}

void TestSmtpSender::serverFields()
{
    QFETCH(QString, server);
    QFETCH(QString, named);
    sendAndWait(server);
    QCOMPARE(m_events->main(), unconnected);
    QVERIFY2(m_events->error().contains(named), qPrintable(m_events->error()));
    const QString all = m_events->all().join(u'\n');
    QVERIFY2(!all.contains(u"hid"), qPrintable(all));
}

void TestSmtpSender::attachmentsThatChangeAbortTheMessage_data()
{
    QTest::addColumn<int>("change");
    QTest::newRow("grows") << 0;
    QTest::newRow("shrinks") << 1;
    QTest::newRow("vanishes") << 2;
}

void TestSmtpSender::attachmentsThatChangeAbortTheMessage()
{
    QFETCH(int, change);
    const QString path = m_folder.filePath(u"changing.bin"_qs);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(30'000'000));
    m_smtp->setAttachmentList(u"c:\\changing.bin;"_qs);
    const auto damage = [&] {
        const bool done = change == 0 ? file.resize(30'000'001)
            : change == 1             ? file.resize(1000)
                                      : file.remove();
        QVERIFY(done);
    };
    serve(hello() + envelope() + Script{hear("Date:"), act(damage), hearUntil(".")});
    sendAndWait();
    QCOMPARE(m_events->main(), failure);
    QVERIFY2(m_events->error().contains(u"changing.bin"), qPrintable(m_events->error()));
    QTRY_VERIFY(!m_server->hasClient());
    QVERIFY(!m_server->heard().contains("."));
}

void TestSmtpSender::progressIsShownInSteps()
{
    QFile file(m_folder.filePath(u"large.bin"_qs));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(30'000'000));
    m_smtp->setAttachmentList(u"c:\\large.bin;"_qs);
    serve(hello() + envelope() + end());
    sendAndWait();
    QCOMPARE(m_events->main(), success);
    const QStringList steps = m_events->log().split(u"\r\n"_qs).filter(u" % of the message sent"_qs);
    QVERIFY(steps.size() < 10);
    int last = 0;
    for (const QString &step : steps) {
        const int percent = step.section(u' ', 0, 0).toInt();
        QVERIFY(percent > last && percent % 10 == 0 && percent < 100);
        last = percent;
    }
}

// --- Mail domains
// --------------------------------------------------------------------------------------------

void TestSmtpSender::domainsWithoutAnAddress_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<QString>("named");
    QTest::newRow("no exchangers") << 0 << u"nowhere.invalid"_qs;
    QTest::newRow("takes no mail") << 1 << u"takes no mail"_qs;
    QTest::newRow("no answer") << 2 << u"nowhere.invalid"_qs;
    QTest::newRow("failure") << 3 << u"nowhere.invalid"_qs;
    QTest::newRow("exchanger without an address") << 4 << u"mx.nowhere.invalid"_qs;
}

void TestSmtpSender::domainsWithoutAnAddress()
{
    QFETCH(int, answer);
    QFETCH(QString, named);
    m_times.exchangers = 500;
    auto exchangers = std::make_unique<ScriptedExchangers>();
    m_exchangers = exchangers.get();
    m_exchangers->answer = [&] {
        if (answer == 3)
            Q_EMIT m_exchangers->failed(u"broken"_qs);
        else if (answer == 4)
            Q_EMIT m_exchangers->found({{u"mx.nowhere.invalid"_qs, 5}});
        else if (answer != 2)
            Q_EMIT m_exchangers->found(answer == 0 ? std::vector<MailExchanger>{}
                                                   : std::vector<MailExchanger>{{QString(), 0}});
    };
    m_smtp = std::make_unique<SmtpSender>(m_drives, m_times, std::move(exchangers));
    m_events = std::make_unique<SmtpEvents>(*m_smtp);
    m_smtp->setFromAddress(u"me@example.org"_qs);
    m_smtp->setToAddress(u"you@example.org"_qs);
    sendAndWait(u"Nowhere.invalid"_qs);
    QCOMPARE(m_events->main(), unconnected);
    QVERIFY2(m_events->error().contains(named), qPrintable(m_events->error()));
    QCOMPARE(m_exchangers->asked, QStringList{u"nowhere.invalid"_qs});
    // With a port or a login it is a server that was typed, not a mail domain.
    for (const QString &server :
         {u"nowhere.invalid:2525"_qs, u"a:b@nowhere.invalid"_qs, u"smtps://nowhere.invalid"_qs}) {
        m_events = std::make_unique<SmtpEvents>(*m_smtp);
        sendAndWait(server);
        QCOMPARE(m_exchangers->asked.size(), 1);
    }
}

void TestSmtpSender::exchangersAreTriedInTurn()
{
    // The first hosts refuse the connection or do not serve; the third takes the message; the last is never
    // asked.
    const Script busy{say("421 busy\r\n"), hear("QUIT")};
    ScriptedServer second(busy, QHostAddress(u"127.0.0.62"_qs), 25);
    ScriptedServer third(hello() + envelope() + end(), QHostAddress(u"127.0.0.63"_qs), 25);
    ScriptedServer last(hello() + envelope() + end(), QHostAddress(u"127.0.0.64"_qs), 25);
    if (!third.isListening())
        QSKIP("only root may listen on port 25");
    m_exchangers->answer = [this] {
        Q_EMIT m_exchangers->found(
            {{u"127.0.0.64"_qs, 40}, {u"127.0.0.62"_qs, 20}, {u"127.0.0.61"_qs, 10}, {u"127.0.0.63"_qs, 30}});
    };
    sendAndWait(u"nowhere.invalid"_qs);
    QCOMPARE(m_events->main(), success);
    QCOMPARE(second.connections(), 1);
    QCOMPARE(third.connections(), 1);
    QCOMPARE(last.connections(), 0);
    QVERIFY(m_events->log().contains(u"421 busy"));
}

QTEST_GUILESS_MAIN(TestSmtpSender)

#include "TestSmtpSender.moc"
