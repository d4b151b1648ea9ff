#include <limits>

#include <QLineEdit>
#include <QMdiArea>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QSignalSpy>

#include "controls/CoolBar.h"
#include "tests/texteditor/Editor.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// The text editor's frame: start-up, file commands, title, list of windows, what is enabled when, closing.
class TestTextFrame : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsWithOneCleanUntitledDocument();
    void theMenusAreTheStatedOnes_data();
    void theMenusAreTheStatedOnes();
    void theDialogsHaveTheirDesignTimeSettings();
    void theListsAreFilledAndChosenInOrder();
    void theSizeShownAtStartIs12WhateverTheDocumentsFont();
    void theLastOfEqualFontNamesWins();
    void newDocumentsCountOn();
    void theDocumentPast32767IsAnOverflow();
    void openingAFileConsumesNoNumber();
    void openingShowsTheFileUnderItsPath();
    void aCancelledOpenDialogDoesNothing();
    void theSameFileOpensTwice();
    void openingAMissingFileIsARuntimeError();
    void saveOfAnUntitledDocumentAsks();
    void saveOfAnUntitledDocumentCanBeCancelled();
    void saveOfANamedDocumentIsSilent();
    void saveAsAlwaysAsks();
    void afterASaveThroughTheDialogFindNextLooksForTheFormerName();
    void aSaveThatFailsLeavesTheDocumentModified();
    void theSaveDialogAlwaysOpensWithItsPatterns();

    void theTitleFollowsTheActiveDocument();
    void aMaximisedChildLeavesTheTitleAlone();
    void oddNamesReachTheTitleUnchanged();
    void theWindowMenuListsTheChildren();
    void theWindowMenuIsEmptyWithoutChildren();
    void ampersandsInNamesAreNoMnemonics();
    void tilingPutsWindowsAboveEachOther();
    void cascadingKeepsTheActiveOneInFront();

    void withoutAChildItsCommandsAreDisabled();
    void whileLoadingTheTextCommandsAreDisabled();
    void cancelledLoadingClosesTheWindow();
    void aFileThatCannotBeReadClosesItsWindow();
    void closingALoadingDocumentAsksNothing();

    void closingTheFrameAsksForEachModifiedDocumentInOrder();
    void cancelOnTheSecondStopsTheWholeClose();
    void exitClosesTheFrame();
    void savingOnCloseThatFailsKeepsTheFrame();
    void namesForAssistiveTools();
    void tabMovesThroughTheToolBar();
    void keysMoveBetweenChildren();
    void keysCloseTheActiveChild_data();
    void keysCloseTheActiveChild();
    void screenFontsAreFamiliesAlone();
};

namespace {

// What must be the same list again and again: the captions of a menu's items, "-" for a separator.
QStringList captions(const QMenu *menu)
{
    QStringList texts;
    for (const QAction *item : menu->actions())
        texts.append(item->isSeparator() ? u"-"_s : item->text());
    return texts;
}

QStringList names(const QMenu *menu)
{
    QStringList texts;
    for (const QAction *item : menu->actions())
        texts.append(item->objectName());
    return texts;
}

FakeDocumentFiles::File file(const QString &text)
{
    FakeDocumentFiles::File made;
    made.text = text;
    return made;
}

// One that is read in the background.
FakeDocumentFiles::File largeFile(const QString &text)
{
    FakeDocumentFiles::File made = file(text);
    made.size = 100'000'000;
    return made;
}

QMdiSubWindow *windowOf(const frmDoc *document)
{
    return qobject_cast<QMdiSubWindow *>(document->parentWidget());
}

} // namespace

void TestTextFrame::startsWithOneCleanUntitledDocument()
{
    Editor editor;
    QVERIFY(editor.show());
    QCOMPARE(editor.frame->documents().size(), 1);
    QCOMPARE(editor.document().Caption(), u"Untitled 1"_s);
    QCOMPARE(editor.document().Tag, u"0"_s);
    QCOMPARE(editor.frame->DocCount.value(), 2);
    QVERIFY(editor.frame->SearchText.isEmpty());
    QCOMPARE(editor.frame->windowTitle(), u"Text - Untitled 1"_s);
    QVERIFY(editor.text().hasFocus());
    QVERIFY(editor.toolbar().Command2->FontStyle());
    QVERIFY(editor.toolbar().Command3->FontStyle());
    QVERIFY(editor.toolbar().Command4->FontStyle());
    QCOMPARE(editor.toolbar().Command2->text(), u"B"_s);
    QCOMPARE(editor.toolbar().Command3->text(), u"I"_s);
    QCOMPARE(editor.toolbar().Command4->text(), u"U"_s);
    QCOMPARE(editor.toolbar().Label1->text(), u" A"_s);
    QCOMPARE(editor.toolbar().Label1->font().family(), u"Arial"_s);
    QCOMPARE(editor.toolbar().Label1->ForeColor(), 0);
}

void TestTextFrame::theMenusAreTheStatedOnes_data()
{
    QTest::addColumn<QString>("menu");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QStringList>("items");
    QTest::addColumn<QStringList>("itemCaptions");
    QTest::newRow("file") << u"file"_s << u"File"_s
                          << QStringList{u"new"_s, u"open"_s,  u"save"_s, u"saveas"_s,
                                         u"s1"_s,  u"print"_s, u"s2"_s,   u"exit"_s}
                          << QStringList{u"New"_s, u"Open..."_s, u"Save"_s, u"Save as..."_s,
                                         u"-"_s,   u"Print"_s,   u"-"_s,    u"Exit"_s};
    QTest::newRow("edit")
        << u"edit"_s << u"Edit"_s
        << QStringList{u"copy"_s, u"cut"_s,      u"paste"_s, u"delete"_s, u"clear"_s,
                       u"s3"_s,   u"timedate"_s, u"s4"_s,    u"selall"_s}
        << QStringList{
               u"Copy"_s, u"Cut"_s,       u"Paste"_s, u"Delete"_s, u"Clear"_s, u"-"_s, u"Insert Time/Date"_s,
               u"-"_s,    u"Select all"_s};
    QTest::newRow("search") << u"search"_s << u"Search"_s << QStringList{u"find"_s, u"findn"_s, u"replace"_s}
                            << QStringList{u"Find..."_s, u"Find Next"_s, u"Replace"_s};
    QTest::newRow("win") << u"win"_s << u"Window"_s
                         << QStringList{u"tile"_s, u"cascade"_s, u"s5"_s, u"a"_s, u"win_1"_s}
                         << QStringList{u"Tile"_s, u"Cascade"_s, u"-"_s, u"(Empty)"_s, u"&1 Untitled 1"_s};
}

void TestTextFrame::theMenusAreTheStatedOnes()
{
    QFETCH(const QString, menu);
    QFETCH(const QString, caption);
    QFETCH(const QStringList, items);
    QFETCH(const QStringList, itemCaptions);
    const Editor editor;
    const auto *found = editor.frame->menuBar()->findChild<QMenu *>(menu);
    QVERIFY(found);
    QCOMPARE(found->title(), caption);
    QCOMPARE(names(found), items);
    QCOMPARE(captions(found), itemCaptions);
}

void TestTextFrame::theDialogsHaveTheirDesignTimeSettings()
{
    const Editor editor;
    QCOMPARE(editor.cd1->DialogTitle, u"Open"_s);
    QCOMPARE(editor.cd1->FileName, u"*.txt;*.doc;*.wri;*.rtf"_s);
    QCOMPARE(editor.cd1->Filter, u"*.txt||*.rtf||*.wri||*.doc"_s);
    QCOMPARE(editor.cd1->InitDir, u"c:\\windows"_s);
    QCOMPARE(editor.cd2->DialogTitle, u"Save"_s);
    QCOMPARE(editor.cd2->FileName, u"*.rtf"_s);
    QCOMPARE(editor.cd2->Filter, u"*.rtf||*.txt"_s);
    QCOMPARE(editor.cd2->InitDir, u"c:\\"_s);
}

void TestTextFrame::theListsAreFilledAndChosenInOrder()
{
    const Editor editor;
    const ComboBox &fonts = *editor.toolbar().cb1;
    QCOMPARE(fonts.ListCount(), 3);
    QCOMPARE(fonts.List(0), u"First"_s);
    QCOMPARE(fonts.List(2), u"Last"_s);
    QCOMPARE(fonts.Text(), editor.text().font().Name);
    const ComboBox &sizes = *editor.toolbar().cb2;
    QStringList offered;
    for (int index = 0; index < sizes.ListCount(); ++index)
        offered.append(sizes.List(index));
    QCOMPARE(offered.join(u' '), u"8 9 10 11 12 14 16 18 20 22 24 26 28 36 48 72"_s);
}

void TestTextFrame::theSizeShownAtStartIs12WhateverTheDocumentsFont()
{
    const QFont before = QApplication::font();
    QFont other = before;
    other.setPointSize(20);
    QApplication::setFont(other);
    {
        Editor editor;
        QCOMPARE(editor.text().font().size, 20.0);
        QCOMPARE(editor.toolbar().cb2->Text(), u"12"_s);
        QVERIFY(editor.show());
        QCOMPARE(editor.toolbar().cb2->Text(), u"12"_s);
        // Choosing 12 applied it: what is typed has the size that is shown.
        QCOMPARE(editor.text().SelFontSize(), std::optional<float>(12));
    }
    QApplication::setFont(before);
}

void TestTextFrame::theLastOfEqualFontNamesWins()
{
    const QString own = Editor::defaultFonts().at(1);
    const Editor editor({own, u"Other"_s, own});
    QCOMPARE(editor.toolbar().cb1->ListIndex(), 2);
}

void TestTextFrame::newDocumentsCountOn()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.frame->menus.new_->trigger();
    QCOMPARE(editor.document().Caption(), u"Untitled 2"_s);
    editor.frame->menus.new_->trigger();
    QCOMPARE(editor.document().Caption(), u"Untitled 3"_s);
    QCOMPARE(editor.frame->documents().size(), 3);
    QCOMPARE(editor.document().Tag, u"0"_s);
    QVERIFY(editor.text().hasFocus());
}

void TestTextFrame::theDocumentPast32767IsAnOverflow()
{
    Editor editor;
    editor.frame->DocCount = std::numeric_limits<qint16>::max();
    editor.prompts.expectError(error::Overflow, u"Overflow"_s);
    editor.frame->menus.new_->trigger();
    QCOMPARE(editor.document().Caption(), u"Untitled 32767"_s);
    QVERIFY(editor.prompts.allShown());
    QCOMPARE(editor.end.count(), 1);
    QVERIFY(editor.end.status() != 0);
}

void TestTextFrame::openingAFileConsumesNoNumber()
{
    Editor editor;
    editor.open(u"c:\\a.rtf"_s, file(u"one"_s));
    QCOMPARE(editor.frame->DocCount.value(), 2);
    editor.frame->menus.new_->trigger();
    QCOMPARE(editor.document().Caption(), u"Untitled 2"_s);
}

void TestTextFrame::openingShowsTheFileUnderItsPath()
{
    Editor editor;
    QVERIFY(editor.show());
    const frmDoc &opened = editor.open(u"c:\\letters\\a.rtf"_s, file(u"one\ntwo"_s));
    QCOMPARE(editor.cd1->shown, QStringList{u"Open *.txt;*.doc;*.wri;*.rtf"_s});
    QCOMPARE(editor.cd1->lastOwner, editor.frame.get());
    QCOMPARE(opened.Caption(), u"c:\\letters\\a.rtf"_s);
    QCOMPARE(opened.rt1->text(), u"one\r\ntwo"_s);
    QCOMPARE(opened.Tag, u"0"_s);
    QCOMPARE(editor.cd1->FileName, u"*.txt;*.doc;*.wri;*.rtf"_s);
    QCOMPARE(editor.frame->windowTitle(), u"Text - c:\\letters\\a.rtf"_s);
    QVERIFY(opened.rt1->hasFocus());
}

void TestTextFrame::aCancelledOpenDialogDoesNothing()
{
    Editor editor;
    editor.cd1->cancel();
    editor.frame->menus.open->trigger();
    QCOMPARE(editor.frame->documents().size(), 1);
    QVERIFY(editor.files->calls().isEmpty());
}

void TestTextFrame::theSameFileOpensTwice()
{
    Editor editor;
    const frmDoc *first = &editor.open(u"c:\\a.rtf"_s, file(u"one"_s));
    const frmDoc *second = &editor.open(u"c:\\a.rtf"_s, file(u"one"_s));
    QVERIFY(first != second);
    QCOMPARE(editor.frame->documents().size(), 3);
}

void TestTextFrame::openingAMissingFileIsARuntimeError()
{
    Editor editor;
    editor.cd1->choose(u"c:\\missing.rtf"_s);
    editor.prompts.expectError(error::FileNotFound);
    editor.frame->menus.open->trigger();
    QVERIFY(editor.prompts.allShown());
    QCOMPARE(editor.end.count(), 1);
}

void TestTextFrame::saveOfAnUntitledDocumentAsks()
{
    Editor editor;
    editor.type(u"hello"_s);
    QCOMPARE(editor.document().Tag, u"5"_s);
    editor.cd2->choose(u"c:\\a.rtf"_s);
    editor.frame->menus.save->trigger();
    QCOMPARE(editor.cd2->shown, QStringList{u"Save As *.rtf"_s});
    QCOMPARE(editor.cd2->lastOwner, editor.frame.get());
    QCOMPARE(editor.files->calls(), QStringList{u"save c:\\a.rtf"_s});
    QCOMPARE(editor.files->text(u"c:\\a.rtf"_s), u"hello"_s);
    QCOMPARE(editor.document().Caption(), u"c:\\a.rtf"_s);
    QCOMPARE(editor.document().Tag, u"0"_s);
    QCOMPARE(editor.cd2->FileName, u"*.rtf"_s);
    QCOMPARE(editor.frame->windowTitle(), u"Text - c:\\a.rtf"_s);
}

void TestTextFrame::saveOfAnUntitledDocumentCanBeCancelled()
{
    Editor editor;
    editor.type(u"hello"_s);
    editor.cd2->cancel();
    editor.frame->menus.save->trigger();
    QVERIFY(editor.files->calls().isEmpty());
    QCOMPARE(editor.document().Caption(), u"Untitled 1"_s);
    QCOMPARE(editor.document().Tag, u"5"_s);
    QCOMPARE(editor.frame->SearchText, u"*.rtf"_s);
}

void TestTextFrame::saveOfANamedDocumentIsSilent()
{
    Editor editor;
    editor.open(u"c:\\a.txt"_s, file(u"old"_s));
    editor.type(u"x"_s);
    editor.frame->menus.save->trigger();
    QCOMPARE(editor.files->calls(), QStringList({u"load c:\\a.txt"_s, u"save c:\\a.txt"_s}));
    QCOMPARE(editor.files->text(u"c:\\a.txt"_s), u"xold"_s);
    QCOMPARE(editor.document().Tag, u"0"_s);
    QVERIFY(editor.cd2->shown.isEmpty());
    QVERIFY(editor.frame->SearchText.isEmpty());
}

void TestTextFrame::saveAsAlwaysAsks()
{
    Editor editor;
    editor.open(u"c:\\a.rtf"_s, file(u"old"_s));
    editor.cd2->choose(u"c:\\b.rtf"_s);
    editor.frame->menus.saveas->trigger();
    QCOMPARE(editor.document().Caption(), u"c:\\b.rtf"_s);
    QCOMPARE(editor.files->text(u"c:\\b.rtf"_s), u"old"_s);
    QCOMPARE(editor.cd2->FileName, u"*.rtf"_s);
    editor.cd2->cancel();
    editor.frame->menus.saveas->trigger();
    QCOMPARE(editor.document().Caption(), u"c:\\b.rtf"_s);
}

void TestTextFrame::afterASaveThroughTheDialogFindNextLooksForTheFormerName()
{
    Editor editor;
    editor.text().setText(u"word *.rtf word"_s);
    editor.prompts.expectInput(u"Enter the text to search for:"_s, u"Find"_s).type(u"word"_s);
    editor.frame->menus.find->trigger();
    editor.cd2->choose(u"c:\\a.rtf"_s);
    editor.frame->menus.save->trigger();
    QCOMPARE(editor.frame->SearchText, u"*.rtf"_s);
    editor.frame->menus.findn->trigger();
    QCOMPARE(editor.text().SelText(), u"*.rtf"_s);
}

void TestTextFrame::aSaveThatFailsLeavesTheDocumentModified()
{
    Editor editor;
    editor.open(u"c:\\a.rtf"_s, file(u"old"_s));
    editor.type(u"x"_s);
    editor.files->failSaving(RuntimeError(error::DiskFull));
    editor.prompts.expectError(error::DiskFull);
    editor.frame->menus.save->trigger();
    QVERIFY(editor.prompts.allShown());
    QCOMPARE(editor.end.count(), 1);
    QCOMPARE(editor.document().Tag, u"1"_s);
    QCOMPARE(editor.files->text(u"c:\\a.rtf"_s), u"old"_s);
}

void TestTextFrame::theSaveDialogAlwaysOpensWithItsPatterns()
{
    Editor editor;
    editor.cd2->choose(u"c:\\a.rtf"_s);
    editor.frame->menus.saveas->trigger();
    editor.cd2->choose(u"c:\\b.rtf"_s);
    editor.frame->menus.saveas->trigger();
    QCOMPARE(editor.cd2->shown, QStringList({u"Save As *.rtf"_s, u"Save As *.rtf"_s}));
}

void TestTextFrame::theTitleFollowsTheActiveDocument()
{
    Editor editor;
    QVERIFY(editor.show());
    frmDoc &first = editor.document();
    editor.frame->menus.new_->trigger();
    QCOMPARE(editor.frame->windowTitle(), u"Text - Untitled 2"_s);
    windowOf(&first)->setFocus();
    editor.frame->findChild<QMdiArea *>()->setActiveSubWindow(windowOf(&first));
    QCOMPARE(editor.frame->windowTitle(), u"Text - Untitled 1"_s);
    Editor::close(first);
    QCOMPARE(editor.frame->windowTitle(), u"Text - Untitled 2"_s);
    Editor::close(editor.document());
    QCOMPARE(editor.frame->windowTitle(), u"Text - "_s);
}

void TestTextFrame::aMaximisedChildLeavesTheTitleAlone()
{
    Editor editor;
    QVERIFY(editor.show());
    windowOf(&editor.document())->showMaximized();
    QCOMPARE(editor.frame->windowTitle(), u"Text - Untitled 1"_s);
    editor.frame->menus.new_->trigger();
    QVERIFY(windowOf(&editor.document())->isMaximized());
    QCOMPARE(editor.frame->windowTitle(), u"Text - Untitled 2"_s);
    editor.cd2->choose(u"c:\\a.rtf"_s);
    editor.frame->menus.save->trigger();
    QCOMPARE(editor.frame->windowTitle(), u"Text - c:\\a.rtf"_s);
    windowOf(&editor.document())->showNormal();
    QCOMPARE(editor.frame->windowTitle(), u"Text - c:\\a.rtf"_s);
    Editor::close(editor.document());
    QCOMPARE(editor.frame->windowTitle(), u"Text - Untitled 1"_s);
}

void TestTextFrame::oddNamesReachTheTitleUnchanged()
{
    Editor editor;
    const QString path = u"c:\\"_s + QString(300, u'x') + u"%1&[1].rtf"_s;
    editor.open(path, file(u"x"_s));
    QCOMPARE(editor.document().Caption(), path);
    QCOMPARE(editor.frame->windowTitle(), u"Text - "_s + path);
}

void TestTextFrame::theWindowMenuListsTheChildren()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.open(u"c:\\a.rtf"_s, file(u"x"_s));
    QMenu *win = editor.frame->menus.win;
    const QStringList listed = captions(win).mid(4);
    QCOMPARE(listed, QStringList({u"&1 Untitled 1"_s, u"&2 c:\\a.rtf"_s}));
    QVERIFY(!editor.frame->menus.a->isVisible());
    QVERIFY(!win->actions().at(4)->isChecked());
    QVERIFY(win->actions().at(5)->isChecked());
    win->actions().at(4)->trigger();
    QCOMPARE(editor.document().Caption(), u"Untitled 1"_s);
    QVERIFY(win->actions().at(4)->isChecked());
    QVERIFY(!win->actions().at(5)->isChecked());
    QTRY_VERIFY(editor.text().hasFocus());
}

void TestTextFrame::theWindowMenuIsEmptyWithoutChildren()
{
    Editor editor;
    Editor::close(editor.document());
    QVERIFY(editor.frame->menus.a->isVisible());
    QVERIFY(!editor.frame->menus.a->isEnabled());
    QCOMPARE(captions(editor.frame->menus.win).last(), u"(Empty)"_s);
}

void TestTextFrame::ampersandsInNamesAreNoMnemonics()
{
    Editor editor;
    editor.open(u"c:\\a&b.rtf"_s, file(u"x"_s));
    QCOMPARE(captions(editor.frame->menus.win).last(), u"&2 c:\\a&&b.rtf"_s);
}

void TestTextFrame::tilingPutsWindowsAboveEachOther()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.frame->menus.new_->trigger();
    editor.frame->menus.tile->trigger();
    const QRect upper = editor.frame->documents().at(0)->parentWidget()->geometry();
    const QRect lower = editor.frame->documents().at(1)->parentWidget()->geometry();
    const QRect area = editor.frame->findChild<QMdiArea *>()->viewport()->rect();
    QCOMPARE(upper.width(), area.width());
    QCOMPARE(lower.width(), area.width());
    QCOMPARE(upper.topLeft(), area.topLeft());
    QCOMPARE(lower.top(), upper.bottom() + 1);
    QCOMPARE(lower.bottom(), area.bottom());
    QCOMPARE(editor.document().Caption(), u"Untitled 2"_s);
}

void TestTextFrame::cascadingKeepsTheActiveOneInFront()
{
    Editor editor;
    QVERIFY(editor.show());
    for (int count = 0; count < 2; ++count)
        editor.frame->menus.new_->trigger();
    const QList<frmDoc *> documents = editor.frame->documents();
    windowOf(documents.at(1))->showMaximized();
    editor.frame->menus.cascade->trigger();
    QCOMPARE(editor.frame->activeDocument(), documents.at(1));
    QSet<int> places;
    for (const frmDoc *document : documents) {
        QVERIFY(!windowOf(document)->isMaximized());
        places.insert(windowOf(document)->x());
    }
    QCOMPARE(places.size(), 3);
    const QList<QMdiSubWindow *> order
        = editor.frame->findChild<QMdiArea *>()->subWindowList(QMdiArea::StackingOrder);
    QCOMPARE(order.last(), windowOf(documents.at(1)));
}

namespace {

QList<QAction *> textCommands(const TextMenus &menus)
{
    return {menus.save,  menus.saveas,   menus.print,  menus.copy, menus.cut,   menus.paste,  menus.delete_,
            menus.clear, menus.timedate, menus.selall, menus.find, menus.findn, menus.replace};
}

bool allEnabled(const QList<QAction *> &items, bool enabled)
{
    return std::all_of(items.begin(), items.end(),
                       [enabled](const QAction *item) { return item->isEnabled() == enabled; });
}

} // namespace

void TestTextFrame::withoutAChildItsCommandsAreDisabled()
{
    Editor editor;
    QVERIFY(editor.show());
    const TextMenus &menus = editor.frame->menus;
    QVERIFY(allEnabled(textCommands(menus) + QList<QAction *>{menus.tile, menus.cascade}, true));
    Editor::close(editor.document());
    QVERIFY(!editor.frame->activeDocument());
    QVERIFY(allEnabled(textCommands(menus) + QList<QAction *>{menus.tile, menus.cascade}, false));
    QVERIFY(allEnabled({menus.new_, menus.open, menus.exit}, true));
    QVERIFY(!editor.toolbar().cb1->isEnabled());
    QVERIFY(!editor.toolbar().Command2->isEnabled());
    QVERIFY(!editor.toolbar().Label1->isEnabled());
    menus.new_->trigger();
    QVERIFY(allEnabled(textCommands(menus), true));
    QVERIFY(editor.toolbar().cb1->isEnabled());
}

void TestTextFrame::whileLoadingTheTextCommandsAreDisabled()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.files->holdReading();
    frmDoc &opened = editor.open(u"c:\\big.rtf"_s, largeFile(u"big"_s));
    QVERIFY(opened.rt1->isLoading());
    const TextMenus &menus = editor.frame->menus;
    QVERIFY(allEnabled(textCommands(menus), false));
    QVERIFY(allEnabled({menus.new_, menus.open, menus.exit, menus.tile, menus.cascade}, true));
    QVERIFY(!editor.toolbar().cb2->isEnabled());
    // Another document is there to be worked on meanwhile.
    menus.new_->trigger();
    QVERIFY(allEnabled(textCommands(menus), true));
    windowOf(&opened)->setFocus();
    editor.frame->findChild<QMdiArea *>()->setActiveSubWindow(windowOf(&opened));
    QVERIFY(allEnabled(textCommands(menus), false));
    editor.files->releaseReading();
    QTRY_VERIFY(!opened.rt1->isLoading());
    QVERIFY(allEnabled(textCommands(menus), true));
    QVERIFY(editor.toolbar().cb2->isEnabled());
    QCOMPARE(opened.rt1->text(), u"big"_s);
    QCOMPARE(opened.Tag, u"0"_s);
}

void TestTextFrame::cancelledLoadingClosesTheWindow()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.files->holdReading();
    const QPointer<frmDoc> opened = &editor.open(u"c:\\big.rtf"_s, largeFile(u"big"_s));
    // A load that is cancelled before its thread has begun is never asked for.
    QTRY_COMPARE(editor.files->calls(), QStringList{u"load c:\\big.rtf"_s});
    opened->rt1->cancelLoading();
    QTRY_VERIFY(!opened);
    QCOMPARE(editor.frame->documents().size(), 1);
    QCOMPARE(editor.files->calls().size(), 1);
    editor.files->releaseReading();
}

void TestTextFrame::aFileThatCannotBeReadClosesItsWindow()
{
    Editor editor;
    FakeDocumentFiles::File broken = largeFile(u"big"_s);
    broken.failure = RuntimeError(error::InvalidFileFormat);
    editor.prompts.expectError(error::InvalidFileFormat);
    const QPointer<frmDoc> opened = &editor.open(u"c:\\big.rtf"_s, broken);
    QTRY_VERIFY(!opened);
    QVERIFY(editor.prompts.allShown());
    QCOMPARE(editor.end.count(), 1);
    QCOMPARE(editor.frame->documents().size(), 1);
}

void TestTextFrame::closingALoadingDocumentAsksNothing()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.files->holdReading();
    const QPointer<frmDoc> opened = &editor.open(u"c:\\big.rtf"_s, largeFile(u"big"_s));
    Editor::close(*opened);
    QTRY_VERIFY(!opened);
    QCOMPARE(editor.prompts.shown(), 0);
    editor.files->releaseReading();
}

namespace {

const QString saveQuestion = u"Do you want to save changes made to document %1?"_s;

} // namespace

void TestTextFrame::closingTheFrameAsksForEachModifiedDocumentInOrder()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.type(u"a"_s);
    editor.frame->menus.new_->trigger();
    editor.frame->menus.new_->trigger();
    editor.type(u"c"_s);
    editor.prompts.expect(saveQuestion.arg(u"Untitled 1"_s), QString()).answer(Answer::No);
    editor.prompts.expect(saveQuestion.arg(u"Untitled 3"_s), QString()).answer(Answer::Yes);
    editor.cd2->choose(u"c:\\c.rtf"_s);
    QVERIFY(editor.frame->close());
    QVERIFY(editor.prompts.allShown());
    QCOMPARE(editor.files->text(u"c:\\c.rtf"_s), u"c"_s);
    QVERIFY(editor.frame->documents().isEmpty());
    QVERIFY(!editor.frame->isVisible());
}

void TestTextFrame::cancelOnTheSecondStopsTheWholeClose()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.type(u"a"_s);
    editor.frame->menus.new_->trigger();
    editor.type(u"b"_s);
    editor.prompts.expect(saveQuestion.arg(u"Untitled 1"_s), QString()).answer(Answer::No);
    editor.prompts.expect(saveQuestion.arg(u"Untitled 2"_s), QString()).answer(Answer::Cancel);
    QVERIFY(!editor.frame->close());
    QVERIFY(editor.prompts.allShown());
    QVERIFY(editor.frame->isVisible());
    QCOMPARE(editor.frame->documents().size(), 2);
    QCOMPARE(editor.frame->documents().at(0)->rt1->text(), u"a"_s);
    QCOMPARE(editor.frame->documents().at(0)->Tag, u"1"_s);
    QCOMPARE(editor.frame->documents().at(1)->rt1->text(), u"b"_s);
    // Cancel on the first asks for no other.
    editor.prompts.expect(saveQuestion.arg(u"Untitled 1"_s), QString()).answer(Answer::Cancel);
    QVERIFY(!editor.frame->close());
    QCOMPARE(editor.prompts.shown(), 3);
}

void TestTextFrame::exitClosesTheFrame()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.frame->setAttribute(Qt::WA_DeleteOnClose);
    const QPointer<frmText> frame = editor.frame.release();
    frame->menus.exit->trigger();
    QTRY_VERIFY(!frame);
    QCOMPARE(editor.prompts.shown(), 0);
}

void TestTextFrame::savingOnCloseThatFailsKeepsTheFrame()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.open(u"c:\\a.rtf"_s, file(u"old"_s));
    editor.type(u"x"_s);
    editor.files->failSaving(RuntimeError(error::PermissionDenied));
    editor.prompts.expect(saveQuestion.arg(u"c:\\a.rtf"_s), QString()).answer(Answer::Yes);
    editor.prompts.expectError(error::PermissionDenied);
    QVERIFY(!editor.frame->close());
    QVERIFY(editor.prompts.allShown());
    QCOMPARE(editor.end.count(), 1);
    QCOMPARE(editor.document().Tag, u"1"_s);
}

void TestTextFrame::namesForAssistiveTools()
{
    const Editor editor;
    const QMap<QString, QString> accessibleNames{
        {u"cb1"_s, u"Font name"_s},   {u"cb2"_s, u"Font size"_s},      {u"Command2"_s, u"Bold"_s},
        {u"Command3"_s, u"Italic"_s}, {u"Command4"_s, u"Underline"_s}, {u"rt1"_s, u"Document text"_s},
    };
    for (auto it = accessibleNames.begin(); it != accessibleNames.end(); ++it) {
        const auto *widget = editor.frame->findChild<QWidget *>(it.key());
        QVERIFY2(widget, qPrintable(it.key()));
        QCOMPARE(widget->accessibleName(), it.value());
    }
    for (const QString &name :
         {u"CoolBar1"_s, u"Frame1"_s, u"Label1"_s, u"Line1_0"_s, u"Line1_1"_s, u"Line1_2"_s})
        QVERIFY2(editor.frame->findChild<QWidget *>(name), qPrintable(name));
}

void TestTextFrame::tabMovesThroughTheToolBar()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.toolbar().cb1->setFocus();
    const QList<QWidget *> order{editor.toolbar().cb2, editor.toolbar().Command2, editor.toolbar().Command3,
                                 editor.toolbar().Command4, editor.toolbar().Label1};
    for (QWidget *next : order) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), next);
    }
}

void TestTextFrame::keysMoveBetweenChildren()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.frame->menus.new_->trigger();
    QTRY_VERIFY(editor.text().hasFocus());
    QTest::keyClick(&editor.text(), Qt::Key_Tab, Qt::ControlModifier);
    QTest::keyRelease(QApplication::focusWidget(), Qt::Key_Control, Qt::NoModifier);
    QTRY_COMPARE(editor.document().Caption(), u"Untitled 1"_s);
}

void TestTextFrame::keysCloseTheActiveChild_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("Ctrl+F4") << Qt::Key_F4;
    QTest::newRow("Ctrl+W") << Qt::Key_W;
}

void TestTextFrame::keysCloseTheActiveChild()
{
    QFETCH(const Qt::Key, key);
    Editor editor;
    QVERIFY(editor.show());
    editor.frame->menus.new_->trigger();
    QTRY_VERIFY(editor.text().hasFocus());
    QTest::keyClick(&editor.text(), key, Qt::ControlModifier);
    QCOMPARE(editor.frame->documents().size(), 1);
    QCOMPARE(editor.document().Caption(), u"Untitled 1"_s);
    QTRY_VERIFY(editor.text().hasFocus());

    editor.type(u"x"_s);
    editor.prompts.expect(u"Do you want to save changes made to document Untitled 1?"_s, QString())
        .answer(Answer::Cancel);
    QTest::keyClick(&editor.text(), key, Qt::ControlModifier);
    QVERIFY(editor.prompts.allShown());
    QCOMPARE(editor.frame->documents().size(), 1);
}

void TestTextFrame::screenFontsAreFamiliesAlone()
{
    const QStringList fonts = screenFontFamilies();
    QVERIFY(!fonts.isEmpty());
    QCOMPARE(QSet<QString>(fonts.begin(), fonts.end()).size(), fonts.size());
    for (const QString &family : fonts)
        QVERIFY2(!family.endsWith(u']'), qPrintable(family));
}

QTEST_MAIN(TestTextFrame)
#include "TestTextFrame.moc"
