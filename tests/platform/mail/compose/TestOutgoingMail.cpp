#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include "controls/DriveView.h"
#include "platform/mail/compose/AttachmentList.h"
#include "platform/mail/compose/OutgoingMail.h"
#include "runtime/Clock.h"
#include "runtime/RuntimeError.h"

using namespace vandrel;

namespace {

constexpr int longestReading = 30'000;

// Octets of every value, without a pattern that a line break or a block's end could hide behind.
QByteArray noise(int size)
{
    QByteArray octets(size, Qt::Uninitialized);
    quint32 state = 1;
    for (char &octet : octets) {
        state = state * 1664525 + 1013904223;
        octet = static_cast<char>(state >> 24);
    }
    return octets;
}

// Half a character of UTF-16, which no text can hold when it is sent.
QString halfPair()
{
    return u"a"_qs + QChar(0xd83d) + u"b"_qs;
}

QJsonArray pair(const QString &name, const QString &address)
{
    return {name, address};
}

// Compilers differ in whether an array of one array is that array itself.
QJsonArray listOf(const QList<QJsonArray> &pairs)
{
    QJsonArray list;
    for (const QJsonArray &each : pairs)
        list.append(each);
    return list;
}

} // namespace

// What is built is read by an independent parser, Python's own.
class TestOutgoingMail : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void fields();
    void subjects_data();
    void subjects();
    void names_data();
    void names();
    void manyRecipients();
    void addressesOutsideAscii();
    void bodies_data();
    void bodies();
    void attachmentNames_data();
    void attachmentNames();
    void attachmentSizes_data();
    void attachmentSizes();
    void mediaTypes();
    void severalAttachmentsInOrder();
    void attachmentListWithSemicolonsInNames_data();
    void attachmentListWithSemicolonsInNames();
    void aNameWithSemicolonIsFound();

    void lineBreaksInFieldsAreRefused_data();
    void lineBreaksInFieldsAreRefused();
    void missingPeopleAreRefused();
    void unusableAttachmentsAreRefused_data();
    void unusableAttachmentsAreRefused();
    void changesWhileSendingAreNoticed_data();
    void changesWhileSendingAreNoticed();
    void blocksAreBounded();

private:
    QString nativePath(const QString &name) const { return m_folder.filePath(name); }
    void writeFile(const QString &name, const QByteArray &contents);
    QString failureOf(const MailDraft &draft) const;
    QByteArray build(const MailDraft &draft) const;
    QJsonObject parse(const MailDraft &draft);

    const QTemporaryDir m_folder;
    DriveView m_drives;
    const MailDraft m_plain{u"me@example.org"_qs, u"you@example.org"_qs, {},
                            u"Subject"_qs,        u"Text\r\n"_qs,        {}};
};

void TestOutgoingMail::initTestCase()
{
    QVERIFY(m_folder.isValid());
    m_drives.setDrive('c', QFile::encodeName(m_folder.path()));
    m_drives.setDrive('z', "/");
}

void TestOutgoingMail::cleanup()
{
    Clock::reset();
}

void TestOutgoingMail::writeFile(const QString &name, const QByteArray &contents)
{
    QFile file(nativePath(name));
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(file.errorString()));
    QCOMPARE(file.write(contents), contents.size());
}

QString TestOutgoingMail::failureOf(const MailDraft &draft) const
{
    try {
        build(draft);
    } catch (const RuntimeError &failure) {
        return failure.text();
    }
    return {};
}

QByteArray TestOutgoingMail::build(const MailDraft &draft) const
{
    OutgoingMail mail(draft, m_drives);
    QByteArray all;
    for (QByteArray block = mail.next(); !block.isEmpty(); block = mail.next())
        all += block;
    if (all.size() != mail.size())
        QTest::qFail("the size told in advance is wrong", __FILE__, __LINE__);
    return all;
}

// Reads what is built, after the checks that hold for every message.
QJsonObject TestOutgoingMail::parse(const MailDraft &draft)
{
    const QString path = nativePath(u"built.eml"_qs);
    writeFile(u"built.eml"_qs, build(draft));
    QProcess python;
    python.start(
        u"/usr/bin/python3"_qs,
        {qEnvironmentVariable("VANDREL_SOURCE_DIR") + u"/tests/platform/mail/compose/read_mail.py"_qs, path});
    if (!python.waitForFinished(longestReading) || python.exitCode() != 0) {
        QTest::qFail(python.readAllStandardError().constData(), __FILE__, __LINE__);
        return {};
    }
    const QJsonObject found = QJsonDocument::fromJson(python.readAllStandardOutput()).object();
    const QByteArray defects = QJsonDocument(found[u"defects"].toArray()).toJson(QJsonDocument::Compact);
    [&] {
        QCOMPARE(defects, QByteArray("[]"));
        QVERIFY(found[u"longest"].toInt() <= 998);
        QCOMPARE(found[u"ends in a line break"].toBool(), true);
        QCOMPARE(found[u"bare line breaks"].toBool(), false);
        QCOMPARE(found[u"version"].toString(), u"1.0"_qs);
        QCOMPARE(found[u"type"].toString(), u"text/plain"_qs);
        QCOMPARE(found[u"charset"].toString(), u"utf-8"_qs);
    }();
    return found;
}

void TestOutgoingMail::fields()
{
    Clock::set(QDateTime(QDate(2024, 2, 29), QTime(23, 5, 9), Qt::OffsetFromUTC, -(3 * 3600 + 1800)));
    MailDraft draft = m_plain;
    draft.cc = u"third@example.org"_qs;
    const QJsonObject found = parse(draft);
    QCOMPARE(found[u"from"].toArray(), listOf({pair({}, u"me@example.org"_qs)}));
    QCOMPARE(found[u"to"].toArray(), listOf({pair({}, u"you@example.org"_qs)}));
    QCOMPARE(found[u"cc"].toArray(), listOf({pair({}, u"third@example.org"_qs)}));
    QCOMPARE(found[u"date"].toString(), u"2024-02-29T23:05:09-03:30"_qs);
    QVERIFY(QRegularExpression(u"^<[^<>@ ]+@example\\.org>$"_qs).match(found[u"id"].toString()).hasMatch());
    QVERIFY(parse(draft)[u"id"] != found[u"id"]);
    QVERIFY(found[u"longest"].toInt() <= 78);
    const QJsonArray fields = found[u"fields"].toArray();
    for (const QString &name : {u"From"_qs, u"To"_qs, u"Cc"_qs, u"Subject"_qs, u"Date"_qs, u"Message-Id"_qs,
                                u"MIME-Version"_qs, u"Content-Type"_qs}) {
        const auto count = std::count_if(fields.begin(), fields.end(), [&](const QJsonValue &field) {
            return field.toString().compare(name, Qt::CaseInsensitive) == 0;
        });
        QVERIFY2(count == 1, qPrintable(name));
    }
    QVERIFY(!parse(m_plain)[u"fields"].toArray().contains(u"Cc"_qs));
}

void TestOutgoingMail::subjects_data()
{
    QTest::addColumn<QString>("subject");
    QTest::newRow("empty") << QString();
    QTest::newRow("plain") << u"Meeting at ten"_qs;
    QTest::newRow("umlauts") << u"Grüße aus Köln – schön"_qs;
    QTest::newRow("emoji") << u"Party 🎉👩‍👩‍👧"_qs;
    QTest::newRow("many emoji") << u"🎉"_qs.repeated(100);
    QTest::newRow("right to left") << u"שלום עולם (مرحبا)"_qs;
    QTest::newRow("half Latin") << u"ä plain middle of the subject that goes on for more than one line ö"_qs;
    QTest::newRow("blanks around") << u"  two before, one after "_qs;
    QTest::newRow("only blanks") << u"   "_qs;
    QTest::newRow("double blanks") << u"a  b   c"_qs;
    QTest::newRow("tab") << u"a\tb"_qs;
    QTest::newRow("encoded-word look-alike") << u"=?utf-8?q?fake?="_qs;
    QTest::newRow("broken look-alike") << u"what is =?x?= here"_qs;
    QTest::newRow("long") << u"word "_qs.repeated(300).trimmed();
    QTest::newRow("one long word") << QString(3000, u'x');
    QTest::newRow("field look-alike") << u"Bcc: someone@example.org"_qs;
    QTest::newRow("specials") << u"\"quoted\" <angle> (paren) \\ , ; : @ [x] = ? _"_qs;
    QTest::newRow("specials with umlaut") << u"ä = ? _ \"quoted\" <angle>, (paren)"_qs;
    QTest::newRow("long with umlauts") << u"größer "_qs.repeated(200).trimmed();
}

void TestOutgoingMail::subjects()
{
    QFETCH(QString, subject);
    MailDraft draft = m_plain;
    draft.subject = subject;
    const QJsonObject found = parse(draft);
    QCOMPARE(found[u"subject"].toString(), subject);
    QVERIFY(found[u"longest"].toInt() <= 78);
    QCOMPARE(found[u"seven bit"].toBool(), true);
}

void TestOutgoingMail::names_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << u"Ann Lee"_qs;
    QTest::newRow("umlauts") << u"Jörg Müller"_qs;
    QTest::newRow("comma") << u"Lee, Ann; the \"boss\" \\ <x@y.org>"_qs;
    QTest::newRow("comma and umlaut") << u"Müller, Jörg (Köln)"_qs;
    QTest::newRow("look-alike") << u"=?utf-8?q?fake?="_qs;
    QTest::newRow("emoji") << u"🎉 Party 🎉"_qs;
    QTest::newRow("dot") << u"Ann Q. Lee"_qs;
    QTest::newRow("long") << u"name "_qs.repeated(60).trimmed();
    QTest::newRow("long and quoted") << u"name, "_qs.repeated(60).trimmed();
    QTest::newRow("long and foreign") << u"имя "_qs.repeated(60).trimmed();
}

void TestOutgoingMail::names()
{
    QFETCH(QString, name);
    QString quoted = name;
    quoted.replace(u'\\', u"\\\\"_qs).replace(u'"', u"\\\""_qs);
    MailDraft draft = m_plain;
    draft.from = u"\"%1\" <me@example.org>"_qs.arg(quoted);
    draft.to = u"first@example.org; \"%1\" <you@example.org>, last@example.org"_qs.arg(quoted);
    const QJsonObject found = parse(draft);
    QCOMPARE(found[u"from"].toArray(), listOf({pair(name, u"me@example.org"_qs)}));
    QCOMPARE(found[u"to"].toArray(),
             listOf({pair({}, u"first@example.org"_qs), pair(name, u"you@example.org"_qs),
                     pair({}, u"last@example.org"_qs)}));
    QVERIFY(found[u"longest"].toInt() <= 78);
}

void TestOutgoingMail::manyRecipients()
{
    MailDraft draft = m_plain;
    draft.to.clear();
    QJsonArray expected;
    for (int i = 0; i < 500; ++i) {
        draft.to += u"Person %1 <p%1@example.org>;"_qs.arg(i);
        expected += pair(u"Person %1"_qs.arg(i), u"p%1@example.org"_qs.arg(i));
    }
    // The same mailbox again, its domain in other letters: one delivery is enough.
    draft.cc = u"p3@EXAMPLE.org, P3@example.org"_qs;
    const QJsonObject found = parse(draft);
    QCOMPARE(found[u"to"].toArray(), expected);
    QCOMPARE(found[u"cc"].toArray().size(), 2);
    QVERIFY(found[u"longest"].toInt() <= 78);
    const OutgoingMail mail(draft, m_drives);
    QCOMPARE(mail.recipients().size(), std::size_t(501));
    QCOMPARE(mail.recipients().back().addrSpec(), QByteArray("P3@example.org"));
}

void TestOutgoingMail::addressesOutsideAscii()
{
    MailDraft draft = m_plain;
    draft.from = u"Jörg <j@bücher.example>"_qs;
    QJsonObject found = parse(draft);
    QCOMPARE(found[u"from"].toArray(), listOf({pair(u"Jörg"_qs, u"j@xn--bcher-kva.example"_qs)}));
    QCOMPARE(found[u"seven bit"].toBool(), true);
    draft.to = u"Jörg <jörg@bücher.example>"_qs;
    QVERIFY(build(draft).contains("<jörg@xn--bcher-kva.example>"));
}

void TestOutgoingMail::bodies_data()
{
    QTest::addColumn<QString>("body");
    QTest::addColumn<QString>("encoding");
    QTest::newRow("empty") << QString() << u"7bit"_qs;
    QTest::newRow("plain") << u"Hello\r\nWorld\r\n"_qs << u"7bit"_qs;
    QTest::newRow("no line break at the end") << u"Hello"_qs << u"7bit"_qs;
    QTest::newRow("mixed line breaks") << u"a\nb\rc\r\nd\n\n\r\r"_qs << u"7bit"_qs;
    QTest::newRow("only line breaks") << u"\r\n\r\n\r\n"_qs << u"7bit"_qs;
    QTest::newRow("dots") << u".\r\n..\r\n...\r\n.x\r\n.\r\n"_qs << u"7bit"_qs;
    QTest::newRow("long line") << QString(10000, u'y') << u"quoted-printable"_qs;
    QTest::newRow("long line of words") << u"word "_qs.repeated(2000) << u"quoted-printable"_qs;
    QTest::newRow("long foreign line") << u"ж"_qs.repeated(10000) << u"base64"_qs;
    QTest::newRow("emoji") << u"🎉👩‍👩‍👧\r\n"_qs << u"base64"_qs;
    QTest::newRow("some umlauts") << u"Viele Grüße aus Köln und auch sonst einen schönen Tag\r\n"_qs
                                  << u"quoted-printable"_qs;
    QTest::newRow("right to left") << u"שלום עולם\r\nمرحبا"_qs << u"base64"_qs;
    QTest::newRow("control characters")
        << u"bell\a escape\x1b[31m form\f feed and a lot of plain text as well"_qs << u"quoted-printable"_qs;
    QTest::newRow("NUL") << u"a"_qs + QChar() + u"b and plain text around it"_qs << u"quoted-printable"_qs;
    QTest::newRow("trailing blanks") << u"two  \r\ntab\t\r\n \r\nend "_qs << u"quoted-printable"_qs;
    QTest::newRow("From") << u"From here\r\nFrom there\r\n"_qs << u"quoted-printable"_qs;
    QTest::newRow("equals signs") << u"a=b=3D=\r\n=\r\n"_qs << u"7bit"_qs;
    QTest::newRow("equals and umlaut")
        << u"ä=b =3D and = at the end of the line =\r\n=\r\n"_qs << u"quoted-printable"_qs;
    QTest::newRow("dots in quoted-printable")
        << u".\r\nä plain text that follows the dot\r\n.\r\n"_qs << u"quoted-printable"_qs;
    QTest::newRow("boundary look-alike") << u"--=-abc\r\n--\r\n--=-abc--\r\n"_qs << u"7bit"_qs;
    QTest::newRow("line of 78") << QString(78, u'z') << u"7bit"_qs;
    QTest::newRow("line of 79") << QString(79, u'z') << u"quoted-printable"_qs;
    QTest::newRow("half a pair") << halfPair() + u" and plain text around it"_qs << u"7bit"_qs;
}

void TestOutgoingMail::bodies()
{
    QFETCH(QString, body);
    QFETCH(QString, encoding);
    QString expected = body;
    expected.replace(u"\r\n"_qs, u"\n"_qs).replace(u'\r', u'\n').replace(halfPair(), u"a?b"_qs);
    if (!expected.isEmpty() && !expected.endsWith(u'\n'))
        expected += u'\n';
    writeFile(u"note.txt"_qs, "note");
    MailDraft draft = m_plain;
    draft.body = body;
    for (const QString &attachments : {QString(), u"c:\\note.txt;"_qs}) {
        draft.attachments = attachments;
        const QJsonObject found = parse(draft);
        QCOMPARE(found[u"text"].toString().replace(u"\r\n"_qs, u"\n"_qs), expected);
        QCOMPARE(found[u"encoding"].toString(), encoding);
        QVERIFY(found[u"longest"].toInt() <= 78);
        QCOMPARE(found[u"seven bit"].toBool(), true);
        QCOMPARE(found[u"attachments"].toArray().size(), attachments.isEmpty() ? 0 : 1);
    }
}

void TestOutgoingMail::attachmentNames_data()
{
    QTest::addColumn<QByteArray>("native");
    QTest::addColumn<QString>("sent");
    const auto row
        = [](const char *name, const QString &file) { QTest::newRow(name) << file.toUtf8() << file; };
    row("plain", u"report.pdf"_qs);
    row("blanks", u" two  blanks .txt"_qs);
    row("umlauts", u"Übersicht größer.pdf"_qs);
    row("emoji", u"🎉 party 👩‍👩‍👧.png"_qs);
    row("Cyrillic, long", u"очень-длинное-имя-файла-"_qs.repeated(5) + u".txt"_qs);
    row("long", QString(251, u'n') + u".txt"_qs);
    row("quotation marks", u"a \"quoted\" \\name'.txt"_qs);
    row("specials", u"a;b,c=d*e%41'f''g(h)<i>[j]:k?.txt"_qs);
    row("look-alike", u"=?utf-8?q?fake?=.txt"_qs);
    row("no extension", u"README"_qs);
    row("leading dot", u".profile"_qs);
    row("dashes", u"-rf --"_qs);
    row("tab", u"a\tb.txt"_qs);
    QTest::newRow("no UTF-8") << QByteArray("Gr\xfc\xdf"
                                            "e.txt")
                              << u"Grüße.txt"_qs;
}

void TestOutgoingMail::attachmentNames()
{
    QFETCH(QByteArray, native);
    QFETCH(QString, sent);
    const QByteArray path = QFile::encodeName(m_folder.path()) + '/' + native;
    std::FILE *const file = std::fopen(path.constData(), "wb");
    QVERIFY(file);
    std::fputs("octets", file);
    std::fclose(file);
    MailDraft draft = m_plain;
    draft.attachments = m_drives.toDos(path) + u';';
    const QJsonArray found = parse(draft)[u"attachments"].toArray();
    QCOMPARE(found.size(), 1);
    QCOMPARE(found[0][u"name"].toString(), sent);
    QCOMPARE(found[0][u"disposition"].toString(), u"attachment"_qs);
    QCOMPARE(QByteArray::fromBase64(found[0][u"octets"].toString().toLatin1()), QByteArray("octets"));
}

void TestOutgoingMail::attachmentSizes_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {0, 1, 2, 3, 56, 57, 58, 57 * 2048 - 1, 57 * 2048, 57 * 2048 + 1, 1'000'000})
        QTest::addRow("%d", size) << size;
}

void TestOutgoingMail::attachmentSizes()
{
    QFETCH(int, size);
    const QByteArray contents = noise(size);
    writeFile(u"data.bin"_qs, contents);
    MailDraft draft = m_plain;
    draft.attachments = u"c:\\data.bin;"_qs;
    const QJsonObject found = parse(draft);
    QVERIFY(found[u"longest"].toInt() <= 78);
    const QString octets = found[u"attachments"][0][u"octets"].toString();
    QVERIFY(QByteArray::fromBase64(octets.toLatin1()) == contents);
}

void TestOutgoingMail::mediaTypes()
{
    const std::vector<std::tuple<QString, QByteArray, QString>> files{
        {u"a.pdf"_qs, "%PDF-1.4", u"application/pdf"_qs},
        {u"a.png"_qs, "\x89PNG\r\n\x1a\n", u"image/png"_qs},
        {u"noname"_qs, "%PDF-1.4 and more", u"application/pdf"_qs},
        {u"a.txt"_qs, "text", u"text/plain"_qs},
        {u"a.zip"_qs, "PK\x03\x04", u"application/zip"_qs},
        {u"unknown"_qs, QByteArray("\x01\x02\x00\x03\xff", 5), u"application/octet-stream"_qs},
        {u"empty"_qs, "", u"application/octet-stream"_qs},
        {u"mail.eml"_qs, "From: a@b\r\nSubject: x\r\n\r\n", u"application/octet-stream"_qs}};
    MailDraft draft = m_plain;
    for (const auto &[name, contents, type] : files) {
        writeFile(name, contents);
        draft.attachments += u"c:\\%1;"_qs.arg(name);
    }
    const QJsonArray found = parse(draft)[u"attachments"].toArray();
    QCOMPARE(found.size(), static_cast<qsizetype>(files.size()));
    for (qsizetype i = 0; i < found.size(); ++i)
        QCOMPARE(found[i][u"type"].toString(), std::get<2>(files[static_cast<std::size_t>(i)]));
}

void TestOutgoingMail::severalAttachmentsInOrder()
{
    MailDraft draft = m_plain;
    QJsonArray names;
    for (int i = 0; i < 40; ++i) {
        const QString name = u"file %1.txt"_qs.arg(i % 30);
        writeFile(name, QByteArray::number(i % 30));
        draft.attachments += u"c:\\%1;"_qs.arg(name);
        names += name;
    }
    const QJsonArray found = parse(draft)[u"attachments"].toArray();
    QCOMPARE(found.size(), 40);
    for (qsizetype i = 0; i < found.size(); ++i) {
        QCOMPARE(found[i][u"name"], names[i]);
        QCOMPARE(QByteArray::fromBase64(found[i][u"octets"].toString().toLatin1()),
                 QByteArray::number(static_cast<int>(i) % 30));
    }
}

void TestOutgoingMail::attachmentListWithSemicolonsInNames_data()
{
    QTest::addColumn<QString>("list");
    QTest::addColumn<QStringList>("paths");
    QTest::newRow("none") << QString() << QStringList();
    QTest::newRow("two") << u"C:\\a.txt;C:\\b.doc;"_qs << QStringList{u"C:\\a.txt"_qs, u"C:\\b.doc"_qs};
    QTest::newRow("no last one") << u"c:\\a.txt;d:\\b.doc"_qs
                                 << QStringList{u"c:\\a.txt"_qs, u"d:\\b.doc"_qs};
    QTest::newRow("within") << u"c:\\a;b.txt;c:\\c;d;e.txt;"_qs
                            << QStringList{u"c:\\a;b.txt"_qs, u"c:\\c;d;e.txt"_qs};
    QTest::newRow("in a folder") << u"c:\\a;b\\c.txt;z:\\x;"_qs
                                 << QStringList{u"c:\\a;b\\c.txt"_qs, u"z:\\x"_qs};
    QTest::newRow("at the end") << u"c:\\a;;c:\\b;;"_qs << QStringList{u"c:\\a;"_qs, u"c:\\b;"_qs};
    QTest::newRow("native") << u"/tmp/a;/tmp/b;"_qs << QStringList{u"/tmp/a"_qs, u"/tmp/b"_qs};
}

void TestOutgoingMail::attachmentListWithSemicolonsInNames()
{
    QFETCH(QString, list);
    QFETCH(QStringList, paths);
    QCOMPARE(attachmentPaths(list), paths);
}

void TestOutgoingMail::aNameWithSemicolonIsFound()
{
    writeFile(u"one;two.txt"_qs, "12");
    writeFile(u"three.txt"_qs, "3");
    MailDraft draft = m_plain;
    draft.attachments = u"c:\\one;two.txt;c:\\three.txt;"_qs;
    const QJsonArray found = parse(draft)[u"attachments"].toArray();
    QCOMPARE(found.size(), 2);
    QCOMPARE(found[0][u"name"].toString(), u"one;two.txt"_qs);
    QCOMPARE(found[1][u"name"].toString(), u"three.txt"_qs);
}

void TestOutgoingMail::lineBreaksInFieldsAreRefused_data()
{
    QTest::addColumn<int>("field");
    QTest::addColumn<QString>("smuggled");
    int field = 0;
    for (const char *const name : {"From", "To", "CC", "subject"}) {
        QTest::addRow("%s, CR LF", name) << field << u"\r\nBcc: x@example.org"_qs;
        QTest::addRow("%s, LF", name) << field << u"\nBcc: x@example.org"_qs;
        QTest::addRow("%s, CR", name) << field << u"\rBcc: x@example.org"_qs;
        QTest::addRow("%s, at the end", name) << field << u"\n"_qs;
        QTest::addRow("%s, NUL", name) << field << u"a"_qs + QChar();
        QTest::addRow("%s, half a pair", name) << field << u"a"_qs + QChar(0xd800);
        ++field;
    }
}

void TestOutgoingMail::lineBreaksInFieldsAreRefused()
{
    QFETCH(int, field);
    QFETCH(QString, smuggled);
    MailDraft draft = m_plain;
    draft.cc = u"third@example.org"_qs;
    QString *const fields[] = {&draft.from, &draft.to, &draft.cc, &draft.subject};
    QVERIFY(failureOf(draft).isEmpty());
    *fields[field] += smuggled;
    const QString failure = failureOf(draft);
    static const char *const names[] = {"field From", "field To", "field CC", "subject"};
    QVERIFY2(failure.contains(QLatin1String(names[field])), qPrintable(failure));
}

void TestOutgoingMail::missingPeopleAreRefused()
{
    MailDraft draft = m_plain;
    draft.from = u" "_qs;
    QVERIFY(failureOf(draft).contains(u"no sender"));
    draft.from = u"a@x.org, b@x.org"_qs;
    QVERIFY(failureOf(draft).contains(u"more than one sender"));
    draft = m_plain;
    draft.to = u" ; "_qs;
    QVERIFY(failureOf(draft).contains(u"no recipient"));
    draft.cc = u"c@x.org"_qs;
    QVERIFY(failureOf(draft).isEmpty());
    QCOMPARE(parse(draft)[u"to"].toArray().size(), 0);
}

void TestOutgoingMail::unusableAttachmentsAreRefused_data()
{
    QTest::addColumn<QString>("list");
    QTest::addColumn<QString>("named");
    const auto row = [](const char *name, const QString &list) {
        QTest::newRow(name) << list << list.chopped(1).mid(list.lastIndexOf(u'\\') + 1);
    };
    row("missing", u"c:\\there.txt;c:\\missing.txt;"_qs);
    row("missing folder", u"c:\\nowhere\\x.txt;"_qs);
    row("folder", u"c:\\folder;"_qs);
    row("pipe", u"c:\\pipe;"_qs);
    row("device", u"z:\\dev\\null;"_qs);
    row("unknown drive", u"q:\\x.txt;"_qs);
    row("line break", u"c:\\line\uf00abreak;"_qs);
    QTest::newRow("empty path") << u";"_qs << QString();
}

void TestOutgoingMail::unusableAttachmentsAreRefused()
{
    QFETCH(QString, list);
    QFETCH(QString, named);
    writeFile(u"there.txt"_qs, "1");
    writeFile(u"line\nbreak"_qs, "1");
    QDir().mkpath(nativePath(u"folder"_qs));
    if (!QFile::exists(nativePath(u"pipe"_qs)))
        QCOMPARE(QProcess::execute(u"mkfifo"_qs, {nativePath(u"pipe"_qs)}), 0);
    MailDraft draft = m_plain;
    draft.attachments = u"c:\\there.txt;"_qs;
    QVERIFY(failureOf(draft).isEmpty());
    draft.attachments = list;
    try {
        const OutgoingMail mail(draft, m_drives);
        QFAIL("the message was built");
    } catch (const RuntimeError &failure) {
        QVERIFY2(failure.text().contains(named) || failure.number() == error::DeviceUnavailable,
                 failure.what());
    }
}

void TestOutgoingMail::changesWhileSendingAreNoticed_data()
{
    QTest::addColumn<int>("change");
    QTest::addColumn<bool>("begun");
    const char *const changes[] = {"grows", "shrinks", "is written to", "vanishes", "is replaced"};
    for (int i = 0; i < 5; ++i) {
        QTest::addRow("%s before its turn", changes[i]) << i << false;
        QTest::addRow("%s in its turn", changes[i]) << i << true;
    }
}

void TestOutgoingMail::changesWhileSendingAreNoticed()
{
    QFETCH(int, change);
    QFETCH(bool, begun);
    const QString path = nativePath(u"changing.bin"_qs);
    writeFile(u"changing.bin"_qs, noise(1'000'000));
    MailDraft draft = m_plain;
    draft.attachments = u"c:\\changing.bin;"_qs;
    OutgoingMail mail(draft, m_drives);
    mail.next();
    if (begun)
        mail.next();
    QFile file(path);
    switch (change) {
    case 0:
        QVERIFY(file.open(QIODevice::Append) && file.putChar('x'));
        break;
    case 1:
        QVERIFY(file.resize(500'000));
        break;
    case 2:
        QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(900'000) && file.putChar('x') && file.flush());
        // Whatever the granularity of the file system's clock.
        QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(60), QFile::FileModificationTime));
        break;
    case 3:
        QVERIFY(QFile::remove(path));
        break;
    default:
        writeFile(u"other.bin"_qs, noise(1'000'000));
        QVERIFY(QFile::remove(path) && QFile::rename(nativePath(u"other.bin"_qs), path));
    }
    file.close();
    const auto sendAll = [&] {
        while (!mail.next().isEmpty()) { }
    };
    QVERIFY_THROWS_EXCEPTION(RuntimeError, sendAll());
}

void TestOutgoingMail::blocksAreBounded()
{
    writeFile(u"large.bin"_qs, noise(3'000'000));
    MailDraft draft = m_plain;
    draft.attachments = u"c:\\large.bin;"_qs;
    OutgoingMail mail(draft, m_drives);
    int blocks = 0;
    for (QByteArray block = mail.next(); !block.isEmpty(); block = mail.next(), ++blocks)
        QVERIFY(block.size() <= 160'000);
    QVERIFY(blocks > 20);
}

QTEST_GUILESS_MAIN(TestOutgoingMail)

#include "TestOutgoingMail.moc"
