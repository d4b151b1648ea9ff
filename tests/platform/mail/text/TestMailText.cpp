#include <algorithm>
#include <optional>

#include <QBuffer>
#include <QLocale>
#include <QTemporaryFile>
#include <QTest>

#include "platform/mail/text/MailText.h"

using namespace vandrel;

namespace {

ReadableMail
converted(const QByteArray &mail, const MailLimits &limits = {}, const std::stop_token &stop = {})
{
    QBuffer device;
    device.setData(mail);
    device.open(QIODevice::ReadOnly);
    return readableMail(device, stop, limits);
}

// With single line feeds, so that the expected texts stay readable.
QString shown(const QByteArray &mail, const MailLimits &limits = {})
{
    return converted(mail, limits).text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

// The body of a mail without main header fields, as shown.
QString shownBody(const QByteArray &fields, const QByteArray &body)
{
    return shown("X-Mailer: test\n" + fields + "\n" + body);
}

QString shownText(const QByteArray &charset, const QByteArray &body)
{
    return shownBody("Content-Type: text/plain; charset=" + charset + "\n", body);
}

QString shownHtml(const QByteArray &html)
{
    return shownBody("Content-Type: text/html; charset=utf-8\n", html);
}

// A multipart of the given parts, each with its header fields, a blank line and its body.
QByteArray multipart(const QByteArray &subtype, const QByteArrayList &parts, const QByteArray &boundary = "b")
{
    QByteArray mail
        = "Content-Type: multipart/" + subtype + "; boundary=\"" + boundary + "\"\n\nA preamble.\n";
    for (const QByteArray &part : parts)
        mail += "--" + boundary + "\n" + part + "\n";
    return mail + "--" + boundary + "--\nAn epilogue.\n";
}

QByteArray plainPart(const QByteArray &text)
{
    return "Content-Type: text/plain\n\n" + text;
}

QByteArray htmlPart(const QByteArray &text)
{
    return "Content-Type: text/html\n\n" + text;
}

QByteArray filePart(const QByteArray &name, const QByteArray &octets)
{
    return "Content-Type: application/pdf; name=" + name + "\nContent-Disposition: attachment; filename="
        + name + "\nContent-Transfer-Encoding: base64\n\n" + octets.toBase64();
}

} // namespace

// What a person gets to see of a received mail.
class TestMailText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theMainFieldsComeFirstInTheirOrder();
    void linesEndInCarriageReturnAndLineFeed();
    void transferEncodingsAreUndone_data();
    void transferEncodingsAreUndone();
    void characterSetsAreDecoded_data();
    void characterSetsAreDecoded();
    void charactersAreNotCutBetweenPieces();
    void harmfulCharactersAreReplaced();
    void longLinesAreBroken();
    void aLongFlowingLineIsJoined();

    void allTextsOfAMixedMailAreShownInOrder();
    void ofAlternativesThePlainOneIsShown();
    void anEmptyPlainAlternativeGivesWayToHtml();
    void filesAmongAlternativesAreListed();
    void aSignedMailShowsItsContent();
    void anEncryptedMailSaysSo();
    void anEnclosedMailIsShownWithItsFields();
    void everyMailOfADigestIsShown();
    void aReturnedMailShowsItsReport();
    void aNamedTextIsShownAndListed();
    void textsForProgramsAreListed();

    void attachmentsAreListedByNameTypeAndSize();
    void namesOfAttachmentsAreDecoded_data();
    void namesOfAttachmentsAreDecoded();
    void aLongListOfAttachmentsIsCut();

    void flowingLinesAreJoined_data();
    void flowingLinesAreJoined();

    void htmlIsShownAsText_data();
    void htmlIsShownAsText();
    void htmlNamesItsOwnCharacterSet();
    void htmlThatIsTooLargeIsCut();

    void aLongMailIsCutAndSaysSo();
    void whatIsLeftOutIsNotDecoded();
    void attachmentsInBase64AreCounted_data();
    void attachmentsInBase64AreCounted();
    void whatIsGivenUpIsNotAskedForAgain_data();
    void whatIsGivenUpIsNotAskedForAgain();
    void aStopEndsTheConversion();
    void aFileIsReadFromItsStart();
};

void TestMailText::theMainFieldsComeFirstInTheirOrder()
{
    QCOMPARE(shown("Subject: =?utf-8?q?caf=C3=A9?=\n"
                   "Received: from here\n"
                   "Date: Tue, 1 Jul 2003 10:52:37 +0200\n"
                   "Cc: c@example.org\n"
                   "To: a@example.org,\n b@example.org\n"
                   "From: Anna <anna@example.org>\n"
                   "\n"
                   "Hello\n"),
             QStringLiteral("From: Anna <anna@example.org>\n"
                            "To: a@example.org, b@example.org\n"
                            "Cc: c@example.org\n"
                            "Date: Tue, 1 Jul 2003 10:52:37 +0200\n"
                            "Subject: café\n"
                            "\n"
                            "Hello\n"));
}

void TestMailText::linesEndInCarriageReturnAndLineFeed()
{
    QCOMPARE(converted("From: a@example.org\n\none\ntwo").text,
             QStringLiteral("From: a@example.org\r\n\r\none\r\ntwo\r\n"));
    QCOMPARE(converted("X: y\n\none\r\ntwo\rthree\nfour\fsix\n\n").text,
             QStringLiteral("one\r\ntwo\r\nthree\r\nfour\r\nsix\r\n\r\n"));
}

void TestMailText::transferEncodingsAreUndone_data()
{
    QTest::addColumn<QByteArray>("encoding");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const QByteArray &encoding, const QByteArray &body,
                        const QString &text) { QTest::newRow(name) << encoding << body << text; };
    row("none", "", "a=20b\n", QStringLiteral("a=20b\n"));
    row("8bit", "8bit", "a=20b\n", QStringLiteral("a=20b\n"));
    row("unknown", "x-none", "a=20b\n", QStringLiteral("a=20b\n"));
    row("quoted-printable", "Quoted-Printable", "a=20b=\nc=3D\n", QStringLiteral("a bc=\n"));
    row("quoted-printable, wrong escapes", "quoted-printable", "a=zz=4\nb=\n", QStringLiteral("a=zz=4\nb\n"));
    row("base64", "base64", "b25lCnR3bwo=\n", QStringLiteral("one\ntwo\n"));
    row("base64 in upper case, with a comment's blanks", " BASE64 ", "b25lCnR3bwo=\n",
        QStringLiteral("one\ntwo\n"));
    row("base64 without its end", "base64", "b25lCnR3bw\n", QStringLiteral("one\ntwo\n"));
    row("base64 with stray octets", "base64", "b25l\n!\nCnR3\nbwo=\nb25lCnR3bwo\nb25lCnR3bwo\n",
        QStringLiteral("one\ntwo\n"));
    row("text called base64", "base64", "This is, after all, plain text.\n",
        QStringLiteral("This is, after all, plain text.\n"));
    row("nothing in base64", "base64", "====\n", QStringLiteral("====\n"));
    row("uuencode", "x-uuencode", "begin 644 a\n#;VYE\n`\nend\n", QStringLiteral("one\n"));
}

void TestMailText::transferEncodingsAreUndone()
{
    QFETCH(QByteArray, encoding);
    QFETCH(QByteArray, body);
    QFETCH(QString, text);
    QCOMPARE(shownBody("Content-Transfer-Encoding: " + encoding + "\n", body), text);
}

void TestMailText::characterSetsAreDecoded_data()
{
    QTest::addColumn<QByteArray>("charset");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const QByteArray &charset, const QByteArray &body,
                        const QString &text) { QTest::newRow(name) << charset << body << text; };
    row("UTF-8", "utf-8",
        "Gr\xC3\xBC\xC3\x9F"
        "e",
        QStringLiteral("Grüße\n"));
    row("UTF-8 that is not", "utf-8",
        "Gr\xFC\xDF"
        "e",
        QStringLiteral("Grüße\n"));
    row("both in one text", "utf-8", "\xC3\xBC \xFC \xE2\x82", QStringLiteral("ü ü â‚\n"));
    row("overlong and surrogate forms are none", "utf-8", "\xC0\xAF \xED\xA0\x80",
        QStringLiteral("À¯ í\u00A0€\n"));
    row("ISO-8859-1", "iso-8859-1",
        "Gr\xFC\xDF"
        "e \x80",
        QStringLiteral("Grüße €\n"));
    row("ISO-8859-15", "ISO-8859-15", "\xA4", QStringLiteral("€\n"));
    row("Windows-1251", "windows-1251", "\xCF\xF0\xE8\xE2\xE5\xF2", QStringLiteral("Привет\n"));
    row("KOI8-R", "koi8-r", "\xF0\xD2\xC9\xD7\xC5\xD4", QStringLiteral("Привет\n"));
    row("Shift_JIS", "shift_jis", "\x93\xFA\x96\x7B", QStringLiteral("日本\n"));
    row("Shift_JIS that is not", "shift_jis",
        "a\xFF"
        "b",
        QStringLiteral("a\uFFFD"
                       "b\n"));
    row("Shift_JIS cut off", "shift_jis", "a\x93", QStringLiteral("a\uFFFD\n"));
    row("ISO-2022-JP", "iso-2022-jp", "\x1B$BF|K\\\x1B(B.", QStringLiteral("日本.\n"));
    row("GB2312", "gb2312", "\xC4\xE3\xBA\xC3", QStringLiteral("你好\n"));
    row("Big5", "big5", "\xA7\x41\xA6\x6E", QStringLiteral("你好\n"));
    row("EUC-KR", "euc-kr", "\xC7\xD1", QStringLiteral("한\n"));
    row("US-ASCII that is not", "us-ascii",
        "Gr\xFC\xDF"
        "e",
        QStringLiteral("Grüße\n"));
    row("unknown", "x-nowhere",
        "Gr\xC3\xBC\xC3\x9F"
        "e",
        QStringLiteral("Grüße\n"));
    row("a converter's suffix", "\"utf-16//IGNORE\"",
        "Gr\xC3\xBC\xC3\x9F"
        "e",
        QStringLiteral("Grüße\n"));
    row("none", "",
        "\x93Gr\xFC\xDF"
        "e\x94",
        QStringLiteral("“Grüße”\n"));
    row("byte order mark", "iso-8859-1",
        "\xEF\xBB\xBFGr\xC3\xBC\xC3\x9F"
        "e",
        QStringLiteral("Grüße\n"));
}

void TestMailText::characterSetsAreDecoded()
{
    QFETCH(QByteArray, charset);
    QFETCH(QByteArray, body);
    QFETCH(QString, text);
    QCOMPARE(shownText(charset, body), text);
}

void TestMailText::charactersAreNotCutBetweenPieces()
{
    constexpr int many = 100'000;
    // An octet in front shifts the characters against the pieces that are read.
    const QString euros = QString(many, QChar(0x20AC));
    QCOMPARE(shownText("utf-8", "ab" + euros.toUtf8()).remove(u'\n'), QStringLiteral("ab") + euros);
    const QString kanji = QString(many, QChar(0x65E5));
    QCOMPARE(shownText("shift_jis", "a" + QByteArray("\x93\xFA").repeated(many)).remove(u'\n'),
             QStringLiteral("a") + kanji);
}

void TestMailText::harmfulCharactersAreReplaced()
{
    QCOMPARE(shownText("utf-8", QByteArray("a\0b\x1B[1m\x7F\tc", 10)),
             QStringLiteral("a\uFFFD"
                            "b\uFFFD[1m\uFFFD\tc\n"));
    QCOMPARE(shownText("utf-8",
                       "a\xE2\x80\xA9"
                       "b\xEF\xBF\xBC\xEF\xB7\x90"),
             QStringLiteral("a\nb\uFFFD\uFFFD\n"));
}

void TestMailText::longLinesAreBroken()
{
    MailLimits limits;
    limits.lineCharacters = 200;
    const QByteArray line(200, 'x');
    QCOMPARE(shown("X: y\n\n" + line + "\n", limits), QString::fromLatin1(line + "\n"));
    QCOMPARE(shown("X: y\n\n" + line + "y\n", limits), QString::fromLatin1(line + "\ny\n"));
    const QByteArray words = QByteArray("word ").repeated(39);
    QCOMPARE(shown("X: y\n\n" + words + "longer word\n", limits),
             QString::fromLatin1(words + "\nlonger word\n"));
    QCOMPARE(shown("Content-Type: text/html\n\n" + words + "longer <b>word</b>\n", limits),
             QString::fromLatin1(words + "\nlonger word\n"));
    const QByteArray odd = "X: y\n\n" + QByteArray(199, 'x') + QByteArray("\xF0\x9F\x98\x80").repeated(101);
    for (const QString &part : shown(odd, limits).split(u'\n'))
        QVERIFY(part.isEmpty() || !part.back().isHighSurrogate());
}

void TestMailText::aLongFlowingLineIsJoined()
{
    constexpr int many = 200'000;
    const QByteArray line(many, 'a');
    QCOMPARE(shownBody("Content-Type: text/plain; format=flowed\n", line + " \nb\n").remove(u'\n'),
             QString::fromLatin1(line + " b"));
}

void TestMailText::allTextsOfAMixedMailAreShownInOrder()
{
    QCOMPARE(shown(multipart("mixed", {plainPart("one"), htmlPart("<p>two"), "\nthree"})),
             QStringLiteral("one\n\ntwo\n\nthree\n"));
}

void TestMailText::ofAlternativesThePlainOneIsShown()
{
    QCOMPARE(shown(multipart("alternative", {plainPart("plain"), htmlPart("<p>rich")})),
             QStringLiteral("plain\n"));
    QCOMPARE(shown(multipart("alternative", {htmlPart("<p>rich"), plainPart("plain")})),
             QStringLiteral("plain\n"));
}

void TestMailText::anEmptyPlainAlternativeGivesWayToHtml()
{
    QCOMPARE(shown(multipart("alternative", {plainPart(" \n\n"), htmlPart("<p>rich")})),
             QStringLiteral("rich\n"));
    QCOMPARE(shown(multipart("alternative",
                             {plainPart(" "),
                              multipart("related", {htmlPart("<p>rich"), filePart("a.pdf", "abc")}, "c")})),
             QStringLiteral("rich\n\nAttachments:\n  a.pdf (application/pdf, 3 bytes)\n"));
}

void TestMailText::filesAmongAlternativesAreListed()
{
    const QByteArray rich = multipart("mixed", {htmlPart("<p>rich"), filePart("a.pdf", "abc")}, "c");
    QCOMPARE(
        shown(multipart("alternative", {plainPart("plain"), rich, "Content-Type: text/calendar\n\nBEGIN:"})),
        QStringLiteral("plain\n\n"
                       "Attachments:\n"
                       "  a.pdf (application/pdf, 3 bytes)\n"
                       "  unnamed (text/calendar, 6 bytes)\n"));
}

void TestMailText::aSignedMailShowsItsContent()
{
    QCOMPARE(shown(multipart(
                 "signed; protocol=\"application/pgp-signature\"",
                 {plainPart("one"), "Content-Type: application/pgp-signature; name=sign.asc\n\nabcdef"})),
             QStringLiteral("one\n\nAttachments:\n  sign.asc (application/pgp-signature, 6 bytes)\n"));
}

void TestMailText::anEncryptedMailSaysSo()
{
    QCOMPARE(shown(multipart("encrypted",
                             {"Content-Type: application/pgp-encrypted\n\nVersion: 1",
                              "Content-Type: application/octet-stream; name=a.asc\n\nabcdef"})),
             QStringLiteral("(This mail is encrypted; its text cannot be shown here.)\n\n"
                            "Attachments:\n"
                            "  unnamed (application/pgp-encrypted, 10 bytes)\n"
                            "  a.asc (application/octet-stream, 6 bytes)\n"));
    QCOMPARE(
        shownBody("Content-Type: application/pkcs7-mime; name=smime.p7m\nContent-Transfer-Encoding: base64\n",
                  "YWJj\n"),
        QStringLiteral("(A text that is encrypted, or signed in a sealed form, cannot be shown here.)\n\n"
                       "Attachments:\n  smime.p7m (application/pkcs7-mime, 3 bytes)\n"));
}

void TestMailText::anEnclosedMailIsShownWithItsFields()
{
    const QByteArray enclosed = "Content-Type: message/rfc822\n\n"
                                "From: b@example.org\nSubject: =?utf-8?q?=C3=BCber?=\n\ninner\n";
    QCOMPARE(shown("From: a@example.org\n"
                   + multipart("mixed", {plainPart("outer"), enclosed, plainPart("last")})),
             QStringLiteral("From: a@example.org\n\nouter\n\n"
                            "----- Enclosed mail -----\n\n"
                            "From: b@example.org\nSubject: über\n\ninner\n\n"
                            "----- End of enclosed mail -----\n\nlast\n"));
}

void TestMailText::everyMailOfADigestIsShown()
{
    QCOMPARE(shown(multipart("digest", {"\nSubject: one\n\n1", "\nSubject: two\n\n2"})),
             QStringLiteral(
                 "----- Enclosed mail -----\n\nSubject: one\n\n1\n\n----- End of enclosed mail -----\n\n"
                 "----- Enclosed mail -----\n\nSubject: two\n\n2\n\n----- End of enclosed mail -----\n"));
}

void TestMailText::aReturnedMailShowsItsReport()
{
    QCOMPARE(
        shown(multipart("report; report-type=delivery-status",
                        {plainPart("Sorry."), "Content-Type: message/delivery-status\n\nAction: failed\n",
                         "Content-Type: text/rfc822-headers\n\nSubject: one\n"})),
        QStringLiteral("Sorry.\n\nAction: failed\n\nSubject: one\n"));
}

void TestMailText::aNamedTextIsShownAndListed()
{
    QCOMPARE(shown(multipart("mixed", {plainPart("one"), "Content-Type: text/x-patch; name=a.diff\n\n-a"})),
             QStringLiteral("one\n\n-a\n\nAttachments:\n  a.diff (text/x-patch, 2 bytes)\n"));
    QCOMPARE(shown(multipart("mixed",
                             {plainPart("one"),
                              "Content-Type: text/plain; name=a.txt\n"
                              "Content-Disposition: attachment\n\nnot shown"})),
             QStringLiteral("one\n\nAttachments:\n  a.txt (text/plain, 9 bytes)\n"));
}

void TestMailText::textsForProgramsAreListed()
{
    QCOMPARE(shown(multipart("mixed", {plainPart("one"), "Content-Type: text/vcard; name=a.vcf\n\nBEGIN"})),
             QStringLiteral("one\n\nAttachments:\n  a.vcf (text/vcard, 5 bytes)\n"));
}

void TestMailText::attachmentsAreListedByNameTypeAndSize()
{
    constexpr int large = 3 * 1024 * 1024;
    QCOMPARE(shown(multipart("mixed",
                             {plainPart("one"), filePart("a.pdf", QByteArray(large, 'x')),
                              "Content-Type: IMAGE/png\n\nabcd", "Content-Type: application/x-empty\n\n"})),
             QStringLiteral("one\n\nAttachments:\n"
                            "  a.pdf (application/pdf, 3.0 MB)\n"
                            "  unnamed (image/png, 4 bytes)\n"
                            "  unnamed (application/x-empty, 0 bytes)\n"));
}

void TestMailText::namesOfAttachmentsAreDecoded_data()
{
    QTest::addColumn<QByteArray>("fields");
    QTest::addColumn<QString>("name");
    const auto row = [](const char *name, const QByteArray &fields, const QString &shownName) {
        QTest::newRow(name) << fields << shownName;
    };
    const QByteArray disposition = "Content-Disposition: attachment; ";
    row("file name", disposition + "filename=a.pdf", QStringLiteral("a.pdf"));
    row("quoted", disposition + "filename=\"a b.pdf\"", QStringLiteral("a b.pdf"));
    row("blanks without quotes", disposition + "filename=a b.pdf", QStringLiteral("a b.pdf"));
    row("extended", disposition + "filename*=UTF-8''Gr%C3%BC%C3%9Fe.pdf", QStringLiteral("Grüße.pdf"));
    row("extended, in pieces",
        disposition + "filename*0*=iso-8859-1'de'Gr%FC;\n filename*1*=%DFe;\n filename*2=.pdf",
        QStringLiteral("Grüße.pdf"));
    row("encoded word", disposition + "filename=\"=?utf-8?b?R3LDvMOfZS5wZGY=?=\"",
        QStringLiteral("Grüße.pdf"));
    row("raw UTF-8",
        disposition
            + "filename=\"Gr\xC3\xBC\xC3\x9F"
              "e.pdf\"",
        QStringLiteral("Grüße.pdf"));
    row("raw Windows-1252",
        disposition
            + "filename=\"Gr\xFC\xDF"
              "e.pdf\"",
        QStringLiteral("Grüße.pdf"));
    row("name of the type", "Content-Type: application/pdf; name=a.pdf", QStringLiteral("a.pdf"));
    row("both", "Content-Type: application/pdf; name=a.pdf\n" + disposition + "filename=b.pdf",
        QStringLiteral("b.pdf"));
    row("folders", disposition + "filename=\"../../etc/passwd\"", QStringLiteral("passwd"));
    row("folders in the escape", disposition + "filename*=utf-8''..%2F..%5Ca.pdf", QStringLiteral("a.pdf"));
    row("folders in the encoded word", disposition + "filename=\"=?utf-8?q?c=3A=5Ca=2Epdf?=\"",
        QStringLiteral("a.pdf"));
    row("a turned direction", disposition + "filename*=utf-8''a%E2%80%AEfdp.exe", QStringLiteral("afdp.exe"));
    row("a line break", disposition + "filename*=utf-8''a%0D%0Ab.pdf", QStringLiteral("a b.pdf"));
    row("none", disposition + "size=3", QStringLiteral("unnamed"));
}

void TestMailText::namesOfAttachmentsAreDecoded()
{
    QFETCH(QByteArray, fields);
    QFETCH(QString, name);
    const QString text
        = shown(multipart("mixed", {plainPart("one"), fields + "\nContent-Type: application/pdf\n\nx"}));
    const QString line = text.split(QLatin1Char('\n')).at(3);
    QCOMPARE(line, QStringLiteral("  %1 (application/pdf, 1 bytes)").arg(name));
}

void TestMailText::aLongListOfAttachmentsIsCut()
{
    MailLimits limits;
    limits.listed = 2;
    limits.parts = 4;
    const QByteArray file = filePart("a.pdf", "abc");
    const ReadableMail mail = converted(multipart("mixed", {file, file, file, file, file}), limits);
    QVERIFY(mail.shortened);
    QCOMPARE(mail.text,
             QStringLiteral("Attachments:\r\n"
                            "  a.pdf (application/pdf, 3 bytes)\r\n"
                            "  a.pdf (application/pdf, 3 bytes)\r\n"
                            "  and 3 more\r\n"));
}

void TestMailText::flowingLinesAreJoined_data()
{
    QTest::addColumn<QByteArray>("parameters");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const QByteArray &body, const QString &text,
                        const QByteArray &parameters = "format=flowed") {
        QTest::newRow(name) << parameters << body << text;
    };
    row("fixed", "one \ntwo\n", QStringLiteral("one \ntwo\n"), "format=fixed");
    row("flowing", "one \ntwo \nthree\nfour\n", QStringLiteral("one two three\nfour\n"));
    row("CR LF", "one \r\ntwo\r\n\r\nthree\r\n", QStringLiteral("one two\n\nthree\n"));
    row("deleted blank", "on \ne\n", QStringLiteral("one\n"), "format=flowed; delsp=yes");
    row("quotations", "> one \n> two\n>> three \n> four\n", QStringLiteral("> one two\n>> three \n> four\n"));
    row("quotation ends", "> one \ntwo\n", QStringLiteral("> one \ntwo\n"));
    row("stuffed", " > one\n From here\n", QStringLiteral("> one\nFrom here\n"));
    row("signature", "one \n-- \nme\n", QStringLiteral("one \n-- \nme\n"));
    row("quoted signature", "> one\n> -- \n> me\n", QStringLiteral("> one\n> -- \n> me\n"));
    row("the last line flows", "one ", QStringLiteral("one \n"));
}

void TestMailText::flowingLinesAreJoined()
{
    QFETCH(QByteArray, parameters);
    QFETCH(QByteArray, body);
    QFETCH(QString, text);
    QCOMPARE(shownBody("Content-Type: text/plain; " + parameters + "\n", body), text);
}

void TestMailText::htmlIsShownAsText_data()
{
    QTest::addColumn<QByteArray>("html");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const QByteArray &html, const QString &text) {
        QTest::newRow(name) << html << text;
    };
    row("paragraphs", "<html><body><p>one</p><p>two</p></body></html>", QStringLiteral("one\n\ntwo\n"));
    row("blocks", "<div>one</div><div>two</div>", QStringLiteral("one\ntwo\n"));
    row("an empty block is a blank line", "<div>one</div><div><br></div><div>two</div>",
        QStringLiteral("one\n\ntwo\n"));
    row("a filled blank line", "<div>one</div><div>&nbsp;</div><div>two</div>",
        QStringLiteral("one\n\ntwo\n"));
    row("line breaks", "one<br>two<br><br>three<br>", QStringLiteral("one\ntwo\n\nthree\n"));
    row("blanks", "  one\n two<b> three </b> four&nbsp; five", QStringLiteral("one two three four five\n"));
    row("entities", "&lt;&amp;&gt; &euro; &#8364; &#x20AC; &hellip; &nosuch; & x",
        QStringLiteral("<&> € € € … &nosuch; & x\n"));
    row("link", "see <a href='https://example.org/a?b=1&amp;c=2'>this <b>page</b></a>.",
        QStringLiteral("see this page (https://example.org/a?b=1&c=2).\n"));
    row("link that says where it leads",
        "<a href='http://www.example.org/'>www.example.org</a> <a "
        "href='mailto:a@example.org'>a@example.org</a>",
        QStringLiteral("www.example.org a@example.org\n"));
    row("link that lies", "<a href='http://evil.example/'>https://bank.example</a>",
        QStringLiteral("https://bank.example (http://evil.example/)\n"));
    row("link on a picture", "<a href='http://example.org/'><img src=x alt='Shop'></a>",
        QStringLiteral("[Shop] (http://example.org/)\n"));
    row("link on nothing", "a <a href='http://example.org/'><img src=x></a>",
        QStringLiteral("a (http://example.org/)\n"));
    row("link around a block", "<a href='http://example.org/'><p>one</p></a><p>two",
        QStringLiteral("one (http://example.org/)\n\ntwo\n"));
    row("links that lead nowhere",
        "<a href='#x'>one</a> <a href='javascript:alert(1)'>two</a> <a href=''>three</a>",
        QStringLiteral("one two three\n"));
    row("pictures", "<img src=a alt='A cat'> <img src=b> <img src=c alt=''>", QStringLiteral("[A cat]\n"));
    row("list", "one<ul><li>a</li><li><p>b</p><p>c</p></li></ul>two",
        QStringLiteral("one\n\n  * a\n  * b\n\n    c\n\ntwo\n"));
    row("numbered list", "<ol start=9><li>a<li>b<ul><li>c</ul></ol>",
        QStringLiteral("  9. a\n  10. b\n    * c\n"));
    row("table", "<table><tr><th>a</th><th>b</th></tr><tr><td><p>1</p></td><td><p>2</p></td></tr></table>end",
        QStringLiteral("a\tb\n1\t2\nend\n"));
    row("table for the layout",
        "<table><tr><td><p>a</p></td></tr><tr><td><table><tr><td>b<td>c</table></td></tr></table>",
        QStringLiteral("a\n\nb\tc\n"));
    row("quotation", "one<blockquote>two<blockquote>three</blockquote>four<br>five</blockquote>six",
        QStringLiteral("one\n> two\n> > three\n> four\n> five\nsix\n"));
    row("preformatted", "one<pre>\n  a  b\n\n   c\n</pre>two", QStringLiteral("one\n  a  b\n\n   c\ntwo\n"));
    row("rule", "one<hr>two", QStringLiteral("one\n----------\ntwo\n"));
    row("left out",
        "<head><title>t</title><style>p { x: y }</style></head><script>if (a < b) c();</script>"
        "<p style='color: red; DISPLAY: none'>hidden <b>too</b></p><!-- comment --><template>x</template>one",
        QStringLiteral("one\n"));
    row("conditions of office programs", "<!--[if mso]>a<![endif]-->b<![if !mso]>c<![endif]><o:p>d</o:p>",
        QStringLiteral("bcd\n"));
    row("unclosed", "<p>one <b>two <table><tr><td>three", QStringLiteral("one two\nthree\n"));
    row("tags that are none", "1 < 2 <3 a<b", QStringLiteral("1 < 2 <3 a\n"));
    row("NUL", QByteArray("a\0b", 3),
        QStringLiteral("a\uFFFD"
                       "b\n"));
    row("nothing but a picture", "<img src=x>", QString());
}

void TestMailText::htmlIsShownAsText()
{
    QFETCH(QByteArray, html);
    QFETCH(QString, text);
    QCOMPARE(shownHtml(html), text);
}

void TestMailText::htmlNamesItsOwnCharacterSet()
{
    const QByteArray type = "Content-Type: text/html\n";
    QCOMPARE(shownBody(type, "<meta http-equiv=Content-Type content='text/html; charset=koi8-r'>\xF0\xD2"),
             QStringLiteral("Пр\n"));
    QCOMPARE(shownBody(type, "<meta charset=\"koi8-r\">\xF0\xD2"), QStringLiteral("Пр\n"));
    QCOMPARE(shownBody(type, "<meta charset=utf-16>Gr\xFC"), QStringLiteral("Grü\n"));
    QCOMPARE(shownHtml("<meta charset=koi8-r>\xC3\xBC"), QStringLiteral("ü\n"));
}

void TestMailText::htmlThatIsTooLargeIsCut()
{
    MailLimits limits;
    limits.htmlOctets = 1000;
    const ReadableMail mail
        = converted("Content-Type: text/html\n\n" + QByteArray("<p>one</p>").repeated(1000), limits);
    QVERIFY(mail.shortened);
    QVERIFY(mail.text.startsWith(QStringLiteral("one\r\n\r\none\r\n")));
    QVERIFY(
        mail.text.endsWith(QStringLiteral("\r\n(The rest of this HTML text is too large to be shown.)\r\n")));
}

void TestMailText::aLongMailIsCutAndSaysSo()
{
    MailLimits limits;
    limits.characters = 10;
    const ReadableMail mail
        = converted(multipart("mixed", {plainPart("0123456789abcde"), filePart("a.pdf", "abc")}), limits);
    QVERIFY(mail.shortened);
    QCOMPARE(mail.text,
             QStringLiteral(
                 "0123456789\r\n\r\n"
                 "(This mail is too long to be shown whole: about 5 bytes of text are left out.)\r\n\r\n"
                 "Attachments:\r\n  a.pdf (application/pdf, 3 bytes)\r\n"));
    QVERIFY(!converted("X: y\n\n01234567", limits).shortened);
}

void TestMailText::whatIsLeftOutIsNotDecoded()
{
    MailLimits limits;
    limits.characters = 10;
    const QByteArray encoded = "Content-Type: text/plain\nContent-Transfer-Encoding: base64\n\n"
        + QByteArray(3000, 'x').toBase64();
    const QString text = converted(multipart("mixed",
                                             {plainPart("0123456789abcde"), encoded,
                                              htmlPart(QByteArray(1000, 'y')), filePart("a.pdf", "abc")}),
                                   limits)
                             .text;
    // Five characters of the first text, and the others in octets as they are in the mail.
    QVERIFY2(text.contains(
                 QStringLiteral("about %1 of text are left out.")
                     .arg(QLocale(QLocale::English)
                              .formattedDataSize(5 + 4000 + 1000, 1, QLocale::DataSizeTraditionalFormat))),
             qPrintable(text));
    QVERIFY(text.startsWith(u"0123456789\r\n\r\n("));
}

void TestMailText::attachmentsInBase64AreCounted_data()
{
    QTest::addColumn<QByteArray>("encoded");
    QTest::addColumn<QString>("size");
    const QByteArray lines = (QByteArray(57, '\xA5').toBase64() + "\r\n").repeated(53'000);
    QTest::newRow("nothing") << QByteArray() << QStringLiteral("0 bytes");
    QTest::newRow("one octet") << QByteArray("YQ==") << QStringLiteral("1 bytes");
    QTest::newRow("no padding") << QByteArray("YWI") << QStringLiteral("2 bytes");
    QTest::newRow("padding in the middle") << QByteArray("YQ==\nYWI=\nYWJj") << QStringLiteral("6 bytes");
    const QByteArray more = QByteArray("YWJj\n").repeated(100);
    QTest::newRow("a line that begins like a boundary") << "--YWJj\n" + more << QStringLiteral("303 bytes");
    QTest::newRow("foreign octets") << "YW\xFFJj\x01\r\r" + more << QStringLiteral("303 bytes");
    QTest::newRow("many lines") << lines << QStringLiteral("2.9 MB");
}

void TestMailText::attachmentsInBase64AreCounted()
{
    QFETCH(QByteArray, encoded);
    QFETCH(QString, size);
    const QByteArray part = "Content-Type: application/pdf\nContent-Transfer-Encoding: base64\n\n" + encoded;
    for (const QByteArray &mail : {multipart("mixed", {plainPart("x"), part, plainPart("y")}), part}) {
        const QString text = shown(mail);
        QVERIFY2(text.contains(QStringLiteral("  unnamed (application/pdf, %1)").arg(size)),
                 qPrintable(text));
    }
}

namespace {

// A mail that comes in pieces and keeps of them what it is told to; what it was told to give up reads as nothing.
class ForgetfulMail : public QIODevice, public MailKeeper
{
public:
    ForgetfulMail(const QByteArray &mail, qint64 piece) : m_mail(mail), m_piece(piece)
    {
        open(ReadOnly | Unbuffered);
    }

    void keepOnlyTo(qint64 offset) override { m_keptTo = offset; }
    void keepAgain() override { m_keptTo.reset(); }

    qint64 givenUp() const { return m_givenUp.count('x'); }
    bool wasAskedForMore() const { return m_wasAskedForMore; }

protected:
    qint64 readData(char *data, qint64 most) override
    {
        const qint64 from = pos();
        if (from >= m_come && !comeOn())
            return 0;
        if (m_givenUp.at(from) == 'x')
            m_wasAskedForMore = true;
        const qint64 next = m_givenUp.indexOf('x', from);
        const qint64 count = std::min(most, (next < 0 || next > m_come ? m_come : next) - from);
        std::copy_n(m_mail.constData() + from, count, data);
        return count;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    bool comeOn()
    {
        if (m_keptTo && *m_keptTo <= m_latest)
            std::fill(m_givenUp.begin() + m_latest, m_givenUp.begin() + m_come, 'x');
        m_latest = m_come;
        m_come = std::min<qint64>(m_come + m_piece, m_mail.size());
        return m_come > m_latest;
    }

    const QByteArray m_mail;
    const qint64 m_piece;
    QByteArray m_givenUp = QByteArray(m_mail.size() + 1, '.');
    qint64 m_latest = 0;
    qint64 m_come = 0;
    std::optional<qint64> m_keptTo;
    bool m_wasAskedForMore = false;
};

QByteArray withFields(const QByteArray &fields, const QByteArray &body)
{
    return fields + "\n\n" + body;
}

} // namespace

void TestMailText::whatIsGivenUpIsNotAskedForAgain_data()
{
    QTest::addColumn<QByteArray>("mail");
    QTest::addColumn<bool>("givesUp");
    const QByteArray line = "The quick brown fox. \n";
    const QByteArray octets = QByteArray("some octets").repeated(50'000);
    const QByteArray image = "Content-Type: image/png; name=a.png";
    const QByteArray encoded = "\nContent-Transfer-Encoding: base64";
    QTest::newRow("a text") << QByteArray("X: y\n\n" + line.repeated(100)) << false;
    QTest::newRow("a long text") << QByteArray("X: y\n\n" + line.repeated(50'000)) << true;
    QTest::newRow("a file") << multipart("mixed", {plainPart("x"), filePart("a.pdf", octets)}) << true;
    QTest::newRow("nothing but a file") << withFields(image + encoded, octets.toBase64()) << true;
    QTest::newRow("texts between files") << multipart(
        "mixed",
        {plainPart("one"), filePart("a.pdf", octets), plainPart("two" + line.repeated(20)),
         filePart("b.pdf", octets), htmlPart("<p>three</p>"), filePart("c.pdf", "abc"), plainPart("four")})
                                         << true;
    QTest::newRow("a file as it is") << multipart("mixed", {plainPart("x"), withFields(image, octets)})
                                     << true;
    QTest::newRow("a file that is not in base64") << multipart(
        "mixed", {plainPart("x"), withFields(image + encoded, line.repeated(30'000)), plainPart("y")})
                                                  << true;
    QTest::newRow("a file in quoted-printable") << multipart(
        "mixed",
        {withFields(image + "\nContent-Transfer-Encoding: quoted-printable", line.repeated(30'000)),
         plainPart("y")}) << false;
    QTest::newRow("a long text in base64") << multipart(
        "mixed",
        {withFields("Content-Type: text/plain" + encoded, line.repeated(80'000).toBase64()), plainPart("y")})
                                           << true;
    QTest::newRow("an enclosed mail")
        << multipart("mixed",
                     {withFields("Content-Type: message/rfc822",
                                 multipart("mixed", {plainPart("in"), filePart("d.pdf", octets)}, "c")),
                      plainPart("out")})
        << true;
}

void TestMailText::whatIsGivenUpIsNotAskedForAgain()
{
    QFETCH(QByteArray, mail);
    QFETCH(bool, givesUp);
    MailLimits limits;
    limits.characters = 20'000;
    limits.textOctets = limits.htmlOctets = 80'000;
    const QString expected = converted(mail, limits).text;
    for (const qint64 piece : {1'000, 4'096, 65'537, 300'000}) {
        ForgetfulMail forgetful(mail, piece);
        const ReadableMail read = readableMail(forgetful, {}, limits, &forgetful);
        QCOMPARE(read.text, expected);
        QVERIFY(!forgetful.wasAskedForMore());
        if (piece < 10'000)
            QCOMPARE(forgetful.givenUp() > 0, givesUp);
    }
}

void TestMailText::aStopEndsTheConversion()
{
    std::stop_source source;
    QVERIFY(!converted("X: y\n\none", {}, source.get_token()).cancelled);
    source.request_stop();
    QVERIFY(converted("X: y\n\none", {}, source.get_token()).cancelled);
}

void TestMailText::aFileIsReadFromItsStart()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    file.write("Subject: one\n\ntwo\n");
    QCOMPARE(readableMail(file).text, QStringLiteral("Subject: one\r\n\r\ntwo\r\n"));
}

QTEST_GUILESS_MAIN(TestMailText)
#include "TestMailText.moc"
