#include <cmath>

#include <QTest>

#include "tests/piceditor/PictureBench.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// The area drawn with the mouse, and the pixel under the pointer.
class TestProcessingArea : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dragsSetTheArea_data();
    void dragsSetTheArea();
    void theBandFollowsThePointer();
    void theBandStaysAfterTheDrag();
    void aClickWithoutMovementGivesAnEmptyArea();
    void aClickAfterADragGivesAnEmptyAreaToo();
    void anyOtherButtonTakesTheWholeImage_data();
    void anyOtherButtonTakesTheWholeImage();
    void aRightDragDrawsNothing();
    void thePointerIsShown();
    void thePointerInAScrolledPictureLacksTheThreePixels();
    void theFormulaHoldsForABarThatIsNotEnabled();
    void whileZoomedNoPointerIsShown();
    void whileZoomedADragEndsAtTheLastPointer();
    void aPointerBeyondSixteenBitsOverflows();
    void theAreaOfADragIsSentAfterACommand();
    void afterAnotherButtonTheBandIsInPixels();
};

namespace {

// The pixel that a point of the view stands for, in a picture that is not scrolled.
qint32 pixelAt(int outer, int point)
{
    return static_cast<qint32>(std::floor(outer * static_cast<double>(point) / (outer - 4)));
}

} // namespace

void TestProcessingArea::dragsSetTheArea_data()
{
    QTest::addColumn<QPoint>("from");
    QTest::addColumn<QPoint>("to");
    QTest::newRow("down right") << QPoint(20, 30) << QPoint(120, 90);
    QTest::newRow("down left") << QPoint(120, 30) << QPoint(20, 90);
    QTest::newRow("up right") << QPoint(20, 90) << QPoint(120, 30);
    QTest::newRow("up left") << QPoint(120, 90) << QPoint(20, 30);
}

void TestProcessingArea::dragsSetTheArea()
{
    QFETCH(QPoint, from);
    QFETCH(QPoint, to);
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({640, 480});
    bench.drag(from, to);
    const PictureBox &Pic1 = *bench.form->view.Pic1;
    // Whole pixels of the picture may lie up to one pixel beside the band's.
    const QList<qint32> area = bench.area();
    QVERIFY(std::abs(area.at(0) - pixelAt(Pic1.width(), 20)) <= 1);
    QVERIFY(std::abs(area.at(1) - pixelAt(Pic1.height(), 30)) <= 1);
    QCOMPARE(area.at(2) - area.at(0), 100);
    QCOMPARE(area.at(3) - area.at(1), 60);
    QCOMPARE(bench.takeCalls(),
             QStringList(u"c2.SetProcessingArea %1, %2, 100, 60"_s.arg(area.at(0)).arg(area.at(1))));
    QCOMPARE(Pic1.ScaleMode(), PictureBox::Twips);
    QVERIFY(!bench.form->bDragging);
}

void TestProcessingArea::theBandFollowsThePointer()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({640, 480});
    PictureBox *Pic1 = bench.form->view.Pic1;
    const QPoint inside = Pic1->contentsRect().topLeft();
    const Shape *Shape1 = bench.form->view.Shape1;
    QTest::mousePress(Pic1, Qt::LeftButton, {}, inside + QPoint(50, 50));
    QVERIFY(bench.form->bDragging);
    bench.moveTo({80, 90});
    QVERIFY(Shape1->isVisible());
    QCOMPARE(Shape1->geometry().topLeft(), inside + QPoint(50, 50));
    QCOMPARE(Shape1->Width(), 30 * 15.0);
    QCOMPARE(Shape1->Height(), 40 * 15.0);
    bench.moveTo({20, 10});
    QCOMPARE(Shape1->geometry().topLeft(), inside + QPoint(20, 10));
    QCOMPARE(Shape1->Width(), 30 * 15.0);
    QTest::mouseRelease(Pic1, Qt::LeftButton, {}, inside + QPoint(20, 10));
}

void TestProcessingArea::theBandStaysAfterTheDrag()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({640, 480});
    bench.drag({20, 30}, {120, 90});
    bench.moveTo({200, 200});
    QVERIFY(bench.form->view.Shape1->isVisible());
    QCOMPARE(bench.form->view.Shape1->Width(), 1500.0);
}

void TestProcessingArea::aClickWithoutMovementGivesAnEmptyArea()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({640, 480});
    bench.moveTo({40, 40});
    bench.click({40, 40}, Qt::LeftButton);
    QCOMPARE(bench.takeCalls(),
             QStringList(u"c2.SetProcessingArea %1, %2, 0, 0"_s.arg(bench.form->nPointerX.value())
                             .arg(bench.form->nPointerY.value())));
    QCOMPARE(bench.form->lAreaRight, bench.form->lAreaLeft);
}

void TestProcessingArea::aClickAfterADragGivesAnEmptyAreaToo()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({640, 480});
    bench.drag({120, 90}, {20, 30});
    bench.moveTo({40, 40});
    bench.takeCalls();
    bench.click({40, 40}, Qt::LeftButton);
    QVERIFY(bench.takeCalls().value(0).endsWith(u", 0, 0"));
}

void TestProcessingArea::anyOtherButtonTakesTheWholeImage_data()
{
    QTest::addColumn<int>("button");
    QTest::newRow("right") << static_cast<int>(Qt::RightButton);
    QTest::newRow("middle") << static_cast<int>(Qt::MiddleButton);
}

void TestProcessingArea::anyOtherButtonTakesTheWholeImage()
{
    QFETCH(int, button);
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({640, 480});
    bench.drag({20, 30}, {120, 90});
    bench.takeCalls();
    bench.click({300, 300}, static_cast<Qt::MouseButton>(button));
    QCOMPARE(bench.takeCalls(), QStringList(u"c2.SetProcessingArea 0, 0, 640, 480"_s));
    QCOMPARE(bench.area(), (QList<qint32>{0, 0, 640, 480}));
    QVERIFY(!bench.form->view.Shape1->isVisible());
}

void TestProcessingArea::aRightDragDrawsNothing()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({640, 480});
    bench.drag({20, 30}, {120, 90}, Qt::RightButton);
    QVERIFY(!bench.form->view.Shape1->isVisible());
    QCOMPARE(bench.area(), (QList<qint32>{0, 0, 640, 480}));
}

void TestProcessingArea::thePointerIsShown()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({640, 480});
    bench.moveTo({0, 0});
    QCOMPARE(bench.panel(2), u"0, 0"_s);
    bench.moveTo({200, 100});
    const PictureBox &Pic1 = *bench.form->view.Pic1;
    const qint32 x = pixelAt(Pic1.width(), 200);
    const qint32 y = pixelAt(Pic1.height(), 100);
    QCOMPARE(bench.panel(2), u"%1, %2"_s.arg(x).arg(y));
    QCOMPARE(bench.form->nPointerX.value(), static_cast<qint16>(x));
    QCOMPARE(bench.form->nPointerY.value(), static_cast<qint16>(y));
}

void TestProcessingArea::thePointerInAScrolledPictureLacksTheThreePixels()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({3000, 2000});
    const PicView &view = bench.form->view;
    view.hs1->setValue(1500);
    view.VS1->setValue(2000);
    bench.moveTo({10, 10});
    const auto passed = static_cast<qint32>(std::floor((3000 - view.Pic1->width()) * 1500.0 / 3000));
    QCOMPARE(bench.panel(2),
             u"%1, %2"_s.arg(passed + pixelAt(view.Pic1->width(), 10))
                 .arg(2000 - view.Pic1->height() + pixelAt(view.Pic1->height(), 10)));
}

void TestProcessingArea::theFormulaHoldsForABarThatIsNotEnabled()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({3000, 2000});
    const PicView &view = bench.form->view;
    view.hs1->setValue(1500);
    bench.open({100, 100}, u"c:\\small.bmp"_s);
    QVERIFY(!view.hs1->isEnabled());
    bench.moveTo({10, 10});
    const auto passed = static_cast<qint32>(std::floor((100 - view.Pic1->width()) * 1500.0 / 3000));
    QCOMPARE(bench.panel(2).section(u',', 0, 0), QString::number(passed + pixelAt(view.Pic1->width(), 10)));
}

void TestProcessingArea::whileZoomedNoPointerIsShown()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({640, 480});
    bench.moveTo({50, 60});
    const Integer before = bench.form->nPointerX;
    bench.form->menus.in->trigger();
    bench.moveTo({100, 100});
    QCOMPARE(bench.panel(2), QString());
    QCOMPARE(bench.form->nPointerX.value(), before.value());
}

void TestProcessingArea::whileZoomedADragEndsAtTheLastPointer()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({640, 480});
    bench.moveTo({300, 200});
    const qint32 x = bench.form->nPointerX;
    const qint32 y = bench.form->nPointerY;
    bench.form->menus.out->trigger();
    bench.drag({10, 10}, {50, 40});
    QCOMPARE(bench.area(), (QList<qint32>{x - 40, y - 30, x, y}));
}

void TestProcessingArea::aPointerBeyondSixteenBitsOverflows()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({40000, 100});
    bench.form->view.hs1->setValue(40000);
    bench.prompts.expectError(error::Overflow);
    bench.moveTo({10, 10});
    QCOMPARE(bench.end.count(), 1);
}

void TestProcessingArea::theAreaOfADragIsSentAfterACommand()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({640, 480});
    bench.drag({20, 30}, {120, 90});
    const QString area = bench.takeCalls().last();
    bench.form->menus.neg->trigger();
    QCOMPARE(bench.takeCalls().last(), area);
}

void TestProcessingArea::afterAnotherButtonTheBandIsInPixels()
{
    PictureBench bench;
    QVERIFY(bench.show());
    bench.open({640, 480});
    bench.click({10, 10}, Qt::RightButton);
    QCOMPARE(bench.form->view.Pic1->ScaleMode(), PictureBox::Pixels);
    bench.takeCalls();
    bench.drag({20, 30}, {120, 90});
    QVERIFY(bench.takeCalls().value(0).endsWith(u", 100, 60"));
    QCOMPARE(bench.form->view.Pic1->ScaleMode(), PictureBox::Twips);
}

QTEST_MAIN(TestProcessingArea)
#include "TestProcessingArea.moc"
