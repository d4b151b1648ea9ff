#include <memory>
#include <random>
#include <set>

#include <QTest>
#include <QThread>

#include "controls/DriveView.h"
#include "runtime/RuntimeError.h"
#include "tests/runtime/FailureOf.h"

using namespace vandrel;

namespace {

// Octets that lie near every rule of the mapping come far more often than chance would bring them.
QByteArray randomName(std::mt19937 &random)
{
    static const QByteArrayList pieces{"\xEF\x80\x81",
                                       "\xEF\x82\xBF",
                                       "\xEF\x80\x80",
                                       "\xEF\x84\x80",
                                       "\xEF\xBB\xBF",
                                       "\xED\xA0\x80",
                                       "\xC0\xAF",
                                       "\xF0\x9F\x98\x80",
                                       "\xF4\x90\x80\x80",
                                       "\xEF\x80\xA0",
                                       " ",
                                       "?",
                                       "\\",
                                       "\xEF\x81\x81",
                                       ":",
                                       "\x7F",
                                       "e\xCC\x81",
                                       "\xF5\x80\x80\x80",
                                       "\xE2\x82",
                                       "a"};
    std::uniform_int_distribution<int> octet(1, 255);
    std::uniform_int_distribution<int> length(1, 12);
    std::uniform_int_distribution<qsizetype> piece(0, pieces.size() - 1);
    QByteArray name;
    for (int left = length(random); left > 0; --left) {
        if (random() % 2 == 0)
            name += pieces[piece(random)];
        else if (const char c = static_cast<char>(octet(random)); c != '/')
            name += c;
    }
    return name.isEmpty() || name == "." || name == ".." ? QByteArray("x") : name;
}

struct UsualDrives : DriveView {
    UsualDrives()
    {
        setDrive('c', "/home/user");
        setDrive('d', "/media/user/stick");
        setDrive('z', "/");
    }
};

} // namespace

class TestDriveView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesAreShown_data();
    void namesAreShown();
    void anyNativeNameComesBack();
    void shownNamesAreDistinctAndFreeOfReservedCharacters();
    void namesThatCannotExistAreRefused();

    void longestRootWins_data();
    void longestRootWins();
    void aRootIsAWholeNameNotAPrefixOfOne();
    void aPathUnderNoDriveIsGivenAsANativeOne();
    void aListKeepsItsDrive();

    void typedPathsAreResolved_data();
    void typedPathsAreResolved();
    void badPathsAreRefused_data();
    void badPathsAreRefused();
    void anyNativePathComesBack();
    void everyDriveRemembersItsFolder();
    void currentFolderIsShownOnItsOwnDrive();
    void changingADriveForgetsItsFolder();
    void relativePathsFailOnARemovedDrive();
    void workersTurnPathsWhileDrivesComeAndGo();
};

void TestDriveView::namesAreShown_data()
{
    QTest::addColumn<QByteArray>("native");
    QTest::addColumn<QString>("dos");

    QTest::newRow("plain") << QByteArray("letter.rtf") << u"letter.rtf"_qs;
    QTest::newRow("accents") << QByteArray("r\xC3\xA9sum\xC3\xA9") << u"r\u00e9sum\u00e9"_qs;
    QTest::newRow("beyond the first plane") << QByteArray("\xF0\x9F\x98\x80") << u"\U0001F600"_qs;
    QTest::newRow("decomposed stays decomposed") << QByteArray("e\xCC\x81") << u"e\u0301"_qs;
    QTest::newRow("byte order mark first") << QByteArray("\xEF\xBB\xBF"
                                                         "a")
                                           << u"\uFEFFa"_qs;
    QTest::newRow("reserved") << QByteArray("\"*:<>?|\\")
                              << u"\uF022\uF02A\uF03A\uF03C\uF03E\uF03F\uF07C\uF05C"_qs;
    QTest::newRow("control") << QByteArray("\x01\n\x1F\x7F") << u"\uF001\uF00A\uF01F\uF07F"_qs;
    QTest::newRow("final blank") << QByteArray(" a b ") << u" a b\uF020"_qs;
    QTest::newRow("only blanks") << QByteArray("  ") << u" \uF020"_qs;
    QTest::newRow("not UTF-8") << QByteArray("caf\xE9.txt") << u"caf\uF0E9.txt"_qs;
    QTest::newRow("cut sequence") << QByteArray("\xE2\x82") << u"\uF0E2\uF082"_qs;
    QTest::newRow("overlong") << QByteArray("\xC0\xAF") << u"\uF0C0\uF0AF"_qs;
    QTest::newRow("surrogate") << QByteArray("\xED\xA0\x80") << u"\uF0ED\uF0A0\uF080"_qs;
    QTest::newRow("beyond Unicode") << QByteArray("\xF4\x90\x80\x80") << u"\uF0F4\uF090\uF080\uF080"_qs;
    QTest::newRow("first private character") << QByteArray("\xEF\x80\x81") << u"\uF0EF\uF080\uF081"_qs;
    QTest::newRow("last private character") << QByteArray("\xEF\x83\xBF") << u"\uF0EF\uF083\uF0BF"_qs;
    QTest::newRow("private neighbour below") << QByteArray("\xEF\x80\x80") << u"\uF000"_qs;
    QTest::newRow("private neighbour above") << QByteArray("\xEF\x84\x80") << u"\uF100"_qs;
}

void TestDriveView::namesAreShown()
{
    QFETCH(QByteArray, native);
    QFETCH(QString, dos);

    QCOMPARE(dosName(native), dos);
    QCOMPARE(nativeName(dos), native);
}

void TestDriveView::anyNativeNameComesBack()
{
    std::mt19937 random(20261);
    for (int i = 0; i < 50000; ++i) {
        const QByteArray native = randomName(random);
        if (nativeName(dosName(native)) != native)
            QFAIL(("not mapped back: " + native.toHex(' ')).constData());
    }
}

void TestDriveView::shownNamesAreDistinctAndFreeOfReservedCharacters()
{
    std::mt19937 random(7);
    std::set<QByteArray> natives;
    std::set<QString> shown;
    for (int i = 0; i < 20000; ++i) {
        const QByteArray native = randomName(random);
        const QString dos = dosName(native);
        natives.insert(native);
        shown.insert(dos);
        for (const QChar c : dos)
            QVERIFY2(c >= u' ' && !u"\"*:<>?|\\/"_qs.contains(c), native.toHex(' ').constData());
        QVERIFY2(!dos.endsWith(u' '), native.toHex(' ').constData());
    }
    QCOMPARE(shown.size(), natives.size());
}

void TestDriveView::namesThatCannotExistAreRefused()
{
    QCOMPARE(test::numberOf([] { nativeName(u"a/b"_qs); }), error::BadFileName);
    QCOMPARE(test::numberOf([] { nativeName(u"a"_qs + QChar(0)); }), error::BadFileName);
    QCOMPARE(test::numberOf([] { nativeName(u"a"_qs + QChar(0xD800)); }), error::BadFileName);
}

void TestDriveView::longestRootWins_data()
{
    QTest::addColumn<QByteArray>("native");
    QTest::addColumn<QString>("dos");

    QTest::newRow("home itself") << QByteArray("/home/user") << u"c:\\"_qs;
    QTest::newRow("home, trailing separator") << QByteArray("/home/user/") << u"c:\\"_qs;
    QTest::newRow("in home") << QByteArray("/home/user/a/b.rtf") << u"c:\\a\\b.rtf"_qs;
    QTest::newRow("root") << QByteArray("/") << u"z:\\"_qs;
    QTest::newRow("elsewhere") << QByteArray("/etc/fstab") << u"z:\\etc\\fstab"_qs;
    QTest::newRow("above home") << QByteArray("/home") << u"z:\\home"_qs;
    QTest::newRow("mount") << QByteArray("/media/user/stick/x") << u"d:\\x"_qs;
    QTest::newRow("doubled separators") << QByteArray("//home//user//x") << u"c:\\x"_qs;
    QTest::newRow("dots") << QByteArray("/home/user/./a/../b") << u"c:\\b"_qs;
    QTest::newRow("backslash in a name") << QByteArray("/home/user/a\\b") << u"c:\\a\uF05Cb"_qs;
}

void TestDriveView::longestRootWins()
{
    QFETCH(QByteArray, native);
    QFETCH(QString, dos);

    QCOMPARE(UsualDrives().toDos(native), dos);
}

void TestDriveView::aRootIsAWholeNameNotAPrefixOfOne()
{
    QCOMPARE(UsualDrives().toDos("/home/username/x"), u"z:\\home\\username\\x"_qs);
}

void TestDriveView::aPathUnderNoDriveIsGivenAsANativeOne()
{
    DriveView view;
    view.setDrive('c', "/home/user");
    const QByteArray native = "/etc/a\\b\xE9";

    QCOMPARE(view.toDos(native), u"/etc/a\uF05Cb\uF0E9"_qs);
    QCOMPARE(view.toNative(view.toDos(native)), native);
}

void TestDriveView::aListKeepsItsDrive()
{
    const UsualDrives view;
    QCOMPARE(view.toDosOn('z', "/home/user/x"), u"z:\\home\\user\\x"_qs);
    QCOMPARE(view.toDosOn('Z', "/"), u"z:\\"_qs);
    QCOMPARE(view.toDosOn('d', "/home/user/x"), u"c:\\x"_qs);
    QCOMPARE(test::numberOf([&] { view.toDosOn('q', "/"); }), error::DeviceUnavailable);
}

void TestDriveView::typedPathsAreResolved_data()
{
    QTest::addColumn<QString>("dos");
    QTest::addColumn<QByteArray>("native");

    QTest::newRow("root") << u"c:\\"_qs << QByteArray("/home/user");
    QTest::newRow("root of the system") << u"z:\\"_qs << QByteArray("/");
    QTest::newRow("either separator") << u"C:/a\\b"_qs << QByteArray("/home/user/a/b");
    QTest::newRow("capital letter") << u"D:\\X"_qs << QByteArray("/media/user/stick/X");
    QTest::newRow("trailing separator") << u"c:\\a\\"_qs << QByteArray("/home/user/a");
    QTest::newRow("doubled separators") << u"c:\\\\a//b"_qs << QByteArray("/home/user/a/b");
    QTest::newRow("native") << u"/etc/fstab"_qs << QByteArray("/etc/fstab");
    QTest::newRow("native with a backslash") << u"/tmp/a\\b"_qs << QByteArray("/tmp/a\\b");
    QTest::newRow("native root") << u"/"_qs << QByteArray("/");
    QTest::newRow("relative") << u"x.rtf"_qs << QByteArray("/home/user/docs/x.rtf");
    QTest::newRow("relative to another drive") << u"d:x"_qs << QByteArray("/media/user/stick/x");
    QTest::newRow("drive alone") << u"c:"_qs << QByteArray("/home/user/docs");
    QTest::newRow("from the drive's root") << u"\\x"_qs << QByteArray("/home/user/x");
    QTest::newRow("parent") << u"..\\x"_qs << QByteArray("/home/user/x");
    QTest::newRow("parents end at the drive") << u"..\\..\\..\\x"_qs << QByteArray("/home/user/x");
    QTest::newRow("parents end at a mount") << u"d:\\a\\..\\..\\x"_qs << QByteArray("/media/user/stick/x");
    QTest::newRow("this folder") << u".\\x"_qs << QByteArray("/home/user/docs/x");
    QTest::newRow("dots in a name") << u"c:\\...\\..a"_qs << QByteArray("/home/user/.../..a");
    QTest::newRow("colon later on") << u"c:\\a:b"_qs << QByteArray("/home/user/a:b");
    QTest::newRow("escaped octets") << u"c:\\a\uF05Cb\uF0E9"_qs << QByteArray("/home/user/a\\b\xE9");
}

void TestDriveView::typedPathsAreResolved()
{
    QFETCH(QString, dos);
    QFETCH(QByteArray, native);

    UsualDrives view;
    view.setCurrentFolder(u"c:\\docs"_qs);
    QCOMPARE(view.toNative(dos), native);
}

void TestDriveView::badPathsAreRefused_data()
{
    QTest::addColumn<QString>("dos");
    QTest::addColumn<int>("number");

    QTest::newRow("unknown drive") << u"q:\\x"_qs << error::DeviceUnavailable;
    QTest::newRow("not a letter") << u"1:\\x"_qs << error::DeviceUnavailable;
    QTest::newRow("letter of another script") << u"\u0446:\\x"_qs << error::DeviceUnavailable;
    QTest::newRow("empty") << QString() << error::BadFileName;
    QTest::newRow("another machine") << u"\\\\machine\\share"_qs << error::BadFileName;
    QTest::newRow("NUL") << u"c:\\a"_qs + QChar(0) + u"b"_qs << error::BadFileName;
    QTest::newRow("NUL in a native path") << u"/a"_qs + QChar(0) << error::BadFileName;
    QTest::newRow("half a surrogate pair") << u"c:\\"_qs + QChar(0xDC00) << error::BadFileName;
}

void TestDriveView::badPathsAreRefused()
{
    QFETCH(QString, dos);
    QFETCH(int, number);

    QCOMPARE(test::numberOf([&] { UsualDrives().toNative(dos); }), number);
}

void TestDriveView::anyNativePathComesBack()
{
    const UsualDrives view;
    const QByteArrayList roots{"", "/home/user", "/home", "/media/user/stick"};
    std::mt19937 random(31);
    for (int i = 0; i < 20000; ++i) {
        QByteArray native = roots[static_cast<qsizetype>(random() % 4)];
        for (auto depth = 1 + random() % 3; depth > 0; --depth)
            native += '/' + randomName(random);
        if (view.toNative(view.toDos(native)) != native)
            QFAIL(("not mapped back: " + native.toHex(' ')).constData());
    }
}

void TestDriveView::everyDriveRemembersItsFolder()
{
    UsualDrives view;
    view.setCurrentFolder(u"c:\\docs"_qs);
    view.setCurrentFolder(u"d:\\music"_qs);

    QCOMPARE(view.currentDrive(), 'c');
    QCOMPARE(view.toNative(u"x"_qs), QByteArray("/home/user/docs/x"));
    view.setCurrentDrive('D');
    QCOMPARE(view.currentDrive(), 'd');
    QCOMPARE(view.toNative(u"x"_qs), QByteArray("/media/user/stick/music/x"));
    QCOMPARE(view.currentFolder('c'), u"c:\\docs"_qs);
    QCOMPARE(view.currentFolder('z'), u"z:\\"_qs);
    QCOMPARE(test::numberOf([&] { view.setCurrentDrive('q'); }), error::DeviceUnavailable);
    QCOMPARE(test::numberOf([&] { view.currentFolder('q'); }), error::DeviceUnavailable);
    QCOMPARE(test::numberOf([&] { view.setCurrentFolder(u"q:\\"_qs); }), error::DeviceUnavailable);
}

void TestDriveView::currentFolderIsShownOnItsOwnDrive()
{
    UsualDrives view;
    view.setCurrentFolder(u"z:\\home\\user"_qs);
    QCOMPARE(view.currentFolder('z'), u"z:\\home\\user"_qs);
    view.setCurrentFolder(u"/home/user/docs"_qs);
    QCOMPARE(view.currentFolder('c'), u"c:\\docs"_qs);
    QCOMPARE(view.currentFolder('z'), u"z:\\home\\user"_qs);
}

void TestDriveView::changingADriveForgetsItsFolder()
{
    UsualDrives view;
    view.setCurrentFolder(u"d:\\music"_qs);
    view.setDrive('d', "/media/user/stick/");
    QCOMPARE(view.currentFolder('d'), u"d:\\music"_qs);
    view.setDrive('d', "/media/user/other");
    QCOMPARE(view.currentFolder('d'), u"d:\\"_qs);
}

void TestDriveView::relativePathsFailOnARemovedDrive()
{
    UsualDrives view;
    view.setCurrentDrive('d');
    view.removeDrive('d');
    QCOMPARE(test::numberOf([&] { view.toNative(u"x"_qs); }), error::DeviceUnavailable);
    QCOMPARE(view.toDos("/media/user/stick/x"), u"z:\\media\\user\\stick\\x"_qs);
}

void TestDriveView::workersTurnPathsWhileDrivesComeAndGo()
{
    UsualDrives view;
    bool allRight = true;
    const std::unique_ptr<QThread> worker(QThread::create([&] {
        for (int i = 0; i < 5000; ++i)
            allRight = allRight && view.toNative(u"c:\\a"_qs) == "/home/user/a"
                && !view.toDos("/media/e/x").isEmpty();
    }));
    worker->start();
    for (int i = 0; i < 5000; ++i) {
        view.setDrive('e', "/media/e");
        view.removeDrive('e');
    }
    QVERIFY(worker->wait(60000));
    QVERIFY(allRight);
}

QTEST_GUILESS_MAIN(TestDriveView)
#include "TestDriveView.moc"
