#include <cstddef>

#include <QSet>
#include <QStringConverter>
#include <QTest>
#include <QTextBlock>

#include "platform/richtext/FileKind.h"
#include "platform/richtext/PlainText.h"
#include "runtime/RuntimeError.h"
#include "tests/runtime/FailureOf.h"

using namespace vandrel;

namespace {

constexpr auto shownName = u"c:\\letters\\a.txt";

// The octets of a literal, NULs included, without the one that ends it.
template<std::size_t size>
QByteArray octets(const char (&text)[size])
{
    return {text, size - 1};
}

// Every block's text, joined by a bar that none of the texts holds.
QString blocksOf(const QTextDocument &document)
{
    QStringList blocks;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        blocks += block.text();
    return blocks.join(QLatin1Char('|'));
}

LoadedDocument read(const QByteArray &text)
{
    DocumentProgress progress;
    return readPlainText(text, progress);
}

QByteArray utf16(const QString &text, QStringConverter::Encoding encoding)
{
    return QStringEncoder(encoding).encode(text);
}

} // namespace

class TestPlainText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void richTextIsKnownByItsBeginning_data();
    void richTextIsKnownByItsBeginning();
    void binaryFormatsAreRefusedByName_data();
    void binaryFormatsAreRefusedByName();
    void whatIsNoKnownFormatIsText_data();
    void whatIsNoKnownFormatIsText();
    void encodingsAreTold_data();
    void encodingsAreTold();
    void everyOctetOfWesternTextIsShown();
    void lineEndsAreOneBreak_data();
    void lineEndsAreOneBreak();
    void charactersThatAreNoTextAreReplacedAndCounted();
    void aCharacterCutOffAtTheEndIsSeen_data();
    void aCharacterCutOffAtTheEndIsSeen();
    void aLongTextArrivesWholeAcrossThePieces();
    void longLinesAreNamed();
    void theDocumentIsUntouched();
    void aCancelledReadGivesNothing();
};

void TestPlainText::richTextIsKnownByItsBeginning_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<bool>("isRich");
    QTest::newRow("plain beginning") << QByteArray("{\\rtf1 a}") << true;
    QTest::newRow("capitals") << QByteArray("{\\RTF1 a}") << true;
    QTest::newRow("leading blanks") << QByteArray("\r\n \t{\\rtf1 a}") << true;
    QTest::newRow("byte order mark") << QByteArray("\xEF\xBB\xBF{\\rtf1 a}") << true;
    QTest::newRow("leading zeros") << octets("\0\0{\\rtf1 a}") << true;
    QTest::newRow("no version") << QByteArray("{\\rtf a}") << true;
    QTest::newRow("only a brace") << QByteArray("{a}") << false;
    QTest::newRow("later in the text") << QByteArray("see {\\rtf1 a}") << false;
    QTest::newRow("empty") << QByteArray() << false;
}

void TestPlainText::richTextIsKnownByItsBeginning()
{
    QFETCH(QByteArray, head);
    QFETCH(bool, isRich);
    QCOMPARE(recogniseFile(head, QString()) == FileKind::RichText, isRich);
}

void TestPlainText::binaryFormatsAreRefusedByName_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QString>("format");
    QTest::newRow("OLE") << octets("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1")
                         << QStringLiteral("binary word processor document");
    QTest::newRow("Write") << octets("\x31\xBE\0\0\0\xAB") << QStringLiteral("Write document");
    QTest::newRow("Write with objects") << octets("\x32\xBE\0\0\0\xAB") << QStringLiteral("Write document");
    QTest::newRow("zip") << octets("PK\x03\x04\x14\0") << QStringLiteral("zip archive");
    QTest::newRow("OpenDocument") << octets("PK\x03\x04\x14\0mimetypeapplication/vnd.oasis.opendocument.text")
                                  << QStringLiteral("OpenDocument");
    QTest::newRow("Office Open XML") << octets("PK\x03\x04\x14\0[Content_Types].xml")
                                     << QStringLiteral("Office Open XML");
    QTest::newRow("PDF") << QByteArray("%PDF-1.4\n") << QStringLiteral("PDF");
    QTest::newRow("gzip") << octets("\x1F\x8B\x08\0") << QStringLiteral("gzip");
    QTest::newRow("PNG") << octets("\x89PNG\r\n\x1A\n\0\0\0\x0D") << QStringLiteral("PNG");
    QTest::newRow("JPEG") << octets("\xFF\xD8\xFF\xE0\0\x10JFIF\0") << QStringLiteral("JPEG");
    QTest::newRow("program") << octets("\x7F"
                                       "ELF\x02\x01\x01\0")
                             << QStringLiteral("program");
    QTest::newRow("unknown") << octets("abc\0\0\0def\x01\x02\x03") << QStringLiteral("unknown kind");
}

void TestPlainText::binaryFormatsAreRefusedByName()
{
    QFETCH(QByteArray, head);
    QFETCH(QString, format);
    const auto failure = test::failureOf([&] { recogniseFile(head, QString::fromUtf16(shownName)); });
    QVERIFY(failure);
    QCOMPARE(failure->number(), error::InvalidFileFormat);
    QVERIFY2(failure->text().contains(format), failure->what());
    QVERIFY(failure->text().startsWith(QStringLiteral("Invalid file format. \"c:\\letters\\a.txt\" is a")));
}

void TestPlainText::whatIsNoKnownFormatIsText_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::newRow("Latin letters") << QByteArray("Gr\xFC\xDF"
                                                 "e");
    QTest::newRow("begins like a Write document") << QByteArray("1\xBE cups of flour");
    QTest::newRow("begins like an archive") << QByteArray("BZh is a prefix");
    QTest::newRow("UTF-16 with a mark") << utf16(QStringLiteral("\uFEFFabc"), QStringConverter::Utf16LE);
    QTest::newRow("UTF-16 without") << utf16(QStringLiteral("a text"), QStringConverter::Utf16LE);
    QTest::newRow("a log that a crash left zeros in") << QByteArray(1000, 'x') + QByteArray(10, '\0');
    QTest::newRow("terminal colours") << QByteArray("\x1B[1mbold\x1B[0m");
}

void TestPlainText::whatIsNoKnownFormatIsText()
{
    QFETCH(QByteArray, head);
    QCOMPARE(recogniseFile(head, QString()), FileKind::PlainText);
}

void TestPlainText::encodingsAreTold_data()
{
    const QString text = QStringLiteral("Grüße, 世界 \U0001F600");
    QTest::addColumn<QByteArray>("octets");
    QTest::addColumn<QString>("text");
    const auto marked = [&text](QStringConverter::Encoding encoding) {
        return utf16(QChar(QChar::ByteOrderMark) + text, encoding);
    };
    QTest::newRow("UTF-8") << text.toUtf8() << text;
    QTest::newRow("UTF-8 with a mark") << marked(QStringConverter::Utf8) << text;
    QTest::newRow("UTF-16, low octet first") << marked(QStringConverter::Utf16LE) << text;
    QTest::newRow("UTF-16, high octet first") << marked(QStringConverter::Utf16BE) << text;
    QTest::newRow("UTF-32, low octet first") << marked(QStringConverter::Utf32LE) << text;
    QTest::newRow("UTF-32, high octet first") << marked(QStringConverter::Utf32BE) << text;
    const QString western = QStringLiteral("a plain text");
    QTest::newRow("unmarked, low octet first") << utf16(western, QStringConverter::Utf16LE) << western;
    QTest::newRow("unmarked, high octet first") << utf16(western, QStringConverter::Utf16BE) << western;
    QTest::newRow("Western") << QByteArray("\x93Gr\xFC\xDF"
                                           "e\x94 \x80 5")
                             << QStringLiteral("“Grüße” € 5");
    QTest::newRow("overlong UTF-8 is none") << QByteArray("\xC0\xAF") << QStringLiteral("À¯");
    QTest::newRow("a lone surrogate is none") << QByteArray("\xED\xA0\x80") << QStringLiteral("í\u00A0€");
    QTest::newRow("empty") << QByteArray() << QString();
}

void TestPlainText::encodingsAreTold()
{
    QFETCH(QByteArray, octets);
    QTEST(blocksOf(*read(octets).document), "text");
}

void TestPlainText::everyOctetOfWesternTextIsShown()
{
    QByteArray all("\xFF\xFF");
    for (int octet = 0x20; octet < 0x100; ++octet)
        all += static_cast<char>(octet);
    const QString text = blocksOf(*read(all).document);
    QCOMPARE(text.size(), all.size());
    QCOMPARE(text.mid(2 + 0x5F, 3), QStringLiteral("\u007F\u20AC\u0081"));
    QVERIFY(!text.contains(QChar::ReplacementCharacter));
    QCOMPARE(QSet<QChar>(text.begin(), text.end()).size(), 0x100 - 0x20);
}

void TestPlainText::lineEndsAreOneBreak_data()
{
    QTest::addColumn<QByteArray>("octets");
    QTest::addColumn<QString>("blocks");
    QTest::newRow("CR LF") << QByteArray("a\r\nb\r\n") << QStringLiteral("a|b|");
    QTest::newRow("LF") << QByteArray("a\nb") << QStringLiteral("a|b");
    QTest::newRow("CR") << QByteArray("a\rb\r") << QStringLiteral("a|b|");
    QTest::newRow("mixed") << QByteArray("a\n\r\n\r\rb") << QStringLiteral("a||||b");
    QTest::newRow("form feed stays") << QByteArray("a\fb") << QStringLiteral("a\fb");
}

void TestPlainText::lineEndsAreOneBreak()
{
    QFETCH(QByteArray, octets);
    QTEST(blocksOf(*read(octets).document), "blocks");
}

void TestPlainText::charactersThatAreNoTextAreReplacedAndCounted()
{
    const LoadedDocument loaded = read(octets("a\0b") + QStringLiteral("\uFDD0\uFDD1\uFFFC").toUtf8());
    QCOMPARE(blocksOf(*loaded.document), QStringLiteral("a\uFFFDb\uFFFD\uFFFD\uFFFD"));
    QCOMPARE(loaded.notices.last(), QStringLiteral("4 characters that are no text are shown as \uFFFD."));
}

void TestPlainText::aCharacterCutOffAtTheEndIsSeen_data()
{
    QTest::addColumn<QByteArray>("octets");
    QTest::addColumn<QString>("text");
    QTest::newRow("UTF-16") << octets("\xFF\xFE"
                                      "a\0b")
                            << QStringLiteral("a\uFFFD");
    QTest::newRow("UTF-32") << octets("\xFF\xFE\0\0a\0\0\0b\0") << QStringLiteral("a\uFFFD");
    QTest::newRow("marked UTF-8") << octets("\xEF\xBB\xBF"
                                            "a\xE2\x82")
                                  << QStringLiteral("a\uFFFD");
    QTest::newRow("unmarked UTF-8 is Western") << octets("a\xE2\x82") << QStringLiteral("aâ‚");
}

void TestPlainText::aCharacterCutOffAtTheEndIsSeen()
{
    QFETCH(QByteArray, octets);
    QTEST(blocksOf(*read(octets).document), "text");
}

void TestPlainText::aLongTextArrivesWholeAcrossThePieces()
{
    // Lines of changing length put every kind of split at some edge of a piece.
    QString text;
    for (int line = 0; text.size() < 2'000'000; ++line)
        text += QString(line % 83, QChar(0x4E00 + line % 5000)) + QStringLiteral("\U0001F600\r\n");
    const LoadedDocument loaded = read(text.toUtf8());
    QVERIFY(blocksOf(*loaded.document) == QString(text).replace(QStringLiteral("\r\n"), QStringLiteral("|")));
    QVERIFY(blocksOf(*read(QByteArray(1'048'575, 'x') + "\r\ny").document).endsWith(QStringLiteral("x|y")));
}

void TestPlainText::longLinesAreNamed()
{
    QCOMPARE(read(QByteArray(100'000, 'x')).notices.size(), 1);
    QCOMPARE(read(QByteArray(100'001, 'x')).notices.value(1),
             QStringLiteral("1 line is longer than 100,000 characters; editing it may be slow."));
    QCOMPARE(read(QByteArray(100'001, 'x') + '\n' + QByteArray(200'001, 'y')).notices.value(1),
             QStringLiteral("2 lines are longer than 100,000 characters; editing them may be slow."));
}

void TestPlainText::theDocumentIsUntouched()
{
    const LoadedDocument loaded = read("abc");
    QCOMPARE(loaded.kind, LoadedDocument::Kind::PlainText);
    QCOMPARE(loaded.notices, QStringList{QStringLiteral("Saving turns this file into rich text.")});
    QVERIFY(!loaded.document->isModified());
    QVERIFY(loaded.document->isUndoRedoEnabled());
    QVERIFY(!loaded.document->isUndoAvailable());
}

void TestPlainText::aCancelledReadGivesNothing()
{
    DocumentProgress progress;
    progress.cancelled = true;
    QVERIFY(!readPlainText("abc", progress).document);
}

QTEST_MAIN(TestPlainText)
#include "TestPlainText.moc"
