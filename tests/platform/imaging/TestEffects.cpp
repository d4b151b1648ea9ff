#include <cmath>

#include <QTest>

#include "platform/imaging/operations/Effects.h"
#include "tests/platform/imaging/PictureModel.h"
#include "tests/platform/imaging/TestPictures.h"

using namespace vandrel;

/// Effects, against their formulas in the plainest form.
class TestEffects : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void matchesTheFormula_data();
    void matchesTheFormula();
    void thinPictures();
    void aFlatPictureHasNoBumps();
    void theButtonsCornersAreMitred();
    void noChangeSharesThePixels();
};

namespace {

using Operation = std::function<Outcome(const Subject &)>;
using AreaReference = std::function<ReferencePixel(const PixelArea &)>;
using Rgb = std::array<int, 3>;

Rgb scaled(const PictureModel::Pixel &pixel, double red, double green, double blue)
{
    return {limited(pixel[0] * red), limited(pixel[1] * green), limited(pixel[2] * blue)};
}

ReferencePixel spot(const PixelArea &area)
{
    return [area](const PictureModel &source, int x, int y) {
        const double across = x - area.left - 0.45 * area.width;
        const double down = y - area.top - 0.40 * area.height;
        const double distance = std::hypot(across, down) / (std::hypot(area.width, area.height) / 2);
        const double light = std::max(0.12, std::clamp(1.1 - 0.95 * std::pow(distance, 1.5), 0.0, 1.0));
        return scaled(source.at(x, y), light * 1.05, light, light * 0.85);
    };
}

ReferencePixel slippedRows(const PixelArea &area)
{
    return [area](const PictureModel &source, int x, int y) {
        const auto row = static_cast<std::uint64_t>(y - area.top);
        const auto noise = static_cast<int>((row * 2654435761ULL & 0xFFFFFFFFULL) >> 16);
        const int slip
            = static_cast<int>(std::lround(6 * std::sin(static_cast<double>(row) / 9))) + (noise % 7 - 3);
        int from = (x - area.left - slip) % area.width;
        from += from < 0 ? area.width : 0;
        const double light = row % 2 == 1 ? 0.65 : 1;
        return scaled(source.at(area.left + from, y), light, light, light);
    };
}

AreaReference bumps(double depth, bool inverted)
{
    return [=](const PixelArea &) {
        return [=](const PictureModel &source, int x, int y) {
            const auto at = [&](int right, int down) { return source.lumaAt(x + right, y + down); };
            const double slopeX
                = (at(1, -1) + 2 * at(1, 0) + at(1, 1) - at(-1, -1) - 2 * at(-1, 0) - at(-1, 1)) / 1020.0;
            const double slopeY
                = (at(-1, 1) + 2 * at(0, 1) + at(1, 1) - at(-1, -1) - 2 * at(0, -1) - at(1, -1)) / 1020.0;
            const std::array normal{-depth * slopeX, -depth * slopeY, 1.0};
            const double side = inverted ? 0.5 : -0.5;
            const std::array light{side, side, std::sqrt(2.0) / 2};
            const double length = std::hypot(normal[0], normal[1], normal[2]);
            const double cosine
                = (normal[0] * light[0] + normal[1] * light[1] + normal[2] * light[2]) / length;
            const double factor = std::clamp(cosine / (std::sqrt(2.0) / 2), 0.0, 2.0);
            return scaled(source.at(x, y), factor, factor, factor);
        };
    };
}

AreaReference raisedEdge(double percent, int width)
{
    return [=](const PixelArea &area) {
        return [=](const PictureModel &source, int x, int y) {
            const int leftOrTop = std::min(x - area.left, y - area.top);
            const int rightOrBottom = std::min(area.right() - 1 - x, area.bottom() - 1 - y);
            const PictureModel::Pixel &p = source.at(x, y);
            if (std::min(leftOrTop, rightOrBottom) >= width)
                return Rgb{p[0], p[1], p[2]};
            if (leftOrTop > rightOrBottom)
                return scaled(p, 1 - percent / 100, 1 - percent / 100, 1 - percent / 100);
            const auto lightened
                = [percent](int level) { return limited(level + (255 - level) * percent / 100); };
            return Rgb{lightened(p[0]), lightened(p[1]), lightened(p[2])};
        };
    };
}

} // namespace

Q_DECLARE_METATYPE(Operation)
Q_DECLARE_METATYPE(AreaReference)

void TestEffects::matchesTheFormula_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<AreaReference>("reference");
    QTest::addColumn<int>("tolerance");
    const auto row = [](const char *name, const Operation &operation, const AreaReference &reference,
                        int tolerance) { QTest::newRow(name) << operation << reference << tolerance; };
    row("the spot", rembrandt, spot, 1);
    row("the broken set", brokenTv, slippedRows, 0);
    row(
        "bumps", [](const Subject &s) { return bumpMap(s, 12, false); }, bumps(12, false), 1);
    row(
        "dents", [](const Subject &s) { return bumpMap(s, 12, true); }, bumps(12, true), 1);
    row(
        "the steepest", [](const Subject &s) { return bumpMap(s, -30000, false); }, bumps(-100, false), 1);
    row(
        "a button", [](const Subject &s) { return buttonize(s, 40, 3); }, raisedEdge(40, 3), 0);
    row(
        "a bright button", [](const Subject &s) { return buttonize(s, 1e9, 2.9); }, raisedEdge(100, 2), 0);
}

void TestEffects::matchesTheFormula()
{
    QFETCH(Operation, operation);
    QFETCH(AreaReference, reference);
    QFETCH(int, tolerance);
    for (const PictureKind &kind : pictureKinds()) {
        const Raster picture = noisePicture(kind, 37, 29);
        std::vector<NamedArea> areas = areasOf(37, 29);
        areas.push_back({"the picture", picture.area()});
        for (const NamedArea &named : areas) {
            if (named.name == "one pixel")
                continue;
            const PixelArea inside = clipped(named.area, 37, 29);
            const Outcome outcome = operation({picture, named.area});
            QVERIFY(outcome.done);
            const QString found = difference(picture, inside, outcome.picture, reference(inside), tolerance);
            QVERIFY2(found.isEmpty(), qPrintable(labelled(kind.name + " " + named.name, found)));
        }
    }
}

void TestEffects::thinPictures()
{
    for (const auto &[width, height] :
         {std::pair(1, 1), std::pair(1, 30), std::pair(30, 1), std::pair(3, 3)}) {
        const Raster picture = noisePicture(24, width, height);
        const PixelArea all = picture.area();
        QCOMPARE(difference(picture, all, rembrandt({picture}).picture, spot(all), 1), QString());
        QCOMPARE(difference(picture, all, brokenTv({picture}).picture, slippedRows(all), 0), QString());
        QCOMPARE(difference(picture, all, bumpMap({picture}, 12, false).picture, bumps(12, false)(all), 1),
                 QString());
        const int widest = std::min(width, height) / 2;
        QCOMPARE(
            difference(picture, all, buttonize({picture}, 30, 1e300).picture, raisedEdge(30, widest)(all), 0),
            QString());
    }
}

void TestEffects::aFlatPictureHasNoBumps()
{
    const Raster picture = plainPicture({10, 100, 200}, 12, 12);
    QVERIFY(areEqual(bumpMap({picture}, 100, false).picture, picture));
}

void TestEffects::theButtonsCornersAreMitred()
{
    const Raster button = buttonize({plainPicture({100, 100, 100}, 10, 10)}, 100, 3).picture;
    QCOMPARE(int{button.colourAt(9, 0).red}, 255);
    QCOMPARE(int{button.colourAt(9, 1).red}, 0);
    QCOMPARE(int{button.colourAt(8, 1).red}, 255);
    QCOMPARE(int{button.colourAt(0, 9).red}, 255);
    QCOMPARE(int{button.colourAt(1, 9).red}, 0);
    QCOMPARE(int{button.colourAt(5, 5).red}, 100);
}

void TestEffects::noChangeSharesThePixels()
{
    const Raster picture = noisePicture(24, 20, 20);
    QVERIFY(bumpMap({picture}, 0, false).done
            && bumpMap({picture}, 0, false).picture.sharesPixelsWith(picture));
    for (const auto &[intensity, width] : {std::pair(0.0, 5.0), std::pair(-3.0, 5.0), std::pair(50.0, 0.0),
                                           std::pair(50.0, -7.0), std::pair(50.0, 0.5)}) {
        const Outcome outcome = buttonize({picture}, intensity, width);
        QVERIFY(outcome.done && outcome.picture.sharesPixelsWith(picture));
    }
}

QTEST_APPLESS_MAIN(TestEffects)
#include "TestEffects.moc"
