#include <memory>

#include <QDir>
#include <QDragEnterEvent>
#include <QFile>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "controls/DirListBox.h"
#include "controls/DriveListBox.h"
#include "controls/FileListBox.h"
#include "controls/FilesPicture.h"
#include "files/frmFile.h"
#include "platform/filesystem/DriveTable.h"
#include "platform/filesystem/NativeFileOperations.h"
#include "platform/filesystem/NativeFolders.h"
#include "tests/platform/filesystem/Restrictions.h"
#include "tests/platform/filesystem/SmallDisk.h"
#include "tests/support/FormChecks.h"
#include "tests/support/ScriptedPrompts.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

namespace {

constexpr auto question = u"Are you sure you want to delete the selected file(s)?";

/// File operations that tell what they are asked and end as they are told; folders are the real ones.
class RecordedOperations final : public FileOperations
{
public:
    explicit RecordedOperations(std::shared_ptr<DriveView> view) : m_native(std::move(view)) { }

    QString CurDir() const override { return m_native.CurDir(); }
    void ChDir(const QString &folder) override { m_native.ChDir(folder); }
    FileBatchResult FileCopy(const std::vector<Copy> &files, QWidget &owner) override
    {
        for (const Copy &file : files)
            calls.append(file.source + u" to "_s + file.destination);
        return end(static_cast<int>(files.size()), owner);
    }
    FileBatchResult Kill(const QStringList &files, QWidget &owner) override
    {
        calls += files;
        return end(static_cast<int>(files.size()), owner);
    }

    QStringList calls;
    std::function<void(QWidget &)> meanwhile;
    bool isCancelled = false;

private:
    FileBatchResult end(int count, QWidget &owner)
    {
        if (meanwhile)
            meanwhile(owner);
        return {isCancelled ? 0 : count, {}, isCancelled};
    }

    NativeFileOperations m_native;
};

/// A home with folders and files of its own, drive c:, and a second drive d:.
class TestFileManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void loadingShowsTheCurrentFolder();
    void unloadingGoesBackToTheFolderOfTheStart();
    void theFoldersAreFollowed();
    void aDriveThatIsNotReadyChangesNothing();
    void anUnreadableFolderIsTheRuntimesError();
    void choosingADriveDoesNotMakeItTheCurrentOne();

    void aDoubleClickMakesAShortcut();
    void aRootEndsInOneSeparator();
    void theDeleteIconIgnoresDoubleClicks();
    void enterMakesAShortcut();

    void aDropOnAFolderWithoutShortcutDoesNothing();
    void aDropCopiesTheSelectedFiles();
    void anExistingFileIsReplaced();
    void aFailedCopyNamesTheFileAndEndsTheRest();
    void afterAnErrorTheListIsNotReadAgain();
    void aFullDiskEndsTheCopying();
    void aFolderThatMayNotBeWrittenTakesNothing();
    void bareNamesAreThoseOfTheCurrentDrive();
    void aFileIsNotCopiedOntoItself();
    void aCancelledCopySaysNothing();

    void deletingInARootAsksOnce();
    void noDeletesNothing();
    void belowARootDeletingFails();
    void anotherSourceDeletes();
    void theDeleteKeyAsks();
    void spaceOnAnIconIsADrop();

    void moreFilesThanACounterHolds();
    void theWindowStaysWhileABatchRuns();
    void theFlagFollowsTheMouse();
    void draggingOverTheDriveListEndsIt();
    void anIconTakesWhatItsOwnWindowDrags();
    void aPressOnASelectedFileKeepsTheSelection();
    void theDragPictureTellsHowMany();
    void everythingHasAName();
    void tabFollowsTheEye();

private:
    void put(const QString &file, const QByteArray &contents = "x");
    QByteArray get(const QString &file) const;
    bool has(const QString &file) const { return QFile::exists(m_home->filePath(file)); }
    void select(const QStringList &names) const;
    void makeForm();
    RecordedOperations &makeRecordingForm();
    void drop(int icon) const { form->Image1_DragDrop(icon, form->File1); }
    void makeShortcut(int icon, const QString &folder) const;

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<QTemporaryDir> m_other;
    std::shared_ptr<DriveView> m_view;
    std::unique_ptr<DriveTable> m_table;
    std::unique_ptr<ScriptedPrompts> m_prompts;
    std::unique_ptr<frmFile> form;
};

} // namespace

void TestFileManager::init()
{
    m_home = std::make_unique<QTemporaryDir>();
    m_other = std::make_unique<QTemporaryDir>();
    for (const char *folder : {"letters", "letters/old", "copies"})
        QVERIFY(QDir(m_home->path()).mkdir(QString::fromLatin1(folder)));
    for (const char *file : {"a.txt", "b.txt", "c.txt"}) {
        put(QString::fromLatin1(file), QByteArray("root ") + file);
        put(u"letters/"_s + QString::fromLatin1(file), QByteArray("letters ") + file);
    }
    m_view = std::make_shared<DriveView>();
    m_table = DriveTable::create(*m_view);
    m_view->setDrive('c', m_home->path().toUtf8());
    m_view->setDrive('d', m_other->path().toUtf8());
    m_prompts = std::make_unique<ScriptedPrompts>();
    makeForm();
}

void TestFileManager::cleanup()
{
    form.reset();
    QVERIFY(m_prompts->allShown());
    m_prompts.reset();
}

void TestFileManager::makeForm()
{
    form = std::make_unique<frmFile>(std::make_shared<NativeFolders>(m_view, *m_table),
                                     std::make_unique<NativeFileOperations>(m_view));
}

RecordedOperations &TestFileManager::makeRecordingForm()
{
    auto operations = std::make_unique<RecordedOperations>(m_view);
    RecordedOperations &recorded = *operations;
    form
        = std::make_unique<frmFile>(std::make_shared<NativeFolders>(m_view, *m_table), std::move(operations));
    return recorded;
}

void TestFileManager::put(const QString &file, const QByteArray &contents)
{
    QFile out(m_home->filePath(file));
    QVERIFY(out.open(QIODevice::WriteOnly));
    QCOMPARE(out.write(contents), contents.size());
}

QByteArray TestFileManager::get(const QString &file) const
{
    QFile in(m_home->filePath(file));
    return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
}

void TestFileManager::select(const QStringList &names) const
{
    for (int i = 0; i < form->File1->ListCount(); ++i)
        form->File1->setSelected(i, names.contains(form->File1->List(i)));
}

void TestFileManager::makeShortcut(int icon, const QString &folder) const
{
    const QString before = form->Dir1->Path();
    form->Dir1->setPath(folder);
    form->Image1_DblClick(icon);
    form->Dir1->setPath(before);
}

void TestFileManager::loadingShowsTheCurrentFolder()
{
    m_view->setCurrentFolder(u"c:\\letters"_s);
    makeForm();
    QCOMPARE(form->StartDir, u"c:\\letters"_s);
    QCOMPARE(form->windowTitle(), u"File Manager - c:\\letters"_s);
    QCOMPARE(form->File1->ListCount(), 3);
    for (int i = 0; i < 4; ++i)
        QCOMPARE(form->Label1[i]->text(), QString());
    QCOMPARE(form->Label1[4]->text(), u"Delete!!!"_s);
    QCOMPARE(form->Label2->text(),
             u"Double-clicking any of the folder icons below, makes it a shortcut to current folder!"_s);
    QVERIFY(!form->DragFlag);
}

void TestFileManager::unloadingGoesBackToTheFolderOfTheStart()
{
    form->Dir1->setPath(u"c:\\letters\\old"_s);
    QCOMPARE(m_view->currentFolder('c'), u"c:\\letters\\old"_s);
    QVERIFY(form->close());
    QCOMPARE(m_view->currentFolder('c'), u"c:\\"_s);
}

void TestFileManager::theFoldersAreFollowed()
{
    form->Dir1->setPath(u"c:\\letters"_s);
    QCOMPARE(form->windowTitle(), u"File Manager - c:\\letters"_s);
    QCOMPARE(form->File1->Path(), u"c:\\letters"_s);
    QCOMPARE(m_view->currentFolder('c'), u"c:\\letters"_s);
}

void TestFileManager::aDriveThatIsNotReadyChangesNothing()
{
    m_other->remove();
    form->Drive1->setDrive(u"d:"_s);
    QCOMPARE(form->Dir1->Path(), u"c:\\"_s);
    QCOMPARE(form->windowTitle(), u"File Manager - c:\\"_s);
}

// The folder goes between its opening in the list and the reading of its files.
void TestFileManager::anUnreadableFolderIsTheRuntimesError()
{
    const ProgramEndSpy end;
    form->Dir1->disconnect(form.get());
    form->Dir1->setPath(u"c:\\letters\\old"_s);
    QVERIFY(QDir(m_home->path()).rmdir(u"letters/old"_s));
    m_prompts->expectError(error::PathNotFound);
    guarded([this] { form->Dir1_Change(); });
    QCOMPARE(end.count(), 1);
    QCOMPARE(form->windowTitle(), u"File Manager - c:\\"_s);
}

void TestFileManager::choosingADriveDoesNotMakeItTheCurrentOne()
{
    form->Drive1->setDrive(u"d:"_s);
    QCOMPARE(form->Dir1->Path(), u"d:\\"_s);
    QCOMPARE(m_view->currentDrive(), 'c');
    QVERIFY(form->close());
    QCOMPARE(m_view->currentFolder('c'), u"c:\\"_s);
}

void TestFileManager::aDoubleClickMakesAShortcut()
{
    form->show();
    form->Dir1->setPath(u"c:\\letters"_s);
    QTest::mouseDClick(form->Image1[2], Qt::LeftButton);
    QCOMPARE(form->Label1[2]->text(), u"c:\\letters\\"_s);
    QCOMPARE(form->Label1[1]->text(), QString());
    // A single click is none.
    QTest::mouseClick(form->Image1[1], Qt::LeftButton);
    QCOMPARE(form->Label1[1]->text(), QString());
    form->Dir1->setPath(u"c:\\copies"_s);
    QTest::mouseDClick(form->Image1[2], Qt::LeftButton);
    QCOMPARE(form->Label1[2]->text(), u"c:\\copies\\"_s);
}

void TestFileManager::aRootEndsInOneSeparator()
{
    form->Image1_DblClick(0);
    QCOMPARE(form->Label1[0]->text(), u"c:\\"_s);
}

void TestFileManager::theDeleteIconIgnoresDoubleClicks()
{
    form->show();
    QTest::mouseDClick(form->Image1[4], Qt::LeftButton);
    QCOMPARE(form->Label1[4]->text(), u"Delete!!!"_s);
}

void TestFileManager::enterMakesAShortcut()
{
    QVERIFY(showActive(*form));
    form->Image1[3]->setFocus();
    QTest::keyClick(form->Image1[3], Qt::Key_Return);
    QCOMPARE(form->Label1[3]->text(), u"c:\\"_s);
}

void TestFileManager::aDropOnAFolderWithoutShortcutDoesNothing()
{
    select({u"a.txt"_s});
    drop(0);
    QCOMPARE(m_prompts->shown(), 0);
    QCOMPARE(QDir(m_home->filePath(u"copies"_s)).count(), 2U);
}

void TestFileManager::aDropCopiesTheSelectedFiles()
{
    makeShortcut(0, u"c:\\copies"_s);
    select({u"a.txt"_s, u"c.txt"_s});
    drop(0);
    QCOMPARE(get(u"copies/a.txt"_s), QByteArray("root a.txt"));
    QCOMPARE(get(u"copies/c.txt"_s), QByteArray("root c.txt"));
    QVERIFY(!has(u"copies/b.txt"_s));
}

void TestFileManager::anExistingFileIsReplaced()
{
    put(u"copies/a.txt"_s, "something older and longer than what replaces it");
    makeShortcut(0, u"c:\\copies"_s);
    select({u"a.txt"_s});
    drop(0);
    QCOMPARE(get(u"copies/a.txt"_s), QByteArray("root a.txt"));
}

void TestFileManager::aFailedCopyNamesTheFileAndEndsTheRest()
{
    makeShortcut(0, u"c:\\copies"_s);
    select({u"a.txt"_s, u"b.txt"_s, u"c.txt"_s});
    QVERIFY(QDir(m_home->path()).mkdir(u"copies/b.txt"_s));
    m_prompts->expect(u"Error processing file b.txt!!!"_s, QString())
        .buttons(Buttons::OkOnly)
        .icon(BoxIcon::Exclamation);
    drop(0);
    QVERIFY(has(u"copies/a.txt"_s));
    QVERIFY(!has(u"copies/c.txt"_s));
}

void TestFileManager::afterAnErrorTheListIsNotReadAgain()
{
    makeShortcut(0, u"c:\\copies"_s);
    select({u"b.txt"_s});
    QVERIFY(QFile::remove(m_home->filePath(u"b.txt"_s)));
    m_prompts->expect(u"Error processing file b.txt!!!"_s, QString()).meanwhile([this] {
        QCOMPARE(form->File1->ListCount(), 3);
    });
    drop(0);
    QCOMPARE(form->File1->List(1), u"b.txt"_s);
}

void TestFileManager::aFullDiskEndsTheCopying()
{
    const SmallDisk disk(m_home->filePath(u"copies"_s).toUtf8(), "size=128k");
    if (!disk.isThere())
        QSKIP("no file system can be mounted here");
    put(u"b.txt"_s, QByteArray(200'000, 'b'));
    put(u"copies/b.txt"_s, "old");
    makeShortcut(0, u"c:\\copies"_s);
    select({u"a.txt"_s, u"b.txt"_s, u"c.txt"_s});
    m_prompts->expect(u"Error processing file b.txt!!!"_s, QString()).icon(BoxIcon::Exclamation);
    drop(0);
    QCOMPARE(get(u"copies/a.txt"_s), QByteArray("root a.txt"));
    QCOMPARE(get(u"copies/b.txt"_s), QByteArray("old"));
    QCOMPARE(QDir(m_home->filePath(u"copies"_s)).entryList(QDir::Files | QDir::Hidden),
             (QStringList{u"a.txt"_s, u"b.txt"_s}));
}

// The batch's thread is started while the ordinary user's rights hold, and has them too.
void TestFileManager::aFolderThatMayNotBeWrittenTakesNothing()
{
    makeShortcut(0, u"c:\\copies"_s);
    const QString copies = m_home->filePath(u"copies"_s);
    QVERIFY(QFile::setPermissions(m_home->path(), QFile::Permissions(0x7755)));
    QVERIFY(QFile::setPermissions(copies, QFile::Permissions(0x5555)));
    select({u"a.txt"_s, u"c.txt"_s});
    m_prompts->expect(u"Error processing file a.txt!!!"_s, QString()).icon(BoxIcon::Exclamation);
    {
        const AsOrdinaryUser user;
        drop(0);
    }
    QCOMPARE(QDir(copies).entryList(QDir::Files | QDir::Hidden), QStringList());
}

void TestFileManager::bareNamesAreThoseOfTheCurrentDrive()
{
    makeShortcut(0, u"c:\\copies"_s);
    QFile other(m_other->filePath(u"a.txt"_s));
    QVERIFY(other.open(QIODevice::WriteOnly));
    other.write("of the other drive");
    other.close();
    form->Drive1->setDrive(u"d:"_s);
    QCOMPARE(form->File1->ListCount(), 1);
    select({u"a.txt"_s});
    drop(0);
    QCOMPARE(get(u"copies/a.txt"_s), QByteArray("root a.txt"));
}

void TestFileManager::aFileIsNotCopiedOntoItself()
{
    form->Image1_DblClick(1);
    select({u"b.txt"_s});
    m_prompts->expect(u"Error processing file b.txt!!!"_s, QString());
    drop(1);
    QCOMPARE(get(u"b.txt"_s), QByteArray("root b.txt"));
}

void TestFileManager::aCancelledCopySaysNothing()
{
    RecordedOperations &operations = makeRecordingForm();
    operations.isCancelled = true;
    makeShortcut(0, u"c:\\copies"_s);
    select({u"a.txt"_s});
    drop(0);
    QCOMPARE(operations.calls, QStringList{u"a.txt to c:\\copies\\a.txt"_s});
    QCOMPARE(m_prompts->shown(), 0);
}

void TestFileManager::deletingInARootAsksOnce()
{
    select({u"a.txt"_s, u"b.txt"_s});
    m_prompts->expect(QString::fromUtf16(question), QString()).buttons(Buttons::YesNo).answer(Answer::Yes);
    drop(4);
    QVERIFY(!has(u"a.txt"_s));
    QVERIFY(!has(u"b.txt"_s));
    QVERIFY(has(u"c.txt"_s));
    QCOMPARE(form->File1->ListCount(), 1);
}

void TestFileManager::noDeletesNothing()
{
    select({u"a.txt"_s});
    m_prompts->expect(QString::fromUtf16(question), QString()).answer(Answer::No);
    drop(4);
    QVERIFY(has(u"a.txt"_s));
}

void TestFileManager::belowARootDeletingFails()
{
    RecordedOperations &operations = makeRecordingForm();
    form->Dir1->setPath(u"c:\\letters"_s);
    select({u"a.txt"_s, u"b.txt"_s});
    m_prompts->expect(QString::fromUtf16(question), QString()).answer(Answer::Yes);
    drop(4);
    QCOMPARE(operations.calls, (QStringList{u"c:\\lettersa.txt"_s, u"c:\\lettersb.txt"_s}));

    makeForm();
    form->Dir1->setPath(u"c:\\letters"_s);
    select({u"b.txt"_s, u"c.txt"_s});
    m_prompts->expect(QString::fromUtf16(question), QString()).answer(Answer::Yes);
    m_prompts->expect(u"Error processing file b.txt!!!"_s, QString()).icon(BoxIcon::Exclamation);
    drop(4);
    QVERIFY(has(u"letters/b.txt"_s));
    QVERIFY(has(u"letters/c.txt"_s));
}

void TestFileManager::anotherSourceDeletes()
{
    makeShortcut(0, u"c:\\copies"_s);
    select({u"a.txt"_s});
    m_prompts->expect(QString::fromUtf16(question), QString()).answer(Answer::Yes);
    form->Image1_DragDrop(0, form->Dir1);
    QVERIFY(!has(u"a.txt"_s));
    QVERIFY(!has(u"copies/a.txt"_s));
}

void TestFileManager::theDeleteKeyAsks()
{
    QVERIFY(showActive(*form));
    select({u"a.txt"_s});
    form->File1->setFocus();
    m_prompts->expect(QString::fromUtf16(question), QString()).answer(Answer::Yes);
    QTest::keyClick(form->File1, Qt::Key_Delete);
    QVERIFY(!has(u"a.txt"_s));
}

void TestFileManager::spaceOnAnIconIsADrop()
{
    QVERIFY(showActive(*form));
    makeShortcut(1, u"c:\\copies"_s);
    select({u"c.txt"_s});
    form->Image1[1]->setFocus();
    QTest::keyClick(form->Image1[1], Qt::Key_Space);
    QCOMPARE(get(u"copies/c.txt"_s), QByteArray("root c.txt"));
    form->Image1[4]->setFocus();
    m_prompts->expect(QString::fromUtf16(question), QString()).answer(Answer::No);
    QTest::keyClick(form->Image1[4], Qt::Key_Space);
    QVERIFY(has(u"c.txt"_s));
}

void TestFileManager::moreFilesThanACounterHolds()
{
    constexpr int tooMany = 32768;
    RecordedOperations &operations = makeRecordingForm();
    makeShortcut(0, u"c:\\copies"_s);
    QStringList names;
    for (int i = 0; i < tooMany; ++i)
        names.append(QString::number(i));
    form->File1->addItems(names);
    form->File1->setSelected(0, true);
    m_prompts->expect(u"Error processing file !!!"_s, QString()).icon(BoxIcon::Exclamation);
    drop(0);
    QCOMPARE(operations.calls, QStringList());
}

void TestFileManager::theWindowStaysWhileABatchRuns()
{
    RecordedOperations &operations = makeRecordingForm();
    makeShortcut(0, u"c:\\copies"_s);
    select({u"a.txt"_s});
    form->show();
    bool closed = true;
    operations.meanwhile = [&closed](QWidget &owner) { closed = owner.close(); };
    drop(0);
    QVERIFY(!closed);
    QVERIFY(form->close());
}

void TestFileManager::theFlagFollowsTheMouse()
{
    form->show();
    QWidget *list = form->File1->viewport();
    const QPoint line = form->File1->visualRect(form->File1->model()->index(1, 0)).center();
    QTest::mousePress(list, Qt::LeftButton, {}, line);
    QVERIFY(form->DragFlag);
    QTest::mouseRelease(list, Qt::LeftButton, {}, line);
    QVERIFY(!form->DragFlag);
    QCOMPARE(form->File1->Text(), u"b.txt"_s);
    form->DragFlag = true;
    QTest::mouseClick(form->Dir1->viewport(), Qt::LeftButton);
    QVERIFY(!form->DragFlag);
    form->DragFlag = true;
    QTest::mouseClick(form->Image1[0], Qt::LeftButton);
    QVERIFY(!form->DragFlag);
    form->DragFlag = true;
    QTest::mouseClick(form->Label1[0], Qt::LeftButton);
    QVERIFY(!form->DragFlag);
}

void TestFileManager::draggingOverTheDriveListEndsIt()
{
    form->show();
    form->DragFlag = true;
    const QMimeData data;
    QDragEnterEvent enter({3, 3}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(form->Drive1, &enter);
    QVERIFY(!enter.isAccepted());
    QTRY_VERIFY(!form->DragFlag);
}

// A drag of nobody's is none of this window's.
void TestFileManager::anIconTakesWhatItsOwnWindowDrags()
{
    form->show();
    const QMimeData data;
    QDragEnterEvent enter({3, 3}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(form->Image1[4], &enter);
    QVERIFY(!enter.isAccepted());
}

void TestFileManager::aPressOnASelectedFileKeepsTheSelection()
{
    form->show();
    select({u"a.txt"_s, u"b.txt"_s});
    QCOMPARE(form->File1->SelCount(), 2);
    QWidget *list = form->File1->viewport();
    const QPoint line = form->File1->visualRect(form->File1->model()->index(1, 0)).center();
    QTest::mousePress(list, Qt::LeftButton, {}, line);
    QCOMPARE(form->File1->SelCount(), 2);
    QTest::mouseRelease(list, Qt::LeftButton, {}, line);
    QCOMPARE(form->File1->SelCount(), 1);
}

void TestFileManager::theDragPictureTellsHowMany()
{
    QCOMPARE(fileCountText(1), u"1 file"_s);
    QCOMPARE(fileCountText(12), u"12 files"_s);
    const FilesPicture one(1, *form);
    const FilesPicture many(12, *form);
    QVERIFY(one.pixmap().width() < many.pixmap().width());
    QVERIFY(one.pixmap().rect().contains(one.hotSpot()));
    QVERIFY(one.pixmap().toImage() != many.pixmap().toImage());
}

void TestFileManager::everythingHasAName()
{
    QCOMPARE(form->Drive1->accessibleName(), u"Drive"_s);
    QCOMPARE(form->Dir1->accessibleName(), u"Folders"_s);
    QCOMPARE(form->File1->accessibleName(), u"Files"_s);
    QCOMPARE(form->Image1[0]->accessibleName(), u"Folder shortcut 1"_s);
    QCOMPARE(form->Image1[3]->accessibleName(), u"Folder shortcut 4"_s);
    QCOMPARE(form->Image1[4]->accessibleName(), u"Delete"_s);
    QCOMPARE(form->Image1[4]->objectName(), u"Image1_4"_s);
}

void TestFileManager::tabFollowsTheEye()
{
    QVERIFY(showActive(*form));
    form->Drive1->setFocus();
    QCOMPARE(tabbedThrough(8),
             (QStringList{u"Drive1"_s, u"Dir1"_s, u"File1"_s, u"Image1_0"_s, u"Image1_1"_s, u"Image1_2"_s,
                          u"Image1_3"_s, u"Image1_4"_s, u"Drive1"_s}));
}

QTEST_MAIN(TestFileManager)
#include "TestFileManager.moc"
