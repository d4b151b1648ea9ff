#include <QTest>

#include "platform/net/ServerAddress.h"

using namespace vandrel;

namespace {

const std::vector<ServerScheme> &schemes()
{
    static const std::vector<ServerScheme> both{{QStringLiteral("pop3"), 110, false},
                                                {QStringLiteral("pop3s"), 995, true}};
    return both;
}

ServerAddress parsed(const QString &typed)
{
    return ServerAddress::parse(typed, schemes());
}

} // namespace

class TestServerAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatAPersonTypes_data();
    void whatAPersonTypes();
    void userAndPassword_data();
    void userAndPassword();
    void whatIsRefused_data();
    void whatIsRefused();
    void thePasswordIsNotRepeated();
    void theRestIsAPath();
    void namesBeyondAscii();
    void thisMachine_data();
    void thisMachine();
};

void TestServerAddress::whatAPersonTypes_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("host");
    QTest::addColumn<int>("port");
    QTest::addColumn<bool>("tls");
    QTest::newRow("a name") << u"mail.example.org"_qs << u"mail.example.org"_qs << 110 << false;
    QTest::newRow("capitals") << u"Mail.Example.ORG"_qs << u"mail.example.org"_qs << 110 << false;
    QTest::newRow("a root dot") << u"mail.example.org."_qs << u"mail.example.org"_qs << 110 << false;
    QTest::newRow("blanks around") << u"  mail.example.org\t"_qs << u"mail.example.org"_qs << 110 << false;
    QTest::newRow("a port") << u"mail.example.org:11110"_qs << u"mail.example.org"_qs << 11110 << false;
    QTest::newRow("the encrypted port")
        << u"mail.example.org:995"_qs << u"mail.example.org"_qs << 995 << true;
    QTest::newRow("a scheme") << u"pop3://mail.example.org"_qs << u"mail.example.org"_qs << 110 << false;
    QTest::newRow("an encrypted scheme")
        << u"POP3S://mail.example.org/"_qs << u"mail.example.org"_qs << 995 << true;
    QTest::newRow("an encrypted scheme on another port")
        << u"pop3s://mail.example.org:110"_qs << u"mail.example.org"_qs << 110 << true;
    QTest::newRow("a plain scheme on the encrypted port")
        << u"pop3://mail.example.org:995"_qs << u"mail.example.org"_qs << 995 << true;
    QTest::newRow("IPv4") << u"192.0.2.7:110"_qs << u"192.0.2.7"_qs << 110 << false;
    QTest::newRow("IPv6") << u"2001:db8::1"_qs << u"2001:db8::1"_qs << 110 << false;
    QTest::newRow("IPv6 in brackets") << u"[2001:DB8::1]"_qs << u"2001:db8::1"_qs << 110 << false;
    QTest::newRow("IPv6 and a port") << u"[::1]:995"_qs << u"::1"_qs << 995 << true;
    QTest::newRow("IPv6 behind a scheme") << u"pop3://[::1]:1100/"_qs << u"::1"_qs << 1100 << false;
    QTest::newRow("an underscore") << u"my_server"_qs << u"my_server"_qs << 110 << false;
}

void TestServerAddress::whatAPersonTypes()
{
    QFETCH(QString, typed);
    const ServerAddress address = parsed(typed);
    QCOMPARE(address.problem, QString());
    QTEST(address.host, "host");
    QTEST(int(address.port), "port");
    QTEST(address.implicitTls, "tls");
    QVERIFY(!address.userGiven);
}

void TestServerAddress::userAndPassword_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("password");
    QTest::newRow("both") << u"joe:secret@mail.example.org"_qs << u"joe"_qs << u"secret"_qs;
    QTest::newRow("a user alone") << u"pop3://joe@mail.example.org"_qs << u"joe"_qs << QString();
    QTest::newRow("encoded") << u"jo%65:a%3Ab%40c%25@mail.example.org:995"_qs << u"joe"_qs << u"a:b@c%"_qs;
    QTest::newRow("an address as user")
        << u"joe@example.org:secret@mail.example.org"_qs << u"joe@example.org"_qs << u"secret"_qs;
    QTest::newRow("colons in the password") << u"joe:a:b:c@mail.example.org"_qs << u"joe"_qs << u"a:b:c"_qs;
    QTest::newRow("beyond ASCII") << u"j%C3%B6:\u00e9@mail.example.org"_qs << u"j\u00f6"_qs << u"\u00e9"_qs;
    QTest::newRow("empty") << u":@mail.example.org"_qs << QString() << QString();
}

void TestServerAddress::userAndPassword()
{
    QFETCH(QString, typed);
    const ServerAddress address = parsed(typed);
    QCOMPARE(address.problem, QString());
    QCOMPARE(address.host, u"mail.example.org"_qs);
    QVERIFY(address.userGiven);
    QTEST(address.user, "user");
    QTEST(address.password, "password");
}

void TestServerAddress::whatIsRefused_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("said");
    QTest::newRow("nothing") << QString() << u"No server was named"_qs;
    QTest::newRow("blanks") << u"   "_qs << u"No server was named"_qs;
    QTest::newRow("a port alone") << u":110"_qs << u"No server was named"_qs;
    QTest::newRow("a blank inside") << u"mail .example.org"_qs << u"no blanks"_qs;
    QTest::newRow("a line break") << u"mail.example.org\r\nQUIT"_qs << u"no blanks"_qs;
    QTest::newRow("a NUL") << QString(u"mail%1.org"_qs).arg(QChar(0)) << u"no blanks"_qs;
    QTest::newRow("another scheme") << u"http://mail.example.org"_qs << u"pop3:// or pop3s://"_qs;
    QTest::newRow("no port") << u"mail.example.org:"_qs << u"is not a port"_qs;
    QTest::newRow("port 0") << u"mail.example.org:0"_qs << u"is not a port"_qs;
    QTest::newRow("port 65536") << u"mail.example.org:65536"_qs << u"is not a port"_qs;
    QTest::newRow("a signed port") << u"mail.example.org:+110"_qs << u"is not a port"_qs;
    QTest::newRow("a word as port") << u"mail.example.org:pop3"_qs << u"is not a port"_qs;
    QTest::newRow("an open bracket") << u"[::1"_qs << u"in brackets"_qs;
    QTest::newRow("text behind a bracket") << u"[::1]110"_qs << u"in brackets"_qs;
    QTest::newRow("IPv4 in brackets") << u"[192.0.2.7]"_qs << u"is not an IPv6 address"_qs;
    QTest::newRow("too many colons") << u"mail:110:110"_qs << u"is not an IPv6 address"_qs;
    QTest::newRow("an empty label") << u"mail..org"_qs << u"is not the name"_qs;
    QTest::newRow("a long label") << QString(64, u'a') << u"is not the name"_qs;
    QTest::newRow("a long name") << QString(u"abcdefg."_qs).repeated(40) + u"org"_qs << u"is not the name"_qs;
    QTest::newRow("a bad escape") << u"joe:50%off@mail.example.org"_qs << u"percent-encoded"_qs;
    QTest::newRow("an escaped line break") << u"joe:a%0d%0aQUIT@mail.example.org"_qs << u"percent-encoded"_qs;
}

void TestServerAddress::whatIsRefused()
{
    QFETCH(QString, typed);
    QFETCH(QString, said);
    const ServerAddress address = parsed(typed);
    QVERIFY(!address.isUsable());
    QVERIFY2(address.problem.contains(said), qPrintable(address.problem));
}

void TestServerAddress::thePasswordIsNotRepeated()
{
    const QStringList typed{u"joe:s3cret%@mail.example.org"_qs, u"joe:s3cret@"_qs, u"joe:s3cret@mail:0"_qs,
                            u"joe:s3cret@[x"_qs, u"x://joe:s3cret@mail"_qs};
    for (const QString &text : typed) {
        const ServerAddress address = parsed(text);
        QVERIFY(!address.isUsable());
        QVERIFY2(!address.problem.contains(u"s3cret"), qPrintable(address.problem));
    }
}

void TestServerAddress::theRestIsAPath()
{
    const ServerAddress address = parsed(u"pop3://joe@mail.example.org:1100/a%20b/c@d"_qs);
    QVERIFY(address.isUsable());
    QCOMPARE(address.path, u"/a b/c@d"_qs);
    QCOMPARE(address.user, u"joe"_qs);
    QCOMPARE(address.scheme, u"pop3"_qs);
    QVERIFY(address.portGiven);
}

void TestServerAddress::namesBeyondAscii()
{
    QCOMPARE(parsed(u"m\u00fcller.example"_qs).host, u"xn--mller-kva.example"_qs);
}

void TestServerAddress::thisMachine_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<bool>("here");
    QTest::newRow("localhost") << u"localhost"_qs << true;
    QTest::newRow("a name below") << u"mail.localhost"_qs << true;
    QTest::newRow("127.0.0.1") << u"127.0.0.1"_qs << true;
    QTest::newRow("127.9.9.9") << u"127.9.9.9"_qs << true;
    QTest::newRow("::1") << u"[::1]"_qs << true;
    QTest::newRow("another") << u"192.0.2.7"_qs << false;
    QTest::newRow("a name alike") << u"localhost.example.org"_qs << false;
}

void TestServerAddress::thisMachine()
{
    QFETCH(QString, typed);
    QTEST(parsed(typed).isThisMachine(), "here");
}

QTEST_GUILESS_MAIN(TestServerAddress)
#include "TestServerAddress.moc"
