#include <memory>

#include <QLabel>
#include <QLineEdit>
#include <QTest>

#include "system/frmInfo.h"
#include "tests/support/FakeSystemInfo.h"
#include "tests/support/FormChecks.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

namespace {

/// The window on a computer that names its facts.
struct Desk {
    explicit Desk(bool hasSoundCard = true)
    {
        auto fake = std::make_unique<FakeSystemInfo>(asked);
        fake->hasSoundCard = hasSoundCard;
        form = std::make_unique<frmInfo>(std::move(fake));
    }

    QStringList shown() const
    {
        QStringList texts;
        for (const auto &[index, box] : form->Text1)
            texts << box->text();
        return texts;
    }

    QStringList asked;
    std::unique_ptr<frmInfo> form;
};

const QStringList facts{
    u"CPUType"_s,
    u"TotalPhysicalMemory"_s,
    u"TotalVirtualMemory"_s,
    u"OperatingSystem"_s,
    u"CurrentDisplay"_s,
    u"Printer"_s,
    u"SoundCardPresent"_s,
    u"AvailablePhysicalMemory"_s,
    u"AvailableVirtualMemory"_s,
    u"ComputerManufacturer"_s,
    u"ComputerName"_s,
    u"User"_s,
    u"Company"_s,
};

QStringList withSoundCardShownAs(const QString &text)
{
    QStringList texts = facts;
    texts[6] = text;
    return texts;
}

} // namespace

/// "System Info" on a scripted computer.
class TestSystemInfoWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWindow()
    {
        const Desk desk;
        QCOMPARE(desk.form->objectName(), u"frmInfo"_s);
        QCOMPARE(desk.form->windowTitle(), u"System Info"_s);
        QVERIFY(desk.form->isWindow());
    }

    void captions_data()
    {
        QTest::addColumn<QString>("caption");
        const QStringList captions{u"CPU Type"_s,
                                   u"Total Physical Memory"_s,
                                   u"Total Virtual Memory"_s,
                                   u"Operating System"_s,
                                   u"Current Display"_s,
                                   u"Printer"_s,
                                   u"Sound Card"_s,
                                   u"Available Physical Memory"_s,
                                   u"Available Virtual Memory"_s,
                                   u"Computer Manufacturer"_s,
                                   u"Computer Name"_s,
                                   u"User"_s,
                                   u"Company"_s};
        for (qsizetype index = 0; index < captions.size(); ++index)
            QTest::addRow("%d", int(index)) << captions[index];
    }
    void captions()
    {
        const Desk desk;
        const QString index = QString::fromLatin1(QTest::currentDataTag());
        QTEST(captionOf(*desk.form, u"Label1_"_s + index), "caption");
        QCOMPARE(buddyOf(*desk.form, u"Label1_"_s + index), u"Text1_"_s + index);
    }

    void everyFactIsAskedForOnceInTheOrderOfTheBoxes()
    {
        const Desk desk;
        QCOMPARE(desk.asked, facts);
    }

    void factsAreShownAsTheyAreWorded()
    {
        const Desk desk;
        QCOMPARE(desk.shown(), withSoundCardShownAs(u"Present"_s));
    }

    void withoutASoundCardItsBoxKeepsItsFirstText()
    {
        const Desk desk(false);
        QCOMPARE(desk.shown(), withSoundCardShownAs(u"Text1"_s));
    }

    void showingTheWindowAgainAsksNothing()
    {
        Desk desk;
        desk.asked.clear();
        QVERIFY(showActive(*desk.form));
        desk.form->hide();
        QVERIFY(showActive(*desk.form));
        QCOMPARE(desk.asked, QStringList());
        QCOMPARE(desk.shown(), withSoundCardShownAs(u"Present"_s));
    }

    void factsCanBeCopiedAndNotChanged()
    {
        const Desk desk;
        QVERIFY(showActive(*desk.form));
        desk.form->Text1[3]->setFocus();
        QTest::keyClicks(desk.form->Text1[3], u"x"_s);
        QCOMPARE(desk.form->Text1[3]->text(), u"OperatingSystem"_s);
        QTest::keySequence(desk.form->Text1[3], QKeySequence::SelectAll);
        QCOMPARE(desk.form->Text1[3]->selectedText(), u"OperatingSystem"_s);
    }

    void theTabKeyGoesDownTheBoxes()
    {
        const Desk desk;
        QVERIFY(showActive(*desk.form));
        desk.form->Text1[0]->setFocus();
        QStringList order;
        for (int index = 0; index <= 12; ++index)
            order << u"Text1_"_s + QString::number(index);
        order << u"Text1_0"_s;
        QCOMPARE(tabbedThrough(13), order);
    }
};

QTEST_MAIN(TestSystemInfoWindow)
#include "TestSystemInfoWindow.moc"
