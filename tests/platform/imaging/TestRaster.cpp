#include <QTest>

#include "platform/imaging/raster/Conversions.h"
#include "platform/imaging/raster/PictureLimits.h"
#include "platform/imaging/raster/Turning.h"
#include "tests/platform/imaging/TestPictures.h"

Q_DECLARE_METATYPE(vandrel::PixelArea)

using namespace vandrel;

/// Pictures in memory.
class TestRaster : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theLumaIsExact();
    void sizesBeyondTheLimitsAreRefused_data();
    void sizesBeyondTheLimitsAreRefused();
    void areasAreCutToThePicture_data();
    void areasAreCutToThePicture();
    void copiesSharePixels();
    void palettesAreFilledUp();
    void theFixedPalettes();
    void expandingKeepsEveryColour();
    void quarterTurns();
    void theSpareBlockServesTheNextPicture();
};

void TestRaster::theLumaIsExact()
{
    for (int red = 0; red < 256; ++red) {
        for (int green = 0; green < 256; ++green) {
            for (int blue = 0; blue < 256; blue += 1 + (red + green) % 3) {
                if (luma(red, green, blue) != (299 * red + 587 * green + 114 * blue + 500) / 1000)
                    QFAIL(qPrintable(QStringLiteral("%1 %2 %3").arg(red).arg(green).arg(blue)));
            }
        }
    }
}

void TestRaster::sizesBeyondTheLimitsAreRefused_data()
{
    QTest::addColumn<qint64>("width");
    QTest::addColumn<qint64>("height");
    QTest::addColumn<int>("channels");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("one pixel") << qint64{1} << qint64{1} << 3 << true;
    QTest::newRow("none") << qint64{0} << qint64{1} << 1 << false;
    QTest::newRow("negative") << qint64{10} << qint64{-1} << 1 << false;
    QTest::newRow("the longest side") << qint64{65535} << qint64{1} << 4 << true;
    QTest::newRow("a longer side") << qint64{65536} << qint64{1} << 1 << false;
    QTest::newRow("the most pixels") << qint64{20000} << qint64{15000} << 4 << true;
    QTest::newRow("more pixels") << qint64{20000} << qint64{15001} << 1 << false;
    QTest::newRow("sides whose product overflows") << (qint64{1} << 32) << (qint64{1} << 32) << 4 << false;
}

void TestRaster::sizesBeyondTheLimitsAreRefused()
{
    QFETCH(qint64, width);
    QFETCH(qint64, height);
    QFETCH(int, channels);
    QTEST(isWithinLimits(width, height, channels), "accepted");
}

void TestRaster::areasAreCutToThePicture_data()
{
    constexpr int least = std::numeric_limits<int>::min();
    constexpr int most = std::numeric_limits<int>::max();
    QTest::addColumn<PixelArea>("area");
    QTest::addColumn<PixelArea>("inside");
    QTest::newRow("inside") << PixelArea{1, 2, 3, 4} << PixelArea{1, 2, 3, 4};
    QTest::newRow("across the left") << PixelArea{-2, 0, 5, 5} << PixelArea{0, 0, 3, 5};
    QTest::newRow("across the bottom") << PixelArea{0, 8, 5, 50} << PixelArea{0, 8, 5, 2};
    QTest::newRow("outside") << PixelArea{20, 0, 5, 5} << PixelArea{};
    QTest::newRow("empty") << PixelArea{2, 2, 0, 5} << PixelArea{};
    QTest::newRow("negative") << PixelArea{2, 2, -1, 5} << PixelArea{};
    QTest::newRow("the ends of the numbers") << PixelArea{least, least, most, most} << PixelArea{};
    QTest::newRow("far and wide") << PixelArea{-1, -1, most, most} << PixelArea{0, 0, 10, 10};
    QTest::newRow("a sum that overflows") << PixelArea{5, 5, most, most} << PixelArea{5, 5, 5, 5};
}

void TestRaster::areasAreCutToThePicture()
{
    QFETCH(PixelArea, area);
    QFETCH(PixelArea, inside);
    QCOMPARE(clipped(area, 10, 10), inside);
}

void TestRaster::copiesSharePixels()
{
    const Raster picture = noisePicture(24, 20, 10);
    const Raster copy = picture;
    QVERIFY(copy.sharesPixelsWith(picture));
    QCOMPARE(copy.view().data, picture.view().data);
    QVERIFY(!noisePicture(24, 20, 10).sharesPixelsWith(picture));
}

void TestRaster::palettesAreFilledUp()
{
    const Raster picture(PixelBuffer::make(1, 1, 1), 4, {{1, 2, 3}});
    QCOMPARE(picture.palette().size(), std::size_t{16});
    QVERIFY((picture.palette()[0] == Colour{1, 2, 3}));
    QVERIFY((picture.palette()[15] == Colour{}));
}

void TestRaster::theFixedPalettes()
{
    QVERIFY(isGrayRamp(grayPalette(256)));
    QVERIFY((grayPalette(16)[1] == Colour{17, 17, 17}));
    QVERIFY((cubeAndGrays().size() == 256 && cubeAndGrays()[215] == Colour{255, 255, 255}));
    QVERIFY((cubeAndGrays()[36 + 6 * 2 + 3] == Colour{51, 102, 153}));
    for (std::size_t number = 216; number < 256; ++number) {
        const Colour gray = cubeAndGrays()[number];
        QVERIFY(gray.isGray() && gray.red % 51 != 0);
        QVERIFY(std::count(cubeAndGrays().begin(), cubeAndGrays().end(), gray) == 1);
    }
}

void TestRaster::expandingKeepsEveryColour()
{
    for (const PictureKind &kind : pictureKinds()) {
        const Raster picture = noisePicture(kind, 31, 7);
        const Raster expanded = asTrueColour(picture);
        QCOMPARE(expanded.bitsPerPixel(), 24);
        QVERIFY(expanded.resolution() == picture.resolution());
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x)
                QVERIFY(expanded.colourAt(x, y) == picture.colourAt(x, y));
        }
    }
}

void TestRaster::quarterTurns()
{
    for (const PictureKind &kind : pictureKinds()) {
        const Raster picture = noisePicture(kind, 70, 41);
        const Raster right = turned(picture, 1);
        QCOMPARE(right.width(), 41);
        QCOMPARE(right.bitsPerPixel(), kind.bitsPerPixel);
        QVERIFY((right.resolution() == Resolution{48, 96}));
        QVERIFY(right.colourAt(40, 0) == picture.colourAt(0, 0));
        QVERIFY(right.colourAt(0, 69) == picture.colourAt(69, 40));
        QVERIFY(areEqual(turned(right, 1), turned(picture, 2)));
        QVERIFY(areEqual(turned(right, 3), picture));
        QVERIFY(turned(picture, 2).colourAt(0, 0) == picture.colourAt(69, 40));
        QVERIFY(mirroredSideways(picture).colourAt(0, 5) == picture.colourAt(69, 5));
    }
}

void TestRaster::theSpareBlockServesTheNextPicture()
{
    auto first = PixelBuffer::make(2000, 2000, 3);
    const std::uint8_t *block = first->view().data;
    first.reset();
    QCOMPARE(static_cast<const std::uint8_t *>(PixelBuffer::make(2000, 2000, 3)->view().data), block);
    // Another size must not get it.
    QCOMPARE(PixelBuffer::make(2000, 1999, 3)->height(), 1999);
    PixelBuffer::releaseSpare();
}

QTEST_APPLESS_MAIN(TestRaster)
#include "TestRaster.moc"
