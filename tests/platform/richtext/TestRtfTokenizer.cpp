#include <QTest>

#include "platform/richtext/RtfTokenizer.h"

using namespace vandrel;

namespace {

// Each token as one word, in order.
QByteArray tokensOf(QByteArrayView rtf)
{
    using Type = RtfToken::Type;
    QByteArray shown;
    RtfTokenizer tokens(rtf);
    for (RtfToken token = tokens.next(); token.type != Type::End; token = tokens.next()) {
        shown += shown.isEmpty() ? "" : " ";
        switch (token.type) {
        case Type::GroupOpen:
            shown += '{';
            break;
        case Type::GroupClose:
            shown += '}';
            break;
        case Type::Word:
            shown += '\\' + token.text.toByteArray();
            if (token.hasNumber)
                shown += '=' + QByteArray::number(token.number);
            break;
        case Type::Symbol:
            shown += "sym:" + token.text.toByteArray();
            break;
        case Type::Octet:
            shown += "hex:" + QByteArray::number(token.number);
            break;
        case Type::Text:
            shown += '"' + token.text.toByteArray() + '"';
            break;
        case Type::Binary:
            shown += (token.damaged ? "damaged:" : "bin:") + token.text.toByteArray();
            break;
        case Type::End:
            break;
        }
    }
    return shown;
}

} // namespace

class TestRtfTokenizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void splits_data()
    {
        QTest::addColumn<QByteArray>("rtf");
        QTest::addColumn<QByteArray>("tokens");
        const auto row = [](const char *name, const QByteArray &rtf, const QByteArray &tokens) {
            QTest::newRow(name) << rtf << tokens;
        };
        row("nothing", "", "");
        row("group", "{\\b x}", "{ \\b \"x\" }");
        row("one blank belongs to the word", "\\b  x", "\\b \" x\"");
        row("number ends the word", "\\fs20x", "\\fs=20 \"x\"");
        row("negative number", "\\li-20 x", "\\li=-20 \"x\"");
        row("hyphen without digits is text", "\\b-x", "\\b \"-x\"");
        row("huge numbers are cut", "\\a99999999999\\b-99999999999 ", "\\a=2147483647 \\b=-2147483647");
        row("word is cut after 32 letters", "\\" + QByteArray(33, 'a'),
            "\\" + QByteArray(32, 'a') + " \"a\"");
        row("line ends are no text", "a\r\nb", "\"a\" \"b\"");
        row("NULs are no text", QByteArray("a\0b", 3), "\"a\" \"b\"");
        row("hexadecimal", "\\'e9\\'E9", "hex:233 hex:233");
        row("broken hexadecimal", "\\'\\'4\\'zzx", "\"zzx\"");
        row("symbols", "\\~\\*\\\\", "sym:~ sym:* sym:\\");
        row("escaped line end", "\\\r\nx", "sym:\r \"x\"");
        row("backslash at the end", "a\\", "\"a\"");
        row("binary", "\\bin3 }{\\x", "bin:}{\\ \"x\"");
        row("binary past the end", "\\bin9 ab", "damaged:ab");
        row("binary of negative length", "\\bin-1 ab", "damaged: \"ab\"");
        row("binary without number", "\\bin ab", "bin: \"ab\"");
    }

    void splits()
    {
        QFETCH(QByteArray, rtf);
        QTEST(tokensOf(rtf), "tokens");
    }

    void skipsGroups()
    {
        const QByteArray rtf("a{b{c}\\bin1 }d}e}f");
        RtfTokenizer tokens(rtf);
        tokens.next();
        const RtfTokenizer::Skipped skipped = tokens.skipGroup();
        QVERIFY(skipped.closed);
        QVERIFY(skipped.intact);
        QCOMPARE(rtf.mid(tokens.position()), QByteArray("f"));
    }

    void tellsDamagedGroups()
    {
        RtfTokenizer open("{a");
        QVERIFY(!open.skipGroup().closed);
        RtfTokenizer lying("\\bin-4 a}");
        QVERIFY(!lying.skipGroup().intact);
    }
};

QTEST_APPLESS_MAIN(TestRtfTokenizer)
#include "TestRtfTokenizer.moc"
