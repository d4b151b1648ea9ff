#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QPointer>
#include <QScopeGuard>
#include <QTimer>
#include <QToolButton>

#include "tests/texteditor/Editor.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// A document window: counting changes, showing the selection's formats, the question on closing, notices.
class TestDocumentWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyChangeCountsOne();
    void formatsAndLoadingCountNothing();
    void theTextFillsTheWindow();
    void theBoxKnowsItsClipboardFormat();
    void aDarkDesktopLeavesThePaperWhite();

    void theToolBarShowsTheSelection();
    void aMixedSelectionLeavesTheToolBarAsItWas();
    void showingTheSelectionChangesNothing();
    void aSizeThatIsNotListedLeavesTheListAsItWas();
    void aNamelessFontChoosesNothing();
    void activatingADocumentShowsItsFormats();
    void aDocumentBehindLeavesTheToolBarAlone();

    void closingACleanDocumentAsksNothing();
    void closingAnUnusedUntitledDocumentAsksNothing();
    void theQuestionOnClosing();
    void cancelKeepsTheWindow();
    void noDiscardsTheText();
    void yesSavesAnUntitledDocumentThroughTheDialog();
    void cancellingTheDialogKeepsTheWindow();
    void yesSavesANamedDocumentSilently();
    void aSaveThatFailsKeepsTheWindow();
    void namesThatBeginWithUntitledWereNeverSaved();
    void savingOnClosingLeavesTheSearchTextAlone();

    void noticesAreShownAboveTheText();
    void noticesCanBeClosed();
    void withoutNoticesThereIsNoBar();
    void theContextMenuUsesTheFramesCommands();
};

namespace {

FakeDocumentFiles::File file(const QString &text, const QStringList &notices = {})
{
    FakeDocumentFiles::File made;
    made.text = text;
    made.notices = notices;
    return made;
}

const QString saveQuestion = u"Do you want to save changes made to document %1?"_s;

// A named document with one change.
frmDoc &openModified(Editor &editor)
{
    frmDoc &opened = editor.open(u"c:\\a.rtf"_s, file(u"old"_s));
    editor.type(u"x"_s);
    return opened;
}

} // namespace

void TestDocumentWindow::everyChangeCountsOne()
{
    Editor editor;
    QCOMPARE(editor.document().Tag, u"0"_s);
    editor.type(u"a"_s);
    QCOMPARE(editor.document().Tag, u"1"_s);
    editor.text().setSelText(u"bcd"_s);
    QCOMPARE(editor.document().Tag, u"2"_s);
    // The count is no 16-bit counter.
    editor.document().Tag = u"32767"_s;
    editor.type(u"a"_s);
    QCOMPARE(editor.document().Tag, u"32768"_s);
    QCOMPARE(editor.end.count(), 0);
}

void TestDocumentWindow::formatsAndLoadingCountNothing()
{
    Editor editor;
    const frmDoc &opened = editor.open(u"c:\\a.rtf"_s, file(u"old"_s));
    QCOMPARE(opened.Tag, u"0"_s);
    opened.rt1->setSelLength(3);
    opened.rt1->setSelBold(true);
    QCOMPARE(opened.Tag, u"0"_s);
}

void TestDocumentWindow::theTextFillsTheWindow()
{
    Editor editor;
    QVERIFY(editor.show());
    const frmDoc &document = editor.document();
    QCOMPARE(document.rt1->geometry(), document.rect());
    document.parentWidget()->resize(500, 400);
    QCOMPARE(document.rt1->geometry(), document.rect());
    document.parentWidget()->resize(700, 300);
    QCOMPARE(document.rt1->geometry(), document.rect());
}

void TestDocumentWindow::theBoxKnowsItsClipboardFormat()
{
    const Editor editor;
    QCOMPARE(editor.text().Tag, u"1"_s);
}

void TestDocumentWindow::aDarkDesktopLeavesThePaperWhite()
{
    const QPalette usual = QApplication::palette();
    const auto restore = qScopeGuard([&] { QApplication::setPalette(usual); });
    Editor editor;
    QApplication::setPalette(QPalette(Qt::black));
    QVERIFY(editor.show());
    for (const QWidget *paper : {editor.text().viewport(), static_cast<QWidget *>(editor.toolbar().Label1)}) {
        QCOMPARE(paper->palette().color(QPalette::Base), QColor(Qt::white));
        QCOMPARE(paper->palette().color(QPalette::Text), QColor(Qt::black));
        QCOMPARE(paper->palette().color(QPalette::Window), QColor(Qt::black));
    }
}

void TestDocumentWindow::theToolBarShowsTheSelection()
{
    Editor editor;
    RichTextBox &text = editor.text();
    text.setText(u"one two"_s);
    text.setSelLength(3);
    text.setSelBold(true);
    text.setSelItalic(true);
    text.setSelUnderline(true);
    text.setSelColor(0x0000FF);
    text.setSelFontSize(24);
    text.setSelFontName(u"Last"_s);
    text.setSelStart(6);
    const TextToolBar &toolbar = editor.toolbar();
    QVERIFY(toolbar.Command2->FontStyle());
    QVERIFY(toolbar.Command3->FontStyle());
    QVERIFY(toolbar.Command4->FontStyle());
    QCOMPARE(toolbar.Label1->ForeColor(), 0);
    text.setSelStart(2);
    QVERIFY(!toolbar.Command2->FontStyle());
    QVERIFY(!toolbar.Command3->FontStyle());
    QVERIFY(!toolbar.Command4->FontStyle());
    QCOMPARE(toolbar.Label1->ForeColor(), 0x0000FF);
    QCOMPARE(toolbar.cb2->Text(), u"24"_s);
    QCOMPARE(toolbar.cb1->Text(), u"Last"_s);
}

void TestDocumentWindow::aMixedSelectionLeavesTheToolBarAsItWas()
{
    Editor editor;
    RichTextBox &text = editor.text();
    text.setText(u"one two"_s);
    text.setSelLength(3);
    text.setSelBold(true);
    text.setSelItalic(true);
    text.setSelUnderline(true);
    text.setSelColor(0x0000FF);
    text.setSelFontSize(24);
    text.setSelFontName(u"Last"_s);
    for (const int caret : {1, 6}) {
        text.setSelStart(caret);
        const TextToolBar &toolbar = editor.toolbar();
        const bool bold = toolbar.Command2->FontStyle();
        const bool italic = toolbar.Command3->FontStyle();
        const bool underline = toolbar.Command4->FontStyle();
        const qint32 color = toolbar.Label1->ForeColor();
        const int size = toolbar.cb2->ListIndex();
        const int font = toolbar.cb1->ListIndex();
        QCOMPARE(bold, caret == 6);
        editor.frame->menus.selall->trigger();
        text.setSelStart(caret);
        text.selectAll();
        QVERIFY(!text.SelBold());
        QVERIFY(!text.SelFontSize());
        QCOMPARE(toolbar.Command2->FontStyle(), bold);
        QCOMPARE(toolbar.Command3->FontStyle(), italic);
        QCOMPARE(toolbar.Command4->FontStyle(), underline);
        QCOMPARE(toolbar.Label1->ForeColor(), color);
        QCOMPARE(toolbar.cb2->ListIndex(), size);
        QCOMPARE(toolbar.cb1->ListIndex(), font);
    }
}

void TestDocumentWindow::showingTheSelectionChangesNothing()
{
    Editor editor;
    QVERIFY(editor.show());
    FakeDocumentFiles::File made = file(u"ten and a half"_s);
    made.points = 10.5;
    editor.open(u"c:\\a.rtf"_s, made);
    editor.toolbar().cb1->setFocus();
    editor.text().setSelLength(3);
    QCOMPARE(editor.toolbar().cb2->Text(), u"10"_s);
    QCOMPARE(editor.text().SelFontSize(), std::optional<float>(10.5F));
    QVERIFY(!editor.text().document()->isUndoAvailable());
    QVERIFY(editor.toolbar().cb1->hasFocus());
}

void TestDocumentWindow::aSizeThatIsNotListedLeavesTheListAsItWas()
{
    Editor editor;
    editor.text().setText(u"abc"_s);
    editor.text().setSelLength(3);
    editor.text().setSelFontSize(14);
    QCOMPARE(editor.toolbar().cb2->Text(), u"14"_s);
    editor.text().setSelFontSize(15);
    QCOMPARE(editor.toolbar().cb2->Text(), u"14"_s);
    QCOMPARE(editor.text().SelFontSize(), std::optional<float>(15));
}

void TestDocumentWindow::aNamelessFontChoosesNothing()
{
    Editor editor;
    FakeDocumentFiles::File made = file(u"abc"_s);
    made.font = QString();
    editor.open(u"c:\\a.rtf"_s, made);
    editor.text().setSelLength(3);
    QCOMPARE(editor.end.count(), 0);
    QCOMPARE(editor.prompts.shown(), 0);
}

void TestDocumentWindow::activatingADocumentShowsItsFormats()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.toolbar().Command2->click();
    editor.type(u"bold"_s);
    QVERIFY(!editor.toolbar().Command2->FontStyle());
    editor.frame->menus.new_->trigger();
    QVERIFY(editor.toolbar().Command2->FontStyle());
    editor.frame->menus.win->actions().at(4)->trigger();
    QVERIFY(!editor.toolbar().Command2->FontStyle());
}

void TestDocumentWindow::aDocumentBehindLeavesTheToolBarAlone()
{
    Editor editor;
    QVERIFY(editor.show());
    RichTextBox &behind = editor.text();
    behind.setText(u"abc"_s);
    editor.frame->menus.new_->trigger();
    behind.setSelLength(3);
    behind.setSelBold(true);
    behind.setSelStart(1);
    QVERIFY(editor.toolbar().Command2->FontStyle());
    QCOMPARE(editor.text().SelBold(), std::optional(false));
}

void TestDocumentWindow::closingACleanDocumentAsksNothing()
{
    Editor editor;
    const QPointer<frmDoc> opened = &editor.open(u"c:\\a.rtf"_s, file(u"old"_s));
    Editor::close(*opened);
    QTRY_VERIFY(!opened);
    QCOMPARE(editor.prompts.shown(), 0);
}

void TestDocumentWindow::closingAnUnusedUntitledDocumentAsksNothing()
{
    Editor editor;
    QVERIFY(editor.show());
    const QPointer<frmDoc> first = &editor.document();
    Editor::close(*first);
    QTRY_VERIFY(!first);
    QCOMPARE(editor.prompts.shown(), 0);
}

void TestDocumentWindow::theQuestionOnClosing()
{
    Editor editor;
    editor.type(u"x"_s);
    editor.prompts.expect(saveQuestion.arg(u"Untitled 1"_s), QString())
        .buttons(Buttons::YesNoCancel)
        .icon(BoxIcon::None)
        .answer(Answer::Cancel);
    Editor::close(editor.document());
    QVERIFY(editor.prompts.allShown());
}

void TestDocumentWindow::cancelKeepsTheWindow()
{
    Editor editor;
    QVERIFY(editor.show());
    const frmDoc &opened = openModified(editor);
    editor.prompts.expect(saveQuestion.arg(u"c:\\a.rtf"_s), QString()).answer(Answer::Cancel);
    Editor::close(editor.document());
    QCOMPARE(&editor.document(), &opened);
    QVERIFY(opened.isVisible());
    QCOMPARE(opened.rt1->text(), u"xold"_s);
    QCOMPARE(opened.Tag, u"1"_s);
}

void TestDocumentWindow::noDiscardsTheText()
{
    Editor editor;
    const QPointer<frmDoc> opened = &openModified(editor);
    editor.prompts.expect(saveQuestion.arg(u"c:\\a.rtf"_s), QString()).answer(Answer::No);
    Editor::close(*opened);
    QTRY_VERIFY(!opened);
    QCOMPARE(editor.files->text(u"c:\\a.rtf"_s), u"old"_s);
}

void TestDocumentWindow::yesSavesAnUntitledDocumentThroughTheDialog()
{
    Editor editor;
    editor.type(u"x"_s);
    const QPointer<frmDoc> document = &editor.document();
    QStringList captions;
    connect(document, &frmDoc::captionChanged, this, [&] { captions.append(document->Caption()); });
    editor.prompts.expect(saveQuestion.arg(u"Untitled 1"_s), QString()).answer(Answer::Yes);
    editor.cd2->choose(u"c:\\new.rtf"_s);
    Editor::close(*document);
    QTRY_VERIFY(!document);
    QCOMPARE(editor.cd2->shown, QStringList{u"Save As *.rtf"_s});
    QCOMPARE(editor.cd2->lastOwner, editor.frame.get());
    QCOMPARE(editor.files->calls(), QStringList{u"save c:\\new.rtf"_s});
    QCOMPARE(captions, QStringList{u"c:\\new.rtf"_s});
    QCOMPARE(editor.cd2->FileName, u"*.rtf"_s);
}

void TestDocumentWindow::cancellingTheDialogKeepsTheWindow()
{
    Editor editor;
    editor.type(u"x"_s);
    editor.prompts.expect(saveQuestion.arg(u"Untitled 1"_s), QString()).answer(Answer::Yes);
    editor.cd2->cancel();
    Editor::close(editor.document());
    QCOMPARE(editor.frame->documents().size(), 1);
    QCOMPARE(editor.text().text(), u"x"_s);
    QCOMPARE(editor.document().Tag, u"1"_s);
    QVERIFY(editor.files->calls().isEmpty());
}

void TestDocumentWindow::yesSavesANamedDocumentSilently()
{
    Editor editor;
    const QPointer<frmDoc> opened = &openModified(editor);
    editor.prompts.expect(saveQuestion.arg(u"c:\\a.rtf"_s), QString()).answer(Answer::Yes);
    Editor::close(*opened);
    QTRY_VERIFY(!opened);
    QCOMPARE(editor.files->text(u"c:\\a.rtf"_s), u"xold"_s);
    QVERIFY(editor.cd2->shown.isEmpty());
}

void TestDocumentWindow::aSaveThatFailsKeepsTheWindow()
{
    Editor editor;
    const frmDoc &opened = openModified(editor);
    editor.files->failSaving(RuntimeError(error::PathNotFound));
    editor.prompts.expect(saveQuestion.arg(u"c:\\a.rtf"_s), QString()).answer(Answer::Yes);
    editor.prompts.expectError(error::PathNotFound);
    Editor::close(editor.document());
    QVERIFY(editor.prompts.allShown());
    QCOMPARE(editor.end.count(), 1);
    QCOMPARE(&editor.document(), &opened);
    QCOMPARE(opened.Tag, u"1"_s);
}

void TestDocumentWindow::namesThatBeginWithUntitledWereNeverSaved()
{
    Editor editor;
    editor.document().setCaption(u"Untitledness"_s);
    QVERIFY(editor.document().isUntitled());
    editor.document().setCaption(u"untitled 1"_s);
    QVERIFY(!editor.document().isUntitled());
    editor.document().setCaption(u"c:\\Untitled 1"_s);
    QVERIFY(!editor.document().isUntitled());
}

void TestDocumentWindow::savingOnClosingLeavesTheSearchTextAlone()
{
    Editor editor;
    editor.frame->SearchText = u"word"_s;
    editor.type(u"x"_s);
    editor.prompts.expect(saveQuestion.arg(u"Untitled 1"_s), QString()).answer(Answer::Yes);
    editor.cd2->choose(u"c:\\new.rtf"_s);
    Editor::close(editor.document());
    QCOMPARE(editor.frame->SearchText, u"word"_s);
}

void TestDocumentWindow::noticesAreShownAboveTheText()
{
    Editor editor;
    QVERIFY(editor.show());
    const QStringList notices{u"1 header is kept but not shown."_s, u"2 drawings are shown as plain text."_s};
    const frmDoc &opened = editor.open(u"c:\\a.rtf"_s, file(u"old"_s, notices));
    const auto *bar = opened.findChild<QWidget *>(u"notices"_s);
    QVERIFY(bar && bar->isVisible());
    QCOMPARE(opened.findChild<QLabel *>(u"noticeText"_s)->text(), notices.join(u'\n'));
    QTRY_COMPARE(opened.rt1->geometry().top(), bar->geometry().bottom() + 1);
    QCOMPARE(opened.rt1->geometry().bottom(), opened.rect().bottom());
    QVERIFY(opened.rt1->hasFocus());
    QCOMPARE(editor.prompts.shown(), 0);
}

void TestDocumentWindow::noticesCanBeClosed()
{
    Editor editor;
    QVERIFY(editor.show());
    const frmDoc &opened = editor.open(u"c:\\a.rtf"_s, file(u"old"_s, {u"Something is not shown."_s}));
    auto *closeButton = opened.findChild<QToolButton *>(u"closeNotices"_s);
    QVERIFY(closeButton);
    QVERIFY(!closeButton->accessibleName().isEmpty());
    closeButton->setFocus();
    QTest::keyClick(closeButton, Qt::Key_Space);
    QVERIFY(!opened.findChild<QWidget *>(u"notices"_s)->isVisible());
    QTRY_COMPARE(opened.rt1->geometry(), opened.rect());
    QVERIFY(opened.rt1->hasFocus());
}

void TestDocumentWindow::withoutNoticesThereIsNoBar()
{
    Editor editor;
    QVERIFY(editor.show());
    const frmDoc &opened = editor.open(u"c:\\a.rtf"_s, file(u"old"_s));
    QVERIFY(!opened.findChild<QWidget *>(u"notices"_s)->isVisible());
}

void TestDocumentWindow::theContextMenuUsesTheFramesCommands()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.type(u"abc"_s);
    QStringList offered;
    QTimer::singleShot(0, this, [&offered] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu);
        for (const QAction *item : menu->actions())
            offered.append(item->isSeparator() ? u"-"_s : item->text());
        menu->close();
    });
    Q_EMIT editor.text().customContextMenuRequested(QPoint(5, 5));
    QCOMPARE(offered.join(u','), u"Undo,Redo,-,Copy,Cut,Paste,Delete,-,Select all"_s);
}

QTEST_MAIN(TestDocumentWindow)
#include "TestDocumentWindow.moc"
