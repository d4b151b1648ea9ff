#include <QTest>

#include "platform/mail/text/MailText.h"

using namespace vandrel;

// The header fields of a mail as a list of mails, and the first lines of a mail's text, show them.
class TestMailHeaders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void subjectsAreDecoded_data();
    void subjectsAreDecoded();
    void sendersAreDecoded_data();
    void sendersAreDecoded();
    void datesAreShownAsGiven();
    void foldedFieldsAreJoined();
    void namesOfFieldsMatchInAnyCase();
    void aFieldStatedTwiceCountsOnce();
    void whatFollowsTheHeaderIsNotPartOfIt();
    void linesEndInAnyFashion_data();
    void linesEndInAnyFashion();
    void aMailboxLineIsSkipped();
    void longFieldsAreCut();
    void hugeFieldsAreBounded();
};

namespace {

QString subjectOf(const QByteArray &headers)
{
    return mailSummary(headers).subject;
}

QByteArray subject(const QByteArray &value)
{
    return "Subject: " + value + "\r\n";
}

} // namespace

void TestMailHeaders::subjectsAreDecoded_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *name, const QByteArray &field, const QString &shown) {
        QTest::newRow(name) << field << shown;
    };
    row("plain", "Meeting at noon", QStringLiteral("Meeting at noon"));
    row("quoted-printable word", "=?iso-8859-1?Q?Gr=FC=DFe_aus_K=F6ln?=", QStringLiteral("Grüße aus Köln"));
    row("base64 word", "=?UTF-8?B?R3LDvMOfZQ==?=", QStringLiteral("Grüße"));
    row("blanks between words go", "=?utf-8?q?a?= =?utf-8?q?b?=", QStringLiteral("ab"));
    row("a word among text", "Re: =?utf-8?q?caf=C3=A9?= menu", QStringLiteral("Re: café menu"));
    row("a character cut in two words", "=?utf-8?b?R3LD?= =?utf-8?b?vMOfZQ==?=", QStringLiteral("Grüße"));
    row("a language", "=?utf-8*de?q?Stra=C3=9Fe?=", QStringLiteral("Straße"));
    row("Japanese", "=?ISO-2022-JP?B?GyRCRnxLXDhsGyhC?=", QStringLiteral("日本語"));
    row("Russian", "=?koi8-r?B?8NLJ18XU?=", QStringLiteral("Привет"));
    row("Chinese", "=?gb2312?B?xOO6ww==?=", QStringLiteral("你好"));
    row("ISO-8859-1 is taken as its Windows twin", "=?iso-8859-1?Q?=93x=94_=80?=", QStringLiteral("“x” €"));
    row("raw UTF-8",
        "Gr\xC3\xBC\xC3\x9F"
        "e",
        QStringLiteral("Grüße"));
    row("raw Windows-1252",
        "Gr\xFC\xDF"
        "e \x93x\x94",
        QStringLiteral("Grüße “x”"));
    row("unfinished word", "=?utf-8?q?abc", QStringLiteral("=?utf-8?q?abc"));
    row("control characters", QByteArray("a\0b\x01\x1B[31mc", 10), QStringLiteral("a b[31mc"));
    row("encoded line break", "=?utf-8?q?a=0D=0ABcc:_x?=", QStringLiteral("a Bcc: x"));
    row("directions turned", "=?utf-8?q?abc=E2=80=AEfdp.exe=E2=81=A6?=", QStringLiteral("abcfdp.exe"));
    row("nothing", "", QString());
}

void TestMailHeaders::subjectsAreDecoded()
{
    QFETCH(QByteArray, field);
    QFETCH(QString, shown);
    QCOMPARE(subjectOf(subject(field)), shown);
}

void TestMailHeaders::sendersAreDecoded_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *name, const QByteArray &field, const QString &shown) {
        QTest::newRow(name) << field << shown;
    };
    row("address", "anna@example.org", QStringLiteral("anna@example.org"));
    row("name and address", "Anna Berg <anna@example.org>", QStringLiteral("Anna Berg <anna@example.org>"));
    row("encoded name", "=?utf-8?q?J=C3=BCrgen?= <j@example.org>", QStringLiteral("Jürgen <j@example.org>"));
    row("quoted name", "\"Berg, Anna\" <anna@example.org>",
        QStringLiteral("\"Berg, Anna\" <anna@example.org>"));
    row("raw name", "J\xFCrgen <j@example.org>", QStringLiteral("Jürgen <j@example.org>"));
    row("an address hidden in a name", "=?utf-8?q?boss=40example=2Eorg?= <other@example.net>",
        QStringLiteral("\"boss@example.org\" <other@example.net>"));
    row("no address at all", "nobody in particular", QStringLiteral("nobody in particular"));
    row("group", "undisclosed-recipients:;", QStringLiteral("undisclosed-recipients: ;"));
}

void TestMailHeaders::sendersAreDecoded()
{
    QFETCH(QByteArray, field);
    QFETCH(QString, shown);
    QCOMPARE(mailSummary("From: " + field + "\r\n").from, shown);
}

void TestMailHeaders::datesAreShownAsGiven()
{
    QCOMPARE(mailSummary("Date: Tue,  1 Jul 2003 10:52:37 +0200\r\n").date,
             QStringLiteral("Tue, 1 Jul 2003 10:52:37 +0200"));
}

void TestMailHeaders::foldedFieldsAreJoined()
{
    QCOMPARE(subjectOf("Subject: one\r\n two\r\n\tthree\r\n"), QStringLiteral("one two three"));
    QCOMPARE(subjectOf("Subject:\r\n one\r\n"), QStringLiteral("one"));
}

void TestMailHeaders::namesOfFieldsMatchInAnyCase()
{
    QCOMPARE(subjectOf("SUBJECT : one\r\n"), QStringLiteral("one"));
}

void TestMailHeaders::aFieldStatedTwiceCountsOnce()
{
    QCOMPARE(subjectOf("Subject: one\r\nSubject: two\r\n"), QStringLiteral("one"));
}

void TestMailHeaders::whatFollowsTheHeaderIsNotPartOfIt()
{
    QCOMPARE(subjectOf("From: a@example.org\r\n\r\nSubject: one\r\n"), QString());
    QCOMPARE(subjectOf("From: a@example.org\r\nHello there\r\nSubject: one\r\n"), QString());
}

void TestMailHeaders::linesEndInAnyFashion_data()
{
    QTest::addColumn<QByteArray>("lineBreak");
    QTest::newRow("CR LF") << QByteArray("\r\n");
    QTest::newRow("LF") << QByteArray("\n");
    QTest::newRow("CR") << QByteArray("\r");
    QTest::newRow("CR CR LF") << QByteArray("\r\r\n");
}

void TestMailHeaders::linesEndInAnyFashion()
{
    QFETCH(QByteArray, lineBreak);
    const QByteArray headers = "From: a@example.org\r\nSubject: one\r\n two\r\nX: y\r\n";
    const MailSummary summary = mailSummary(QByteArray(headers).replace("\r\n", lineBreak));
    QCOMPARE(summary.from, QStringLiteral("a@example.org"));
    QCOMPARE(summary.subject, QStringLiteral("one two"));
}

void TestMailHeaders::aMailboxLineIsSkipped()
{
    QCOMPARE(subjectOf("From a@example.org Tue Jul  1 10:52:37 2003\nSubject: one\n"), QStringLiteral("one"));
}

void TestMailHeaders::longFieldsAreCut()
{
    MailLimits limits;
    limits.fieldCharacters = 10;
    QCOMPARE(mailSummary("Subject: 0123456789\r\n", limits).subject, QStringLiteral("0123456789"));
    QCOMPARE(mailSummary("Subject: 0123456789a\r\n", limits).subject, QStringLiteral("0123456789…"));
    QCOMPARE(mailSummary("Subject: 012345678\xF0\x9F\x98\x80 more\r\n", limits).subject,
             QStringLiteral("012345678…"));
}

void TestMailHeaders::hugeFieldsAreBounded()
{
    constexpr int million = 1'000'000;
    const MailLimits limits;
    QCOMPARE(subjectOf("Subject: " + QByteArray(10 * million, 'a') + "\r\nX: y\r\n").size(),
             limits.fieldCharacters + 1);
    QCOMPARE(mailSummary("From: " + QByteArray("(").repeated(million) + "\r\nSubject: b\r\n").subject,
             QStringLiteral("b"));
    QCOMPARE(subjectOf(QByteArray("X: y\r\n").repeated(million) + "Subject: b\r\n"), QStringLiteral("b"));
}

QTEST_GUILESS_MAIN(TestMailHeaders)
#include "TestMailHeaders.moc"
