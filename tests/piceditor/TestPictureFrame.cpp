#include <QCloseEvent>
#include <QCoreApplication>
#include <QLineEdit>
#include <QMenuBar>
#include <QTest>
#include <QTextBrowser>

#include "piceditor/ClientArea.h"
#include "piceditor/Form2.h"
#include "piceditor/GuideWindow.h"
#include "tests/piceditor/PictureBench.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// The editor's frame: menus, tool bar, files, the question, the end.
class TestPictureFrame : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWindow();
    void menus_data();
    void menus();
    void itemsWithoutActionDoNothing_data();
    void itemsWithoutActionDoNothing();
    void toolTips_data();
    void toolTips();
    void everyButtonHasANameAndAPicture();
    void buttonsPopUpTheirMenus_data();
    void buttonsPopUpTheirMenus();
    void loadClearsTheImagesAndGoesToTheProgramsFolder();

    void openLoadsCopiesAndShows();
    void openTellsSizeAndDepth();
    void aCancelledOpenChangesNothing();
    void theFormatFollowsTheEnding_data();
    void theFormatFollowsTheEnding();
    void anotherEndingKeepsTheFormat_data();
    void anotherEndingKeepsTheFormat();
    void openAsksAboutChanges_data();
    void openAsksAboutChanges();
    void aFileThatCannotBeReadEndsTheProgram();

    void saveWritesTheWorkingImage();
    void saveWhileZoomedWritesTheFileImage();
    void aFailedSaveEndsTheProgramAndStaysModified();
    void withoutAPictureNothingCanBeSavedOrCopied();
    void saveAsOffersSixFormats();
    void saveAsChoosesTheFormat_data();
    void saveAsChoosesTheFormat();
    void saveAsKeepsNameAndFormatOfTheOpenPicture();
    void aCancelledSaveAsSavesNothing();
    void printAsksFirst();
    void printNoDoesNothing();
    void printWithoutAPictureAsksNothing();
    void copyPutsTheFileImageOnTheClipboard();
    void copyWhileZoomedTakesTheUnzoomedImage();

    void undoExchangesAndShows();
    void undoWithoutAPictureDoesNothing();
    void theStatusIsShownWhenTheWindowIsActivated();

    void closingAsksAboutChanges_data();
    void closingAsksAboutChanges();
    void closingUnloadsTheDialogs();
    void exitUnloads();
    void helpShowsTheGuide();
    void theGuidesChapter();

    void progressShowsABusyPointer();
    void aNoticeIsShownUntilTheNextOperation();
};

void TestPictureFrame::theWindow()
{
    PictureBench bench;
    QCOMPARE(bench.form->objectName(), u"frmPicEdit"_s);
    QCOMPARE(bench.form->windowTitle(), u"EditMe!"_s);
    for (const QString &name :
         {u"Pic1"_s, u"Shape1"_s, u"hs1"_s, u"VS1"_s, u"Command4"_s, u"CoolBar1"_s, u"StatusBar1"_s}) {
        const auto *widget = bench.form->findChild<QWidget *>(name);
        QVERIFY2(widget, qPrintable(name));
    }
    for (const QWidget *widget : std::initializer_list<const QWidget *>{
             bench.form->view.Pic1, bench.form->view.hs1, bench.form->view.VS1, bench.form->view.Command4})
        QVERIFY2(!widget->accessibleName().isEmpty(), qPrintable(widget->objectName()));
    QVERIFY(!bench.form->view.Shape1->isVisible());
}

void TestPictureFrame::menus_data()
{
    QTest::addColumn<QString>("menu");
    QTest::addColumn<QStringList>("items");
    const auto row = [](const char *menu, const QString &caption, const QStringList &items) {
        QTest::newRow(menu) << QString::fromLatin1(menu) + u' ' + caption << items;
    };
    row("file", u"&File"_s,
        {u"opn &Open.."_s, u"sav &Save"_s, u"savas S&ave as.."_s, u"prnt &Print"_s, u"-"_s, u"exit E&xit"_s});
    row("edit", u"&Edit"_s,
        {u"undo &Undo"_s, u"cpy &Copy"_s, u"set &Set processing area..."_s, u"shp shape"_s});
    row("shp", u"shape"_s, {u"hnd Free Hand"_s, u"line Line"_s, u"rect Rectangle"_s, u"cir Circle"_s});
    row("proc", u"&Process"_s,
        {u"rgb Adjust RGB"_s,
         u"hsl Adjust HSL"_s,
         u"autocon Auto-Contrast"_s,
         u"resample Resample Colors"_s,
         u"deskew Deskew"_s,
         u"mapping Bump Mapping"_s,
         u"merge Merge..."_s,
         u"alpha Alpha Effect..."_s,
         u"blur Blur"_s,
         u"blend Blend"_s,
         u"brt Brightness"_s,
         u"con Contrast"_s,
         u"equ Equalize"_s,
         u"gam Gamma"_s,
         u"mat Matrix..."_s,
         u"neg Negative"_s,
         u"conc Concave spectrum"_s,
         u"conv Convex Spectrum"_s,
         u"rmbr Rembrand"_s,
         u"replace Replace Colors..."_s,
         u"warp Warp..."_s,
         u"sharp Sharpen"_s});
    row("txt", u"&Texture"_s,
        {u"btv Broken &TV"_s, u"but &Buttonize"_s, u"mos &Mosaic"_s, u"emboss &Emboss"_s});
    row("zoom", u"&Zoom"_s, {u"in Zoom &In"_s, u"out Zoom &Out"_s});
    row("size", u"&Resize"_s, {u"str &Resize.."_s});
    row("flip", u"&Flip"_s, {u"hor Flip &Horizontally"_s, u"ver Flip &Vertically"_s, u"rot &Rotate.."_s});
    row("text", u"text"_s, {u"fnt Font..."_s, u"text2 Text..."_s});
}

void TestPictureFrame::menus()
{
    QFETCH(QString, menu);
    QFETCH(QStringList, items);
    PictureBench bench;
    const auto *shown = bench.form->findChild<QMenu *>(menu.section(u' ', 0, 0));
    QVERIFY(shown);
    QCOMPARE(shown->title(), menu.section(u' ', 1));
    QStringList found;
    for (const QAction *item : shown->actions()) {
        const QString name = item->menu() ? item->menu()->objectName() : item->objectName();
        found.append(item->isSeparator() ? u"-"_s : name + u' ' + item->text());
    }
    QCOMPARE(found, items);
}

void TestPictureFrame::itemsWithoutActionDoNothing_data()
{
    QTest::addColumn<QString>("item");
    for (const char *item : {"merge", "alpha", "hnd", "line", "rect", "cir", "fnt", "text2"})
        QTest::newRow(item) << QString::fromLatin1(item);
}

void TestPictureFrame::itemsWithoutActionDoNothing()
{
    QFETCH(QString, item);
    PictureBench bench;
    bench.open({640, 480});
    bench.form->findChild<QAction *>(item)->trigger();
    QCOMPARE(bench.takeCalls(), QStringList());
    QVERIFY(!bench.form->bModified);
    QCOMPARE(bench.prompts.shown(), 0);
}

void TestPictureFrame::toolTips_data()
{
    QTest::addColumn<QString>("toolTip");
    QTest::newRow("Command1_1") << u"Open a picture"_s;
    QTest::newRow("Command1_2") << u"Save picture"_s;
    QTest::newRow("Command1_4") << u"Print picture"_s;
    QTest::newRow("Command2_2") << u"Zoom picture"_s;
    QTest::newRow("Command2_3") << u"Add texture"_s;
    QTest::newRow("Command2_4") << u"Process picture"_s;
    QTest::newRow("Command2_5") << u"Resize picture"_s;
    QTest::newRow("Command2_6") << u"Flip/Rotate picture"_s;
    QTest::newRow("Command2_8") << u"Undo"_s;
}

void TestPictureFrame::toolTips()
{
    QFETCH(QString, toolTip);
    PictureBench bench;
    const auto *button = bench.form->findChild<PicToolButton *>(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(button);
    QCOMPARE(button->toolTip(), toolTip);
    QCOMPARE(button->accessibleName(), toolTip);
}

void TestPictureFrame::everyButtonHasANameAndAPicture()
{
    PictureBench bench;
    QVERIFY(bench.show());
    const QList<PicToolButton *> buttons = bench.form->findChildren<PicToolButton *>();
    QCOMPARE(buttons.size(), 13);
    for (const PicToolButton *button : buttons) {
        QVERIFY2(!button->accessibleName().isEmpty(), qPrintable(button->objectName()));
        const QImage picture = button->icon().pixmap(48, 48).toImage();
        int drawn = 0;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x)
                drawn += qAlpha(picture.pixel(x, y)) > 0 ? 1 : 0;
        }
        QVERIFY2(drawn > 100, qPrintable(button->objectName()));
    }
    // "Save as" is reached from the menu only.
    QVERIFY(!bench.form->toolbar.Command1[3]->isVisible());
}

void TestPictureFrame::buttonsPopUpTheirMenus_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("menu");
    QTest::newRow("shape") << 0 << u"shp"_s;
    QTest::newRow("shape again") << 1 << u"shp"_s;
    QTest::newRow("zoom") << 2 << u"zoom"_s;
    QTest::newRow("texture") << 3 << u"txt"_s;
    QTest::newRow("process") << 4 << u"proc"_s;
    QTest::newRow("resize") << 5 << u"size"_s;
    QTest::newRow("flip") << 6 << u"flip"_s;
    QTest::newRow("text") << 7 << u"text"_s;
}

void TestPictureFrame::buttonsPopUpTheirMenus()
{
    QFETCH(int, index);
    QFETCH(QString, menu);
    PictureBench bench;
    QVERIFY(bench.show());
    QTest::mouseClick(bench.form->toolbar.Command2[index], Qt::LeftButton);
    auto *popUp = bench.form->findChild<QMenu *>(menu);
    QTRY_VERIFY(popUp->isVisible());
    popUp->close();
}

void TestPictureFrame::loadClearsTheImagesAndGoesToTheProgramsFolder()
{
    PictureBench bench;
    QCOMPARE(bench.takeCalls(), (QStringList{u"c1.Clear"_s, u"c2.Clear"_s}));
    QCOMPARE(bench.form->dZoom, 1.0);
    QVERIFY(!bench.form->bZoomed);
    QVERIFY(!bench.form->bModified);
    const QString folder = bench.drives->toDos(QFile::encodeName(QCoreApplication::applicationDirPath()));
    QCOMPARE(bench.drives->currentFolder(folder.at(0).toLatin1()), folder);
}

void TestPictureFrame::openLoadsCopiesAndShows()
{
    PictureBench bench;
    bench.takeCalls();
    bench.c1->files[u"c:\\photo.jpg"_s] = {{640, 480}};
    bench.cd1->choose(u"c:\\photo.jpg"_s);
    bench.form->menus.opn->trigger();
    QCOMPARE(bench.cd1->shown, QStringList(u"Open *.bmp;*.pcx;*.dib;*.wpg;*.jpg;*.tif"_s));
    QCOMPARE(bench.takeCalls(),
             (QStringList{u"c1.LoadImageFile c:\\photo.jpg"_s, u"c1.Picture"_s, u"c2.Picture = photo.jpg"_s,
                          u"c2.Picture"_s, u"c2.SetProcessingArea 0, 0, 640, 480"_s}));
    QCOMPARE(bench.form->view.Pic1->Tag, u"c:\\photo.jpg"_s);
    QCOMPARE(bench.area(), (QList<qint32>{0, 0, 640, 480}));
    QVERIFY(!bench.form->bModified);
    QVERIFY(!bench.form->bZoomed);
}

void TestPictureFrame::openTellsSizeAndDepth()
{
    PictureBench bench;
    bench.open({640, 480});
    QCOMPARE(bench.panel(1), u"640x480 24 bits/pixel"_s);
    bench.open({8, 1}, u"c:\\small.pcx"_s, 4);
    QCOMPARE(bench.panel(1), u"8x1 4 bits/pixel"_s);
}

void TestPictureFrame::aCancelledOpenChangesNothing()
{
    PictureBench bench;
    bench.openAndModify();
    bench.prompts.expect(u"Do you want to save the changes made to picture c:\\photo.jpg?"_s, u"Vandrel"_s)
        .answer(Answer::No);
    bench.cd1->cancel();
    bench.form->menus.opn->trigger();
    QCOMPARE(bench.takeCalls(), QStringList());
    QVERIFY(bench.form->bModified);
    QCOMPARE(bench.form->openPicture(), u"c:\\photo.jpg"_s);
    QVERIFY(bench.prompts.allShown());
}

void TestPictureFrame::theFormatFollowsTheEnding_data()
{
    QTest::addColumn<int>("format");
    QTest::newRow("a.bmp") << 7;
    QTest::newRow("a.jpg") << 0;
    QTest::newRow("a.tif") << 1;
    QTest::newRow("a.dib") << 9;
    QTest::newRow("a.wpg") << 15;
    QTest::newRow("a.pcx") << 8;
    QTest::newRow("abmp") << 7;
}

void TestPictureFrame::theFormatFollowsTheEnding()
{
    QFETCH(int, format);
    PictureBench bench;
    bench.form->nOpenFormat = 99;
    bench.open({10, 10}, u"c:\\"_s + QString::fromLatin1(QTest::currentDataTag()));
    QCOMPARE(bench.form->nOpenFormat.value(), static_cast<qint16>(format));
}

void TestPictureFrame::anotherEndingKeepsTheFormat_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("upper case") << u"c:\\A.BMP"_s;
    QTest::newRow("four letters") << u"c:\\a.tiff"_s;
    QTest::newRow("a metafile") << u"c:\\a.wmf"_s;
    QTest::newRow("short") << u"c:\\a"_s;
}

void TestPictureFrame::anotherEndingKeepsTheFormat()
{
    QFETCH(QString, path);
    PictureBench bench;
    bench.open({10, 10}, u"c:\\first.pcx"_s);
    bench.open({10, 10}, path);
    QCOMPARE(bench.form->nOpenFormat.value(), qint16{8});
}

void TestPictureFrame::openAsksAboutChanges_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<QStringList>("calls");
    QTest::addColumn<bool>("opens");
    QTest::newRow("yes") << 6
                         << QStringList{u"c2.Picture"_s, u"c1.Picture = photo.jpg+Blur"_s,
                                        u"c1.SaveImageFile c:\\photo.jpg, 0"_s}
                         << true;
    QTest::newRow("no") << 7 << QStringList{} << true;
    QTest::newRow("cancel") << 2 << QStringList{} << false;
}

void TestPictureFrame::openAsksAboutChanges()
{
    QFETCH(int, answer);
    QFETCH(QStringList, calls);
    QFETCH(bool, opens);
    PictureBench bench;
    bench.openAndModify();
    bench.prompts.expect(u"Do you want to save the changes made to picture c:\\photo.jpg?"_s, u"Vandrel"_s)
        .buttons(Buttons::YesNoCancel)
        .answer(static_cast<Answer>(answer));
    const qsizetype shownBefore = bench.cd1->shown.size();
    if (opens)
        bench.cd1->cancel();
    bench.form->menus.opn->trigger();
    QVERIFY(bench.prompts.allShown());
    QCOMPARE(bench.cd1->shown.size() - shownBefore, opens ? 1 : 0);
    QCOMPARE(bench.takeCalls(), calls);
    // Only a picture that is loaded takes the mark away here.
    QVERIFY(bench.form->bModified);
}

void TestPictureFrame::aFileThatCannotBeReadEndsTheProgram()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.cd1->choose(u"c:\\missing.jpg"_s);
    bench.prompts.expectError(error::FileNotFound);
    bench.form->menus.opn->trigger();
    QCOMPARE(bench.end.count(), 1);
    // The working image is still the former one.
    QCOMPARE(nameOf(bench.c2->Picture()), u"photo.jpg"_s);
}

void TestPictureFrame::saveWritesTheWorkingImage()
{
    PictureBench bench;
    bench.openAndModify(u"c:\\scan.tif"_s);
    bench.form->menus.sav->trigger();
    QCOMPARE(bench.takeCalls(),
             (QStringList{u"c2.Picture"_s, u"c1.Picture = scan.tif+Blur"_s,
                          u"c1.SaveImageFile c:\\scan.tif, 1"_s}));
    QVERIFY(!bench.form->bModified);
}

void TestPictureFrame::saveWhileZoomedWritesTheFileImage()
{
    PictureBench bench;
    bench.openAndModify();
    bench.form->menus.in->trigger();
    bench.takeCalls();
    bench.form->menus.sav->trigger();
    QCOMPARE(bench.takeCalls(), QStringList(u"c1.SaveImageFile c:\\photo.jpg, 0"_s));
    QCOMPARE(nameOf(bench.c1->Picture()), u"photo.jpg+Blur"_s);
    QVERIFY(!bench.form->bModified);
}

void TestPictureFrame::aFailedSaveEndsTheProgramAndStaysModified()
{
    PictureBench bench;
    bench.openAndModify();
    bench.c1->saveFailure = RuntimeError(error::DiskFull);
    bench.prompts.expectError(error::DiskFull);
    bench.form->menus.sav->trigger();
    QCOMPARE(bench.end.count(), 1);
    QVERIFY(bench.form->bModified);
}

void TestPictureFrame::withoutAPictureNothingCanBeSavedOrCopied()
{
    PictureBench bench;
    bench.takeCalls();
    for (QAction *item : {bench.form->menus.sav, bench.form->menus.savas, bench.form->menus.cpy}) {
        QVERIFY2(!item->isEnabled(), qPrintable(item->objectName()));
        item->trigger();
    }
    bench.form->toolbar.Command1[2]->click();
    QCOMPARE(bench.takeCalls(), QStringList());
    bench.open({10, 10});
    for (const QAction *item : {bench.form->menus.sav, bench.form->menus.savas, bench.form->menus.cpy})
        QVERIFY2(item->isEnabled(), qPrintable(item->objectName()));
    QVERIFY(bench.form->toolbar.Command1[2]->isEnabled());
}

void TestPictureFrame::saveAsOffersSixFormats()
{
    PictureBench bench;
    bench.open({10, 10});
    bench.cd2->cancel();
    bench.form->menus.savas->trigger();
    QCOMPARE(bench.cd2->shown, QStringList(u"Save As "_s));
    QCOMPARE(bench.cd2->Filter, u"Bitmap|*.bmp|JPEG|*.jpg|TIFF|*.tif|PCX|*.pcx|WPG|*.wpg|DIB|*.dib"_s);
}

void TestPictureFrame::saveAsChoosesTheFormat_data()
{
    theFormatFollowsTheEnding_data();
}

void TestPictureFrame::saveAsChoosesTheFormat()
{
    QFETCH(int, format);
    const QString path = u"c:\\"_s + QString::fromLatin1(QTest::currentDataTag());
    PictureBench bench;
    bench.open({10, 10});
    bench.form->nSaveAsFormat = 99;
    bench.cd2->choose(path);
    bench.form->menus.savas->trigger();
    QCOMPARE(bench.takeCalls().last(), u"c1.SaveImageFile %1, %2"_s.arg(path).arg(format));
}

void TestPictureFrame::saveAsKeepsNameAndFormatOfTheOpenPicture()
{
    PictureBench bench;
    bench.openAndModify(u"c:\\scan.tif"_s);
    bench.cd2->choose(u"c:\\copy.bmp"_s);
    bench.form->menus.savas->trigger();
    QCOMPARE(bench.takeCalls(),
             (QStringList{u"c2.Picture"_s, u"c1.Picture = scan.tif+Blur"_s,
                          u"c1.SaveImageFile c:\\copy.bmp, 7"_s}));
    QVERIFY(!bench.form->bModified);
    bench.form->menus.sav->trigger();
    QCOMPARE(bench.takeCalls().last(), u"c1.SaveImageFile c:\\scan.tif, 1"_s);
}

void TestPictureFrame::aCancelledSaveAsSavesNothing()
{
    PictureBench bench;
    bench.openAndModify();
    bench.cd2->choose(u"c:\\copy.bmp"_s);
    bench.form->menus.savas->trigger();
    bench.form->menus.blur->trigger();
    bench.takeCalls();
    bench.cd2->cancel();
    bench.form->menus.savas->trigger();
    QCOMPARE(bench.takeCalls(), QStringList());
    QVERIFY(bench.form->bModified);
}

void TestPictureFrame::printAsksFirst()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.prompts.expect(u"Are you sure you want to print this picture?"_s, u"Vandrel"_s)
        .buttons(Buttons::YesNo)
        .answer(Answer::Yes);
    bench.form->menus.prnt->trigger();
    QCOMPARE(bench.takeCalls(), QStringList(u"c1.PrintImage 0, 0, 640, 480"_s));
    QCOMPARE(bench.c1->printOwner, bench.form.get());
    QVERIFY(bench.prompts.allShown());
}

void TestPictureFrame::printNoDoesNothing()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.prompts.expect(u"Are you sure you want to print this picture?"_s, u"Vandrel"_s).answer(Answer::No);
    bench.form->toolbar.Command1[4]->click();
    QCOMPARE(bench.takeCalls(), QStringList());
    QVERIFY(bench.prompts.allShown());
}

void TestPictureFrame::printWithoutAPictureAsksNothing()
{
    PictureBench bench;
    bench.form->menus.prnt->trigger();
    QCOMPARE(bench.prompts.shown(), 0);
}

void TestPictureFrame::copyPutsTheFileImageOnTheClipboard()
{
    PictureBench bench;
    bench.openAndModify();
    bench.form->menus.cpy->trigger();
    QCOMPARE(bench.takeCalls(),
             (QStringList{u"c2.Picture"_s, u"c1.Picture = photo.jpg+Blur"_s, u"c1.CopyToClipboard"_s}));
}

void TestPictureFrame::copyWhileZoomedTakesTheUnzoomedImage()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.form->menus.out->trigger();
    bench.takeCalls();
    bench.form->menus.cpy->trigger();
    QCOMPARE(bench.takeCalls(), QStringList(u"c1.CopyToClipboard"_s));
}

void TestPictureFrame::undoExchangesAndShows()
{
    PictureBench bench;
    bench.openAndModify();
    bench.form->menus.undo->trigger();
    QCOMPARE(bench.takeCalls(), (QStringList{u"c2.Undo"_s, u"c2.Picture"_s}));
    QCOMPARE(nameOf(bench.c2->Picture()), u"photo.jpg"_s);
    bench.form->toolbar.Command2[8]->click();
    QCOMPARE(nameOf(bench.c2->Picture()), u"photo.jpg+Blur"_s);
}

void TestPictureFrame::undoWithoutAPictureDoesNothing()
{
    PictureBench bench;
    bench.takeCalls();
    bench.form->menus.undo->trigger();
    bench.form->toolbar.Command2[8]->click();
    QCOMPARE(bench.takeCalls(), QStringList());
}

void TestPictureFrame::theStatusIsShownWhenTheWindowIsActivated()
{
    PictureBench bench;
    bench.c2->setPicture(newPicture(u"other"_s, {12, 34}, 8));
    QVERIFY(bench.show());
    QTRY_COMPARE(bench.panel(1), u"12x34 8 bits/pixel"_s);
}

void TestPictureFrame::closingAsksAboutChanges_data()
{
    openAsksAboutChanges_data();
}

void TestPictureFrame::closingAsksAboutChanges()
{
    QFETCH(int, answer);
    QFETCH(QStringList, calls);
    QFETCH(bool, opens);
    PictureBench bench;
    bench.openAndModify();
    QVERIFY(bench.show());
    bench.takeCalls();
    bench.prompts.expect(u"Do you want to save the changes made to picture c:\\photo.jpg?"_s, u"Vandrel"_s)
        .buttons(Buttons::YesNoCancel)
        .answer(static_cast<Answer>(answer));
    QCOMPARE(bench.form->close(), opens);
    QVERIFY(bench.prompts.allShown());
    QCOMPARE(bench.takeCalls(), opens ? calls + QStringList(u"c2.Clear"_s) : QStringList());
    QCOMPARE(bench.form->bModified, !opens);
}

void TestPictureFrame::closingUnloadsTheDialogs()
{
    PictureBench bench;
    QVERIFY(bench.show());
    for (QAction *item : {bench.form->menus.but, bench.form->menus.rgb, bench.form->menus.hsl,
                          bench.form->menus.resample, bench.form->menus.str, bench.form->menus.set})
        item->trigger();
    const frmPicEdit &form = *bench.form;
    const std::initializer_list<const WindowSlot *> dialogs{&form.Form2, &form.Form3, &form.Form4,
                                                            &form.Form5, &form.Form6, &form.Form7};
    for (const WindowSlot *dialog : dialogs)
        QVERIFY(dialog->window() && dialog->window()->isVisible());
    QVERIFY(bench.form->close());
    for (const WindowSlot *dialog : dialogs)
        QVERIFY(!dialog->window());
}

void TestPictureFrame::exitUnloads()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.form->menus.exit->trigger();
    QVERIFY(!bench.form->isVisible());
}

void TestPictureFrame::helpShowsTheGuide()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.form->menus.hlp->trigger();
    QTRY_VERIFY(bench.form->findChild<GuideWindow *>());
    const auto *text = bench.form->findChild<QTextBrowser *>(u"GuideText"_s);
    QVERIFY(text->toPlainText().startsWith(u"Picture editor"));
    QVERIFY(text->toPlainText().contains(u"processing area"));
    bench.form->findChild<GuideWindow *>()->close();
    QTRY_VERIFY(!bench.form->findChild<GuideWindow *>());
    QTest::keyClick(bench.form->client, Qt::Key_F1);
    QTRY_VERIFY(bench.form->findChild<GuideWindow *>());
}

void TestPictureFrame::theGuidesChapter()
{
    const QString guide
        = u"# Guide\n## One\nfirst\n## Two\n![picture](two.png)\nsecond\n### Within\n## Three\nx\n"_s;
    QCOMPARE(guideChapter(guide, u"Two"_s), u"## Two\nsecond\n### Within"_s);
    QCOMPARE(guideChapter(guide, u"Four"_s), QString());
}

void TestPictureFrame::progressShowsABusyPointer()
{
    PictureBench bench;
    bench.open({640, 480});
    QString during;
    bench.c2->duringOperation = [&] {
        Q_EMIT bench.c2->Progress(0.405);
        during = bench.panel(3);
        QVERIFY(QGuiApplication::overrideCursor());
        QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
        Q_EMIT bench.c2->Progress(1);
    };
    bench.form->menus.equ->trigger();
    QCOMPARE(during, u"Working: 40 %"_s);
    QCOMPARE(bench.panel(3), QString());
    QVERIFY(!QGuiApplication::overrideCursor());
}

void TestPictureFrame::aNoticeIsShownUntilTheNextOperation()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.c2->duringOperation = [&] {
        Q_EMIT bench.c2->Progress(0.5);
        Q_EMIT bench.c2->Notice(u"The processing area is empty."_s);
        Q_EMIT bench.c2->Progress(1);
    };
    bench.form->menus.neg->trigger();
    QCOMPARE(bench.panel(3), u"The processing area is empty."_s);
    bench.c2->duringOperation = nullptr;
    bench.form->menus.neg->trigger();
    QCOMPARE(bench.panel(3), QString());
}

QTEST_MAIN(TestPictureFrame)
#include "TestPictureFrame.moc"
