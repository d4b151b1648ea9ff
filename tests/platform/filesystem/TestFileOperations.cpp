#include <array>
#include <atomic>
#include <cerrno>
#include <memory>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QProgressDialog>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QTimer>

#include "platform/filesystem/CopyAhead.h"
#include "platform/filesystem/FileBatch.h"
#include "platform/filesystem/FileCopier.h"
#include "platform/filesystem/NativeFileOperations.h"
#include "runtime/EventGate.h"
#include "tests/platform/filesystem/Restrictions.h"
#include "tests/platform/filesystem/SmallDisk.h"
#include "tests/runtime/FailureOf.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

namespace {

const CopyProgress goOn = [](qint64, qint64) { return true; };

} // namespace

/// Copying and deleting files, with everything that can come between.
class TestFileOperations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void aCopyHasTheContents_data();
    void aCopyHasTheContents();
    void timesAndPermissionsAreKept();
    void extendedAttributesAreKept();
    void whatALinkLeadsToIsCopied();
    void aTargetThatIsALinkStaysOne();
    void anotherSpellingIsFound();
    void madeUpFilesAreReadToTheirEnd();
    void holesStayHoles();
    void aFileIsNotCopiedOntoItself();
    void neitherThroughALinkNorUnderAnotherName();
    void aFolderIsNoFile();
    void aMissingSourceIsNamed();
    void aReadOnlyTargetStays();
    void aFolderThatMayNotBeWritten();
    void aReadOnlyDisk();
    void aNameThatIsTooLong();
    void aFullDiskLeavesTheOldFile_data();
    void aFullDiskLeavesTheOldFile();
    void aSizeLimitLeavesTheOldFile_data();
    void aSizeLimitLeavesTheOldFile();
    void aSourceThatChangesIsNotCopied_data();
    void aSourceThatChangesIsNotCopied();
    void aSourceThatVanishesIsCopiedAllTheSame();
    void aStoppedCopyLeavesNothing();

    void deletingALinkLeavesItsTarget();
    void aProtectedFileIsNotDeleted();
    void aFolderIsNotDeleted();
    void whatIsMissingCannotBeDeleted();

    void theCurrentFolderIsThatOfTheDriveView();
    void aBatchIsDoneInOrderAndEndsAtAFailure();
    void aBatchEndsWhereTheDiskIsFull();
    void aBatchEndsAtAFileThatHasVanished();
    void manyFilesAreCopiedWhole();
    void manyOldFilesAreReplaced();
    void amongManyTheFirstFailureEndsTheBatch();
    void manyFilesFillADiskAsFewDo();
    void whatAnEarlierCopyReplacedIsCopiedAnew();
    void copiesAreMadeAheadWithinBounds();
    void nothingIsMadeBeyondWhatIsLeftToTheBatch();
    void whatWasDroppedIsMadeAnew();
    void aShortBatchShowsNoBox();
    void aLongBatchTellsItsProgress();
    void cancelEndsTheBatch();
    void aFileSystemThatDoesNotAnswerIsLeft();
    void eventsWaitForTheBatch();

private:
    QByteArray path(const char *name) const { return m_folder->path().toUtf8() + '/' + name; }
    NamedFile file(const char *name) const { return {path(name), u"c:\\"_s + QString::fromLatin1(name)}; }
    bool copy(const char *source, const char *target) const
    {
        return copyFile(file(source), file(target), goOn);
    }
    static void put(const QByteArray &path, const QByteArray &contents);
    static QByteArray get(const QByteArray &path);
    QStringList names(const char *folder = ".") const
    {
        return QDir(QString::fromUtf8(path(folder)))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    struct stat stateOf(const char *name) const
    {
        struct stat state = {};
        ::stat(path(name).constData(), &state);
        return state;
    }

    /// A batch from the folder "from" to the folder "to", both of which are made, of files by the names that numbers are.
    std::vector<FileOperations::Copy> manyCopies(int count);
    FileBatchResult copyAll(const std::vector<FileOperations::Copy> &copies);

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestFileOperations::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    ::chmod(m_folder->path().toUtf8().constData(), 0777);
}

void TestFileOperations::put(const QByteArray &path, const QByteArray &contents)
{
    QFile file(QString::fromUtf8(path));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), contents.size());
}

QByteArray TestFileOperations::get(const QByteArray &path)
{
    QFile file(QString::fromUtf8(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TestFileOperations::aCopyHasTheContents_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {0, 1, 65536, 65537, 262144, 262145, 9'000'000})
        QTest::addRow("%d", size) << size;
}

void TestFileOperations::aCopyHasTheContents()
{
    QFETCH(int, size);
    QByteArray contents(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i)
        contents[i] = static_cast<char>(i * 31 + i / 1000);
    put(path("a"), contents);
    QVERIFY(copy("a", "b"));
    QCOMPARE(get(path("b")), contents);
    QCOMPARE(names(), (QStringList{u"a"_s, u"b"_s}));
}

void TestFileOperations::timesAndPermissionsAreKept()
{
    put(path("a"), "program");
    QCOMPARE(::chmod(path("a").constData(), 0751), 0);
    const std::array<timespec, 2> times{timespec{1'000'000'000, 123}, timespec{900'000'000, 456'789}};
    QCOMPARE(::utimensat(AT_FDCWD, path("a").constData(), times.data(), 0), 0);
    QVERIFY(copy("a", "b"));
    const struct stat state = stateOf("b");
    QCOMPARE(state.st_mode & 07777U, 0751U);
    QCOMPARE(state.st_mtim.tv_sec, time_t(900'000'000));
    QCOMPARE(state.st_mtim.tv_nsec, 456'789L);
}

void TestFileOperations::extendedAttributesAreKept()
{
    put(path("a"), "text");
    if (::setxattr(path("a").constData(), "user.origin", "net", 3, 0) != 0)
        QSKIP("this file system has no extended attributes");
    QVERIFY(copy("a", "b"));
    QByteArray value(16, '\0');
    QCOMPARE(::getxattr(path("b").constData(), "user.origin", value.data(), 16), ssize_t(3));
    QVERIFY(value.startsWith("net"));
}

void TestFileOperations::whatALinkLeadsToIsCopied()
{
    put(path("a"), "text");
    QCOMPARE(::symlink("a", path("link").constData()), 0);
    QVERIFY(copy("link", "b"));
    struct stat state = {};
    QCOMPARE(::lstat(path("b").constData(), &state), 0);
    QVERIFY(S_ISREG(state.st_mode));
    QCOMPARE(get(path("b")), QByteArray("text"));
}

void TestFileOperations::aTargetThatIsALinkStaysOne()
{
    put(path("a"), "new");
    put(path("b"), "old");
    QCOMPARE(::symlink("b", path("link").constData()), 0);
    QVERIFY(copy("a", "link"));
    struct stat state = {};
    QCOMPARE(::lstat(path("link").constData(), &state), 0);
    QVERIFY(S_ISLNK(state.st_mode));
    QCOMPARE(get(path("b")), QByteArray("new"));
}

void TestFileOperations::anotherSpellingIsFound()
{
    put(path("Readme.TXT"), "text");
    QVERIFY(copy("readme.txt", "b"));
    QCOMPARE(get(path("b")), QByteArray("text"));
}

void TestFileOperations::madeUpFilesAreReadToTheirEnd()
{
    QVERIFY(copyFile({"/proc/self/mounts", u"z:\\proc\\self\\mounts"_s}, file("b"), goOn));
    QVERIFY(!get(path("b")).isEmpty());
}

void TestFileOperations::holesStayHoles()
{
    constexpr off_t size = 3LL * 1024 * 1024 * 1024;
    constexpr off_t middle = size / 2;
    const int out = ::open(path("a").constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    QVERIFY(out >= 0);
    const bool isWritten = ::pwrite(out, "begin", 5, 0) == 5 && ::pwrite(out, "middle", 6, middle) == 6
        && ::ftruncate(out, size) == 0;
    ::close(out);
    QVERIFY(isWritten);
    QVERIFY(copy("a", "b"));
    const struct stat state = stateOf("b");
    QCOMPARE(state.st_size, size);
    QVERIFY(state.st_blocks * 512 < 64 * 1024 * 1024);
    QFile in(QString::fromUtf8(path("b")));
    QVERIFY(in.open(QIODevice::ReadOnly));
    QCOMPARE(in.read(5), QByteArray("begin"));
    QVERIFY(in.seek(middle));
    QCOMPARE(in.read(7), QByteArray("middle\0", 7));
}

void TestFileOperations::aFileIsNotCopiedOntoItself()
{
    put(path("a"), "text");
    const auto failure = failureOf([this] { copy("a", "a"); });
    QVERIFY(failure);
    QCOMPARE(failure->number(), error::PermissionDenied);
    QVERIFY(failure->text().contains(u"onto itself"));
    QCOMPARE(get(path("a")), QByteArray("text"));
    QCOMPARE(names(), QStringList{u"a"_s});
}

void TestFileOperations::neitherThroughALinkNorUnderAnotherName()
{
    put(path("a"), "text");
    QCOMPARE(::symlink("a", path("link").constData()), 0);
    QCOMPARE(::link(path("a").constData(), path("twin").constData()), 0);
    QCOMPARE(numberOf([this] { copy("a", "link"); }), error::PermissionDenied);
    QCOMPARE(numberOf([this] { copy("link", "a"); }), error::PermissionDenied);
    QCOMPARE(numberOf([this] { copy("a", "twin"); }), error::PermissionDenied);
    QCOMPARE(get(path("a")), QByteArray("text"));
}

void TestFileOperations::aFolderIsNoFile()
{
    put(path("a"), "text");
    QVERIFY(QDir(m_folder->path()).mkdir(u"folder"_s));
    QCOMPARE(numberOf([this] { copy("folder", "b"); }), error::PathFileAccess);
    QCOMPARE(numberOf([this] { copy("a", "folder"); }), error::PathFileAccess);
    QCOMPARE(numberOf([this] {
                 copyFile({"/dev/zero", u"z:\\dev\\zero"_s}, file("b"), goOn);
             }),
             error::PathFileAccess);
    QCOMPARE(names(), (QStringList{u"a"_s, u"folder"_s}));
}

void TestFileOperations::aMissingSourceIsNamed()
{
    put(path("b"), "old");
    const auto failure = failureOf([this] { copy("gone", "b"); });
    QVERIFY(failure);
    QCOMPARE(failure->number(), error::FileNotFound);
    QVERIFY(failure->text().contains(u"c:\\gone"));
    QCOMPARE(get(path("b")), QByteArray("old"));
    QCOMPARE(numberOf([this] { copy("b", "nowhere/b"); }), error::PathNotFound);
}

void TestFileOperations::aReadOnlyTargetStays()
{
    put(path("a"), "new");
    put(path("b"), "old");
    QCOMPARE(::chmod(path("b").constData(), 0444), 0);
    QCOMPARE(numberOf([this] { copy("a", "b"); }), error::PermissionDenied);
    QCOMPARE(get(path("b")), QByteArray("old"));
}

void TestFileOperations::aFolderThatMayNotBeWritten()
{
    put(path("a"), "new");
    QCOMPARE(::mkdir(path("folder").constData(), 0555), 0);
    const AsOrdinaryUser user;
    QCOMPARE(numberOf([this] { copy("a", "folder/a"); }), error::PermissionDenied);
}

void TestFileOperations::aReadOnlyDisk()
{
    QCOMPARE(::mkdir(path("disk").constData(), 0777), 0);
    const SmallDisk disk(path("disk"));
    if (!disk.isThere() || !disk.protect())
        QSKIP("no file system can be mounted here");
    put(path("a"), "new");
    QCOMPARE(numberOf([this] { copy("a", "disk/a"); }), error::PermissionDenied);
}

void TestFileOperations::aNameThatIsTooLong()
{
    put(path("a"), "new");
    const QByteArray longName(300, 'x');
    QCOMPARE(numberOf([&] { copy("a", longName.constData()); }), error::BadFileName);
    QCOMPARE(names(), QStringList{u"a"_s});
}

void TestFileOperations::aFullDiskLeavesTheOldFile_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("many small pieces") << 200'000;
    QTest::newRow("at once") << 5'000'000;
}

void TestFileOperations::aFullDiskLeavesTheOldFile()
{
    QFETCH(int, size);
    QCOMPARE(::mkdir(path("disk").constData(), 0777), 0);
    const SmallDisk disk(path("disk"), "size=128k");
    if (!disk.isThere())
        QSKIP("no file system can be mounted here");
    put(path("a"), QByteArray(size, 'x'));
    put(path("disk/a"), "old");
    QCOMPARE(numberOf([this] { copy("a", "disk/a"); }), error::DiskFull);
    QCOMPARE(get(path("disk/a")), QByteArray("old"));
    QCOMPARE(names("disk"), QStringList{u"a"_s});
}

void TestFileOperations::aSizeLimitLeavesTheOldFile_data()
{
    aFullDiskLeavesTheOldFile_data();
}

void TestFileOperations::aSizeLimitLeavesTheOldFile()
{
    QFETCH(int, size);
    put(path("a"), QByteArray(size, 'x'));
    put(path("b"), "old");
    {
        const FileSizeLimit limit(100'000);
        QCOMPARE(numberOf([this] { copy("a", "b"); }), error::DiskFull);
    }
    QCOMPARE(get(path("b")), QByteArray("old"));
    QCOMPARE(names(), (QStringList{u"a"_s, u"b"_s}));
}

void TestFileOperations::aSourceThatChangesIsNotCopied_data()
{
    QTest::addColumn<int>("newSize");
    QTest::newRow("grows") << 9'000'000;
    QTest::newRow("shrinks") << 1000;
}

void TestFileOperations::aSourceThatChangesIsNotCopied()
{
    QFETCH(int, newSize);
    put(path("a"), QByteArray(200'000, 'x'));
    put(path("b"), "old");
    bool isChanged = false;
    const CopyProgress change = [&](qint64, qint64) {
        if (!std::exchange(isChanged, true) && ::truncate(path("a").constData(), newSize) != 0)
            qFatal("the file cannot be changed");
        return true;
    };
    const auto failure = failureOf([&] { copyFile(file("a"), file("b"), change); });
    QVERIFY(failure);
    QCOMPARE(failure->number(), error::PathFileAccess);
    QVERIFY(failure->text().contains(u"changed"));
    QCOMPARE(get(path("b")), QByteArray("old"));
    QCOMPARE(names(), (QStringList{u"a"_s, u"b"_s}));
}

// Its octets are there as long as somebody reads them.
void TestFileOperations::aSourceThatVanishesIsCopiedAllTheSame()
{
    const QByteArray contents(200'000, 'x');
    put(path("a"), contents);
    const CopyProgress vanish = [&](qint64, qint64) {
        ::unlink(path("a").constData());
        return true;
    };
    QVERIFY(copyFile(file("a"), file("b"), vanish));
    QCOMPARE(get(path("b")), contents);
}

void TestFileOperations::aStoppedCopyLeavesNothing()
{
    put(path("a"), QByteArray(200'000, 'x'));
    put(path("b"), "old");
    QVERIFY(!copyFile(file("a"), file("b"), [](qint64 copied, qint64 size) { return copied > size; }));
    QCOMPARE(get(path("b")), QByteArray("old"));
    QCOMPARE(names(), (QStringList{u"a"_s, u"b"_s}));
}

void TestFileOperations::deletingALinkLeavesItsTarget()
{
    put(path("a"), "text");
    QCOMPARE(::symlink("a", path("link").constData()), 0);
    deleteFile(file("link"));
    QCOMPARE(names(), QStringList{u"a"_s});
}

void TestFileOperations::aProtectedFileIsNotDeleted()
{
    put(path("a"), "text");
    QCOMPARE(::chmod(path("a").constData(), 0444), 0);
    const auto failure = failureOf([this] { deleteFile(file("a")); });
    QVERIFY(failure);
    QCOMPARE(failure->number(), error::PermissionDenied);
    QVERIFY(failure->text().contains(u"could not be deleted"));
    QCOMPARE(names(), QStringList{u"a"_s});
}

void TestFileOperations::aFolderIsNotDeleted()
{
    QVERIFY(QDir(m_folder->path()).mkdir(u"folder"_s));
    QCOMPARE(numberOf([this] { deleteFile(file("folder")); }), error::PathFileAccess);
    QCOMPARE(names(), QStringList{u"folder"_s});
}

void TestFileOperations::whatIsMissingCannotBeDeleted()
{
    QCOMPARE(numberOf([this] { deleteFile(file("gone")); }), error::FileNotFound);
}

void TestFileOperations::theCurrentFolderIsThatOfTheDriveView()
{
    const auto view = std::make_shared<DriveView>();
    view->setDrive('c', m_folder->path().toUtf8());
    view->setDrive('d', "/somewhere");
    NativeFileOperations operations(view);
    QCOMPARE(operations.CurDir(), u"c:\\"_s);
    operations.ChDir(u"c:\\letters"_s);
    QCOMPARE(operations.CurDir(), u"c:\\letters"_s);
    operations.ChDir(u"d:\\music"_s);
    QCOMPARE(operations.CurDir(), u"c:\\letters"_s);
    QCOMPARE(numberOf([&] { operations.ChDir(u"q:\\"_s); }), error::DeviceUnavailable);
}

void TestFileOperations::aBatchIsDoneInOrderAndEndsAtAFailure()
{
    const auto view = std::make_shared<DriveView>();
    view->setDrive('c', m_folder->path().toUtf8());
    NativeFileOperations operations(view);
    QWidget owner;
    put(path("a"), "a");
    put(path("c"), "c");
    const FileBatchResult copied = operations.FileCopy(
        {{u"a"_s, u"c:\\copy-of-a"_s}, {u"gone"_s, u"c:\\copy-of-gone"_s}, {u"c"_s, u"c:\\copy-of-c"_s}},
        owner);
    QCOMPARE(copied.done, 1);
    QVERIFY(copied.failure);
    QCOMPARE(copied.failure->number(), error::FileNotFound);
    QCOMPARE(names(), (QStringList{u"a"_s, u"c"_s, u"copy-of-a"_s}));
    const FileBatchResult deleted = operations.Kill({u"c:\\a"_s, u"c:\\c"_s}, owner);
    QCOMPARE(deleted.done, 2);
    QVERIFY(!deleted.failure && !deleted.isCancelled);
    QCOMPARE(names(), QStringList{u"copy-of-a"_s});
    QCOMPARE(operations.Kill({}, owner).done, 0);
}

void TestFileOperations::aBatchEndsWhereTheDiskIsFull()
{
    QCOMPARE(::mkdir(path("disk").constData(), 0777), 0);
    const SmallDisk disk(path("disk"), "size=128k");
    if (!disk.isThere())
        QSKIP("no file system can be mounted here");
    const auto view = std::make_shared<DriveView>();
    view->setDrive('c', m_folder->path().toUtf8());
    NativeFileOperations operations(view);
    QWidget owner;
    put(path("a"), "a");
    put(path("b"), QByteArray(200'000, 'b'));
    put(path("c"), "c");
    put(path("disk/b"), "old");
    const FileBatchResult copied = operations.FileCopy(
        {{u"a"_s, u"c:\\disk\\a"_s}, {u"b"_s, u"c:\\disk\\b"_s}, {u"c"_s, u"c:\\disk\\c"_s}}, owner);
    QCOMPARE(copied.done, 1);
    QVERIFY(copied.failure);
    QCOMPARE(copied.failure->number(), error::DiskFull);
    QVERIFY2(copied.failure->text().contains(u"c:\\disk\\b"), qPrintable(copied.failure->text()));
    QCOMPARE(get(path("disk/b")), QByteArray("old"));
    QCOMPARE(names("disk"), (QStringList{u"a"_s, u"b"_s}));
}

// It was there when the batch began.
void TestFileOperations::aBatchEndsAtAFileThatHasVanished()
{
    put(path("a"), "a");
    put(path("b"), "b");
    put(path("c"), "c");
    FileBatch batch;
    batch.names = {u"a"_s, u"b"_s, u"c"_s};
    batch.step = [this](int index, const FileProgress &progress) {
        ::unlink(path("b").constData());
        const QByteArray name = QByteArray(1, static_cast<char>('a' + index));
        return copyFile(file(name.constData()), file((name + "-copy").constData()), progress);
    };
    QWidget owner;
    const FileBatchResult result = runBatch(batch, owner);
    QCOMPARE(result.done, 1);
    QVERIFY(result.failure);
    QCOMPARE(result.failure->number(), error::FileNotFound);
    QCOMPARE(names(), (QStringList{u"a"_s, u"a-copy"_s, u"c"_s}));
}

std::vector<FileOperations::Copy> TestFileOperations::manyCopies(int count)
{
    ::mkdir(path("from").constData(), 0777);
    ::mkdir(path("to").constData(), 0777);
    std::vector<FileOperations::Copy> copies;
    for (int i = 0; i < count; ++i)
        copies.push_back({u"c:\\from\\%1"_s.arg(i), u"c:\\to\\%1"_s.arg(i)});
    return copies;
}

FileBatchResult TestFileOperations::copyAll(const std::vector<FileOperations::Copy> &copies)
{
    const auto view = std::make_shared<DriveView>();
    view->setDrive('c', m_folder->path().toUtf8());
    QWidget owner;
    return NativeFileOperations(view).FileCopy(copies, owner);
}

// Small ones are copied ahead, larger ones are not, and an empty one looks like those that are made up as they are read.
void TestFileOperations::manyFilesAreCopiedWhole()
{
    constexpr int count = 150;
    const auto contents
        = [](int i) { return QByteArray(i % 50 == 49 ? 300'000 : i * 100, char('a' + i % 26)); };
    const auto copies = manyCopies(count);
    for (int i = 0; i < count; ++i) {
        const QByteArray name = path("from/") + QByteArray::number(i);
        put(name, contents(i));
        ::chmod(name.constData(), i % 2 ? 0640 : 0755);
        const std::array<timespec, 2> times{timespec{1'000'000'000 + i, 1}, timespec{900'000'000 + i, 2}};
        QCOMPARE(::utimensat(AT_FDCWD, name.constData(), times.data(), 0), 0);
    }
    const FileBatchResult result = copyAll(copies);
    QCOMPARE(result.done, count);
    QVERIFY(!result.failure && !result.isCancelled);
    QCOMPARE(names("to").size(), count);
    for (int i = 0; i < count; ++i) {
        const QByteArray name = "to/" + QByteArray::number(i);
        QCOMPARE(get(path(name.constData())), contents(i));
        const struct stat state = stateOf(name.constData());
        QCOMPARE(state.st_mode & 07777U, i % 2 ? 0640U : 0755U);
        QCOMPARE(state.st_mtim.tv_sec, time_t(900'000'000 + i));
        QCOMPARE(state.st_nlink, nlink_t(1));
    }
}

void TestFileOperations::manyOldFilesAreReplaced()
{
    constexpr int count = 60;
    constexpr int guarded = 50;
    const auto copies = manyCopies(count);
    for (int i = 0; i < count; ++i) {
        put(path("from/") + QByteArray::number(i), "new");
        put(path("to/") + QByteArray::number(i), "old");
    }
    ::chmod((path("to/") + QByteArray::number(guarded)).constData(), 0444);
    const FileBatchResult result = copyAll(copies);
    QCOMPARE(result.done, guarded);
    QVERIFY(result.failure);
    QCOMPARE(result.failure->number(), error::PermissionDenied);
    QCOMPARE(names("to").size(), count);
    for (int i = 0; i < count; ++i)
        QCOMPARE(get(path("to/") + QByteArray::number(i)), QByteArray(i < guarded ? "new" : "old"));
}

void TestFileOperations::amongManyTheFirstFailureEndsTheBatch()
{
    constexpr int count = 100;
    constexpr int missing = 70;
    const auto copies = manyCopies(count);
    for (int i = 0; i < count; ++i) {
        if (i != missing)
            put(path("from/") + QByteArray::number(i), "text");
    }
    const FileBatchResult result = copyAll(copies);
    QCOMPARE(result.done, missing);
    QVERIFY(result.failure);
    QCOMPARE(result.failure->number(), error::FileNotFound);
    QVERIFY(result.failure->text().contains(copies[missing].source));
    QCOMPARE(names("to").size(), missing);
    for (int i = 0; i < missing; ++i)
        QCOMPARE(get(path("to/") + QByteArray::number(i)), QByteArray("text"));
}

void TestFileOperations::manyFilesFillADiskAsFewDo()
{
    constexpr int count = 40;
    const auto copies = manyCopies(count);
    for (int i = 0; i < count; ++i)
        put(path("from/") + QByteArray::number(i), QByteArray(8192, 'x'));
    int oneByOne = 0;
    {
        const SmallDisk disk(path("to"), "size=128k");
        if (!disk.isThere())
            QSKIP("no file system can be mounted here");
        while (!failureOf([&] {
            const QByteArray number = QByteArray::number(oneByOne);
            copy(("from/" + number).constData(), ("to/" + number).constData());
        }))
            ++oneByOne;
    }
    const SmallDisk disk(path("to"), "size=128k");
    const FileBatchResult result = copyAll(copies);
    QCOMPARE(result.done, oneByOne);
    QVERIFY(result.failure);
    QCOMPARE(result.failure->number(), error::DiskFull);
    QCOMPARE(names("to").size(), oneByOne);
}

// The first copy goes through a link to the second source.
void TestFileOperations::whatAnEarlierCopyReplacedIsCopiedAnew()
{
    constexpr int count = 20;
    const auto copies = manyCopies(count);
    for (int i = 0; i < count; ++i)
        put(path("from/") + QByteArray::number(i), "text " + QByteArray::number(i));
    QCOMPARE(::symlink("../from/10", path("to/0").constData()), 0);
    const FileBatchResult result = copyAll(copies);
    QCOMPARE(result.done, count);
    QCOMPARE(get(path("from/10")), QByteArray("text 0"));
    QCOMPARE(get(path("to/10")), QByteArray("text 0"));
    QCOMPARE(get(path("to/11")), QByteArray("text 11"));
}

namespace {

/// Counts the copies that are made ahead and not given up.
class CountedCopy final : public PreparedCopy
{
public:
    CountedCopy(int index, std::atomic_int &living) : m_index(index), m_living(living) { ++m_living; }
    ~CountedCopy() override { --m_living; }
    CountedCopy(const CountedCopy &) = delete;
    CountedCopy &operator=(const CountedCopy &) = delete;
    bool place() override { return m_index >= 0; }
    int index() const { return m_index; }

private:
    int m_index;
    std::atomic_int &m_living;
};

int indexOf(const std::unique_ptr<PreparedCopy> &copy)
{
    const auto *counted = dynamic_cast<const CountedCopy *>(copy.get());
    return counted ? counted->index() : -1;
}

} // namespace

void TestFileOperations::copiesAreMadeAheadWithinBounds()
{
    constexpr int count = 200;
    constexpr int most = 32;
    std::atomic_int living = 0;
    std::atomic_int made = 0;
    CopyAhead ahead(count, [&](int index) {
        ++made;
        return std::make_unique<CountedCopy>(index, living);
    });
    QCOMPARE(indexOf(ahead.take(0)), 0);
    QTRY_VERIFY(living >= most - 1);
    for (int i = 1; i < count; ++i) {
        QCOMPARE(indexOf(ahead.take(i)), i);
        QVERIFY(living <= most + 1);
    }
    QCOMPARE(made.load(), count);
    QCOMPARE(living.load(), 0);
}

void TestFileOperations::nothingIsMadeBeyondWhatIsLeftToTheBatch()
{
    constexpr int left = 3;
    std::atomic_int living = 0;
    std::atomic_int last = -1;
    CopyAhead ahead(10, [&](int index) -> std::unique_ptr<PreparedCopy> {
        last = index;
        if (index == left)
            return nullptr;
        return std::make_unique<CountedCopy>(index, living);
    });
    for (int i = 0; i < left; ++i)
        QCOMPARE(indexOf(ahead.take(i)), i);
    QVERIFY(!ahead.take(left));
    QCOMPARE(living.load(), 0);
    QVERIFY(last <= left + 1);
    QCOMPARE(indexOf(ahead.take(left + 1)), left + 1);
    ahead.stop();
    QCOMPARE(living.load(), 0);
}

void TestFileOperations::whatWasDroppedIsMadeAnew()
{
    std::atomic_int living = 0;
    std::array<std::atomic_int, 10> made = {};
    CopyAhead ahead(static_cast<int>(made.size()), [&](int index) {
        ++made[static_cast<std::size_t>(index)];
        return std::make_unique<CountedCopy>(index, living);
    });
    QCOMPARE(indexOf(ahead.take(0)), 0);
    QTRY_COMPARE(living.load(), 9);
    ahead.drop();
    QCOMPARE(living.load(), 0);
    for (int i = 1; i < 10; ++i)
        QCOMPARE(indexOf(ahead.take(i)), i);
    QCOMPARE(made[0].load(), 1);
    QCOMPARE(made[9].load(), 2);
}

namespace {

QProgressDialog *progressBox()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (auto *box = qobject_cast<QProgressDialog *>(window); box && box->isVisible())
            return box;
    }
    return nullptr;
}

/// A batch whose first file takes until `isReleased`, or until it is stopped.
FileBatch waitingBatch(const std::shared_ptr<std::atomic_bool> &isReleased, bool listens)
{
    FileBatch batch;
    batch.title = u"Copy"_s;
    batch.text = u"Copying file %1 of %2:"_s;
    batch.names = {u"first"_s, u"second"_s};
    batch.step = [isReleased, listens](int, const FileProgress &progress) {
        while (!*isReleased) {
            if (!progress(500, 1000) && listens)
                return false;
            QThread::msleep(1);
        }
        return true;
    };
    return batch;
}

/// Looks from time to time until `action` has returned true.
class Looking
{
public:
    explicit Looking(std::function<bool()> action)
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this, action = std::move(action)] {
            if (action())
                m_timer.stop();
        });
        m_timer.start(10);
    }
    bool isDone() const { return !m_timer.isActive(); }

private:
    QTimer m_timer;
};

} // namespace

void TestFileOperations::aShortBatchShowsNoBox()
{
    QWidget owner;
    FileBatch batch;
    batch.names = {u"one"_s};
    bool sawBox = false;
    batch.step = [](int, const FileProgress &) { return true; };
    const Looking look([&] { return sawBox = sawBox || progressBox() != nullptr; });
    QCOMPARE(runBatch(batch, owner).done, 1);
    QVERIFY(!sawBox);
}

void TestFileOperations::aLongBatchTellsItsProgress()
{
    QWidget owner;
    const auto isReleased = std::make_shared<std::atomic_bool>(false);
    QString text;
    int value = 0;
    const Looking look([&] {
        const QProgressDialog *box = progressBox();
        if (!box)
            return false;
        text = box->labelText();
        value = box->value();
        *isReleased = value > 0;
        return isReleased->load();
    });
    const FileBatchResult result = runBatch(waitingBatch(isReleased, true), owner);
    QVERIFY(look.isDone());
    QCOMPARE(result.done, 2);
    QCOMPARE(text, u"Copying file 1 of 2:\nfirst\n500 bytes of 1.0 kB"_s);
    QCOMPARE(value, 250);
    QVERIFY(!progressBox());
}

void TestFileOperations::cancelEndsTheBatch()
{
    QWidget owner;
    const auto isReleased = std::make_shared<std::atomic_bool>(false);
    const Looking look([&] {
        if (!progressBox())
            return false;
        progressBox()->findChild<QAbstractButton *>()->click();
        return true;
    });
    const FileBatchResult result = runBatch(waitingBatch(isReleased, true), owner);
    QVERIFY(look.isDone());
    QVERIFY(result.isCancelled);
    QVERIFY(!result.failure);
    QCOMPARE(result.done, 0);
}

void TestFileOperations::aFileSystemThatDoesNotAnswerIsLeft()
{
    QWidget owner;
    const auto isReleased = std::make_shared<std::atomic_bool>(false);
    const Looking look([&] {
        if (!progressBox())
            return false;
        QTest::keyClick(progressBox(), Qt::Key_Escape);
        return true;
    });
    const FileBatchResult result = runBatch(waitingBatch(isReleased, false), owner);
    QVERIFY(result.isCancelled);
    *isReleased = true;
}

void TestFileOperations::eventsWaitForTheBatch()
{
    QWidget owner;
    const auto isReleased = std::make_shared<std::atomic_bool>(false);
    bool came = false;
    bool cameEarly = false;
    EventGate::raise(&owner, [&came] { came = true; });
    const Looking look([&] {
        if (!progressBox())
            return false;
        cameEarly = came;
        *isReleased = true;
        return true;
    });
    QCOMPARE(runBatch(waitingBatch(isReleased, true), owner).done, 2);
    QVERIFY(!cameEarly);
    QTRY_VERIFY(came);
}

QTEST_MAIN(TestFileOperations)
#include "TestFileOperations.moc"
