#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

#include "tests/texteditor/Editor.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// The Search menu and the replace dialog.
class TestFindAndReplace : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findSelectsTheFirstOccurrence();
    void findStartsAtTheBeginningWhateverIsSelected();
    void cancellingFindEmptiesTheSearchText();
    void findingNothingSaysNothing();
    void findNextBeforeAnyFindDoesNothing();
    void findNextWalksThroughTheText();
    void theKeysOfTheSearchMenu();

    void theDialogsControls();
    void theDialogStaysAndKeepsItsTexts();
    void cancelUnloadsTheDialog();
    void escapeAndCloseBoxUnloadTheDialog();
    void enterIsOk();
    void theDialogGoesWithTheFrame();

    void replacesExactlyOneOccurrence();
    void replacesAllOccurrences();
    void replacingAllIsOneUndoStep();
    void anEmptySearchDoesNothing();
    void aTextThatDoesNotOccurEndsAtOnce();
    void anEmptyReplacementRemoves();
    void worksOnTheDocumentActiveAtOk();
    void returnsTheFocusToTheText();
    void aMatchBeyond32767IsAnOverflow();
    void okNeedsADocumentWhoseTextIsThere();

    void aRunWithoutEndStopsByCancel();
    void closingTheDialogStopsTheRun();
    void closingTheDocumentStopsTheRun();
    void refusingToCloseTheDocumentStopsTheRunToo();
    void closingTheFrameStopsTheRun();
    void okDoesNotStartTwice();
    void whatIsTypedDuringTheRunStays();
    void switchingDocumentsDuringTheRunKeepsItWhereItWas();
};

namespace {

const QString findPrompt = u"Enter the text to search for:"_s;
const QString saveQuestion = u"Do you want to save changes made to document %1?"_s;

void findText(Editor &editor, const QString &what)
{
    editor.prompts.expectInput(findPrompt, u"Find"_s).offering(QString()).type(what);
    editor.frame->menus.find->trigger();
}

frmRep &openDialog(Editor &editor, const QString &what, const QString &with, bool all)
{
    editor.frame->menus.replace->trigger();
    frmRep &dialog = *editor.frame->replaceDialog();
    dialog.Text1[0]->setText(what);
    dialog.Text1[1]->setText(with);
    dialog.Check1->setChecked(all);
    return dialog;
}

// Starts a run that replaces for ever, and does `meanwhile` in one of the moments in which it lets events in.
// Returns when the run has ended.
void runForEver(Editor &editor, const std::function<void()> &meanwhile)
{
    editor.text().setText(u"a"_s);
    frmRep &dialog = openDialog(editor, u"a"_s, u"aa"_s, true);
    bool done = false;
    QTimer::singleShot(0, &dialog, [&] {
        QVERIFY(dialog.isReplacing());
        done = true;
        meanwhile();
    });
    dialog.Command1[0]->click();
    QVERIFY(done);
}

} // namespace

void TestFindAndReplace::findSelectsTheFirstOccurrence()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.text().setText(u"one two One"_s);
    editor.toolbar().cb1->setFocus();
    findText(editor, u"TWO"_s);
    QCOMPARE(editor.text().SelStart(), 4);
    QCOMPARE(editor.text().SelText(), u"two"_s);
    QCOMPARE(editor.frame->SearchText, u"TWO"_s);
    QVERIFY(editor.text().hasFocus());
    QVERIFY(editor.prompts.allShown());
}

void TestFindAndReplace::findStartsAtTheBeginningWhateverIsSelected()
{
    Editor editor;
    editor.text().setText(u"one two one"_s);
    editor.text().setSelStart(8);
    findText(editor, u"one"_s);
    QCOMPARE(editor.text().SelStart(), 0);
}

void TestFindAndReplace::cancellingFindEmptiesTheSearchText()
{
    Editor editor;
    editor.text().setText(u"one two one"_s);
    findText(editor, u"one"_s);
    editor.prompts.expectInput(findPrompt, u"Find"_s);
    editor.frame->menus.find->trigger();
    QVERIFY(editor.frame->SearchText.isEmpty());
    QCOMPARE(editor.text().SelStart(), 0);
    editor.frame->menus.findn->trigger();
    QCOMPARE(editor.text().SelStart(), 0);
    QCOMPARE(editor.text().SelText(), u"one"_s);
    QVERIFY(editor.prompts.allShown());
}

void TestFindAndReplace::findingNothingSaysNothing()
{
    Editor editor;
    editor.text().setText(u"one two"_s);
    editor.text().setSelStart(4);
    editor.text().setSelLength(3);
    findText(editor, u"three"_s);
    QCOMPARE(editor.text().SelText(), u"two"_s);
    QCOMPARE(editor.prompts.shown(), 1);
}

void TestFindAndReplace::findNextBeforeAnyFindDoesNothing()
{
    Editor editor;
    editor.text().setText(u"one"_s);
    editor.text().setSelStart(1);
    editor.frame->menus.findn->trigger();
    QCOMPARE(editor.text().SelStart(), 1);
    QCOMPARE(editor.text().SelLength(), 0);
    QCOMPARE(editor.prompts.shown(), 0);
}

void TestFindAndReplace::findNextWalksThroughTheText()
{
    Editor editor;
    editor.text().setText(u"a b\r\na b\r\na"_s);
    findText(editor, u"a"_s);
    QList<qint32> places{editor.text().SelStart()};
    for (int count = 0; count < 3; ++count) {
        editor.frame->menus.findn->trigger();
        places.append(editor.text().SelStart());
    }
    QCOMPARE(places, QList<qint32>({0, 5, 10, 10}));
    QCOMPARE(editor.text().SelText(), u"a"_s);
}

void TestFindAndReplace::theKeysOfTheSearchMenu()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.text().setText(u"a a"_s);
    editor.prompts.expectInput(findPrompt, u"Find"_s).type(u"a"_s);
    QTest::keyClick(&editor.text(), Qt::Key_F, Qt::ControlModifier);
    QCOMPARE(editor.text().SelText(), u"a"_s);
    QTest::keyClick(&editor.text(), Qt::Key_F3);
    QCOMPARE(editor.text().SelStart(), 2);
    QTest::keyClick(&editor.text(), Qt::Key_H, Qt::ControlModifier);
    QVERIFY(editor.frame->replaceDialog());
}

void TestFindAndReplace::theDialogsControls()
{
    Editor editor;
    frmRep &dialog = openDialog(editor, QString(), QString(), false);
    QCOMPARE(dialog.windowTitle(), u"Replace text.."_s);
    QVERIFY(!dialog.isModal());
    QVERIFY(dialog.isVisible());
    const auto *first = dialog.findChild<QLabel *>(u"Label1_0"_s);
    const auto *second = dialog.findChild<QLabel *>(u"Label1_1"_s);
    QCOMPARE(first->text(), u"Text to replace:"_s);
    QCOMPARE(first->buddy(), dialog.Text1[0]);
    QCOMPARE(second->text(), u"Text to replace with:"_s);
    QCOMPARE(second->buddy(), dialog.Text1[1]);
    QCOMPARE(dialog.Text1[0]->objectName(), u"Text1_0"_s);
    QCOMPARE(dialog.Check1->text(), u"Replace all"_s);
    QVERIFY(!dialog.Check1->isChecked());
    QCOMPARE(dialog.Command1[0]->text(), u"&Ok"_s);
    QCOMPARE(dialog.Command1[1]->text(), u"&Cancel"_s);
    QCOMPARE(dialog.Command1[0]->objectName(), u"Command1_0"_s);
}

void TestFindAndReplace::theDialogStaysAndKeepsItsTexts()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.text().setText(u"a"_s);
    frmRep &dialog = openDialog(editor, u"a"_s, u"b"_s, true);
    dialog.Command1[0]->click();
    QVERIFY(dialog.isVisible());
    editor.frame->menus.replace->trigger();
    QCOMPARE(editor.frame->replaceDialog(), &dialog);
    QCOMPARE(dialog.Text1[0]->text(), u"a"_s);
    QCOMPARE(dialog.Text1[1]->text(), u"b"_s);
    QVERIFY(dialog.Check1->isChecked());
}

void TestFindAndReplace::cancelUnloadsTheDialog()
{
    Editor editor;
    QPointer<frmRep> dialog = &openDialog(editor, u"a"_s, u"b"_s, true);
    dialog->Command1[1]->click();
    QVERIFY(!editor.frame->replaceDialog());
    // The next one is made afresh, even before the old one is gone.
    editor.frame->menus.replace->trigger();
    QVERIFY(editor.frame->replaceDialog()->Text1[0]->text().isEmpty());
    QVERIFY(!editor.frame->replaceDialog()->Check1->isChecked());
    QTRY_VERIFY(!dialog);
    QVERIFY(editor.frame->replaceDialog());
}

void TestFindAndReplace::escapeAndCloseBoxUnloadTheDialog()
{
    Editor editor;
    QPointer<frmRep> dialog = &openDialog(editor, u"a"_s, u"b"_s, true);
    QTest::keyClick(dialog->Text1[0], Qt::Key_Escape);
    QVERIFY(!editor.frame->replaceDialog());
    QTRY_VERIFY(!dialog);
    dialog = &openDialog(editor, u"a"_s, u"b"_s, true);
    dialog->close();
    QVERIFY(!editor.frame->replaceDialog());
    QTRY_VERIFY(!dialog);
}

void TestFindAndReplace::enterIsOk()
{
    Editor editor;
    editor.text().setText(u"a"_s);
    const frmRep &dialog = openDialog(editor, u"a"_s, u"b"_s, false);
    QTest::keyClick(dialog.Text1[1], Qt::Key_Return);
    QCOMPARE(editor.text().text(), u"b"_s);
    QVERIFY(dialog.isVisible());
}

void TestFindAndReplace::theDialogGoesWithTheFrame()
{
    Editor editor;
    QVERIFY(editor.show());
    const QPointer<frmRep> dialog = &openDialog(editor, u"a"_s, u"b"_s, false);
    QVERIFY(editor.frame->close());
    QTRY_VERIFY(!dialog);
}

void TestFindAndReplace::replacesExactlyOneOccurrence()
{
    Editor editor;
    editor.text().setText(u"one two one"_s);
    editor.text().setSelStart(5);
    openDialog(editor, u"one"_s, u"1"_s, false).Command1[0]->click();
    QCOMPARE(editor.text().text(), u"1 two one"_s);
    QCOMPARE(editor.document().Tag, u"2"_s);
}

void TestFindAndReplace::replacesAllOccurrences()
{
    Editor editor;
    editor.text().setText(u"one two One\r\none"_s);
    openDialog(editor, u"one"_s, u"1"_s, true).Command1[0]->click();
    QCOMPARE(editor.text().text(), u"1 two 1\r\n1"_s);
    QVERIFY(editor.document().Tag.toInt() >= 2);
}

void TestFindAndReplace::replacingAllIsOneUndoStep()
{
    Editor editor;
    editor.text().setText(u"one two one"_s);
    openDialog(editor, u"one"_s, u"1"_s, true).Command1[0]->click();
    QCOMPARE(editor.text().text(), u"1 two 1"_s);
    editor.text().undo();
    QCOMPARE(editor.text().text(), u"one two one"_s);
}

void TestFindAndReplace::anEmptySearchDoesNothing()
{
    Editor editor;
    editor.text().setText(u"one"_s);
    const QString count = editor.document().Tag;
    for (const bool all : {false, true})
        openDialog(editor, QString(), u"x"_s, all).Command1[0]->click();
    QCOMPARE(editor.text().text(), u"one"_s);
    QCOMPARE(editor.document().Tag, count);
    QCOMPARE(editor.prompts.shown(), 0);
}

void TestFindAndReplace::aTextThatDoesNotOccurEndsAtOnce()
{
    Editor editor;
    editor.text().setText(u"one"_s);
    editor.text().setSelStart(1);
    const frmRep &dialog = openDialog(editor, u"two"_s, u"x"_s, true);
    dialog.Command1[0]->click();
    QVERIFY(!dialog.isReplacing());
    QCOMPARE(editor.text().text(), u"one"_s);
    QCOMPARE(editor.text().SelStart(), 1);
    QCOMPARE(editor.prompts.shown(), 0);
}

void TestFindAndReplace::anEmptyReplacementRemoves()
{
    Editor editor;
    editor.text().setText(u"one two one"_s);
    openDialog(editor, u"o"_s, QString(), true).Command1[0]->click();
    QCOMPARE(editor.text().text(), u"ne tw ne"_s);
}

void TestFindAndReplace::worksOnTheDocumentActiveAtOk()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.text().setText(u"one"_s);
    const RichTextBox &first = editor.text();
    const frmRep &dialog = openDialog(editor, u"one"_s, u"1"_s, true);
    editor.frame->menus.new_->trigger();
    editor.text().setText(u"one one"_s);
    dialog.Command1[0]->click();
    QCOMPARE(first.text(), u"one"_s);
    QCOMPARE(editor.text().text(), u"1 1"_s);
}

void TestFindAndReplace::returnsTheFocusToTheText()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.text().setText(u"one"_s);
    editor.toolbar().cb1->setFocus();
    openDialog(editor, u"one"_s, u"1"_s, false).Command1[0]->click();
    QCOMPARE(editor.frame->focusWidget(), &editor.text());
}

void TestFindAndReplace::aMatchBeyond32767IsAnOverflow()
{
    Editor editor;
    editor.text().setText(QString(32766, u'.') + u"xx"_s);
    frmRep &dialog = openDialog(editor, u"x"_s, u"y"_s, false);
    dialog.Command1[0]->click();
    dialog.Command1[0]->click();
    QCOMPARE(editor.text().text().right(3), u".yy"_s);
    editor.text().setText(QString(32768, u'.') + u"x"_s);
    for (const bool all : {false, true}) {
        editor.prompts.expectError(error::Overflow, u"Overflow"_s);
        dialog.Check1->setChecked(all);
        dialog.Command1[0]->click();
        QCOMPARE(editor.text().text().right(2), u".x"_s);
        QVERIFY(!dialog.isReplacing());
    }
    QVERIFY(editor.prompts.allShown());
    QCOMPARE(editor.end.count(), 2);
}

void TestFindAndReplace::okNeedsADocumentWhoseTextIsThere()
{
    Editor editor;
    QVERIFY(editor.show());
    const frmRep &dialog = openDialog(editor, u"a"_s, u"b"_s, true);
    QVERIFY(dialog.Command1[0]->isEnabled());
    Editor::close(editor.document());
    QVERIFY(!dialog.Command1[0]->isEnabled());
    QVERIFY(dialog.Command1[1]->isEnabled());
    editor.files->holdReading();
    FakeDocumentFiles::File large;
    large.text = u"a"_s;
    large.size = 100'000'000;
    editor.open(u"c:\\big.rtf"_s, large);
    QVERIFY(!dialog.Command1[0]->isEnabled());
    editor.files->releaseReading();
    QTRY_VERIFY(dialog.Command1[0]->isEnabled());
}

void TestFindAndReplace::aRunWithoutEndStopsByCancel()
{
    Editor editor;
    QVERIFY(editor.show());
    QPointer<frmRep> dialog;
    runForEver(editor, [&] {
        dialog = editor.frame->replaceDialog();
        dialog->Command1[1]->click();
        QVERIFY(dialog);
    });
    QTRY_VERIFY(!dialog);
    QVERIFY(!editor.frame->replaceDialog());
    QVERIFY(editor.text().textLength() > 1);
    QVERIFY(editor.document().isVisible());
    // One step takes the whole run back.
    editor.text().undo();
    QCOMPARE(editor.text().text(), u"a"_s);
}

void TestFindAndReplace::closingTheDialogStopsTheRun()
{
    Editor editor;
    QVERIFY(editor.show());
    QPointer<frmRep> dialog;
    runForEver(editor, [&] {
        dialog = editor.frame->replaceDialog();
        dialog->close();
        // Whoever is in a hurry closes twice.
        dialog->close();
    });
    QTRY_VERIFY(!dialog);
    QCOMPARE(editor.frame->documents().size(), 1);
}

void TestFindAndReplace::closingTheDocumentStopsTheRun()
{
    Editor editor;
    QVERIFY(editor.show());
    const QPointer<frmDoc> document = &editor.document();
    editor.prompts.expect(saveQuestion.arg(u"Untitled 1"_s), QString()).answer(Answer::No);
    runForEver(editor, [&] { Editor::close(*document); });
    QTRY_VERIFY(!document);
    QVERIFY(editor.prompts.allShown());
    QVERIFY(editor.frame->replaceDialog());
    QVERIFY(!editor.frame->replaceDialog()->isReplacing());
    QVERIFY(!editor.frame->replaceDialog()->Command1[0]->isEnabled());
}

void TestFindAndReplace::refusingToCloseTheDocumentStopsTheRunToo()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.prompts.expect(saveQuestion.arg(u"Untitled 1"_s), QString()).answer(Answer::Cancel);
    runForEver(editor, [&] { Editor::close(editor.document()); });
    QTRY_VERIFY(editor.prompts.shown() == 1);
    QCOMPARE(editor.frame->documents().size(), 1);
    QVERIFY(editor.text().textLength() > 1);
}

void TestFindAndReplace::closingTheFrameStopsTheRun()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.prompts.expect(saveQuestion.arg(u"Untitled 1"_s), QString()).answer(Answer::No);
    runForEver(editor, [&] {
        editor.frame->setAttribute(Qt::WA_DeleteOnClose);
        QVERIFY(!editor.frame->close());
    });
    const QPointer<frmText> frame = editor.frame.release();
    QTRY_VERIFY(!frame);
    QVERIFY(editor.prompts.allShown());
}

void TestFindAndReplace::okDoesNotStartTwice()
{
    Editor editor;
    QVERIFY(editor.show());
    runForEver(editor, [&] {
        frmRep &dialog = *editor.frame->replaceDialog();
        QVERIFY(!dialog.Command1[0]->isEnabled());
        dialog.Command1_Click(0);
        QVERIFY(dialog.isReplacing());
        dialog.Command1[1]->click();
    });
    QTRY_VERIFY(!editor.frame->replaceDialog());
}

void TestFindAndReplace::whatIsTypedDuringTheRunStays()
{
    Editor editor;
    QVERIFY(editor.show());
    runForEver(editor, [&] {
        QTest::keyClicks(&editor.text(), u"xyz"_s);
        editor.frame->replaceDialog()->Command1[1]->click();
    });
    QVERIFY(editor.text().text().contains(u"xyz"_s));
}

void TestFindAndReplace::switchingDocumentsDuringTheRunKeepsItWhereItWas()
{
    Editor editor;
    QVERIFY(editor.show());
    const frmDoc &first = editor.document();
    runForEver(editor, [&] {
        editor.frame->menus.new_->trigger();
        editor.text().setText(u"a"_s);
        // The next moment, a while later, ends the run.
        QTimer::singleShot(0, &editor.document(),
                           [&] { editor.frame->replaceDialog()->Command1[1]->click(); });
    });
    QCOMPARE(editor.text().text(), u"a"_s);
    QVERIFY(first.rt1->textLength() > 1);
}

QTEST_MAIN(TestFindAndReplace)
#include "TestFindAndReplace.moc"
