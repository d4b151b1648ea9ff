// The FTP control with servers that fall silent, break off, or say what no server should.

#include <QSignalSpy>
#include <QTest>

#include "tests/platform/ftp/FtpClientTest.h"
#include "tests/platform/ftp/ScriptedFtpServer.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

class TestFtpMisbehaviour : public FtpClientTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void silenceEndsTheSession_data();
    void silenceEndsTheSession();
    void silenceInTheLogin_data();
    void silenceInTheLogin();
    void silenceInTheMiddleOfData_data();
    void silenceInTheMiddleOfData();
    void aServerThatStopsReading();
    void anUnansweredSignOfLifeEndsTheSession();
    void aServerThatDoesNotConnectBack_data();
    void aServerThatDoesNotConnectBack();
    void aTransferThatIsCutOff_data();
    void aTransferThatIsCutOff();
    void anUploadThatIsCutOff_data();
    void anUploadThatIsCutOff();
    void encryptionOfferedAndRefused_data();
    void encryptionOfferedAndRefused();
    void anEndlessReply();
    void abortOfAListing();
    void anIdleSessionIsKeptAlive();
    void aSignOfLifeIsAwaitedBeforeAnythingElse();

private:
    void startAgain(const FtpPatience &times);
    void connectsToAnother();

    void isNoLongerConnected();

    std::unique_ptr<ScriptedFtpServer> m_script;
};

void TestFtpMisbehaviour::init()
{
    // Long enough for what does come on a busy machine; every test here waits for something that does not.
    FtpPatience times;
    times.reply = 2'000;
    times.data = 1'000;
    setUp(times);
    m_script = std::make_unique<ScriptedFtpServer>();
    put(u"x"_s, "old");
}

void TestFtpMisbehaviour::cleanup()
{
    tearDown();
    m_script.reset();
}

void TestFtpMisbehaviour::isNoLongerConnected()
{
    m_control->setReportDirectoryNow(true);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::NotConnected));
    QCOMPARE(m_script->connections(), 1);
    QCOMPARE(contents(u"x"_s), QByteArray("old"));
    QCOMPARE(localFiles(), QStringList({u"x"_s}));
}

void TestFtpMisbehaviour::silenceEndsTheSession_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("replies");
    QTest::addColumn<QString>("awaited");
    QTest::newRow("no reply") << QByteArray("TYPE") << QByteArray() << u"the reply to TYPE"_s;
    QTest::newRow("half a reply") << QByteArray("TYPE") << QByteArray("200-a\r\n") << u"the reply to TYPE"_s;
    QTest::newRow("no reply to the transfer") << QByteArray("RETR") << QByteArray() << u"the reply to RETR"_s;
    QTest::newRow("no final reply") << QByteArray("RETR") << QByteArray("150 here\r\n")
                                    << u"the reply to RETR"_s;
}

void TestFtpMisbehaviour::silenceEndsTheSession()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, replies);
    QFETCH(QString, awaited);
    QVERIFY(connectTo(m_script->address()));
    m_script->answer(command, replies);
    m_script->serve("abc");
    download(u"x"_s, u"x"_s);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::TimedOut));
    QVERIFY2(errorText().contains(awaited), qPrintable(errorText()));
    isNoLongerConnected();
}

// What a window needs after an error: the next connection.
void TestFtpMisbehaviour::connectsToAnother()
{
    ScriptedFtpServer another;
    QVERIFY(connectTo(another.address()));
    m_control->setReportDirectoryNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({u"/home"_s}), patience);
}

void TestFtpMisbehaviour::silenceInTheLogin_data()
{
    QTest::addColumn<QByteArray>("command");
    for (const char *command : {"the greeting", "AUTH", "USER", "PASS", "FEAT"})
        QTest::newRow(command) << QByteArray(command);
}

void TestFtpMisbehaviour::silenceInTheLogin()
{
    QFETCH(QByteArray, command);
    if (command == "the greeting")
        m_script->greeting.clear();
    else
        m_script->answer(command, {});
    m_control->setServerAddress(m_script->address());
    m_control->setUserName(u"vandrel"_s);
    m_control->setPassword(u"s3cret"_s);
    m_control->setConnectNow(true);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::TimedOut));
    QVERIFY2(errorText().contains(QString::fromLatin1(command)), qPrintable(errorText()));
    isNoLongerConnected();
    connectsToAnother();
}

void TestFtpMisbehaviour::silenceInTheMiddleOfData_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::newRow("of a download") << QByteArray("RETR");
    QTest::newRow("of a listing") << QByteArray("LIST");
}

void TestFtpMisbehaviour::silenceInTheMiddleOfData()
{
    QFETCH(QByteArray, command);
    QVERIFY(connectTo(m_script->address()));
    m_script->answer(command, "150 here\r\n");
    m_script->serve("-rw-r--r-- 1 u g 5 Jan  5 2020 f\r\n-rw", true);
    if (command == "LIST")
        m_control->setListNow(true);
    else
        download(u"x"_s, u"x"_s);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::TimedOut));
    isNoLongerConnected();
    connectsToAnother();
}

void TestFtpMisbehaviour::aServerThatStopsReading()
{
    QFile large(m_local.filePath(u"large"_s));
    QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(30'000'000));
    large.close();
    QVERIFY(connectTo(m_script->address()));
    m_script->stopReadingData();
    upload(u"large"_s, u"large"_s);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::TimedOut));
    QVERIFY(!m_events.contains(u"Uploaded"_s));
    QVERIFY(QFile::remove(large.fileName()));
    isNoLongerConnected();
    connectsToAnother();
}

void TestFtpMisbehaviour::anUnansweredSignOfLifeEndsTheSession()
{
    FtpPatience times;
    times.idle = 5;
    times.reply = 1'000;
    startAgain(times);
    put(u"x"_s, "old");
    m_script->answer("NOOP", {});
    QVERIFY(connectTo(m_script->address()));
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::TimedOut));
    isNoLongerConnected();
}

void TestFtpMisbehaviour::aServerThatDoesNotConnectBack_data()
{
    QTest::addColumn<bool>("answers");
    QTest::newRow("and says so") << true;
    QTest::newRow("and says nothing") << false;
}

void TestFtpMisbehaviour::aServerThatDoesNotConnectBack()
{
    QFETCH(bool, answers);
    QVERIFY(connectTo(m_script->address()));
    m_script->answer("EPSV", "500 what\r\n");
    m_script->answer("PASV", "500 what\r\n");
    m_script->answer("PORT", "200 ok\r\n");
    m_script->answer("RETR", answers ? "150 here\r\n425 no way to you\r\n" : "150 here\r\n");
    download(u"x"_s, u"x"_s);
    if (!answers) {
        QCOMPARE(nextError(), static_cast<int>(FtpProblem::TimedOut));
        isNoLongerConnected();
        return;
    }
    m_control->setReportDirectoryNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({u"Error 425"_s, u"/home"_s}), patience);
    QCOMPARE(contents(u"x"_s), QByteArray("old"));
}

void TestFtpMisbehaviour::aTransferThatIsCutOff_data()
{
    QTest::addColumn<bool>("withGoodbye");
    QTest::addColumn<int>("number");
    QTest::newRow("with a goodbye") << true << 421;
    QTest::newRow("without a word") << false << static_cast<int>(FtpProblem::Lost);
}

void TestFtpMisbehaviour::aTransferThatIsCutOff()
{
    QFETCH(bool, withGoodbye);
    QVERIFY(connectTo(m_script->address()));
    m_script->answer("SIZE", "213 1000\r\n");
    m_script->answer("RETR", "150 here\r\n");
    m_script->serve("abc", true);
    QSignalSpy progress(m_control.get(), &FTPClient::TransferProgress);
    download(u"x"_s, u"x"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!progress.isEmpty(), patience);
    if (withGoodbye)
        m_script->send("421 shutting down\r\n");
    m_script->hangUp();
    QTEST(nextError(), "number");
    isNoLongerConnected();
}

void TestFtpMisbehaviour::anUploadThatIsCutOff_data()
{
    QTest::addColumn<QByteArray>("lastWords");
    QTest::addColumn<int>("number");
    QTest::newRow("for want of room") << QByteArray("552 no room\r\n") << 552;
    QTest::newRow("with a goodbye") << QByteArray("421 shutting down\r\n") << 421;
    QTest::newRow("without a word") << QByteArray() << static_cast<int>(FtpProblem::Lost);
}

void TestFtpMisbehaviour::anUploadThatIsCutOff()
{
    QFETCH(QByteArray, lastWords);
    QFile large(m_local.filePath(u"large"_s));
    QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(30'000'000));
    large.close();
    QVERIFY(connectTo(m_script->address()));
    m_script->stopReadingData();
    QSignalSpy progress(m_control.get(), &FTPClient::TransferProgress);
    upload(u"large"_s, u"large"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!progress.isEmpty(), patience);
    if (lastWords.isEmpty())
        m_script->hangUp();
    else
        m_script->send(lastWords);
    QTEST(nextError(), "number");
    QVERIFY(!m_events.contains(u"Uploaded"_s));
    QVERIFY(QFile::remove(large.fileName()));
}

void TestFtpMisbehaviour::encryptionOfferedAndRefused_data()
{
    QTest::addColumn<QByteArray>("features");
    QTest::newRow("one way to encrypt") << QByteArray("211-F\r\n AUTH TLS\r\n UTF8\r\n211 End\r\n");
    QTest::newRow("several") << QByteArray("211-F\r\n auth SSL;TLS-C;TLS-P;\r\n211 End\r\n");
}

void TestFtpMisbehaviour::encryptionOfferedAndRefused()
{
    QFETCH(QByteArray, features);
    m_script->answer("FEAT", features);
    m_script->answer("AUTH", "534 not today\r\n");
    m_control->setServerAddress(m_script->address());
    m_control->setUserName(u"vandrel"_s);
    m_control->setPassword(u"s3cret"_s);
    m_control->setConnectNow(true);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::Encryption));
    QVERIFY2(errorText().contains(u"not today"), qPrintable(errorText()));
    m_control->setListNow(true);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::NotConnected));
    for (const QByteArray &command : m_script->commands())
        QVERIFY(!command.startsWith("USER") && !command.startsWith("PASS"));
}

void TestFtpMisbehaviour::anEndlessReply()
{
    QVERIFY(connectTo(m_script->address()));
    m_script->answer("TYPE", "200 " + QByteArray(10'000'000, 'x') + "\r\n");
    download(u"x"_s, u"x"_s);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::Protocol));
    isNoLongerConnected();
}

void TestFtpMisbehaviour::abortOfAListing()
{
    QVERIFY(connectTo(m_script->address()));
    m_script->answer("LIST", "150 here\r\n");
    m_script->answer("ABOR", "426 cut\r\n226 aborted\r\n");
    m_script->serve("-rw-r--r-- 1 u g 5 Jan  5 2020 f\r\n", true);
    QSignalSpy progress(m_control.get(), &FTPClient::TransferProgress);
    m_control->setListNow(true);
    m_control->setListNow(true);
    QTRY_VERIFY_WITH_TIMEOUT(!progress.isEmpty(), patience);
    m_control->setAbortNow(true);
    m_control->setReportDirectoryNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({u"/home"_s}), patience);
    QCOMPARE(m_script->commands().count("LIST"), 1);
}

void TestFtpMisbehaviour::startAgain(const FtpPatience &times)
{
    tearDown();
    setUp(times);
}

void TestFtpMisbehaviour::anIdleSessionIsKeptAlive()
{
    FtpPatience times;
    times.idle = 5;
    startAgain(times);
    QVERIFY(connectTo(m_script->address()));
    QTRY_COMPARE_WITH_TIMEOUT(m_script->commands().count("NOOP"), 30, patience);
    QCOMPARE(m_events, QStringList());
    // Whatever is asked for begins another half hour.
    m_control->setReportDirectoryNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_script->commands().count("NOOP"), 60, patience);
    QCOMPARE(m_events, QStringList({u"/home"_s}));
}

void TestFtpMisbehaviour::aSignOfLifeIsAwaitedBeforeAnythingElse()
{
    FtpPatience times;
    times.idle = 5;
    startAgain(times);
    m_script->answer("NOOP", QByteArray());
    QVERIFY(connectTo(m_script->address()));
    QTRY_COMPARE_WITH_TIMEOUT(m_script->commands().last(), QByteArray("NOOP"), patience);
    // The server is slow to answer; neither a second one nor a request comes before it has.
    m_control->setReportDirectoryNow(true);
    const auto hasGoneOn
        = [this] { return m_script->commands().count("NOOP") > 1 || m_script->commands().contains("PWD"); };
    QVERIFY(!QTest::qWaitFor(hasGoneOn, 10 * times.idle));
    m_script->answer("NOOP", "200 ok\r\n");
    m_script->send("200 ok\r\n");
    QTRY_VERIFY_WITH_TIMEOUT(m_events.contains(u"/home"_s), patience);
    QCOMPARE(m_events, QStringList({u"/home"_s}));
}

QTEST_GUILESS_MAIN(TestFtpMisbehaviour)
#include "TestFtpMisbehaviour.moc"
