#include <random>

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QMimeData>
#include <QPrinter>
#include <QProcess>
#include <QProgressBar>
#include <QProgressDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTextFrame>
#include <QTextList>
#include <QTextTable>
#include <QThreadPool>
#include <QTimer>

#include "ScriptedFiles.h"
#include "controls/LazyTextLayout.h"
#include "controls/RichTextBox.h"
#include "controls/RichTextCopy.h"
#include "controls/RichTextDocument.h"
#include "runtime/ErrorReport.h"
#include "runtime/EventGate.h"
#include "runtime/RuntimeError.h"
#include "tests/runtime/FailureOf.h"
#include "tests/support/DocumentDump.h"
#include "tests/support/ScriptedPrompts.h"
#include <QElapsedTimer>

using namespace vandrel;

namespace { } // namespace

// What would be opened with the desktop's own programs.
class LinkCatcher : public QObject
{
    Q_OBJECT

public:
    QStringList opened;

public Q_SLOTS:
    void open(const QUrl &link) { opened.append(link.toString()); }
};

class TestRichTextBox : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void everyParagraphEndCountsTwo();
    void positionsInsidePairsAreTakenAsTheOneBefore();
    void aNegativePositionIsAnInvalidPropertyValue();
    void tableBordersAreParagraphEnds();
    void mixedSelectionsReadAsNull();
    void typedTextGetsTheFormatSetAtTheCaret();
    void changeIsRaisedOnceForEachChangeOfText();
    void aLetterWithAltIsNoText();
    void changeIsNotRaisedForFormats();
    void undoingTextRaisesChangeAndUndoingFormatDoesNot();
    void replacingAsMuchTextRaisesChange();
    void selChangeIsRaisedOnceForAMove();
    void findWithoutStartSearchesTheWholeText();
    void findWithStartWalksOn();
    void findCrossesParagraphEnds();
    void aFailedFindLeavesTheSelection();
    void groupedChangesAreOneUndoStep();
    void aPausedGroupIsStillOneUndoStep();
    void aSmallFileIsThereAtOnce();
    void aLargeFileIsReadInTheBackground();
    void aMissingFileRaisesItsError();
    void changesOfManyKindsAgreeWithASimpleModel();
    void theEndOfALongTextIsThereAtOnce();
    void aTableInALongTextCostsNoMoreThanItself();
    void keysMoveThroughATableAsInTheToolkitsBox();
    void keysDoTheSameInALongTextAsInTheToolkitsBox();
    void theCaretStaysVisibleAndTheTextInPlace();
    void changesDuringLoadingDoNothing();
    void savingDuringLoadingIsRefused();
    void cancellingALoadLeavesTheBoxEmpty();
    void aBoxDestroyedWhileLoadingCancelsTheReading();
    void aFailedLoadEndsInOneErrorBox();
    void loadingWaitsForAnOpenMessageBox();
    void aSlowLoadShowsItsProgress();
    void savingMarksTheTextUnmodified();
    void theWindowIsPaintedDuringALongSave();
    void aSecondSaveInsideASaveIsRefused();
    void theClipboardCarriesTextAndFormats();
    void brokenRichTextOnTheClipboardIsPastedAsText();
    void webPagesArePastedAsTextOnly();
    void ctrlClickOpensLinksToTheWebOnly();
    void hiddenObjectsTakeNoRoom();
    void newTextLooksLikeWhatItReplaces();
    void theSystemColourIsTheAutomaticOne();
    void fontSizesOutsideTheLimitsAreRefused();
    void aHandlerThatSetsTheFontAgainChangesNothing();
    void textTypedWhileAGroupIsPausedIsItsOwnStep();
    void aGroupOutlivesItsBox();
    void theEndOfTheBoxIsTold();
    void printingWritesPagesWithTheText();
    void printingASelectionWritesNothingElse();
    void aLongPrintCanBeCancelled();
    void aCopyInPiecesIsTheSameDocument();

private:
    void compareWithModel();

    std::shared_ptr<ScriptedFiles> files;
    std::unique_ptr<RichTextBox> box;
    std::unique_ptr<QSignalSpy> changes;
    std::unique_ptr<QSignalSpy> selChanges;
};

void TestRichTextBox::init()
{
    changes.reset();
    selChanges.reset();
    files = std::make_shared<ScriptedFiles>();
    box = std::make_unique<RichTextBox>(files);
    box->resize(400, 300);
    changes = std::make_unique<QSignalSpy>(box.get(), &RichTextBox::Change);
    selChanges = std::make_unique<QSignalSpy>(box.get(), &RichTextBox::SelChange);
}

void TestRichTextBox::everyParagraphEndCountsTwo()
{
    box->setText(QStringLiteral("a\nbc\r\nd\re"));
    QCOMPARE(box->text(), QStringLiteral("a\r\nbc\r\nd\r\ne"));
    QCOMPARE(box->textLength(), 11);
    box->setSelStart(3);
    box->setSelLength(5);
    QCOMPARE(box->SelText(), QStringLiteral("bc\r\nd"));
    QCOMPARE(box->SelStart(), 3);
    QCOMPARE(box->SelLength(), 5);
    box->setSelLength(1000);
    QCOMPARE(box->SelText(), QStringLiteral("bc\r\nd\r\ne"));
}

void TestRichTextBox::positionsInsidePairsAreTakenAsTheOneBefore()
{
    box->setText(QStringLiteral("a\n\U0001F600b"));
    box->setSelStart(2);
    QCOMPARE(box->SelStart(), 1);
    box->setSelStart(4);
    QCOMPARE(box->SelStart(), 3);
    box->setSelLength(3);
    QCOMPARE(box->SelText(), QStringLiteral("\U0001F600b"));
}

void TestRichTextBox::aNegativePositionIsAnInvalidPropertyValue()
{
    QCOMPARE(test::numberOf([this] { box->setSelStart(-1); }), error::InvalidPropertyValue);
    QCOMPARE(test::numberOf([this] { box->setSelLength(-1); }), error::InvalidPropertyValue);
}

void TestRichTextBox::tableBordersAreParagraphEnds()
{
    QTextCursor cursor(box->document());
    cursor.insertText(QStringLiteral("before"));
    QTextTable *table = cursor.insertTable(1, 2);
    table->cellAt(0, 0).firstCursorPosition().insertText(QStringLiteral("x"));
    table->cellAt(0, 1).firstCursorPosition().insertText(QStringLiteral("y"));
    const QString text = box->text();
    QCOMPARE(text, QStringLiteral("before\r\nx\r\ny\r\n"));
    QCOMPARE(box->textLength(), text.size());
    QCOMPARE(box->find(QStringLiteral("x\ny")), text.indexOf(QStringLiteral("x\r\ny")));
    QCOMPARE(box->find(QString(QChar(0xFDD0))), -1);
}

void TestRichTextBox::mixedSelectionsReadAsNull()
{
    box->setText(QStringLiteral("abc"));
    box->setSelStart(1);
    box->setSelLength(1);
    box->setSelBold(true);
    box->setSelColor(0x0000FF);
    box->setSelFontSize(20);
    box->setSelFontName(QStringLiteral("Some Face"));
    QCOMPARE(box->SelBold(), std::optional(true));
    QCOMPARE(box->SelColor(), std::optional(0x0000FF));
    QCOMPARE(box->SelFontSize(), std::optional(20.0F));
    QCOMPARE(box->SelFontName(), std::optional(QStringLiteral("Some Face")));
    box->setSelStart(0);
    box->setSelLength(3);
    QVERIFY(!box->SelBold());
    QVERIFY(!box->SelColor());
    QVERIFY(!box->SelFontSize());
    QVERIFY(!box->SelFontName());
    QCOMPARE(box->SelItalic(), std::optional(false));
    box->setSelBold(true);
    QCOMPARE(box->SelBold(), std::optional(true));
}

void TestRichTextBox::typedTextGetsTheFormatSetAtTheCaret()
{
    box->setSelItalic(true);
    QCOMPARE(selChanges->count(), 1);
    QTest::keyClicks(box.get(), QStringLiteral("x"));
    box->setSelStart(0);
    box->setSelLength(1);
    QCOMPARE(box->SelItalic(), std::optional(true));
}

void TestRichTextBox::changeIsRaisedOnceForEachChangeOfText()
{
    box->setText(QStringLiteral("one\ntwo"));
    QCOMPARE(changes->count(), 1);
    box->setSelStart(0);
    box->setSelLength(3);
    box->setSelText(QStringLiteral("three"));
    QCOMPARE(changes->count(), 2);
    QTest::keyClicks(box.get(), QStringLiteral("ab"));
    QCOMPARE(changes->count(), 4);
    QTest::keyClick(box.get(), Qt::Key_Return);
    QCOMPARE(changes->count(), 5);
    box->setSelText(QString());
    QCOMPARE(changes->count(), 5);
}

void TestRichTextBox::aLetterWithAltIsNoText()
{
    QTest::keyClick(box.get(), 'f', Qt::AltModifier);
    QCOMPARE(box->text(), QString());
    QTest::keyClick(box.get(), 'f', Qt::AltModifier | Qt::ControlModifier);
    QTest::keyClick(box.get(), 'g');
    QVERIFY(box->text().endsWith(u'g'));
}

void TestRichTextBox::changeIsNotRaisedForFormats()
{
    box->setText(QStringLiteral("one\ntwo"));
    box->setSelStart(0);
    box->setSelLength(box->textLength());
    changes->clear();
    box->setSelBold(true);
    box->setSelFontSize(30);
    box->selectAll();
    box->setAlignment(Qt::AlignRight);
    QCOMPARE(changes->count(), 0);
}

void TestRichTextBox::undoingTextRaisesChangeAndUndoingFormatDoesNot()
{
    box->setSelText(QStringLiteral("one"));
    box->selectAll();
    box->setSelBold(true);
    box->setSelText(QStringLiteral("two"));
    changes->clear();
    box->undo();
    QCOMPARE(box->text(), QStringLiteral("one"));
    QCOMPARE(changes->count(), 1);
    box->undo();
    QCOMPARE(changes->count(), 1);
    box->redo();
    QCOMPARE(changes->count(), 1);
    box->redo();
    QCOMPARE(changes->count(), 2);
    QCOMPARE(box->text(), QStringLiteral("two"));
}

void TestRichTextBox::replacingAsMuchTextRaisesChange()
{
    box->setText(QStringLiteral("abc"));
    box->selectAll();
    changes->clear();
    box->setSelText(QStringLiteral("xyz"));
    QCOMPARE(changes->count(), 1);
}

void TestRichTextBox::selChangeIsRaisedOnceForAMove()
{
    box->setText(QStringLiteral("abc"));
    selChanges->clear();
    box->setSelStart(2);
    QCOMPARE(selChanges->count(), 1);
    box->setSelStart(2);
    QCOMPARE(selChanges->count(), 1);
    box->setSelLength(1);
    QCOMPARE(selChanges->count(), 2);
    QTest::keyClick(box.get(), Qt::Key_Left);
    QCOMPARE(selChanges->count(), 3);
}

void TestRichTextBox::findWithoutStartSearchesTheWholeText()
{
    box->setText(QStringLiteral("The cat\nthe dog"));
    box->setSelStart(12);
    QCOMPARE(box->find(QStringLiteral("THE")), 0);
    QCOMPARE(box->SelText(), QStringLiteral("The"));
    QCOMPARE(box->find(QStringLiteral("the")), 0);
    QCOMPARE(box->find(QString()), -1);
}

void TestRichTextBox::findWithStartWalksOn()
{
    box->setText(QStringLiteral("the\nthe\nthe"));
    QCOMPARE(box->find(QStringLiteral("the"), 1, box->textLength()), 5);
    QCOMPARE(box->find(QStringLiteral("the"), box->SelStart() + 1, box->textLength()), 10);
    QCOMPARE(box->find(QStringLiteral("the"), box->SelStart() + 1, box->textLength()), -1);
    QCOMPARE(box->SelStart(), 10);
    QCOMPARE(box->find(QStringLiteral("the"), 1, 7), -1);
    QCOMPARE(box->find(QStringLiteral("the"), 1, 8), 5);
}

void TestRichTextBox::findCrossesParagraphEnds()
{
    box->setText(QStringLiteral("ab\ncd"));
    QCOMPARE(box->find(QStringLiteral("B\r\nC")), 1);
    QCOMPARE(box->SelText(), QStringLiteral("b\r\nc"));
    box->setText(QStringLiteral("a\u00A0b c"));
    QCOMPARE(box->find(QStringLiteral(" ")), 3);
    QCOMPARE(box->find(QStringLiteral("\u00A0")), 1);
}

void TestRichTextBox::aFailedFindLeavesTheSelection()
{
    box->setText(QStringLiteral("abc"));
    box->setSelStart(1);
    box->setSelLength(1);
    QCOMPARE(box->find(QStringLiteral("x")), -1);
    QCOMPARE(box->SelText(), QStringLiteral("b"));
}

void TestRichTextBox::groupedChangesAreOneUndoStep()
{
    box->setText(QStringLiteral("a b a b a"));
    changes->clear();
    {
        RichTextBox::ChangeGroup group(*box);
        while (box->find(QStringLiteral("a")) >= 0)
            box->setSelText(QStringLiteral("ccc"));
        QCOMPARE(changes->count(), 0);
    }
    QCOMPARE(box->text(), QStringLiteral("ccc b ccc b ccc"));
    QCOMPARE(changes->count(), 1);
    QCOMPARE(box->SelStart(), 15);
    box->undo();
    QCOMPARE(box->text(), QStringLiteral("a b a b a"));
}

void TestRichTextBox::aPausedGroupIsStillOneUndoStep()
{
    box->setText(QStringLiteral("a b a b a"));
    {
        RichTextBox::ChangeGroup group(*box);
        while (box->find(QStringLiteral("a")) >= 0) {
            box->setSelText(QStringLiteral("ccc"));
            group.pause();
            group.resume();
        }
    }
    QCOMPARE(box->text(), QStringLiteral("ccc b ccc b ccc"));
    box->undo();
    QCOMPARE(box->text(), QStringLiteral("a b a b a"));
}

void TestRichTextBox::aSmallFileIsThereAtOnce()
{
    files->addText(QStringLiteral("c:\\a.txt"), QStringLiteral("hello"));
    QSignalSpy finished(box.get(), &RichTextBox::loadFinished);
    box->LoadFile(QStringLiteral("c:\\a.txt"));
    QCOMPARE(box->text(), QStringLiteral("hello"));
    QCOMPARE(finished.count(), 1);
    QCOMPARE(changes->count(), 0);
    QVERIFY(!box->document()->isModified());
    QVERIFY(!box->document()->isUndoAvailable());
    QVERIFY(box->document()->isUndoRedoEnabled());
}

void TestRichTextBox::aLargeFileIsReadInTheBackground()
{
    files->addText(QStringLiteral("c:\\big.txt"), QStringLiteral("hello"), 1LL << 30);
    QSignalSpy finished(box.get(), &RichTextBox::loadFinished);
    box->setText(QStringLiteral("old"));
    changes->clear();
    box->LoadFile(QStringLiteral("c:\\big.txt"));
    QVERIFY(box->isLoading());
    QCOMPARE(box->text(), QString());
    QVERIFY(box->isReadOnly());
    QVERIFY(finished.wait());
    QVERIFY(!box->isLoading());
    QVERIFY(!box->isReadOnly());
    QCOMPARE(box->text(), QStringLiteral("hello"));
    QCOMPARE(changes->count(), 0);
}

void TestRichTextBox::aMissingFileRaisesItsError()
{
    QCOMPARE(test::numberOf([this] { box->LoadFile(QStringLiteral("c:\\none.txt")); }), error::FileNotFound);
}

namespace {

// What the text of a document must be, made the slow and plain way.
QString modelText(const QTextDocument &document)
{
    QString text;
    for (int i = 0; i < document.characterCount() - 1; ++i) {
        const QChar c = document.characterAt(i);
        if (c == QChar::ParagraphSeparator || c == QChar(0xFDD0) || c == QChar(0xFDD1))
            text += QStringLiteral("\r\n");
        else if (c == QChar::LineSeparator)
            text += u'\n';
        else if (c == QChar::ObjectReplacementCharacter)
            text += u' ';
        else
            text += c;
    }
    return text;
}

bool isInsidePair(const QString &text, qsizetype position)
{
    if (position <= 0 || position >= text.size())
        return false;
    const QChar before = text[position - 1];
    const QChar behind = text[position];
    return (before == u'\r' && behind == u'\n') || (before.isHighSurrogate() && behind.isLowSurrogate());
}

constexpr qint64 large = 1LL << 30;

// Documents whose reading goes on until it is let go or cancelled.
struct HeldFile {
    QSemaphore mayEnd;
    std::atomic<bool> wasCancelled{false};

    LoadedDocument load(DocumentProgress &progress)
    {
        progress.total = 4;
        progress.done = 1;
        while (!mayEnd.tryAcquire(1, 1)) {
            if (progress.cancelled) {
                wasCancelled = true;
                return {};
            }
        }
        return textDocument(QStringLiteral("read"));
    }
};

QString pdfText(const QString &path)
{
    QProcess reader;
    reader.start(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), path, QStringLiteral("-")});
    if (!reader.waitForStarted())
        return {};
    reader.waitForFinished();
    return QString::fromUtf8(reader.readAllStandardOutput());
}

QTextCharFormat linkTo(const QString &address)
{
    QTextCharFormat format;
    format.setAnchor(true);
    format.setAnchorHref(address);
    return format;
}

} // namespace

void TestRichTextBox::compareWithModel()
{
    const QString model = modelText(*box->document());
    QCOMPARE(box->text(), model);
    QCOMPARE(box->textLength(), model.size());
    for (qsizetype position = 0; position <= model.size() + 2; ++position) {
        qsizetype expected = std::min(position, model.size());
        if (isInsidePair(model, expected))
            --expected;
        box->setSelStart(static_cast<qint32>(position));
        QCOMPARE(box->SelStart(), expected);
        // The toolkit selects whole cells of a table.
        if (!box->document()->rootFrame()->childFrames().isEmpty())
            continue;
        box->setSelLength(5);
        qsizetype end = std::min(expected + 5, model.size());
        if (isInsidePair(model, end))
            --end;
        QCOMPARE(box->SelText(), model.mid(expected, end - expected));
        QCOMPARE(box->SelLength(), end - expected);
    }
}

void TestRichTextBox::changesOfManyKindsAgreeWithASimpleModel()
{
    const QStringList pieces{QStringLiteral("a"),    QStringLiteral("\r\n"),   QStringLiteral("\r"),
                             QStringLiteral("\n\n"), QStringLiteral("\u00A0"), QStringLiteral("\U0001F600"),
                             QStringLiteral("Wörd"), QStringLiteral("\u2028"), QStringLiteral("\t ")};
    std::mt19937 random(3);
    for (int round = 0; round < 12; ++round) {
        box->setText(QString());
        for (int i = 0; i < 30; ++i) {
            box->setSelStart(static_cast<qint32>(random() % static_cast<unsigned>(box->textLength() + 1)));
            box->setSelLength(static_cast<qint32>(random() % 4));
            box->setSelText(pieces[static_cast<qsizetype>(random() % static_cast<unsigned>(pieces.size()))]);
            QTextCursor cursor = box->textCursor();
            if (i % 10 == 3)
                cursor.insertImage(QTextImageFormat());
            if (i % 15 == 7 && round % 3 == 0)
                cursor.insertTable(1, 2);
        }
        compareWithModel();
        if (QTest::currentTestFailed())
            return;
        const QString model = modelText(*box->document());
        for (const QString &needle : pieces) {
            // In the search every kind of line break is one.
            QString plain = needle;
            plain.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
            plain.replace(QChar::LineSeparator, u'\n');
            QString searched = model;
            searched.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
            const qsizetype at = searched.indexOf(plain, 0, Qt::CaseInsensitive);
            qsizetype expected = at;
            if (at >= 0) {
                expected = 0;
                for (qsizetype i = 0; i < at; ++i)
                    expected += model[expected] == u'\r' && model[expected + 1] == u'\n' ? 2 : 1;
            }
            QCOMPARE(box->find(needle == QStringLiteral("\u2028") ? QStringLiteral("\n") : needle), expected);
        }
    }
}

void TestRichTextBox::theEndOfALongTextIsThereAtOnce()
{
    box->setText(QStringLiteral("a line of text\n").repeated(20'000));
    auto *layout = qobject_cast<LazyTextLayout *>(box->document()->documentLayout());
    QVERIFY(layout);
    QCOMPARE(changes->count(), 1);
    box->show();
    QTest::keyClick(box.get(), Qt::Key_End, Qt::ControlModifier);
    QCOMPARE(box->SelStart(), box->textLength());
    QVERIFY(box->viewport()->rect().contains(box->cursorRect()));
    QTest::keyClicks(box.get(), QStringLiteral("end"));
    QVERIFY(box->text().endsWith(QStringLiteral("end")));
    QVERIFY(layout->paragraphsLaidOut() < 1000);
}

void TestRichTextBox::aTableInALongTextCostsNoMoreThanItself()
{
    files->add(QStringLiteral("c:\\table.rtf"), 1, [](DocumentProgress &) {
        LoadedDocument loaded = textDocument(QStringLiteral("a line of text\n").repeated(20'000));
        QTextCursor(loaded.document.get()).insertTable(2, 2);
        return loaded;
    });
    box->LoadFile(QStringLiteral("c:\\table.rtf"));
    auto *layout = qobject_cast<LazyTextLayout *>(box->document()->documentLayout());
    QVERIFY(layout);
    box->show();
    QTest::keyClick(box.get(), Qt::Key_Down);
    const auto *table = qobject_cast<QTextTable *>(box->document()->rootFrame()->childFrames().value(0));
    QVERIFY(table);
    box->setTextCursor(table->cellAt(1, 0).firstCursorPosition());
    QTest::keyClicks(box.get(), QStringLiteral("cell"));
    QCOMPARE(QTextCursor(box->textCursor()).block().text(), QStringLiteral("cell"));
    QVERIFY(box->viewport()->rect().contains(box->cursorRect()));
    QVERIFY(layout->paragraphsLaidOut() < 1000);
}

void TestRichTextBox::keysMoveThroughATableAsInTheToolkitsBox()
{
    const auto fill = [](QTextDocument &document) {
        QTextCursor cursor(&document);
        cursor.insertText(QStringLiteral("above\n"));
        QTextTableFormat format;
        format.setColumnWidthConstraints({QTextLength(QTextLength::FixedLength, 90),
                                          QTextLength(QTextLength::FixedLength, 120),
                                          QTextLength(QTextLength::FixedLength, 100)});
        format.setCellSpacing(0);
        format.setBorder(0);
        QTextTable *table = cursor.insertTable(4, 3, format);
        table->mergeCells(1, 0, 1, 2);
        for (int cell = 0; cell < 12; ++cell)
            table->cellAt(cell / 3, cell % 3)
                .firstCursorPosition()
                .insertText(QStringLiteral("cell %1 ").arg(cell).repeated(1 + cell % 4));
        cursor.movePosition(QTextCursor::End);
        cursor.insertText(QStringLiteral("below\nend"));
        document.clearUndoRedoStacks();
    };
    QTextEdit peer;
    fill(*peer.document());
    fill(*box->document());
    for (QTextEdit *edit : {static_cast<QTextEdit *>(box.get()), &peer}) {
        edit->resize(420, 300);
        edit->show();
        edit->moveCursor(QTextCursor::Start);
    }
    const Qt::Key keys[] = {Qt::Key_Up,  Qt::Key_Down, Qt::Key_Left, Qt::Key_Right, Qt::Key_Home,
                            Qt::Key_End, Qt::Key_X,    Qt::Key_Down, Qt::Key_Right};
    std::mt19937 random(3);
    for (int i = 0; i < 300; ++i) {
        const Qt::Key key = keys[random() % std::size(keys)];
        const Qt::KeyboardModifiers with
            = key != Qt::Key_X && random() % 4 == 0 ? Qt::ShiftModifier : Qt::NoModifier;
        QTest::keyClick(box.get(), key, with);
        QTest::keyClick(&peer, key, with);
        QCOMPARE(box->textCursor().position(), peer.textCursor().position());
        QCOMPARE(box->textCursor().anchor(), peer.textCursor().anchor());
    }
    QCOMPARE(box->toPlainText(), peer.toPlainText());
}

void TestRichTextBox::keysDoTheSameInALongTextAsInTheToolkitsBox()
{
    QString text;
    for (int i = 0; i < 1500; ++i)
        text += QStringLiteral("word %1 ").arg(i).repeated(1 + i * 7 % 40) + u'\n';
    QTextEdit peer;
    peer.setPlainText(text);
    box->setText(text);
    QVERIFY(qobject_cast<LazyTextLayout *>(box->document()->documentLayout()));
    for (QTextEdit *edit : {static_cast<QTextEdit *>(box.get()), &peer}) {
        edit->resize(420, 300);
        edit->show();
    }
    const Qt::Key keys[]
        = {Qt::Key_Up, Qt::Key_Down,   Qt::Key_Left,   Qt::Key_Right,     Qt::Key_Home,     Qt::Key_End,
           Qt::Key_X,  Qt::Key_Return, Qt::Key_Delete, Qt::Key_Backspace, Qt::Key_PageDown, Qt::Key_PageUp};
    const Qt::KeyboardModifiers modifiers[]
        = {Qt::NoModifier, Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier};
    std::mt19937 random(5);
    for (int i = 0; i < 400; ++i) {
        const Qt::Key key = keys[random() % std::size(keys)];
        Qt::KeyboardModifiers with = modifiers[random() % std::size(modifiers)];
        if (key == Qt::Key_X && with == Qt::ControlModifier)
            with = Qt::NoModifier;
        if (i % 40 == 17) {
            box->undo();
            peer.undo();
        }
        QTest::keyClick(box.get(), key, with);
        QTest::keyClick(&peer, key, with);
        QCOMPARE(box->textCursor().position(), peer.textCursor().position());
        QCOMPARE(box->textCursor().anchor(), peer.textCursor().anchor());
        if (i % 10 == 0)
            QCoreApplication::processEvents();
        if (i % 50 == 49) {
            box->resize(300 + i % 200, 300);
            peer.resize(300 + i % 200, 300);
        }
    }
    QCOMPARE(box->toPlainText(), peer.toPlainText());
}

void TestRichTextBox::theCaretStaysVisibleAndTheTextInPlace()
{
    QString text;
    for (int i = 0; i < 4000; ++i)
        text += QStringLiteral("word %1 ").arg(i).repeated(1 + i * 7 % 30) + u'\n';
    box->setText(text);
    box->show();
    auto *layout = qobject_cast<LazyTextLayout *>(box->document()->documentLayout());
    QVERIFY(layout);
    const auto settled = [&] { return layout->isIdle(); };
    for (const Qt::Key key : {Qt::Key_End, Qt::Key_Home, Qt::Key_End}) {
        QTest::keyClick(box.get(), key, Qt::ControlModifier);
        QVERIFY(box->viewport()->rect().contains(box->cursorRect()));
        const QRect caret = box->cursorRect();
        QTRY_VERIFY(settled());
        QCOMPARE(box->cursorRect(), caret);
    }
    for (const char *word : {"word 2000", "word 300", "word 3777"}) {
        QVERIFY(box->find(QString::fromLatin1(word)) >= 0);
        QVERIFY(box->viewport()->rect().contains(box->cursorRect()));
        const QRect caret = box->cursorRect();
        QTRY_VERIFY(settled());
        QCOMPARE(box->cursorRect(), caret);
    }
}

void TestRichTextBox::changesDuringLoadingDoNothing()
{
    HeldFile held;
    files->add(QStringLiteral("c:\\big"), large, [&held](DocumentProgress &p) { return held.load(p); });
    QSignalSpy finished(box.get(), &RichTextBox::loadFinished);
    box->LoadFile(QStringLiteral("c:\\big"));
    box->setText(QStringLiteral("lost"));
    box->setSelText(QStringLiteral("lost"));
    box->setSelBold(true);
    QTest::keyClicks(box.get(), QStringLiteral("lost"));
    QCOMPARE(box->text(), QString());
    held.mayEnd.release();
    QVERIFY(finished.wait());
    QCOMPARE(box->text(), QStringLiteral("read"));
    QCOMPARE(changes->count(), 0);
    QCOMPARE(box->SelBold(), std::optional(false));
}

void TestRichTextBox::savingDuringLoadingIsRefused()
{
    HeldFile held;
    files->add(QStringLiteral("c:\\big"), large, [&held](DocumentProgress &p) { return held.load(p); });
    QSignalSpy finished(box.get(), &RichTextBox::loadFinished);
    box->LoadFile(QStringLiteral("c:\\big"));
    QCOMPARE(test::numberOf([this] { box->SaveFile(QStringLiteral("c:\\big")); }), error::PermissionDenied);
    QVERIFY(files->saved.empty());
    held.mayEnd.release();
    QVERIFY(finished.wait());
}

void TestRichTextBox::cancellingALoadLeavesTheBoxEmpty()
{
    HeldFile held;
    files->add(QStringLiteral("c:\\big"), large, [&held](DocumentProgress &p) { return held.load(p); });
    box->setText(QStringLiteral("old"));
    QSignalSpy finished(box.get(), &RichTextBox::loadFinished);
    box->LoadFile(QStringLiteral("c:\\big"));
    box->cancelLoading();
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.constFirst().constFirst().toBool(), false);
    QVERIFY(!box->isLoading());
    QVERIFY(!box->isReadOnly());
    QCOMPARE(box->text(), QString());
    QTRY_VERIFY(held.wasCancelled);
    QCoreApplication::processEvents();
    QCOMPARE(finished.count(), 1);
}

void TestRichTextBox::aBoxDestroyedWhileLoadingCancelsTheReading()
{
    HeldFile held;
    files->add(QStringLiteral("c:\\big"), large, [&held](DocumentProgress &p) { return held.load(p); });
    box->LoadFile(QStringLiteral("c:\\big"));
    changes.reset();
    selChanges.reset();
    box.reset();
    QTRY_VERIFY(held.wasCancelled);
    QVERIFY(QThreadPool::globalInstance()->waitForDone());
    QCoreApplication::processEvents();
}

void TestRichTextBox::aFailedLoadEndsInOneErrorBox()
{
    test::ScriptedPrompts prompts;
    int ended = -1;
    setProgramEnd([&ended](int status) { ended = status; });
    files->add(QStringLiteral("c:\\big"), large,
               [](DocumentProgress &) -> LoadedDocument { throw RuntimeError(error::DeviceIoError); });
    QSignalSpy finished(box.get(), &RichTextBox::loadFinished);
    prompts.expectError(error::DeviceIoError);
    box->LoadFile(QStringLiteral("c:\\big"));
    QTRY_COMPARE(ended, EXIT_FAILURE);
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.constFirst().constFirst().toBool(), false);
    QVERIFY(!box->isLoading());
    QVERIFY(!box->isReadOnly());
}

void TestRichTextBox::loadingWaitsForAnOpenMessageBox()
{
    files->addText(QStringLiteral("c:\\big"), QStringLiteral("read"), large);
    QSignalSpy finished(box.get(), &RichTextBox::loadFinished);
    {
        const EventGate::Hold hold;
        box->LoadFile(QStringLiteral("c:\\big"));
        QVERIFY(QThreadPool::globalInstance()->waitForDone());
        QCoreApplication::processEvents();
        QCOMPARE(finished.count(), 0);
        QVERIFY(box->isLoading());
    }
    QVERIFY(finished.wait());
    QCOMPARE(box->text(), QStringLiteral("read"));
}

void TestRichTextBox::aSlowLoadShowsItsProgress()
{
    HeldFile held;
    files->add(QStringLiteral("c:\\big"), large, [&held](DocumentProgress &p) { return held.load(p); });
    QSignalSpy finished(box.get(), &RichTextBox::loadFinished);
    box->show();
    box->LoadFile(QStringLiteral("c:\\big"));
    QVERIFY(!box->findChild<QPushButton *>(QStringLiteral("CancelLoading")));
    QTRY_VERIFY(box->findChild<QPushButton *>(QStringLiteral("CancelLoading")));
    auto *bar = box->findChild<QProgressBar *>(QStringLiteral("LoadProgressBar"));
    QTRY_COMPARE(bar->value() * 4, bar->maximum());
    QTest::mouseClick(box->findChild<QPushButton *>(QStringLiteral("CancelLoading")), Qt::LeftButton);
    QCOMPARE(finished.count(), 1);
    QTRY_VERIFY(!box->findChild<QPushButton *>(QStringLiteral("CancelLoading")));
    QTRY_VERIFY(held.wasCancelled);
}

void TestRichTextBox::savingMarksTheTextUnmodified()
{
    box->setText(QStringLiteral("text"));
    QVERIFY(box->document()->isModified());
    box->SaveFile(QStringLiteral("c:\\a.rtf"));
    QVERIFY(!box->document()->isModified());
    QCOMPARE(files->saved[QStringLiteral("c:\\a.rtf")], QStringLiteral("text"));
}

void TestRichTextBox::theWindowIsPaintedDuringALongSave()
{
    int posted = 0;
    files->whileSaving = [this, &posted](const std::function<void()> &betweenBlocks) {
        QMetaObject::invokeMethod(
            box.get(), [&posted] { ++posted; }, Qt::QueuedConnection);
        QElapsedTimer bound;
        bound.start();
        while (posted == 0 && !bound.hasExpired(20'000))
            betweenBlocks();
    };
    box->SaveFile(QStringLiteral("c:\\a.rtf"));
    QCOMPARE(posted, 1);
}

void TestRichTextBox::aSecondSaveInsideASaveIsRefused()
{
    int raised = 0;
    files->whileSaving = [this, &raised](const std::function<void()> &) {
        raised = test::numberOf([this] { box->SaveFile(QStringLiteral("c:\\b.rtf")); });
    };
    box->SaveFile(QStringLiteral("c:\\a.rtf"));
    QCOMPARE(raised, error::PermissionDenied);
    QCOMPARE(files->saved.size(), 1U);
}

void TestRichTextBox::theClipboardCarriesTextAndFormats()
{
    box->setText(QStringLiteral("one\ntwo"));
    box->selectAll();
    box->setSelItalic(true);
    box->copy();
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    QCOMPARE(data->text(), QStringLiteral("one\ntwo"));
    QVERIFY(data->hasFormat(QStringLiteral("text/rtf")));
    QVERIFY(!data->hasHtml());
    box->setText(QString());
    changes->clear();
    box->paste();
    QCOMPARE(box->text(), QStringLiteral("one\r\ntwo"));
    QCOMPARE(changes->count(), 1);
    box->selectAll();
    QCOMPARE(box->SelItalic(), std::optional(true));
    box->undo();
    QCOMPARE(box->text(), QString());
}

void TestRichTextBox::brokenRichTextOnTheClipboardIsPastedAsText()
{
    auto *data = new QMimeData;
    data->setData(QStringLiteral("text/rtf"), "broken");
    data->setText(QStringLiteral("plain"));
    QGuiApplication::clipboard()->setMimeData(data);
    box->paste();
    QCOMPARE(box->text(), QStringLiteral("plain"));
}

void TestRichTextBox::webPagesArePastedAsTextOnly()
{
    auto *data = new QMimeData;
    data->setHtml(QStringLiteral("<b>bold</b><img src='http://example.invalid/x.png'>"));
    QGuiApplication::clipboard()->setMimeData(data);
    box->paste();
    QVERIFY(box->text().startsWith(QStringLiteral("bold")));
    box->selectAll();
    QCOMPARE(box->SelBold(), std::optional(false));
    QVERIFY(!box->document()->toHtml().contains(QStringLiteral("example.invalid")));
}

void TestRichTextBox::ctrlClickOpensLinksToTheWebOnly()
{
    LinkCatcher catcher;
    for (const char *scheme : {"http", "https", "mailto", "file", "javascript"})
        QDesktopServices::setUrlHandler(QString::fromLatin1(scheme), &catcher, "open");
    box->show();
    const QStringList addresses{QStringLiteral("http://example.invalid/a"),
                                QStringLiteral("file:///etc/passwd"), QStringLiteral("javascript:alert(1)"),
                                QStringLiteral("mailto:a@example.invalid")};
    QTextCursor cursor = box->textCursor();
    for (const QString &address : addresses)
        cursor.insertText(QStringLiteral("click here\n"), linkTo(address));
    for (int i = 0; i < addresses.size(); ++i) {
        cursor.setPosition(box->document()->findBlockByNumber(i).position() + 3);
        const QPoint point = box->cursorRect(cursor).center() + QPoint(2, 0);
        QTest::mouseClick(box->viewport(), Qt::LeftButton, Qt::NoModifier, point);
        QTest::mouseClick(box->viewport(), Qt::LeftButton, Qt::ControlModifier, point);
    }
    for (const char *scheme : {"http", "https", "mailto", "file", "javascript"})
        QDesktopServices::unsetUrlHandler(QString::fromLatin1(scheme));
    QCOMPARE(catcher.opened, QStringList({addresses.constFirst(), addresses.constLast()}));
}

void TestRichTextBox::hiddenObjectsTakeNoRoom()
{
    box->setText(QStringLiteral("ab"));
    box->show();
    QTextCursor cursor = box->textCursor();
    const auto placeOf = [&](int position) {
        cursor.setPosition(position);
        return box->cursorRect(cursor);
    };
    const int before = placeOf(2).left();
    QTextCharFormat hidden;
    hidden.setObjectType(richtext::RawObject);
    hidden.setProperty(richtext::RawRtf, QByteArray("{\\*\\bkmkstart x}"));
    cursor.setPosition(1);
    cursor.insertText(QString(QChar::ObjectReplacementCharacter), hidden);
    QCOMPARE(placeOf(3).left(), before);
    QCOMPARE(box->text(), QStringLiteral("a b"));
}

void TestRichTextBox::newTextLooksLikeWhatItReplaces()
{
    box->setText(QStringLiteral("plain bold plain"));
    box->setSelStart(6);
    box->setSelLength(4);
    box->setSelBold(true);
    QCOMPARE(box->find(QStringLiteral("bold")), 6);
    box->setSelText(QStringLiteral("strong"));
    QCOMPARE(box->SelStart(), 12);
    QCOMPARE(box->find(QStringLiteral("strong")), 6);
    QCOMPARE(box->SelBold(), std::optional(true));
    QCOMPARE(box->find(QStringLiteral("plain")), 0);
    QCOMPARE(box->SelBold(), std::optional(false));
}

void TestRichTextBox::theSystemColourIsTheAutomaticOne()
{
    box->setText(QStringLiteral("abc"));
    box->selectAll();
    QCOMPARE(box->SelColor(), std::optional(0));
    box->setSelColor(0x123456);
    QCOMPARE(box->SelColor(), std::optional(0x123456));
    QCOMPARE(box->textCursor().charFormat().foreground().color(), QColor(0x56, 0x34, 0x12));
    box->setSelColor(static_cast<qint32>(0x80000012));
    QCOMPARE(box->SelColor(), std::optional(0));
    QCOMPARE(box->textCursor().charFormat().foreground().style(), Qt::NoBrush);
}

void TestRichTextBox::fontSizesOutsideTheLimitsAreRefused()
{
    for (const float size : {0.0F, -3.0F, 2161.0F, std::numeric_limits<float>::quiet_NaN()})
        QCOMPARE(test::numberOf([&] { box->setSelFontSize(size); }), error::InvalidPropertyValue);
    box->setSelFontSize(2160);
    QCOMPARE(box->SelFontSize(), std::optional(2160.0F));
}

// The tool bar answers SelChange by choosing the selection's own font in its lists, which sets it again.
void TestRichTextBox::aHandlerThatSetsTheFontAgainChangesNothing()
{
    box->setText(QStringLiteral("abc"));
    box->document()->setModified(false);
    selChanges->clear();
    connect(box.get(), &RichTextBox::SelChange, this, [this] {
        box->setSelFontName(*box->SelFontName());
        box->setSelFontSize(*box->SelFontSize());
        box->setSelBold(*box->SelBold());
    });
    box->selectAll();
    QCOMPARE(selChanges->count(), 1);
    QVERIFY(!box->document()->isModified());
    QCOMPARE(box->document()->availableRedoSteps(), 0);
}

void TestRichTextBox::textTypedWhileAGroupIsPausedIsItsOwnStep()
{
    box->setText(QStringLiteral("a a"));
    {
        RichTextBox::ChangeGroup group(*box);
        box->find(QStringLiteral("a"));
        box->setSelText(QStringLiteral("x"));
        group.pause();
        box->moveCursor(QTextCursor::End);
        QTest::keyClicks(box.get(), QStringLiteral("typed"));
        group.resume();
        box->find(QStringLiteral("a"));
        box->setSelText(QStringLiteral("x"));
    }
    QCOMPARE(box->text(), QStringLiteral("x xtyped"));
    box->undo();
    QCOMPARE(box->text(), QStringLiteral("x atyped"));
    box->undo();
    QCOMPARE(box->text(), QStringLiteral("x a"));
}

void TestRichTextBox::aGroupOutlivesItsBox()
{
    RichTextBox::ChangeGroup group(*box);
    box->setSelText(QStringLiteral("x"));
    group.pause();
    changes.reset();
    selChanges.reset();
    box.reset();
    group.resume();
}

void TestRichTextBox::theEndOfTheBoxIsTold()
{
    QSignalSpy destroyed(box.get(), &QObject::destroyed);
    box->setText(QStringLiteral("text"));
    const qsizetype before = changes->count();
    selChanges->clear();
    box.reset();
    QCOMPARE(destroyed.count(), 1);
    QCOMPARE(changes->count(), before);
    QCOMPARE(selChanges->count(), 0);
}

void TestRichTextBox::printingWritesPagesWithTheText()
{
    QTemporaryDir folder;
    QPrinter printer;
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(folder.filePath(QStringLiteral("out.pdf")));
    QString text;
    for (int i = 0; i < 200; ++i)
        text += QStringLiteral("This is line number %1.\n").arg(i);
    box->setText(text);
    box->SelPrint(&printer);
    QFile file(printer.outputFileName());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().count("/Type /Page\n") >= 3);
    const QString printed = pdfText(printer.outputFileName());
    if (printed.isEmpty())
        QSKIP("There is no pdftotext to read the pages with.");
    for (int i = 0; i < 200; ++i)
        QVERIFY(printed.contains(QStringLiteral("This is line number %1.").arg(i)));
    QVERIFY(printed.count(u'\f') >= 3);
}

void TestRichTextBox::printingASelectionWritesNothingElse()
{
    QTemporaryDir folder;
    QPrinter printer;
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(folder.filePath(QStringLiteral("out.pdf")));
    box->setText(QStringLiteral("first second third"));
    box->find(QStringLiteral("second"));
    box->SelPrint(&printer);
    const QString printed = pdfText(printer.outputFileName());
    if (printed.isEmpty())
        QSKIP("There is no pdftotext to read the pages with.");
    QCOMPARE(printed.simplified(), QStringLiteral("second"));
    box->SelPrint(nullptr);
}

void TestRichTextBox::aLongPrintCanBeCancelled()
{
    QTemporaryDir folder;
    QPrinter printer;
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(folder.filePath(QStringLiteral("out.pdf")));
    box->setText(QStringLiteral("This is a line of a very long document.\n").repeated(100'000));
    box->show();
    QTimer press;
    int turns = 0;
    connect(&press, &QTimer::timeout, this, [&turns] {
        ++turns;
        if (auto *shown = qobject_cast<QProgressDialog *>(QApplication::activeModalWidget()))
            shown->findChild<QPushButton *>()->click();
    });
    press.start(20);
    box->SelPrint(&printer);
    QVERIFY(turns > 5);
    QVERIFY(!QFile::exists(printer.outputFileName()));
    QVERIFY(!QApplication::activeModalWidget());
    QTest::keyClicks(box.get(), QStringLiteral("x"));
    QVERIFY(box->text().startsWith(QStringLiteral("xThis")));
}

void TestRichTextBox::aCopyInPiecesIsTheSameDocument()
{
    RichTextDocument document;
    QTextCursor cursor(&document);
    QTextList *numbers = nullptr;
    for (int i = 0; i < 900; ++i) {
        QTextBlockFormat paragraph;
        paragraph.setAlignment(i % 3 == 0 ? Qt::AlignRight : Qt::AlignLeft);
        paragraph.setTextIndent(i % 5);
        QTextCharFormat mark;
        mark.setFontPointSize(8 + i % 9);
        cursor.insertBlock(paragraph, mark);
        QTextCharFormat bold;
        bold.setFontWeight(i % 2 == 0 ? QFont::Bold : QFont::Normal);
        cursor.insertText(QStringLiteral("some words ").repeated(i % 12), bold);
        if (i % 7 == 3) {
            if (numbers)
                numbers->add(cursor.block());
            else
                numbers = cursor.createList(QTextListFormat::ListDecimal);
        }
        if (i % 200 == 150) {
            QTextTable *table = cursor.insertTable(3, 2);
            table->mergeCells(0, 0, 1, 2);
            table->cellAt(1, 1).firstCursorPosition().insertText(QStringLiteral("cell\n").repeated(4000));
            cursor.movePosition(QTextCursor::End);
        }
    }
    QTextDocument copy;
    RichTextCopy pieces(QTextCursor(&document), copy);
    int steps = 1;
    while (pieces.step())
        ++steps;
    QVERIFY(steps > 3);
    QCOMPARE(pieces.progress(), 1.0);
    QCOMPARE(firstDifference(dumpOf(copy), dumpOf(document)), QString());
    const auto lastNumber = [](const QTextDocument &of) {
        QString last;
        for (QTextBlock block = of.firstBlock(); block.isValid(); block = block.next()) {
            if (block.textList())
                last = block.textList()->itemText(block);
        }
        return last;
    };
    QCOMPARE(lastNumber(copy), lastNumber(document));
    QVERIFY(lastNumber(copy).startsWith(QStringLiteral("129")));
}

QTEST_MAIN(TestRichTextBox)
#include "TestRichTextBox.moc"
