// The FTP control where the local side fails in the middle of a transfer, and with names that no honest server sends.

#include <QFileDevice>
#include <QSignalSpy>
#include <QTest>

#include "runtime/RuntimeError.h"
#include "tests/platform/filesystem/Restrictions.h"
#include "tests/platform/ftp/FtpClientTest.h"
#include "tests/platform/ftp/ScriptedFtpServer.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

class TestFtpHostile : public FtpClientTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void aFullDiskEndsADownload_data();
    void aFullDiskEndsADownload();
    void aReadOnlyTargetIsRefusedBeforehand_data();
    void aReadOnlyTargetIsRefusedBeforehand();
    void aFolderThatLosesItsRightsLeavesTheOldFile();

    void dataAfterTheFinalReplyBelongsToTheFile();
    void aSecondFinalReplyEndsTheSession();

    void hostileNamesAreHarmless_data();
    void hostileNamesAreHarmless();
    void anEndlessNameIsPassedOver_data();
    void anEndlessNameIsPassedOver();
    void anEndlessListingIsGivenUp();

private:
    /// The name of a listing's first line as the window picks it: up to two characters before the "/".
    static QString picked(const QString &listing);
    /// The session goes on as if nothing had happened.
    void isStillConnected();
    void theOldFileIsAsItWas() const;

    std::unique_ptr<ScriptedFtpServer> m_script;
};

void TestFtpHostile::init()
{
    setUp();
    m_script = std::make_unique<ScriptedFtpServer>();
    m_script->answer("ABOR", "426 cut\r\n226 aborted\r\n");
    m_script->answer("DELE", "250 gone\r\n");
    put(u"x"_s, "old");
}

void TestFtpHostile::cleanup()
{
    tearDown();
    m_script.reset();
}

void TestFtpHostile::isStillConnected()
{
    m_events.clear();
    m_control->setReportDirectoryNow(true);
    QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({u"/home"_s}), patience);
    QCOMPARE(m_script->connections(), 1);
}

void TestFtpHostile::theOldFileIsAsItWas() const
{
    QCOMPARE(contents(u"x"_s), QByteArray("old"));
    QCOMPARE(localFiles(), QStringList({u"x"_s}));
}

// --- The local side ---------------------------------------------------------------------------------------------

void TestFtpHostile::aFullDiskEndsADownload_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<bool>("isHeld");
    QTest::newRow("while the server goes on sending") << u"binary"_s << true;
    QTest::newRow("when the server has sent all") << u"binary"_s << false;
    QTest::newRow("as text") << u"ascii"_s << true;
}

void TestFtpHostile::aFullDiskEndsADownload()
{
    QFETCH(QString, type);
    QFETCH(bool, isHeld);
    constexpr qint64 room = 300'000;
    QVERIFY(connectTo(m_script->address()));
    m_control->setTransferType(type);
    if (isHeld)
        m_script->answer("RETR", "150 here\r\n");
    m_script->serve(QByteArray(4 * room, 'x'), isHeld);
    {
        const FileSizeLimit limit(room);
        download(u"x"_s, u"x"_s);
        QCOMPARE(nextError(), error::DiskFull);
    }
    QVERIFY2(errorText().contains(local(u"x"_s)), qPrintable(errorText()));
    QCOMPARE(m_events, QStringList({u"Error 61"_s}));
    theOldFileIsAsItWas();
    isStillConnected();
    m_script->answer("RETR", "150 here\r\n226 done\r\n");
    m_script->serve("new");
    download(u"x"_s, u"x"_s);
    QTRY_COMPARE_WITH_TIMEOUT(m_events.last(), u"Downloaded"_s, patience);
    QCOMPARE(contents(u"x"_s), QByteArray("new"));
}

void TestFtpHostile::aReadOnlyTargetIsRefusedBeforehand_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<int>("number");
    // No right helps there, not even root's.
    QTest::newRow("in a folder of the system's own") << u"s:\\vandrel"_s << error::PermissionDenied;
    QTest::newRow("below a file") << local(u"x\\y"_s) << error::PathNotFound;
    QTest::newRow("a file that nobody may write") << local(u"x"_s) << error::PermissionDenied;
}

void TestFtpHostile::aReadOnlyTargetIsRefusedBeforehand()
{
    QFETCH(QString, target);
    QFETCH(int, number);
    const QString system = u"/sys/kernel"_s;
    if (target.startsWith(u's') && !QDir(system).exists())
        QSKIP("this system has no such folder");
    m_drives->setDrive('s', QFile::encodeName(system));
    QVERIFY(QFile::setPermissions(m_local.filePath(u"x"_s), QFileDevice::ReadOwner));
    QVERIFY(connectTo(m_script->address()));
    m_control->setRemoteFileName(u"r"_s);
    m_control->setLocalFileName(target);
    m_control->setDownloadNow(true);
    QCOMPARE(nextError(), number);
    QVERIFY2(errorText().contains(target), qPrintable(errorText()));
    theOldFileIsAsItWas();
    isStillConnected();
    // Nothing was asked for that could not have been kept.
    QVERIFY(!m_script->commands().contains("RETR r"));
}

void TestFtpHostile::aFolderThatLosesItsRightsLeavesTheOldFile()
{
    QVERIFY(connectTo(m_script->address()));
    m_script->answer("RETR", "150 here\r\n");
    m_script->serve("abc", true);
    const auto everybody
        = QFileDevice::ReadOwner | QFileDevice::ExeOwner | QFileDevice::ReadOther | QFileDevice::ExeOther;
    // Whoever the test is, the folder is not to be written by the user that the rest of it is.
    QVERIFY(QFile::setPermissions(m_folder->path(), everybody | QFileDevice::WriteOwner));
    QSignalSpy progress(m_control.get(), &FTPClient::TransferProgress);
    download(u"x"_s, u"x"_s);
    QTRY_VERIFY_WITH_TIMEOUT(!progress.isEmpty(), patience);
    QVERIFY(QFile::setPermissions(m_local.path(), everybody));
    {
        const AsOrdinaryUser user;
        m_script->send("226 done\r\n");
        m_script->endData();
        QCOMPARE(nextError(), error::PermissionDenied);
    }
    QVERIFY(QFile::setPermissions(m_local.path(), everybody | QFileDevice::WriteOwner));
    QCOMPARE(contents(u"x"_s), QByteArray("old"));
    isStillConnected();
}

// --- Replies and data out of step -------------------------------------------------------------------------------

void TestFtpHostile::dataAfterTheFinalReplyBelongsToTheFile()
{
    QVERIFY(connectTo(m_script->address()));
    m_script->serve("abc", true);
    m_script->answer("SIZE", "213 6\r\n");
    QSignalSpy progress(m_control.get(), &FTPClient::TransferProgress);
    download(u"x"_s, u"x"_s);
    // The final reply has come with the command's first one; the data is half of what was announced.
    QTRY_VERIFY_WITH_TIMEOUT(!progress.isEmpty(), patience);
    QCOMPARE(contents(u"x"_s), QByteArray("old"));
    m_script->sendData("def");
    m_script->endData();
    QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({u"Downloaded"_s}), patience);
    QCOMPARE(contents(u"x"_s), QByteArray("abcdef"));
    isStillConnected();
}

void TestFtpHostile::aSecondFinalReplyEndsTheSession()
{
    QVERIFY(connectTo(m_script->address()));
    m_script->serve("abc");
    m_script->answer("RETR", "150 here\r\n226 done\r\n226 done again\r\n");
    download(u"x"_s, u"x"_s);
    QCOMPARE(nextError(), 226);
    m_control->setListNow(true);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::NotConnected));
    QVERIFY(!m_script->commands().contains("LIST"));
}

// --- Names ------------------------------------------------------------------------------------------------------

QString TestFtpHostile::picked(const QString &listing)
{
    const qsizetype slash = listing.indexOf(u'/');
    return slash < 2 ? QString() : listing.left(slash - 2);
}

void TestFtpHostile::hostileNamesAreHarmless_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("canBeSent");
    QTest::newRow("a path upwards") << QByteArray("../x") << true;
    QTest::newRow("an absolute path") << QByteArray("/etc/passwd") << true;
    QTest::newRow("a path of the other kind") << QByteArray("..\\x") << true;
    QTest::newRow("an option") << QByteArray("-rf *") << true;
    QTest::newRow("an address") << QByteArray("ftp://x/y") << true;
    QTest::newRow("markup") << QByteArray("<img src='file:///etc/passwd'>") << true;
    QTest::newRow("no text") << QByteArray("a\xFF\xFE\x80") << true;
    QTest::newRow("half a character") << QByteArray("a\xC3") << true;
    QTest::newRow("private characters") << QByteArray("a\xEF\x80\x8D\xEF\x80\x8A"
                                                      "b")
                                        << true;
    QTest::newRow("a tab and an escape") << QByteArray("a\t\x1B[2Jb") << true;
    QTest::newRow("a carriage return") << QByteArray("a\rDELE b") << false;
    QTest::newRow("a carriage return at the end") << QByteArray("a\r") << false;
    QTest::newRow("a NUL") << QByteArray("a\0b", 3) << false;
    QTest::newRow("16,000 octets") << QByteArray(16'000, 'x') << true;
}

void TestFtpHostile::hostileNamesAreHarmless()
{
    QFETCH(QByteArray, name);
    QFETCH(bool, canBeSent);
    const std::pair<QByteArray, QByteArray> forms[] = {
        {"LIST", "-rw-r--r-- 1 u g 5 Jan  5 2020 "},
        {"MLSD", "type=file;size=5; "},
        {"NLST", ""},
    };
    for (const auto &[command, facts] : forms) {
        m_script->answer("FEAT", command == "MLSD" ? "211-F\r\n MLST size*;\r\n211 End\r\n" : "502 no\r\n");
        m_script->answer("LIST", command == "NLST" ? "502 no\r\n" : "150 here\r\n226 done\r\n");
        for (const char *each : {"MLSD", "NLST"})
            m_script->answer(each, "150 here\r\n226 done\r\n");
        m_script->serve(facts + name + "\r\n");
        QVERIFY(connectTo(m_script->address()));
        const QString list = listing();
        // One entry is one line, whatever its name holds.
        QCOMPARE(list.count(u'\r'), 1);
        QCOMPARE(list.count(u'\n'), 1);
        QVERIFY(list.endsWith(u"\r\n"_s));
        QVERIFY(!list.contains(QChar::Null));
        m_events.clear();
        m_control->setRemoteFileName(picked(list));
        m_control->setDeleteNow(true);
        QTRY_COMPARE_WITH_TIMEOUT(m_events, QStringList({canBeSent ? u"FileDeleted"_s : u"Error 52"_s}),
                                  patience);
        const QByteArray sent = m_script->commands().last();
        if (canBeSent)
            QCOMPARE(sent, "DELE " + name);
        else
            QVERIFY(!sent.startsWith("DELE"));
    }
    theOldFileIsAsItWas();
}

void TestFtpHostile::anEndlessNameIsPassedOver_data()
{
    QTest::addColumn<QByteArray>("features");
    QTest::addColumn<QByteArray>("facts");
    QTest::newRow("LIST") << QByteArray("502 no\r\n") << QByteArray("-rw-r--r-- 1 u g 5 Jan  5 2020 ");
    QTest::newRow("MLSD") << QByteArray("211-F\r\n MLST size*;\r\n211 End\r\n")
                          << QByteArray("type=file;size=5; ");
}

void TestFtpHostile::anEndlessNameIsPassedOver()
{
    QFETCH(QByteArray, features);
    QFETCH(QByteArray, facts);
    m_script->answer("FEAT", features);
    m_script->answer("MLSD", "150 here\r\n226 done\r\n");
    m_script->serve(facts + "one\r\n" + facts + QByteArray(1'000'000, 'x') + "\r\n" + facts + "two\r\n");
    QVERIFY(connectTo(m_script->address()));
    const QStringList lines = listing().split(u"\r\n"_s, Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 2);
    QVERIFY(lines.at(0).startsWith(u"one  /File"_s));
    QVERIFY(lines.at(1).startsWith(u"two  /File"_s));
}

void TestFtpHostile::anEndlessListingIsGivenUp()
{
    QVERIFY(connectTo(m_script->address()));
    m_script->answer("LIST", "150 here\r\n");
    m_script->serve((QByteArray(16'000, 'x') + "\r\n").repeated(5'000), true);
    m_control->setListNow(true);
    QCOMPARE(nextError(), static_cast<int>(FtpProblem::TooLarge));
    QCOMPARE(m_events, QStringList({u"Error 1011"_s}));
    isStillConnected();
}

QTEST_GUILESS_MAIN(TestFtpHostile)
#include "TestFtpHostile.moc"
