#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "controls/ComboBox.h"
#include "piceditor/Form2.h"
#include "piceditor/Form3.h"
#include "piceditor/Form4.h"
#include "piceditor/Form5.h"
#include "piceditor/Form6.h"
#include "piceditor/Form7.h"
#include "tests/piceditor/PictureBench.h"
#include "tests/support/FormChecks.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// The six dialogs.
class TestParameterDialogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void captionsAndBoxes_data();
    void captionsAndBoxes();
    void theyAreNotModalAndThereIsOneOfEach();
    void whatTheyOfferChangesNothing();
    void okWithoutAPictureOnlyCloses_data();
    void okWithoutAPictureOnlyCloses();
    void cancelOnlyCloses_data();
    void cancelOnlyCloses();
    void escapeOnlyCloses();
    void buttonizePassesIntensityAndWidth();
    void adjustRgb();
    void adjustHsl();
    void textsCountByTheirLeadingNumber();
    void theZoomEndsFirst();
    void theListsOfResampleColors();
    void resampleColorsPassesTheCode_data();
    void resampleColorsPassesTheCode();
    void withoutAChoiceTheFormerCodeStays();
    void resampleColorsShowsTheDepth();
    void resampleColorsStartsWithThePicturesDepth_data();
    void resampleColorsStartsWithThePicturesDepth();
    void resizeChangesTheFileImage();
    void resizeIsSavedLater();
    void resizeReckonsWithTheFileImage();
    void setProcessingArea();
    void setProcessingAreaShowsTheStoredOne();
    void setProcessingAreaRoundsAndStores();
    void setProcessingAreaNeedsNumbers_data();
    void setProcessingAreaNeedsNumbers();
};

namespace {

// Chooses the item that opens a dialog, and finds it.
ParameterDialog *opened(const PictureBench &bench, const QString &item, const QString &name)
{
    bench.form->findChild<QAction *>(item)->trigger();
    return bench.form->findChild<ParameterDialog *>(name);
}

template<typename Form>
Form *opened(const PictureBench &bench, QAction *item)
{
    item->trigger();
    return bench.form->findChild<Form *>();
}

void addDialogs()
{
    QTest::addColumn<QString>("item");
    for (const auto &[name, item] : {std::pair{"Form2", "but"},
                                     {"Form3", "rgb"},
                                     {"Form4", "hsl"},
                                     {"Form5", "resample"},
                                     {"Form6", "str"},
                                     {"Form7", "set"}})
        QTest::newRow(name) << QString::fromLatin1(item);
}

QStringList sequence(const QString &operation)
{
    return {u"c2.KeepUndo True"_s, u"c2."_s + operation, u"c2.Picture"_s,
            u"c2.SetProcessingArea 0, 0, 640, 480"_s};
}

} // namespace

void TestParameterDialogs::captionsAndBoxes_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QStringList>("boxes");
    QTest::newRow("Form2") << u"but"_s << u"Image buttonize"_s
                           << QStringList{u"Text1 Enter button intensity:"_s, u"Text2 Enter button width:"_s};
    QTest::newRow("Form3") << u"rgb"_s << u"Adjust RGB"_s
                           << QStringList{u"Text1_0 Red Value"_s, u"Text1_1 Green Value"_s,
                                          u"Text1_2 Blue Value"_s};
    QTest::newRow("Form4") << u"hsl"_s << u"Adjust HSL"_s
                           << QStringList{u"Text1_0 HueValue"_s, u"Text1_1 Saturation Value"_s,
                                          u"Text1_2 Luminosity Value"_s};
    QTest::newRow("Form5") << u"resample"_s << u"Resample colors"_s
                           << QStringList{u"Combo1_0 Bits per pixel"_s, u"Combo1_1 Color depth type"_s,
                                          u"Combo1_2 Dither type"_s};
    QTest::newRow("Form6") << u"str"_s << u"Resize"_s << QStringList{u"Text1 Dimensions ratio:"_s};
    QTest::newRow("Form7") << u"set"_s << u"Set processing area"_s
                           << QStringList{u"Text1 Left:"_s, u"Text2 Top:"_s, u"Text3 Right:"_s,
                                          u"Text4 Bottom:"_s};
}

void TestParameterDialogs::captionsAndBoxes()
{
    QFETCH(QString, item);
    QFETCH(QString, caption);
    QFETCH(QStringList, boxes);
    PictureBench bench;
    QVERIFY(bench.show());
    ParameterDialog *dialog = opened(bench, item, QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(dialog);
    QCOMPARE(dialog->windowTitle(), caption);
    QStringList found;
    for (const QLabel *label : dialog->findChildren<QLabel *>())
        found.append(label->buddy()->objectName() + u' ' + label->text());
    QCOMPARE(found, boxes);
    QCOMPARE(dialog->Command1->text(), u"OK"_s);
    QCOMPARE(dialog->Command2->text(), u"&Cancel"_s);
    QVERIFY(dialog->Command1->isDefault());
    // Tab visits the boxes as the eye does, then the buttons.
    QVERIFY(showActive(*dialog));
    QTRY_COMPARE(QApplication::activeWindow(), dialog);
    QStringList order;
    for (const QString &box : boxes)
        order.append(box.section(u' ', 0, 0));
    order += {u"Command1"_s, u"Command2"_s, order.first()};
    QCOMPARE(tabbedThrough(static_cast<int>(order.size()) - 1), order);
}

void TestParameterDialogs::theyAreNotModalAndThereIsOneOfEach()
{
    PictureBench bench;
    QVERIFY(bench.show());
    auto *first = opened<vandrel::Form3>(bench, bench.form->menus.rgb);
    QVERIFY(!first->isModal());
    bench.form->menus.rgb->trigger();
    QCOMPARE(bench.form->findChildren<vandrel::Form3 *>().size(), 1);
    first->Command2->click();
    QTRY_VERIFY(!bench.form->findChild<vandrel::Form3 *>());
    QVERIFY(opened<vandrel::Form3>(bench, bench.form->menus.rgb));
}

void TestParameterDialogs::whatTheyOfferChangesNothing()
{
    PictureBench bench;
    bench.open({640, 480});
    opened<vandrel::Form2>(bench, bench.form->menus.but)->Command1->click();
    QCOMPARE(bench.takeCalls(), sequence(u"Buttonize 0, 0"_s));
    opened<vandrel::Form3>(bench, bench.form->menus.rgb)->Command1->click();
    QCOMPARE(bench.takeCalls(), sequence(u"AdjustRGB 0, 0, 0"_s));
    opened<vandrel::Form4>(bench, bench.form->menus.hsl)->Command1->click();
    QCOMPARE(bench.takeCalls(), sequence(u"AdjustHSL 0, 0, 0"_s));
    opened<vandrel::Form6>(bench, bench.form->menus.str)->Command1->click();
    QCOMPARE(bench.takeCalls().value(1), u"c2.Resize 640, 480, 1"_s);
}

void TestParameterDialogs::okWithoutAPictureOnlyCloses_data()
{
    addDialogs();
}

void TestParameterDialogs::okWithoutAPictureOnlyCloses()
{
    QFETCH(QString, item);
    PictureBench bench;
    QVERIFY(bench.show());
    ParameterDialog *dialog = opened(bench, item, QString::fromLatin1(QTest::currentDataTag()));
    bench.takeCalls();
    const QString info = bench.panel(1);
    dialog->Command1->click();
    QVERIFY(!dialog->isVisible());
    // The area alone can be set without a picture.
    const QStringList expected
        = item == u"set" ? QStringList(u"c2.SetProcessingArea 0, 0, 0, 0"_s) : QStringList();
    QCOMPARE(bench.takeCalls().filter(u"c2"_s).filter(u"SetProcessingArea"_s), expected);
    QCOMPARE(bench.panel(1), info);
    QVERIFY(!bench.form->bModified);
}

void TestParameterDialogs::cancelOnlyCloses_data()
{
    addDialogs();
}

void TestParameterDialogs::cancelOnlyCloses()
{
    QFETCH(QString, item);
    PictureBench bench;
    bench.open({640, 480});
    ParameterDialog *dialog = opened(bench, item, QString::fromLatin1(QTest::currentDataTag()));
    bench.takeCalls();
    dialog->Command2->click();
    QVERIFY(!dialog->isVisible());
    QCOMPARE(bench.takeCalls(), QStringList());
    QVERIFY(!bench.form->bModified);
}

void TestParameterDialogs::escapeOnlyCloses()
{
    PictureBench bench;
    bench.open({640, 480});
    auto *dialog = opened<vandrel::Form2>(bench, bench.form->menus.but);
    QTest::keyClick(dialog, Qt::Key_Escape);
    QVERIFY(!dialog->isVisible());
    QCOMPARE(bench.takeCalls(), QStringList());
}

void TestParameterDialogs::buttonizePassesIntensityAndWidth()
{
    PictureBench bench;
    bench.open({640, 480});
    auto *dialog = opened<vandrel::Form2>(bench, bench.form->menus.but);
    dialog->Text1->setText(u"40"_s);
    dialog->Text2->setText(u"12"_s);
    dialog->Command1->click();
    QCOMPARE(bench.takeCalls(), sequence(u"Buttonize 40, 12"_s));
    QVERIFY(bench.form->bModified);
    QVERIFY(!dialog->isVisible());
}

void TestParameterDialogs::adjustRgb()
{
    PictureBench bench;
    bench.open({640, 480});
    auto *dialog = opened<vandrel::Form3>(bench, bench.form->menus.rgb);
    dialog->Text1[0]->setText(u"10"_s);
    dialog->Text1[1]->setText(u"-20"_s);
    dialog->Text1[2]->setText(u"30.5"_s);
    dialog->Command1->click();
    QCOMPARE(bench.takeCalls(), sequence(u"AdjustRGB 10, -20, 30.5"_s));
}

void TestParameterDialogs::adjustHsl()
{
    PictureBench bench;
    bench.open({640, 480});
    auto *dialog = opened<vandrel::Form4>(bench, bench.form->menus.hsl);
    dialog->Text1[0]->setText(u"180"_s);
    dialog->Text1[1]->setText(u"-50"_s);
    dialog->Text1[2]->setText(u"25"_s);
    dialog->Command1->click();
    QCOMPARE(bench.takeCalls(), sequence(u"AdjustHSL 180, -50, 25"_s));
}

void TestParameterDialogs::textsCountByTheirLeadingNumber()
{
    PictureBench bench;
    bench.open({640, 480});
    auto *dialog = opened<vandrel::Form3>(bench, bench.form->menus.rgb);
    dialog->Text1[0]->setText(u"12 or so"_s);
    dialog->Text1[1]->setText(u"none"_s);
    dialog->Text1[2]->clear();
    dialog->Command1->click();
    QCOMPARE(bench.takeCalls(), sequence(u"AdjustRGB 12, 0, 0"_s));
}

void TestParameterDialogs::theZoomEndsFirst()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.form->menus.in->trigger();
    bench.takeCalls();
    opened<vandrel::Form4>(bench, bench.form->menus.hsl)->Command1->click();
    QCOMPARE(bench.takeCalls(),
             QStringList({u"c1.Picture"_s, u"c2.Picture = photo.jpg"_s}) + sequence(u"AdjustHSL 0, 0, 0"_s));
    QVERIFY(!bench.form->bZoomed);
    QCOMPARE(bench.form->dZoom, 1.0);
}

void TestParameterDialogs::theListsOfResampleColors()
{
    PictureBench bench;
    bench.open({640, 480});
    const auto *dialog = opened<vandrel::Form5>(bench, bench.form->menus.resample);
    const QList<QStringList> expected{
        {u"1"_s, u"4"_s, u"8"_s, u"16"_s, u"24"_s},
        {u"Fixed"_s, u"Gray_Scale"_s, u"Gray_Scale_Dither"_s, u"Optimized"_s, u"Optimized_Dither"_s},
        {u"None"_s, u"Floyd_Steinberg"_s, u"Ordered"_s, u"RandomDiffuse"_s},
    };
    for (int index = 0; index < 3; ++index) {
        QStringList items;
        for (int i = 0; i < dialog->Combo1[index]->ListCount(); ++i)
            items.append(dialog->Combo1[index]->List(i));
        QCOMPARE(items, expected.at(index));
    }
}

void TestParameterDialogs::resampleColorsPassesTheCode_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("code");
    QTest::newRow("Fixed") << 0 << 1;
    QTest::newRow("Gray_Scale") << 1 << 2;
    QTest::newRow("Gray_Scale_Dither") << 2 << 6;
    QTest::newRow("Optimized") << 3 << 0;
    QTest::newRow("Optimized_Dither") << 4 << 5;
}

void TestParameterDialogs::resampleColorsPassesTheCode()
{
    QFETCH(int, position);
    QFETCH(int, code);
    PictureBench bench;
    bench.open({640, 480});
    auto *dialog = opened<vandrel::Form5>(bench, bench.form->menus.resample);
    dialog->Combo1[0]->setListIndex(2);
    dialog->Combo1[1]->setListIndex(position);
    dialog->Combo1[2]->setListIndex(3);
    dialog->Command1->click();
    QCOMPARE(bench.takeCalls(), sequence(u"ResampleColors 8, %1, 3"_s.arg(code)));
}

void TestParameterDialogs::withoutAChoiceTheFormerCodeStays()
{
    PictureBench bench;
    bench.open({640, 480});
    auto *dialog = opened<vandrel::Form5>(bench, bench.form->menus.resample);
    dialog->lColorDepthType = 6;
    for (int index = 0; index < 3; ++index)
        dialog->Combo1[index]->setListIndex(-1);
    dialog->Command1->click();
    QCOMPARE(bench.takeCalls(), sequence(u"ResampleColors 0, 6, -1"_s));
}

void TestParameterDialogs::resampleColorsShowsTheDepth()
{
    PictureBench bench;
    bench.open({640, 480});
    auto *dialog = opened<vandrel::Form5>(bench, bench.form->menus.resample);
    dialog->Combo1[0]->setListIndex(1);
    dialog->Command1->click();
    QCOMPARE(bench.panel(1), u"640x480 4 bits/pixel"_s);
}

void TestParameterDialogs::resampleColorsStartsWithThePicturesDepth_data()
{
    QTest::addColumn<int>("depth");
    QTest::addColumn<QString>("chosen");
    QTest::newRow("1") << 1 << u"1"_s;
    QTest::newRow("8") << 8 << u"8"_s;
    QTest::newRow("32") << 32 << u"24"_s;
}

void TestParameterDialogs::resampleColorsStartsWithThePicturesDepth()
{
    QFETCH(int, depth);
    QFETCH(QString, chosen);
    PictureBench bench;
    bench.open({10, 10}, u"c:\\a.bmp"_s, static_cast<qint16>(depth));
    const auto *dialog = opened<vandrel::Form5>(bench, bench.form->menus.resample);
    QCOMPARE(dialog->Combo1[0]->Text(), chosen);
    QCOMPARE(dialog->Combo1[1]->Text(), u"Optimized"_s);
    QCOMPARE(dialog->Combo1[2]->Text(), u"None"_s);
}

void TestParameterDialogs::resizeChangesTheFileImage()
{
    PictureBench bench;
    bench.open({640, 480});
    auto *dialog = opened<vandrel::Form6>(bench, bench.form->menus.str);
    dialog->Text1->setText(u"0.5"_s);
    dialog->Command1->click();
    QCOMPARE(bench.takeCalls(),
             (QStringList{u"c2.KeepUndo True"_s, u"c2.Resize 320, 240, 1"_s, u"c2.Picture"_s,
                          u"c1.Picture = photo.jpg+Resize"_s, u"c2.Picture"_s,
                          u"c2.SetProcessingArea 0, 0, 640, 480"_s}));
    QCOMPARE(bench.panel(1), u"320x240 24 bits/pixel"_s);
    QVERIFY(bench.form->bModified);
}

void TestParameterDialogs::resizeIsSavedLater()
{
    PictureBench bench;
    bench.open({640, 480});
    auto *dialog = opened<vandrel::Form6>(bench, bench.form->menus.str);
    dialog->Text1->setText(u".5"_s);
    dialog->Command1->click();
    bench.form->menus.sav->trigger();
    QCOMPARE(bench.takeCalls().last(), u"c1.SaveImageFile c:\\photo.jpg, 0"_s);
    QCOMPARE(bench.c1->Width(), 320);
    QCOMPARE(bench.c1->Height(), 240);
}

void TestParameterDialogs::resizeReckonsWithTheFileImage()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.form->menus.in->trigger();
    auto *dialog = opened<vandrel::Form6>(bench, bench.form->menus.str);
    dialog->Text1->setText(u"2"_s);
    bench.takeCalls();
    dialog->Command1->click();
    QVERIFY(bench.takeCalls().contains(u"c2.Resize 1280, 960, 1"_s));
}

void TestParameterDialogs::setProcessingArea()
{
    PictureBench bench;
    bench.open({640, 480});
    auto *dialog = opened<vandrel::Form7>(bench, bench.form->menus.set);
    dialog->Text1->setText(u"10"_s);
    dialog->Text2->setText(u"20"_s);
    dialog->Text3->setText(u"110"_s);
    dialog->Text4->setText(u"220"_s);
    dialog->Command1->click();
    QCOMPARE(bench.takeCalls(), QStringList(u"c2.SetProcessingArea 10, 20, 100, 200"_s));
    QCOMPARE(bench.area(), (QList<qint32>{10, 20, 110, 220}));
    QVERIFY(!bench.form->bModified);
    QVERIFY(!dialog->isVisible());
}

void TestParameterDialogs::setProcessingAreaShowsTheStoredOne()
{
    PictureBench bench;
    bench.open({640, 480});
    const auto *dialog = opened<vandrel::Form7>(bench, bench.form->menus.set);
    QCOMPARE(dialog->Text1->text(), u"0"_s);
    QCOMPARE(dialog->Text3->text(), u"640"_s);
    QCOMPARE(dialog->Text4->text(), u"480"_s);
}

void TestParameterDialogs::setProcessingAreaRoundsAndStores()
{
    PictureBench bench;
    bench.open({640, 480});
    auto *dialog = opened<vandrel::Form7>(bench, bench.form->menus.set);
    dialog->Text1->setText(u"2.5"_s);
    dialog->Text3->setText(u"-5"_s);
    dialog->Command1->click();
    QCOMPARE(bench.area(), (QList<qint32>{2, 0, -5, 480}));
    QCOMPARE(bench.takeCalls(), QStringList(u"c2.SetProcessingArea 2, 0, -8, 480"_s));
}

void TestParameterDialogs::setProcessingAreaNeedsNumbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("failure");
    QTest::newRow("empty") << QString() << error::TypeMismatch;
    QTest::newRow("a word") << u"left"_s << error::TypeMismatch;
    QTest::newRow("a number and a word") << u"10 px"_s << error::TypeMismatch;
    QTest::newRow("too large") << u"2147483648"_s << error::Overflow;
}

void TestParameterDialogs::setProcessingAreaNeedsNumbers()
{
    QFETCH(QString, text);
    QFETCH(int, failure);
    PictureBench bench;
    bench.open({640, 480});
    auto *dialog = opened<vandrel::Form7>(bench, bench.form->menus.set);
    dialog->Text4->setText(text);
    bench.prompts.expectError(failure);
    dialog->Command1->click();
    QCOMPARE(bench.end.count(), 1);
    QVERIFY(bench.prompts.allShown());
    QCOMPARE(bench.takeCalls(), QStringList());
}

QTEST_MAIN(TestParameterDialogs)
#include "TestParameterDialogs.moc"
