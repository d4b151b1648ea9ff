#include <cmath>
#include <cstdlib>
#include <random>

#include <QAbstractTextDocumentLayout>
#include <QImage>
#include <QPainter>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextList>
#include <QTextTable>

#include "controls/LazyTextLayout.h"
#include "controls/RichTextDocument.h"
#include "controls/RichTextObjects.h"

using namespace vandrel;

namespace {

constexpr int pageWidth = 400;
constexpr int visibleHeight = 600;

const QString words = QStringLiteral("The quick brown fox jumps over the lazy dog while twelve boxing "
                                     "wizards watch from the \U0001F600 fence ");

QTextBlockFormat mixedBlockFormat(int number)
{
    QTextBlockFormat format;
    switch (number % 9) {
    case 0:
        format.setAlignment(Qt::AlignRight);
        break;
    case 1:
        format.setAlignment(Qt::AlignHCenter);
        format.setTopMargin(7);
        format.setBottomMargin(12);
        break;
    case 2:
        format.setAlignment(Qt::AlignJustify);
        format.setLeftMargin(31);
        format.setRightMargin(17.5);
        break;
    case 3:
        format.setTextIndent(25);
        format.setBackground(Qt::yellow);
        break;
    case 4:
        format.setIndent(2);
        format.setTextIndent(-12);
        break;
    case 5:
        format.setLineHeight(150, QTextBlockFormat::ProportionalHeight);
        break;
    case 6:
        format.setLineHeight(23, QTextBlockFormat::FixedHeight);
        break;
    case 7:
        format.setLineHeight(28, QTextBlockFormat::MinimumHeight);
        break;
    default:
        format.setLayoutDirection(Qt::RightToLeft);
        format.setTextIndent(9);
    }
    return format;
}

// A document with everything that a paragraph can have.
void fill(QTextDocument &document, int paragraphs)
{
    QTextCursor cursor(&document);
    cursor.beginEditBlock();
    for (int i = 0; i < paragraphs; ++i) {
        QTextCharFormat characters;
        characters.setFontPointSize(8 + i % 7);
        characters.setFontWeight(i % 3 == 0 ? QFont::Bold : QFont::Normal);
        cursor.insertText(words.left(1 + i * 37 % words.size()).repeated(1 + i % 4), characters);
        if (i % 11 == 0) {
            QTextImageFormat picture;
            picture.setWidth(40);
            picture.setHeight(33);
            picture.setVerticalAlignment(i % 2 == 0 ? QTextCharFormat::AlignMiddle
                                                    : QTextCharFormat::AlignNormal);
            cursor.insertImage(picture);
        }
        if (i % 5 == 0)
            cursor.insertText(QStringLiteral(" tabless\u2028broken"));
        if (i % 13 == 0)
            cursor.createList(i % 2 == 0 ? QTextListFormat::ListDecimal : QTextListFormat::ListDisc);
        else
            cursor.setBlockFormat(mixedBlockFormat(i));
        cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
    }
    cursor.endEditBlock();
    document.clearUndoRedoStacks();
}

struct Pair {
    QTextDocument lazy;
    QTextDocument toolkit;

    LazyTextLayout *layout() { return static_cast<LazyTextLayout *>(lazy.documentLayout()); }
};

void setUp(QTextDocument &document)
{
    registerRichTextObjects(document);
    document.setPageSize(QSizeF(pageWidth, -1));
}

std::unique_ptr<Pair> makePair(int paragraphs)
{
    auto pair = std::make_unique<Pair>();
    fill(pair->lazy, paragraphs);
    fill(pair->toolkit, paragraphs);
    pair->lazy.setDocumentLayout(new LazyTextLayout(&pair->lazy));
    setUp(pair->lazy);
    setUp(pair->toolkit);
    return pair;
}

void compareBlocks(const QTextDocument &lazy, const QTextDocument &toolkit)
{
    QCOMPARE(lazy.blockCount(), toolkit.blockCount());
    // The second round asks when everything is laid out and nothing is an estimate any more.
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < lazy.blockCount(); ++i)
            (void)lazy.documentLayout()->blockBoundingRect(lazy.findBlockByNumber(i));
    }
    for (int i = 0; i < lazy.blockCount(); ++i) {
        const QTextBlock ours = lazy.findBlockByNumber(i);
        const QTextBlock theirs = toolkit.findBlockByNumber(i);
        const QRectF our = lazy.documentLayout()->blockBoundingRect(ours);
        const QRectF their = toolkit.documentLayout()->blockBoundingRect(theirs);
        // The empty paragraph behind a table in a cell takes no room.
        const bool isUnseen = ours.length() == 1;
        QVERIFY2(qAbs(our.top() - their.top()) <= 1 && qAbs(our.bottom() - their.bottom()) <= 1
                     && (isUnseen
                         || (qAbs(our.left() - their.left()) <= 1 && qAbs(our.right() - their.right()) <= 1)),
                 qPrintable(QStringLiteral("paragraph %1 \"%6\": %2 to %3, not %4 to %5")
                                .arg(i)
                                .arg(our.top())
                                .arg(our.bottom())
                                .arg(their.top())
                                .arg(their.bottom())
                                .arg(ours.text().left(20))));
        QCOMPARE(ours.layout()->lineCount(), theirs.layout()->lineCount());
        for (int l = 0; l < ours.layout()->lineCount(); ++l) {
            const QTextLine line = ours.layout()->lineAt(l);
            const QTextLine other = theirs.layout()->lineAt(l);
            QCOMPARE(line.textStart(), other.textStart());
            QCOMPARE(line.textLength(), other.textLength());
            QVERIFY(isUnseen || qAbs(line.x() - other.x()) <= 1);
            QVERIFY(qAbs(line.y() - other.y()) <= 1);
        }
    }
    const QSizeF size = lazy.documentLayout()->documentSize();
    const QSizeF other = toolkit.documentLayout()->documentSize();
    QVERIFY(qAbs(size.height() - other.height()) <= 1);
    QVERIFY(qAbs(size.width() - other.width()) <= 1);
}

QImage picture(const QTextDocument &document, const QRectF &part, const QTextCursor &selected = {})
{
    QImage image(part.size().toSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.translate(-part.topLeft());
    QAbstractTextDocumentLayout::PaintContext context;
    context.clip = part;
    context.cursorPosition = 3;
    if (!selected.isNull()) {
        QAbstractTextDocumentLayout::Selection selection;
        selection.cursor = selected;
        selection.format.setBackground(Qt::blue);
        selection.format.setForeground(Qt::white);
        context.selections = {selection};
    }
    document.documentLayout()->draw(&painter, context);
    return image;
}

} // namespace

class TestLazyTextLayout : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void paragraphsStandWhereTheToolkitPutsThem();
    void widthChangesAreFollowed();
    void editsAreFollowed();
    void paragraphsLookAsTheToolkitDrawsThem();
    void pointsHitTheSamePositions();
    void onlyWhatIsSeenIsLaidOut();
    void typingLaysOutNoMoreThanTheParagraph();
    void visibleTextStaysWhenEstimatesAreCorrected();
    void farLinesAreGivenBack();
    void questionsInsideAnEditBlockAreAnswered();
    void tabStopsCountFromTheMargin_data();
    void tabStopsCountFromTheMargin();
    void noFirstLineHangsOutOfSight();
    void cellsStandWhereTheToolkitPutsThem();
    void pointsInTablesHitTheirCharacters();
    void editsInTablesAreFollowed();
    void pagesDivideTextAndTables();
    void aWordWithoutEndIsBrokenAnywhere();
};

void TestLazyTextLayout::paragraphsStandWhereTheToolkitPutsThem()
{
    const auto pair = makePair(150);
    compareBlocks(pair->lazy, pair->toolkit);
}

void TestLazyTextLayout::widthChangesAreFollowed()
{
    const auto pair = makePair(40);
    compareBlocks(pair->lazy, pair->toolkit);
    for (const int width : {250, 777}) {
        pair->lazy.setPageSize(QSizeF(width, -1));
        pair->toolkit.setPageSize(QSizeF(width, -1));
        compareBlocks(pair->lazy, pair->toolkit);
    }
}

void TestLazyTextLayout::editsAreFollowed()
{
    const auto pair = makePair(30);
    std::mt19937 random(7);
    const auto edit = [](QTextDocument &document, int kind, int from, int length) {
        QTextCursor cursor(&document);
        const int last = document.characterCount() - 1;
        cursor.setPosition(from % (last + 1));
        cursor.setPosition(std::min(last, cursor.position() + length), QTextCursor::KeepAnchor);
        QTextCharFormat large;
        large.setFontPointSize(19);
        switch (kind) {
        case 0:
            cursor.insertText(QStringLiteral("one\ntwo\nthree"));
            break;
        case 1:
            cursor.removeSelectedText();
            break;
        case 2:
            cursor.mergeCharFormat(large);
            break;
        case 3:
            cursor.mergeBlockFormat(mixedBlockFormat(length));
            break;
        case 4:
            cursor.insertBlock();
            break;
        case 5:
            document.undo();
            break;
        default:
            cursor.beginEditBlock();
            cursor.insertText(QStringLiteral("x\n"));
            cursor.setPosition(0);
            cursor.insertText(QStringLiteral("y\n"));
            cursor.endEditBlock();
        }
    };
    for (int i = 0; i <= 200; ++i) {
        const int kind = static_cast<int>(random() % 7);
        const int from = static_cast<int>(random() % 100'000);
        const int length = static_cast<int>(random() % 400);
        edit(pair->lazy, kind, from, length);
        edit(pair->toolkit, kind, from, length);
        if (i % 10 == 0) {
            // After some edits of several places at once the toolkit leaves a paragraph without its lines; laying
            // out everything again is what the result is measured against.
            pair->toolkit.setPageSize(QSizeF(pageWidth + 1, -1));
            pair->toolkit.setPageSize(QSizeF(pageWidth, -1));
            compareBlocks(pair->lazy, pair->toolkit);
        }
        if (QTest::currentTestFailed())
            return;
    }
}

void TestLazyTextLayout::paragraphsLookAsTheToolkitDrawsThem()
{
    const auto pair = makePair(60);
    compareBlocks(pair->lazy, pair->toolkit);
    const QRectF part(0, 200, pageWidth, visibleHeight);
    QCOMPARE(picture(pair->lazy, part), picture(pair->toolkit, part));
    QTextCursor ours(&pair->lazy);
    QTextCursor theirs(&pair->toolkit);
    for (QTextCursor *cursor : {&ours, &theirs}) {
        cursor->setPosition(100);
        cursor->setPosition(3000, QTextCursor::KeepAnchor);
    }
    QCOMPARE(picture(pair->lazy, part, ours), picture(pair->toolkit, part, theirs));
}

// With some fonts a line of stated height reaches out of its paragraph at the top, into the one before. The toolkit
// takes the paragraph below for the one that is meant there, and this layout the one above.
static bool isAboveItsParagraph(const QTextDocument &document, int position, qreal y)
{
    const QTextBlock block = document.findBlock(position);
    return block.layout()->lineAt(0).y() < 0 && y < document.documentLayout()->blockBoundingRect(block).top();
}

// Heights are rounded to parts of a pixel, and a point right between two lines falls to either.
static bool isBetweenLines(const QTextDocument &document, const QPointF &point)
{
    constexpr QPointF little(0, 0.1);
    const QAbstractTextDocumentLayout &layout = *document.documentLayout();
    return layout.hitTest(point - little, Qt::FuzzyHit) != layout.hitTest(point + little, Qt::FuzzyHit);
}

void TestLazyTextLayout::pointsHitTheSamePositions()
{
    const auto pair = makePair(40);
    compareBlocks(pair->lazy, pair->toolkit);
    const qreal height = pair->toolkit.size().height();
    for (qreal y = -5; y < height + 30; y += 3.7) {
        for (qreal x = -3; x < pageWidth + 10; x += 23) {
            const QPointF point(x, y);
            // A point right between two letters may fall to either, as some fonts have it.
            const int ours = pair->lazy.documentLayout()->hitTest(point, Qt::FuzzyHit);
            const int theirs = pair->toolkit.documentLayout()->hitTest(point, Qt::FuzzyHit);
            if (isAboveItsParagraph(pair->toolkit, theirs, y) || isBetweenLines(pair->toolkit, point))
                continue;
            QVERIFY2(std::abs(ours - theirs) <= 1,
                     qPrintable(QStringLiteral("%1 is not %2").arg(ours).arg(theirs)));
            QCOMPARE(pair->lazy.documentLayout()->hitTest(point, Qt::ExactHit),
                     pair->toolkit.documentLayout()->hitTest(point, Qt::ExactHit));
        }
    }
}

void TestLazyTextLayout::onlyWhatIsSeenIsLaidOut()
{
    QTextDocument document;
    QTextCursor(&document).insertText(QStringLiteral("a line of text\n").repeated(20'000));
    auto *layout = new LazyTextLayout(&document);
    document.setDocumentLayout(layout);
    setUp(document);
    layout->setViewport(QRectF(0, 0, pageWidth, visibleHeight));
    (void)picture(document, QRectF(0, 0, pageWidth, visibleHeight));
    QVERIFY(layout->paragraphsLaidOut() > 10);
    QVERIFY(layout->paragraphsLaidOut() < 200);
    (void)layout->blockBoundingRect(document.lastBlock());
    QVERIFY(layout->paragraphsLaidOut() < 500);
    (void)layout->hitTest(QPointF(10, layout->documentSize().height() / 2), Qt::FuzzyHit);
    QVERIFY(layout->paragraphsLaidOut() < 800);
}

void TestLazyTextLayout::typingLaysOutNoMoreThanTheParagraph()
{
    QTextDocument document;
    QTextCursor(&document).insertText(QStringLiteral("a line of text\n").repeated(20'000));
    auto *layout = new LazyTextLayout(&document);
    document.setDocumentLayout(layout);
    setUp(document);
    (void)layout->blockBoundingRect(document.firstBlock());
    const qint64 before = layout->paragraphsLaidOut();
    QTextCursor cursor(&document);
    for (int i = 0; i < 10; ++i)
        cursor.insertText(QStringLiteral("x"));
    QCOMPARE(layout->paragraphsLaidOut(), before + 10);
}

void TestLazyTextLayout::visibleTextStaysWhenEstimatesAreCorrected()
{
    QTextDocument document;
    QTextCursor cursor(&document);
    for (int i = 0; i < 3000; ++i)
        cursor.insertText(words.repeated(i % 7) + u'\n');
    auto *layout = new LazyTextLayout(&document);
    document.setDocumentLayout(layout);
    setUp(document);
    qreal scroll = layout->documentSize().height() / 2;
    connect(layout, &LazyTextLayout::heightCorrected, this, [&](qreal y, qreal growth) {
        if (y <= scroll)
            scroll += growth;
        layout->setViewport(QRectF(0, scroll, pageWidth, visibleHeight));
    });
    layout->setViewport(QRectF(0, scroll, pageWidth, visibleHeight));
    const int seen = layout->hitTest(QPointF(0, scroll + 1), Qt::FuzzyHit);
    const QTextBlock block = document.findBlock(seen);
    const qreal offset = layout->blockBoundingRect(block).top() - scroll;
    const qreal before = layout->documentSize().height();
    QTRY_VERIFY(layout->documentSize().height() != before);
    QTRY_VERIFY(layout->isIdle());
    QCOMPARE(layout->blockBoundingRect(block).top() - scroll, offset);
}

void TestLazyTextLayout::farLinesAreGivenBack()
{
    QTextDocument document;
    QTextCursor(&document).insertText(QStringLiteral("a line of text\n").repeated(9000));
    auto *layout = new LazyTextLayout(&document);
    document.setDocumentLayout(layout);
    setUp(document);
    layout->setViewport(QRectF(0, 0, pageWidth, visibleHeight));
    for (int i = 0; i < document.blockCount(); i += 1)
        (void)layout->blockBoundingRect(document.findBlockByNumber(i));
    QCOMPARE(document.lastBlock().layout()->lineCount(), 1);
    QTRY_COMPARE(document.lastBlock().layout()->lineCount(), 0);
    QVERIFY(document.firstBlock().layout()->lineCount() > 0);
    QVERIFY(layout->blockBoundingRect(document.lastBlock()).height() > 0);
}

void TestLazyTextLayout::questionsInsideAnEditBlockAreAnswered()
{
    QTextDocument document;
    QTextCursor cursor(&document);
    cursor.insertText(QStringLiteral("a line of text\n").repeated(100));
    auto *layout = new LazyTextLayout(&document);
    document.setDocumentLayout(layout);
    setUp(document);
    cursor.beginEditBlock();
    cursor.insertText(QStringLiteral("more\nand more\n"));
    QVERIFY(layout->blockBoundingRect(document.lastBlock()).height() > 0);
    QCOMPARE(layout->hitTest(QPointF(5, 5), Qt::ExactHit), -1);
    cursor.movePosition(QTextCursor::Up);
    cursor.insertText(QStringLiteral("x"));
    cursor.endEditBlock();
    QVERIFY(layout->blockBoundingRect(document.lastBlock()).top() > 0);
}

void TestLazyTextLayout::tabStopsCountFromTheMargin_data()
{
    using Tab = QTextOption::Tab;
    QTest::addColumn<int>("left");
    QTest::addColumn<int>("first");
    QTest::addColumn<QList<Tab>>("tabs");
    QTest::addColumn<QString>("text");
    // Where each character behind a tab stands, from the margin.
    QTest::addColumn<QList<int>>("places");

    const QString two = QStringLiteral("a\tb\tc");
    QTest::newRow("half inches") << 0 << 0 << QList<Tab>() << two << QList<int>{48, 96};
    QTest::newRow("half inches of an indented paragraph")
        << 60 << 0 << QList<Tab>() << two << QList<int>{96, 144};
    QTest::newRow("own stops, then half inches")
        << 0 << 0 << QList<Tab>{Tab(70, QTextOption::LeftTab)} << two << QList<int>{70, 96};
    QTest::newRow("own stops of an indented paragraph")
        << 30 << 0 << QList<Tab>{Tab(70, QTextOption::LeftTab), Tab(200, QTextOption::LeftTab)} << two
        << QList<int>{70, 200};
    QTest::newRow("stops out of order")
        << 0 << 0 << QList<Tab>{Tab(200, QTextOption::LeftTab), Tab(70, QTextOption::LeftTab)} << two
        << QList<int>{70, 200};
    QTest::newRow("a hanging bullet") << 24 << -24 << QList<Tab>() << two << QList<int>{24, 48};
    QTest::newRow("a wide hanging indent") << 120 << -120 << QList<Tab>() << two << QList<int>{120, 144};
    QTest::newRow("a stop inside the hanging indent")
        << 120 << -120 << QList<Tab>{Tab(60, QTextOption::LeftTab)} << two << QList<int>{60, 120};
    QTest::newRow("an indented first line") << 0 << 60 << QList<Tab>() << two << QList<int>{96, 144};
    QTest::newRow("a later line of a hanging paragraph")
        << 96 << -96 << QList<Tab>() << QStringLiteral("a\u2028b\tc\td") << QList<int>{144, 192};
}

void TestLazyTextLayout::tabStopsCountFromTheMargin()
{
    QFETCH(const int, left);
    QFETCH(const int, first);
    QFETCH(const QList<QTextOption::Tab>, tabs);
    QFETCH(const QString, text);
    QFETCH(const QList<int>, places);

    for (const qreal negative : {0.0, -50.0}) {
        RichTextDocument document;
        auto *layout = new LazyTextLayout(&document);
        document.setDocumentLayout(layout);
        setUp(document);
        QTextCursor cursor(&document);
        QTextBlockFormat format;
        format.setLeftMargin(left);
        format.setTextIndent(first);
        format.setTabPositions(tabs);
        cursor.insertBlock(format);
        cursor.insertText(text);
        // Where another paragraph moves the margin in, the stops move with it.
        QTextBlockFormat hanging;
        hanging.setTextIndent(negative);
        cursor.insertBlock(hanging);
        const QTextBlock block = document.firstBlock().next();
        const qreal margin = layout->blockBoundingRect(block).left();
        QCOMPARE(margin, document.documentMargin() - negative);
        qsizetype place = 0;
        for (int at = 0; at < text.size(); ++at) {
            if (at == 0 || text[at - 1] != u'\t')
                continue;
            const QTextLine line = block.layout()->lineForTextPosition(at);
            QVERIFY(place < places.size());
            QVERIFY2(qAbs(line.cursorToX(at) - places[place]) < 1,
                     qPrintable(QStringLiteral("%1 is at %2").arg(text[at]).arg(line.cursorToX(at))));
            ++place;
        }
        QCOMPARE(place, places.size());
    }
}

void TestLazyTextLayout::noFirstLineHangsOutOfSight()
{
    RichTextDocument document;
    auto *layout = new LazyTextLayout(&document);
    document.setDocumentLayout(layout);
    setUp(document);
    QTextCursor cursor(&document);
    cursor.insertText(QStringLiteral("an ordinary paragraph"));
    const auto lineLeft = [&](const QTextBlock &block) {
        return layout->blockBoundingRect(block).left() + block.layout()->lineAt(0).x();
    };
    const qreal margin = lineLeft(document.firstBlock());
    QTextBlockFormat hanging;
    hanging.setTextIndent(-18.9);
    cursor.insertBlock(hanging);
    cursor.insertText(QStringLiteral("a paragraph that hangs out"));
    QVERIFY(qAbs(lineLeft(document.lastBlock()) - margin) < 0.1);
    QVERIFY(qAbs(lineLeft(document.firstBlock()) - margin - 18.9) < 0.1);
    // What would leave no room for the text is cut down.
    hanging.setTextIndent(-30'000);
    cursor.setBlockFormat(hanging);
    QCOMPARE(lineLeft(document.lastBlock()), margin);
    QVERIFY(lineLeft(document.firstBlock()) < pageWidth / 2 + margin);
}

namespace {

QTextTableFormat rowsFormat(const QList<int> &widths)
{
    QTextTableFormat format;
    QList<QTextLength> columns;
    for (const int width : widths)
        columns.append(QTextLength(QTextLength::FixedLength, width));
    format.setColumnWidthConstraints(columns);
    format.setCellSpacing(0);
    format.setCellPadding(4);
    format.setBorder(0);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_None);
    return format;
}

// Text, a table with spans, alignments and a table in a cell, text, a table at the end.
void fillWithTables(QTextDocument &document)
{
    QTextCursor cursor(&document);
    cursor.insertText(QStringLiteral("Text above the table"));
    QTextTable *table = cursor.insertTable(5, 3, rowsFormat({120, 100, 140}));
    table->mergeCells(0, 0, 1, 2);
    table->mergeCells(2, 2, 3, 1);
    for (int cell = 0; cell < 15; ++cell) {
        QTextCursor inside = table->cellAt(cell / 3, cell % 3).firstCursorPosition();
        inside.insertText(words.left(10 + cell * 17 % words.size()));
        if (cell % 4 == 1) {
            inside.insertBlock(mixedBlockFormat(cell % 8 + 4));
            inside.insertText(QStringLiteral("a second paragraph"));
        }
    }
    QTextTableCell low = table->cellAt(3, 1);
    QTextCharFormat bottom = low.format();
    bottom.setVerticalAlignment(QTextCharFormat::AlignBottom);
    bottom.setBackground(Qt::yellow);
    low.setFormat(bottom);
    QTextCursor nested = table->cellAt(4, 1).lastCursorPosition();
    QTextTable *inner = nested.insertTable(2, 2, rowsFormat({40, 45}));
    inner->cellAt(0, 0).firstCursorPosition().insertText(QStringLiteral("a b"));
    inner->cellAt(1, 1).firstCursorPosition().insertText(QStringLiteral("c d"));
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(words);
    cursor.insertTable(2, 2, rowsFormat({100, 200}));
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(QStringLiteral("Text below the table"));
    document.clearUndoRedoStacks();
}

std::unique_ptr<Pair> makeTables()
{
    auto pair = std::make_unique<Pair>();
    fillWithTables(pair->lazy);
    fillWithTables(pair->toolkit);
    pair->lazy.setDocumentLayout(new LazyTextLayout(&pair->lazy));
    setUp(pair->lazy);
    setUp(pair->toolkit);
    return pair;
}

} // namespace

void TestLazyTextLayout::cellsStandWhereTheToolkitPutsThem()
{
    const auto pair = makeTables();
    compareBlocks(pair->lazy, pair->toolkit);
}

void TestLazyTextLayout::pointsInTablesHitTheirCharacters()
{
    const auto pair = makeTables();
    compareBlocks(pair->lazy, pair->toolkit);
    int compared = 0;
    for (int i = 0; i < pair->lazy.blockCount(); ++i) {
        const QTextBlock block = pair->lazy.findBlockByNumber(i);
        const QRectF rect = pair->lazy.documentLayout()->blockBoundingRect(block);
        for (int l = 0; l < block.layout()->lineCount(); ++l) {
            const QTextLine line = block.layout()->lineAt(l);
            for (int at = line.textStart(); at < line.textStart() + line.textLength(); ++at, ++compared) {
                const QPointF point
                    = rect.topLeft() + QPointF(line.cursorToX(at) + 1, line.y() + line.height() / 2);
                const int ours = pair->lazy.documentLayout()->hitTest(point, Qt::FuzzyHit);
                QVERIFY2(std::abs(ours - block.position() - at) <= 1,
                         qPrintable(QStringLiteral("%1 is not %2, \"%3\" at %4,%5")
                                        .arg(ours)
                                        .arg(block.position() + at)
                                        .arg(block.text())
                                        .arg(point.x())
                                        .arg(point.y())));
            }
        }
    }
    QVERIFY(compared > 500);
}

void TestLazyTextLayout::editsInTablesAreFollowed()
{
    const auto pair = makeTables();
    std::mt19937 random(11);
    for (int i = 0; i < 150; ++i) {
        const int kind = static_cast<int>(random() % 6);
        const int from = static_cast<int>(random() % 100'000);
        for (QTextDocument *document : {&pair->lazy, &pair->toolkit}) {
            QTextCursor cursor(document);
            cursor.setPosition(from % document->characterCount());
            QTextTable *table = cursor.currentTable();
            if (kind == 0)
                cursor.insertText(QStringLiteral("some more words "));
            else if (kind == 1)
                cursor.deletePreviousChar();
            else if (kind == 2)
                cursor.insertBlock();
            else if (kind == 3)
                document->undo();
            else if (kind == 4 && table && table->rows() < 12)
                table->insertRows(table->cellAt(cursor).row(), 1);
            else if (kind == 5 && table && table->rows() > 2)
                table->removeRows(table->cellAt(cursor).row(), 1);
        }
        QTextDocument *fresh = pair->toolkit.clone(this);
        const std::unique_ptr<QTextDocument> owner(fresh);
        fresh->setDocumentLayout(new LazyTextLayout(fresh));
        setUp(*fresh);
        compareBlocks(pair->lazy, *fresh);
        if (QTest::currentTestFailed())
            return;
    }
}

void TestLazyTextLayout::pagesDivideTextAndTables()
{
    constexpr qreal pageHeight = 300;
    QTextDocument document;
    QTextCursor cursor(&document);
    for (int i = 0; i < 8; ++i)
        cursor.insertText(words + u'\n');
    QTextTableFormat format = rowsFormat({100, 100});
    format.setHeaderRowCount(1);
    QTextTable *table = cursor.insertTable(30, 2, format);
    for (int row = 0; row < 30; ++row)
        table->cellAt(row, 1).firstCursorPosition().insertText(QStringLiteral("one\ntwo"));
    QTextBlockFormat broken;
    broken.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    cursor.movePosition(QTextCursor::End);
    cursor.insertBlock(broken);
    cursor.insertText(QStringLiteral("on a page of its own"));
    QTextFrameFormat frame = document.rootFrame()->frameFormat();
    frame.setMargin(20);
    document.rootFrame()->setFrameFormat(frame);
    auto *layout = new LazyTextLayout(&document);
    document.setDocumentLayout(layout);
    document.setPageSize(QSizeF(pageWidth, pageHeight));
    int page = 0;
    for (; !layout->isMeasured() || page < layout->pageCount(); ++page)
        (void)picture(document, QRectF(0, page * pageHeight, pageWidth, pageHeight));
    QCOMPARE(layout->pageCount(), page);
    QVERIFY(page > 5);
    const auto pageOf = [&](const QTextBlock &block, qreal at) {
        const qreal y = layout->blockBoundingRect(block).top() + at;
        const qreal inside = y - std::floor(y / pageHeight) * pageHeight;
        return inside >= 19.5 && inside <= 280.5 ? static_cast<int>(y / pageHeight) : -1;
    };
    for (QTextBlock block = document.firstBlock(); block.isValid(); block = block.next()) {
        for (int l = 0; l < block.layout()->lineCount(); ++l) {
            const QTextLine line = block.layout()->lineAt(l);
            QVERIFY(pageOf(block, line.y()) >= 0);
            QCOMPARE(pageOf(block, line.y()), pageOf(block, line.y() + line.height() - 1));
        }
    }
    int rowsBehindHeads = 0;
    for (int row = 1; row < 30; ++row) {
        const QTextTableCell cell = table->cellAt(row, 1);
        const QTextBlock first = cell.firstCursorPosition().block();
        // A row stays on one page, and a head stands above the first of each.
        QCOMPARE(pageOf(first, 0), pageOf(cell.lastCursorPosition().block(), 0));
        const QTextBlock above = table->cellAt(row - 1, 1).firstCursorPosition().block();
        if (pageOf(first, 0) == pageOf(above, 0))
            continue;
        ++rowsBehindHeads;
        const qreal y = layout->blockBoundingRect(first).top();
        QVERIFY(y - std::floor(y / pageHeight) * pageHeight > 20 + 2 * 12);
    }
    QVERIFY(rowsBehindHeads >= 3);
    const QRectF last = layout->blockBoundingRect(document.lastBlock());
    QCOMPARE(last.top(), (page - 1) * pageHeight + 20);
}

void TestLazyTextLayout::aWordWithoutEndIsBrokenAnywhere()
{
    constexpr int letters = 200'000;
    QTextDocument document;
    QTextCursor cursor(&document);
    cursor.insertText(QStringLiteral("x").repeated(letters));
    cursor.insertBlock();
    cursor.insertText(words.repeated(100));
    auto *layout = new LazyTextLayout(&document);
    document.setDocumentLayout(layout);
    setUp(document);
    const QTextBlock endless = document.firstBlock();
    QVERIFY(layout->blockBoundingRect(endless).width() <= pageWidth);
    QCOMPARE(endless.layout()->textOption().wrapMode(), QTextOption::WrapAnywhere);
    int broken = 0;
    for (int i = 0; i < endless.layout()->lineCount(); ++i)
        broken += endless.layout()->lineAt(i).textLength();
    QCOMPARE(broken, letters);
    // Long paragraphs of ordinary words are broken between them.
    (void)layout->blockBoundingRect(document.lastBlock());
    QCOMPARE(document.lastBlock().layout()->textOption().wrapMode(), document.defaultTextOption().wrapMode());
}

QTEST_MAIN(TestLazyTextLayout)
#include "TestLazyTextLayout.moc"
