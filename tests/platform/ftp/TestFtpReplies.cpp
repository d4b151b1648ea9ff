#include <QTest>

#include "platform/ftp/Reply.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using State = FtpReplyReader::State;

/// Replies of FTP servers, good and bad.
class TestFtpReplies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsReplies_data();
    void readsReplies();
    void refusesWhatIsNoReply_data();
    void refusesWhatIsNoReply();
    void aReplyWithoutAnEndIsBroken();
    void theTextIsFitToBeShown_data();
    void theTextIsFitToBeShown();

    void theQuotedDirectory_data();
    void theQuotedDirectory();
    void theExtendedPassivePort_data();
    void theExtendedPassivePort();
    void thePassivePort_data();
    void thePassivePort();
    void theSize_data();
    void theSize();
    void theFeatures();
};

namespace {

FtpReply replyOf(const QByteArray &text)
{
    FtpReplyReader reader;
    State state = State::Incomplete;
    for (const QByteArray &line : text.split('\n'))
        state = reader.addLine(line);
    return state == State::Complete ? reader.reply() : FtpReply();
}

template<typename Value>
int numberOr(const std::optional<Value> &value)
{
    return value ? static_cast<int>(*value) : -1;
}

} // namespace

void TestFtpReplies::readsReplies_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("number");
    QTest::addColumn<QByteArrayList>("lines");
    QTest::newRow("one line") << QByteArray("220 Welcome") << 220 << QByteArrayList{"Welcome"};
    QTest::newRow("the number alone") << QByteArray("200") << 200 << QByteArrayList{""};
    QTest::newRow("a blank behind the number") << QByteArray("200 ") << 200 << QByteArrayList{""};
    QTest::newRow("several lines") << QByteArray("220-Hello\n you\n220 Go on") << 220
                                   << QByteArrayList{"Hello", " you", "Go on"};
    QTest::newRow("other numbers between")
        << QByteArray("230-a\n550 b\n230-c\n230 d") << 230 << QByteArrayList{"a", "550 b", "230-c", "d"};
    QTest::newRow("an end without text")
        << QByteArray("211-Features\n UTF8\n211") << 211 << QByteArrayList{"Features", " UTF8", ""};
    QTest::newRow("its own number at the start of a word")
        << QByteArray("211-a\n2111 b\n211 c") << 211 << QByteArrayList{"a", "2111 b", "c"};
}

void TestFtpReplies::readsReplies()
{
    QFETCH(QByteArray, text);
    QFETCH(int, number);
    QFETCH(QByteArrayList, lines);
    const FtpReply reply = replyOf(text);
    QCOMPARE(reply.number, number);
    QCOMPARE(reply.lines, lines);
}

void TestFtpReplies::refusesWhatIsNoReply_data()
{
    QTest::addColumn<QByteArray>("line");
    for (const char *line : {"", "22", "2x0 a", "000 a", "099 a", "600 a", "2200 a", "220:a", " 220 a",
                             "SSH-2.0-x", "HTTP/1.1 200 OK", "+OK", "\xFF\xF4"})
        QTest::newRow(line) << QByteArray(line);
}

void TestFtpReplies::refusesWhatIsNoReply()
{
    QFETCH(QByteArray, line);
    FtpReplyReader reader;
    QCOMPARE(reader.addLine(line), State::Broken);
    QCOMPARE(reader.addLine("220 too late"), State::Broken);
}

void TestFtpReplies::aReplyWithoutAnEndIsBroken()
{
    FtpReplyReader reader;
    QCOMPARE(reader.addLine("220-"), State::Incomplete);
    const QByteArray line(999, 'x');
    qsizetype taken = 0;
    while (reader.addLine(line) == State::Incomplete)
        QVERIFY((taken += line.size()) <= FtpReplyReader::longestReply);
    QCOMPARE(reader.addLine("220 end"), State::Broken);
}

void TestFtpReplies::theTextIsFitToBeShown_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("shown");
    QTest::newRow("the last line") << QByteArray("550-It\n550 failed") << u"failed"_s;
    QTest::newRow("UTF-8") << QByteArray("550 \xC3\xA9") << u"é"_s;
    QTest::newRow("Latin-1") << QByteArray("550 \xE9") << u"é"_s;
    QTest::newRow("control octets") << QByteArray("550 a\x1B[2J\rb\x7F") << u"a [2J b"_s;
    QTest::newRow("very long") << QByteArray("550 " + QByteArray(5000, 'x')) << QString(500, u'x');
}

void TestFtpReplies::theTextIsFitToBeShown()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, shown);
    QCOMPARE(replyOf(reply).text(), shown);
}

void TestFtpReplies::theQuotedDirectory_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QByteArray>("directory");
    QTest::newRow("plain") << QByteArray("257 \"/pub\" is the current directory") << QByteArray("/pub");
    QTest::newRow("doubled quotation marks")
        << QByteArray("257 \"/d\"\"q\"\"\" is it") << QByteArray("/d\"q\"");
    QTest::newRow("quotation marks left single") << QByteArray("257 \"/d\"q\" is it") << QByteArray("/d\"q");
    QTest::newRow("no quotation marks") << QByteArray("257 /pub") << QByteArray();
    QTest::newRow("one quotation mark") << QByteArray("257 \"/pub") << QByteArray();
    QTest::newRow("nothing quoted") << QByteArray("257 \"\"") << QByteArray();
}

void TestFtpReplies::theQuotedDirectory()
{
    QFETCH(QByteArray, reply);
    QFETCH(QByteArray, directory);
    QCOMPARE(quotedDirectory(replyOf(reply)).value_or(QByteArray()), directory);
}

void TestFtpReplies::theExtendedPassivePort_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("port");
    QTest::newRow("usual") << QByteArray("229 Entering Extended Passive Mode (|||12345|)") << 12345;
    QTest::newRow("another separator") << QByteArray("229 ok (!!!12345!)") << 12345;
    QTest::newRow("port 0") << QByteArray("229 (|||0|)") << -1;
    QTest::newRow("port 70000") << QByteArray("229 (|||70000|)") << -1;
    QTest::newRow("negative") << QByteArray("229 (|||-1|)") << -1;
    QTest::newRow("huge") << QByteArray("229 (|||99999999999999999999|)") << -1;
    QTest::newRow("no port") << QByteArray("229 (||||)") << -1;
    QTest::newRow("cut off") << QByteArray("229 (|||123") << -1;
    QTest::newRow("an opening alone") << QByteArray("229 (") << -1;
    QTest::newRow("digits for separators") << QByteArray("229 (11112345 1)") << -1;
    QTest::newRow("no parenthesis") << QByteArray("229 |||12345|") << -1;
}

void TestFtpReplies::theExtendedPassivePort()
{
    QFETCH(QByteArray, reply);
    QTEST(numberOr(extendedPassivePort(replyOf(reply))), "port");
}

void TestFtpReplies::thePassivePort_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("port");
    QTest::newRow("usual") << QByteArray("227 Entering Passive Mode (127,0,0,1,48,57)") << 12345;
    QTest::newRow("no parentheses") << QByteArray("227 Passive 10,0,0,5,48,57") << 12345;
    QTest::newRow("blanks behind the commas") << QByteArray("227 (10, 0, 0, 5, 48, 57)") << 12345;
    QTest::newRow("numbers before") << QByteArray("227 Mode 2 of 3,4 =10,0,0,5,48,57") << 12345;
    QTest::newRow("a port of the system") << QByteArray("227 (10,0,0,5,0,22)") << -1;
    QTest::newRow("port 0") << QByteArray("227 (10,0,0,5,0,0)") << -1;
    QTest::newRow("beyond an octet") << QByteArray("227 (10,0,0,5,256,1)") << -1;
    QTest::newRow("five numbers") << QByteArray("227 (10,0,0,5,48)") << -1;
    QTest::newRow("nothing") << QByteArray("227 ok") << -1;
}

void TestFtpReplies::thePassivePort()
{
    QFETCH(QByteArray, reply);
    QTEST(numberOr(passivePort(replyOf(reply))), "port");
}

void TestFtpReplies::theSize_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<qint64>("size");
    QTest::newRow("usual") << QByteArray("213 1073741824") << qint64(1073741824);
    QTest::newRow("empty") << QByteArray("213 0") << qint64(0);
    QTest::newRow("negative") << QByteArray("213 -1") << qint64(-1);
    QTest::newRow("with a sign") << QByteArray("213 +5") << qint64(-1);
    QTest::newRow("beyond 63 bits") << QByteArray("213 9223372036854775808") << qint64(-1);
    QTest::newRow("words") << QByteArray("213 many") << qint64(-1);
    QTest::newRow("nothing") << QByteArray("213") << qint64(-1);
}

void TestFtpReplies::theSize()
{
    QFETCH(QByteArray, reply);
    QTEST(sizeTold(replyOf(reply)).value_or(-1), "size");
}

void TestFtpReplies::theFeatures()
{
    const auto features
        = featuresOffered(replyOf("211-Features:\n MLST type*;size*;\n utf8\n AUTH TLS\n211 End"));
    QCOMPARE(features, QSet<QByteArray>({"MLST", "UTF8", "AUTH"}));
    QVERIFY(featuresOffered(replyOf("211 no features")).isEmpty());
}

QTEST_GUILESS_MAIN(TestFtpReplies)
#include "TestFtpReplies.moc"
