#include <memory>

#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>

#include "controls/DirListBox.h"
#include "controls/FileListBox.h"
#include "controls/ImageBox.h"
#include "files/frmPic.h"
#include "files/frmView.h"
#include "runtime/Twips.h"
#include "tests/support/FakeDecoders.h"
#include "tests/support/FakeFileOperations.h"
#include "tests/support/FakeLocalFolders.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// The thumbnails window, filled by the picture viewer.
class TestThumbnails : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void eachFileHasABoxAndADecoder();
    void everyDecoderIsAskedForItsBox();
    void aSingleFileLoadsNothingMore();
    void noFileAtAllShowsAnEmptyWindow();
    void theBoxesAreLaidOutFourToARow();
    void theWindowHoldsThreeRows();
    void theScrollBarsRangeIsRounded_data();
    void theScrollBarsRangeIsRounded();
    void scrollingBeginsWithAnotherRow();
    void theWheelScrolls();
    void closingReleasesBoxesAndDecoders();
    void anotherPressFillsTheWindowAnew();
    void aSlideShowLeavesTheThumbnails();
    void theViewerMayBeClosedFirst();
    void onlyWhatIsSeenIsAskedForFirst();
    void picturesAppearAsTheyCome();
    void proportionsAreKept();
    void thousandsOfPictures();

private:
    void makeFiles(int count);
    frmPic &thumbnails();
    frmPic &pressThumbnails(int files);

    std::shared_ptr<FakeLocalFolders> folders;
    std::shared_ptr<FakeDecoders> decoders;
    std::unique_ptr<WindowSlot> slot;
    std::unique_ptr<frmView> form;
};

namespace {

QString nameOf(int number)
{
    return u"p%1.jpg"_s.arg(number, 5, 10, QLatin1Char('0'));
}

QString pathOf(int number)
{
    return u"c:\\"_s + nameOf(number);
}

int boxesOf(const frmPic &window)
{
    return static_cast<int>(std::distance(window.Pic1.begin(), window.Pic1.end()));
}

} // namespace

void TestThumbnails::init()
{
    folders = std::make_shared<FakeLocalFolders>();
    decoders = std::make_shared<FakeDecoders>();
    slot = std::make_unique<WindowSlot>([] { return new frmPic; });
}

void TestThumbnails::cleanup()
{
    form.reset();
    slot.reset();
}

void TestThumbnails::makeFiles(int count)
{
    QStringList names;
    for (int i = 0; i < count; ++i)
        names.append(nameOf(i));
    folders->add(u"c:\\"_s, names);
    form = std::make_unique<frmView>(
        ViewerControls{folders, std::make_unique<FakeFileOperations>(), decoders, slot.get()});
}

frmPic &TestThumbnails::thumbnails()
{
    return static_cast<frmPic &>(*slot->window());
}

frmPic &TestThumbnails::pressThumbnails(int files)
{
    if (!form)
        makeFiles(files);
    form->Command2[1]->click();
    form->Command1[1]->click();
    return thumbnails();
}

void TestThumbnails::eachFileHasABoxAndADecoder()
{
    const frmPic &window = pressThumbnails(5);
    QCOMPARE(window.windowTitle(), u"Thumbnails view"_s);
    QVERIFY(window.isVisible());
    QCOMPARE(boxesOf(window), 5);
    QCOMPARE(decoders->alive(), 5);
    QVERIFY(!form->NothingLoaded);
    QCOMPARE(form->FileCount.value(), std::int16_t(5));
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(window.Pic1[i]->objectName(), u"Pic1_%1"_s.arg(i));
        QVERIFY(window.Pic1[i]->isVisible());
    }
}

void TestThumbnails::everyDecoderIsAskedForItsBox()
{
    const frmPic &window = pressThumbnails(2);
    const QString size
        = u"%1 %2 0"_s.arg(twips(window.Pic1[0]->width())).arg(twips(window.Pic1[0]->height()));
    QCOMPARE(decoders->calls,
             (QStringList{u"0 load c:\\p00000.jpg"_s, u"0 resample "_s + size, u"0 option 4 70"_s,
                          u"1 load c:\\p00001.jpg"_s, u"1 resample "_s + size, u"1 option 4 70"_s}));
}

void TestThumbnails::aSingleFileLoadsNothingMore()
{
    const frmPic &window = pressThumbnails(1);
    QCOMPARE(boxesOf(window), 1);
    QCOMPARE(decoders->alive(), 1);
    QVERIFY(form->NothingLoaded);
    QVERIFY(!window.VScroll1->isEnabled());
}

void TestThumbnails::noFileAtAllShowsAnEmptyWindow()
{
    const frmPic &window = pressThumbnails(0);
    QVERIFY(window.isVisible());
    QCOMPARE(boxesOf(window), 1);
    QVERIFY(!window.Pic1[0]->Picture());
    QCOMPARE(decoders->calls, QStringList());
}

void TestThumbnails::theBoxesAreLaidOutFourToARow()
{
    const frmPic &window = pressThumbnails(10);
    const int width = window.Pic1[0]->width();
    const int height = window.Pic1[0]->height();
    for (int i = 0; i < 10; ++i)
        QCOMPARE(window.Pic1[i]->geometry(), QRect(i % 4 * width, i / 4 * height, width, height));
}

void TestThumbnails::theWindowHoldsThreeRows()
{
    const frmPic &window = pressThumbnails(13);
    const QSize cell = window.Pic1[0]->size();
    QCOMPARE(window.width(), cell.width() * 4 + window.VScroll1->width());
    QCOMPARE(window.height(), cell.height() * 3);
    QCOMPARE(window.VScroll1->geometry().topLeft(), QPoint(cell.width() * 4, 0));
    const int windowHeight = (twips(cell.height()) + 130) * 3;
    QCOMPARE(window.VScroll1->height(), pixels(windowHeight - 400));
}

void TestThumbnails::theScrollBarsRangeIsRounded_data()
{
    QTest::addColumn<int>("files");
    QTest::addColumn<int>("maximum");
    for (const auto &[files, maximum] :
         {std::pair(12, -1), {13, 1}, {14, 2}, {15, 2}, {16, 2}, {18, 2}, {19, 3}, {22, 4}})
        QTest::addRow("%d", files) << files << maximum;
}

void TestThumbnails::theScrollBarsRangeIsRounded()
{
    QFETCH(int, files);
    QFETCH(int, maximum);
    const frmPic &window = pressThumbnails(files);
    QCOMPARE(window.VScroll1->isEnabled(), maximum >= 0);
    if (maximum >= 0) {
        QCOMPARE(window.VScroll1->minimum(), 0);
        QCOMPARE(window.VScroll1->maximum(), maximum);
    }
}

void TestThumbnails::scrollingBeginsWithAnotherRow()
{
    const frmPic &window = pressThumbnails(13);
    window.VScroll1->setValue(1);
    for (int i = 0; i < 13; ++i)
        QCOMPARE(window.Pic1[i]->isVisible(), i >= 4);
    QCOMPARE(window.Pic1[4]->pos(), QPoint(0, 0));
    QCOMPARE(window.Pic1[12]->pos(), QPoint(0, window.Pic1[0]->height() * 2));
    window.VScroll1->setValue(0);
    QVERIFY(window.Pic1[0]->isVisible());
    QCOMPARE(window.Pic1[4]->pos(), QPoint(0, window.Pic1[0]->height()));
}

void TestThumbnails::theWheelScrolls()
{
    frmPic &window = pressThumbnails(40);
    QWheelEvent event({50, 50}, window.mapToGlobal(QPointF(50, 50)), {}, {0, -120}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&window, &event);
    QVERIFY(window.VScroll1->value() > 0);
}

void TestThumbnails::closingReleasesBoxesAndDecoders()
{
    frmPic &window = pressThumbnails(6);
    QPointer<ImageBox> last = window.Pic1[5];
    QVERIFY(window.close());
    QVERIFY(!last);
    QVERIFY(form->NothingLoaded);
    QCOMPARE(decoders->alive(), 1);
    QVERIFY(decoders->pictures().empty());
}

void TestThumbnails::anotherPressFillsTheWindowAnew()
{
    frmPic &window = pressThumbnails(20);
    window.VScroll1->setValue(2);
    for (int i = 0; i < form->File1->ListCount(); ++i)
        form->File1->setSelected(i, i == 3 || i == 7);
    form->Command1[1]->click();
    QCOMPARE(&thumbnails(), &window);
    QCOMPARE(boxesOf(window), 2);
    QCOMPARE(decoders->alive(), 2);
    QCOMPARE(decoders->pictures().size(), std::size_t(2));
    QVERIFY(decoders->picture(pathOf(7)));
    QVERIFY(window.Pic1[0]->isVisible());
    QCOMPARE(window.Pic1[0]->pos(), QPoint(0, 0));
    QVERIFY(!window.VScroll1->isEnabled());
}

void TestThumbnails::aSlideShowLeavesTheThumbnails()
{
    frmPic &window = pressThumbnails(6);
    form->Command1[0]->click();
    form->Timer1.setEnabled(false);
    QCOMPARE(decoders->alive(), 1);
    QVERIFY(form->NothingLoaded);
    QCOMPARE(boxesOf(window), 6);
    form->Command1[0]->click();
    form->Timer1.setEnabled(false);
    QVERIFY(window.close());
    QVERIFY(form->NothingLoaded);
}

void TestThumbnails::theViewerMayBeClosedFirst()
{
    frmPic &window = pressThumbnails(14);
    form.reset();
    window.VScroll1->setValue(1);
    QCOMPARE(boxesOf(window), 14);
    QVERIFY(window.close());
}

void TestThumbnails::onlyWhatIsSeenIsAskedForFirst()
{
    frmPic &window = pressThumbnails(40);
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTRY_VERIFY(decoders->picture(pathOf(11))->isSeen());
    QVERIFY(!decoders->picture(pathOf(12))->isSeen());
    window.VScroll1->setValue(2);
    QTRY_VERIFY(decoders->picture(pathOf(19))->isSeen());
    QVERIFY(!decoders->picture(pathOf(7))->isSeen());
    window.VScroll1->setValue(0);
    QTRY_VERIFY(decoders->picture(pathOf(0))->isSeen());
    QTRY_VERIFY(!decoders->picture(pathOf(19))->isSeen());
}

void TestThumbnails::picturesAppearAsTheyCome()
{
    frmPic &window = pressThumbnails(3);
    ImageBox &box = *window.Pic1[1];
    const QPoint middle = box.rect().center();
    QVERIFY(box.grab().toImage().pixelColor(middle) != QColor(Qt::red));
    decoders->picture(pathOf(1))->arrive(plainPicture(box.size(), Qt::red));
    QCOMPARE(box.grab().toImage().pixelColor(middle), QColor(Qt::red));
    decoders->picture(pathOf(2))->arrive({});
    QCOMPARE(window.Pic1[2]->Picture()->state(), ComingPicture::State::Unreadable);
}

void TestThumbnails::proportionsAreKept()
{
    const frmPic &window = pressThumbnails(1);
    ImageBox &box = *window.Pic1[0];
    decoders->picture(pathOf(0))->arrive(plainPicture({1000, 100}, Qt::red));
    const QImage shown = box.grab().toImage();
    const QRect inside = box.contentsRect();
    QCOMPARE(shown.pixelColor(inside.left() + 2, inside.center().y()), QColor(Qt::red));
    QVERIFY(shown.pixelColor(inside.center().x(), inside.center().y() - inside.width() / 10)
            != QColor(Qt::red));
}

void TestThumbnails::thousandsOfPictures()
{
    constexpr int many = 5000;
    const frmPic &window = pressThumbnails(many);
    QCOMPARE(decoders->shownIn, window.Pic1[0]->contentsRect().size());
    QCOMPARE(boxesOf(window), many);
    QCOMPARE(window.VScroll1->maximum(), 1248);
    window.VScroll1->setValue(1248);
    QVERIFY(window.Pic1[many - 1]->isVisible());
    QCOMPARE(window.Pic1[4992]->pos(), QPoint(0, 0));
}

QTEST_MAIN(TestThumbnails)
#include "TestThumbnails.moc"
