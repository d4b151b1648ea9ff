#include <QTest>

#include "platform/ftp/ListingParser.h"
#include "platform/ftp/ListingText.h"
#include "platform/ftp/RemoteNames.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using Kind = ListingEntry::Kind;
using Format = ListingParser::Format;

Q_DECLARE_METATYPE(vandrel::ListingEntry::Kind)

/// Listings as servers send them, and the names in them on their way to the user and back.
class TestFtpListing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsALine_data();
    void readsALine();
    void readsAMachinesLine_data();
    void readsAMachinesLine();
    void passesOverWhatIsNoEntry_data();
    void passesOverWhatIsNoEntry();
    void aLineOfAnUnknownFormIsShownWhole();
    void aTimeWithoutAYearIsOfTheLastTwelveMonths_data();
    void aTimeWithoutAYearIsOfTheLastTwelveMonths();
    void piecesOfAnySizeGiveTheSameEntries();
    void aLastLineNeedsNoEnd();
    void aLineTooLongIsPassedOverAndCounted();

    void namesSurviveTheListing_data();
    void namesSurviveTheListing();
    void everyOctetSurvives();
    void namesCannotForgeLines();
    void aPathKeepsItsSlashes();
    void halfASurrogatePairIsNoName();

    void linesReadWell_data();
    void linesReadWell();
    void datesAtTheEndsOfTime();
    void foldersComeFirstAndNamesInOrder();
};

namespace {

const QDate today(2024, 5, 15);

std::vector<ListingEntry> entriesOf(Format format, const QByteArray &listing)
{
    ListingParser parser(format, today);
    std::vector<ListingEntry> entries = parser.add(listing);
    for (ListingEntry &entry : parser.finish())
        entries.push_back(std::move(entry));
    return entries;
}

// What the form does with a chosen line.
QString picked(const QString &line)
{
    const qsizetype slash = line.indexOf(u'/') + 1;
    return line.left(slash - 3);
}

QString stampOf(const ListingEntry &entry)
{
    const QString date = entry.date.toString(u"yyyy-MM-dd"_s);
    return entry.time.isValid() ? date + entry.time.toString(u" HH:mm"_s) : date;
}

void addRow(const char *title, const char *line, const char *name, Kind kind, qint64 size, const char *stamp)
{
    QTest::newRow(title) << QByteArray(line) << QByteArray(name) << kind << size << QString::fromLatin1(stamp)
                         << QByteArray();
}

void addColumns()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<qint64>("size");
    QTest::addColumn<QString>("stamp");
    QTest::addColumn<QByteArray>("target");
}

void compareOnly(const std::vector<ListingEntry> &entries)
{
    QFETCH(QByteArray, name);
    QFETCH(Kind, kind);
    QFETCH(qint64, size);
    QFETCH(QString, stamp);
    QFETCH(QByteArray, target);
    QCOMPARE(entries.size(), 1U);
    QCOMPARE(entries[0].name, name);
    QCOMPARE(entries[0].kind, kind);
    QCOMPARE(entries[0].size, size);
    QCOMPARE(stampOf(entries[0]), stamp);
    QCOMPARE(entries[0].target, target);
}

} // namespace

void TestFtpListing::readsALine_data()
{
    addColumns();
    addRow("a file", "-rw-r--r--    1 0        0            1234 Jan 05 12:30 readme.txt", "readme.txt",
           Kind::File, 1234, "2024-01-05 12:30");
    addRow("a folder of another year", "drwxr-xr-x    2 ftp      ftp          4096 Nov 30  2019 pub", "pub",
           Kind::Folder, 4096, "2019-11-30");
    addRow("blanks in the name", "-rw-r--r-- 1 u g 5 Jan  5 12:30 a  b c", "a  b c", Kind::File, 5,
           "2024-01-05 12:30");
    addRow("a blank before the name", "-rw-r--r-- 1 u g 5 Jan  5 12:30  lead", " lead", Kind::File, 5,
           "2024-01-05 12:30");
    addRow("a blank behind the name", "-rw-r--r-- 1 u g 5 Jan  5  2020 trail ", "trail ", Kind::File, 5,
           "2020-01-05");
    addRow("a dash before the name", "-rw-r--r-- 1 u g 5 Jan  5 12:30 -rf", "-rf", Kind::File, 5,
           "2024-01-05 12:30");
    addRow("no group", "-rw-r--r--   1 owner   531 Jan 29 03:26 README", "README", Kind::File, 531,
           "2024-01-29 03:26");
    addRow("an owner with blanks", "-rwxrwx---+  1 DOM\\user Domain Users 77 Apr  1 08:00 x.doc", "x.doc",
           Kind::File, 77, "2024-04-01 08:00");
    addRow("an owner called as a month", "-rw-r--r-- 1 may jun 12 Mar  3 10:00 dec", "dec", Kind::File, 12,
           "2024-03-03 10:00");
    addRow("a name that holds a date", "-rw-r--r-- 1 u g 12 Mar  3 10:00 100 Jan 1 12:00 x",
           "100 Jan 1 12:00 x", Kind::File, 12, "2024-03-03 10:00");
    addRow("an access list", "-rw-r--r--@ 1 me staff 9 Feb 29 00:00 f", "f", Kind::File, 9,
           "2024-02-29 00:00");
    addRow("more than four gigabytes", "-rw-r--r-- 1 u g 1099511627776 Jan  1 00:00 big", "big", Kind::File,
           1099511627776, "2024-01-01 00:00");
    addRow("a device", "crw-rw-rw- 1 root root 1, 3 Jan  1 00:00 null", "null", Kind::Other, -1,
           "2024-01-01 00:00");
    addRow("ISO date and time", "-rw-r--r-- 1 u g 5 2021-02-03 04:05 iso", "iso", Kind::File, 5,
           "2021-02-03 04:05");
    addRow("full ISO date and time", "-rw-r--r-- 1 u g 5 2021-02-03 04:05:06.000000000 +0100 iso full",
           "iso full", Kind::File, 5, "2021-02-03 04:05");
    addRow("ISO month and day", "-rw-r--r-- 1 u g 5 02-03 04:05 short", "short", Kind::File, 5,
           "2024-02-03 04:05");
    addRow("the day before the month", "-rw-r--r-- 1 u g 5 3. Feb 2021 tag", "tag", Kind::File, 5,
           "2021-02-03");
    addRow("a German month", "drwxr-xr-x 2 u g 4096 M\xC3\xA4r  3 10:00 d", "d", Kind::Folder, 4096,
           "2024-03-03 10:00");
    addRow("a French month", "-rw-r--r-- 1 u g 8 ao\xC3\xBBt 3 2020 f", "f", Kind::File, 8, "2020-08-03");
    addRow("a month nobody knows", "-rw-r--r-- 1 u g 8 xyz 3 2020 f g", "f g", Kind::File, 8, "");
    addRow("rights in brackets", "d [R----F--] supervisor            512       Jan 16 18:53    login",
           "   login", Kind::Folder, 512, "2024-01-16 18:53");
    addRow("a file with rights in brackets", "- [RWCEAFMS] rhesus 214059 Oct 20 15:27 cx.exe", "cx.exe",
           Kind::File, 214059, "2023-10-20 15:27");
    addRow("a name of odd octets", "-rw-r--r-- 1 u g 8 Jan  3 2020 \xE9\x01\xFF", "\xE9\x01\xFF", Kind::File,
           8, "2020-01-03");
    QTest::newRow("a link") << QByteArray("lrwxrwxrwx 1 root root 7 Jan  1 00:00 bin -> usr/bin")
                            << QByteArray("bin") << Kind::Link << qint64(7) << u"2024-01-01 00:00"_s
                            << QByteArray("usr/bin");
    addRow("DOS-style folder", "01-16-02  11:14AM       <DIR>          epsgroup", "epsgroup", Kind::Folder,
           -1, "2002-01-16 11:14");
    addRow("DOS-style file", "06-05-03  03:19PM                 1973 read me.txt", "read me.txt", Kind::File,
           1973, "2003-06-05 15:19");
    addRow("DOS-style at midnight", "06-05-2023  12:00AM                 1973  x", " x", Kind::File, 1973,
           "2023-06-05 00:00");
    addRow("DOS-style, half of the day apart", "06-05-2023  03:19 PM  1,234,567 x", "x", Kind::File, 1234567,
           "2023-06-05 15:19");
    addRow("DOS-style, day first", "31.12.2023  23:59    12 x", "x", Kind::File, 12, "2023-12-31 23:59");
    addRow("DOS-style, year first", "2023-12-31  23:59    12 x", "x", Kind::File, 12, "2023-12-31 23:59");
    addRow("DOS-style, last century", "12-31-98  11:59PM    12 x", "x", Kind::File, 12, "1998-12-31 23:59");
    QTest::newRow("DOS-style link") << QByteArray(
        "10-31-23  10:00AM       <SYMLINKD>     docs [\\\\?\\c:\\d]")
                                    << QByteArray("docs") << Kind::Link << qint64(-1) << u"2023-10-31 10:00"_s
                                    << QByteArray("\\\\?\\c:\\d");
}

void TestFtpListing::readsALine()
{
    QFETCH(QByteArray, line);
    compareOnly(entriesOf(Format::Long, line + "\r\n"));
}

void TestFtpListing::readsAMachinesLine_data()
{
    addColumns();
    // The machine's moments are universal; the expected ones are local.
    const QString local
        = QDateTime(QDate(2020, 1, 2), QTime(3, 4), Qt::UTC).toLocalTime().toString(u"yyyy-MM-dd HH:mm"_s);
    QTest::newRow("a file") << QByteArray("type=file;size=123;modify=20200102030405;perm=r; a file")
                            << QByteArray("a file") << Kind::File << qint64(123) << local << QByteArray();
    QTest::newRow("capitals and a fraction")
        << QByteArray("Type=FILE;Modify=20200102030405.678;Size=0; x") << QByteArray("x") << Kind::File
        << qint64(0) << local << QByteArray();
    addRow("a folder", "type=dir;sizd=4096; sub", "sub", Kind::Folder, -1, "");
    addRow("no facts", " bare", "bare", Kind::Other, -1, "");
    addRow("a blank before the name", "type=file;  x", " x", Kind::File, -1, "");
    addRow("a name with semicolons", "type=file; a;b=c; d", "a;b=c; d", Kind::File, -1, "");
    addRow("a path for a name", "type=file; pub/x", "pub/x", Kind::File, -1, "");
    addRow("a size that is none", "type=file;size=-1; x", "x", Kind::File, -1, "");
    addRow("a size beyond all numbers", "type=file;size=99999999999999999999; x", "x", Kind::File, -1, "");
    addRow("a moment that is none", "type=file;modify=20201345000000; x", "x", Kind::File, -1, "");
    addRow("a fact without a value", "type=file;size;modify=2020; x", "x", Kind::File, -1, "");
    addRow("an unknown type", "type=OS.vms=x; x", "x", Kind::Other, -1, "");
    QTest::newRow("a link") << QByteArray("type=OS.unix=slink:/usr/bin; bin") << QByteArray("bin")
                            << Kind::Link << qint64(-1) << QString() << QByteArray("/usr/bin");
}

void TestFtpListing::readsAMachinesLine()
{
    QFETCH(QByteArray, line);
    compareOnly(entriesOf(Format::Machine, line + "\r\n"));
}

void TestFtpListing::passesOverWhatIsNoEntry_data()
{
    QTest::addColumn<Format>("format");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("the number of blocks") << Format::Long << QByteArray("total 1234");
    QTest::newRow("the folder") << Format::Long << QByteArray("drwxr-xr-x 2 u g 4096 Jan  1 00:00 .");
    QTest::newRow("its parent") << Format::Long << QByteArray("drwxr-xr-x 2 u g 4096 Jan  1 00:00 ..");
    QTest::newRow("nothing") << Format::Long << QByteArray();
    QTest::newRow("the machine's folder") << Format::Machine << QByteArray("type=cdir; /pub");
    QTest::newRow("the machine's parent") << Format::Machine << QByteArray("type=pdir; /");
    QTest::newRow("the machine's folder by name") << Format::Machine << QByteArray("type=dir; .");
    QTest::newRow("a machine's line without a name") << Format::Machine << QByteArray("type=file; ");
    QTest::newRow("a machine's line without facts") << Format::Machine << QByteArray("hello world");
    QTest::newRow("the folder alone") << Format::Names << QByteArray(".");
    QTest::newRow("the parent alone") << Format::Names << QByteArray("..");
}

void TestFtpListing::passesOverWhatIsNoEntry()
{
    QFETCH(Format, format);
    QFETCH(QByteArray, line);
    const auto entries = entriesOf(format, line + "\r\nx\r\n");
    // The machine's form has no bare names.
    QCOMPARE(entries.size(), format == Format::Machine ? 0U : 1U);
}

void TestFtpListing::aLineOfAnUnknownFormIsShownWhole()
{
    for (const char *line : {"not a listing at all", "total eclipse.mp3", "total 12 monkeys", "drwxr-xr-x"}) {
        const auto entries = entriesOf(Format::Long, line);
        QCOMPARE(entries.size(), 1U);
        QCOMPARE(entries[0].name, QByteArray(line));
        QCOMPARE(entries[0].kind, Kind::Other);
    }
}

void TestFtpListing::aTimeWithoutAYearIsOfTheLastTwelveMonths_data()
{
    QTest::addColumn<QDate>("now");
    QTest::addColumn<QByteArray>("date");
    QTest::addColumn<QDate>("expected");
    QTest::newRow("this year") << QDate(2024, 5, 15) << QByteArray("May 14") << QDate(2024, 5, 14);
    QTest::newRow("tomorrow, elsewhere") << QDate(2024, 5, 15) << QByteArray("May 16") << QDate(2024, 5, 16);
    QTest::newRow("last year") << QDate(2024, 5, 15) << QByteArray("May 17") << QDate(2023, 5, 17);
    QTest::newRow("New Year's Eve") << QDate(2024, 1, 1) << QByteArray("Dec 31") << QDate(2023, 12, 31);
    QTest::newRow("New Year, elsewhere") << QDate(2023, 12, 31) << QByteArray("Jan  1") << QDate(2023, 1, 1);
    QTest::newRow("a leap day") << QDate(2023, 3, 1) << QByteArray("Feb 29") << QDate(2020, 2, 29);
}

void TestFtpListing::aTimeWithoutAYearIsOfTheLastTwelveMonths()
{
    QFETCH(QDate, now);
    QFETCH(QByteArray, date);
    QFETCH(QDate, expected);
    ListingParser parser(Format::Long, now);
    const auto entries = parser.add("-rw-r--r-- 1 u g 5 " + date + " 12:30 x\r\n");
    QCOMPARE(entries.size(), 1U);
    QCOMPARE(entries[0].date, expected);
    QCOMPARE(entries[0].time, QTime(12, 30));
}

void TestFtpListing::piecesOfAnySizeGiveTheSameEntries()
{
    const QByteArray listing
        = "total 2\r\n-rw-r--r-- 1 u g 5 Jan  5 12:30 one\r\n\ndrwxr-xr-x 1 u g 5 Jan  5 12:30 two\n"
          "-rw-r--r-- 1 u g 5 Jan  5 12:30 three";
    for (qsizetype piece = 1; piece <= listing.size(); ++piece) {
        ListingParser parser(Format::Long, today);
        QByteArrayList names;
        const auto collect = [&names](const std::vector<ListingEntry> &entries) {
            for (const ListingEntry &entry : entries)
                names.append(entry.name);
        };
        for (qsizetype at = 0; at < listing.size(); at += piece)
            collect(parser.add(listing.mid(at, piece)));
        collect(parser.finish());
        QCOMPARE(names, QByteArrayList({"one", "two", "three"}));
    }
}

void TestFtpListing::aLastLineNeedsNoEnd()
{
    QCOMPARE(entriesOf(Format::Names, "a\r\nb").size(), 2U);
    QCOMPARE(entriesOf(Format::Names, "a\r\nb\r\n").size(), 2U);
}

void TestFtpListing::aLineTooLongIsPassedOverAndCounted()
{
    const QByteArray longest(ListingParser::longestLine, 'x');
    for (const qsizetype piece : {qsizetype(1000), qsizetype(100'000)}) {
        const QByteArray listing = "a\n" + longest + "\n" + longest + "y\nb\n";
        ListingParser parser(Format::Names, today);
        std::size_t entries = 0;
        for (qsizetype at = 0; at < listing.size(); at += piece)
            entries += parser.add(listing.mid(at, piece)).size();
        QCOMPARE(entries, 3U);
        QCOMPARE(parser.skippedLines(), 1);
    }
}

void TestFtpListing::namesSurviveTheListing_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("text");
    const auto add = [](const char *title, const QByteArray &name, const QString &text) {
        QTest::newRow(title) << name << text;
    };
    add("plain", "readme.txt", u"readme.txt"_s);
    add("one letter", "x", u"x"_s);
    add("blanks inside and before", "  a  b", u"  a  b"_s);
    add("a blank behind", "a ", u"a\uF020"_s);
    add("blanks alone", "  ", u" \uF020"_s);
    add("dashes", "-rf", u"-rf"_s);
    add("signs that DOS-style names lack", "a\\b:c*d?\"e\"|<f>", u"a\\b:c*d?\"e\"|<f>"_s);
    add("UTF-8", "\xC3\xA9t\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80", u"été € 😀"_s);
    add("not UTF-8", "\xE9t\xE9", u"\uF0E9t\uF0E9"_s);
    add("not UTF-8, with a private character's octets", "\xE9\xEF\x80\xA0", u"\uF0E9\uF0EF\uF080\uF0A0"_s);
    add("a private character", "\xEF\x80\xA0", u"\uF0EF\uF080\uF0A0"_s);
    add("a byte order mark", "\xEF\xBB\xBFx", u"\uFEFFx"_s);
    add("a slash", "../etc/passwd", u"..\uF02Fetc\uF02Fpasswd"_s);
    add("a slash alone", "/", u"\uF02F"_s);
    add("line ends", "a\r\nb", u"a\uF00D\uF00Ab"_s);
    add("a NUL", QByteArray("a\0b", 3), u"a\uF000b"_s);
}

void TestFtpListing::namesSurviveTheListing()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, text);
    ListingEntry entry;
    entry.name = name;
    QCOMPARE(shownRemoteName(name), text);
    const QString fromList = picked(listingLine(entry));
    QCOMPARE(fromList, text);
    QVERIFY(!fromList.endsWith(u' '));
    QCOMPARE(sentRemoteName(fromList).value_or(QByteArray()), name);
}

void TestFtpListing::everyOctetSurvives()
{
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            ListingEntry entry;
            entry.name = QByteArray().append(static_cast<char>(first)).append(static_cast<char>(second));
            const auto sent = sentRemoteName(picked(listingLine(entry)));
            QVERIFY2(sent == entry.name, entry.name.toHex().constData());
        }
    }
}

void TestFtpListing::namesCannotForgeLines()
{
    ListingEntry entry;
    entry.name = "a\r\nb  /File\x1B[2J";
    entry.target = "x\r\nevil";
    const QString line = listingLine(entry);
    for (const QChar character : line)
        QVERIFY(character >= u' ');
    QCOMPARE(line.count(u'/'), 1);
}

void TestFtpListing::aPathKeepsItsSlashes()
{
    QCOMPARE(shownRemotePath("/pub/\xE9 "), u"/pub/\uF0E9\uF020"_s);
    QCOMPARE(sentRemoteName(u"/pub/\uF0E9\uF020"), QByteArray("/pub/\xE9 "));
}

void TestFtpListing::halfASurrogatePairIsNoName()
{
    QVERIFY(!sentRemoteName(QString(QChar(0xD800))));
    QVERIFY(sentRemoteName(u"😀"_s));
}

void TestFtpListing::linesReadWell_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("shown");
    QTest::newRow("a file") << QByteArray("-rw-r--r-- 1 u g 1234567 Jan  5 12:30 big.iso")
                            << u"big.iso  /File         1,234,567  2024-01-05 12:30"_s;
    QTest::newRow("a small file") << QByteArray("-rw-r--r-- 1 u g 7 Jan  5 2020 a")
                                  << u"a  /File                 7  2020-01-05      "_s;
    QTest::newRow("an empty file") << QByteArray("-rw-r--r-- 1 u g 0 JAN  5 2020 a")
                                   << u"a  /File                 0  2020-01-05      "_s;
    QTest::newRow("noughts in a size") << QByteArray("-rw-r--r-- 1 u g 1000005 Jan  5 2020 a")
                                       << u"a  /File         1,000,005  2020-01-05      "_s;
    QTest::newRow("the greatest size of a file that keeps its column")
        << QByteArray("-rw-r--r-- 1 u g 999999999999 Dec 31 2020 a")
        << u"a  /File   999,999,999,999  2020-12-31      "_s;
    QTest::newRow("the greatest size of all")
        << QByteArray("-rw-r--r-- 1 u g 9223372036854775807 Dec 31 2020 a")
        << u"a  /File   9,223,372,036,854,775,807  2020-12-31      "_s;
    QTest::newRow("a folder") << QByteArray("drwxr-xr-x 1 u g 4096 Jan  5 12:30 pub")
                              << u"pub  /Folder                  2024-01-05 12:30"_s;
    QTest::newRow("a link") << QByteArray("lrwxr-xr-x 1 u g 4 Jan  5 12:30 l -> /a/b")
                            << u"l  /Link                    2024-01-05 12:30  -> /a/b"_s;
    QTest::newRow("a name alone") << QByteArray("x") << u"x  /Other                                   "_s;
}

void TestFtpListing::linesReadWell()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, shown);
    const auto entries = entriesOf(Format::Long, line);
    QCOMPARE(entries.size(), 1U);
    QCOMPARE(listingLine(entries[0]), shown);
}

// Local time may lie in a year that no server can name.
void TestFtpListing::datesAtTheEndsOfTime()
{
    ListingEntry entry;
    entry.name = "a";
    entry.time = QTime(5, 6);
    entry.date = QDate(10000, 1, 1);
    QCOMPARE(listingLine(entry), u"a  /Other                   10000-01-01 05:06"_s);
    entry.date = QDate(-1, 12, 31);
    QCOMPARE(listingLine(entry), u"a  /Other                   0000-12-31 05:06"_s);
    entry.date = QDate(1, 1, 1);
    QCOMPARE(listingLine(entry), u"a  /Other                   0001-01-01 05:06"_s);
}

void TestFtpListing::foldersComeFirstAndNamesInOrder()
{
    const QByteArray said = "-rw-r--r-- 1 u g 7 Jan  5 2020 b.txt\r\n"
                            "-rw-r--r-- 1 u g 7 Jan  5 2020 Zebra\r\n"
                            "drwxr-xr-x 1 u g 7 Jan  5 2020 y\r\n"
                            "-rw-r--r-- 1 u g 7 Jan  5 2020 a.txt\r\n"
                            "lrwxr-xr-x 1 u g 7 Jan  5 2020 c -> y\r\n"
                            "-rw-r--r-- 1 u g 7 Jan  5 2020 A.txt\r\n"
                            "drwxr-xr-x 1 u g 7 Jan  5 2020 X\r\n"
                            "-rw-r--r-- 1 u g 7 Jan  5 2020 \xC3\x84.txt\r\n"
                            "-rw-r--r-- 1 u g 7 Jan  5 2020 \xC3\xA4.txt\r\n";
    ListingLines lines;
    QCOMPARE(lines.inOrder(), QString());
    for (const ListingEntry &entry : entriesOf(Format::Long, said))
        lines.add(entry);
    const QString text = lines.inOrder();
    QVERIFY(text.endsWith(u"\r\n"_s));
    QStringList names;
    for (const QString &line : text.chopped(2).split(u"\r\n"_s))
        names.append(picked(line));
    QCOMPARE(names,
             QStringList({u"X"_s, u"y"_s, u"A.txt"_s, u"a.txt"_s, u"b.txt"_s, u"c"_s, u"Zebra"_s, u"Ä.txt"_s,
                          u"ä.txt"_s}));
}

QTEST_GUILESS_MAIN(TestFtpListing)
#include "TestFtpListing.moc"
