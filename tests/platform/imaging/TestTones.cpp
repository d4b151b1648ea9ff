#include <cmath>

#include <QTest>

#include "platform/imaging/operations/Tones.h"
#include "tests/platform/imaging/PictureModel.h"
#include "tests/platform/imaging/TestPictures.h"

using namespace vandrel;

/// Operations on tones, against references of their own, on every depth and with areas.
class TestTones : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyCurve_data();
    void everyCurve();
    void curvesOnAreas_data() { everyCurve_data(); }
    void curvesOnAreas();
    void autoContrastSpreadsAllButTheOutermost();
    void autoContrastLooksAtTheAreaAlone();
    void equalizeSpreadsTheBrightness();
    void palettesChangeInsteadOfPixels();
    void grayPalettesStayAtEightBits();
    void noChangeSharesThePixels_data();
    void noChangeSharesThePixels();
    void concaveAndConvexMirrorEachOther();
    void aTableHoldsForEveryLevelAtEveryPlace();
};

namespace {

using Operation = std::function<Outcome(const Subject &)>;
using Curve = std::function<double(double)>;

ReferencePixel each(const Curve &curve)
{
    return [curve](const PictureModel &source, int x, int y) {
        const PictureModel::Pixel &pixel = source.at(x, y);
        return std::array<int, 3>{limited(curve(pixel[0])), limited(curve(pixel[1])),
                                  limited(curve(pixel[2]))};
    };
}

/// The levels up to which half a percent and all but half a percent lie, by counting one by one.
std::pair<int, int> usedRange(const PictureModel &picture, const PixelArea &area)
{
    std::vector<int> levels;
    for (int y = area.top; y < area.bottom(); ++y) {
        for (int x = area.left; x < area.right(); ++x)
            levels.push_back(picture.lumaAt(x, y));
    }
    std::sort(levels.begin(), levels.end());
    const auto total = static_cast<double>(levels.size());
    const auto at = [&](double share) {
        return levels[static_cast<std::size_t>(std::max(0.0, std::ceil(total * share - 1e-9) - 1))];
    };
    return {at(0.005), at(0.995)};
}

ReferencePixel spreadReference(std::pair<int, int> range)
{
    return each([range](double level) { return 255 * (level - range.first) / (range.second - range.first); });
}

/// What equalizing does, with the brightness of all pixels of the area counted for each pixel anew.
ReferencePixel equalizeReference(const PictureModel &picture, const PixelArea &area)
{
    std::array<std::int64_t, 256> counts{};
    for (int y = area.top; y < area.bottom(); ++y) {
        for (int x = area.left; x < area.right(); ++x)
            ++counts[static_cast<std::size_t>(picture.lumaAt(x, y))];
    }
    std::size_t lowest = 0;
    while (counts[lowest] == 0)
        ++lowest;
    return [=](const PictureModel &source, int x, int y) {
        const int brightness = source.lumaAt(x, y);
        std::int64_t up = 0;
        for (std::size_t level = lowest + 1; level <= static_cast<std::size_t>(brightness); ++level)
            up += counts[level];
        const double spread
            = 255.0 * static_cast<double>(up) / static_cast<double>(area.pixels() - counts[lowest]);
        const int shift = limited(spread) - brightness;
        const PictureModel::Pixel &pixel = source.at(x, y);
        return std::array<int, 3>{limited(pixel[0] + shift), limited(pixel[1] + shift),
                                  limited(pixel[2] + shift)};
    };
}

} // namespace

Q_DECLARE_METATYPE(Operation)
Q_DECLARE_METATYPE(Curve)

void TestTones::everyCurve_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<Curve>("curve");
    const auto row = [](const char *name, const Operation &operation, const Curve &curve) {
        QTest::newRow(name) << operation << curve;
    };
    row("negative", negative, [](double p) { return 255 - p; });
    row("concave", concaveSpectrum, [](double p) { return 255 * (p / 255) * (p / 255); });
    row("convex", convexSpectrum,
        [](double p) { return 255 - std::floor(255 * (1 - p / 255) * (1 - p / 255) + 0.5); });
    for (const double value : {1.0, 37.5, 100.0, 1e9}) {
        const double share = std::min(value, 100.0);
        row(
            qPrintable(QStringLiteral("blend %1").arg(value)),
            [=](const Subject &s) { return blend(s, value); },
            [=](double p) { return (p * (100 - share) + 255 * share) / 100; });
    }
    for (const double value : {-1e9, -100.0, -30.0, 7.5, 50.0, 100.0, 101.0}) {
        const double share = std::clamp(value, -100.0, 100.0);
        row(
            qPrintable(QStringLiteral("brightness %1").arg(value)),
            [=](const Subject &s) { return brightness(s, value); },
            [=](double p) { return p + 255 * share / 100; });
        row(
            qPrintable(QStringLiteral("contrast %1").arg(value)),
            [=](const Subject &s) { return contrast(s, value); },
            [=](double p) {
                const double factor = (100 + share) / 100;
                return (p - 127.5) * (factor * factor) + 127.5;
            });
    }
    for (const double value : {0.01, 0.1, 0.5, 2.2, 10.0, 1e6}) {
        row(
            qPrintable(QStringLiteral("gamma %1").arg(value)),
            [=](const Subject &s) { return vandrel::gamma(s, value); },
            [=](double p) { return 255 * std::pow(p / 255, 1 / std::clamp(value, 0.1, 10.0)); });
    }
}

void TestTones::everyCurve()
{
    QFETCH(Operation, operation);
    QFETCH(Curve, curve);
    for (const PictureKind &kind : pictureKinds()) {
        const Raster picture = noisePicture(kind, 23, 17);
        const Outcome outcome = operation({picture});
        QVERIFY(outcome.done);
        QCOMPARE(outcome.picture.bitsPerPixel(), kind.bitsPerPixel);
        QVERIFY(outcome.picture.resolution() == picture.resolution());
        // A palette keeps levels that pixels of 16 bits could not have.
        const QString found = difference(picture, picture.area(), outcome.picture, each(curve), 0);
        QVERIFY2(found.isEmpty(), qPrintable(labelled(kind.name, found)));
    }
}

void TestTones::curvesOnAreas()
{
    QFETCH(Operation, operation);
    QFETCH(Curve, curve);
    for (const PictureKind &kind : pictureKinds()) {
        const Raster picture = noisePicture(kind, 23, 17);
        for (const NamedArea &named : areasOf(23, 17)) {
            const Outcome outcome = operation({picture, named.area});
            QVERIFY(outcome.done);
            const QString found = difference(picture, named.area, outcome.picture, each(curve), 0);
            QVERIFY2(found.isEmpty(), qPrintable(labelled(kind.name + " " + named.name, found)));
        }
    }
}

void TestTones::autoContrastSpreadsAllButTheOutermost()
{
    for (const PictureKind &kind : pictureKinds()) {
        const Raster picture = contrast({noisePicture(kind, 40, 30)}, -50).picture;
        const Outcome outcome = autoContrast({picture});
        QVERIFY(outcome.done);
        QCOMPARE(outcome.picture.bitsPerPixel(), kind.bitsPerPixel);
        const auto range = usedRange(PictureModel(picture), picture.area());
        const QString found = difference(picture, picture.area(), outcome.picture, spreadReference(range), 0);
        QVERIFY2(found.isEmpty(), qPrintable(labelled(kind.name, found)));
    }
}

void TestTones::autoContrastLooksAtTheAreaAlone()
{
    const PixelArea area{5, 5, 20, 10};
    const Raster picture = contrast({noisePicture(24, 40, 30), area}, -60).picture;
    const auto range = usedRange(PictureModel(picture), area);
    QVERIFY(range.first > 20);
    const Outcome outcome = autoContrast({picture, area});
    QCOMPARE(difference(picture, area, outcome.picture, spreadReference(range), 0), QString());
}

void TestTones::equalizeSpreadsTheBrightness()
{
    for (const PictureKind &kind : pictureKinds()) {
        const Raster picture = contrast({noisePicture(kind, 40, 30)}, -40).picture;
        for (const NamedArea &named : areasOf(40, 30)) {
            if (named.name == "one pixel")
                continue;
            const PixelArea inside = clipped(named.area, 40, 30);
            const Outcome outcome = equalize({picture, named.area});
            QVERIFY(outcome.done);
            const QString found = difference(picture, inside, outcome.picture,
                                             equalizeReference(PictureModel(picture), inside), 0);
            QVERIFY2(found.isEmpty(), qPrintable(labelled(kind.name + " " + named.name, found)));
        }
    }
}

void TestTones::palettesChangeInsteadOfPixels()
{
    const Raster picture = noisePicture(8, 40, 30);
    const Outcome outcome = brightness({picture}, 10);
    QCOMPARE(outcome.picture.view().data, picture.view().data);
    QVERIFY(outcome.picture.palette() != picture.palette());
}

void TestTones::grayPalettesStayAtEightBits()
{
    const PixelArea area{1, 1, 5, 5};
    QCOMPARE(brightness({noisePicture({{}, 8, true}, 20, 20), area}, 10).picture.bitsPerPixel(), 8);
    QCOMPARE(brightness({noisePicture({{}, 8, false}, 20, 20), area}, 10).picture.bitsPerPixel(), 24);
    QCOMPARE(brightness({noisePicture({{}, 4, true}, 20, 20), area}, 10).picture.bitsPerPixel(), 24);
    QCOMPARE(brightness({noisePicture({{}, 1, false}, 20, 20), area}, 10).picture.bitsPerPixel(), 24);
}

void TestTones::noChangeSharesThePixels_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::newRow("blend 0") << Operation([](const Subject &s) { return blend(s, 0); });
    QTest::newRow("blend -5") << Operation([](const Subject &s) { return blend(s, -5); });
    QTest::newRow("brightness 0") << Operation([](const Subject &s) { return brightness(s, 0); });
    QTest::newRow("contrast 0") << Operation([](const Subject &s) { return contrast(s, 0); });
    QTest::newRow("gamma 0") << Operation([](const Subject &s) { return vandrel::gamma(s, 0); });
    QTest::newRow("gamma 1") << Operation([](const Subject &s) { return vandrel::gamma(s, 1); });
    QTest::newRow("gamma -3") << Operation([](const Subject &s) { return vandrel::gamma(s, -3); });
    QTest::newRow("one pixel's contrast") << Operation([](const Subject &s) {
        return autoContrast({s.picture, PixelArea{1, 1, 1, 1}});
    });
    QTest::newRow("one pixel's histogram") << Operation([](const Subject &s) {
        return equalize({s.picture, PixelArea{1, 1, 1, 1}});
    });
}

void TestTones::noChangeSharesThePixels()
{
    QFETCH(Operation, operation);
    for (const PictureKind &kind : pictureKinds()) {
        const Raster picture = noisePicture(kind, 9, 9);
        const Outcome outcome = operation({picture});
        QVERIFY(outcome.done);
        QVERIFY(outcome.picture.sharesPixelsWith(picture));
    }
}

void TestTones::concaveAndConvexMirrorEachOther()
{
    const Raster picture = noisePicture(24, 30, 30);
    const Raster mirrored = negative({convexSpectrum({negative({picture}).picture}).picture}).picture;
    QVERIFY(areEqual(mirrored, concaveSpectrum({picture}).picture));
}

void TestTones::aTableHoldsForEveryLevelAtEveryPlace()
{
    ToneTable table{};
    for (std::size_t level = 0; level < table.size(); ++level)
        table[level] = static_cast<std::uint8_t>(level * 167 + 91);
    // Rows of 86 pixels, of which each begins with another level.
    auto pixels = PixelBuffer::make(86, 256, 3);
    for (int y = 0; y < 256; ++y) {
        for (int octet = 0; octet < 258; ++octet)
            pixels->view().row(y)[octet] = static_cast<std::uint8_t>(y + octet);
    }
    const Raster picture(std::move(pixels), 24);
    const Raster after = applyTones({picture}, table).picture;
    for (int y = 0; y < 256; ++y) {
        for (int octet = 0; octet < 258; ++octet) {
            const auto level = static_cast<std::size_t>(picture.view().row(y)[octet]);
            QCOMPARE(after.view().row(y)[octet], table[level]);
        }
    }
}

QTEST_APPLESS_MAIN(TestTones)
#include "TestTones.moc"
