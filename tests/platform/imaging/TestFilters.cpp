#include <QTest>

#include "platform/imaging/operations/Filters.h"
#include "tests/platform/imaging/PictureModel.h"
#include "tests/platform/imaging/TestPictures.h"

using namespace vandrel;

/// Operations on neighbourhoods, exactly as references in whole numbers have them.
class TestFilters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void matchesTheReference_data();
    void matchesTheReference();
    void readsBeyondTheAreaButNotBeyondThePicture();
    void grayPalettesStayAtEightBits();
    void thinPictures_data();
    void thinPictures();
    void bigPicturesAreDoneInBands();
    void noChangeSharesThePixels();
};

namespace {

using Operation = std::function<Outcome(const Subject &)>;
/// A reference that knows the area.
using AreaReference = std::function<ReferencePixel(const PixelArea &)>;

int blurred(const PictureModel &source, int x, int y, std::size_t channel)
{
    constexpr std::array weights{1, 4, 6, 4, 1};
    int sum = 0;
    for (int down = -2; down <= 2; ++down) {
        for (int right = -2; right <= 2; ++right) {
            sum += weights[static_cast<std::size_t>(down + 2)] * weights[static_cast<std::size_t>(right + 2)]
                * source.mirroredAt(x + right, y + down)[channel];
        }
    }
    return (sum + 128) >> 8;
}

template<typename Level>
AreaReference perChannel(Level level)
{
    return [level](const PixelArea &) {
        return [level](const PictureModel &source, int x, int y) {
            return std::array<int, 3>{level(source, x, y, 0U), level(source, x, y, 1U),
                                      level(source, x, y, 2U)};
        };
    };
}

AreaReference matrixReference(const Kernel &kernel, double divisor, int bias)
{
    return perChannel([=](const PictureModel &source, int x, int y, std::size_t channel) {
        double sum = 0;
        for (int index = 0; index < 9; ++index) {
            sum += static_cast<double>(kernel[static_cast<std::size_t>(index)])
                * source.mirroredAt(x + index % 3 - 1, y + index / 3 - 1)[channel];
        }
        return static_cast<int>(std::clamp(std::floor(sum / divisor + 0.5) + bias, 0.0, 255.0));
    });
}

AreaReference mosaicReference(int size)
{
    return [size](const PixelArea &area) {
        return [size, area](const PictureModel &source, int x, int y) {
            const int left = area.left + (x - area.left) / size * size;
            const int top = area.top + (y - area.top) / size * size;
            std::array<std::int64_t, 3> sums{};
            std::int64_t count = 0;
            for (int row = top; row < std::min(top + size, area.bottom()); ++row) {
                for (int column = left; column < std::min(left + size, area.right()); ++column, ++count) {
                    for (std::size_t channel = 0; channel < 3; ++channel)
                        sums[channel] += source.at(column, row)[channel];
                }
            }
            const auto mean = [&](std::size_t channel) {
                return static_cast<int>((2 * sums[channel] + count) / (2 * count));
            };
            return std::array<int, 3>{mean(0), mean(1), mean(2)};
        };
    };
}

AreaReference sharpenReference(double percent)
{
    return perChannel([percent](const PictureModel &source, int x, int y, std::size_t channel) {
        const int level = source.at(x, y)[channel];
        return limited(level + percent / 50 * (level - blurred(source, x, y, channel)));
    });
}

constexpr Kernel cross{-1, 2, -1, -1, 9, -1, -1, 2, -1};

} // namespace

Q_DECLARE_METATYPE(Operation)
Q_DECLARE_METATYPE(AreaReference)

void TestFilters::matchesTheReference_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<AreaReference>("reference");
    const auto row = [](const char *name, const Operation &operation, const AreaReference &reference) {
        QTest::newRow(name) << operation << reference;
    };
    row("blur", blur, perChannel(blurred));
    row(
        "sharpen", [](const Subject &s) { return sharpen(s, 50); }, sharpenReference(50));
    row(
        "sharpen little", [](const Subject &s) { return sharpen(s, 3.25); }, sharpenReference(3.25));
    row(
        "sharpen too far", [](const Subject &s) { return sharpen(s, 1e9); }, sharpenReference(100));
    row("emboss", emboss, perChannel([](const PictureModel &source, int x, int y, std::size_t channel) {
            return std::clamp(128 + source.mirroredAt(x + 1, y + 1)[channel]
                                  - source.mirroredAt(x - 1, y - 1)[channel],
                              0, 255);
        }));
    row(
        "matrix", [](const Subject &s) { return matrix(s, cross, 1, 2); }, matrixReference(cross, 1, 2));
    row(
        "matrix by its sum", [](const Subject &s) { return matrix(s, cross, 0, 0); },
        matrixReference(cross, 7, 0));
    row(
        "matrix by 3", [](const Subject &s) { return matrix(s, cross, 3, -20); },
        matrixReference(cross, 3, -20));
    row(
        "matrix by -2", [](const Subject &s) { return matrix(s, cross, -2, 255); },
        matrixReference(cross, -2, 255));
    static constexpr Kernel edges{0, 1, 0, 1, -4, 1, 0, 1, 0};
    row(
        "matrix without a sum", [](const Subject &s) { return matrix(s, edges, 0, 9); },
        matrixReference(edges, 1, 9));
    constexpr int most = std::numeric_limits<int>::max();
    static constexpr Kernel huge{most, -most, most, -most, 0, most, -most, most, -most};
    row(
        "matrix of the largest numbers", [](const Subject &s) { return matrix(s, huge, most, 100); },
        matrixReference(huge, most, 100));
    for (const double size : {2.0, 3.0, 7.9, 1e12}) {
        row(
            qPrintable(QStringLiteral("mosaic %1").arg(size)),
            [=](const Subject &s) { return mosaic(s, size); },
            mosaicReference(static_cast<int>(std::min(size, 1000.0))));
    }
}

void TestFilters::matchesTheReference()
{
    QFETCH(Operation, operation);
    QFETCH(AreaReference, reference);
    for (const PictureKind &kind : pictureKinds()) {
        const Raster picture = noisePicture(kind, 23, 17);
        std::vector<NamedArea> areas = areasOf(23, 17);
        areas.push_back({"the picture", picture.area()});
        for (const NamedArea &named : areas) {
            const PixelArea inside = clipped(named.area, 23, 17);
            const Outcome outcome = operation({picture, named.area});
            QVERIFY(outcome.done);
            const QString found = difference(picture, inside, outcome.picture, reference(inside), 0);
            QVERIFY2(found.isEmpty(), qPrintable(labelled(kind.name + " " + named.name, found)));
        }
    }
}

void TestFilters::readsBeyondTheAreaButNotBeyondThePicture()
{
    // One white column left of an area of black: its light falls into the area.
    Raster picture = plainPicture({0, 0, 0}, 9, 9);
    picture = matrix({picture, PixelArea{3, 0, 1, 9}}, {}, 1, 255).picture;
    const Raster after = blur({picture, PixelArea{4, 0, 5, 9}}).picture;
    QCOMPARE(int{after.colourAt(4, 4).red}, (255 * 4 * 16 + 128) >> 8);
    QCOMPARE(int{after.colourAt(3, 4).red}, 255);
}

void TestFilters::grayPalettesStayAtEightBits()
{
    const Raster gray = noisePicture({{}, 8, true}, 20, 20);
    QCOMPARE(blur({gray}).picture.bitsPerPixel(), 8);
    QVERIFY(isGrayRamp(blur({gray}).picture.palette()));
    QCOMPARE(mosaic({gray}, 4).picture.bitsPerPixel(), 8);
    QCOMPARE(blur({noisePicture(8, 20, 20)}).picture.bitsPerPixel(), 24);
    QCOMPARE(blur({noisePicture(1, 20, 20)}).picture.bitsPerPixel(), 24);
    QCOMPARE(blur({noisePicture(16, 20, 20)}).picture.bitsPerPixel(), 16);
    QCOMPARE(blur({noisePicture(32, 20, 20)}).picture.bitsPerPixel(), 32);
}

void TestFilters::thinPictures_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::newRow("a pixel") << 1 << 1;
    QTest::newRow("a row") << 9 << 1;
    QTest::newRow("a column") << 1 << 9;
    QTest::newRow("two by two") << 2 << 2;
}

void TestFilters::thinPictures()
{
    QFETCH(int, width);
    QFETCH(int, height);
    const Raster picture = noisePicture(24, width, height);
    QCOMPARE(difference(picture, picture.area(), blur({picture}).picture, perChannel(blurred)({}), 0),
             QString());
    QCOMPARE(difference(picture, picture.area(), matrix({picture}, cross, 1, 2).picture,
                        matrixReference(cross, 1, 2)({}), 0),
             QString());
    const Raster mean = mosaic({picture}, 100).picture;
    QVERIFY(width * height == 1
            || difference(picture, picture.area(), mean, mosaicReference(100)(picture.area()), 0).isEmpty());
}

void TestFilters::bigPicturesAreDoneInBands()
{
    const Raster picture = noisePicture(24, 640, 480);
    const PixelArea area{3, 5, 600, 460};
    int last = 0;
    const Outcome outcome = matrix({picture, area, [&last](int percent) { last = percent; }}, cross, 1, 2);
    QCOMPARE(last, 100);
    QCOMPARE(difference(picture, area, outcome.picture, matrixReference(cross, 1, 2)(area), 0), QString());
    QCOMPARE(difference(picture, area, blur({picture, area}).picture, perChannel(blurred)(area), 0),
             QString());
    QCOMPARE(difference(picture, area, mosaic({picture, area}, 16).picture, mosaicReference(16)(area), 0),
             QString());
}

void TestFilters::noChangeSharesThePixels()
{
    for (const PictureKind &kind : pictureKinds()) {
        const Raster picture = noisePicture(kind, 9, 9);
        for (const double value : {-1.0, 0.0, 1.0, 1.9})
            QVERIFY(mosaic({picture}, value).done
                    && mosaic({picture}, value).picture.sharesPixelsWith(picture));
        for (const double value : {-100.0, 0.0})
            QVERIFY(sharpen({picture}, value).done
                    && sharpen({picture}, value).picture.sharesPixelsWith(picture));
    }
}

QTEST_APPLESS_MAIN(TestFilters)
#include "TestFilters.moc"
