#include <cmath>

#include <QDragEnterEvent>
#include <QMimeData>
#include <QTest>
#include <QWheelEvent>

#include "controls/StatusBar.h"
#include "piceditor/ClientArea.h"
#include "tests/piceditor/PictureBench.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// Layout, scrolling and zoom.
class TestPictureView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theLayoutHangsOnTheCorner();
    void aSmallWindowKeepsItsLayout_data();
    void aSmallWindowKeepsItsLayout();
    void resizingSendsTheStoredAreaAgain();
    void barsAreEnabledByTheSize_data();
    void barsAreEnabledByTheSize();
    void theBarsSpanThePicture();
    void theOffsetHasThreePixelsMore();
    void onlyWhatIsSeenIsPainted();
    void scrollingResetsTheArea_data();
    void scrollingResetsTheArea();
    void theWheelTurnsTheBars();

    void droppingTheCornerInThePictureShrinksTheView();
    void droppingTheCornerOnTheFormFollowsIt();
    void droppingAnythingElseIsIgnored();
    void foreignDragsAreNotTaken();

    void zoomInKeepsTheFileImage();
    void zoomOutHalves();
    void threeStepsUpAndNoMore();
    void threeStepsDownAndNoMore();
    void backAtOneItIsNotZoomed();
    void zoomWithoutAPictureDoesNothing();
    void zoomWorksOnTheProcessedImage();
    void zoomEnablesTheBars();
    void openingEndsTheZoom();
    void undoWhileZoomedStaysZoomed();
};

namespace {

// The name a part of the picture is told apart by.
const FakePixels *shownPixels(const PictureBench &bench)
{
    return qobject_cast<const FakePixels *>(bench.c2->Picture().pixels().get());
}

} // namespace

void TestPictureView::theLayoutHangsOnTheCorner()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.resizeClient({800, 600});
    QTRY_COMPARE(bench.form->client->size(), QSize(800, 600));
    const PicView &view = bench.form->view;
    const int top = bench.form->toolbar.CoolBar1->height();
    const QPoint corner(800 - view.Command4->width(),
                        600 - view.Command4->height() - bench.form->StatusBar1->height());
    QCOMPARE(view.Command4->pos(), corner);
    QCOMPARE(view.Pic1->geometry(), QRect(QPoint(0, top), corner - QPoint(1, 1)));
    QCOMPARE(view.hs1->geometry(), QRect(0, corner.y(), corner.x(), view.Command4->height()));
    QCOMPARE(view.VS1->geometry(), QRect(corner.x(), top, view.Command4->width(), corner.y() - top));
    QCOMPARE(bench.form->StatusBar1->geometry().bottom(), 599);
}

void TestPictureView::aSmallWindowKeepsItsLayout_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("narrow") << QSize(5000 / 15, 500);
    QTest::newRow("low") << QSize(700, 3000 / 15);
}

void TestPictureView::aSmallWindowKeepsItsLayout()
{
    QFETCH(QSize, size);
    PictureBench bench;
    QVERIFY(bench.show());
    const QRect before = bench.form->view.Pic1->geometry();
    bench.form->resize(size);
    QTRY_COMPARE(bench.form->size(), size);
    QCOMPARE(bench.form->view.Pic1->geometry(), before);
    bench.form->resize(size.expandedTo({400, 300}));
    QTRY_VERIFY(bench.form->view.Pic1->geometry() != before);
}

void TestPictureView::resizingSendsTheStoredAreaAgain()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({640, 480});
    bench.form->lAreaLeft = 10;
    bench.form->lAreaTop = 20;
    bench.form->lAreaRight = 110;
    bench.form->lAreaBottom = 220;
    bench.form->view.Shape1->show();
    bench.resizeClient({500, 400});
    QTRY_COMPARE(bench.form->client->size(), QSize(500, 400));
    QCOMPARE(bench.takeCalls().mid(0, 2),
             (QStringList{u"c2.Picture"_s, u"c2.SetProcessingArea 10, 20, 100, 200"_s}));
    QVERIFY(!bench.form->view.Shape1->isVisible());
}

void TestPictureView::barsAreEnabledByTheSize_data()
{
    QTest::addColumn<QSize>("beyond");
    QTest::addColumn<bool>("horizontal");
    QTest::addColumn<bool>("vertical");
    QTest::newRow("as large") << QSize(0, 0) << false << false;
    QTest::newRow("wider") << QSize(1, 0) << true << false;
    QTest::newRow("higher") << QSize(0, 1) << false << true;
    QTest::newRow("both") << QSize(1, 1) << true << true;
}

void TestPictureView::barsAreEnabledByTheSize()
{
    QFETCH(QSize, beyond);
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open(bench.form->view.Pic1->size() + beyond);
    QTEST(bench.form->view.hs1->isEnabled(), "horizontal");
    QTEST(bench.form->view.VS1->isEnabled(), "vertical");
}

void TestPictureView::theBarsSpanThePicture()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({40000, 30000});
    const PicView &view = bench.form->view;
    QCOMPARE(view.hs1->maximum(), 40000);
    QCOMPARE(view.hs1->pageStep(), view.Pic1->width());
    QCOMPARE(view.VS1->maximum(), 30000);
    QCOMPARE(view.VS1->pageStep(), view.Pic1->height());
    // A picture that needs no bar leaves its range.
    bench.open({10, 10}, u"c:\\small.bmp"_s);
    QVERIFY(!view.hs1->isEnabled());
    QCOMPARE(view.hs1->maximum(), 40000);
}

void TestPictureView::theOffsetHasThreePixelsMore()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({3000, 2000});
    const PicView &view = bench.form->view;
    view.hs1->setValue(1000);
    view.VS1->setValue(2000);
    const int x = static_cast<int>(std::floor((3000 - view.Pic1->width() + 3) * 1000.0 / 3000));
    const int y = 2000 - view.Pic1->height() + 3;
    const FakePixels *pixels = shownPixels(bench);
    pixels->painted.clear();
    view.Pic1->grab();
    QVERIFY(!pixels->painted.isEmpty());
    QCOMPARE(pixels->painted.last().topLeft(), QPoint(x, y));
}

void TestPictureView::onlyWhatIsSeenIsPainted()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({60000, 50000});
    const FakePixels *pixels = shownPixels(bench);
    pixels->painted.clear();
    bench.form->view.Pic1->grab();
    QCOMPARE(pixels->painted.size(), 1);
    QCOMPARE(pixels->painted.first().size(), bench.form->view.Pic1->contentsRect().size());
}

void TestPictureView::scrollingResetsTheArea_data()
{
    QTest::addColumn<bool>("horizontal");
    QTest::newRow("hs1") << true;
    QTest::newRow("VS1") << false;
}

void TestPictureView::scrollingResetsTheArea()
{
    QFETCH(bool, horizontal);
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({3000, 2000});
    bench.drag({10, 10}, {60, 40});
    QVERIFY(bench.form->view.Shape1->isVisible());
    bench.takeCalls();
    (horizontal ? bench.form->view.hs1 : bench.form->view.VS1)->setValue(100);
    QCOMPARE(bench.takeCalls(), (QStringList{u"c2.SetProcessingArea 0, 0, 3000, 2000"_s, u"c2.Picture"_s}));
    QCOMPARE(bench.area(), (QList<qint32>{0, 0, 3000, 2000}));
    QVERIFY(!bench.form->view.Shape1->isVisible());
}

void TestPictureView::theWheelTurnsTheBars()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({3000, 2000});
    const PicView &view = bench.form->view;
    const auto turn = [&](QPoint angle) {
        const QPointF at(20, 20);
        QWheelEvent wheel(at, view.Pic1->mapToGlobal(at), {}, angle, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(view.Pic1, &wheel);
    };
    turn({0, -120});
    QVERIFY(view.VS1->value() > 0);
    QCOMPARE(view.hs1->value(), 0);
    turn({-120, 0});
    QVERIFY(view.hs1->value() > 0);
}

void TestPictureView::droppingTheCornerInThePictureShrinksTheView()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({3000, 2000});
    const PicView &view = bench.form->view;
    bench.form->lAreaLeft = 10;
    // The point is in twips, from the inside's corner, two pixels from the box's own.
    Q_EMIT view.Pic1->DragDrop(view.Command4, 298 * 15, 198 * 15);
    QCOMPARE(view.Pic1->size(), QSize(300, 200));
    const QPoint corner = view.Pic1->pos() + QPoint(300, 200);
    QCOMPARE(view.Command4->pos(), corner);
    QCOMPARE(view.hs1->geometry(), QRect(0, corner.y(), 300, view.hs1->height()));
    QCOMPARE(view.VS1->geometry(), QRect(corner.x(), view.Pic1->y(), view.VS1->width(), 200));
    QCOMPARE(view.hs1->pageStep(), 300);
    QCOMPARE(bench.takeCalls(), (QStringList{u"c2.Picture"_s, u"c2.SetProcessingArea 0, 0, 3000, 2000"_s}));
    QCOMPARE(bench.area(), (QList<qint32>{0, 0, 3000, 2000}));
}

void TestPictureView::droppingTheCornerOnTheFormFollowsIt()
{
    PictureBench bench;
    QVERIFY(bench.show());
    const PicView &view = bench.form->view;
    Q_EMIT view.Pic1->DragDrop(view.Command4, 100 * 15, 100 * 15);
    const float x = 350;
    const float y = static_cast<float>(view.Pic1->y()) + 220;
    Q_EMIT bench.form->client->DragDrop(view.Command4, x, y);
    QCOMPARE(view.Pic1->size(), QSize(350, 220));
    // Above the picture nothing is left of it.
    Q_EMIT bench.form->client->DragDrop(view.Command4, x, 2);
    QCOMPARE(view.Pic1->height(), 0);
}

void TestPictureView::droppingAnythingElseIsIgnored()
{
    PictureBench bench;
    QVERIFY(bench.show());
    const PicView &view = bench.form->view;
    const QSize before = view.Pic1->size();
    Q_EMIT view.Pic1->DragDrop(view.hs1, 1500, 1500);
    Q_EMIT bench.form->client->DragDrop(bench.form->toolbar.Command2[8], 100, 100);
    QCOMPARE(view.Pic1->size(), before);
}

void TestPictureView::foreignDragsAreNotTaken()
{
    PictureBench bench;
    QVERIFY(bench.show());
    QMimeData text;
    text.setText(u"text"_s);
    for (QWidget *target : std::initializer_list<QWidget *>{bench.form->view.Pic1, bench.form->client}) {
        QVERIFY(target->acceptDrops());
        QDragEnterEvent enter({10, 10}, Qt::MoveAction, &text, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        QCoreApplication::sendEvent(target, &enter);
        QVERIFY(!enter.isAccepted());
    }
}

void TestPictureView::zoomInKeepsTheFileImage()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({640, 480});
    bench.form->menus.in->trigger();
    QCOMPARE(bench.takeCalls(),
             (QStringList{u"c2.Picture"_s, u"c1.Picture = photo.jpg"_s, u"c1.Picture"_s,
                          u"c2.Picture = photo.jpg"_s, u"c2.Resize 1280, 960, 1"_s, u"c2.Picture"_s}));
    QVERIFY(bench.form->bZoomed);
    QCOMPARE(bench.form->dZoom, 2.0);
    // The second step starts from the file image too.
    bench.form->menus.in->trigger();
    QCOMPARE(bench.takeCalls(),
             (QStringList{u"c1.Picture"_s, u"c2.Picture = photo.jpg"_s, u"c2.Resize 2560, 1920, 1"_s,
                          u"c2.Picture"_s}));
}

void TestPictureView::zoomOutHalves()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({641, 480});
    bench.form->menus.out->trigger();
    QVERIFY(bench.takeCalls().contains(u"c2.Resize 320.5, 240, 1"_s));
    QCOMPARE(bench.form->dZoom, 0.5);
}

void TestPictureView::threeStepsUpAndNoMore()
{
    PictureBench bench;
    bench.open({640, 480});
    for (const double factor : {2.0, 4.0, 8.0}) {
        bench.form->menus.in->trigger();
        QCOMPARE(bench.form->dZoom, factor);
    }
    bench.takeCalls();
    bench.form->menus.in->trigger();
    QCOMPARE(bench.form->dZoom, 8.0);
    QCOMPARE(bench.takeCalls(), QStringList());
}

void TestPictureView::threeStepsDownAndNoMore()
{
    PictureBench bench;
    bench.open({640, 480});
    for (const double factor : {0.5, 0.25, 0.125}) {
        bench.form->menus.out->trigger();
        QCOMPARE(bench.form->dZoom, factor);
    }
    bench.takeCalls();
    bench.form->menus.out->trigger();
    QCOMPARE(bench.form->dZoom, 0.125);
    QCOMPARE(bench.takeCalls(), QStringList());
}

void TestPictureView::backAtOneItIsNotZoomed()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.form->menus.in->trigger();
    bench.form->menus.out->trigger();
    QCOMPARE(bench.form->dZoom, 1.0);
    QVERIFY(!bench.form->bZoomed);
    QCOMPARE(bench.c2->Width(), 640);
}

void TestPictureView::zoomWithoutAPictureDoesNothing()
{
    PictureBench bench;
    bench.takeCalls();
    bench.form->menus.in->trigger();
    bench.form->menus.out->trigger();
    QCOMPARE(bench.form->dZoom, 1.0);
    QVERIFY(!bench.form->bZoomed);
    QVERIFY(bench.takeCalls().filter(u"Resize"_s).isEmpty());
}

void TestPictureView::zoomWorksOnTheProcessedImage()
{
    PictureBench bench;
    bench.openAndModify();
    bench.form->menus.in->trigger();
    QCOMPARE(nameOf(bench.c1->Picture()), u"photo.jpg+Blur"_s);
    QCOMPARE(nameOf(bench.c2->Picture()), u"photo.jpg+Blur+Resize"_s);
    QVERIFY(bench.form->bModified);
}

void TestPictureView::zoomEnablesTheBars()
{
    PictureBench bench;
    QVERIFY(bench.show());
    const QSize view = bench.form->view.Pic1->size();
    bench.open(view * 0.75);
    QVERIFY(!bench.form->view.hs1->isEnabled());
    bench.form->menus.in->trigger();
    QVERIFY(bench.form->view.hs1->isEnabled());
    QVERIFY(bench.form->view.VS1->isEnabled());
    QCOMPARE(bench.form->view.hs1->maximum(), bench.c2->Width());
    bench.form->menus.out->trigger();
    QVERIFY(!bench.form->view.hs1->isEnabled());
}

void TestPictureView::openingEndsTheZoom()
{
    PictureBench bench;
    bench.open({640, 480});
    bench.form->menus.in->trigger();
    bench.open({100, 100}, u"c:\\other.bmp"_s);
    QVERIFY(!bench.form->bZoomed);
    QCOMPARE(bench.form->dZoom, 1.0);
}

void TestPictureView::undoWhileZoomedStaysZoomed()
{
    PictureBench bench;
    bench.openAndModify();
    bench.form->menus.in->trigger();
    bench.form->menus.undo->trigger();
    QCOMPARE(nameOf(bench.c2->Picture()), u"photo.jpg"_s);
    QVERIFY(bench.form->bZoomed);
}

QTEST_MAIN(TestPictureView)
#include "TestPictureView.moc"
