#include <random>
#include <vector>

#include <QBuffer>
#include <QTest>

#include "platform/mail/text/MailLines.h"

using namespace vandrel;

namespace {

constexpr unsigned seed = 20261121;

struct SeenLine {
    qint64 offset = 0;
    qint64 size = 0;
    qint64 next = 0;

    bool operator==(const SeenLine &) const = default;
};

// The lines that begin with a hyphen, each behind the line before it, and the last line.
std::vector<SeenLine> linesOf(const QByteArray &mail, bool skipping)
{
    QBuffer device;
    device.setData(mail);
    device.open(QIODevice::ReadOnly);
    MailLineReader reader(device);
    std::vector<SeenLine> seen;
    SeenLine before;
    for (MailLine line; reader.next(line);) {
        const SeenLine now{line.offset, line.octets.size(), line.next};
        if (line.first && line.octets.startsWith('-'))
            seen.insert(seen.end(), {before, now});
        before = now;
        if (skipping)
            reader.skipToBefore('-');
    }
    seen.push_back(before);
    return seen;
}

// Octets of an alphabet, each as likely as it is often in it.
QByteArray octetsOf(const QByteArray &alphabet, int size, std::mt19937 &random)
{
    std::uniform_int_distribution<qsizetype> index(0, alphabet.size() - 1);
    QByteArray octets(size, Qt::Uninitialized);
    for (char &octet : octets)
        octet = alphabet.at(index(random));
    return octets;
}

} // namespace

/// Lines that are passed over leave those that matter where they are.
class TestMailLines : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void skippingLosesNothing_data();
    void skippingLosesNothing();
};

void TestMailLines::skippingLosesNothing_data()
{
    QTest::addColumn<QByteArray>("alphabet");
    QTest::addColumn<int>("size");
    QTest::newRow("all kinds of line breaks") << QByteArray("\r\n-a") << 300;
    QTest::newRow("line breaks of two") << QByteArray("\n-aaaaaaaaaaaaaaa") << 2000;
    QTest::newRow("hyphens within lines") << QByteArray("\r\n-----") << 300;
    QTest::newRow("no hyphens") << QByteArray("\r\na") << 300;
    QTest::newRow("CR alone") << QByteArray("\r-aaaaaaaa") << 1000;
    // Larger than what is held in memory.
    QTest::newRow("large") << QByteArray("\r\n-") + QByteArray(200, 'a') << 1'000'000;
    QTest::newRow("large, with few hyphens") << QByteArray("\r\n") + QByteArray(50, 'a') << 1'000'000;
    QTest::newRow("large, in endless lines") << QByteArray("-") + QByteArray(60, 'a') << 1'000'000;
}

void TestMailLines::skippingLosesNothing()
{
    QFETCH(QByteArray, alphabet);
    QFETCH(int, size);
    std::mt19937 random(seed);
    const int rounds = size > 10'000 ? 2 : 300;
    for (int round = 0; round < rounds; ++round) {
        const QByteArray mail = octetsOf(alphabet, size, random);
        QVERIFY2(linesOf(mail, true) == linesOf(mail, false), mail.left(300).toPercentEncoding().constData());
    }
}

QTEST_GUILESS_MAIN(TestMailLines)
#include "TestMailLines.moc"
