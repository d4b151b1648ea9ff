#include <cmath>

#include <QTest>

#include "platform/imaging/operations/Colours.h"
#include "tests/platform/imaging/PictureModel.h"
#include "tests/platform/imaging/TestPictures.h"

using namespace vandrel;

/// Operations that tell the colours apart.
class TestColours : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void replacesARangeOfColours();
    void replacesOneColourExactly();
    void addsToEachColour_data();
    void addsToEachColour();
    void turnsAndMovesHsl_data();
    void turnsAndMovesHsl();
    void graysStayGray();
    void noChangeSharesThePixels();
};

namespace {

/// Hue in degrees, saturation and luminosity from 0 to 1, by the textbook.
std::array<double, 3> hslOf(const PictureModel::Pixel &pixel)
{
    const double red = pixel[0] / 255.0;
    const double green = pixel[1] / 255.0;
    const double blue = pixel[2] / 255.0;
    const double highest = std::max({red, green, blue});
    const double lowest = std::min({red, green, blue});
    const double luminosity = (highest + lowest) / 2;
    if (highest == lowest)
        return {0, 0, luminosity};
    const double range = highest - lowest;
    const double saturation = luminosity > 0.5 ? range / (2 - highest - lowest) : range / (highest + lowest);
    double hue = 0;
    if (highest == red)
        hue = (green - blue) / range;
    else if (highest == green)
        hue = (blue - red) / range + 2;
    else
        hue = (red - green) / range + 4;
    return {hue * 60, saturation, luminosity};
}

double ofHue(double low, double high, double hue)
{
    const double turned = hue - std::floor(hue / 360) * 360;
    if (turned < 60)
        return low + (high - low) * turned / 60;
    if (turned < 180)
        return high;
    return turned < 240 ? low + (high - low) * (240 - turned) / 60 : low;
}

std::array<int, 3> colourOf(double hue, double saturation, double luminosity)
{
    const double high = luminosity <= 0.5 ? luminosity * (1 + saturation)
                                          : luminosity + saturation - luminosity * saturation;
    const double low = 2 * luminosity - high;
    return {limited(255 * ofHue(low, high, hue + 120)), limited(255 * ofHue(low, high, hue)),
            limited(255 * ofHue(low, high, hue - 120))};
}

double moved(double value, double percent)
{
    const double share = std::clamp(percent, -100.0, 100.0) / 100;
    return share > 0 ? value + (1 - value) * share : value * (1 + share);
}

} // namespace

void TestColours::replacesARangeOfColours()
{
    const auto reference = [](const PictureModel &source, int x, int y) {
        const PictureModel::Pixel &p = source.at(x, y);
        const bool inside = p[0] >= 50 && p[0] <= 200 && p[1] >= 60 && p[1] <= 250 && p[2] <= 220;
        return inside ? std::array<int, 3>{8, 255, 16} : std::array<int, 3>{p[0], p[1], p[2]};
    };
    for (const PictureKind &kind : pictureKinds()) {
        const Raster picture = noisePicture(kind, 23, 17);
        for (const NamedArea &named : areasOf(23, 17)) {
            // The two ends in either order, for each colour on its own.
            const Outcome outcome
                = replaceColours({picture, named.area}, {200, 60, 0}, {50, 250, 220}, {8, 255, 16});
            QVERIFY(outcome.done);
            QCOMPARE(difference(picture, named.area, outcome.picture, reference, 0), QString());
        }
        QCOMPARE(replaceColours({picture}, {200, 60, 0}, {50, 250, 220}, {}).picture.bitsPerPixel(),
                 kind.bitsPerPixel);
    }
}

void TestColours::replacesOneColourExactly()
{
    const Raster picture = noisePicture(24, 10, 10);
    const Colour wanted = picture.colourAt(3, 4);
    const Outcome outcome = replaceColours({picture}, wanted, wanted, {1, 2, 3});
    for (int y = 0; y < 10; ++y) {
        for (int x = 0; x < 10; ++x) {
            const Colour old = picture.colourAt(x, y);
            QVERIFY(outcome.picture.colourAt(x, y) == (old == wanted ? Colour{1, 2, 3} : old));
        }
    }
}

void TestColours::addsToEachColour_data()
{
    QTest::addColumn<double>("red");
    QTest::addColumn<double>("green");
    QTest::addColumn<double>("blue");
    QTest::newRow("one") << 10.0 << 0.0 << 0.0;
    QTest::newRow("down and up") << -40.0 << 20.5 << 0.4;
    QTest::newRow("all") << 255.0 << -255.0 << 100.0;
    QTest::newRow("too far") << 1e18 << -1e18 << 300.0;
}

void TestColours::addsToEachColour()
{
    QFETCH(double, red);
    QFETCH(double, green);
    QFETCH(double, blue);
    const auto limitedShift = [](double shift) { return std::clamp(shift, -255.0, 255.0); };
    const auto reference = [&](const PictureModel &source, int x, int y) {
        const PictureModel::Pixel &p = source.at(x, y);
        return std::array<int, 3>{limited(p[0] + limitedShift(red)), limited(p[1] + limitedShift(green)),
                                  limited(p[2] + limitedShift(blue))};
    };
    for (const PictureKind &kind : pictureKinds()) {
        const Raster picture = noisePicture(kind, 23, 17);
        for (const NamedArea &named : areasOf(23, 17)) {
            const Outcome outcome = adjustRgb({picture, named.area}, red, green, blue);
            QVERIFY(outcome.done);
            QCOMPARE(difference(picture, named.area, outcome.picture, reference, 0), QString());
        }
    }
}

void TestColours::turnsAndMovesHsl_data()
{
    QTest::addColumn<double>("hue");
    QTest::addColumn<double>("saturation");
    QTest::addColumn<double>("luminosity");
    QTest::newRow("hue") << 30.0 << 0.0 << 0.0;
    QTest::newRow("hue backwards") << -100.0 << 0.0 << 0.0;
    QTest::newRow("more than a circle") << 1000.0 << 0.0 << 0.0;
    QTest::newRow("saturation") << 0.0 << 60.0 << 0.0;
    QTest::newRow("gray") << 0.0 << -100.0 << 0.0;
    QTest::newRow("luminosity") << 0.0 << 0.0 << -35.0;
    QTest::newRow("white") << 0.0 << 0.0 << 100.0;
    QTest::newRow("all") << 200.0 << -20.0 << 15.0;
    QTest::newRow("too far") << 1e9 << 1e9 << -1e9;
}

void TestColours::turnsAndMovesHsl()
{
    QFETCH(double, hue);
    QFETCH(double, saturation);
    QFETCH(double, luminosity);
    const auto reference = [&](const PictureModel &source, int x, int y) {
        const auto hsl = hslOf(source.at(x, y));
        const double isColour = hsl[1] > 0 ? moved(hsl[1], saturation) : 0;
        return colourOf(hsl[0] + std::fmod(hue, 360), isColour, moved(hsl[2], luminosity));
    };
    for (const PictureKind &kind : pictureKinds()) {
        const Raster picture = noisePicture(kind, 140, 21);
        for (const NamedArea &named : areasOf(140, 21)) {
            const Outcome outcome = adjustHsl({picture, named.area}, hue, saturation, luminosity);
            QVERIFY(outcome.done);
            const QString found = difference(picture, named.area, outcome.picture, reference, 1);
            QVERIFY2(found.isEmpty(), qPrintable(labelled(kind.name + " " + named.name, found)));
        }
    }
}

void TestColours::graysStayGray()
{
    const Raster picture = plainPicture({90, 90, 90}, 5, 5);
    QVERIFY((adjustHsl({picture}, 50, 100, 0).picture.colourAt(2, 2) == Colour{90, 90, 90}));
}

void TestColours::noChangeSharesThePixels()
{
    for (const PictureKind &kind : pictureKinds()) {
        const Raster picture = noisePicture(kind, 9, 9);
        QVERIFY(adjustRgb({picture}, 0, 0, 0).picture.sharesPixelsWith(picture));
        QVERIFY(adjustHsl({picture}, 0, 0, 0).picture.sharesPixelsWith(picture));
        QVERIFY(adjustHsl({picture}, -720, 0, 0).picture.sharesPixelsWith(picture));
    }
}

QTEST_APPLESS_MAIN(TestColours)
#include "TestColours.moc"
