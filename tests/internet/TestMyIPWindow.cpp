#include <memory>

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTest>

#include "internet/frmIP.h"
#include "tests/support/FakeMyIP.h"
#include "tests/support/ScriptedPrompts.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// "My IP" on a scripted control.
class TestMyIPWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWindow();
    void captions_data();
    void captions();
    void namesOfTheAnswers();
    void loadAsksNothing();
    void thePressShowsBothAnswers();
    void eachPressOverwritesBoth();
    void answersArePlainText();
    void theAnswersCanBeCopied();
    void aLongAnswerIsNotCut();
    void eachEventShowsItsBox_data();
    void eachEventShowsItsBox();
    void aSocketErrorThatIsNoneShowsNothing();
    void theBoxComesBeforeTheLabelsChange();
    void afterAFailureThePressCanBeRepeated();
    void closingTheWindowTakesTheControlWithIt();
    void aWindowClosedDuringTheQueryIsLeftAlone();
};

namespace {

// The window on its fake.
class Desk
{
public:
    Desk()
    {
        auto fake = std::make_unique<FakeMyIP>();
        control = fake.get();
        control->address = u"192.0.2.7"_s;
        control->domain = u"desk.example.org"_s;
        form = std::make_unique<frmIP>(std::move(fake));
    }

    bool show() const
    {
        form->show();
        form->activateWindow();
        return QTest::qWaitForWindowActive(form.get());
    }

    QStringList shown() const { return {form->MyIP->text(), form->MyDomain->text()}; }

    ScriptedPrompts prompts;
    FakeMyIP *control = nullptr;
    std::unique_ptr<frmIP> form;
};

} // namespace

void TestMyIPWindow::theWindow()
{
    const Desk desk;
    QCOMPARE(desk.form->objectName(), u"frmIP"_s);
    QCOMPARE(desk.form->windowTitle(), u"My IP"_s);
    QVERIFY(desk.form->isWindow());
    QCOMPARE(desk.form->GETMyIP->font().family(), u"MS Sans Serif"_s);
}

void TestMyIPWindow::captions_data()
{
    QTest::addColumn<QString>("caption");
    QTest::newRow("GETMyIP") << u"Get My IP and my domain name"_s;
    QTest::newRow("Label1") << u"My IP:"_s;
    QTest::newRow("MyIP") << QString();
    QTest::newRow("Label2") << u"My Domain name:"_s;
    QTest::newRow("MyDomain") << QString();
}

void TestMyIPWindow::captions()
{
    QFETCH(QString, caption);
    const Desk desk;
    const auto *widget = desk.form->findChild<QWidget *>(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(widget);
    QCOMPARE(widget->property("text").toString(), caption);
}

void TestMyIPWindow::namesOfTheAnswers()
{
    const Desk desk;
    QCOMPARE(desk.form->Label1->buddy(), desk.form->MyIP);
    QCOMPARE(desk.form->Label2->buddy(), desk.form->MyDomain);
}

void TestMyIPWindow::loadAsksNothing()
{
    const Desk desk;
    QCOMPARE(desk.control->queries, 0);
}

void TestMyIPWindow::thePressShowsBothAnswers()
{
    const Desk desk;
    desk.form->GETMyIP->click();
    QCOMPARE(desk.control->queries, 1);
    QCOMPARE(desk.control->endings, 0);
    QCOMPARE(desk.shown(), QStringList({u"192.0.2.7"_s, u"desk.example.org"_s}));
    QCOMPARE(desk.prompts.shown(), 0);
}

void TestMyIPWindow::eachPressOverwritesBoth()
{
    const Desk desk;
    desk.form->GETMyIP->click();
    desk.control->address = u"2001:db8::7"_s;
    desk.control->domain.clear();
    desk.form->GETMyIP->click();
    QCOMPARE(desk.shown(), QStringList({u"2001:db8::7"_s, QString()}));
}

void TestMyIPWindow::answersArePlainText()
{
    const Desk desk;
    desk.control->domain = u"<b>desk</b>&amp;"_s;
    desk.form->GETMyIP->click();
    QCOMPARE(desk.form->MyDomain->textFormat(), Qt::PlainText);
    QCOMPARE(desk.form->MyDomain->text(), u"<b>desk</b>&amp;"_s);
}

void TestMyIPWindow::theAnswersCanBeCopied()
{
    const Desk desk;
    QVERIFY(desk.show());
    desk.form->GETMyIP->click();
    for (QLabel *answer : {desk.form->MyIP, desk.form->MyDomain}) {
        QTest::mouseDClick(answer, Qt::LeftButton, {}, {3, answer->height() / 2});
        QVERIFY(answer->hasSelectedText());
    }
}

void TestMyIPWindow::aLongAnswerIsNotCut()
{
    const Desk desk;
    QVERIFY(desk.show());
    desk.control->domain = u"a-long-part-of-a-name."_s.repeated(11);
    desk.form->GETMyIP->click();
    const QLabel *label = desk.form->MyDomain;
    QTRY_VERIFY(label->height() >= label->heightForWidth(label->width()));
}

void TestMyIPWindow::eachEventShowsItsBox_data()
{
    using Raise = void (*)(FakeMyIP *);
    QTest::addColumn<Raise>("occurrence");
    QTest::addColumn<QString>("text");
    QTest::newRow("no network") << Raise([](FakeMyIP *control) { Q_EMIT control->SocketError(true); })
                                << u"Windows Socket error !!"_s;
    QTest::newRow("no domain") << Raise([](FakeMyIP *control) { Q_EMIT control->NoDomainName(); })
                               << u"Domain name not available ....."_s;
    QTest::newRow("no address") << Raise([](FakeMyIP *control) { Q_EMIT control->NoIPAddress(); })
                                << u"IP address not available...."_s;
}

void TestMyIPWindow::eachEventShowsItsBox()
{
    using Raise = void (*)(FakeMyIP *);
    QFETCH(Raise, occurrence);
    QFETCH(QString, text);
    Desk desk;
    desk.prompts.expect(text, u"Vandrel"_s).buttons(Buttons::OkOnly).icon(BoxIcon::None);
    occurrence(desk.control);
    QVERIFY(desk.prompts.allShown());
}

void TestMyIPWindow::aSocketErrorThatIsNoneShowsNothing()
{
    const Desk desk;
    Q_EMIT desk.control->SocketError(false);
    QCOMPARE(desk.prompts.shown(), 0);
}

void TestMyIPWindow::theBoxComesBeforeTheLabelsChange()
{
    Desk desk;
    desk.form->GETMyIP->click();
    QStringList duringTheBoxes;
    const auto look = [&] { duringTheBoxes += desk.shown(); };
    desk.prompts.expect(u"Domain name not available ....."_s, u"Vandrel"_s).meanwhile(look);
    desk.prompts.expect(u"IP address not available...."_s, u"Vandrel"_s).meanwhile(look);
    desk.control->onQuery = [&desk] {
        desk.control->address.clear();
        desk.control->domain.clear();
        Q_EMIT desk.control->NoDomainName();
        Q_EMIT desk.control->NoIPAddress();
    };
    desk.form->GETMyIP->click();
    QVERIFY(desk.prompts.allShown());
    QCOMPARE(duringTheBoxes,
             QStringList({u"192.0.2.7"_s, u"desk.example.org"_s, u"192.0.2.7"_s, u"desk.example.org"_s}));
    QCOMPARE(desk.shown(), QStringList({QString(), QString()}));
}

void TestMyIPWindow::afterAFailureThePressCanBeRepeated()
{
    Desk desk;
    desk.prompts.expect(u"Windows Socket error !!"_s, u"Vandrel"_s);
    desk.control->onQuery = [&desk] { Q_EMIT desk.control->SocketError(true); };
    desk.form->GETMyIP->click();
    QVERIFY(desk.prompts.allShown());
    QVERIFY(desk.form->GETMyIP->isEnabled());
    desk.control->onQuery = nullptr;
    desk.form->GETMyIP->click();
    QCOMPARE(desk.control->queries, 2);
    QCOMPARE(desk.shown(), QStringList({u"192.0.2.7"_s, u"desk.example.org"_s}));
}

void TestMyIPWindow::closingTheWindowTakesTheControlWithIt()
{
    const Desk desk;
    QVERIFY(desk.show());
    const QPointer<FakeMyIP> control(desk.control);
    QVERIFY(desk.form->close());
    QVERIFY(control.isNull());
}

void TestMyIPWindow::aWindowClosedDuringTheQueryIsLeftAlone()
{
    Desk desk;
    const QPointer<FakeMyIP> control(desk.control);
    control->onQuery = [&desk] { desk.form.reset(); };
    desk.form->GETMyIP->click();
    QVERIFY(control.isNull());
    QVERIFY(!desk.form);
}

QTEST_MAIN(TestMyIPWindow)
#include "TestMyIPWindow.moc"
