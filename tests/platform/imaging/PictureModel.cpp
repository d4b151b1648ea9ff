#include "tests/platform/imaging/PictureModel.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vandrel {

namespace {

int mirroredPlace(int place, int length)
{
    if (length == 1)
        return 0;
    const int period = 2 * (length - 1);
    const int inPeriod = ((place % period) + period) % period;
    return std::min(inPeriod, period - inPeriod);
}

/// The nearest of 32 levels, found by trying all.
int nearestOfThirtyTwo(int level)
{
    int best = 0;
    for (int five = 0; five < 32; ++five) {
        const double exact = five * 255.0 / 31;
        const double exactBest = best * 255.0 / 31;
        if (std::abs(exact - level) < std::abs(exactBest - level))
            best = five;
    }
    return best << 3 | best >> 2;
}

QString differing(int x, int y, int channel, int found, int wanted)
{
    return QStringLiteral("at %1, %2 channel %3 is %4, not %5")
        .arg(x)
        .arg(y)
        .arg(channel)
        .arg(found)
        .arg(wanted);
}

} // namespace

PictureModel::PictureModel(const Raster &picture) : width(picture.width()), height(picture.height())
{
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Colour colour = picture.colourAt(x, y);
            const int alpha = picture.bitsPerPixel() == 32 ? picture.view().at(x, y)[3] : 255;
            pixels.push_back({colour.red, colour.green, colour.blue, alpha});
        }
    }
}

const PictureModel::Pixel &PictureModel::mirroredAt(int x, int y) const
{
    return at(mirroredPlace(x, width), mirroredPlace(y, height));
}

int PictureModel::lumaAt(int x, int y) const
{
    const Pixel &pixel = mirroredAt(x, y);
    return (299 * pixel[0] + 587 * pixel[1] + 114 * pixel[2] + 500) / 1000;
}

QString difference(const Raster &source,
                   const PixelArea &area,
                   const Raster &result,
                   const ReferencePixel &reference,
                   int tolerance)
{
    if (result.area() != source.area())
        return QStringLiteral("the size is another");
    const PictureModel before(source);
    const PictureModel after(result);
    const PixelArea inside = clipped(area, before.width, before.height);
    for (int y = 0; y < before.height; ++y) {
        for (int x = 0; x < before.width; ++x) {
            const PictureModel::Pixel &old = before.at(x, y);
            const bool changes
                = x >= inside.left && x < inside.right() && y >= inside.top && y < inside.bottom();
            std::array<int, 3> wanted{old[0], old[1], old[2]};
            if (changes)
                wanted = reference(before, x, y);
            for (int channel = 0; channel < 3; ++channel) {
                int level = wanted[static_cast<std::size_t>(channel)];
                if (changes && source.bitsPerPixel() == 16)
                    level = nearestOfThirtyTwo(level);
                const int found = after.at(x, y)[static_cast<std::size_t>(channel)];
                const int allowed = changes ? tolerance * (source.bitsPerPixel() == 16 ? 9 : 1) : 0;
                if (std::abs(found - level) > allowed)
                    return differing(x, y, channel, found, level);
            }
            if (after.at(x, y)[3] != old[3])
                return differing(x, y, 3, after.at(x, y)[3], old[3]);
        }
    }
    return {};
}

QString labelled(const QByteArray &name, const QString &difference)
{
    return QStringLiteral("%1: %2").arg(QString::fromLatin1(name), difference);
}

int limited(double value)
{
    return static_cast<int>(std::floor(std::clamp(value, 0.0, 255.0) + 0.5));
}

double likeness(const PictureModel &one, const PictureModel &other, int margin)
{
    double squares = 0;
    std::int64_t count = 0;
    for (int y = margin; y < one.height - margin; ++y) {
        for (int x = margin; x < one.width - margin; ++x) {
            for (std::size_t channel = 0; channel < 3; ++channel) {
                const double apart = one.at(x, y)[channel] - other.at(x, y)[channel];
                squares += apart * apart;
                ++count;
            }
        }
    }
    if (squares == 0)
        return std::numeric_limits<double>::infinity();
    return 10 * std::log10(255.0 * 255.0 * static_cast<double>(count) / squares);
}

} // namespace vandrel
