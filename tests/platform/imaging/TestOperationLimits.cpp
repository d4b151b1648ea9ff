#include <algorithm>
#include <functional>
#include <limits>
#include <vector>

#include <QTest>

#include "platform/imaging/operations/Colours.h"
#include "platform/imaging/operations/Deskew.h"
#include "platform/imaging/operations/Effects.h"
#include "platform/imaging/operations/Filters.h"
#include "platform/imaging/operations/Flips.h"
#include "platform/imaging/operations/Resample.h"
#include "platform/imaging/operations/Resize.h"
#include "platform/imaging/operations/Rotate.h"
#include "platform/imaging/operations/Tones.h"
#include "platform/imaging/operations/Warp.h"
#include "tests/platform/imaging/TestPictures.h"

using namespace vandrel;

/// Every operation with every value that a caller can think of, on pictures of every shape.
class TestOperationLimits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anyValueEndsInAPicture_data();
    void anyValueEndsInAPicture();
    void theDefaultsNeverFail();
    void withoutAPictureAllIsRefused();
    void areasOutsideAreRefused();
    void whatIsNoNumberIsRefused();
    void longWorkTellsHowFarItIs_data();
    void longWorkTellsHowFarItIs();
};

namespace {

using Operation = std::function<Outcome(const Subject &, double value)>;

struct NamedOperation {
    const char *name;
    Operation run;
};

int asInt(double value)
{
    if (!(value > std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    return value >= std::numeric_limits<int>::max() ? std::numeric_limits<int>::max()
                                                    : static_cast<int>(value);
}

const std::vector<NamedOperation> &numberOperations()
{
    static const std::vector<NamedOperation> operations{
        {"blend", [](const Subject &s, double v) { return blend(s, v); }},
        {"brightness", [](const Subject &s, double v) { return brightness(s, v); }},
        {"contrast", [](const Subject &s, double v) { return contrast(s, v); }},
        {"gamma", [](const Subject &s, double v) { return vandrel::gamma(s, v); }},
        {"sharpen", [](const Subject &s, double v) { return sharpen(s, v); }},
        {"mosaic", [](const Subject &s, double v) { return mosaic(s, v); }},
        {"rotate", [](const Subject &s, double v) { return rotate(s, v); }},
        {"buttonize intensity", [](const Subject &s, double v) { return buttonize(s, v, 3); }},
        {"buttonize width", [](const Subject &s, double v) { return buttonize(s, 50, v); }},
        {"red", [](const Subject &s, double v) { return adjustRgb(s, v, 0, 0); }},
        {"blue", [](const Subject &s, double v) { return adjustRgb(s, 0, 0, v); }},
        {"hue", [](const Subject &s, double v) { return adjustHsl(s, v, 0, 0); }},
        {"saturation", [](const Subject &s, double v) { return adjustHsl(s, 0, v, 0); }},
        {"luminosity", [](const Subject &s, double v) { return adjustHsl(s, 0, 0, v); }},
    };
    return operations;
}

const std::vector<NamedOperation> &otherOperations()
{
    static const std::vector<NamedOperation> operations{
        {"auto-contrast", [](const Subject &s, double) { return autoContrast(s); }},
        {"equalize", [](const Subject &s, double) { return equalize(s); }},
        {"negative", [](const Subject &s, double) { return negative(s); }},
        {"concave", [](const Subject &s, double) { return concaveSpectrum(s); }},
        {"convex", [](const Subject &s, double) { return convexSpectrum(s); }},
        {"blur", [](const Subject &s, double) { return blur(s); }},
        {"emboss", [](const Subject &s, double) { return emboss(s); }},
        {"spot", [](const Subject &s, double) { return rembrandt(s); }},
        {"broken set", [](const Subject &s, double) { return brokenTv(s); }},
        {"sideways", [](const Subject &s, double) { return flipHorizontally(s); }},
        {"over", [](const Subject &s, double) { return flipVertically(s); }},
        {"bumps", [](const Subject &s, double v) { return bumpMap(s, asInt(v), v > 0); }},
        {"matrix",
         [](const Subject &s, double v) {
             const int weight = asInt(v);
             return matrix(s, {weight, 1, weight, 0, -1, weight, 2, 3, weight}, weight, weight);
         }},
        {"replace",
         [](const Subject &s, double v) {
             const auto level = static_cast<std::uint8_t>(asInt(v) & 255);
             return replaceColours(s, {0, level, 0}, {9, 99, level}, {5, 6, 7});
         }},
    };
    return operations;
}

/// Those that any value may refuse.
const std::vector<NamedOperation> &choosyOperations()
{
    static const std::vector<NamedOperation> operations{
        {"warp a corner",
         [](const Subject &s, double v) {
             return warp(s, {PlanePoint{asInt(v), asInt(v)}, {400, 20}, {20, 400}, {400, 400}});
         }},
        {"warp a side",
         [](const Subject &s, double v) {
             return warp(s, {PlanePoint{1, 2}, {asInt(v), 3}, {2, 9}, {asInt(v), 10}});
         }},
        {"resize", [](const Subject &s, double v) { return resize(s, v, 3); }},
        {"resize both", [](const Subject &s, double v) { return resize(s, v, v); }},
        {"resample",
         [](const Subject &s, double v) {
             return resample(s, asInt(v), ColourChoice::Optimized, Dither::Random);
         }},
        {"deskew", [](const Subject &s, double) { return deskew(s); }},
    };
    return operations;
}

/// The values that typed texts turn into, and worse.
const std::vector<double> &values()
{
    static const std::vector<double> all{-2147483648.0, -1e308, -32768,       -360, -100, -1, -0.0, 0,
                                         1e-300,        0.1,    0.5,          1,    2,    45, 90,   100,
                                         255,           32767,  2147483647.0, 1e308};
    return all;
}

std::vector<Raster> shapes()
{
    std::vector<Raster> pictures;
    for (const PictureKind &kind : pictureKinds()) {
        for (const auto &[width, height] :
             {std::pair(1, 1), std::pair(1, 6), std::pair(7, 1), std::pair(13, 11)})
            pictures.push_back(noisePicture(kind, width, height));
    }
    return pictures;
}

/// A refusal hands back the picture; anything else is a picture within the limits.
void checkOutcome(const Outcome &outcome, const Raster &picture, const char *name)
{
    QVERIFY2(!outcome.picture.isNull(), name);
    QVERIFY2(outcome.done || outcome.picture.sharesPixelsWith(picture), name);
    QVERIFY2(outcome.picture.width() >= 1 && outcome.picture.height() >= 1, name);
}

void checkChoosy(const NamedOperation &operation, const Raster &picture, double value)
{
    checkOutcome(operation.run({picture}, value), picture, operation.name);
    for (const NamedArea &named : areasOf(picture.width(), picture.height()))
        checkOutcome(operation.run({picture, named.area}, value), picture, operation.name);
}

void checkAll(const NamedOperation &operation, const Raster &picture, double value)
{
    std::vector<NamedArea> areas = areasOf(picture.width(), picture.height());
    areas.push_back({"negative", {3, 3, -1, -1}});
    areas.push_back({"outside", {1000, 1000, 5, 5}});
    for (const NamedArea &named : areas) {
        const Outcome outcome = operation.run({picture, named.area}, value);
        const bool isEmpty = clipped(named.area, picture.width(), picture.height()).isEmpty();
        QVERIFY2(!isEmpty || !outcome.done, operation.name);
        checkOutcome(outcome, picture, operation.name);
    }
    const Outcome outcome = operation.run({picture}, value);
    QVERIFY2(outcome.done, operation.name);
    QVERIFY2(picture.isIndexed() || outcome.picture.bitsPerPixel() == picture.bitsPerPixel(), operation.name);
}

} // namespace

void TestOperationLimits::anyValueEndsInAPicture_data()
{
    QTest::addColumn<int>("operation");
    for (std::size_t index = 0; index < numberOperations().size(); ++index)
        QTest::newRow(numberOperations()[index].name) << static_cast<int>(index);
    for (std::size_t index = 0; index < otherOperations().size(); ++index)
        QTest::newRow(otherOperations()[index].name) << static_cast<int>(index + numberOperations().size());
    QTest::newRow("those that may refuse") << -1;
}

void TestOperationLimits::anyValueEndsInAPicture()
{
    QFETCH(int, operation);
    if (operation < 0) {
        for (const NamedOperation &choosy : choosyOperations()) {
            for (const Raster &picture : shapes()) {
                for (const double value : values())
                    checkChoosy(choosy, picture, value);
            }
        }
        return;
    }
    const auto index = static_cast<std::size_t>(operation);
    const std::size_t numbers = numberOperations().size();
    const NamedOperation &chosen
        = index < numbers ? numberOperations()[index] : otherOperations()[index - numbers];
    for (const Raster &picture : shapes()) {
        for (const double value : values())
            checkAll(chosen, picture, value);
    }
}

void TestOperationLimits::theDefaultsNeverFail()
{
    const Raster row = noisePicture(24, 65535, 1);
    for (const std::vector<NamedOperation> *operations : {&numberOperations(), &otherOperations()}) {
        for (const NamedOperation &operation : *operations) {
            // A row as long as they get, at an angle whose result fits.
            const double value = qstrcmp(operation.name, "rotate") == 0 ? 0.1 : 2;
            QVERIFY2(operation.run({row}, value).done, operation.name);
        }
    }
    QVERIFY(deskew({row}).done);
    QVERIFY(resize({row}, 10, 10).done);
    QVERIFY(resample({row}, 8, ColourChoice::Optimized, Dither::FloydSteinberg).done);
}

void TestOperationLimits::withoutAPictureAllIsRefused()
{
    for (const std::vector<NamedOperation> *operations : {&numberOperations(), &otherOperations()}) {
        for (const NamedOperation &operation : *operations) {
            QVERIFY2(!operation.run({}, 2).done, operation.name);
            QVERIFY2(!operation.run({Raster(), PixelArea{0, 0, 5, 5}}, 0).done, operation.name);
        }
    }
    QVERIFY(!deskew({}).done);
    QVERIFY(!resize({}, 5, 5).done);
    QVERIFY(!resample({}, 8, ColourChoice::Gray, Dither::None).done);
    QVERIFY(!warp({}, {PlanePoint{20, 20}, {400, 20}, {20, 400}, {400, 400}}).done);
}

void TestOperationLimits::areasOutsideAreRefused()
{
    const Raster picture = noisePicture(24, 9, 9);
    for (const PixelArea &area :
         {PixelArea{9, 0, 5, 5}, {0, 9, 5, 5}, {-5, 0, 5, 5}, {0, 0, 0, 5}, {0, 0, 5, -5}}) {
        for (const std::vector<NamedOperation> *operations : {&numberOperations(), &otherOperations()}) {
            for (const NamedOperation &operation : *operations) {
                const Outcome outcome = operation.run({picture, area}, 0);
                QVERIFY2(!outcome.done && outcome.picture.sharesPixelsWith(picture), operation.name);
            }
        }
    }
}

void TestOperationLimits::whatIsNoNumberIsRefused()
{
    const Raster picture = noisePicture(24, 9, 9);
    for (const double value :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity()}) {
        for (const NamedOperation &operation : numberOperations()) {
            const Outcome outcome = operation.run({picture}, value);
            QVERIFY2(!outcome.done && outcome.picture.sharesPixelsWith(picture), operation.name);
        }
    }
}

void TestOperationLimits::longWorkTellsHowFarItIs_data()
{
    QTest::addColumn<int>("bitsPerPixel");
    QTest::addColumn<Operation>("operation");
    const auto row = [](const char *name, int bitsPerPixel, Operation operation) {
        QTest::newRow(name) << bitsPerPixel << std::move(operation);
    };
    const auto larger = [](const Subject &s, double) { return resize(s, 2400, 2300); };
    row("enlarging", 24, larger);
    row("enlarging a palette's", 8, larger);
    row("shrinking", 24, [](const Subject &s, double) { return resize(s, 100, 2200); });
    row("by an angle", 24, [](const Subject &s, double) { return rotate(s, 30); });
    row("an area by an angle", 24, [](const Subject &s, double) {
        return rotate({s.picture, PixelArea{1, 1, 2190, 2190}, s.progress}, 30);
    });
    row("by a quarter", 24, [](const Subject &s, double) { return rotate(s, 90); });
    row("by half a circle", 24, [](const Subject &s, double) { return rotate(s, 180); });
    row("an area by a quarter", 24, [](const Subject &s, double) {
        return rotate({s.picture, PixelArea{1, 1, 2190, 2190}, s.progress}, 270);
    });
    row("its best colours", 24, [](const Subject &s, double) {
        return resample(s, 8, ColourChoice::Optimized, Dither::FloydSteinberg);
    });
    row("fixed colours", 24,
        [](const Subject &s, double) { return resample(s, 4, ColourChoice::Fixed, Dither::Ordered); });
    row("fewer bits", 8, [](const Subject &s, double) {
        return resample(s, 16, ColourChoice::Fixed, Dither::FloydSteinberg);
    });
    row("hue", 24, [](const Subject &s, double) { return adjustHsl(s, 30, 0, 0); });
}

void TestOperationLimits::longWorkTellsHowFarItIs()
{
    QFETCH(int, bitsPerPixel);
    QFETCH(Operation, operation);
    // Large enough for more than one report.
    const Raster picture = noisePicture(bitsPerPixel, 2200, 2200);
    std::vector<int> told;
    QVERIFY(operation({picture, {}, [&told](int percent) { told.push_back(percent); }}, 0).done);
    QVERIFY(told.size() >= 2);
    QVERIFY(std::is_sorted(told.begin(), told.end()));
    QVERIFY(told.front() >= 0 && told.front() < 100);
    QCOMPARE(told.back(), 100);
}

QTEST_APPLESS_MAIN(TestOperationLimits)
#include "TestOperationLimits.moc"
