#include <cerrno>
#include <memory>
#include <optional>

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "platform/filesystem/AtomicFile.h"
#include "platform/filesystem/NativeFile.h"
#include "platform/filesystem/SystemFailure.h"
#include "tests/platform/filesystem/Restrictions.h"
#include "tests/runtime/FailureOf.h"

using namespace vandrel;
using namespace vandrel::test;

namespace {

constexpr auto shownName = u"c:\\letters\\a.rtf";

} // namespace

class TestAtomicFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void aNewFileGetsTheContentsAndTheUsersDefaultMode();
    void theOldFileIsUntouchedUntilCommit();
    void anUncommittedFileLeavesNothingBehind();
    void longContentsArriveWhole();
    void writingMayGoBack();
    void theModeOfTheReplacedFileIsKept_data();
    void theModeOfTheReplacedFileIsKept();
    void ownerAndGroupAreKeptWhenPrivileged();
    void extendedAttributesAreKept();
    void aChainOfLinksIsFollowedToItsTarget();
    void aLinkToNothingMakesItsTarget();
    void linksInACircleAreRefused();
    void aReadOnlyFileIsNotReplaced();
    void aReadOnlyFileIsNotReplacedByItsPrivilegedOwner();
    void aFolderWithoutTheRightToWriteIsRefused();
    void aFolderIsNoFile();
    void aPipeAndADeviceAreRefused();
    void aMissingFolderIsNamedAsSuch();
    void aFileInTheWayOfAFolderIsAMissingFolder();
    void aNameThatIsTooLongIsRefused();
    void aFullDiskLeavesTheOldFile();
    void namesNeedNotBeText();
    void everyFailureHasItsNumber_data();
    void everyFailureHasItsNumber();
    void aFailureNamesTheFileAndTheRemedy();
    void readingOpensTheOnlyOtherSpelling();
    void readingRefusesWhatIsNoPlainFile();

private:
    QByteArray path(const char *name) const { return m_folder->path().toUtf8() + '/' + name; }
    static void put(const QByteArray &path, const QByteArray &contents);
    static QByteArray get(const QByteArray &path);
    static void replace(const QByteArray &path, const QByteArray &contents);
    static mode_t modeOf(const QByteArray &path);
    QStringList names() const
    {
        return QDir(m_folder->path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestAtomicFile::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    // Others must be able to reach the folder when a test runs as another user.
    QCOMPARE(::chmod(m_folder->path().toUtf8().constData(), 0755), 0);
}

void TestAtomicFile::put(const QByteArray &path, const QByteArray &contents)
{
    QFile file(QString::fromUtf8(path));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), contents.size());
}

QByteArray TestAtomicFile::get(const QByteArray &path)
{
    return openForReading(path, QString::fromUtf16(shownName))->readAll();
}

void TestAtomicFile::replace(const QByteArray &path, const QByteArray &contents)
{
    AtomicFile file(path, QString::fromUtf16(shownName));
    file.begin();
    file.write(contents);
    file.commit();
}

mode_t TestAtomicFile::modeOf(const QByteArray &path)
{
    struct stat found = {};
    return ::stat(path.constData(), &found) == 0 ? found.st_mode & 07777 : 0;
}

void TestAtomicFile::aNewFileGetsTheContentsAndTheUsersDefaultMode()
{
    const mode_t before = ::umask(027);
    replace(path("a"), "new");
    ::umask(before);
    QCOMPARE(get(path("a")), QByteArray("new"));
    QCOMPARE(modeOf(path("a")), mode_t(0640));
    QCOMPARE(names(), QStringList{QStringLiteral("a")});
}

void TestAtomicFile::theOldFileIsUntouchedUntilCommit()
{
    put(path("a"), "old");
    AtomicFile file(path("a"), QString::fromUtf16(shownName));
    file.begin();
    file.write("new");
    QCOMPARE(get(path("a")), QByteArray("old"));
    file.commit();
    QCOMPARE(get(path("a")), QByteArray("new"));
    QVERIFY(!file.isOpen());
}

void TestAtomicFile::anUncommittedFileLeavesNothingBehind()
{
    put(path("a"), "old");
    {
        AtomicFile file(path("a"), QString::fromUtf16(shownName));
        file.begin();
        file.write(QByteArray(1'000'000, 'x'));
        QCOMPARE(names().size(), 2);
    }
    QCOMPARE(get(path("a")), QByteArray("old"));
    QCOMPARE(names(), QStringList{QStringLiteral("a")});
}

void TestAtomicFile::longContentsArriveWhole()
{
    QByteArray contents;
    for (int i = 0; i < 300'000; ++i)
        contents += QByteArray::number(i);
    {
        AtomicFile file(path("a"), QString::fromUtf16(shownName));
        file.begin();
        for (qsizetype i = 0; i < contents.size(); i += 777)
            file.write(contents.mid(i, 777));
        file.commit();
    }
    QCOMPARE(get(path("a")), contents);
}

void TestAtomicFile::writingMayGoBack()
{
    const QByteArray large(700'000, 'x');
    AtomicFile file(path("a"), QString::fromUtf16(shownName));
    file.begin();
    QCOMPARE(file.write("length ????"), 11);
    QCOMPARE(file.write(large), large.size());
    QCOMPARE(file.pos(), 700'011);
    QVERIFY(file.seek(7));
    QCOMPARE(file.write("7000"), 4);
    QCOMPARE(file.size(), 700'011);
    QVERIFY(file.seek(file.size()));
    QCOMPARE(file.write("end"), 3);
    QCOMPARE(file.size(), 700'014);
    file.commit();
    QCOMPARE(get(path("a")), "length 7000" + large + "end");
}

void TestAtomicFile::theModeOfTheReplacedFileIsKept_data()
{
    QTest::addColumn<mode_t>("mode");
    QTest::newRow("private") << mode_t(0600);
    QTest::newRow("shared with the group") << mode_t(0664);
    QTest::newRow("for everybody") << mode_t(0666);
    QTest::newRow("executable") << mode_t(0755);
    QTest::newRow("set group on execution") << mode_t(02755);
}

void TestAtomicFile::theModeOfTheReplacedFileIsKept()
{
    QFETCH(mode_t, mode);
    put(path("a"), "old");
    QCOMPARE(::chmod(path("a").constData(), mode), 0);
    replace(path("a"), "new");
    QCOMPARE(modeOf(path("a")), mode);
    QCOMPARE(get(path("a")), QByteArray("new"));
}

void TestAtomicFile::ownerAndGroupAreKeptWhenPrivileged()
{
    if (::geteuid() != 0)
        QSKIP("only the privileged can give files away");
    put(path("a"), "old");
    QCOMPARE(::chown(path("a").constData(), 12345, 23456), 0);
    QCOMPARE(::chmod(path("a").constData(), 0640), 0);
    replace(path("a"), "new");
    struct stat found = {};
    QCOMPARE(::stat(path("a").constData(), &found), 0);
    QCOMPARE(found.st_uid, uid_t(12345));
    QCOMPARE(found.st_gid, gid_t(23456));
    QCOMPARE(modeOf(path("a")), mode_t(0640));
}

void TestAtomicFile::extendedAttributesAreKept()
{
    put(path("a"), "old");
    if (::setxattr(path("a").constData(), "user.origin", "here", 4, 0) != 0)
        QSKIP("the file system has no extended attributes");
    replace(path("a"), "new");
    char value[8] = {};
    QCOMPARE(::getxattr(path("a").constData(), "user.origin", value, sizeof value), ssize_t(4));
    QCOMPARE(QByteArray(value), QByteArray("here"));
}

void TestAtomicFile::aChainOfLinksIsFollowedToItsTarget()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("sub")));
    put(path("sub/a"), "old");
    QCOMPARE(::symlink("sub/second", path("first").constData()), 0);
    QCOMPARE(::symlink("a", path("sub/second").constData()), 0);
    replace(path("first"), "new");
    QCOMPARE(get(path("sub/a")), QByteArray("new"));
    struct stat found = {};
    QCOMPARE(::lstat(path("first").constData(), &found), 0);
    QVERIFY(S_ISLNK(found.st_mode));
    QCOMPARE(::lstat(path("sub/second").constData(), &found), 0);
    QVERIFY(S_ISLNK(found.st_mode));
    QCOMPARE(names(), (QStringList{QStringLiteral("first"), QStringLiteral("sub")}));
}

void TestAtomicFile::aLinkToNothingMakesItsTarget()
{
    QCOMPARE(::symlink("later", path("link").constData()), 0);
    replace(path("link"), "new");
    QCOMPARE(get(path("later")), QByteArray("new"));
}

void TestAtomicFile::linksInACircleAreRefused()
{
    QCOMPARE(::symlink("b", path("a").constData()), 0);
    QCOMPARE(::symlink("a", path("b").constData()), 0);
    QCOMPARE(numberOf([this] { replace(path("a"), "new"); }), error::PathFileAccess);
}

void TestAtomicFile::aReadOnlyFileIsNotReplaced()
{
    // The folder is the other user's own, so that a rename alone would be allowed.
    QCOMPARE(::chmod(m_folder->path().toUtf8().constData(), 0777), 0);
    put(path("a"), "old");
    QCOMPARE(::chmod(path("a").constData(), 0444), 0);
    {
        const AsOrdinaryUser guard;
        QCOMPARE(numberOf([this] { replace(path("a"), "new"); }), error::PermissionDenied);
    }
    QCOMPARE(get(path("a")), QByteArray("old"));
    QCOMPARE(names(), QStringList{QStringLiteral("a")});
}

void TestAtomicFile::aReadOnlyFileIsNotReplacedByItsPrivilegedOwner()
{
    put(path("a"), "old");
    QCOMPARE(::chmod(path("a").constData(), 0444), 0);
    QCOMPARE(numberOf([this] { replace(path("a"), "new"); }), error::PermissionDenied);
    QCOMPARE(get(path("a")), QByteArray("old"));
}

void TestAtomicFile::aFolderWithoutTheRightToWriteIsRefused()
{
    QCOMPARE(::chmod(m_folder->path().toUtf8().constData(), 0555), 0);
    {
        const AsOrdinaryUser guard;
        QCOMPARE(numberOf([this] { replace(path("a"), "new"); }), error::PermissionDenied);
    }
    QCOMPARE(::chmod(m_folder->path().toUtf8().constData(), 0755), 0);
    QCOMPARE(names(), QStringList());
}

void TestAtomicFile::aFolderIsNoFile()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("a")));
    QCOMPARE(numberOf([this] { replace(path("a"), "new"); }), error::PathFileAccess);
    QCOMPARE(numberOf([this] { replace(path("a/"), "new"); }), error::PathFileAccess);
}

void TestAtomicFile::aPipeAndADeviceAreRefused()
{
    QCOMPARE(::mkfifo(path("pipe").constData(), 0600), 0);
    QCOMPARE(numberOf([this] { replace(path("pipe"), "new"); }), error::PathFileAccess);
    QCOMPARE(numberOf([] { replace("/dev/null", "new"); }), error::PathFileAccess);
    QCOMPARE(names(), QStringList{QStringLiteral("pipe")});
}

void TestAtomicFile::aMissingFolderIsNamedAsSuch()
{
    QCOMPARE(numberOf([this] { replace(path("none/a"), "new"); }), error::PathNotFound);
}

void TestAtomicFile::aFileInTheWayOfAFolderIsAMissingFolder()
{
    put(path("a"), "old");
    QCOMPARE(numberOf([this] { replace(path("a/b"), "new"); }), error::PathNotFound);
}

void TestAtomicFile::aNameThatIsTooLongIsRefused()
{
    const QByteArray name = path("") + QByteArray(300, 'n');
    QCOMPARE(numberOf([&] { replace(name, "new"); }), error::BadFileName);
}

void TestAtomicFile::aFullDiskLeavesTheOldFile()
{
    put(path("a"), "old");
    {
        const FileSizeLimit limit(300'000);
        AtomicFile file(path("a"), QString::fromUtf16(shownName));
        file.begin();
        for (int i = 0; i < 10; ++i)
            file.write(QByteArray(100'000, 'x'));
        QVERIFY(!file.isSound());
        QCOMPARE(numberOf([&] { file.commit(); }), error::DiskFull);
    }
    QCOMPARE(get(path("a")), QByteArray("old"));
    QCOMPARE(names(), QStringList{QStringLiteral("a")});
}

void TestAtomicFile::namesNeedNotBeText()
{
    replace(path("\xFF\xFE.rtf"), "new");
    QCOMPARE(get(path("\xFF\xFE.rtf")), QByteArray("new"));
    ::unlink(path("\xFF\xFE.rtf").constData());
}

void TestAtomicFile::everyFailureHasItsNumber_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("reading");
    QTest::addColumn<int>("writing");
    QTest::newRow("no space") << ENOSPC << error::DiskFull << error::DiskFull;
    QTest::newRow("quota") << EDQUOT << error::DiskFull << error::DiskFull;
    QTest::newRow("no right") << EACCES << error::PermissionDenied << error::PermissionDenied;
    QTest::newRow("not permitted") << EPERM << error::PermissionDenied << error::PermissionDenied;
    QTest::newRow("read-only drive") << EROFS << error::PermissionDenied << error::PermissionDenied;
    QTest::newRow("missing") << ENOENT << error::FileNotFound << error::PathNotFound;
    QTest::newRow("no folder") << ENOTDIR << error::PathNotFound << error::PathNotFound;
    QTest::newRow("folder") << EISDIR << error::PathFileAccess << error::PathFileAccess;
    QTest::newRow("circle") << ELOOP << error::PathFileAccess << error::PathFileAccess;
    QTest::newRow("damaged disk") << EIO << error::DeviceIoError << error::DeviceIoError;
    QTest::newRow("too long") << ENAMETOOLONG << error::BadFileName << error::BadFileName;
    QTest::newRow("lost mount") << ESTALE << error::DiskNotReady << error::DiskNotReady;
    QTest::newRow("unheard of") << 9999 << error::DeviceIoError << error::DeviceIoError;
}

void TestAtomicFile::everyFailureHasItsNumber()
{
    QFETCH(int, code);
    QTEST(systemFailure(code, FileAction::Reading, {}).number(), "reading");
    QTEST(systemFailure(code, FileAction::Writing, {}).number(), "writing");
}

void TestAtomicFile::aFailureNamesTheFileAndTheRemedy()
{
    QCOMPARE(
        systemFailure(ENOSPC, FileAction::Writing, QString::fromUtf16(shownName)).text(),
        QStringLiteral("Disk full. \"c:\\letters\\a.rtf\" could not be written, and what was saved there "
                       "before is unchanged. Free some space, or choose another drive."));
}

void TestAtomicFile::readingOpensTheOnlyOtherSpelling()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("Letters")));
    put(path("Letters/Readme.RTF"), "text");
    QCOMPARE(get(path("letters/README.rtf")), QByteArray("text"));
    put(path("Letters/readme.rtf"), "other");
    QCOMPARE(get(path("letters/readme.rtf")), QByteArray("other"));
    QCOMPARE(numberOf([this] { get(path("letters/README.rtf")); }), error::FileNotFound);
    QCOMPARE(numberOf([this] { get(path("nowhere/README.rtf")); }), error::PathNotFound);
}

void TestAtomicFile::readingRefusesWhatIsNoPlainFile()
{
    QCOMPARE(::mkfifo(path("pipe").constData(), 0600), 0);
    QCOMPARE(numberOf([this] { get(path("pipe")); }), error::PathFileAccess);
    QCOMPARE(numberOf([this] { get(path("")); }), error::PathFileAccess);
    put(path("secret"), "x");
    QCOMPARE(::chmod(path("secret").constData(), 0), 0);
    const AsOrdinaryUser guard;
    QCOMPARE(numberOf([this] { get(path("secret")); }), error::PermissionDenied);
}

QTEST_GUILESS_MAIN(TestAtomicFile)
#include "TestAtomicFile.moc"
