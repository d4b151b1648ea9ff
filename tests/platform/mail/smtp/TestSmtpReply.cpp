#include <QTest>

#include "platform/mail/smtp/MailExchangers.h"
#include "platform/mail/smtp/MessageFeed.h"
#include "platform/mail/smtp/SmtpLogin.h"
#include "platform/mail/smtp/SmtpReply.h"

using namespace vandrel;

namespace {

using State = SmtpReplyReader::State;

// The state after the last of the lines.
State read(SmtpReplyReader &reader, const QByteArrayList &lines)
{
    State state = State::Complete;
    for (const QByteArray &line : lines)
        state = reader.take(line);
    return state;
}

SmtpReply replyOf(const QByteArrayList &lines)
{
    SmtpReplyReader reader;
    return read(reader, lines) == State::Complete ? reader.reply() : SmtpReply();
}

} // namespace

// The small parts of the dialogue: replies, services, logins, dots, the order of mail exchangers.
class TestSmtpReply : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void replies();
    void repliesFollowEachOther();
    void brokenReplies_data();
    void brokenReplies();
    void repliesAreBounded();
    void wordsAreReadable();
    void services();
    void loginsAreChosen();
    void loginAnswers();
    void loginsAreHidden();
    void dotsAreDoubled_data();
    void dotsAreDoubled();
    void exchangersAreOrdered();
};

void TestSmtpReply::replies()
{
    QCOMPARE(replyOf({"250 ok"}).code, 250);
    QCOMPARE(replyOf({"250 ok"}).words(), u"250 ok"_qs);
    QCOMPARE(replyOf({"250"}).words(), u"250"_qs);
    QCOMPARE(replyOf({"250-first", "250-", "250 last"}).words(), u"250 first last"_qs);
    QCOMPARE(replyOf({"354 go"}).kind(), 3);
    QCOMPARE(replyOf({"599 x"}).kind(), 5);
    SmtpReplyReader reader;
    QCOMPARE(read(reader, {"250-more"}), State::More);
}

void TestSmtpReply::repliesFollowEachOther()
{
    SmtpReplyReader reader;
    QCOMPARE(read(reader, {"220-a", "220 b"}), State::Complete);
    QCOMPARE(read(reader, {"550 c"}), State::Complete);
    QCOMPARE(reader.reply().words(), u"550 c"_qs);
}

void TestSmtpReply::brokenReplies_data()
{
    QTest::addColumn<QByteArrayList>("lines");
    for (const char *const line : {"", "2", "25", "hello", "099 x", "199 x", "600 x", "2x0 ok", "25a ok",
                                   "250ok", "250+ok", " 250 ok", "-250 ok", "\xff\xfe\x00"})
        QTest::newRow(line[0] ? line : "nothing") << QByteArrayList{line};
    QTest::newRow("codes change") << QByteArrayList{"250-a", "251 b"};
    QTest::newRow("no code within") << QByteArrayList{"250-a", "b", "250 c"};
}

void TestSmtpReply::brokenReplies()
{
    QFETCH(QByteArrayList, lines);
    SmtpReplyReader reader;
    QCOMPARE(read(reader, lines), State::Broken);
    QCOMPARE(reader.take("250 ok"), State::Broken);
}

void TestSmtpReply::repliesAreBounded()
{
    SmtpReplyReader lines;
    for (int i = 0; i < SmtpReplyReader::mostLines; ++i)
        QCOMPARE(lines.take("250-x"), State::More);
    QCOMPARE(lines.take("250 x"), State::Broken);
    SmtpReplyReader octets;
    const QByteArray line = "250-" + QByteArray(16'000, 'x');
    QCOMPARE(read(octets, {line, line, line, line}), State::More);
    QCOMPARE(octets.take(line), State::Broken);
}

void TestSmtpReply::wordsAreReadable()
{
    QCOMPARE(replyOf({"550 caf\xc3\xa9"}).words(), u"550 café"_qs);
    QCOMPARE(replyOf({"550 caf\xe9"}).words(), u"550 café"_qs);
    QCOMPARE(replyOf({QByteArray("550 a\x1b[31m\x07\tb\0c", 15)}).words(), u"550 a [31m  b c"_qs);
    QVERIFY(replyOf({"550 " + QByteArray(10'000, 'x')}).words().size() < 1100);
}

void TestSmtpReply::services()
{
    const SmtpServices services = SmtpServices::of(
        replyOf({"250-STARTTLS is my name", "250-size 1000", "250-8BitMime", "250-SMTPUTF8",
                 "250-AUTH plain Login", "250-AUTH=CRAM-MD5", "250 STARTTLS"}));
    QVERIFY(services.startTls && services.eightBitMime && services.smtpUtf8 && services.size);
    QCOMPARE(services.logins, (QByteArrayList{"PLAIN", "LOGIN", "CRAM-MD5"}));
    QCOMPARE(services.largestMessage.value_or(0), 1000);
    // The first line only greets.
    QVERIFY(!SmtpServices::of(replyOf({"250-STARTTLS", "250 HELP"})).startTls);
    for (const char *const size :
         {"250 SIZE", "250 SIZE 0", "250 SIZE -1", "250 SIZE x", "250 SIZE 99999999999999999999"}) {
        const SmtpServices found = SmtpServices::of(replyOf({"250-x", size}));
        QVERIFY(found.size);
        QVERIFY(!found.largestMessage);
    }
}

void TestSmtpReply::loginsAreChosen()
{
    SmtpLogin login(u"me"_qs, u"secret"_qs);
    QVERIFY(login.choose({"CRAM-MD5", "LOGIN", "PLAIN"}, true));
    QVERIFY(login.command().startsWith("AUTH PLAIN "));
    QVERIFY(login.choose({"CRAM-MD5", "LOGIN"}, true));
    QCOMPARE(login.command(), QByteArray("AUTH LOGIN"));
    QVERIFY(login.choose({"CRAM-MD5", "LOGIN", "PLAIN"}, false));
    QCOMPARE(login.command(), QByteArray("AUTH CRAM-MD5"));
    QVERIFY(!login.choose({"LOGIN", "PLAIN"}, false));
    QVERIFY(!login.choose({"GSSAPI", "XOAUTH2"}, true));
}

void TestSmtpReply::loginAnswers()
{
    SmtpLogin login(u"tim"_qs, u"tanstaaftanstaaf"_qs);
    QVERIFY(login.choose({"PLAIN"}, true));
    QCOMPARE(login.command(), "AUTH PLAIN " + QByteArray("\0tim\0tanstaaftanstaaf", 21).toBase64());
    QVERIFY(!login.answer({}));
    QVERIFY(login.choose({"LOGIN"}, true));
    QCOMPARE(login.answer("VXNlcm5hbWU6").value_or(""), QByteArray("tim").toBase64());
    QCOMPARE(login.answer("UGFzc3dvcmQ6").value_or(""), QByteArray("tanstaaftanstaaf").toBase64());
    QVERIFY(!login.answer("bW9yZQ=="));
    // The example of RFC 2195.
    QVERIFY(login.choose({"CRAM-MD5"}, true));
    QCOMPARE(login.answer("PDE4OTYuNjk3MTcwOTUyQHBvc3RvZmZpY2UucmVzdG9uLm1jaS5uZXQ+").value_or(""),
             QByteArray("dGltIGI5MTNhNjAyYzdlZGE3YTQ5NWI0ZTZlNzMzNGQzODkw"));
    QVERIFY(!login.answer({}));
}

void TestSmtpReply::loginsAreHidden()
{
    const SmtpLogin login(u"ann"_qs, u"pass.word"_qs);
    QCOMPARE(login.withoutLogin(u"Hello ann, your pass.word is known; annual passXword"_qs),
             u"Hello ***, your *** is known; annual passXword"_qs);
    QCOMPARE(login.withoutLogin(u"xpass.wordx"_qs), u"x***x"_qs);
    const QString encoded = QString::fromLatin1(QByteArray("pass.word").toBase64());
    QVERIFY(!login.withoutLogin(u"bad "_qs + encoded).contains(encoded));
    QCOMPARE(SmtpLogin({}, {}).withoutLogin(u"nothing to hide"_qs), u"nothing to hide"_qs);
    QCOMPARE(SmtpLogin(u"a"_qs, u"b"_qs).withoutLogin(u"a b ab ba"_qs), u"*** *** ab ba"_qs);
}

void TestSmtpReply::dotsAreDoubled_data()
{
    QTest::addColumn<QByteArrayList>("blocks");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("none") << QByteArrayList{"a\r\nb.\r\n"} << QByteArray("a\r\nb.\r\n");
    QTest::newRow("first") << QByteArrayList{".a\r\n"} << QByteArray("..a\r\n");
    QTest::newRow("lines") << QByteArrayList{"a\r\n.\r\n..\r\n.b"} << QByteArray("a\r\n..\r\n...\r\n..b");
    QTest::newRow("between blocks") << QByteArrayList{"a\r\n", ".b\r\n"} << QByteArray("a\r\n..b\r\n");
    QTest::newRow("not between blocks") << QByteArrayList{"a", ".b\r\n"} << QByteArray("a.b\r\n");
    QTest::newRow("line end in another block") << QByteArrayList{"a\r", "\n", ".b"} << QByteArray("a\r\n..b");
    QTest::newRow("empty block") << QByteArrayList{"a\r\n", "", "."} << QByteArray("a\r\n..");
}

void TestSmtpReply::dotsAreDoubled()
{
    QFETCH(QByteArrayList, blocks);
    QFETCH(QByteArray, expected);
    DotStuffing dots;
    QByteArray result;
    for (const QByteArray &block : blocks)
        result += dots.stuffed(block);
    QCOMPARE(result, expected);
}

void TestSmtpReply::exchangersAreOrdered()
{
    const auto backwards
        = [](std::vector<MailExchanger> &exchangers) { std::reverse(exchangers.begin(), exchangers.end()); };
    const std::vector<MailExchanger> exchangers{{u"c"_qs, 20}, {u"a"_qs, 5},   {u"d"_qs, 20},
                                                {u"b"_qs, 10}, {QString(), 0}, {u"a"_qs, 30}};
    QCOMPARE(hostsInOrder(exchangers, backwards), (std::vector<QString>{u"a"_qs, u"b"_qs, u"d"_qs, u"c"_qs}));
    std::vector<MailExchanger> many;
    for (int i = 0; i < 100; ++i)
        many.push_back({QString::number(i), 100 - i});
    const auto hosts = hostsInOrder(many, [](std::vector<MailExchanger> &) {});
    QCOMPARE(hosts.size(), std::size_t(10));
    QCOMPARE(hosts.front(), u"99"_qs);
}

QTEST_GUILESS_MAIN(TestSmtpReply)

#include "TestSmtpReply.moc"
