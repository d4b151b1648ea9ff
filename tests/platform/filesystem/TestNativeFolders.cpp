#include <cstdio>

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

#include "platform/filesystem/LinuxDriveTable.h"
#include "platform/filesystem/NativeFolders.h"
#include "runtime/RuntimeError.h"
#include "tests/runtime/FailureOf.h"

using namespace Qt::StringLiterals;
using namespace vandrel;

/// Real folders, as the lists show them.
class TestNativeFolders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void folderAndFileNamesAreToldApart();
    void hiddenNamesAreLeftOut();
    void linksCountAsWhatTheyLeadTo();
    void pipesAreNoFiles();
    void everyNameSurvives();
    void foldersThatCannotBeReadAreErrors();
    void aFolderWithoutRightsIsAnError();
    void drivesHaveLabels();
    void changesOfDrivesArePassedOn();
    void aLargeFolder();

    void whatComesAndGoesIsTold();
    void foldersAndFilesAreWatchedApart();
    void aFolderThatGoesHoldsNothing();
    void aDriveThatComesAgainIsWatchedAgain();
    void manyChangesAreToldTogether();

private:
    QByteArray path(const QByteArray &name) const { return QFile::encodeName(m_folder->path()) + '/' + name; }
    void touch(const QByteArray &name) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::shared_ptr<DriveView> m_view;
    std::unique_ptr<LinuxDriveTable> m_table;
    std::unique_ptr<NativeFolders> m_folders;
};

namespace {

QStringList sorted(QStringList names)
{
    names.sort();
    return names;
}

} // namespace

void TestNativeFolders::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_view = std::make_shared<DriveView>();
    m_table = std::make_unique<LinuxDriveTable>(*m_view);
    m_folders = std::make_unique<NativeFolders>(m_view, *m_table);
    m_view->setDrive('d', QFile::encodeName(m_folder->path()));
}

void TestNativeFolders::touch(const QByteArray &name) const
{
    FILE *file = std::fopen(path(name).constData(), "w");
    QVERIFY(file);
    std::fclose(file);
}

void TestNativeFolders::folderAndFileNamesAreToldApart()
{
    QCOMPARE(::mkdir(path("sub").constData(), 0700), 0);
    touch("a.txt");
    touch("b");
    QCOMPARE(m_folders->folderNames(u"d:\\"_s), QStringList({u"sub"_s}));
    QCOMPARE(sorted(m_folders->fileNames(u"d:\\"_s)), QStringList({u"a.txt"_s, u"b"_s}));
    QVERIFY(m_folders->fileNames(u"d:\\sub"_s).isEmpty());
}

void TestNativeFolders::hiddenNamesAreLeftOut()
{
    QCOMPARE(::mkdir(path(".config").constData(), 0700), 0);
    touch(".profile");
    QVERIFY(m_folders->folderNames(u"d:\\"_s).isEmpty());
    QVERIFY(m_folders->fileNames(u"d:\\"_s).isEmpty());
}

void TestNativeFolders::linksCountAsWhatTheyLeadTo()
{
    QCOMPARE(::mkdir(path("sub").constData(), 0700), 0);
    touch("file");
    QCOMPARE(::symlink("sub", path("to-sub").constData()), 0);
    QCOMPARE(::symlink("file", path("to-file").constData()), 0);
    QCOMPARE(::symlink("nothing", path("to-nothing").constData()), 0);
    QCOMPARE(::symlink("in-circle", path("in-circle").constData()), 0);
    QCOMPARE(sorted(m_folders->folderNames(u"d:\\"_s)), QStringList({u"sub"_s, u"to-sub"_s}));
    QCOMPARE(sorted(m_folders->fileNames(u"d:\\"_s)),
             QStringList({u"file"_s, u"in-circle"_s, u"to-file"_s, u"to-nothing"_s}));
}

void TestNativeFolders::pipesAreNoFiles()
{
    QCOMPARE(::mkfifo(path("pipe").constData(), 0600), 0);
    QVERIFY(m_folders->fileNames(u"d:\\"_s).isEmpty());
}

void TestNativeFolders::everyNameSurvives()
{
    for (const char *name : {"a b", "tr ", "\xE9\xFF", "q\"*?:<>|", "back\\slash", "new\nline", "\xC3\xA9"})
        touch(name);
    const QStringList names = m_folders->fileNames(u"d:\\"_s);
    QCOMPARE(names.size(), 7);
    for (const QString &name : names)
        QCOMPARE(::access(path(nativeName(name)).constData(), F_OK), 0);
}

void TestNativeFolders::foldersThatCannotBeReadAreErrors()
{
    touch("file");
    QCOMPARE(test::numberOf([&] { (void)m_folders->fileNames(u"d:\\nowhere"_s); }), error::PathNotFound);
    QCOMPARE(test::numberOf([&] { (void)m_folders->folderNames(u"d:\\file"_s); }), error::PathNotFound);
    QCOMPARE(test::numberOf([&] { (void)m_folders->folderNames(u"q:\\"_s); }), error::DeviceUnavailable);
    QCOMPARE(test::numberOf([&] { (void)m_folders->folderNames(QString()); }), error::BadFileName);
}

void TestNativeFolders::aFolderWithoutRightsIsAnError()
{
    if (::geteuid() == 0)
        QSKIP("Root may read every folder.");
    QCOMPARE(::mkdir(path("closed").constData(), 0000), 0);
    QCOMPARE(test::numberOf([&] { (void)m_folders->fileNames(u"d:\\closed"_s); }), error::PermissionDenied);
    QCOMPARE(::chmod(path("closed").constData(), 0700), 0);
}

void TestNativeFolders::drivesHaveLabels()
{
    const auto drives = m_folders->drives();
    QCOMPARE(drives.size(), 3U);
    QCOMPARE(drives[0].letter, 'c');
    QCOMPARE(drives[0].label, u"Home"_s);
    QCOMPARE(drives[1].letter, 'd');
    QCOMPARE(drives[1].label, m_folder->path().section(u'/', -1));
    QCOMPARE(drives[2].letter, 'z');
    QCOMPARE(drives[2].label, u"All files"_s);
}

void TestNativeFolders::changesOfDrivesArePassedOn()
{
    const QSignalSpy changes(m_folders.get(), &LocalFolders::drivesChanged);
    Q_EMIT m_table->changed();
    QCOMPARE(changes.count(), 1);
}

void TestNativeFolders::aLargeFolder()
{
    constexpr int count = 20'000;
    for (int i = 0; i < count; ++i)
        touch(QByteArray::number(i));
    QCOMPARE(m_folders->fileNames(u"d:\\"_s).size(), count);
}

namespace {

/// What a watch told last.
struct Told {
    explicit Told(FolderWatch *watch)
    {
        QObject::connect(watch, &FolderWatch::changed, watch, [this](const QStringList &now) {
            names = now;
            ++times;
        });
    }

    QStringList names{QStringLiteral("nothing told yet")};
    int times = 0;
};

} // namespace

void TestNativeFolders::whatComesAndGoesIsTold()
{
    const auto watch = m_folders->watch(u"d:\\"_s, EntryKind::Files);
    const Told told(watch.get());
    touch("b.txt");
    QTRY_COMPARE(told.names, QStringList({u"b.txt"_s}));
    touch("A.txt");
    QTRY_COMPARE(told.names, QStringList({u"A.txt"_s, u"b.txt"_s}));
    QCOMPARE(std::rename(path("A.txt").constData(), path("c.txt").constData()), 0);
    QTRY_COMPARE(told.names, QStringList({u"b.txt"_s, u"c.txt"_s}));
    QCOMPARE(std::remove(path("b.txt").constData()), 0);
    QTRY_COMPARE(told.names, QStringList({u"c.txt"_s}));
}

void TestNativeFolders::foldersAndFilesAreWatchedApart()
{
    const auto folders = m_folders->watch(u"d:\\"_s, EntryKind::Folders);
    const auto files = m_folders->watch(u"d:\\"_s, EntryKind::Files);
    const Told toldFolders(folders.get());
    const Told toldFiles(files.get());
    QCOMPARE(::mkdir(path("sub").constData(), 0700), 0);
    touch("file");
    QTRY_COMPARE(toldFolders.names, QStringList({u"sub"_s}));
    QTRY_COMPARE(toldFiles.names, QStringList({u"file"_s}));
}

void TestNativeFolders::aFolderThatGoesHoldsNothing()
{
    QCOMPARE(::mkdir(path("sub").constData(), 0700), 0);
    touch("sub/file");
    const auto watch = m_folders->watch(u"d:\\sub"_s, EntryKind::Files);
    const Told told(watch.get());
    QCOMPARE(std::rename(path("sub").constData(), path("moved").constData()), 0);
    QTRY_COMPARE(told.names, QStringList());
}

void TestNativeFolders::aDriveThatComesAgainIsWatchedAgain()
{
    const auto watch = m_folders->watch(u"d:\\"_s, EntryKind::Files);
    const Told told(watch.get());
    touch("file");
    QTRY_COMPARE(told.names, QStringList({u"file"_s}));
    m_view->removeDrive('d');
    Q_EMIT m_table->changed();
    QTRY_COMPARE(told.names, QStringList());
    m_view->setDrive('d', QFile::encodeName(m_folder->path()));
    Q_EMIT m_table->changed();
    QTRY_COMPARE(told.names, QStringList({u"file"_s}));
    touch("later");
    QTRY_COMPARE(told.names, QStringList({u"file"_s, u"later"_s}));
}

void TestNativeFolders::manyChangesAreToldTogether()
{
    const auto watch = m_folders->watch(u"d:\\"_s, EntryKind::Files);
    const Told told(watch.get());
    constexpr int count = 2000;
    for (int i = 0; i < count; ++i)
        touch(QByteArray::number(i));
    QTRY_COMPARE(told.names.size(), count);
    QVERIFY(told.times < count / 10);
}

QTEST_GUILESS_MAIN(TestNativeFolders)
#include "TestNativeFolders.moc"
