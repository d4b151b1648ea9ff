#include <QHostAddress>
#include <QSignalSpy>
#include <QTest>
#include <QUdpSocket>
#include <QtEndian>

#include "platform/mail/smtp/MailExchangers.h"

using namespace vandrel;

namespace {

// Where the toolkit's resolver asks; it knows no other port.
const QHostAddress nameServer(u"127.0.0.53"_qs);
constexpr quint16 port = 53;
constexpr int longestAnswer = 30'000;

QByteArray number(quint16 value)
{
    const quint16 octets = qToBigEndian(value);
    return QByteArray(reinterpret_cast<const char *>(&octets), sizeof octets);
}

QByteArray name(const QByteArray &dotted)
{
    QByteArray octets;
    for (const QByteArray &label : dotted.split('.')) {
        if (!label.isEmpty())
            octets += static_cast<char>(label.size()) + label;
    }
    return octets + '\0';
}

QByteArray record(quint16 preference, const QByteArray &host)
{
    const QByteArray data = number(preference) + name(host);
    return QByteArray("\xc0\x0c\x00\x0f\x00\x01\x00\x00\x00\x3c", 10)
        + number(static_cast<quint16>(data.size())) + data;
}

// RFC 1035, section 4: the question again, and behind it the records of the asked domain.
QByteArray answerTo(const QByteArray &question)
{
    QByteArray records;
    quint16 count = 0;
    quint16 code = 0;
    if (question.contains(name("two.example"))) {
        records = record(20, "mx2.two.example") + record(10, "mx1.two.example");
        count = 2;
    } else if (question.contains(name("null.example"))) {
        records = record(0, "");
        count = 1;
    } else if (question.contains(name("broken.example"))) {
        code = 2;
    } else {
        code = 3;
    }
    // The question ends behind its type and class; what may follow it is not repeated.
    const qsizetype end = question.indexOf('\0', 12) + 5;
    return question.left(2) + number(static_cast<quint16>(0x8180 | code)) + number(1) + number(count)
        + number(0) + number(0) + question.mid(12, end - 12) + records;
}

} // namespace

// The system's resolver against a name server of the test's own.
class TestMailExchangers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answers_data();
    void answers();
    void endsWithItsQuestion();
};

void TestMailExchangers::answers_data()
{
    QTest::addColumn<QString>("domain");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("two") << u"two.example"_qs
                         << QStringList{u"10 mx1.two.example"_qs, u"20 mx2.two.example"_qs};
    QTest::newRow("takes no mail") << u"null.example"_qs << QStringList{u"0 "_qs};
    QTest::newRow("no such domain") << u"unknown.example"_qs << QStringList();
    QTest::newRow("failure") << u"broken.example"_qs << QStringList{u"failed"_qs};
}

void TestMailExchangers::answers()
{
    QFETCH(QString, domain);
    QFETCH(QStringList, expected);
    QUdpSocket server;
    if (!server.bind(nameServer, port))
        QSKIP("only root may answer on port 53");
    connect(&server, &QUdpSocket::readyRead, &server, [&server] {
        while (server.hasPendingDatagrams()) {
            QHostAddress client;
            quint16 clientPort = 0;
            QByteArray question(server.pendingDatagramSize(), Qt::Uninitialized);
            server.readDatagram(question.data(), question.size(), &client, &clientPort);
            server.writeDatagram(answerTo(question), client, clientPort);
        }
    });
    DnsMailExchangers exchangers;
    exchangers.setNameServer(nameServer.toString());
    QStringList found;
    bool answered = false;
    connect(&exchangers, &MailExchangers::found, this, [&](const std::vector<MailExchanger> &records) {
        answered = true;
        for (const MailExchanger &record : records)
            found += QString::number(record.preference) + u' ' + record.host;
        found.sort();
    });
    connect(&exchangers, &MailExchangers::failed, this, [&](const QString &reason) {
        answered = true;
        found += reason.isEmpty() ? QString() : u"failed"_qs;
    });
    exchangers.ask(domain);
    QVERIFY(!answered);
    QTRY_VERIFY_WITH_TIMEOUT(answered, longestAnswer);
    QCOMPARE(found, expected);
}

void TestMailExchangers::endsWithItsQuestion()
{
    auto exchangers = std::make_unique<DnsMailExchangers>();
    exchangers->setNameServer(u"127.0.0.1"_qs);
    QSignalSpy found(exchangers.get(), &MailExchangers::found);
    QSignalSpy failed(exchangers.get(), &MailExchangers::failed);
    exchangers->ask(u"never.example"_qs);
    exchangers.reset();
    QCoreApplication::processEvents();
    QCOMPARE(found.size() + failed.size(), 0);
}

QTEST_GUILESS_MAIN(TestMailExchangers)

#include "TestMailExchangers.moc"
