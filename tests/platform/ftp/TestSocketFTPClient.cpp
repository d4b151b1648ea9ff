#include <memory>

#include <QSignalSpy>
#include <QTest>

#include "platform/ftp/LineEnds.h"
#include "runtime/EventGate.h"
#include "runtime/RuntimeError.h"
#include "tests/platform/ftp/FtpClientTest.h"
#include "tests/platform/ftp/ScriptedFtpServer.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// The FTP control with a scripted server.
class TestSocketFTPClient : public FtpClientTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void logsInWithTheTypedUser();
    void aRefusedLoginIsAnError();
    void whatIsNoFtpIsAnError_data();
    void whatIsNoFtpIsAnError();
    void aReplyMayComeOctetByOctet();
    void nobodyThereIsAnError();
    void aBadAddressIsAnError();

    void requestsNeedAConnection();
    void requestsAreCarriedOutInOrder();
    void anErrorDoesNotStopTheQueue();
    void namesThatCannotBeSentAreErrors_data();
    void namesThatCannotBeSentAreErrors();
    void theEmptyPathStaysWhereItIs();

    void aForeignPassiveAddressIsIgnored();
    void aModeThatFailsOnceIsAskedForAgain();
    void theServerConnectsBackAsALastResort();
    void aMalformedPortIsAnError_data();
    void aMalformedPortIsAnError();
    void theFinalReplyMayComeBeforeTheData();
    void anotherListingCommandIsTried();

    void aFailedDownloadLeavesTheOldFile_data();
    void aFailedDownloadLeavesTheOldFile();
    void localFilesThatCannotBeUsedAreErrors_data();
    void localFilesThatCannotBeUsedAreErrors();
    void progressIsReported();

    void abortDuringADownload();
    void abortWhileConnecting();
    void abortEmptiesTheQueue();
    void abortOfAServerThatDoesNotAnswer();
    void closeSaysGoodbye();
    void theServersFarewellIsAnError();
    void anUnsolicitedReplyEndsTheSession();
    void aCutConnectionIsAnErrorAndNothingIsRetried();
    void eventsWaitForTheGate();
    void destroyingEndsEverything();

    void lineEndsAcrossPieces();

private:
    bool connectToScript() { return connectTo(m_script->address()); }

    std::unique_ptr<ScriptedFtpServer> m_script;
};

void TestSocketFTPClient::init()
{
    setUp();
    m_script = std::make_unique<ScriptedFtpServer>();
}

void TestSocketFTPClient::cleanup()
{
    tearDown();
    m_script.reset();
}

void TestSocketFTPClient::logsInWithTheTypedUser()
{
    QVERIFY(connectToScript());
    QCOMPARE(m_script->commands(),
             QByteArrayList({"AUTH TLS", "FEAT", "USER vandrel", "PASS s3cret", "FEAT"}));
}

void TestSocketFTPClient::aRefusedLoginIsAnError()
{
    m_script->answer("PASS", "530-No\r\n530 not you\r\n");
    m_control->setServerAddress(m_script->address());
    m_control->setUserName(u"vandrel"_s);
    m_control->setConnectNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_errors->size(), 1, patience);
    QCOMPARE(m_errors->first().at(2).toString(), u"not you"_s);
    QCOMPARE(nextError(), 530);
    m_control->setListNow(true);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::NotConnected));
}

void TestSocketFTPClient::whatIsNoFtpIsAnError_data()
{
    QTest::addColumn<QByteArray>("greeting");
    QTest::addColumn<int>("number");
    QTest::newRow("another protocol") << QByteArray("SSH-2.0-x\r\n") << 1006;
    QTest::newRow("a refusal") << QByteArray("421 too many\r\n") << 421;
    QTest::newRow("a reply without an end")
        << QByteArray("220-x\r\n" + QByteArray("220-x\r\n").repeated(20'000)) << 1006;
    QTest::newRow("a line without an end") << QByteArray("220 " + QByteArray(1'000'000, 'x')) << 1006;
    QTest::newRow("no permission to log in") << QByteArray("550 no\r\n") << 550;
}

void TestSocketFTPClient::whatIsNoFtpIsAnError()
{
    QFETCH(QByteArray, greeting);
    m_script->greeting = greeting;
    m_control->setServerAddress(m_script->address());
    m_control->setConnectNow(true);
    QTEST(nextError(), "number");
    QCOMPARE(m_events.size(), 1);
}

void TestSocketFTPClient::aReplyMayComeOctetByOctet()
{
    QVERIFY(connectToScript());
    m_script->onCommand("PWD", [this] {
        for (const char octet : QByteArray("257-a\r\n 257 b\r\n257 \"/x\"\r\n"))
            m_script->send(QByteArray(1, octet));
    });
    m_control->setReportDirectoryNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({u"/x"_s}), patience);
}

void TestSocketFTPClient::nobodyThereIsAnError()
{
    const QString address = m_script->address();
    m_script.reset();
    m_control->setServerAddress(address);
    m_control->setConnectNow(true);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::Refused));
}

void TestSocketFTPClient::aBadAddressIsAnError()
{
    for (const QString &address : {QString(), u"host:99999"_s, u"a b"_s}) {
        m_control->setServerAddress(address);
        m_control->setConnectNow(true);
        QCOMPARE(nextError(), static_cast<int>(FtpProblem::BadAddress));
    }
}

void TestSocketFTPClient::requestsNeedAConnection()
{
    m_control->setListNow(true);
    m_control->setListNow(false);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::NotConnected));
    QCOMPARE(m_events.size(), 1);
}

void TestSocketFTPClient::requestsAreCarriedOutInOrder()
{
    QVERIFY(connectToScript());
    m_script->answer("DELE", "250 gone\r\n");
    m_script->answer("MKD", "257 \"x\" made\r\n");
    m_control->setRemoteFileName(u"one"_s);
    m_control->setDeleteNow(true);
    m_control->setRemoteFileName(u"two"_s);
    m_control->setDeleteNow(true);
    m_control->setDirectoryName(u"x"_s);
    m_control->setCreateDirectoryNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(
        m_events, QStringList({u"FileDeleted"_s, u"FileDeleted"_s, u"DirectoryCreated"_s}), patience);
    QCOMPARE(m_script->commands().mid(5), QByteArrayList({"DELE one", "DELE two", "MKD x"}));
}

void TestSocketFTPClient::anErrorDoesNotStopTheQueue()
{
    QVERIFY(connectToScript());
    m_script->answer("DELE", "550 no such file\r\n");
    m_control->setRemoteFileName(u"one"_s);
    m_control->setDeleteNow(true);
    m_control->setReportDirectoryNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({u"Error 550"_s, u"/home"_s}), patience);
}

void TestSocketFTPClient::namesThatCannotBeSentAreErrors_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << QString();
    QTest::newRow("a line end") << u"x\r\nDELE y"_s;
    QTest::newRow("a line end of a server's") << u"x\uF00D\uF00ADELE y"_s;
    QTest::newRow("a NUL") << u"x\uF000"_s;
    QTest::newRow("half a character") << QString(QChar(0xD800));
}

void TestSocketFTPClient::namesThatCannotBeSentAreErrors()
{
    QFETCH(QString, name);
    QVERIFY(connectToScript());
    m_control->setRemoteFileName(name);
    m_control->setNewRemoteFileName(name);
    m_control->setLocalFileName(local(u"x"_s));
    m_control->setDirectoryName(name);
    m_control->setDeleteNow(true);
    m_control->setCreateDirectoryNow(true);
    m_control->setRemoveDirectoryNow(true);
    m_control->setRenameNow(true);
    m_control->setDownloadNow(true);
    m_control->setRemoteFileName(u"old"_s);
    m_control->setRenameNow(true);
    m_control->setReportDirectoryNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_events.count(u"Error 52"_s), 6, patience);
    QTRY_COMPARE_WITH_TIMEOUT(m_events.last(), u"/home"_s, patience);
    for (const QByteArray &command : m_script->commands())
        QVERIFY(!command.startsWith("DELE") && !command.startsWith("RNFR"));
}

void TestSocketFTPClient::theEmptyPathStaysWhereItIs()
{
    QVERIFY(connectToScript());
    m_control->setDirectoryPath(QString());
    m_control->setChangeDirectoryNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({u"/home"_s}), patience);
    QCOMPARE(m_script->commands().last(), QByteArray("PWD"));
}

void TestSocketFTPClient::aForeignPassiveAddressIsIgnored()
{
    QVERIFY(connectToScript());
    m_script->answer("EPSV", "500 what\r\n");
    const QByteArray port = QByteArray::number(m_script->dataPort() / 256) + ','
        + QByteArray::number(m_script->dataPort() % 256);
    m_script->answer("PASV", "227 ok (192,0,2,1," + port + ")\r\n");
    m_script->serve("drwxr-xr-x 1 u g 4096 Jan  5 2020 pub\r\n");
    QVERIFY(listing().startsWith(u"pub  /Folder"_s));
    QVERIFY(listing().startsWith(u"pub  /Folder"_s));
    // What was refused once is not asked for again.
    QCOMPARE(m_script->commands().count("EPSV"), 1);
}

void TestSocketFTPClient::aModeThatFailsOnceIsAskedForAgain()
{
    QVERIFY(connectToScript());
    const QByteArray port = QByteArray::number(m_script->dataPort() / 256) + ','
        + QByteArray::number(m_script->dataPort() % 256);
    m_script->answer("EPSV", "425 no port is free\r\n");
    m_script->answer("PASV", "227 ok (127,0,0,1," + port + ")\r\n");
    m_script->serve("drwxr-xr-x 1 u g 4096 Jan  5 2020 pub\r\n");
    QVERIFY(listing().startsWith(u"pub  /Folder"_s));
    QCOMPARE(m_script->commands().mid(6), QByteArrayList({"EPSV", "PASV", "LIST"}));
    m_script->answer("EPSV", "229 ok (|||" + QByteArray::number(m_script->dataPort()) + "|)\r\n");
    QVERIFY(listing().startsWith(u"pub  /Folder"_s));
    QCOMPARE(m_script->commands().mid(9), QByteArrayList({"TYPE A", "EPSV", "LIST"}));
}

void TestSocketFTPClient::theServerConnectsBackAsALastResort()
{
    QVERIFY(connectToScript());
    m_script->answer("EPSV", "500 what\r\n");
    m_script->answer("PASV", "500 what\r\n");
    QTcpSocket back;
    m_script->onCommand("PORT", [&] {
        const QByteArrayList numbers = m_script->commands().last().mid(5).split(',');
        back.connectToHost(QHostAddress::LocalHost,
                           static_cast<quint16>(numbers.value(4).toInt() * 256 + numbers.value(5).toInt()));
        m_script->send("200 ok\r\n");
    });
    m_script->onCommand("LIST", [&] {
        m_script->send("150 here\r\n");
        back.write("-rw-r--r-- 1 u g 5 Jan  5 2020 f\r\n");
        back.disconnectFromHost();
        m_script->send("226 done\r\n");
    });
    QVERIFY(listing().startsWith(u"f  /File"_s));
}

void TestSocketFTPClient::aMalformedPortIsAnError_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("port 0") << QByteArray("229 (|||0|)\r\n");
    QTest::newRow("port 70000") << QByteArray("229 (|||70000|)\r\n");
    QTest::newRow("nonsense") << QByteArray("229 ok\r\n");
    QTest::newRow("nobody there") << QByteArray("229 (|||1|)\r\n");
}

void TestSocketFTPClient::aMalformedPortIsAnError()
{
    QFETCH(QByteArray, reply);
    QVERIFY(connectToScript());
    m_script->answer("EPSV", reply);
    m_control->setListNow(true);
    m_control->setReportDirectoryNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({u"Error 1009"_s, u"/home"_s}), patience);
}

void TestSocketFTPClient::theFinalReplyMayComeBeforeTheData()
{
    QVERIFY(connectToScript());
    m_script->serve("abc", true);
    m_script->answer("RETR", "150 here\r\n125 still\r\n226 done\r\n");
    download(u"x"_s, u"x"_s);
    m_control->setReportDirectoryNow(true);
    QTRY_VERIFY_WITH_TIMEOUT(m_script->commands().contains("RETR x"), patience);
    m_script->endData();
    QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({u"Downloaded"_s, u"/home"_s}), patience);
    QCOMPARE(contents(u"x"_s), QByteArray("abc"));
}

void TestSocketFTPClient::anotherListingCommandIsTried()
{
    m_script->answer("FEAT", "211-F\r\n MLST size*;\r\n211 End\r\n");
    m_script->answer("MLSD", "500 what\r\n");
    m_script->answer("LIST", "502 no\r\n");
    m_script->answer("NLST", "150 here\r\n226 done\r\n");
    m_script->serve("a\r\nb\r\n");
    QVERIFY(connectToScript());
    QCOMPARE(listing().count(u"\r\n"_s), 2);
    for (const char *command : {"MLSD", "LIST", "NLST"})
        QCOMPARE(m_script->commands().count(command), 1);
}

void TestSocketFTPClient::aFailedDownloadLeavesTheOldFile_data()
{
    QTest::addColumn<QByteArray>("size");
    QTest::addColumn<QByteArray>("replies");
    QTest::addColumn<int>("number");
    QTest::newRow("the server fails at once") << QByteArray("213 3\r\n") << QByteArray("550 no\r\n") << 550;
    QTest::newRow("the server fails later")
        << QByteArray("213 3\r\n") << QByteArray("150 a\r\n451 disk\r\n") << 451;
    QTest::newRow("less than announced")
        << QByteArray("213 4\r\n") << QByteArray("150 a\r\n226 done\r\n") << 1010;
    QTest::newRow("more than announced")
        << QByteArray("213 2\r\n") << QByteArray("150 a\r\n226 done\r\n") << 1010;
}

void TestSocketFTPClient::aFailedDownloadLeavesTheOldFile()
{
    QFETCH(QByteArray, size);
    QFETCH(QByteArray, replies);
    put(u"x"_s, "old");
    QVERIFY(connectToScript());
    m_script->answer("SIZE", size);
    m_script->answer("RETR", replies);
    m_script->serve("abc");
    download(u"x"_s, u"x"_s);
    m_control->setReportDirectoryNow(true);
    QTEST(nextError(), "number");
    QTRY_COMPARE_WITH_TIMEOUT(m_events.last(), u"/home"_s, patience);
    QCOMPARE(contents(u"x"_s), QByteArray("old"));
    QCOMPARE(localFiles(), QStringList({u"x"_s}));
}

void TestSocketFTPClient::localFilesThatCannotBeUsedAreErrors_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("downloading");
    QTest::addColumn<int>("uploading");
    QTest::newRow("no name") << QString() << error::BadFileName << error::BadFileName;
    QTest::newRow("a folder") << u"d:\\"_s << error::PathFileAccess << error::PathFileAccess;
    QTest::newRow("a missing folder") << u"d:\\no\\x"_s << error::PathNotFound << error::PathNotFound;
    QTest::newRow("no such drive") << u"q:\\x"_s << error::DeviceUnavailable << error::DeviceUnavailable;
}

void TestSocketFTPClient::localFilesThatCannotBeUsedAreErrors()
{
    QFETCH(QString, name);
    QVERIFY(connectToScript());
    m_control->setRemoteFileName(u"x"_s);
    m_control->setLocalFileName(name);
    m_control->setDownloadNow(true);
    QTEST(nextError(), "downloading");
    m_control->setUploadNow(true);
    QTEST(nextError(), "uploading");
    m_control->setReportDirectoryNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_events.last(), u"/home"_s, patience);
    QVERIFY(!m_script->commands().contains("STOR x"));
}

void TestSocketFTPClient::progressIsReported()
{
    QVERIFY(connectToScript());
    QSignalSpy progress(m_control.get(), &FTPClient::TransferProgress);
    m_script->answer("SIZE", "213 3\r\n");
    m_script->serve("abc");
    download(u"x"_s, u"x"_s);
    QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({u"Downloaded"_s}), patience);
    QCOMPARE(progress.first(), QVariantList({qint64(3), qint64(3)}));
    QTRY_COMPARE_WITH_TIMEOUT(progress.last(), QVariantList({qint64(0), qint64(0)}), patience);
}

void TestSocketFTPClient::abortDuringADownload()
{
    put(u"x"_s, "old");
    QVERIFY(connectToScript());
    m_script->answer("RETR", "150 here\r\n");
    m_script->answer("ABOR", "426 cut\r\n226 aborted\r\n");
    m_script->serve("abc", true);
    QSignalSpy progress(m_control.get(), &FTPClient::TransferProgress);
    download(u"x"_s, u"x"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!progress.isEmpty(), patience);
    m_control->setReportDirectoryNow(true);
    m_control->setAbortNow(true);
    m_script->answer("DELE", "250 gone\r\n");
    m_control->setDeleteNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({u"FileDeleted"_s}), patience);
    QCOMPARE(m_script->commands().mid(m_script->commands().size() - 3),
             QByteArrayList({"ABOR", "PWD", "DELE x"}));
    QCOMPARE(contents(u"x"_s), QByteArray("old"));
    QCOMPARE(localFiles(), QStringList({u"x"_s}));
}

void TestSocketFTPClient::abortWhileConnecting()
{
    m_script->greeting.clear();
    m_control->setServerAddress(m_script->address());
    m_control->setConnectNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_script->connections(), 1, patience);
    m_control->setAbortNow(true);
    m_control->setListNow(true);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::NotConnected));
    m_script->greeting = "220 ready\r\n";
    QVERIFY(connectToScript());
}

void TestSocketFTPClient::abortEmptiesTheQueue()
{
    QVERIFY(connectToScript());
    m_script->answer("DELE", QByteArray());
    m_control->setRemoteFileName(u"x"_s);
    m_control->setDeleteNow(true);
    m_control->setListNow(true);
    m_control->setListNow(true);
    QTRY_VERIFY_WITH_TIMEOUT(m_script->commands().contains("DELE x"), patience);
    m_control->setAbortNow(true);
    m_control->setReportDirectoryNow(true);
    m_script->send("250 gone\r\n");
    QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({u"/home"_s}), patience);
}

void TestSocketFTPClient::abortOfAServerThatDoesNotAnswer()
{
    QVERIFY(connectToScript());
    m_script->answer("RETR", "150 here\r\n");
    m_script->answer("ABOR", QByteArray());
    m_script->serve("abc", true);
    QSignalSpy progress(m_control.get(), &FTPClient::TransferProgress);
    download(u"x"_s, u"x"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!progress.isEmpty(), patience);
    m_control->setAbortNow(true);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::TimedOut));
    m_control->setListNow(true);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::NotConnected));
}

void TestSocketFTPClient::closeSaysGoodbye()
{
    QVERIFY(connectToScript());
    m_control->setCloseNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_script->commands().last(), QByteArray("QUIT"), patience);
    m_control->setListNow(true);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::NotConnected));
    QCOMPARE(m_events.size(), 1);
}

void TestSocketFTPClient::theServersFarewellIsAnError()
{
    QVERIFY(connectToScript());
    m_script->send("421 Timeout\r\n");
    QCOMPARE(nextError(), 421);
    m_control->setListNow(true);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::NotConnected));
}

void TestSocketFTPClient::anUnsolicitedReplyEndsTheSession()
{
    QVERIFY(connectToScript());
    m_script->send("250 what was never asked\r\n");
    QCOMPARE(nextError(), 250);
    m_control->setDeleteNow(true);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::NotConnected));
}

void TestSocketFTPClient::aCutConnectionIsAnErrorAndNothingIsRetried()
{
    QVERIFY(connectToScript());
    m_script->onCommand("DELE", [this] { m_script->hangUp(); });
    m_control->setRemoteFileName(u"x"_s);
    m_control->setDeleteNow(true);
    m_control->setListNow(true);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::Lost));
    m_control->setReportDirectoryNow(true);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::NotConnected));
    QCOMPARE(m_script->connections(), 1);
    QCOMPARE(m_events.size(), 2);
}

void TestSocketFTPClient::eventsWaitForTheGate()
{
    QVERIFY(connectToScript());
    {
        const EventGate::Hold hold;
        m_control->setReportDirectoryNow(true);
        QTRY_VERIFY_WITH_TIMEOUT(m_script->commands().contains("PWD"), patience);
        QCOMPARE(m_events, QStringList());
    }
    QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({u"/home"_s}), patience);
}

void TestSocketFTPClient::destroyingEndsEverything()
{
    put(u"x"_s, "old");
    QVERIFY(connectToScript());
    m_script->answer("RETR", "150 here\r\n");
    m_script->serve("abc", true);
    QSignalSpy progress(m_control.get(), &FTPClient::TransferProgress);
    download(u"x"_s, u"x"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!progress.isEmpty(), patience);
    m_control.reset();
    QCOMPARE(contents(u"x"_s), QByteArray("old"));
    QCOMPARE(localFiles(), QStringList({u"x"_s}));
    QCOMPARE(m_events, QStringList());
}

void TestSocketFTPClient::lineEndsAcrossPieces()
{
    const QByteArray received = "a\r\nb\r\r\nc\nd\r";
    const QByteArray sent = "a\nb\r\n\nc";
    for (qsizetype piece = 1; piece < 5; ++piece) {
        LineEndsReceived in;
        LineEndsSent out;
        QByteArray converted;
        QByteArray wire;
        for (qsizetype at = 0; at < received.size(); at += piece)
            converted += in.convert(received.mid(at, piece));
        for (qsizetype at = 0; at < sent.size(); at += piece)
            wire += out.convert(sent.mid(at, piece));
        QCOMPARE(converted + in.rest(), QByteArray("a\nb\r\nc\nd\r"));
        QCOMPARE(wire, QByteArray("a\r\nb\r\n\r\nc"));
    }
}

QTEST_GUILESS_MAIN(TestSocketFTPClient)
#include "TestSocketFTPClient.moc"
