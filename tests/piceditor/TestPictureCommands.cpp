#include <QTest>

#include "tests/piceditor/PictureBench.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// The processing commands, as the working image hears of them.
class TestPictureCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void commandsWithoutValues_data();
    void commandsWithoutValues();
    void commandsWithoutAPictureDoNothing_data();
    void commandsWithoutAPictureDoNothing();
    void prompts_data();
    void prompts();
    void aCancelledPromptCountsAsNought_data();
    void aCancelledPromptCountsAsNought();
    void valuesAreLeadingNumbers_data();
    void valuesAreLeadingNumbers();
    void valuesAreNotChecked();
    void gammaIsASingle();
    void gammaBeyondASingleOverflows();
    void rotateTakesAnInteger_data();
    void rotateTakesAnInteger();
    void rotateRefusesWhatIsNoInteger_data();
    void rotateRefusesWhatIsNoInteger();
    void answersOutliveTheirCommands();
    void theFixedCommands_data();
    void theFixedCommands();
    void theFixedCommandsLeaveTheZoom();
    void replaceColorsTakesTheButtonsColors();
    void aCommandEndsTheZoomFirst();
    void thePromptComesAfterTheZoomHasEnded();
    void theAreaIsSentAfterTheOperation();
    void anAreaTooLargeOverflows();
    void onlyTheLastCommandIsUndone();
};

namespace {

struct Command {
    const char *item;
    const char *operation;
};

constexpr std::array commandsAtOnce{
    Command{"autocon", "AutoContrast"},
    Command{"deskew", "Deskew"},
    Command{"blur", "Blur"},
    Command{"equ", "Equalize"},
    Command{"neg", "Negative"},
    Command{"conc", "ConcaveSpectrum"},
    Command{"conv", "ConvexSpectrum"},
    Command{"rmbr", "Rembrand"},
    Command{"btv", "BrokenTV"},
    Command{"emboss", "Emboss"},
    Command{"hor", "FlipHorizontal"},
    Command{"ver", "FlipVertical"},
    Command{"mapping", "BumpMap 12, False"},
};

struct Prompt {
    const char *item;
    const char *operation;
    const char *prompt;
    const char *title;
    const char *offered;
};

constexpr std::array promptsOfValues{
    Prompt{"blend", "Blend", "Enter blend value:", "Blend", "0"},
    Prompt{"brt", "Brightness", "Enter brightness value:", "Brightness", "0"},
    Prompt{"con", "Contrast", "Enter contrast value:", "Contrast", "0"},
    Prompt{"gam", "Gamma", "Enter gamma value:", "Gamma", "0"},
    Prompt{"sharp", "Sharpen", "Enter sharpness value:", "Sharpness", "0"},
    Prompt{"mos", "Mosaic", "Enter size of mosaic pieces:", "Mosaic", "1"},
    Prompt{"rot", "Rotate", "Enter the angle of rotation:", "Rotate Image", "45"},
};

QAction *itemOf(const PictureBench &bench, const QString &name)
{
    return bench.form->findChild<QAction *>(name);
}

// What a command makes of a picture of 640 x 480.
QStringList sequence(const QString &operation)
{
    return {u"c2.KeepUndo True"_s, u"c2."_s + operation, u"c2.Picture"_s,
            u"c2.SetProcessingArea 0, 0, 640, 480"_s};
}

} // namespace

void TestPictureCommands::commandsWithoutValues_data()
{
    QTest::addColumn<QString>("operation");
    for (const Command &command : commandsAtOnce)
        QTest::newRow(command.item) << QString::fromLatin1(command.operation);
}

void TestPictureCommands::commandsWithoutValues()
{
    QFETCH(QString, operation);
    PictureBench bench;
    bench.open({640, 480});
    itemOf(bench, QString::fromLatin1(QTest::currentDataTag()))->trigger();
    QCOMPARE(bench.takeCalls(), sequence(operation));
    QVERIFY(bench.form->bModified);
}

void TestPictureCommands::commandsWithoutAPictureDoNothing_data()
{
    QTest::addColumn<QString>("item");
    for (const Command &command : commandsAtOnce)
        QTest::newRow(command.item) << QString::fromLatin1(command.item);
    for (const Prompt &prompt : promptsOfValues)
        QTest::newRow(prompt.item) << QString::fromLatin1(prompt.item);
    for (const char *item : {"warp", "mat", "replace"})
        QTest::newRow(item) << QString::fromLatin1(item);
}

void TestPictureCommands::commandsWithoutAPictureDoNothing()
{
    QFETCH(QString, item);
    PictureBench bench;
    bench.takeCalls();
    itemOf(bench, item)->trigger();
    QCOMPARE(bench.takeCalls(), QStringList());
    QVERIFY(!bench.form->bModified);
    QCOMPARE(bench.prompts.shown(), 0);
}

void TestPictureCommands::prompts_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("prompt");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("offered");
    for (const Prompt &prompt : promptsOfValues) {
        QTest::newRow(prompt.item) << QString::fromLatin1(prompt.operation)
                                   << QString::fromLatin1(prompt.prompt) << QString::fromLatin1(prompt.title)
                                   << QString::fromLatin1(prompt.offered);
    }
}

void TestPictureCommands::prompts()
{
    QFETCH(QString, operation);
    QFETCH(QString, prompt);
    QFETCH(QString, title);
    QFETCH(QString, offered);
    PictureBench bench;
    bench.open({640, 480});
    QStringList before;
    bench.prompts.expectInput(prompt, title).offering(offered).type(u"25"_s).meanwhile([&] {
        before = bench.takeCalls();
    });
    itemOf(bench, QString::fromLatin1(QTest::currentDataTag()))->trigger();
    QVERIFY(bench.prompts.allShown());
    // The undo copy is kept after the answer.
    QCOMPARE(before, QStringList());
    QCOMPARE(bench.takeCalls(), sequence(operation + u" 25"_s));
    QVERIFY(bench.form->bModified);
}

void TestPictureCommands::aCancelledPromptCountsAsNought_data()
{
    prompts_data();
}

void TestPictureCommands::aCancelledPromptCountsAsNought()
{
    QFETCH(QString, operation);
    QFETCH(QString, prompt);
    QFETCH(QString, title);
    if (operation == u"Rotate")
        return;
    PictureBench bench;
    bench.open({640, 480});
    bench.prompts.expectInput(prompt, title);
    itemOf(bench, QString::fromLatin1(QTest::currentDataTag()))->trigger();
    QCOMPARE(bench.takeCalls(), sequence(operation + u" 0"_s));
    QVERIFY(bench.form->bModified);
}

void TestPictureCommands::valuesAreLeadingNumbers_data()
{
    QTest::addColumn<QString>("passed");
    QTest::newRow("12.5 percent") << u"12.5"_s;
    QTest::newRow("-7") << u"-7"_s;
    QTest::newRow("much") << u"0"_s;
    QTest::newRow(" 3") << u"3"_s;
    QTest::newRow("1e2") << u"100"_s;
}

void TestPictureCommands::valuesAreLeadingNumbers()
{
    QFETCH(QString, passed);
    PictureBench bench;
    bench.open({640, 480});
    bench.prompts.expectInput(u"Enter contrast value:"_s, u"Contrast"_s)
        .type(QString::fromLatin1(QTest::currentDataTag()));
    bench.form->menus.con->trigger();
    QCOMPARE(bench.takeCalls(), sequence(u"Contrast "_s + passed));
}

void TestPictureCommands::valuesAreNotChecked()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.prompts.expectInput(u"Enter size of mosaic pieces:"_s, u"Mosaic"_s).type(u"-99999"_s);
    bench.form->menus.mos->trigger();
    QCOMPARE(bench.takeCalls(), sequence(u"Mosaic -99999"_s));
}

void TestPictureCommands::gammaIsASingle()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.prompts.expectInput(u"Enter gamma value:"_s, u"Gamma"_s).type(u"0.1"_s);
    bench.form->menus.gam->trigger();
    QCOMPARE(bench.form->sngGammaValue, 0.1F);
    QCOMPARE(bench.takeCalls(), sequence(u"Gamma 0.1000000015"_s));
}

void TestPictureCommands::gammaBeyondASingleOverflows()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.prompts.expectInput(u"Enter gamma value:"_s, u"Gamma"_s).type(u"1E39"_s);
    bench.prompts.expectError(error::Overflow);
    bench.form->menus.gam->trigger();
    QCOMPARE(bench.end.count(), 1);
    QCOMPARE(bench.takeCalls(), QStringList());
}

void TestPictureCommands::rotateTakesAnInteger_data()
{
    QTest::addColumn<QString>("passed");
    QTest::newRow("90") << u"90"_s;
    QTest::newRow("-32768") << u"-32768"_s;
    QTest::newRow("2.5") << u"2"_s;
    QTest::newRow("3.5") << u"4"_s;
}

void TestPictureCommands::rotateTakesAnInteger()
{
    QFETCH(QString, passed);
    PictureBench bench;
    bench.open({640, 480});
    bench.prompts.expectInput(u"Enter the angle of rotation:"_s, u"Rotate Image"_s)
        .type(QString::fromLatin1(QTest::currentDataTag()));
    bench.form->menus.rot->trigger();
    QCOMPARE(bench.takeCalls(), sequence(u"Rotate "_s + passed));
}

void TestPictureCommands::rotateRefusesWhatIsNoInteger_data()
{
    QTest::addColumn<int>("failure");
    QTest::newRow("") << error::TypeMismatch;
    QTest::newRow("half a turn") << error::TypeMismatch;
    QTest::newRow("90 degrees") << error::TypeMismatch;
    QTest::newRow("32768") << error::Overflow;
    QTest::newRow("-32769") << error::Overflow;
}

void TestPictureCommands::rotateRefusesWhatIsNoInteger()
{
    QFETCH(int, failure);
    PictureBench bench;
    bench.open({640, 480});
    bench.prompts.expectInput(u"Enter the angle of rotation:"_s, u"Rotate Image"_s)
        .type(QString::fromLatin1(QTest::currentDataTag()));
    bench.prompts.expectError(failure);
    bench.form->menus.rot->trigger();
    QCOMPARE(bench.end.count(), 1);
    QVERIFY(bench.prompts.allShown());
    QCOMPARE(bench.takeCalls(), QStringList());
}

void TestPictureCommands::answersOutliveTheirCommands()
{
    PictureBench bench;
    bench.open({640, 480});
    for (const Prompt &prompt : promptsOfValues) {
        bench.prompts.expectInput(QString::fromLatin1(prompt.prompt), QString::fromLatin1(prompt.title))
            .type(u"17"_s);
        itemOf(bench, QString::fromLatin1(prompt.item))->trigger();
    }
    const frmPicEdit &form = *bench.form;
    for (const QString &answer : {form.sBlendValue, form.sBrightnessValue, form.sContrastValue,
                                  form.sSharpnessValue, form.sMosaicSize})
        QCOMPARE(answer, u"17"_s);
    QCOMPARE(form.sngGammaValue, 17.0F);
    QCOMPARE(form.nRotateAngle.value(), qint16{17});
}

void TestPictureCommands::theFixedCommands_data()
{
    QTest::addColumn<QString>("operation");
    QTest::newRow("warp") << u"Warp 20, 20, 400, 20, 20, 400, 400, 400"_s;
    QTest::newRow("mat") << u"Matrix -1, 2, -1, -1, 9, -1, -1, 2, -1, 1, 2"_s;
}

void TestPictureCommands::theFixedCommands()
{
    QFETCH(QString, operation);
    PictureBench bench;
    bench.open({640, 480});
    itemOf(bench, QString::fromLatin1(QTest::currentDataTag()))->trigger();
    // They mark nothing as modified and do not send the area.
    QCOMPARE(bench.takeCalls(), (QStringList{u"c2.KeepUndo True"_s, u"c2."_s + operation, u"c2.Picture"_s}));
    QVERIFY(!bench.form->bModified);
}

void TestPictureCommands::theFixedCommandsLeaveTheZoom()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.form->menus.in->trigger();
    bench.takeCalls();
    for (QAction *item : {bench.form->menus.warp, bench.form->menus.mat, bench.form->menus.replace})
        item->trigger();
    QVERIFY(!bench.takeCalls().contains(u"c2.Picture = photo.jpg"_s));
    QVERIFY(bench.form->bZoomed);
    QCOMPARE(bench.form->dZoom, 2.0);
}

void TestPictureCommands::replaceColorsTakesTheButtonsColors()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.form->menus.replace->trigger();
    const auto &Command2 = bench.form->toolbar.Command2;
    const QString colors = u"%1, %2, %3"_s.arg(Command2[0]->BackColor())
                               .arg(Command2[1]->BackColor())
                               .arg(Command2[7]->BackColor());
    QCOMPARE(colors, u"15132390, 16777215, 16777215"_s);
    QCOMPARE(bench.takeCalls(),
             (QStringList{u"c2.KeepUndo True"_s, u"c2.ReplaceColors "_s + colors, u"c2.Picture"_s}));
    QVERIFY(!bench.form->bModified);
}

void TestPictureCommands::aCommandEndsTheZoomFirst()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.form->menus.in->trigger();
    bench.form->menus.in->trigger();
    bench.takeCalls();
    bench.form->menus.blur->trigger();
    QCOMPARE(bench.takeCalls(),
             QStringList({u"c1.Picture"_s, u"c2.Picture = photo.jpg"_s}) + sequence(u"Blur"_s));
    QVERIFY(!bench.form->bZoomed);
    QCOMPARE(bench.form->dZoom, 1.0);
    QCOMPARE(bench.c2->Width(), 640);
}

void TestPictureCommands::thePromptComesAfterTheZoomHasEnded()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.form->menus.out->trigger();
    bench.takeCalls();
    QStringList before;
    bench.prompts.expectInput(u"Enter blend value:"_s, u"Blend"_s).meanwhile([&] {
        before = bench.takeCalls();
    });
    bench.form->menus.blend->trigger();
    QCOMPARE(before, (QStringList{u"c1.Picture"_s, u"c2.Picture = photo.jpg"_s}));
}

void TestPictureCommands::theAreaIsSentAfterTheOperation()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.form->lAreaLeft = 10;
    bench.form->lAreaTop = 20;
    bench.form->lAreaRight = 110;
    bench.form->lAreaBottom = 220;
    bench.form->menus.emboss->trigger();
    QCOMPARE(bench.takeCalls(),
             (QStringList{u"c2.KeepUndo True"_s, u"c2.Emboss"_s, u"c2.Picture"_s,
                          u"c2.SetProcessingArea 10, 20, 100, 200"_s}));
}

void TestPictureCommands::anAreaTooLargeOverflows()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.form->lAreaLeft = -2147483647;
    bench.form->lAreaRight = 2147483647;
    bench.prompts.expectError(error::Overflow);
    bench.form->menus.blur->trigger();
    QCOMPARE(bench.end.count(), 1);
}

void TestPictureCommands::onlyTheLastCommandIsUndone()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.form->menus.blur->trigger();
    bench.form->menus.neg->trigger();
    bench.form->menus.undo->trigger();
    QCOMPARE(nameOf(bench.c2->Picture()), u"photo.jpg+Blur"_s);
}

QTEST_MAIN(TestPictureCommands)
#include "TestPictureCommands.moc"
