#include <QBuffer>
#include <QTest>

#include "platform/mail/text/MailText.h"

using namespace vandrel;

namespace {

constexpr int many = 200'000;
constexpr int million = 1'000'000;

ReadableMail converted(const QByteArray &mail)
{
    QBuffer device;
    device.setData(mail);
    device.open(QIODevice::ReadOnly);
    return readableMail(device);
}

QString shown(const QByteArray &mail)
{
    return converted(mail).text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

// A nest of multiparts around a text.
QByteArray nested(int depth)
{
    QByteArray mail;
    for (int i = 0; i < depth; ++i) {
        const QByteArray boundary = "b" + QByteArray::number(i);
        mail += "Content-Type: multipart/mixed; boundary=" + boundary + "\n\n--" + boundary + "\n";
    }
    return mail + "\ninnermost\n";
}

QByteArray html(const QByteArray &text)
{
    return "Content-Type: text/html; charset=utf-8\n\n" + text;
}

} // namespace

// Broken and malicious mails: each is shown as far as possible, in bounded time and memory.
class TestMailTextHostile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void brokenMailsAreShownAsFarAsPossible_data();
    void brokenMailsAreShownAsFarAsPossible();
    void hugeMailsAreBounded_data();
    void hugeMailsAreBounded();
    void anyBeginningOfAMailIsShown();
};

void TestMailTextHostile::brokenMailsAreShownAsFarAsPossible_data()
{
    QTest::addColumn<QByteArray>("mail");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const QByteArray &mail, const QString &text) {
        QTest::newRow(name) << mail << text;
    };
    const QByteArray mixed = "Subject: s\nContent-Type: multipart/mixed; boundary=b\n\n";
    row("empty", "", QString());
    row("a line break", "\n", QString());
    row("no header", "Hello there,\nthis is it.\n", QStringLiteral("Hello there,\nthis is it.\n"));
    row("no header, after a blank line", "\nHello: there\n", QStringLiteral("Hello: there\n"));
    row("header only", "Subject: s", QStringLiteral("Subject: s\n\n"));
    row("no blank line", "Subject: s\nHello there\n", QStringLiteral("Subject: s\n\nHello there\n"));
    row("mailbox line", "From a@example.org Tue Jul  1 10:52:37 2003\nSubject: s\n\nx\n",
        QStringLiteral("Subject: s\n\nx\n"));
    row("bare CR", "Subject: s\rX: y\r\ra\rb\r", QStringLiteral("Subject: s\n\na\nb\n"));
    row("CR CR LF", "Subject: s\r\r\nX: y\r\r\n\r\r\na\r\r\nb\r\r\n", QStringLiteral("Subject: s\n\na\nb\n"));
    row("NULs", QByteArray("Sub\0ject: s\nSubject: a\0b\n\nc\0d", 29),
        QStringLiteral("Sub\uFFFDject: s\nSubject: a\uFFFD"
                       "b\n\nc\uFFFDd\n"));
    row("NULs in values", QByteArray("Subject: a\0b\n\nc\0d", 17),
        QStringLiteral("Subject: a b\n\nc\uFFFDd\n"));
    row("no closing boundary", mixed + "--b\n\none\n--b\n\ntwo\n",
        QStringLiteral("Subject: s\n\none\n\ntwo\n"));
    row("no boundary at all", mixed + "one\ntwo\n", QStringLiteral("Subject: s\n\none\ntwo\n"));
    row("no boundary stated", "Content-Type: multipart/mixed\n\n--x1\n\none\n--x1\n\ntwo\n--x1--\n",
        QStringLiteral("one\n\ntwo\n"));
    row("no boundary stated, none there", "Content-Type: multipart/mixed\n\none\n-- \nme\n",
        QStringLiteral("one\n-- \nme\n"));
    row("boundary with blanks after it", mixed + "--b  \n\none\n--b-- \t\ntwo\n",
        QStringLiteral("Subject: s\n\none\n"));
    row("boundary that begins like another",
        "Content-Type: multipart/mixed; boundary=b\n\n--b\nContent-Type: multipart/mixed; boundary=bb\n\n"
        "--bb\n\none\n--bb--\n--b\n\ntwo\n--bbb\nthree\n--b--\n",
        QStringLiteral("one\n\ntwo\n--bbb\nthree\n"));
    row("boundary used twice",
        "Content-Type: multipart/mixed; boundary=b\n\n--b\nContent-Type: multipart/mixed; boundary=b\n\n"
        "--b\n\none\n--b--\n--b\n\ntwo\n--b--\n",
        QStringLiteral("one\n\ntwo\n"));
    row("inner multipart not closed",
        "Content-Type: multipart/mixed; boundary=b\n\n--b\nContent-Type: multipart/mixed; boundary=c\n\n"
        "--c\n\none\n--b\n\ntwo\n--b--\n",
        QStringLiteral("one\n\ntwo\n"));
    row("boundary within a header", mixed + "--b\nContent-Type: text/plain\n--b\n\ntwo\n--b--\n",
        QStringLiteral("Subject: s\n\ntwo\n"));
    row("enclosed mail without anything", mixed + "--b\nContent-Type: message/rfc822\n--b--\n",
        QStringLiteral("Subject: s\n\n----- Enclosed mail -----\n\n----- End of enclosed mail -----\n"));
    row("enclosed mail in base64",
        mixed + "--b\nContent-Type: message/rfc822\nContent-Transfer-Encoding: base64\n\nYWJj\n",
        QStringLiteral("Subject: s\n\nAttachments:\n  unnamed (message/rfc822, 3 bytes)\n"));
    row("type that is none", "Content-Type: text\n\nx\n", QStringLiteral("x\n"));
    row("type of nonsense", "Content-Type: ;;;===\n\nx\n", QStringLiteral("x\n"));
    row("not closed comment", "Content-Type: text/plain (abc\n\nx\n", QStringLiteral("x\n"));
    row("harmful type", mixed + "--b\nContent-Type: image/x\xE2\x80\xAE\x1B[1mgif\n\nx\n",
        QStringLiteral("Subject: s\n\nAttachments:\n  unnamed (image/x, 2 bytes)\n"));
}

void TestMailTextHostile::brokenMailsAreShownAsFarAsPossible()
{
    QFETCH(QByteArray, mail);
    QFETCH(QString, text);
    QCOMPARE(shown(mail), text);
}

void TestMailTextHostile::hugeMailsAreBounded_data()
{
    QTest::addColumn<QByteArray>("mail");
    QTest::addColumn<QString>("end");
    QTest::addColumn<qsizetype>("atMost");
    const auto row = [](const char *name, const QByteArray &mail, const QString &end, qsizetype atMost) {
        QTest::newRow(name) << mail << end << atMost;
    };
    const QByteArray mixed = "Content-Type: multipart/mixed; boundary=b\n\n";
    row("line", "X: y\n\n" + QByteArray(10 * million, 'x') + "\nend",
        QStringLiteral("about 5.5 MB of text are left out.)\r\n"), 5 * million);
    row("field", "Subject: " + QByteArray(10 * million, 'x') + "\n\nend",
        QStringLiteral("xxx\u2026\r\n\r\nend\r\n"), 5000);
    row("fields", QByteArray("X: y\n").repeated(many) + "\nend", QStringLiteral("end\r\n"), 10);
    row("recipients", "To: " + QByteArray("a,").repeated(many) + "\n\nend",
        QStringLiteral("\u2026\r\n\r\nend\r\n"), 5000);
    row("addresses", "To: " + QByteArray("a@b.org, ").repeated(many) + "\n\nend",
        QStringLiteral("\u2026\r\n\r\nend\r\n"), 5000);
    row("parameters", "Content-Type: text/plain" + QByteArray("; a*1=b").repeated(many) + "\n\nend",
        QStringLiteral("end\r\n"), 10);
    row("parts", mixed + QByteArray("--b\n\nx\n").repeated(many),
        QStringLiteral("Attachments:\r\n  and 190,001 more\r\n"), 100'000);
    row("nested parts", nested(1000), QStringLiteral("nested too deeply to be shown)\r\n"), 200);
    row("nested mails", QByteArray("Content-Type: message/rfc822\n\n").repeated(100'000) + "end",
        QStringLiteral("nested too deeply to be shown)\r\n"), 5000);
    row("nested elements", html(QByteArray("<div>").repeated(many) + "end"),
        QStringLiteral("(The rest of this HTML text is too large to be shown.)\r\n"), 200);
    row("elements that were never opened",
        html(QByteArray("<div>").repeated(5000) + QByteArray("</a>").repeated(50'000)), QString(), 10);
    row("attribute", html("<a href='" + QByteArray(5 * million, 'x') + "'>end</a>"),
        QStringLiteral("end\r\n"), 10);
    row("link", html("<a href='http://" + QByteArray(million, 'x') + "'>end</a>"),
        QStringLiteral("xxx\u2026)\r\n"), 3000);
    row("comment", html("<!--" + QByteArray(5 * million, '-')), QString(), 10);
    row("quotations", html(QByteArray("<blockquote>x").repeated(1000)), QStringLiteral("> > x\r\n"), 100'000);
    row("reference", html("&#" + QByteArray(million, '9') + ";end"), QStringLiteral("end\r\n"), 2 * million);
    row("quotation marks", "Content-Type: text/plain; format=flowed\n\n" + QByteArray(million, '>'),
        QStringLiteral(">\r\n"), 2 * million);
    row("escapes of a character set",
        "Content-Type: text/plain; charset=iso-2022-jp\n\n" + QByteArray("\x1B$B").repeated(many)
            + "\x1B(Bend",
        QStringLiteral("end\r\n"), 10);
}

void TestMailTextHostile::hugeMailsAreBounded()
{
    QFETCH(QByteArray, mail);
    QFETCH(QString, end);
    QFETCH(qsizetype, atMost);
    const QString text = converted(mail).text;
    QVERIFY2(text.endsWith(end), qPrintable(text.right(100)));
    QVERIFY2(text.size() <= atMost, qPrintable(QString::number(text.size())));
}

void TestMailTextHostile::anyBeginningOfAMailIsShown()
{
    const QByteArray mail
        = "From: =?utf-8?q?J=C3=BC?= <j@example.org>\r\n"
          "Content-Type: multipart/mixed; boundary=\"b\"\r\n\r\n"
          "--b\r\nContent-Type: text/html\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\n"
          "<p>a=3Db <a href=\"http://example.org/\">c</a> &euro;</p>\r\n"
          "--b\r\nContent-Type: message/rfc822\r\n\r\nSubject: inner\r\n\r\ninner\r\n"
          "--b\r\nContent-Type: a/b; name*=utf-8''%C3%BC\r\nContent-Transfer-Encoding: base64\r\n\r\n"
          "YWJj\r\n--b--\r\n";
    for (qsizetype size = 0; size <= mail.size(); ++size) {
        const QString text = converted(mail.first(size)).text;
        QVERIFY2(text.isEmpty() || text.endsWith(QStringLiteral("\r\n")), qPrintable(text));
    }
}

QTEST_GUILESS_MAIN(TestMailTextHostile)
#include "TestMailTextHostile.moc"
