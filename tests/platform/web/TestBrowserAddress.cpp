#include <QTest>

#include "controls/DriveView.h"
#include "platform/web/BrowserAddress.h"
#include "platform/web/PageDownloads.h"

using namespace Qt::StringLiterals;
using namespace vandrel;

/// What a person types into the address box, and what a server proposes as a file's name.
class TestBrowserAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pages_data();
    void pages();
    void unusable_data();
    void unusable();
    void nothingIsTheBlankPage();
    void scripts();
    void thePlainTwin();
    void fileNames_data();
    void fileNames();
    void aLongNameIsCut();
};

namespace {

BrowserAddress parse(const QString &typed)
{
    DriveView drives;
    drives.setDrive('c', "/home/me");
    drives.setDrive('z', "/");
    return BrowserAddress::parse(typed, drives);
}

} // namespace

void TestBrowserAddress::pages_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("guessed");
    QTest::newRow("a host") << u"example.org"_s << u"https://example.org"_s << true;
    QTest::newRow("blanks around") << u"  example.org\t"_s << u"https://example.org"_s << true;
    QTest::newRow("host, port, path")
        << u"example.org:8080/a?b#c"_s << u"https://example.org:8080/a?b#c"_s << true;
    QTest::newRow("localhost with a port") << u"localhost:8080/a"_s << u"https://localhost:8080/a"_s << true;
    QTest::newRow("localhost") << u"localhost"_s << u"https://localhost"_s << true;
    QTest::newRow("a lone name with a path") << u"intranet/news"_s << u"https://intranet/news"_s << true;
    QTest::newRow("an IPv4 address") << u"127.0.0.1:80"_s << u"https://127.0.0.1:80"_s << true;
    QTest::newRow("an IPv6 address") << u"[::1]:80/"_s << u"https://[::1]:80/"_s << true;
    QTest::newRow("http") << u"http://example.org/a b"_s << u"http://example.org/a%20b"_s << false;
    QTest::newRow("capital scheme") << u"HTTP://example.org/"_s << u"http://example.org/"_s << false;
    QTest::newRow("a file in the drive view") << u"c:\\page.htm"_s << u"file:///home/me/page.htm"_s << false;
    QTest::newRow("a drive") << u"z:"_s << u"file:///"_s << false;
    QTest::newRow("a system's path") << u"/tmp/a#b?.htm"_s << u"file:///tmp/a%23b%3F.htm"_s << false;
    QTest::newRow("a file's address") << u"file:///tmp/a.htm"_s << u"file:///tmp/a.htm"_s << false;
    QTest::newRow("data") << u"data:text/plain,hello"_s << u"data:text/plain,hello"_s << false;
    QTest::newRow("about") << u"about:blank"_s << u"about:blank"_s << false;
    QTest::newRow("the start page") << u"vandrel://start"_s << u"vandrel://start"_s << false;
}

void TestBrowserAddress::pages()
{
    QFETCH(QString, typed);
    QFETCH(QString, url);
    QFETCH(bool, guessed);
    const BrowserAddress address = parse(typed);
    QCOMPARE(address.kind, BrowserAddress::Kind::Page);
    QCOMPARE(address.url.toString(QUrl::FullyEncoded), url);
    QCOMPARE(address.schemeGuessed, guessed);
}

void TestBrowserAddress::unusable_data()
{
    QTest::addColumn<QString>("typed");
    QTest::newRow("words") << u"hello world"_s;
    QTest::newRow("a word") << u"hello"_s;
    QTest::newRow("an address that ends the engine") << u"chrome://inducebrowsercrashforrealz"_s;
    QTest::newRow("an address that ends the page") << u"CHROME://kill"_s;
    QTest::newRow("the engine's tools") << u"devtools://devtools/bundled/inspector.html"_s;
    QTest::newRow("mail") << u"mailto:someone@example.org"_s;
    QTest::newRow("a host is missing") << u"http://"_s;
    QTest::newRow("another host is missing") << u"https:///path"_s;
    QTest::newRow("no such drive") << u"q:\\page.htm"_s;
    QTest::newRow("a colon") << u":"_s;
}

void TestBrowserAddress::unusable()
{
    QFETCH(QString, typed);
    QCOMPARE(parse(typed).kind, BrowserAddress::Kind::Unusable);
}

void TestBrowserAddress::nothingIsTheBlankPage()
{
    QCOMPARE(parse({}).kind, BrowserAddress::Kind::Blank);
    QCOMPARE(parse(u"  \t"_s).kind, BrowserAddress::Kind::Blank);
}

void TestBrowserAddress::scripts()
{
    const BrowserAddress address = parse(u"JavaScript:alert(%22a%22)"_s);
    QCOMPARE(address.kind, BrowserAddress::Kind::Script);
    QCOMPARE(address.script, u"alert(\"a\")"_s);
}

void TestBrowserAddress::thePlainTwin()
{
    QCOMPARE(plainTwin(QUrl(u"https://example.org/a"_s)), QUrl(u"http://example.org/a"_s));
    QCOMPARE(plainTwin(QUrl(u"https://example.org:8080/"_s)), QUrl(u"http://example.org:8080/"_s));
}

void TestBrowserAddress::fileNames_data()
{
    QTest::addColumn<QString>("proposed");
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << u"letter.txt"_s << u"letter.txt"_s;
    QTest::newRow("a path") << u"../../etc/passwd"_s << u"passwd"_s;
    QTest::newRow("a DOS path") << u"..\\x\\evil name.bin"_s << u"evil name.bin"_s;
    QTest::newRow("both") << u"..\\x/evil name.bin"_s << u"evil name.bin"_s;
    QTest::newRow("hidden") << u".bashrc"_s << u"bashrc"_s;
    QTest::newRow("points") << u"..."_s << u"download"_s;
    QTest::newRow("nothing") << QString() << u"download"_s;
    QTest::newRow("control characters") << u"a\r\nb\u0000c.txt"_s << u"a__b_c.txt"_s;
    QTest::newRow("a character that turns the text round") << u"a\u202egpj.exe"_s << u"a_gpj.exe"_s;
    QTest::newRow("characters of patterns") << u"a*b?<c>|\":.txt"_s << u"a_b__c____.txt"_s;
    QTest::newRow("beyond the first plane") << u"\U0001F600.png"_s << u"\U0001F600.png"_s;
    QTest::newRow("letters of any script") << u"größe 漢字.txt"_s << u"größe 漢字.txt"_s;
}

void TestBrowserAddress::fileNames()
{
    QFETCH(QString, proposed);
    QFETCH(QString, name);
    QCOMPARE(safeFileName(proposed), name);
}

void TestBrowserAddress::aLongNameIsCut()
{
    const QString name = safeFileName(u"漢"_s.repeated(400) + u".html"_s);
    QVERIFY(name.toUtf8().size() <= 200);
    QVERIFY(name.endsWith(u".html"_s));
    QVERIFY(name.startsWith(u"漢"_s));
}

QTEST_APPLESS_MAIN(TestBrowserAddress)
#include "TestBrowserAddress.moc"
