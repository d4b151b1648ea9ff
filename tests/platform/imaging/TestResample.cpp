#include <cmath>
#include <set>

#include <QTest>

#include "platform/imaging/operations/Resample.h"
#include "tests/platform/imaging/PictureModel.h"
#include "tests/platform/imaging/TestPictures.h"

using namespace vandrel;

/// Other depths and fewer colours.
class TestResample : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyCombination_data();
    void everyCombination();
    void withoutDitherEachPixelIsTheNearest_data();
    void withoutDitherEachPixelIsTheNearest();
    void ditheringKeepsTheMean_data();
    void ditheringKeepsTheMean();
    void diffusionMatchesAPlainOne();
    void diffusionOfAHighPictureShowsNoSeam();
    void fewColoursAreKeptExactly();
    void optimizedIsBetterThanFixed();
    void sixteenBits();
    void otherDepthsAreRefused();
    void theAreaHasNoSay();
};

namespace {

int nearest(const Palette &palette, const std::array<int, 3> &wanted)
{
    int best = 0;
    int least = std::numeric_limits<int>::max();
    for (std::size_t number = 0; number < palette.size(); ++number) {
        const Colour colour = palette[number];
        const int apart = (colour.red - wanted[0]) * (colour.red - wanted[0])
            + (colour.green - wanted[1]) * (colour.green - wanted[1])
            + (colour.blue - wanted[2]) * (colour.blue - wanted[2]);
        if (apart < least) {
            least = apart;
            best = static_cast<int>(number);
        }
    }
    return best;
}

double meanLevel(const Raster &picture)
{
    const PictureModel model(picture);
    double sum = 0;
    for (const PictureModel::Pixel &pixel : model.pixels)
        sum += pixel[0] + pixel[1] + pixel[2];
    return sum / static_cast<double>(model.pixels.size()) / 3;
}

/// Floyd and Steinberg's diffusion of brightness to black and white, back and forth.
std::vector<int> diffused(const PictureModel &picture)
{
    std::vector<double> sixteenths(picture.pixels.size());
    std::vector<int> result(picture.pixels.size());
    const auto index = [&](int x, int y) {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width)
            + static_cast<std::size_t>(x);
    };
    for (int y = 0; y < picture.height; ++y) {
        const int step = y % 2 == 0 ? 1 : -1;
        for (int x = step > 0 ? 0 : picture.width - 1; x >= 0 && x < picture.width; x += step) {
            const int passed = static_cast<int>(std::floor(sixteenths[index(x, y)] / 16 + 0.5));
            const int wanted = std::clamp(picture.lumaAt(x, y) + passed, 0, 255);
            const int shown = wanted >= 128 ? 255 : 0;
            result[index(x, y)] = shown;
            const auto pass = [&](int toX, int toY, int weight) {
                if (toX >= 0 && toX < picture.width && toY < picture.height)
                    sixteenths[index(toX, toY)] += (wanted - shown) * weight;
            };
            pass(x + step, y, 7);
            pass(x - step, y + 1, 3);
            pass(x, y + 1, 5);
            pass(x + step, y + 1, 1);
        }
    }
    return result;
}

constexpr std::array choices{ColourChoice::Fixed, ColourChoice::Gray, ColourChoice::Optimized};
constexpr std::array dithers{Dither::None, Dither::FloydSteinberg, Dither::Ordered, Dither::Random};

} // namespace

void TestResample::everyCombination_data()
{
    QTest::addColumn<int>("bits");
    for (const int bits : {1, 4, 8, 16, 24})
        QTest::newRow(qPrintable(QString::number(bits))) << bits;
}

void TestResample::everyCombination()
{
    QFETCH(int, bits);
    for (const PictureKind &kind : pictureKinds()) {
        const Raster picture = noisePicture(kind, 33, 21);
        for (const ColourChoice choice : choices) {
            for (const Dither dither : dithers) {
                const Outcome outcome = resample({picture}, bits, choice, dither);
                QVERIFY(outcome.done);
                QCOMPARE(outcome.picture.bitsPerPixel(), bits);
                QCOMPARE(outcome.picture.area(), picture.area());
                QVERIFY(outcome.picture.resolution() == picture.resolution());
                const std::size_t colours = bits <= 8 ? std::size_t{1} << bits : 0;
                QCOMPARE(outcome.picture.palette().size(), colours);
                if (choice == ColourChoice::Gray && bits <= 8)
                    QVERIFY(isGray(outcome.picture.palette()));
            }
        }
    }
}

void TestResample::withoutDitherEachPixelIsTheNearest_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("choice");
    QTest::newRow("sixteen colours") << 4 << static_cast<int>(ColourChoice::Fixed);
    QTest::newRow("the cube and grays") << 8 << static_cast<int>(ColourChoice::Fixed);
    QTest::newRow("the best sixteen") << 4 << static_cast<int>(ColourChoice::Optimized);
    QTest::newRow("the best 256") << 8 << static_cast<int>(ColourChoice::Optimized);
    QTest::newRow("sixteen grays") << 4 << static_cast<int>(ColourChoice::Gray);
    QTest::newRow("256 grays") << 8 << static_cast<int>(ColourChoice::Gray);
    QTest::newRow("black and white") << 1 << static_cast<int>(ColourChoice::Fixed);
}

void TestResample::withoutDitherEachPixelIsTheNearest()
{
    QFETCH(int, bits);
    QFETCH(int, choice);
    const Raster picture = noisePicture(24, 70, 60);
    const auto kind = static_cast<ColourChoice>(choice);
    const Raster result = resample({picture}, bits, kind, Dither::None).picture;
    const PictureModel model(picture);
    const bool byLuma = bits == 1 || kind == ColourChoice::Gray;
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 70; ++x) {
            const PictureModel::Pixel &pixel = model.at(x, y);
            std::array<int, 3> wanted{pixel[0], pixel[1], pixel[2]};
            if (byLuma)
                wanted.fill(model.lumaAt(x, y));
            QCOMPARE(int{*result.view().at(x, y)}, nearest(result.palette(), wanted));
        }
    }
}

void TestResample::ditheringKeepsTheMean_data()
{
    QTest::addColumn<int>("level");
    for (const int level : {20, 100, 127, 200, 250})
        QTest::newRow(qPrintable(QString::number(level))) << level;
}

void TestResample::ditheringKeepsTheMean()
{
    QFETCH(int, level);
    const auto gray = static_cast<std::uint8_t>(level);
    const Raster picture = plainPicture({gray, gray, gray}, 128, 128);
    for (const Dither dither : {Dither::FloydSteinberg, Dither::Ordered, Dither::Random}) {
        for (const int bits : {1, 4}) {
            const double mean = meanLevel(resample({picture}, bits, ColourChoice::Gray, dither).picture);
            QVERIFY2(std::abs(mean - level) < 6, qPrintable(QString::number(mean)));
        }
    }
}

void TestResample::diffusionMatchesAPlainOne()
{
    for (const Raster &picture : {noisePicture(24, 61, 47), smoothPicture(90, 70), noisePicture(24, 1, 9)}) {
        const Raster result = resample({picture}, 1, ColourChoice::Fixed, Dither::FloydSteinberg).picture;
        const std::vector<int> expected = diffused(PictureModel(picture));
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x)
                QCOMPARE(int{result.colourAt(x, y).red},
                         expected[static_cast<std::size_t>(y * picture.width() + x)]);
        }
    }
}

void TestResample::diffusionOfAHighPictureShowsNoSeam()
{
    // Higher than the strips that are diffused apart from each other.
    constexpr int width = 64;
    constexpr int height = 1300;
    const Raster picture = plainPicture({60, 60, 60}, width, height);
    const Raster result = resample({picture}, 1, ColourChoice::Fixed, Dither::FloydSteinberg).picture;
    const std::vector<int> expected = diffused(PictureModel(picture));
    for (int y = 0; y < 500; ++y) {
        for (int x = 0; x < width; ++x)
            QCOMPARE(int{result.colourAt(x, y).red}, expected[static_cast<std::size_t>(y * width + x)]);
    }
    // Everywhere as many white pixels as the gray asks for, over every eight rows.
    for (int top = 0; top + 8 <= height; ++top) {
        int white = 0;
        for (int y = top; y < top + 8; ++y)
            white += static_cast<int>(std::count(result.view().row(y), result.view().row(y) + width, 1));
        QVERIFY2(std::abs(white - 8 * width * 60 / 255) <= 8, qPrintable(QString::number(top)));
    }
}

void TestResample::fewColoursAreKeptExactly()
{
    for (const int bits : {1, 4}) {
        const Raster picture = noisePicture(bits, 50, 40);
        for (const Dither dither : dithers) {
            const Raster deep = resample({picture}, 24, ColourChoice::Fixed, Dither::None).picture;
            const Raster result
                = resample({deep}, bits == 1 ? 4 : 8, ColourChoice::Optimized, dither).picture;
            for (int y = 0; y < 40; ++y) {
                for (int x = 0; x < 50; ++x)
                    QVERIFY(result.colourAt(x, y) == picture.colourAt(x, y));
            }
        }
    }
}

void TestResample::optimizedIsBetterThanFixed()
{
    const Raster picture = smoothPicture(200, 150);
    for (const int bits : {4, 8}) {
        const Raster best = resample({picture}, bits, ColourChoice::Optimized, Dither::None).picture;
        const Raster fixed = resample({picture}, bits, ColourChoice::Fixed, Dither::None).picture;
        QVERIFY(likeness(PictureModel(best), PictureModel(picture), 0)
                > likeness(PictureModel(fixed), PictureModel(picture), 0) + 3);
        QVERIFY(std::set<int>(best.view().row(75), best.view().row(75) + 200).size() > 4);
    }
}

void TestResample::sixteenBits()
{
    const Raster picture = noisePicture(24, 40, 30);
    const Raster result = resample({picture}, 16, ColourChoice::Optimized, Dither::None).picture;
    for (int y = 0; y < 30; ++y) {
        for (int x = 0; x < 40; ++x) {
            const Colour now = result.colourAt(x, y);
            QVERIFY(now.red == onFiveBits(now.red));
            QVERIFY(std::abs(now.red - picture.colourAt(x, y).red) <= 5);
        }
    }
    QVERIFY(resample({result}, 16, ColourChoice::Gray, Dither::None).picture.sharesPixelsWith(result));
}

void TestResample::otherDepthsAreRefused()
{
    const Raster picture = noisePicture(24, 9, 9);
    for (const int bits :
         {std::numeric_limits<int>::min(), -1, 0, 2, 15, 32, 64, std::numeric_limits<int>::max()}) {
        const Outcome outcome = resample({picture}, bits, ColourChoice::Fixed, Dither::None);
        QVERIFY(!outcome.done && outcome.picture.sharesPixelsWith(picture));
    }
}

void TestResample::theAreaHasNoSay()
{
    const Raster picture = noisePicture(24, 30, 30);
    const Raster part
        = resample({picture, PixelArea{100, 100, 5, 5}}, 8, ColourChoice::Fixed, Dither::None).picture;
    QVERIFY(areEqual(part, resample({picture}, 8, ColourChoice::Fixed, Dither::None).picture));
}

QTEST_APPLESS_MAIN(TestResample)
#include "TestResample.moc"
