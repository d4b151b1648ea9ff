#include <QSignalSpy>
#include <QTest>

#include "controls/DirListBox.h"
#include "controls/DriveListBox.h"
#include "controls/FileListBox.h"
#include "tests/runtime/FailureOf.h"
#include "tests/support/FakeLocalFolders.h"
#include "tests/support/ScriptedPrompts.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// List boxes, and the drive, folder and file lists made from them.
class TestFolderLists : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aListStartsEmpty();
    void listIndexRaisesClickEachTime();
    void listIndexOutsideTheListIsAnError();
    void theUsersChoiceRaisesClickOnce();
    void anAssistiveToolsChoiceIsAChoice();
    void typingGoesToALine();
    void enterAndDoubleClickRaiseDblClick();
    void severalLinesCanBeChosen();
    void addingLinesKeepsTheChoice();

    void drivesAreListedWithTheirLabels();
    void drivesComeAndGo();
    void choosingADriveRaisesChange();
    void aDriveThatCannotBeReadIsTold();
    void aDriveThatThereIsNotIsAnError();

    void theWayAndTheFoldersAreListed();
    void openingAFolderRaisesChange();
    void theKeysOpenFolders();
    void aFolderThatCannotBeOpenedIsTold();
    void aPathThatCannotBeOpenedIsAnError();
    void aVanishedFolderGivesWayToTheOneAbove();
    void aDrivesNameIsItsCurrentFolder();

    void filesAreSortedWithoutRegardToCase();
    void pathsAndPatternsRaiseTheirEventsOnce();
    void patterns_data();
    void patterns();
    void aHostilePatternEnds();
    void refreshKeepsWhatWasChosen();
    void refreshOfAVanishedFolderEmptiesTheList();
    void aHundredThousandFilesAreThereAtOnce();
    void filesThatComeAndGoAreFollowed();
    void aChosenFileThatGoesIsChosenNoMore();
    void whatIsSeenStaysWhereItIs();
    void nothingMovesWhileTheButtonIsDown();
    void manyChosenFilesStayChosen();
    void anotherFolderIsFollowedInstead();
    void foldersThatComeAndGoAreFollowed();
    void aFolderThatGoesItselfStaysOpenWithoutAny();
    void theListsHaveNames();
};

namespace {

QStringList linesOf(const ListBox &list)
{
    QStringList lines;
    for (int i = 0; !list.List(i).isEmpty(); ++i)
        lines.append(list.List(i));
    return lines;
}

QPoint middleOf(const ListBox &list, int index)
{
    return list.visualRect(list.model()->index(index, 0)).center();
}

void clickLine(ListBox &list, int index, Qt::KeyboardModifiers modifiers = {})
{
    QTest::mouseClick(list.viewport(), Qt::LeftButton, modifiers, middleOf(list, index));
}

void doubleClickLine(ListBox &list, int index)
{
    clickLine(list, index);
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, middleOf(list, index));
}

void fill(ListBox &list)
{
    list.addItems({u"alpha"_s, u"beta"_s, u"gamma"_s});
    list.resize(200, 200);
    list.show();
}

std::shared_ptr<FakeLocalFolders> someFolders()
{
    auto folders = std::make_shared<FakeLocalFolders>();
    folders->add(u"c:\\"_s, {u"readme.txt"_s});
    folders->add(u"c:\\Music"_s);
    folders->add(u"c:\\letters"_s, {u"b.txt"_s, u"A.txt"_s, u"c.bmp"_s, u"a.txt"_s});
    folders->add(u"c:\\letters\\old"_s, {u"x.txt"_s});
    return folders;
}

} // namespace

void TestFolderLists::aListStartsEmpty()
{
    ListBox list;
    QCOMPARE(list.ListCount(), 0);
    QCOMPARE(list.ListIndex(), -1);
    QCOMPARE(list.Text(), QString());
    QCOMPARE(list.List(0), QString());
    QCOMPARE(list.List(-1), QString());
}

void TestFolderLists::listIndexRaisesClickEachTime()
{
    ListBox list;
    fill(list);
    const QSignalSpy clicks(&list, &ListBox::Click);
    list.setListIndex(1);
    QCOMPARE(clicks.count(), 1);
    QCOMPARE(list.Text(), u"beta"_s);
    QVERIFY(list.Selected(1));
    list.setListIndex(1);
    QCOMPARE(clicks.count(), 2);
    list.setListIndex(-1);
    QCOMPARE(clicks.count(), 3);
    QVERIFY(!list.Selected(1));
    QCOMPARE(list.ListIndex(), -1);
}

void TestFolderLists::listIndexOutsideTheListIsAnError()
{
    ListBox list;
    fill(list);
    const QSignalSpy clicks(&list, &ListBox::Click);
    QCOMPARE(test::numberOf([&] { list.setListIndex(3); }), error::InvalidPropertyValue);
    QCOMPARE(test::numberOf([&] { list.setListIndex(-2); }), error::InvalidPropertyValue);
    QCOMPARE(test::numberOf([&] { list.setSelected(3, true); }), error::InvalidPropertyValue);
    QCOMPARE(clicks.count(), 0);
}

void TestFolderLists::theUsersChoiceRaisesClickOnce()
{
    ListBox list;
    fill(list);
    const QSignalSpy clicks(&list, &ListBox::Click);
    clickLine(list, 1);
    QCOMPARE(list.ListIndex(), 1);
    QCOMPARE(clicks.count(), 1);
    clickLine(list, 1);
    QCOMPARE(clicks.count(), 2);
    QTest::keyClick(&list, Qt::Key_Down);
    QCOMPARE(list.ListIndex(), 2);
    QCOMPARE(clicks.count(), 3);
    QTest::keyClick(&list, Qt::Key_Down);
    QCOMPARE(clicks.count(), 3);
    // Pressing on one line and letting go on another is one choice.
    QTest::mousePress(list.viewport(), Qt::LeftButton, {}, middleOf(list, 0));
    QCOMPARE(clicks.count(), 3);
    QTest::mouseRelease(list.viewport(), Qt::LeftButton, {}, middleOf(list, 1));
    QCOMPARE(clicks.count(), 4);
    // Below the last line there is nothing to choose.
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, QPoint(5, 190));
    QCOMPARE(clicks.count(), 4);
}

void TestFolderLists::anAssistiveToolsChoiceIsAChoice()
{
    ListBox list;
    fill(list);
    const QSignalSpy clicks(&list, &ListBox::Click);
    list.selectionModel()->select(list.model()->index(2, 0), QItemSelectionModel::ClearAndSelect);
    QCOMPARE(list.ListIndex(), 2);
    QCOMPARE(clicks.count(), 1);
}

void TestFolderLists::typingGoesToALine()
{
    ListBox list;
    fill(list);
    const QSignalSpy clicks(&list, &ListBox::Click);
    QTest::keyClicks(&list, u"GA"_s);
    QCOMPARE(list.Text(), u"gamma"_s);
    QCOMPARE(clicks.count(), 1);
}

void TestFolderLists::enterAndDoubleClickRaiseDblClick()
{
    ListBox list;
    fill(list);
    const QSignalSpy doubles(&list, &ListBox::DblClick);
    QTest::keyClick(&list, Qt::Key_Return);
    QCOMPARE(doubles.count(), 0);
    doubleClickLine(list, 1);
    QCOMPARE(doubles.count(), 1);
    QTest::keyClick(&list, Qt::Key_Return);
    QTest::keyClick(&list, Qt::Key_Enter);
    QCOMPARE(doubles.count(), 3);
}

void TestFolderLists::severalLinesCanBeChosen()
{
    ListBox list;
    fill(list);
    list.setSelected(0, true);
    list.setSelected(1, true);
    QVERIFY(!list.Selected(0));
    list.setMultiSelect(true);
    list.setSelected(0, true);
    QVERIFY(list.Selected(0));
    QVERIFY(list.Selected(1));
    list.setSelected(1, false);
    QVERIFY(!list.Selected(1));
    clickLine(list, 2, Qt::ControlModifier);
    QVERIFY(list.Selected(0));
    QVERIFY(list.Selected(2));
    const QSignalSpy clicks(&list, &ListBox::Click);
    QTest::keyClick(&list, Qt::Key_A, Qt::ControlModifier);
    QVERIFY(list.Selected(1));
    QCOMPARE(clicks.count(), 1);
}

void TestFolderLists::addingLinesKeepsTheChoice()
{
    ListBox list;
    fill(list);
    list.setListIndex(1);
    const QSignalSpy clicks(&list, &ListBox::Click);
    list.AddItem(u"delta"_s);
    list.addItems({u"epsilon"_s, QString()});
    QCOMPARE(list.ListCount(), 6);
    QCOMPARE(list.Text(), u"beta"_s);
    list.Clear();
    QCOMPARE(list.ListCount(), 0);
    QCOMPARE(list.ListIndex(), -1);
    QCOMPARE(clicks.count(), 0);
}

void TestFolderLists::drivesAreListedWithTheirLabels()
{
    const DriveListBox list(someFolders());
    QCOMPARE(list.count(), 2);
    QCOMPARE(list.itemText(0), u"c: [Home]"_s);
    QCOMPARE(list.itemText(1), u"z:"_s);
    QCOMPARE(list.Drive(), u"c:"_s);
    QCOMPARE(list.currentText(), u"c: [Home]"_s);
}

void TestFolderLists::drivesComeAndGo()
{
    const auto folders = someFolders();
    DriveListBox list(folders);
    const QSignalSpy changes(&list, &DriveListBox::Change);
    folders->addDrive('d', u"STICK"_s);
    QCOMPARE(list.findText(u"d: [STICK]"_s), 2);
    QCOMPARE(list.Drive(), u"c:"_s);
    list.setDrive(u"D:"_s);
    QCOMPARE(changes.count(), 1);
    folders->removeDrive('d');
    QCOMPARE(list.Drive(), u"d:"_s);
    QCOMPARE(list.currentText(), u"d: [not available]"_s);
    QCOMPARE(test::numberOf([&] {
                 list.setDrive(u"c:"_s);
                 list.setDrive(u"d:"_s);
             }),
             error::DeviceUnavailable);
    QCOMPARE(changes.count(), 2);
}

void TestFolderLists::choosingADriveRaisesChange()
{
    DriveListBox list(someFolders());
    list.show();
    const QSignalSpy changes(&list, &DriveListBox::Change);
    QTest::keyClick(&list, Qt::Key_Down);
    QCOMPARE(list.Drive(), u"z:"_s);
    QCOMPARE(changes.count(), 1);
    list.setDrive(u"z: [All]"_s);
    QCOMPARE(changes.count(), 1);
    list.setDrive(u"c:"_s);
    QCOMPARE(list.currentText(), u"c: [Home]"_s);
    QCOMPARE(changes.count(), 2);
}

void TestFolderLists::aDriveThatCannotBeReadIsTold()
{
    ScriptedPrompts prompts;
    const auto folders = someFolders();
    folders->fail(u"z:\\"_s, RuntimeError(error::DiskNotReady, u"It does not answer."_s));
    DriveListBox list(folders);
    list.show();
    const QSignalSpy changes(&list, &DriveListBox::Change);
    prompts.expect(u"It does not answer."_s, u"Vandrel"_s).icon(BoxIcon::Information);
    QTest::keyClick(&list, Qt::Key_Down);
    QCOMPARE(list.Drive(), u"c:"_s);
    QCOMPARE(list.currentText(), u"c: [Home]"_s);
    QCOMPARE(changes.count(), 0);
    QVERIFY(prompts.allShown());
}

void TestFolderLists::aDriveThatThereIsNotIsAnError()
{
    DriveListBox list(someFolders());
    QCOMPARE(test::numberOf([&] { list.setDrive(u"q:"_s); }), error::DeviceUnavailable);
    QCOMPARE(test::numberOf([&] { list.setDrive(QString()); }), error::DeviceUnavailable);
    QCOMPARE(list.Drive(), u"c:"_s);
}

void TestFolderLists::theWayAndTheFoldersAreListed()
{
    DirListBox list(someFolders());
    QCOMPARE(list.Path(), u"c:\\"_s);
    QCOMPARE(linesOf(list), QStringList({u"c:\\"_s, u"letters"_s, u"Music"_s}));
    list.setPath(u"c:\\letters\\old"_s);
    QCOMPARE(linesOf(list), QStringList({u"c:\\"_s, u"letters"_s, u"old"_s}));
    QCOMPARE(list.Text(), u"old"_s);
}

void TestFolderLists::openingAFolderRaisesChange()
{
    DirListBox list(someFolders());
    list.resize(200, 200);
    list.show();
    const QSignalSpy changes(&list, &DirListBox::Change);
    clickLine(list, 1);
    QCOMPARE(list.Path(), u"c:\\"_s);
    QCOMPARE(changes.count(), 0);
    doubleClickLine(list, 1);
    QCOMPARE(list.Path(), u"c:\\letters"_s);
    QCOMPARE(changes.count(), 1);
    doubleClickLine(list, 1);
    QCOMPARE(changes.count(), 1);
    doubleClickLine(list, 0);
    QCOMPARE(list.Path(), u"c:\\"_s);
    list.setPath(u"c:\\letters\\"_s);
    QCOMPARE(list.Path(), u"c:\\letters"_s);
    QCOMPARE(changes.count(), 3);
    list.setPath(u"c:\\letters"_s);
    QCOMPARE(changes.count(), 3);
}

void TestFolderLists::theKeysOpenFolders()
{
    DirListBox list(someFolders());
    list.show();
    QTest::keyClicks(&list, u"let"_s);
    QTest::keyClick(&list, Qt::Key_Return);
    QCOMPARE(list.Path(), u"c:\\letters"_s);
    QTest::keyClick(&list, Qt::Key_Down);
    QTest::keyClick(&list, Qt::Key_Return);
    QCOMPARE(list.Path(), u"c:\\letters\\old"_s);
    QTest::keyClick(&list, Qt::Key_Backspace);
    QTest::keyClick(&list, Qt::Key_Backspace);
    QTest::keyClick(&list, Qt::Key_Backspace);
    QCOMPARE(list.Path(), u"c:\\"_s);
}

void TestFolderLists::aFolderThatCannotBeOpenedIsTold()
{
    ScriptedPrompts prompts;
    const auto folders = someFolders();
    DirListBox list(folders);
    list.resize(200, 200);
    list.show();
    const QSignalSpy changes(&list, &DirListBox::Change);
    folders->fail(u"c:\\letters"_s, RuntimeError(error::PermissionDenied, u"Not for you."_s));
    prompts.expect(u"Not for you."_s, u"Vandrel"_s).icon(BoxIcon::Information);
    doubleClickLine(list, 1);
    QCOMPARE(list.Path(), u"c:\\"_s);
    QCOMPARE(changes.count(), 0);
    QVERIFY(prompts.allShown());
}

void TestFolderLists::aPathThatCannotBeOpenedIsAnError()
{
    DirListBox list(someFolders());
    const QSignalSpy changes(&list, &DirListBox::Change);
    QCOMPARE(test::numberOf([&] { list.setPath(u"c:\\nowhere"_s); }), error::PathNotFound);
    QCOMPARE(test::numberOf([&] { list.setPath(u"q:\\"_s); }), error::DeviceUnavailable);
    QCOMPARE(test::numberOf([&] { list.setPath(QString()); }), error::BadFileName);
    QCOMPARE(list.Path(), u"c:\\"_s);
    QCOMPARE(changes.count(), 0);
}

void TestFolderLists::aVanishedFolderGivesWayToTheOneAbove()
{
    const auto folders = someFolders();
    DirListBox list(folders);
    list.setPath(u"c:\\letters\\old"_s);
    const QSignalSpy changes(&list, &DirListBox::Change);
    list.Refresh();
    QCOMPARE(changes.count(), 0);
    folders->remove(u"c:\\letters\\old"_s);
    folders->remove(u"c:\\letters"_s);
    list.Refresh();
    QCOMPARE(list.Path(), u"c:\\"_s);
    QCOMPARE(changes.count(), 1);
    folders->remove(u"c:\\"_s);
    list.Refresh();
    QCOMPARE(linesOf(list), QStringList({u"c:\\"_s}));
    QCOMPARE(changes.count(), 1);
}

void TestFolderLists::aDrivesNameIsItsCurrentFolder()
{
    DirListBox list(someFolders());
    list.setPath(u"c:\\letters"_s);
    list.setPath(u"z:"_s);
    QCOMPARE(list.Path(), u"z:\\"_s);
    list.setPath(u"c:"_s);
    QCOMPARE(list.Path(), u"c:\\"_s);
}

void TestFolderLists::filesAreSortedWithoutRegardToCase()
{
    FileListBox list(someFolders());
    QCOMPARE(linesOf(list), QStringList({u"readme.txt"_s}));
    list.setPath(u"c:\\letters"_s);
    QCOMPARE(linesOf(list), QStringList({u"A.txt"_s, u"a.txt"_s, u"b.txt"_s, u"c.bmp"_s}));
    QCOMPARE(list.FileName(), QString());
    list.setListIndex(3);
    QCOMPARE(list.FileName(), u"c.bmp"_s);
}

void TestFolderLists::pathsAndPatternsRaiseTheirEventsOnce()
{
    FileListBox list(someFolders());
    const QSignalSpy paths(&list, &FileListBox::PathChange);
    const QSignalSpy patterns(&list, &FileListBox::PatternChange);
    list.setPath(u"c:\\letters"_s);
    list.setPath(u"c:\\letters"_s);
    QCOMPARE(paths.count(), 1);
    list.setPattern(u"*.TXT"_s);
    list.setPattern(u"*.TXT"_s);
    QCOMPARE(patterns.count(), 1);
    QCOMPARE(linesOf(list), QStringList({u"A.txt"_s, u"a.txt"_s, u"b.txt"_s}));
    QCOMPARE(test::numberOf([&] { list.setPath(u"c:\\nowhere"_s); }), error::PathNotFound);
    QCOMPARE(list.Path(), u"c:\\letters"_s);
    QCOMPARE(list.ListCount(), 3);
    QCOMPARE(paths.count(), 1);
}

void TestFolderLists::patterns_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<bool>("matches");
    QTest::newRow("all") << u"Makefile"_s << u"*.*"_s << true;
    QTest::newRow("a star") << u"Makefile"_s << u"*"_s << true;
    QTest::newRow("extension") << u"a.bmp"_s << u"*.bmp"_s << true;
    QTest::newRow("either case") << u"A.BmP"_s << u"*.bMp"_s << true;
    QTest::newRow("case beyond ASCII") << u"É.bmp"_s << u"é*"_s << true;
    QTest::newRow("one of several") << u"a.jpg"_s << u"*.bmp; *.jpg;*.tif"_s << true;
    QTest::newRow("none of several") << u"a.png"_s << u"*.bmp;*.jpg;*.tif"_s << false;
    QTest::newRow("another extension behind") << u"a.bmp.gz"_s << u"*.bmp"_s << false;
    QTest::newRow("the extension alone") << u"bmp"_s << u"*.bmp"_s << false;
    QTest::newRow("one character") << u"a1.txt"_s << u"a?.txt"_s << true;
    QTest::newRow("one character too few") << u"a.txt"_s << u"a?.txt"_s << false;
    QTest::newRow("two stars") << u"abcabd"_s << u"*ab?"_s << true;
    QTest::newRow("a name") << u"readme"_s << u"README"_s << true;
    QTest::newRow("nothing") << u"readme"_s << QString() << false;
}

void TestFolderLists::patterns()
{
    QFETCH(QString, name);
    QFETCH(QString, pattern);
    QTEST(matchesPattern(name, pattern), "matches");
}

void TestFolderLists::aHostilePatternEnds()
{
    const QString name(255, u'a');
    QVERIFY(!matchesPattern(name, u"*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*b"_s));
}

void TestFolderLists::refreshKeepsWhatWasChosen()
{
    const auto folders = someFolders();
    FileListBox list(folders);
    list.setMultiSelect(true);
    list.setPath(u"c:\\letters"_s);
    list.setSelected(0, true);
    list.setListIndex(2);
    list.setSelected(3, true);
    const QSignalSpy clicks(&list, &ListBox::Click);
    folders->add(u"c:\\letters"_s, {u"0.txt"_s, u"b.txt"_s, u"c.bmp"_s});
    list.Refresh();
    QCOMPARE(linesOf(list), QStringList({u"0.txt"_s, u"b.txt"_s, u"c.bmp"_s}));
    QVERIFY(!list.Selected(0));
    QVERIFY(list.Selected(1));
    QVERIFY(list.Selected(2));
    QCOMPARE(list.FileName(), u"b.txt"_s);
    QCOMPARE(clicks.count(), 0);
}

void TestFolderLists::refreshOfAVanishedFolderEmptiesTheList()
{
    const auto folders = someFolders();
    FileListBox list(folders);
    list.setPath(u"c:\\letters"_s);
    folders->remove(u"c:\\letters"_s);
    list.Refresh();
    QCOMPARE(list.ListCount(), 0);
    QCOMPARE(list.Path(), u"c:\\letters"_s);
}

void TestFolderLists::aHundredThousandFilesAreThereAtOnce()
{
    constexpr int count = 100'000;
    const auto folders = someFolders();
    QStringList names;
    for (int i = count; i > 0; --i)
        names.append(u"File %1.txt"_s.arg(i, 6, 10, QLatin1Char('0')));
    folders->add(u"c:\\many"_s, names);
    FileListBox list(folders);
    list.resize(200, 200);
    list.show();
    list.setPath(u"c:\\many"_s);
    QCOMPARE(list.ListCount(), count);
    QCOMPARE(list.List(0), u"File 000001.txt"_s);
    QCOMPARE(list.List(count - 1), u"File 100000.txt"_s);
    list.setListIndex(count - 1);
    QVERIFY(list.visualRect(list.currentIndex()).isValid());
    QVERIFY(list.viewport()->rect().intersects(list.visualRect(list.currentIndex())));
}

void TestFolderLists::filesThatComeAndGoAreFollowed()
{
    const auto folders = someFolders();
    FileListBox files(folders);
    files.setPattern(u"*.txt"_s);
    files.setPath(u"c:\\letters"_s);
    files.setListIndex(1);
    const QSignalSpy clicks(&files, &ListBox::Click);
    const QSignalSpy paths(&files, &FileListBox::PathChange);
    folders->add(u"c:\\letters"_s, {u"Aa.txt"_s, u"a.txt"_s, u"new.bmp"_s, u"z.txt"_s, u"0.txt"_s});
    folders->tellChange(u"c:\\letters"_s);
    QCOMPARE(linesOf(files), QStringList({u"0.txt"_s, u"a.txt"_s, u"Aa.txt"_s, u"z.txt"_s}));
    QCOMPARE(files.FileName(), u"a.txt"_s);
    QCOMPARE(clicks.count() + paths.count(), 0);
}

void TestFolderLists::aChosenFileThatGoesIsChosenNoMore()
{
    const auto folders = someFolders();
    FileListBox files(folders);
    files.setPath(u"c:\\letters"_s);
    files.setListIndex(0);
    const QSignalSpy clicks(&files, &ListBox::Click);
    folders->add(u"c:\\letters"_s, {u"b.txt"_s});
    folders->tellChange(u"c:\\letters"_s);
    QCOMPARE(files.ListIndex(), -1);
    QCOMPARE(files.FileName(), QString());
    QCOMPARE(clicks.count(), 0);
}

void TestFolderLists::whatIsSeenStaysWhereItIs()
{
    const auto folders = someFolders();
    QStringList names;
    for (int i = 1000; i < 2000; ++i)
        names.append(QString::number(i));
    folders->add(u"c:\\letters"_s, names);
    FileListBox files(folders);
    files.setPath(u"c:\\letters"_s);
    files.resize(200, 200);
    files.show();
    files.setListIndex(10);
    files.scrollTo(files.model()->index(500, 0), QAbstractItemView::PositionAtTop);
    names.prepend(u"0999"_s);
    names.removeOne(u"1700"_s);
    folders->add(u"c:\\letters"_s, names);
    folders->tellChange(u"c:\\letters"_s);
    QCOMPARE(files.indexAt({1, 1}).row(), 501);
    QCoreApplication::processEvents();
    QCOMPARE(files.indexAt({1, 1}).row(), 501);
    QCOMPARE(files.FileName(), u"1010"_s);
}

void TestFolderLists::nothingMovesWhileTheButtonIsDown()
{
    const auto folders = someFolders();
    FileListBox files(folders);
    files.setPath(u"c:\\letters"_s);
    files.resize(200, 200);
    files.show();
    QTest::mousePress(files.viewport(), Qt::LeftButton, {}, middleOf(files, 1));
    folders->add(u"c:\\letters"_s, {u"a.txt"_s, u"A.txt"_s, u"0.txt"_s});
    folders->tellChange(u"c:\\letters"_s);
    QCOMPARE(files.ListCount(), 4);
    QStringList chosen;
    connect(&files, &ListBox::Click, this, [&] { chosen.append(files.FileName()); });
    QTest::mouseRelease(files.viewport(), Qt::LeftButton, {}, middleOf(files, 1));
    QCOMPARE(chosen, QStringList({u"a.txt"_s}));
    QCOMPARE(linesOf(files), QStringList({u"0.txt"_s, u"A.txt"_s, u"a.txt"_s}));
    QCOMPARE(files.FileName(), u"a.txt"_s);
}

void TestFolderLists::manyChosenFilesStayChosen()
{
    const auto folders = someFolders();
    QStringList names;
    for (int i = 0; i < 100'000; ++i)
        names.append(QStringLiteral("file%1").arg(i, 6, 10, QLatin1Char('0')));
    folders->add(u"c:\\letters"_s, names);
    FileListBox files(folders);
    files.setMultiSelect(true);
    files.setPath(u"c:\\letters"_s);
    files.selectAll();
    names.append(u"another"_s);
    folders->add(u"c:\\letters"_s, names);
    folders->tellChange(u"c:\\letters"_s);
    QVERIFY(!files.Selected(0));
    QVERIFY(files.Selected(1));
    QVERIFY(files.Selected(100'000));
}

void TestFolderLists::anotherFolderIsFollowedInstead()
{
    const auto folders = someFolders();
    FileListBox files(folders);
    files.setPath(u"c:\\letters"_s);
    folders->add(u"c:\\"_s, {u"news.txt"_s});
    folders->tellChange(u"c:\\"_s);
    QCOMPARE(files.ListCount(), 4);
    files.setPath(u"c:\\"_s);
    folders->add(u"c:\\"_s, {u"late.txt"_s});
    folders->tellChange(u"c:\\"_s);
    QCOMPARE(linesOf(files), QStringList({u"late.txt"_s}));
}

void TestFolderLists::foldersThatComeAndGoAreFollowed()
{
    const auto folders = someFolders();
    DirListBox dirs(folders);
    const QSignalSpy changes(&dirs, &DirListBox::Change);
    const QSignalSpy clicks(&dirs, &ListBox::Click);
    dirs.setListIndex(2);
    QCOMPARE(dirs.Text(), u"Music"_s);
    folders->add(u"c:\\A new one"_s);
    folders->remove(u"c:\\letters\\old"_s);
    folders->remove(u"c:\\letters"_s);
    folders->tellChange(u"c:\\"_s);
    QCOMPARE(linesOf(dirs), QStringList({u"c:\\"_s, u"A new one"_s, u"Music"_s}));
    QCOMPARE(dirs.Text(), u"Music"_s);
    QCOMPARE(changes.count(), 0);
    QCOMPARE(clicks.count(), 1);
}

void TestFolderLists::aFolderThatGoesItselfStaysOpenWithoutAny()
{
    const auto folders = someFolders();
    DirListBox dirs(folders);
    dirs.setPath(u"c:\\letters"_s);
    const QSignalSpy changes(&dirs, &DirListBox::Change);
    folders->remove(u"c:\\letters\\old"_s);
    folders->remove(u"c:\\letters"_s);
    folders->tellChange(u"c:\\letters"_s);
    QCOMPARE(linesOf(dirs), QStringList({u"c:\\"_s, u"letters"_s}));
    QCOMPARE(dirs.Path(), u"c:\\letters"_s);
    QCOMPARE(changes.count(), 0);
    QTest::keyClick(&dirs, Qt::Key_Backspace);
    QCOMPARE(dirs.Path(), u"c:\\"_s);
    QCOMPARE(changes.count(), 1);
}

void TestFolderLists::theListsHaveNames()
{
    const auto folders = someFolders();
    QCOMPARE(DriveListBox(folders).accessibleName(), u"Drive"_s);
    QCOMPARE(DirListBox(folders).accessibleName(), u"Folders"_s);
    QCOMPARE(FileListBox(folders).accessibleName(), u"Files"_s);
}

QTEST_MAIN(TestFolderLists)
#include "TestFolderLists.moc"
