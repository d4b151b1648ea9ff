#include <QTest>
#include <QTextCursor>
#include <QTextDocument>

#include "controls/RichTextSearch.h"

using namespace vandrel;

namespace {

int last(const QTextDocument &document)
{
    return document.characterCount() - 1;
}

// Replaces every match by the plain loop and returns what the searches have read meanwhile.
qint64 costOfReplacing(int matches, int gap)
{
    QTextDocument document;
    QTextCursor cursor(&document);
    cursor.insertText((QStringLiteral("needle") + QString(gap, u'.') + u'\n').repeated(matches));
    cursor.insertText(QStringLiteral("hay\n").repeated(50'000));
    RichTextSearch search;
    int found = 0;
    while (const auto match = search.find(document, QStringLiteral("NEEDLE"), 0, last(document))) {
        cursor.setPosition(match->start);
        cursor.setPosition(match->end, QTextCursor::KeepAnchor);
        cursor.insertText(QStringLiteral("pin"));
        search.textChanged(match->start);
        ++found;
    }
    return found == matches ? search.charactersRead() : -1;
}

} // namespace

class TestRichTextSearch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void replacingAllIsLinear();
    void aChangeBeforeTheFrontierIsFound();
    void aMatchThatAChangeCompletesIsFound();
    void anotherTextIsSearchedFromTheStart();
    void longNeedlesAreFoundAcrossPieces();
    void halvesOfPairsAreNotFound();
    void limitsAreKept();
};

void TestRichTextSearch::replacingAllIsLinear()
{
    const qint64 few = costOfReplacing(500, 40);
    const qint64 many = costOfReplacing(5000, 40);
    QVERIFY(few > 0);
    QVERIFY(many > 0);
    QVERIFY2(many < 12 * few, qPrintable(QStringLiteral("%1 and %2").arg(few).arg(many)));
}

void TestRichTextSearch::aChangeBeforeTheFrontierIsFound()
{
    QTextDocument document(QStringLiteral("....................b"));
    RichTextSearch search;
    QCOMPARE(search.find(document, QStringLiteral("b"), 0, last(document))->start, 20);
    QTextCursor(&document).insertText(QStringLiteral("b"));
    search.textChanged(0);
    QCOMPARE(search.find(document, QStringLiteral("b"), 0, last(document))->start, 0);
}

void TestRichTextSearch::aMatchThatAChangeCompletesIsFound()
{
    QTextDocument document(QStringLiteral("..ab.abc"));
    RichTextSearch search;
    QCOMPARE(search.find(document, QStringLiteral("abc"), 0, last(document))->start, 5);
    QTextCursor cursor(&document);
    cursor.setPosition(4);
    cursor.insertText(QStringLiteral("c"));
    search.textChanged(4);
    QCOMPARE(search.find(document, QStringLiteral("abc"), 0, last(document))->start, 2);
}

void TestRichTextSearch::anotherTextIsSearchedFromTheStart()
{
    QTextDocument document(QStringLiteral("one two"));
    RichTextSearch search;
    QCOMPARE(search.find(document, QStringLiteral("two"), 0, last(document))->start, 4);
    QCOMPARE(search.find(document, QStringLiteral("one"), 0, last(document))->start, 0);
    QVERIFY(!search.find(document, QStringLiteral("three"), 0, last(document)));
    QVERIFY(!search.find(document, QString(), 0, last(document)));
}

void TestRichTextSearch::longNeedlesAreFoundAcrossPieces()
{
    const QString text = QStringLiteral("paragraph %1 of many\n");
    QString all;
    for (int i = 0; i < 3000; ++i)
        all += text.arg(i);
    QTextDocument document;
    QTextCursor(&document).insertText(all);
    for (const int length : {3, 255, 256, 257, 5000}) {
        for (const int start : {0, 1, 250, 300, 12'345, 40'000}) {
            RichTextSearch search;
            const QString needle = all.mid(start, length);
            const auto match = search.find(document, needle, 0, last(document));
            QVERIFY(match.has_value());
            QCOMPARE(match->start, all.indexOf(needle));
            QCOMPARE(match->end - match->start, length);
        }
    }
}

void TestRichTextSearch::halvesOfPairsAreNotFound()
{
    QTextDocument document(QStringLiteral("a\U0001F600b"));
    RichTextSearch search;
    const QString smile = QStringLiteral("\U0001F600");
    QVERIFY(!search.find(document, smile.left(1), 0, last(document)));
    QVERIFY(!search.find(document, smile.right(1), 0, last(document)));
    QCOMPARE(search.find(document, smile, 0, last(document))->start, 1);
}

void TestRichTextSearch::limitsAreKept()
{
    QTextDocument document(QStringLiteral("abc abc"));
    RichTextSearch search;
    QVERIFY(!search.find(document, QStringLiteral("abc"), 1, 6));
    QCOMPARE(search.find(document, QStringLiteral("abc"), 1, 7)->start, 4);
    QVERIFY(!search.find(document, QStringLiteral("abc"), 0, 2));
    QCOMPARE(search.find(document, QStringLiteral("abc"), 0, last(document))->start, 0);
}

QTEST_MAIN(TestRichTextSearch)
#include "TestRichTextSearch.moc"
