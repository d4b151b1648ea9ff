// The text box of several lines: what it takes for its text, and how it bears paragraphs without end.

#include <algorithm>
#include <memory>

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTextBlock>
#include <QtTest>

#include "controls/TextBox.h"

using namespace vandrel;
using namespace Qt::StringLiterals;

namespace {

constexpr int longestPiece = 8192;

// Words of several lengths.
QString paragraph(qsizetype characters)
{
    QString text;
    for (int i = 0; text.size() < characters; ++i)
        text += QString::number(i) + (i % 7 == 0 ? u" a "_s : u" word "_s);
    return text.first(characters);
}

int longestBlock(const TextBox &box)
{
    int longest = 0;
    for (QTextBlock block = box.document()->begin(); block.isValid(); block = block.next())
        longest = std::max(longest, block.length() - 1);
    return longest;
}

void moveTo(TextBox &box, int position, int anchor = -1)
{
    QTextCursor caret = box.textCursor();
    caret.setPosition(anchor < 0 ? position : anchor);
    caret.setPosition(position, QTextCursor::KeepAnchor);
    box.setTextCursor(caret);
}

// The start of the document's second piece.
int firstDivision(const TextBox &box)
{
    return box.document()->findBlockByNumber(1).position();
}

} // namespace

class TestTextBox : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void lineBreaksAreCrLf();
    void changeIsRaisedOnceForEachOperation();
    void aLongParagraphIsKeptAsItIs_data();
    void aLongParagraphIsKeptAsItIs();
    void piecesAreShort_data();
    void piecesAreShort();
    void usualTextIsNotDivided();
    void typingIntoALongParagraph_data();
    void typingIntoALongParagraph();
    void keysDeleteTextAndNotDivisions();
    void enterAtADivision_data();
    void enterAtADivision();
    void aCopyKnowsNothingOfDivisions();
    void cutAndPasteGiveTheSameText();
    void undoingAndRedoingKeepTheText();
    void oneKeyIsUndoneWithItsDivision_data();
    void oneKeyIsUndoneWithItsDivision();
    void oneDeletedLetterIsUndoneWithItsJoin();
    void whatBecomesShortIsOneParagraphAgain();
    void typingOnAndOnDivides();
    void anotherTextForgetsTheDivisions();
    void appendingToALongParagraph();
    void changesOfManyKindsAgreeWithASimpleModel_data();
    void changesOfManyKindsAgreeWithASimpleModel();

private:
    std::unique_ptr<TextBox> m_box;
    std::unique_ptr<QSignalSpy> m_changes;
};

void TestTextBox::init()
{
    m_box = std::make_unique<TextBox>();
    m_box->resize(400, 300);
    m_box->show();
    m_changes = std::make_unique<QSignalSpy>(m_box.get(), &TextBox::Change);
}

void TestTextBox::lineBreaksAreCrLf()
{
    m_box->setText(u"one\ntwo\rthree\r\n\u00A0four"_s);
    QCOMPARE(m_box->text(), u"one\r\ntwo\r\nthree\r\n\u00A0four"_s);
    QTest::keyClick(m_box.get(), Qt::Key_Return, Qt::ShiftModifier);
    QCOMPARE(m_box->text(), u"\r\none\r\ntwo\r\nthree\r\n\u00A0four"_s);
}

void TestTextBox::changeIsRaisedOnceForEachOperation()
{
    m_box->setText(paragraph(100'000));
    QCOMPARE(m_changes->size(), 1);
    QTest::keyClicks(m_box.get(), u"ab"_s);
    QCOMPARE(m_changes->size(), 3);
    QApplication::clipboard()->setText(paragraph(30'000));
    m_box->paste();
    QCOMPARE(m_changes->size(), 4);
    m_box->undo();
    QCOMPARE(m_changes->size(), 5);
}

void TestTextBox::aLongParagraphIsKeptAsItIs_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("words") << paragraph(1'000'000);
    QTest::newRow("one word") << QString(300'000, u'x');
    QTest::newRow("pairs of surrogates") << u"\U0001F600"_s.repeated(20'000) + u'.';
    QTest::newRow("a letter with marks without end") << u"a"_s + QString(30'000, QChar(0x0301));
    QTest::newRow("between short ones") << u"short\r\n"_s + paragraph(20'000) + u"\r\n\r\nshort"_s;
    QTest::newRow("several") << paragraph(20'000) + u"\r\n"_s + paragraph(9'000) + u"\r\n"_s;
}

void TestTextBox::aLongParagraphIsKeptAsItIs()
{
    QFETCH(QString, text);
    m_box->setText(text);
    QVERIFY(m_box->text() == text);
    QVERIFY(!m_box->document()->isUndoAvailable());
    QCOMPARE(m_box->textCursor().position(), 0);
    m_box->selectAll();
    QApplication::clipboard()->setText(text);
    m_box->paste();
    QVERIFY(m_box->text() == text);
}

void TestTextBox::piecesAreShort_data()
{
    aLongParagraphIsKeptAsItIs_data();
}

void TestTextBox::piecesAreShort()
{
    QFETCH(QString, text);
    m_box->setText(text);
    QVERIFY(longestBlock(*m_box) <= longestPiece);
    for (QTextBlock block = m_box->document()->begin(); block.isValid(); block = block.next())
        QVERIFY(block.text().isEmpty() || !block.text().front().isLowSurrogate());
}

void TestTextBox::usualTextIsNotDivided()
{
    const QString text = paragraph(longestPiece) + u"\r\n"_s + paragraph(longestPiece);
    m_box->setText(text);
    QCOMPARE(m_box->blockCount(), 2);
    QVERIFY(m_box->text() == text);
}

void TestTextBox::typingIntoALongParagraph_data()
{
    QTest::addColumn<int>("place");
    QTest::newRow("at its beginning") << 0;
    QTest::newRow("before a division") << 1;
    QTest::newRow("behind a division") << 2;
    QTest::newRow("at its end") << 3;
}

void TestTextBox::typingIntoALongParagraph()
{
    QFETCH(int, place);
    const QString text = paragraph(50'000);
    m_box->setText(text);
    const int division = firstDivision(*m_box);
    const int end = m_box->document()->characterCount() - 1;
    const QList<int> positions{0, division - 1, division, end};
    const QList<qsizetype> places{0, division - 1, division - 1, text.size()};
    moveTo(*m_box, positions.at(place));
    QTest::keyClicks(m_box.get(), u"xyz"_s);
    QVERIFY(m_box->text() == QString(text).insert(places.at(place), u"xyz"_s));
}

void TestTextBox::keysDeleteTextAndNotDivisions()
{
    const QString text = paragraph(50'000);
    m_box->setText(text);
    const int division = firstDivision(*m_box);
    moveTo(*m_box, division);
    QTest::keyClick(m_box.get(), Qt::Key_Backspace);
    QVERIFY(m_box->text() == QString(text).remove(division - 2, 1));
    m_box->setText(text);
    moveTo(*m_box, division - 1);
    QTest::keyClick(m_box.get(), Qt::Key_Delete);
    QVERIFY(m_box->text() == QString(text).remove(division - 1, 1));
}

void TestTextBox::enterAtADivision_data()
{
    QTest::addColumn<int>("back");
    QTest::newRow("before it") << 1;
    QTest::newRow("behind it") << 0;
}

void TestTextBox::enterAtADivision()
{
    QFETCH(int, back);
    const QString text = paragraph(50'000);
    m_box->setText(text);
    const int division = firstDivision(*m_box);
    moveTo(*m_box, division - back);
    QTest::keyClick(m_box.get(), Qt::Key_Return);
    QTest::keyClick(m_box.get(), Qt::Key_Return);
    QVERIFY(m_box->text() == QString(text).insert(division - 1, u"\r\n\r\n"_s));
    QTest::keyClick(m_box.get(), Qt::Key_Backspace);
    QTest::keyClick(m_box.get(), Qt::Key_Backspace);
    QVERIFY(m_box->text() == text);
}

void TestTextBox::aCopyKnowsNothingOfDivisions()
{
    const QString text = u"first\r\n"_s + paragraph(50'000);
    m_box->setText(text);
    m_box->selectAll();
    m_box->copy();
    QVERIFY(QApplication::clipboard()->text() == QString(text).replace(u"\r\n"_s, u"\n"_s));
    QVERIFY(!QApplication::clipboard()->mimeData()->hasHtml());
}

void TestTextBox::cutAndPasteGiveTheSameText()
{
    const QString text = paragraph(50'000);
    m_box->setText(text);
    moveTo(*m_box, 30'000, 1'000);
    m_box->cut();
    QVERIFY(m_box->text().size() < text.size());
    m_box->paste();
    QVERIFY(m_box->text() == text);
    QVERIFY(longestBlock(*m_box) <= longestPiece);
}

void TestTextBox::undoingAndRedoingKeepTheText()
{
    const QString text = u"one\r\n"_s + paragraph(20'000) + u"\r\ntwo"_s;
    QApplication::clipboard()->setText(text);
    m_box->paste();
    moveTo(*m_box, firstDivision(*m_box) + 5'000);
    QTest::keyClick(m_box.get(), Qt::Key_Return);
    QTest::keyClicks(m_box.get(), u"abc"_s);
    const QString changed = m_box->text();
    while (m_box->document()->isUndoAvailable())
        m_box->undo();
    QCOMPARE(m_box->text(), QString());
    while (m_box->document()->isRedoAvailable())
        m_box->redo();
    QVERIFY(m_box->text() == changed);
}

void TestTextBox::oneKeyIsUndoneWithItsDivision_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("place");
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<int>("blocksBefore");
    QTest::addColumn<int>("blocksAfter");
    const QString two = paragraph(5'000) + u"\r\n"_s + paragraph(5'000);
    QTest::newRow("typing past the limit") << paragraph(longestPiece) << longestPiece << Qt::Key_A << 1 << 2;
    QTest::newRow("typing past it in the middle") << paragraph(longestPiece) << 100 << Qt::Key_A << 1 << 2;
    QTest::newRow("joining two paragraphs") << two << 5'001 << Qt::Key_Backspace << 2 << 2;
    QTest::newRow("joining them from the other side") << two << 5'000 << Qt::Key_Delete << 2 << 2;
}

void TestTextBox::oneKeyIsUndoneWithItsDivision()
{
    QFETCH(QString, text);
    QFETCH(int, place);
    QFETCH(Qt::Key, key);
    QFETCH(int, blocksBefore);
    QFETCH(int, blocksAfter);
    m_box->setText(text);
    QCOMPARE(m_box->blockCount(), blocksBefore);
    moveTo(*m_box, place);
    QTest::keyClick(m_box.get(), key);
    const QString changed = m_box->text();
    QVERIFY(changed != text);
    QCOMPARE(m_box->blockCount(), blocksAfter);
    QTest::keyClick(m_box.get(), Qt::Key_Z, Qt::ControlModifier);
    QVERIFY(m_box->text() == text);
    m_box->redo();
    QVERIFY(m_box->text() == changed);
    QVERIFY(longestBlock(*m_box) <= longestPiece);
}

void TestTextBox::oneDeletedLetterIsUndoneWithItsJoin()
{
    constexpr int longestJoined = 6144;
    m_box->setText(paragraph(9'000));
    moveTo(*m_box, 9'001, longestJoined + 2);
    QTest::keyClick(m_box.get(), Qt::Key_Delete);
    QCOMPARE(m_box->text().size(), longestJoined + 1);
    QCOMPARE(m_box->blockCount(), 2);
    QTest::keyClick(m_box.get(), Qt::Key_Backspace);
    QCOMPARE(m_box->blockCount(), 1);
    QTest::keyClick(m_box.get(), Qt::Key_Z, Qt::ControlModifier);
    QVERIFY(m_box->text() == paragraph(longestJoined + 1));
}

void TestTextBox::whatBecomesShortIsOneParagraphAgain()
{
    m_box->setText(paragraph(20'000));
    QVERIFY(m_box->blockCount() > 1);
    const int end = m_box->document()->characterCount() - 1;
    moveTo(*m_box, end - 200, 200);
    QTest::keyClick(m_box.get(), Qt::Key_Delete);
    QCOMPARE(m_box->blockCount(), 1);
    QCOMPARE(m_box->text().size(), 400);
}

void TestTextBox::typingOnAndOnDivides()
{
    m_box->setText(paragraph(longestPiece - 1));
    moveTo(*m_box, longestPiece - 1);
    QTest::keyClicks(m_box.get(), u"ab"_s);
    QCOMPARE(m_box->blockCount(), 2);
    QVERIFY(m_box->text() == paragraph(longestPiece - 1) + u"ab"_s);
    // The division goes when the keys that made it are undone.
    while (m_box->document()->isUndoAvailable())
        m_box->undo();
    QCOMPARE(m_box->blockCount(), 1);
    QVERIFY(m_box->text() == paragraph(longestPiece - 1));
}

void TestTextBox::anotherTextForgetsTheDivisions()
{
    m_box->setText(paragraph(50'000));
    m_box->setText(u"a\nb"_s);
    QCOMPARE(m_box->text(), u"a\r\nb"_s);
    m_box->clear();
    QCOMPARE(m_box->text(), QString());
    QTest::keyClicks(m_box.get(), u"c"_s);
    QTest::keyClick(m_box.get(), Qt::Key_Return);
    QCOMPARE(m_box->text(), u"c\r\n"_s);
}

void TestTextBox::appendingToALongParagraph()
{
    const QString text = paragraph(50'000);
    m_box->setText(text);
    m_box->append(text);
    m_box->append(u"\r\nend"_s);
    QVERIFY(m_box->text() == text + text + u"\r\nend"_s);
    QVERIFY(longestBlock(*m_box) <= longestPiece);
}

void TestTextBox::changesOfManyKindsAgreeWithASimpleModel_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 4; ++seed)
        QTest::addRow("%u", seed) << seed;
}

namespace {

// Does something to the box and the same to the text.
class RandomChange
{
public:
    RandomChange(TextBox &box, QString &model, QRandomGenerator &random)
        : m_box(box), m_model(model), m_random(random)
    { }

    void make()
    {
        select();
        switch (m_random.bounded(6)) {
        case 0:
            paste(paragraph(m_random.bounded(1, 30'000)));
            break;
        case 1:
            paste(u"x\n\ny"_s + paragraph(m_random.bounded(1, 12'000)) + u'\n');
            break;
        case 2:
            QTest::keyClick(&m_box, Qt::Key_Return);
            replace(u"\r\n"_s);
            break;
        case 3:
            deleteBy(Qt::Key_Delete);
            break;
        case 4:
            deleteBy(Qt::Key_Backspace);
            break;
        default:
            QTest::keyClicks(&m_box, u"q"_s);
            replace(u"q"_s);
        }
    }

private:
    // Places near paragraph ends and divisions are where things go wrong.
    int place()
    {
        const int blocks = m_box.blockCount();
        const QTextBlock block = m_box.document()->findBlockByNumber(m_random.bounded(blocks));
        const int within
            = m_random.bounded(4) == 0 ? m_random.bounded(block.length()) : m_random.bounded(3) - 1;
        return std::clamp(block.position() + within, 0, m_box.document()->characterCount() - 1);
    }

    void select()
    {
        const int caret = place();
        moveTo(m_box, caret, m_random.bounded(2) == 0 ? place() : caret);
        QTextCursor all = m_box.textCursor();
        m_begin = textBefore(all.selectionStart());
        m_end = textBefore(all.selectionEnd());
    }

    // Counted from the text itself: what a copy of everything before the place holds.
    qsizetype textBefore(int position)
    {
        const QTextCursor kept = m_box.textCursor();
        moveTo(m_box, position, 0);
        m_box.copy();
        const QString copied = position == 0 ? QString() : QApplication::clipboard()->text();
        m_box.setTextCursor(kept);
        return copied.size() + copied.count(u'\n');
    }

    void paste(const QString &text)
    {
        QApplication::clipboard()->setText(text);
        m_box.paste();
        replace(QString(text).replace(u'\n', u"\r\n"_s));
    }

    void deleteBy(Qt::Key key)
    {
        QTest::keyClick(&m_box, key);
        if (m_begin == m_end)
            selectNeighbour(key == Qt::Key_Delete);
        replace(QString());
    }

    // Line breaks count as one character.
    void selectNeighbour(bool isBehind)
    {
        if (isBehind && m_end < m_model.size())
            m_end += m_model.at(m_end) == u'\r' ? 2 : 1;
        else if (!isBehind && m_begin > 0)
            m_begin -= m_model.at(m_begin - 1) == u'\n' ? 2 : 1;
    }

    void replace(const QString &text) { m_model.replace(m_begin, m_end - m_begin, text); }

    TextBox &m_box;
    QString &m_model;
    QRandomGenerator &m_random;
    qsizetype m_begin = 0;
    qsizetype m_end = 0;
};

} // namespace

void TestTextBox::changesOfManyKindsAgreeWithASimpleModel()
{
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    QString model;
    RandomChange change(*m_box, model, random);
    for (int i = 0; i < 60; ++i) {
        change.make();
        QVERIFY2(m_box->text() == model, qPrintable(u"after change %1"_s.arg(i)));
        QVERIFY(longestBlock(*m_box) <= longestPiece);
    }
    while (m_box->document()->isUndoAvailable())
        m_box->undo();
    QCOMPARE(m_box->text(), QString());
    while (m_box->document()->isRedoAvailable())
        m_box->redo();
    QVERIFY(m_box->text() == model);
}

QTEST_MAIN(TestTextBox)
#include "TestTextBox.moc"
