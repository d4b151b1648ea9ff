#include <limits>

#include <QTest>
#include <QThread>

#include "platform/mail/pop/MailSpool.h"
#include "platform/mail/pop/PopLogin.h"
#include "platform/mail/pop/PopMessageReader.h"
#include "platform/mail/pop/PopReply.h"

using namespace vandrel;

namespace {

struct ReadMessage {
    QByteArray message;
    QByteArray rest;
    bool ended = false;
};

// Reads `octets` in pieces of `size`.
ReadMessage readInPieces(const QByteArray &octets, qsizetype size, bool strict)
{
    PopMessageReader reader(strict);
    ReadMessage result;
    for (qsizetype at = 0; at < octets.size() && !reader.isAtEnd();) {
        const QByteArrayView piece = QByteArrayView(octets).sliced(at, qMin(size, octets.size() - at));
        at += reader.read(piece,
                          [&](QByteArrayView some) { result.message.append(some.data(), some.size()); });
        result.rest = octets.mid(at);
    }
    result.ended = reader.isAtEnd();
    return result;
}

PopCapabilities offering(const QByteArrayList &lines)
{
    PopCapabilities offered;
    offered.stated = true;
    for (const QByteArray &line : lines)
        offered.add(line);
    return offered;
}

} // namespace

class TestPopProtocol : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void replies_data();
    void replies();
    void shownTextIsBounded();
    void numbers_data();
    void numbers();
    void capabilities();
    void stamps_data();
    void stamps();
    void ways_data();
    void ways();
    void digests();
    void unsendableLogins();
    void messages_data();
    void messages();
    void spoolsInMemoryAndInFiles_data();
    void spoolsInMemoryAndInFiles();
    void whatNeedNotBeKeptIsNotWritten();
    void nobodyWaitsForAnUnwantedMail();
};

void TestPopProtocol::replies_data()
{
    using Kind = PopReply::Kind;
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QByteArray>("words");
    const auto row = [](const char *line, Kind kind, const char *words) {
        QTest::newRow(line) << QByteArray(line) << static_cast<int>(kind) << QByteArray(words);
    };
    row("+OK", Kind::Ok, "");
    row("+OK 2 320", Kind::Ok, "2 320");
    row("+ok lower case", Kind::Ok, "lower case");
    row("-ERR", Kind::Refused, "");
    row("-ERR [IN-USE] locked", Kind::Refused, "[IN-USE] locked");
    row("+", Kind::Continuation, "");
    row("+ PDE+", Kind::Continuation, "PDE+");
    row("", Kind::Malformed, "");
    row("+O", Kind::Malformed, "+O");
    row("220 ready", Kind::Malformed, "220 ready");
    row("* OK IMAP", Kind::Malformed, "* OK IMAP");
    row("\x16\x03\x01", Kind::Malformed, "\x16\x03\x01");
}

void TestPopProtocol::replies()
{
    QFETCH(QByteArray, line);
    const PopReply reply = PopReply::parse(line);
    QTEST(static_cast<int>(reply.kind), "kind");
    QTEST(reply.words, "words");
}

void TestPopProtocol::shownTextIsBounded()
{
    QCOMPARE(popText("caf\xe9\r\n"), u"caf\u00e9"_qs);
    QCOMPARE(popText(QByteArray(100'000, 'x')).size(), 300);
}

void TestPopProtocol::numbers_data()
{
    constexpr qint64 most = std::numeric_limits<qint64>::max();
    QTest::addColumn<QByteArray>("words");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<qint64>("first");
    QTest::addColumn<qint64>("second");
    const auto row = [](const char *words, bool valid, qint64 first = 0, qint64 second = 0) {
        QTest::newRow(words) << QByteArray(words) << valid << first << second;
    };
    row("2 320", true, 2, 320);
    row("0 0", true, 0, 0);
    row("  2\t320 octets", true, 2, 320);
    row("9223372036854775807 9223372036854775808", true, most, most);
    row("99999999999999999999999999 1", true, most, 1);
    row("", false);
    row("2", false);
    row("two 320", false);
    row("-2 320", false);
    row("2 -320", false);
    row("+2 320", false);
    row("2 320x", false);
    row("0x10 320", false);
}

void TestPopProtocol::numbers()
{
    QFETCH(QByteArray, words);
    QFETCH(bool, valid);
    const auto numbers = PopNumbers::parse(words);
    QCOMPARE(numbers.has_value(), valid);
    if (valid) {
        QTEST(numbers->first, "first");
        QTEST(numbers->second, "second");
    }
}

void TestPopProtocol::capabilities()
{
    const PopCapabilities offered
        = offering({"TOP", "uidl", "SASL PLAIN  cram-md5", "stls", "PIPELINING", "RESP-CODES", "", "USERS"});
    QVERIFY(offered.top && offered.stls && offered.pipelining);
    QVERIFY(!offered.user);
    QCOMPARE(offered.sasl, (QByteArrayList{"PLAIN", "CRAM-MD5"}));
}

void TestPopProtocol::stamps_data()
{
    QTest::addColumn<QByteArray>("greeting");
    QTest::addColumn<QByteArray>("stamp");
    QTest::newRow("as in the standard") << QByteArray("POP3 server ready <1896.697170952@dbc.mtview.ca.us>")
                                        << QByteArray("<1896.697170952@dbc.mtview.ca.us>");
    QTest::newRow("none") << QByteArray("ready") << QByteArray();
    QTest::newRow("a name in brackets") << QByteArray("<ready>") << QByteArray();
    QTest::newRow("open") << QByteArray("<1@2") << QByteArray();
    QTest::newRow("blank inside") << QByteArray("<1 2@3>") << QByteArray();
    QTest::newRow("beyond ASCII") << QByteArray("<1\xff@3>") << QByteArray();
    QTest::newRow("two at signs") << QByteArray("<1@2@3>") << QByteArray();
    QTest::newRow("nothing before") << QByteArray("<@3>") << QByteArray();
}

void TestPopProtocol::stamps()
{
    QFETCH(QByteArray, greeting);
    QTEST(apopStamp(greeting), "stamp");
}

void TestPopProtocol::ways_data()
{
    QTest::addColumn<QByteArrayList>("lines");
    QTest::addColumn<bool>("stamped");
    QTest::addColumn<int>("open");
    QTest::addColumn<int>("encrypted");
    const auto row = [](const char *name, const QByteArrayList &lines, bool stamped, PopLogin open,
                        PopLogin encrypted) {
        QTest::newRow(name) << lines << stamped << static_cast<int>(open) << static_cast<int>(encrypted);
    };
    row("everything", {"USER", "SASL PLAIN LOGIN CRAM-MD5"}, true, PopLogin::CramMd5, PopLogin::Plain);
    row("a stamp", {"USER", "SASL PLAIN"}, true, PopLogin::Apop, PopLogin::Plain);
    row("LOGIN and USER", {"USER", "SASL LOGIN"}, false, PopLogin::Login, PopLogin::Login);
    row("USER", {"USER"}, false, PopLogin::UserAndPass, PopLogin::UserAndPass);
    row("neither", {"TOP"}, false, PopLogin::UserAndPass, PopLogin::UserAndPass);
    row("CRAM-MD5 alone", {"SASL CRAM-MD5"}, false, PopLogin::CramMd5, PopLogin::CramMd5);
    row("unknown ones", {"SASL XOAUTH2 GSSAPI"}, false, PopLogin::None, PopLogin::None);
}

void TestPopProtocol::ways()
{
    QFETCH(QByteArrayList, lines);
    QFETCH(bool, stamped);
    QTEST(static_cast<int>(chooseLogin(offering(lines), false, stamped)), "open");
    QTEST(static_cast<int>(chooseLogin(offering(lines), true, stamped)), "encrypted");
}

// The example of RFC 1939.
void TestPopProtocol::digests()
{
    QCOMPARE(apopDigest("<1896.697170952@dbc.mtview.ca.us>", "tanstaaf"),
             QByteArray("c4c9334bac560ecc979e58001b3e22fb"));
}

void TestPopProtocol::unsendableLogins()
{
    QVERIFY(loginProblem(u"joe"_qs, u"a b \u00e9"_qs).isEmpty());
    QVERIFY(loginProblem(QString(), QString()).isEmpty());
    for (const QString &bad : {u"a\rb"_qs, u"a\nDELE 1"_qs, QString(u"a%1"_qs).arg(QChar(0))}) {
        QVERIFY(loginProblem(bad, u"pw"_qs).contains(u"user name"));
        const QString problem = loginProblem(u"joe"_qs, bad);
        QVERIFY(problem.contains(u"password") && !problem.contains(bad));
    }
}

void TestPopProtocol::messages_data()
{
    QTest::addColumn<QByteArray>("octets");
    QTest::addColumn<bool>("strict");
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<bool>("ended");
    QTest::addColumn<QByteArray>("rest");
    const auto row = [](const char *name, bool strict, const char *octets, const char *message,
                        bool ended = true, const char *rest = "") {
        QTest::newRow(name) << QByteArray(octets) << strict << QByteArray(message) << ended
                            << QByteArray(rest);
    };
    row("a line", true, "one\r\n.\r\n", "one\r\n");
    row("empty", true, ".\r\n", "");
    row("what follows is not read", true, "one\r\n.\r\n+OK two\r\n", "one\r\n", true, "+OK two\r\n");
    row("stuffed", true, "..one\r\n...\r\n..\r\n.\r\n", ".one\r\n..\r\n.\r\n");
    row("dots inside", true, "a.b.\r\n.c\r\n.\r\n", "a.b.\r\nc\r\n");
    row("a dot and a CR", true, "a\r\n.\rb\r\n.\r\n", "a\r\n\rb\r\n");
    row("a dot, a CR and a dot", true, "a\r\n.\r.\r\n.\r\n", "a\r\n\r.\r\n");
    row("a lone LF is text", true, "a\n.\nb\n..c\r\n.\r\n", "a\n.\nb\n..c\r\n");
    row("a lone LF ends a line", false, "a\n..b\n.\n", "a\n.b\n");
    row("either end", false, "a\r\n..b\n.\r\n", "a\r\n.b\n");
    row("no end", true, "a\r\nb", "a\r\nb", false);
    row("a dot at the end", true, "a\r\n.", "a\r\n", false);
    row("half an end", true, "a\r\n.\r", "a\r\n", false);
    row("empty lines", true, "\r\n\r\n.\r\n", "\r\n\r\n");
}

void TestPopProtocol::messages()
{
    QFETCH(QByteArray, octets);
    QFETCH(bool, strict);
    for (qsizetype size = 1; size <= octets.size(); ++size) {
        const ReadMessage read = readInPieces(octets, size, strict);
        QTEST(read.message, "message");
        QTEST(read.ended, "ended");
        QTEST(read.rest, "rest");
    }
}

void TestPopProtocol::spoolsInMemoryAndInFiles_data()
{
    QTest::addColumn<int>("pieces");
    QTest::newRow("in memory") << 5;
    QTest::newRow("in a file") << 5'000;
}

void TestPopProtocol::spoolsInMemoryAndInFiles()
{
    QFETCH(int, pieces);
    const auto spool = std::make_shared<MailSpool>();
    SpooledMail mail(spool, 1'000);
    QVERIFY(!mail.isSequential());
    QByteArray all;
    const std::unique_ptr<QThread> network(QThread::create([&] {
        for (int i = 0; i < pieces; ++i) {
            const QByteArray piece = QByteArray::number(i) + QByteArray(100, 'x');
            spool->add(piece);
            all += piece;
        }
        spool->finish();
    }));
    network->start();
    // To the end, which has to be waited for, and again from the middle.
    const QByteArray read = mail.readAll();
    QVERIFY(network->wait());
    QCOMPARE(read, all);
    QCOMPARE(mail.problem(), QString());
    QVERIFY(mail.seek(all.size() / 2));
    QCOMPARE(mail.readAll(), all.mid(all.size() / 2));
}

void TestPopProtocol::whatNeedNotBeKeptIsNotWritten()
{
    const auto spool = std::make_shared<MailSpool>();
    SpooledMail mail(spool, 1'000);
    QByteArray all;
    const auto come = [&](char octet) {
        const QByteArray piece(800, octet);
        spool->add(piece);
        all += piece;
        QCOMPARE(mail.read(800), piece);
    };
    for (const char octet : {'a', 'b', 'c'})
        come(octet);
    // Two pieces are put away when the next one comes: one in memory, one in the file.
    QCOMPARE(mail.writtenToFile(), 800);
    mail.keepOnlyTo(2'500);
    for (const char octet : {'d', 'e', 'f'})
        come(octet);
    mail.keepAgain();
    come('g');
    spool->finish();
    QCOMPARE(mail.read(1), QByteArray());
    QCOMPARE(mail.writtenToFile(), 5 * 800);
    // What was kept is there, and ends where something is missing.
    QVERIFY(mail.seek(100));
    QCOMPARE(mail.readAll(), all.sliced(100, 4 * 800 - 100));
    QVERIFY(mail.seek(5 * 800));
    QCOMPARE(mail.readAll(), all.sliced(5 * 800));
    QVERIFY(mail.seek(4 * 800 + 1));
    QCOMPARE(mail.readAll(), QByteArray());
}

void TestPopProtocol::nobodyWaitsForAnUnwantedMail()
{
    const auto spool = std::make_shared<MailSpool>();
    SpooledMail mail(spool, 1'000);
    spool->add("some octets");
    const std::unique_ptr<QThread> network(QThread::create([&] { spool->discard(); }));
    network->start();
    mail.readAll();
    QVERIFY(network->wait());
    spool->add("more");
    QByteArray taken("x");
    spool->take(taken);
    QCOMPARE(taken, QByteArray());
    QCOMPARE(mail.readAll(), QByteArray());
}

QTEST_GUILESS_MAIN(TestPopProtocol)
#include "TestPopProtocol.moc"
