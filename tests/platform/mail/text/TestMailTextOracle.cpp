#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QProcess>
#include <QTest>

#include "platform/mail/text/MailText.h"

using namespace vandrel;

namespace {

constexpr int longestRun = 60'000;

QString source(const QString &path)
{
    return qEnvironmentVariable("VANDREL_SOURCE_DIR") + QLatin1Char('/') + path;
}

QJsonObject foundByPython(const QString &mail)
{
    QProcess python;
    python.start(QStringLiteral("/usr/bin/python3"),
                 {source(QStringLiteral("tests/platform/mail/text/oracle.py")), mail});
    if (!python.waitForFinished(longestRun) || python.exitCode() != 0)
        qWarning("%s", python.readAllStandardError().constData());
    return QJsonDocument::fromJson(python.readAllStandardOutput()).object();
}

QString shown(const QString &mail)
{
    QFile file(mail);
    return file.open(QIODevice::ReadOnly) ? readableMail(file).text : QString();
}

QString sizeText(qint64 octets)
{
    return QLocale(QLocale::English).formattedDataSize(octets, 1, QLocale::DataSizeTraditionalFormat);
}

// Without what a text loses at its end, and with one kind of line break.
QString comparable(QString text)
{
    return text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).trimmed();
}

} // namespace

// Well-formed mails, as an independent reader of mails understands them.
class TestMailTextOracle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void whatAnotherReaderFindsIsShown_data();
    void whatAnotherReaderFindsIsShown();
};

void TestMailTextOracle::initTestCase()
{
    if (!QFile::exists(QStringLiteral("/usr/bin/python3")))
        QSKIP("There is no Python to compare with.");
}

void TestMailTextOracle::whatAnotherReaderFindsIsShown_data()
{
    QTest::addColumn<QString>("mail");
    const QStringList names{
        QStringLiteral("alternative"), QStringLiteral("attachments"),       QStringLiteral("digest"),
        QStringLiteral("enclosed"),    QStringLiteral("encrypted"),         QStringLiteral("html"),
        QStringLiteral("names"),       QStringLiteral("plain-koi8-base64"), QStringLiteral("plain-japanese"),
        QStringLiteral("plain-qp"),    QStringLiteral("returned"),          QStringLiteral("signed")};
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << source(QStringLiteral("tests/fuzz/corpus/mail/%1.eml").arg(name));
}

void TestMailTextOracle::whatAnotherReaderFindsIsShown()
{
    QFETCH(QString, mail);
    const QJsonObject found = foundByPython(mail);
    QVERIFY(!found.isEmpty());
    const QString text = comparable(shown(mail));
    const auto requireShown = [&text](const QString &expected) {
        QVERIFY2(text.contains(comparable(expected)),
                 qPrintable(expected + QStringLiteral("\nis not in\n") + text));
    };
    requireShown(QStringLiteral("Subject: ") + found.value(u"subject").toString());
    requireShown(found.value(u"date").toString());
    for (const char16_t *each : {u"senders", u"names", u"texts"}) {
        for (const QJsonValue &value : found.value(QStringView(each)).toArray())
            requireShown(value.toString());
    }
    for (const QJsonValue &value : found.value(u"attachments").toArray()) {
        const QJsonObject file = value.toObject();
        requireShown(QStringLiteral("  %1 (%2, %3)")
                         .arg(file.value(u"name").toString(), file.value(u"type").toString(),
                              sizeText(file.value(u"size").toInteger())));
    }
}

QTEST_GUILESS_MAIN(TestMailTextOracle)
#include "TestMailTextOracle.moc"
