#include "platform/imaging/operations/Resample.h"

#include <cmath>

#include "platform/imaging/operations/Dither.h"
#include "platform/imaging/operations/MedianCut.h"
#include "platform/imaging/raster/Conversions.h"

namespace vandrel {

namespace {

int evenStep(int levels)
{
    return 255 / (levels - 1);
}

Quantisation fixedColours(int bitsPerPixel)
{
    // Half of the sixteen colours are 128 or 255 levels apart, the others as far from black; the cube's are 51.
    if (bitsPerPixel == 4)
        return {sixteenColours(), Dither::None, 128, false};
    return {cubeAndGrays(), Dither::None, evenStep(6), false};
}

Quantisation grays(int levels)
{
    return {grayPalette(levels), Dither::None, evenStep(levels), true};
}

Quantisation bestColours(const Raster &picture, std::size_t count)
{
    Palette palette = medianCut(picture, count);
    const int step = static_cast<int>(255 / std::cbrt(static_cast<double>(count)) / 2);
    return {std::move(palette), Dither::None, step, false};
}

Raster
withNumbers(const Raster &picture, Quantisation how, int bitsPerPixel, const OperationProgress &progress)
{
    auto pixels = quantised(picture, how, progress);
    return Raster(std::move(pixels), bitsPerPixel, std::move(how.palette), picture.resolution());
}

Raster withPalette(const Subject &subject, int bitsPerPixel, ColourChoice choice, Dither dither)
{
    const Raster &picture = subject.picture;
    const std::size_t count = std::size_t{1} << bitsPerPixel;
    // What it takes to find the best colours, of all the time.
    constexpr int findingColours = 10;
    OperationProgress progress = subject.progress;
    Quantisation how;
    if (bitsPerPixel == 1 || choice == ColourChoice::Gray) {
        how = grays(static_cast<int>(count));
    } else if (choice == ColourChoice::Fixed) {
        how = fixedColours(bitsPerPixel);
    } else if (auto few = fewColours(picture, count)) {
        return withNumbers(picture, {std::move(*few)}, bitsPerPixel, subject.progress);
    } else {
        how = bestColours(picture, count);
        progress = remaining(subject.progress, findingColours);
    }
    how.dither = dither;
    return withNumbers(picture, std::move(how), bitsPerPixel, progress);
}

Outcome resampleTo(const Subject &subject, int bitsPerPixel, ColourChoice choice, Dither dither)
{
    const Raster &picture = subject.picture;
    if (bitsPerPixel == 24)
        return {true, asTrueColour(picture)};
    if (bitsPerPixel == 16) {
        if (picture.bitsPerPixel() == 16)
            return unchanged(subject);
        auto pixels = quantisedToFiveBits(picture, dither, subject.progress);
        return {true, Raster(std::move(pixels), 16, {}, picture.resolution())};
    }
    if (bitsPerPixel == picture.bitsPerPixel() && choice == ColourChoice::Optimized)
        return unchanged(subject);
    return {true, withPalette(subject, bitsPerPixel, choice, dither)};
}

} // namespace

Outcome resample(const Subject &subject, int bitsPerPixel, ColourChoice choice, Dither dither)
{
    const bool isKnown = bitsPerPixel == 1 || bitsPerPixel == 4 || bitsPerPixel == 8 || bitsPerPixel == 16
        || bitsPerPixel == 24;
    Subject whole = subject;
    whole.area.reset();
    if (!isKnown)
        return refused(subject);
    return refusingOnFailure(whole, [&] { return resampleTo(whole, bitsPerPixel, choice, dither); });
}

} // namespace vandrel
