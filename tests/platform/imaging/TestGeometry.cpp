#include <cmath>
#include <numbers>

#include <QTest>

#include "platform/imaging/operations/Deskew.h"
#include "platform/imaging/operations/Flips.h"
#include "platform/imaging/operations/Resize.h"
#include "platform/imaging/operations/Rotate.h"
#include "platform/imaging/operations/Warp.h"
#include "platform/imaging/raster/Turning.h"
#include "tests/platform/imaging/PictureModel.h"
#include "tests/platform/imaging/TestPictures.h"

using namespace vandrel;

/// Operations that move pixels.
class TestGeometry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void flipsMoveEveryPixelOfTheArea();
    void quarterTurnsLoseNothing();
    void quarterTurnsOfAnArea();
    void rotatesTheWholePicture_data();
    void rotatesTheWholePicture();
    void rotatesWithinAnArea();
    void rotationKeepsTheDepthItCan();
    void largePicturesRotateToo();
    void warpsIntoTheFigure();
    void warpOntoItselfChangesNothing();
    void impossibleFiguresAreRefused_data();
    void impossibleFiguresAreRefused();
    void resizesByMeans();
    void resizesPalettesByTheNearest();
    void enlargesSmoothly();
    void resizeLimits_data();
    void resizeLimits();
    void deskewFindsTheAngle_data();
    void deskewFindsTheAngle();
    void deskewLeavesPicturesWithoutLines();
};

namespace {

using Figure = std::array<PlanePoint, 4>;

/// The colour between four pixels; beyond the picture all is white.
std::array<double, 3> between(const PictureModel &picture, double x, double y)
{
    const double left = std::floor(x);
    const double top = std::floor(y);
    std::array<double, 3> colour{};
    for (int corner = 0; corner < 4; ++corner) {
        const int column = static_cast<int>(left) + corner % 2;
        const int row = static_cast<int>(top) + corner / 2;
        const double weight = (corner % 2 ? x - left : 1 - x + left) * (corner / 2 ? y - top : 1 - y + top);
        const bool inside = column >= 0 && row >= 0 && column < picture.width && row < picture.height;
        for (std::size_t channel = 0; channel < 3; ++channel)
            colour[channel] += weight * (inside ? picture.at(column, row)[channel] : 255);
    }
    return colour;
}

/// A model that a function of the place fills.
template<typename Place>
PictureModel filled(const PictureModel &source, int width, int height, Place place)
{
    PictureModel model = source;
    model.width = width;
    model.height = height;
    model.pixels.clear();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto [fromX, fromY] = place(x + 0.5, y + 0.5);
            const auto colour = between(source, fromX - 0.5, fromY - 0.5);
            model.pixels.push_back({limited(colour[0]), limited(colour[1]), limited(colour[2]), 255});
        }
    }
    return model;
}

PictureModel rotatedModel(const PictureModel &source, int width, int height, double degrees)
{
    const double angle = degrees * std::numbers::pi / 180;
    return filled(source, width, height, [&](double x, double y) {
        const double right = x - width / 2.0;
        const double down = y - height / 2.0;
        return std::pair(right * std::cos(angle) + down * std::sin(angle) + source.width / 2.0,
                         -right * std::sin(angle) + down * std::cos(angle) + source.height / 2.0);
    });
}

/// A picture of four colours, one in each quarter.
Raster fourQuarters(int width, int height)
{
    auto pixels = PixelBuffer::make(width, height, 1);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            *pixels->view().at(x, y) = static_cast<std::uint8_t>((2 * x / width) + 2 * (2 * y / height));
    }
    return Raster(std::move(pixels), 4, {{200, 0, 0}, {0, 200, 0}, {0, 0, 200}, {90, 90, 0}});
}

/// Lines of text: dark bars with gaps, run down to the right by the angle.
Raster linesOfText(int width, int height, double degrees)
{
    const double slope = std::tan(degrees * std::numbers::pi / 180);
    auto pixels = PixelBuffer::make(width, height, 1);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double line = y - x * slope + 1000;
            const bool inLine = std::fmod(line, 24) < 9;
            const bool inWord = (x / 5 + static_cast<int>(line / 24) * 7) % 9 < 7;
            pixels->view().row(y)[x] = inLine && inWord ? 0 : 1;
        }
    }
    return Raster(std::move(pixels), 8, {{20, 20, 30}, {250, 250, 245}});
}

} // namespace

void TestGeometry::flipsMoveEveryPixelOfTheArea()
{
    for (const PictureKind &kind : pictureKinds()) {
        const Raster picture = noisePicture(kind, 23, 17);
        for (const NamedArea &named : areasOf(23, 17)) {
            const PixelArea area = clipped(named.area, 23, 17);
            const Raster sideways = flipHorizontally({picture, named.area}).picture;
            const Raster over = flipVertically({picture, named.area}).picture;
            QCOMPARE(sideways.bitsPerPixel(), kind.bitsPerPixel);
            QVERIFY(sideways.palette() == picture.palette());
            for (int y = area.top; y < area.bottom(); ++y) {
                for (int x = area.left; x < area.right(); ++x) {
                    QVERIFY(sideways.colourAt(x, y)
                            == picture.colourAt(2 * area.left + area.width - 1 - x, y));
                    QVERIFY(over.colourAt(x, y) == picture.colourAt(x, 2 * area.top + area.height - 1 - y));
                }
            }
            QVERIFY(areEqual(flipHorizontally({sideways, named.area}).picture, picture));
            QVERIFY(areEqual(flipVertically({over, named.area}).picture, picture));
        }
    }
}

void TestGeometry::quarterTurnsLoseNothing()
{
    for (const PictureKind &kind : pictureKinds()) {
        const Raster picture = noisePicture(kind, 23, 17);
        QVERIFY(areEqual(rotate({picture}, 90).picture, turned(picture, 1)));
        QVERIFY(areEqual(rotate({picture}, -90).picture, turned(picture, 3)));
        QVERIFY(areEqual(rotate({picture}, 540).picture, turned(picture, 2)));
        QVERIFY(rotate({picture}, 720).picture.sharesPixelsWith(picture));
        QVERIFY(rotate({picture}, 0).picture.sharesPixelsWith(picture));
    }
}

void TestGeometry::quarterTurnsOfAnArea()
{
    const PixelArea area{4, 3, 10, 6};
    const Raster picture = noisePicture(24, 23, 17);
    const Raster after = rotate({picture, area}, 90).picture;
    QCOMPARE(after.area(), picture.area());
    // Six columns stay of ten, and the middle six rows of the ten that the turned part has.
    for (int y = 0; y < 6; ++y) {
        QVERIFY((after.colourAt(4, 3 + y) == Colour{255, 255, 255}));
        QVERIFY((after.colourAt(13, 3 + y) == Colour{255, 255, 255}));
    }
    QVERIFY(after.colourAt(3, 3) == picture.colourAt(3, 3));
    QVERIFY(areEqual(rotate({rotate({picture, area}, 180).picture, area}, 180).picture, picture));
    const PixelArea square{4, 3, 8, 8};
    for (const PictureKind &kind : pictureKinds()) {
        Raster turning = noisePicture(kind, 23, 17);
        for (int quarter = 0; quarter < 4; ++quarter) {
            turning = rotate({turning, square}, 90).picture;
            QCOMPARE(turning.bitsPerPixel(), kind.bitsPerPixel);
        }
        QVERIFY(areEqual(turning, noisePicture(kind, 23, 17)));
    }
    // Without white in the palette, the uncovered pixels need another depth.
    QCOMPARE(rotate({noisePicture(4, 23, 17), area}, 90).picture.bitsPerPixel(), 24);
}

void TestGeometry::rotatesTheWholePicture_data()
{
    QTest::addColumn<double>("degrees");
    for (const double degrees : {45.0, 10.0, -33.3, 135.0, 271.0, 0.5})
        QTest::newRow(qPrintable(QString::number(degrees))) << degrees;
}

void TestGeometry::rotatesTheWholePicture()
{
    QFETCH(double, degrees);
    const Raster picture = smoothPicture(300, 200);
    const Outcome outcome = rotate({picture}, degrees);
    QVERIFY(outcome.done);
    const double angle = degrees * std::numbers::pi / 180;
    const int width = static_cast<int>(
        std::ceil(300 * std::abs(std::cos(angle)) + 200 * std::abs(std::sin(angle)) - 1e-6));
    const int height = static_cast<int>(
        std::ceil(300 * std::abs(std::sin(angle)) + 200 * std::abs(std::cos(angle)) - 1e-6));
    QCOMPARE(outcome.picture.width(), width);
    QCOMPARE(outcome.picture.height(), height);
    const double alike = likeness(PictureModel(outcome.picture),
                                  rotatedModel(PictureModel(picture), width, height, degrees), 2);
    QVERIFY2(alike >= 40, qPrintable(QString::number(alike)));
}

void TestGeometry::rotatesWithinAnArea()
{
    const PixelArea area{50, 40, 120, 90};
    const Raster picture = smoothPicture(300, 200);
    const Raster after = rotate({picture, area}, 30).picture;
    QCOMPARE(after.area(), picture.area());
    const auto outside = [&](int x, int y) {
        return x < area.left || y < area.top || x >= area.right() || y >= area.bottom();
    };
    for (int y = 0; y < 200; ++y) {
        for (int x = 0; x < 300; ++x)
            QVERIFY(!outside(x, y) || after.colourAt(x, y) == picture.colourAt(x, y));
    }
    QVERIFY((after.colourAt(area.left, area.top) == Colour{255, 255, 255}));
    // The middle stays where it is, nearly.
    const Colour middle = picture.colourAt(110, 85);
    QVERIFY(std::abs(after.colourAt(110, 85).red - middle.red) < 12);
}

void TestGeometry::rotationKeepsTheDepthItCan()
{
    QCOMPARE(rotate({noisePicture({{}, 8, true}, 40, 30)}, 20).picture.bitsPerPixel(), 8);
    QCOMPARE(rotate({noisePicture(8, 40, 30)}, 20).picture.bitsPerPixel(), 24);
    QCOMPARE(rotate({noisePicture(1, 40, 30)}, 20).picture.bitsPerPixel(), 24);
    const Raster sixteen = rotate({noisePicture(16, 40, 30)}, 20).picture;
    QCOMPARE(sixteen.bitsPerPixel(), 16);
    const Raster alpha = rotate({noisePicture(32, 40, 30)}, 20).picture;
    QCOMPARE(alpha.bitsPerPixel(), 32);
    // What is uncovered can be seen.
    QCOMPARE(int{alpha.view().at(0, 0)[3]}, 255);
}

void TestGeometry::largePicturesRotateToo()
{
    const Outcome longRow = rotate({noisePicture(24, 65535, 3)}, 0.05);
    QVERIFY(longRow.done);
    QCOMPARE(longRow.picture.width(), 65535);
    QVERIFY((longRow.picture.colourAt(30000, 0) == Colour{255, 255, 255}));
    const PictureModel model(longRow.picture);
    const bool hasInk
        = std::any_of(model.pixels.begin(), model.pixels.end(), [](const auto &p) { return p[0] < 128; });
    QVERIFY(hasInk);
    QVERIFY(!rotate({noisePicture(24, 65535, 10)}, 45).done);
}

void TestGeometry::warpsIntoTheFigure()
{
    const Raster picture = smoothPicture(200, 160);
    // Half as wide, and moved.
    const Outcome outcome = warp({picture}, {PlanePoint{40, 20}, {140, 20}, {40, 100}, {140, 100}});
    QVERIFY(outcome.done);
    QCOMPARE(outcome.picture.area(), picture.area());
    const PictureModel expected = filled(PictureModel(picture), 200, 160, [](double x, double y) {
        return std::pair((x - 40) * 2, (y - 20) * 2);
    });
    QVERIFY(likeness(PictureModel(outcome.picture), expected, 0) >= 40);
    QVERIFY((outcome.picture.colourAt(20, 50) == Colour{255, 255, 255}));

    // In perspective: the figure's diagonals meet where the picture's middle comes to, here at 100, 67.
    const Raster quarters = fourQuarters(200, 160);
    const Raster deep = warp({quarters}, {PlanePoint{60, 30}, {140, 30}, {10, 150}, {190, 150}}).picture;
    QVERIFY(deep.colourAt(63, 33) == quarters.colourAt(0, 0));
    QVERIFY(deep.colourAt(98, 65) == quarters.colourAt(0, 0));
    QVERIFY(deep.colourAt(102, 65) == quarters.colourAt(199, 0));
    QVERIFY(deep.colourAt(98, 69) == quarters.colourAt(0, 159));
    QVERIFY(deep.colourAt(102, 69) == quarters.colourAt(199, 159));
    QVERIFY(deep.colourAt(185, 148) == quarters.colourAt(199, 159));
    QVERIFY((deep.colourAt(30, 60) == Colour{255, 255, 255}));
}

void TestGeometry::warpOntoItselfChangesNothing()
{
    const Raster picture = noisePicture(24, 90, 70);
    const PixelArea area{10, 20, 50, 30};
    const Outcome outcome = warp({picture, area}, {PlanePoint{10, 20}, {60, 20}, {10, 50}, {60, 50}});
    QVERIFY(outcome.done);
    QVERIFY(areEqual(outcome.picture, picture));
}

void TestGeometry::impossibleFiguresAreRefused_data()
{
    QTest::addColumn<Figure>("figure");
    QTest::newRow("three in a line") << Figure{PlanePoint{0, 0}, {10, 0}, {20, 0}, {20, 20}};
    QTest::newRow("a point") << Figure{PlanePoint{5, 5}, {5, 5}, {5, 5}, {5, 5}};
    QTest::newRow("crossed") << Figure{PlanePoint{0, 0}, {10, 10}, {10, 0}, {0, 10}};
    QTest::newRow("dented") << Figure{PlanePoint{0, 0}, {20, 0}, {0, 20}, {5, 5}};
    QTest::newRow("too far") << Figure{PlanePoint{0, 0}, {32001, 0}, {0, 20}, {32001, 20}};
    constexpr int most = std::numeric_limits<int>::max();
    QTest::newRow("the largest numbers")
        << Figure{PlanePoint{-most, -most}, {most, -most}, {-most, most}, {most, most}};
}

void TestGeometry::impossibleFiguresAreRefused()
{
    QFETCH(Figure, figure);
    const Raster picture = noisePicture(24, 30, 30);
    const Outcome outcome = warp({picture}, figure);
    QVERIFY(!outcome.done);
    QVERIFY(outcome.picture.sharesPixelsWith(picture));
}

void TestGeometry::resizesByMeans()
{
    const Raster picture = noisePicture(24, 40, 30);
    const Raster half = resize({picture}, 20, 15).picture;
    for (int y = 0; y < 15; ++y) {
        for (int x = 0; x < 20; ++x) {
            const int sum = picture.colourAt(2 * x, 2 * y).red + picture.colourAt(2 * x + 1, 2 * y).red
                + picture.colourAt(2 * x, 2 * y + 1).red + picture.colourAt(2 * x + 1, 2 * y + 1).red;
            QVERIFY(std::abs(half.colourAt(x, y).red - sum / 4.0) <= 0.5);
        }
    }
    QCOMPARE(resize({noisePicture(16, 40, 30)}, 7, 7).picture.bitsPerPixel(), 16);
    QCOMPARE(resize({noisePicture(32, 40, 30)}, 7, 60).picture.bitsPerPixel(), 32);
}

void TestGeometry::resizesPalettesByTheNearest()
{
    for (const int depth : {1, 4, 8}) {
        const Raster picture = noisePicture(depth, 10, 6);
        const Raster larger = resize({picture}, 30, 12).picture;
        QCOMPARE(larger.bitsPerPixel(), depth);
        QVERIFY(larger.palette() == picture.palette());
        for (int y = 0; y < 12; ++y) {
            for (int x = 0; x < 30; ++x)
                QVERIFY(larger.colourAt(x, y) == picture.colourAt(x / 3, y / 2));
        }
        QVERIFY(areEqual(resize({larger}, 10, 6).picture, picture));
    }
}

void TestGeometry::enlargesSmoothly()
{
    const Raster picture = smoothPicture(60, 40);
    const Raster larger = resize({picture}, 120, 80).picture;
    const PictureModel expected = filled(PictureModel(picture), 120, 80, [](double x, double y) {
        return std::pair(std::clamp(x / 2, 0.5, 59.5), std::clamp(y / 2, 0.5, 39.5));
    });
    QVERIFY(likeness(PictureModel(larger), expected, 0) >= 40);
}

void TestGeometry::resizeLimits_data()
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinite = std::numeric_limits<double>::infinity();
    QTest::addColumn<double>("width");
    QTest::addColumn<double>("height");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("one pixel") << 1.0 << 1.0 << true;
    QTest::newRow("less") << 0.9 << 5.0 << false;
    QTest::newRow("nothing") << 0.0 << 0.0 << false;
    QTest::newRow("negative") << -5.0 << 5.0 << false;
    QTest::newRow("the longest side") << 65535.0 << 2.0 << true;
    QTest::newRow("a longer side") << 65536.0 << 2.0 << false;
    QTest::newRow("too many pixels") << 60000.0 << 60000.0 << false;
    QTest::newRow("no number") << nan << 5.0 << false;
    QTest::newRow("infinite") << 5.0 << infinite << false;
    QTest::newRow("huge") << 1e300 << 1e300 << false;
    QTest::newRow("a fraction") << 4.5 << 4.4 << true;
}

void TestGeometry::resizeLimits()
{
    QFETCH(double, width);
    QFETCH(double, height);
    QFETCH(bool, accepted);
    for (const int depth : {8, 24}) {
        const Raster picture = noisePicture(depth, 9, 9);
        const Outcome outcome = resize({picture}, width, height);
        QCOMPARE(outcome.done, accepted);
        QCOMPARE(outcome.picture.width(), accepted ? static_cast<int>(std::floor(width + 0.5)) : 9);
        QCOMPARE(outcome.picture.height(), accepted ? static_cast<int>(std::floor(height + 0.5)) : 9);
    }
}

void TestGeometry::deskewFindsTheAngle_data()
{
    QTest::addColumn<double>("degrees");
    for (const double degrees : {3.0, -7.4, 14.0, 0.5})
        QTest::newRow(qPrintable(QString::number(degrees))) << degrees;
}

void TestGeometry::deskewFindsTheAngle()
{
    QFETCH(double, degrees);
    const Raster page = linesOfText(600, 500, degrees);
    QVERIFY2(std::abs(skewOf(page) - degrees) <= 0.2, qPrintable(QString::number(skewOf(page))));
    // An area has no say: the page is turned as a whole.
    const Outcome outcome = deskew({page, PixelArea{0, 0, 3, 3}});
    QVERIFY(outcome.done);
    QVERIFY(outcome.picture.width() > page.width());
    QVERIFY(std::abs(skewOf(outcome.picture)) <= 0.3);
}

void TestGeometry::deskewLeavesPicturesWithoutLines()
{
    for (const Raster &picture :
         {linesOfText(400, 300, 0), linesOfText(400, 300, 0.1), noisePicture(24, 200, 150),
          plainPicture({9, 9, 9}, 50, 50), noisePicture(1, 1, 1)}) {
        const Outcome outcome = deskew({picture});
        QVERIFY(outcome.done);
        QVERIFY(outcome.picture.sharesPixelsWith(picture));
    }
}

QTEST_APPLESS_MAIN(TestGeometry)
#include "TestGeometry.moc"
