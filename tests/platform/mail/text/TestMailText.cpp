#include <QBuffer>
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

} // namespace

// What a person gets to see of a received mail.
class TestMailText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theMainFieldsComeFirstInTheirOrder();
    void linesEndInCarriageReturnAndLineFeed();
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
    QCOMPARE(shownBody("", "one\r\ntwo\rthree\nfour"), QStringLiteral("one\ntwo\nthree\nfour\n"));
}

QTEST_GUILESS_MAIN(TestMailText)
#include "TestMailText.moc"
