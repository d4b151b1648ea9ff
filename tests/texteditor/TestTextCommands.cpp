#include <QClipboard>
#include <QColor>
#include <QFileInfo>
#include <QMimeData>
#include <QTemporaryDir>

#include "runtime/Clock.h"
#include "tests/texteditor/Editor.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// What the Edit menu, the tool bar and Print do to the active document.
class TestTextCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void copyAndPasteExchangePlainTextOnly();
    void lineBreaksSurviveTheClipboard();
    void cutTakesTheSelectionAway();
    void deleteAndTheDeleteKey();
    void theKeysOfTheClipboardAreTheMenus();
    void undoAndRedoByKey();
    void clearAsksFirst();
    void timeAndDate();
    void selectAllLeavesTheFocusWhereItWas();
    void everyOtherEditCommandReturnsTheFocus_data();
    void everyOtherEditCommandReturnsTheFocus();

    void theBoldButtonGivesWhatItsCaptionShows();
    void italicAndUnderlineLikewise();
    void theStyleKeysWork();
    void choosingAFont();
    void choosingASize();
    void choosingTheSizeShownAppliesIt();
    void theSwatchColorsTheSelection();
    void aDoubleClickOnTheSwatchChoosesAColor();
    void aCancelledChooserAppliesTheColorItStartedWith();
    void theSwatchWorksFromTheKeyboard();

    void printingTheDocument();
    void aCancelledPrintPrintsNothing();
};

namespace {

constexpr qint32 red = 0x0000FF;
constexpr qint32 blue = 0xFF0000;

} // namespace

void TestTextCommands::copyAndPasteExchangePlainTextOnly()
{
    Editor editor;
    editor.text().setText(u"bold text"_s);
    editor.text().setSelLength(4);
    editor.text().setSelBold(true);
    editor.frame->menus.copy->trigger();
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    QCOMPARE(data->text(), u"bold"_s);
    QVERIFY(!data->hasHtml());
    editor.text().setSelStart(9);
    editor.frame->menus.paste->trigger();
    QCOMPARE(editor.text().text(), u"bold textbold"_s);
    editor.text().setSelStart(9);
    editor.text().setSelLength(4);
    QCOMPARE(editor.text().SelBold(), std::optional(false));
}

void TestTextCommands::lineBreaksSurviveTheClipboard()
{
    Editor editor;
    editor.text().setText(u"a\r\nb"_s);
    editor.frame->menus.selall->trigger();
    editor.frame->menus.copy->trigger();
    QCOMPARE(QGuiApplication::clipboard()->text(), u"a\nb"_s);
    editor.frame->menus.paste->trigger();
    QCOMPARE(editor.text().text(), u"a\r\nb"_s);
}

void TestTextCommands::cutTakesTheSelectionAway()
{
    Editor editor;
    editor.text().setText(u"one two"_s);
    editor.text().setSelLength(4);
    editor.frame->menus.cut->trigger();
    QCOMPARE(editor.text().text(), u"two"_s);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"one "_s);
}

void TestTextCommands::deleteAndTheDeleteKey()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.text().setText(u"one two"_s);
    editor.text().setSelLength(4);
    editor.frame->menus.delete_->trigger();
    QCOMPARE(editor.text().text(), u"two"_s);
    editor.text().setSelStart(0);
    QTest::keyClick(&editor.text(), Qt::Key_Delete);
    QCOMPARE(editor.text().text(), u"wo"_s);
}

void TestTextCommands::theKeysOfTheClipboardAreTheMenus()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.text().setText(u"abc"_s);
    QTest::keyClick(&editor.text(), Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(editor.text().SelText(), u"abc"_s);
    editor.text().setSelBold(true);
    QTest::keyClick(&editor.text(), Qt::Key_X, Qt::ControlModifier);
    QCOMPARE(editor.text().text(), QString());
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    QCOMPARE(data->text(), u"abc"_s);
    QVERIFY(!data->hasFormat(u"text/rtf"_s));
    QTest::keyClick(&editor.text(), Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(editor.text().text(), u"abc"_s);
    editor.text().setSelStart(0);
    editor.text().setSelLength(1);
    QTest::keyClick(&editor.text(), Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"a"_s);
}

void TestTextCommands::undoAndRedoByKey()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.type(u"a"_s);
    QTest::keyClick(&editor.text(), Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(editor.text().text(), QString());
    QTest::keyClick(&editor.text(), Qt::Key_Y, Qt::ControlModifier);
    QCOMPARE(editor.text().text(), u"a"_s);
}

void TestTextCommands::clearAsksFirst()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.text().setText(u"abc"_s);
    const QString question = u"Are you sure you want to clear the document Untitled 1?"_s;
    editor.toolbar().cb1->setFocus();
    editor.prompts.expect(question, QString()).buttons(Buttons::YesNo).icon(BoxIcon::None).answer(Answer::No);
    editor.frame->menus.clear->trigger();
    QCOMPARE(editor.text().text(), u"abc"_s);
    QVERIFY(editor.text().hasFocus());
    editor.prompts.expect(question, QString()).answer(Answer::Yes);
    editor.toolbar().cb1->setFocus();
    editor.frame->menus.clear->trigger();
    QCOMPARE(editor.text().text(), QString());
    QVERIFY(editor.text().hasFocus());
    QVERIFY(editor.prompts.allShown());
}

void TestTextCommands::timeAndDate()
{
    Editor editor;
    const QDateTime moment(QDate(2003, 2, 1), QTime(16, 5, 9));
    Clock::set(moment);
    editor.frame->menus.timedate->trigger();
    Clock::reset();
    const QLocale locale = QLocale::system();
    QCOMPARE(editor.text().text(),
             locale.toString(moment.time(), QLocale::ShortFormat) + u' '
                 + locale.toString(moment.date(), QLocale::ShortFormat));
}

void TestTextCommands::selectAllLeavesTheFocusWhereItWas()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.text().setText(u"a\r\nb"_s);
    editor.toolbar().cb1->setFocus();
    editor.frame->menus.selall->trigger();
    QCOMPARE(editor.text().SelStart(), 0);
    QCOMPARE(editor.text().SelLength(), 4);
    QVERIFY(editor.toolbar().cb1->hasFocus());
}

void TestTextCommands::everyOtherEditCommandReturnsTheFocus_data()
{
    QTest::addColumn<QString>("item");
    for (const QString &item : {u"copy"_s, u"cut"_s, u"paste"_s, u"delete"_s, u"timedate"_s})
        QTest::newRow(qPrintable(item)) << item;
}

void TestTextCommands::everyOtherEditCommandReturnsTheFocus()
{
    QFETCH(const QString, item);
    Editor editor;
    QVERIFY(editor.show());
    editor.toolbar().cb1->setFocus();
    QVERIFY(editor.toolbar().cb1->hasFocus());
    editor.frame->findChild<QAction *>(item)->trigger();
    QVERIFY(editor.text().hasFocus());
}

void TestTextCommands::theBoldButtonGivesWhatItsCaptionShows()
{
    Editor editor;
    QVERIFY(editor.show());
    StyleButton &bold = *editor.toolbar().Command2;
    editor.text().setText(u"abc"_s);
    editor.text().setSelLength(3);
    QVERIFY(bold.font().bold());
    QTest::mouseClick(&bold, Qt::LeftButton);
    QCOMPARE(editor.text().SelBold(), std::optional(true));
    QVERIFY(!bold.font().bold());
    QVERIFY(bold.isChecked());
    QVERIFY(editor.text().hasFocus());
    QTest::mouseClick(&bold, Qt::LeftButton);
    QCOMPARE(editor.text().SelBold(), std::optional(false));
    QVERIFY(bold.font().bold());
    QVERIFY(!bold.isChecked());
    QCOMPARE(editor.document().Tag, u"1"_s);
}

void TestTextCommands::italicAndUnderlineLikewise()
{
    Editor editor;
    editor.text().setText(u"abc"_s);
    editor.text().setSelLength(3);
    editor.toolbar().Command3->click();
    QCOMPARE(editor.text().SelItalic(), std::optional(true));
    QVERIFY(!editor.toolbar().Command3->font().italic());
    editor.toolbar().Command4->click();
    QCOMPARE(editor.text().SelUnderline(), std::optional(true));
    QVERIFY(!editor.toolbar().Command4->font().underline());
    QCOMPARE(editor.text().SelBold(), std::optional(false));
    editor.toolbar().Command3->click();
    QCOMPARE(editor.text().SelItalic(), std::optional(false));
    editor.toolbar().Command4->click();
    QCOMPARE(editor.text().SelUnderline(), std::optional(false));
}

void TestTextCommands::theStyleKeysWork()
{
    Editor editor;
    QVERIFY(editor.show());
    QTest::keyClick(&editor.text(), Qt::Key_B, Qt::ControlModifier);
    QTest::keyClick(&editor.text(), Qt::Key_I, Qt::ControlModifier);
    QTest::keyClick(&editor.text(), Qt::Key_U, Qt::ControlModifier);
    editor.type(u"x"_s);
    editor.text().setSelStart(0);
    editor.text().setSelLength(1);
    QCOMPARE(editor.text().SelBold(), std::optional(true));
    QCOMPARE(editor.text().SelItalic(), std::optional(true));
    QCOMPARE(editor.text().SelUnderline(), std::optional(true));
}

void TestTextCommands::choosingAFont()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.text().setText(u"abc"_s);
    editor.text().setSelLength(3);
    editor.toolbar().cb1->setFocus();
    QTest::keyClick(editor.toolbar().cb1, Qt::Key_End);
    QCOMPARE(editor.text().SelFontName(), std::optional(u"Last"_s));
    QVERIFY(editor.text().hasFocus());
}

void TestTextCommands::choosingASize()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.text().setText(u"abc"_s);
    editor.text().setSelLength(3);
    editor.toolbar().cb2->setFocus();
    QTest::keyClick(editor.toolbar().cb2, Qt::Key_End);
    QCOMPARE(editor.text().SelFontSize(), std::optional<float>(72));
    QVERIFY(editor.text().hasFocus());
}

void TestTextCommands::choosingTheSizeShownAppliesIt()
{
    Editor editor;
    FakeDocumentFiles::File made;
    made.text = u"abc"_s;
    made.points = 10.5;
    editor.open(u"c:\\a.rtf"_s, made);
    editor.text().setSelLength(3);
    QCOMPARE(editor.toolbar().cb2->Text(), u"10"_s);
    // The user picks the item that is shown already.
    Q_EMIT editor.toolbar().cb2->activated(editor.toolbar().cb2->ListIndex());
    QCOMPARE(editor.text().SelFontSize(), std::optional<float>(10));
}

void TestTextCommands::theSwatchColorsTheSelection()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.text().setText(u"abc"_s);
    editor.text().setSelLength(1);
    Label &swatch = *editor.toolbar().Label1;
    swatch.setForeColor(red);
    QCOMPARE(swatch.palette().color(swatch.foregroundRole()), QColor(255, 0, 0));
    QTest::mouseClick(&swatch, Qt::LeftButton);
    QCOMPARE(editor.text().SelColor(), std::optional(red));
    QCOMPARE(editor.c1->shown, 0);
    QVERIFY(editor.text().hasFocus());
}

void TestTextCommands::aDoubleClickOnTheSwatchChoosesAColor()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.text().setText(u"abc"_s);
    editor.text().setSelLength(1);
    Label &swatch = *editor.toolbar().Label1;
    editor.c1->answer = u"16711680"_s;
    QTest::mouseClick(&swatch, Qt::LeftButton);
    // The second press comes as a double click, and is let go.
    QTest::mouseDClick(&swatch, Qt::LeftButton);
    QTest::mouseRelease(&swatch, Qt::LeftButton);
    QCOMPARE(editor.c1->shown, 1);
    QCOMPARE(editor.c1->lastOwner, editor.frame.get());
    QCOMPARE(swatch.ForeColor(), blue);
    QCOMPARE(editor.text().SelColor(), std::optional(blue));
    QVERIFY(editor.text().hasFocus());
}

void TestTextCommands::aCancelledChooserAppliesTheColorItStartedWith()
{
    Editor editor;
    editor.text().setText(u"abc"_s);
    editor.text().setSelLength(1);
    editor.text().setSelColor(red);
    QCOMPARE(editor.toolbar().Label1->ForeColor(), red);
    editor.frame->Label1_DblClick();
    QCOMPARE(editor.c1->Color, red);
    QCOMPARE(editor.toolbar().Label1->ForeColor(), red);
    QCOMPARE(editor.text().SelColor(), std::optional(red));
}

void TestTextCommands::theSwatchWorksFromTheKeyboard()
{
    Editor editor;
    QVERIFY(editor.show());
    editor.text().setText(u"abc"_s);
    editor.text().setSelLength(1);
    editor.toolbar().Label1->setForeColor(red);
    editor.toolbar().Label1->setFocus();
    QTest::keyClick(editor.toolbar().Label1, Qt::Key_Space);
    QCOMPARE(editor.text().SelColor(), std::optional(red));
    editor.c1->answer = u"16711680"_s;
    editor.toolbar().Label1->setFocus();
    QTest::keyClick(editor.toolbar().Label1, Qt::Key_Return);
    QCOMPARE(editor.text().SelColor(), std::optional(blue));
}

void TestTextCommands::printingTheDocument()
{
    const QTemporaryDir folder;
    Editor editor;
    editor.text().setText(u"abc"_s);
    editor.printer->outputFile = folder.filePath(u"out.pdf"_s);
    editor.frame->menus.print->trigger();
    QCOMPARE(editor.printer->shown, QStringList{u"Untitled 1"_s});
    QVERIFY(QFileInfo(editor.printer->outputFile).size() > 0);
}

void TestTextCommands::aCancelledPrintPrintsNothing()
{
    Editor editor;
    editor.text().setText(u"abc"_s);
    editor.frame->menus.print->trigger();
    QCOMPARE(editor.printer->shown.size(), 1);
    QCOMPARE(editor.text().text(), u"abc"_s);
    QCOMPARE(editor.end.count(), 0);
}

QTEST_MAIN(TestTextCommands)
#include "TestTextCommands.moc"
