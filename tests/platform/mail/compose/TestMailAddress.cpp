#include <QTest>

#include "platform/mail/compose/MailAddress.h"
#include "runtime/RuntimeError.h"

using namespace vandrel;

namespace {

// "name|address" for each mailbox.
QStringList read(const QString &list)
{
    QStringList found;
    for (const MailAddress &address : readMailAddresses(list, QStringLiteral("To")))
        found += address.name + u'|' + QString::fromUtf8(address.addrSpec());
    return found;
}

QString failureOf(const QString &list)
{
    try {
        read(list);
    } catch (const RuntimeError &failure) {
        return failure.text();
    }
    return {};
}

} // namespace

class TestMailAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lists_data();
    void lists();
    void refusals_data();
    void refusals();
    void onlyLocalPartsOutsideAsciiNeedUtf8();
};

void TestMailAddress::lists_data()
{
    QTest::addColumn<QString>("list");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *name, const QString &list, const QStringList &expected) {
        QTest::newRow(name) << list << expected;
    };
    row("nothing", u""_qs, {});
    row("blanks and separators", u" , ;; "_qs, {});
    row("one", u"ann@example.org"_qs, {u"|ann@example.org"_qs});
    row("commas and semicolons", u"a@x.org, b@x.org;c@x.org ;"_qs,
        {u"|a@x.org"_qs, u"|b@x.org"_qs, u"|c@x.org"_qs});
    row("name", u"Ann Lee <ann@example.org>"_qs, {u"Ann Lee|ann@example.org"_qs});
    row("name without a blank", u"Ann<ann@example.org>"_qs, {u"Ann|ann@example.org"_qs});
    row("only brackets", u"<ann@example.org>"_qs, {u"|ann@example.org"_qs});
    row("separators in quotation marks", u"\"Lee, Ann; II\" <ann@x.org>, b@x.org"_qs,
        {u"Lee, Ann; II|ann@x.org"_qs, u"|b@x.org"_qs});
    row("escapes in quotation marks", u"\"the \\\"boss\\\" \\\\\" <a@x.org>"_qs,
        {u"the \"boss\" \\|a@x.org"_qs});
    row("address in quotation marks", u"\"b@y.org\" <a@x.org>"_qs, {u"b@y.org|a@x.org"_qs});
    row("comment", u"ann@x.org (Ann (the first), Lee)"_qs, {u"Ann (the first), Lee|ann@x.org"_qs});
    row("apostrophes", u"O'Neil <o'neil@x.org>"_qs, {u"O'Neil|o'neil@x.org"_qs});
    row("group", u"Friends: a@x.org, Bob <b@x.org>; c@x.org"_qs,
        {u"|a@x.org"_qs, u"Bob|b@x.org"_qs, u"|c@x.org"_qs});
    row("empty group", u"undisclosed-recipients:;"_qs, {});
    row("pasted link", u"mailto:a@x.org"_qs, {u"|a@x.org"_qs});
    row("domain of another script", u"a@bücher.example"_qs, {u"|a@xn--bcher-kva.example"_qs});
    row("local part of another script", u"Jörg <jörg@x.org>"_qs, {u"Jörg|jörg@x.org"_qs});
    row("closing dot", u"a@x.org."_qs, {u"|a@x.org"_qs});
    row("host", u"root@localhost"_qs, {u"|root@localhost"_qs});
    row("special characters", u"a+b=c/d{e}@x.org"_qs, {u"|a+b=c/d{e}@x.org"_qs});
    row("quoted local part", u"\"a b@c\"@x.org"_qs, {u"|\"a b@c\"@x.org"_qs});
    row("needlessly quoted local part", u"<\"ann.lee\"@x.org>"_qs, {u"|ann.lee@x.org"_qs});
    row("odd dots", u"a..b.@x.org"_qs, {u"|\"a..b.\"@x.org"_qs});
    row("literals", u"a@[127.0.0.1], b@[ipv6:::1]"_qs, {u"|a@[127.0.0.1]"_qs, u"|b@[IPv6:::1]"_qs});
}

void TestMailAddress::lists()
{
    QFETCH(QString, list);
    QFETCH(QStringList, expected);
    QCOMPARE(read(list), expected);
}

void TestMailAddress::refusals_data()
{
    QTest::addColumn<QString>("list");
    QTest::addColumn<QString>("named");
    const auto row = [](const char *name, const QString &list, const QString &named) {
        QTest::newRow(name) << list << named;
    };
    row("no at", u"a@x.org, ann"_qs, u"\"ann\""_qs);
    row("no local part", u"@x.org"_qs, u"@x.org"_qs);
    row("no domain", u"ann@"_qs, u"ann@"_qs);
    row("blank within", u"ann lee@x.org"_qs, u"ann lee@x.org"_qs);
    row("two without a separator", u"a@x.org b@x.org"_qs, u"a@x.org b@x.org"_qs);
    row("two in brackets without a separator", u"<a@x.org> <b@x.org>"_qs, u"<a@x.org>"_qs);
    row("open bracket", u"Ann <a@x.org, b@x.org"_qs, u"Ann <a@x.org"_qs);
    row("open quotation mark", u"\"Ann <a@x.org>, b@x.org"_qs, u"\"Ann"_qs);
    row("open parenthesis", u"a@x.org (Ann"_qs, u"a@x.org (Ann"_qs);
    row("trailing backslash", u"\"Ann\\"_qs, u"\"Ann"_qs);
    row("empty brackets", u"Ann <>"_qs, u"Ann <>"_qs);
    row("empty label", u"a@x..org"_qs, u"x..org"_qs);
    row("bad label", u"a@-x.org"_qs, u"-x.org"_qs);
    row("bad domain", u"a@x_/org"_qs, u"x_/org"_qs);
    row("route", u"<@a.org,@b.org:c@d.org>"_qs, u"@a.org"_qs);
    row("bad literal", u"a@[1.2.3]x"_qs, u"[1.2.3]x"_qs);
    row("too long", QString(250, u'a') + u"@x.org"_qs, u"longer than"_qs);
    row("long label", u"a@"_qs + QString(64, u'x') + u".org"_qs, u"is no domain"_qs);
}

void TestMailAddress::refusals()
{
    QFETCH(QString, list);
    QFETCH(QString, named);
    const QString failure = failureOf(list);
    QVERIFY2(failure.startsWith(u"To: "), qPrintable(failure));
    QVERIFY2(failure.contains(named), qPrintable(failure));
}

void TestMailAddress::onlyLocalPartsOutsideAsciiNeedUtf8()
{
    const auto found = readMailAddresses(u"Jörg <j@bücher.example>, jörg@x.org"_qs, u"To"_qs);
    QCOMPARE(found.size(), std::size_t(2));
    QVERIFY(!found[0].needsUtf8());
    QVERIFY(found[1].needsUtf8());
}

QTEST_GUILESS_MAIN(TestMailAddress)

#include "TestMailAddress.moc"
