#include <memory>

#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include "controls/DirListBox.h"
#include "controls/DriveListBox.h"
#include "controls/FileListBox.h"
#include "controls/ImageBox.h"
#include "controls/UpDown.h"
#include "files/frmPic.h"
#include "files/frmView.h"
#include "runtime/Events.h"
#include "tests/runtime/FailureOf.h"
#include "tests/support/FakeDecoders.h"
#include "tests/support/FakeFileOperations.h"
#include "tests/support/FakeLocalFolders.h"
#include "tests/support/FormChecks.h"
#include "tests/support/ScriptedPrompts.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// The picture viewer and its slide show.
class TestPictureViewer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void loadingShowsTheRoot();
    void onlyPicturesAreListed();
    void theFoldersAreFollowed();
    void anUnreadableDriveIsTheRuntimesError();
    void selectAllSelectsEveryFile();

    void theArrowsStepTheInterval();
    void theArrowNeverGoesBelowOne();
    void theIntervalFollowsTheText_data();
    void theIntervalFollowsTheText();
    void anIntervalOutOfRangeIsTheTimersError_data();
    void anIntervalOutOfRangeIsTheTimersError();

    void aRunShowsAllSlidesAndStops();
    void theFirstSlideComesAtOnce();
    void theNextSlideIsDecodedAhead();
    void slidesAreMadeReadyForTheirBox();
    void aSlideThatIsStillDecodedIsAwaited();
    void anUnreadableFileIsPassedOver();
    void anIntervalOfZeroStopsTheShow();
    void anEmptySelectionIsASubscriptError();
    void anotherPressGoesOnInTheNewList();
    void aPressAtTheStartBeginsAnew();
    void anIndexBeyondTheNewListIsASubscriptError();
    void pathsOfARootHaveOneSeparator();
    void closingEndsTheShow();

    void everythingHasAName();
    void tabFollowsTheEye();

private:
    void makeForm();
    void select(const QStringList &names) const;
    void pressSlideShow() const { form->Command1[0]->click(); }
    void tick() const { form->Timer1_Timer(); }
    QString shown() const;

    std::shared_ptr<FakeLocalFolders> folders;
    std::shared_ptr<FakeDecoders> decoders;
    FakeFileOperations *operations = nullptr;
    std::unique_ptr<ScriptedPrompts> prompts;
    std::unique_ptr<WindowSlot> thumbnails;
    std::unique_ptr<frmView> form;
};

void TestPictureViewer::init()
{
    folders = std::make_shared<FakeLocalFolders>();
    folders->add(u"c:\\"_s, {u"a.jpg"_s, u"b.bmp"_s, u"C.TIF"_s, u"letter.txt"_s});
    folders->add(u"c:\\Photos"_s, {u"sea.jpg"_s, u"shore.jpg"_s});
    folders->addDrive('d', u"Stick"_s);
    decoders = std::make_shared<FakeDecoders>();
    for (const char *name :
         {"c:\\a.jpg", "c:\\b.bmp", "c:\\C.TIF", "c:\\Photos\\sea.jpg", "c:\\Photos\\shore.jpg"})
        decoders->atOnce[QString::fromLatin1(name)] = plainPicture({40, 30}, Qt::blue);
    prompts = std::make_unique<ScriptedPrompts>();
    thumbnails = std::make_unique<WindowSlot>([] { return new frmPic; });
    makeForm();
}

void TestPictureViewer::cleanup()
{
    form.reset();
    thumbnails.reset();
    QVERIFY(prompts->allShown());
    prompts.reset();
}

void TestPictureViewer::makeForm()
{
    auto files = std::make_unique<FakeFileOperations>();
    operations = files.get();
    form = std::make_unique<frmView>(ViewerControls{folders, std::move(files), decoders, thumbnails.get()});
}

void TestPictureViewer::select(const QStringList &names) const
{
    for (int i = 0; i < form->File1->ListCount(); ++i)
        form->File1->setSelected(i, names.contains(form->File1->List(i)));
}

QString TestPictureViewer::shown() const
{
    const auto picture = std::dynamic_pointer_cast<FakePicture>(form->Image1->Picture());
    return picture ? picture->path() : QString();
}

void TestPictureViewer::loadingShowsTheRoot()
{
    QCOMPARE(form->windowTitle(), u"Picture viewer - c:\\"_s);
    QCOMPARE(form->Dir1->Path(), u"c:\\"_s);
    QCOMPARE(form->Text1->text(), u"2"_s);
    QVERIFY(form->NothingLoaded);
    QCOMPARE(form->FileCount.value(), std::int16_t(0));
    QVERIFY(!form->Timer1.Enabled());
    QCOMPARE(captionOf(*form, u"Command1_0"_s), u"Slide Show"_s);
    QCOMPARE(captionOf(*form, u"Command1_1"_s), u"Thumbnails"_s);
    QCOMPARE(captionOf(*form, u"Command2_1"_s), u"Select all"_s);
    QCOMPARE(decoders->alive(), 1);
}

void TestPictureViewer::onlyPicturesAreListed()
{
    QCOMPARE(form->File1->Pattern(), u"*.bmp;*.pcx;*.dib;*.wmf;*.wpg;*.jpg;*.tif"_s);
    QCOMPARE(form->File1->ListCount(), 3);
    QCOMPARE(form->File1->List(2), u"C.TIF"_s);
}

void TestPictureViewer::theFoldersAreFollowed()
{
    form->Dir1->setPath(u"c:\\Photos"_s);
    QCOMPARE(form->windowTitle(), u"Picture viewer - c:\\Photos"_s);
    QCOMPARE(form->File1->Path(), u"c:\\Photos"_s);
    QCOMPARE(operations->folders, QStringList{u"c:\\Photos"_s});
    form->Drive1->setDrive(u"d:"_s);
    QCOMPARE(form->Dir1->Path(), u"d:\\"_s);
}

void TestPictureViewer::anUnreadableDriveIsTheRuntimesError()
{
    folders->fail(u"d:\\"_s, RuntimeError(error::DiskNotReady));
    const ProgramEndSpy end;
    prompts->expectError(error::DiskNotReady);
    form->Drive1->setDrive(u"d:"_s);
    QCOMPARE(end.count(), 1);
}

void TestPictureViewer::selectAllSelectsEveryFile()
{
    form->Command2[1]->click();
    QCOMPARE(form->File1->SelCount(), 3);
}

void TestPictureViewer::theArrowsStepTheInterval()
{
    form->show();
    const auto arrows = form->UpDown1->findChildren<QToolButton *>();
    QCOMPARE(arrows.size(), 2);
    QTest::mouseClick(arrows[0], Qt::LeftButton);
    QCOMPARE(form->Text1->text(), u"3"_s);
    QCOMPARE(form->Timer1.Interval(), 3000);
    QTest::mouseClick(arrows[1], Qt::LeftButton);
    QCOMPARE(form->Text1->text(), u"2"_s);
    form->Text1->setText(u"2.5"_s);
    form->UpDown1_UpClick();
    QCOMPARE(form->Text1->text(), u"3.5"_s);
    QTest::keyClick(form->UpDown1, Qt::Key_Down);
    QCOMPARE(form->Text1->text(), u"2.5"_s);
}

void TestPictureViewer::theArrowNeverGoesBelowOne()
{
    form->Text1->setText(u"1"_s);
    form->UpDown1_DownClick();
    QCOMPARE(form->Text1->text(), u"1"_s);
    form->Text1->setText(u"1.5"_s);
    form->UpDown1_DownClick();
    QCOMPARE(form->Text1->text(), u"1"_s);
    QCOMPARE(form->Timer1.Interval(), 1000);
}

void TestPictureViewer::theIntervalFollowsTheText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("interval");
    QTest::newRow("fraction") << u"0.25"_s << 250;
    QTest::newRow("zero") << u"0"_s << 0;
    QTest::newRow("no number") << u"soon"_s << 0;
    QTest::newRow("nothing") << QString() << 0;
    QTest::newRow("number with a unit") << u"3 s"_s << 3000;
    QTest::newRow("halves go to the even one") << u"0.0125"_s << 12;
    QTest::newRow("longest") << u"65.535"_s << 65535;
}

void TestPictureViewer::theIntervalFollowsTheText()
{
    QFETCH(QString, text);
    QFETCH(int, interval);
    form->Text1->setText(u"9"_s);
    form->Text1->setText(text);
    QCOMPARE(form->Timer1.Interval(), interval);
}

void TestPictureViewer::anIntervalOutOfRangeIsTheTimersError_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("number");
    QTest::newRow("too long") << u"65.536"_s << error::InvalidPropertyValue;
    QTest::newRow("negative") << u"-1"_s << error::InvalidPropertyValue;
    QTest::newRow("beyond a Long") << u"3000000"_s << error::Overflow;
}

void TestPictureViewer::anIntervalOutOfRangeIsTheTimersError()
{
    QFETCH(QString, text);
    QFETCH(int, number);
    const ProgramEndSpy end;
    prompts->expectError(number);
    form->Text1->setText(text);
    QCOMPARE(end.count(), 1);
}

void TestPictureViewer::aRunShowsAllSlidesAndStops()
{
    select({u"a.jpg"_s, u"b.bmp"_s, u"C.TIF"_s});
    form->Text1->setText(u"0.05"_s);
    const QSignalSpy ticks(&form->Timer1, &Timer::Elapsed);
    pressSlideShow();
    QTRY_VERIFY(!form->Timer1.Enabled());
    QCOMPARE(ticks.count(), 3);
    QCOMPARE(shown(), u"c:\\C.TIF"_s);
    QCOMPARE(form->SlideIndex.value(), std::int16_t(0));
    QCOMPARE(form->Timer1.Interval(), 50);
}

void TestPictureViewer::theFirstSlideComesAtOnce()
{
    select({u"a.jpg"_s, u"b.bmp"_s});
    form->Text1->setText(u"60"_s);
    pressSlideShow();
    QCOMPARE(form->Timer1.Interval(), 1);
    QVERIFY(form->Timer1.Enabled());
    QTRY_COMPARE(shown(), u"c:\\a.jpg"_s);
    QCOMPARE(form->Timer1.Interval(), 60000);
    QCOMPARE(form->SlideIndex.value(), std::int16_t(1));
}

void TestPictureViewer::theNextSlideIsDecodedAhead()
{
    select({u"a.jpg"_s, u"b.bmp"_s});
    pressSlideShow();
    tick();
    QCOMPARE(decoders->calls, (QStringList{u"0 load c:\\a.jpg"_s, u"0 prepare c:\\b.bmp"_s}));
    tick();
    QCOMPARE(decoders->calls.mid(2), QStringList{u"0 load c:\\b.bmp"_s});
}

void TestPictureViewer::slidesAreMadeReadyForTheirBox()
{
    form->show();
    select({u"a.jpg"_s, u"b.bmp"_s});
    pressSlideShow();
    tick();
    QCOMPARE(decoders->shownIn, form->Image1->contentsRect().size());
    form->resize(form->width() + 200, form->height() + 100);
    tick();
    QTRY_COMPARE(decoders->shownIn, form->Image1->contentsRect().size());
}

void TestPictureViewer::aSlideThatIsStillDecodedIsAwaited()
{
    decoders->atOnce.clear();
    select({u"a.jpg"_s, u"b.bmp"_s});
    pressSlideShow();
    tick();
    QCOMPARE(shown(), QString());
    tick();
    QCOMPARE(decoders->calls, QStringList{u"0 load c:\\a.jpg"_s});
    decoders->picture(u"c:\\a.jpg"_s)->arrive(plainPicture({4, 3}, Qt::red));
    QCOMPARE(shown(), u"c:\\a.jpg"_s);
    QCOMPARE(form->SlideIndex.value(), std::int16_t(1));
    tick();
    decoders->picture(u"c:\\b.bmp"_s)->arrive({});
    QVERIFY(!form->Timer1.Enabled());
}

void TestPictureViewer::anUnreadableFileIsPassedOver()
{
    decoders->atOnce[u"c:\\a.jpg"_s] = QImage();
    select({u"a.jpg"_s, u"b.bmp"_s, u"C.TIF"_s});
    form->Text1->setText(u"60"_s);
    pressSlideShow();
    tick();
    QCOMPARE(form->Timer1.Interval(), 1);
    QTRY_COMPARE(shown(), u"c:\\b.bmp"_s);
    QCOMPARE(form->Timer1.Interval(), 60000);
}

void TestPictureViewer::anIntervalOfZeroStopsTheShow()
{
    select({u"a.jpg"_s, u"b.bmp"_s});
    form->Text1->setText(u"0"_s);
    pressSlideShow();
    QTRY_COMPARE(shown(), u"c:\\a.jpg"_s);
    QCOMPARE(form->Timer1.Interval(), 0);
    QVERIFY(form->Timer1.Enabled());
    form->Text1->setText(u"0.01"_s);
    QTRY_COMPARE(shown(), u"c:\\b.bmp"_s);
}

void TestPictureViewer::anEmptySelectionIsASubscriptError()
{
    const ProgramEndSpy end;
    prompts->expectError(error::SubscriptOutOfRange);
    pressSlideShow();
    QTRY_COMPARE(end.count(), 1);
}

void TestPictureViewer::anotherPressGoesOnInTheNewList()
{
    form->Dir1->setPath(u"c:\\Photos"_s);
    select({u"sea.jpg"_s, u"shore.jpg"_s});
    pressSlideShow();
    tick();
    form->Dir1->setPath(u"c:\\"_s);
    select({u"a.jpg"_s, u"b.bmp"_s, u"C.TIF"_s});
    pressSlideShow();
    QCOMPARE(form->Timer1.Interval(), 1);
    tick();
    QCOMPARE(shown(), u"c:\\b.bmp"_s);
    tick();
    QCOMPARE(shown(), u"c:\\C.TIF"_s);
    QVERIFY(!form->Timer1.Enabled());
}

void TestPictureViewer::aPressAtTheStartBeginsAnew()
{
    select({u"a.jpg"_s});
    pressSlideShow();
    tick();
    QVERIFY(!form->Timer1.Enabled());
    select({u"b.bmp"_s});
    pressSlideShow();
    tick();
    QCOMPARE(shown(), u"c:\\b.bmp"_s);
}

void TestPictureViewer::anIndexBeyondTheNewListIsASubscriptError()
{
    select({u"a.jpg"_s, u"b.bmp"_s, u"C.TIF"_s});
    pressSlideShow();
    tick();
    tick();
    select({u"a.jpg"_s});
    pressSlideShow();
    QCOMPARE(test::numberOf([this] { tick(); }), error::SubscriptOutOfRange);
    form->Timer1.setEnabled(false);
}

void TestPictureViewer::pathsOfARootHaveOneSeparator()
{
    select({u"a.jpg"_s});
    pressSlideShow();
    QCOMPARE(form->Files, std::vector<QString>{u"c:\\a.jpg"_s});
    form->Dir1->setPath(u"c:\\Photos"_s);
    select({u"sea.jpg"_s, u"shore.jpg"_s});
    pressSlideShow();
    QCOMPARE(form->Files, (std::vector<QString>{u"c:\\Photos\\sea.jpg"_s, u"c:\\Photos\\shore.jpg"_s}));
    QCOMPARE(form->FileCount.value(), std::int16_t(2));
    form->Timer1.setEnabled(false);
}

void TestPictureViewer::closingEndsTheShow()
{
    decoders->atOnce.clear();
    select({u"a.jpg"_s, u"b.bmp"_s});
    pressSlideShow();
    tick();
    const auto picture = decoders->picture(u"c:\\a.jpg"_s);
    form.reset();
    QCOMPARE(decoders->alive(), 0);
    picture->arrive(plainPicture({4, 3}, Qt::red));
}

void TestPictureViewer::everythingHasAName()
{
    QCOMPARE(form->Drive1->accessibleName(), u"Drive"_s);
    QCOMPARE(form->Dir1->accessibleName(), u"Folders"_s);
    QCOMPARE(form->File1->accessibleName(), u"Files"_s);
    QCOMPARE(form->UpDown1->accessibleName(), u"Slide interval arrows"_s);
    for (const char *name : {"Drive1", "Dir1", "File1", "Text1", "UpDown1", "Image1"})
        QVERIFY2(form->findChild<QWidget *>(QString::fromLatin1(name)), name);
}

void TestPictureViewer::tabFollowsTheEye()
{
    QVERIFY(showActive(*form));
    form->Drive1->setFocus();
    QCOMPARE(tabbedThrough(8),
             (QStringList{u"Drive1"_s, u"Dir1"_s, u"File1"_s, u"Command2_1"_s, u"Command1_1"_s,
                          u"Command1_0"_s, u"Text1"_s, u"UpDown1"_s, u"Drive1"_s}));
}

QTEST_MAIN(TestPictureViewer)
#include "TestPictureViewer.moc"
