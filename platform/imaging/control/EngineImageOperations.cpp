#include "platform/imaging/control/EngineImage.h"
#include "platform/imaging/operations/Colours.h"
#include "platform/imaging/operations/Deskew.h"
#include "platform/imaging/operations/Effects.h"
#include "platform/imaging/operations/Filters.h"
#include "platform/imaging/operations/Flips.h"
#include "platform/imaging/operations/Resample.h"
#include "platform/imaging/operations/Rotate.h"
#include "platform/imaging/operations/Tones.h"
#include "platform/imaging/operations/Warp.h"

namespace vandrel {

namespace {

/// A colour from a Long, 0x00BBGGRR.
Colour colourOf(qint32 value)
{
    return {static_cast<std::uint8_t>(value & 255), static_cast<std::uint8_t>(value >> 8 & 255),
            static_cast<std::uint8_t>(value >> 16 & 255)};
}

ColourChoice choiceOf(qint32 depthType)
{
    switch (depthType) {
    case 1:
        return ColourChoice::Fixed;
    case 2:
    case 6:
        return ColourChoice::Gray;
    default:
        return ColourChoice::Optimized;
    }
}

/// Two of the kinds of palette ask for dithering by themselves.
Dither ditherOf(qint32 depthType, qint16 dither)
{
    switch (dither) {
    case 1:
        return Dither::FloydSteinberg;
    case 2:
        return Dither::Ordered;
    case 3:
        return Dither::Random;
    default:
        return depthType == 5 || depthType == 6 ? Dither::FloydSteinberg : Dither::None;
    }
}

} // namespace

bool EngineImage::AutoContrast()
{
    return operate(autoContrast);
}

bool EngineImage::Deskew()
{
    return operate(deskew);
}

bool EngineImage::Blur()
{
    return operate(blur);
}

bool EngineImage::Equalize()
{
    return operate(equalize);
}

bool EngineImage::Negative()
{
    return operate(negative);
}

bool EngineImage::ConcaveSpectrum()
{
    return operate(concaveSpectrum);
}

bool EngineImage::ConvexSpectrum()
{
    return operate(convexSpectrum);
}

bool EngineImage::Rembrand()
{
    return operate(rembrandt);
}

bool EngineImage::BrokenTV()
{
    return operate(brokenTv);
}

bool EngineImage::Emboss()
{
    return operate(emboss);
}

bool EngineImage::FlipHorizontal()
{
    return operate(flipHorizontally);
}

bool EngineImage::FlipVertical()
{
    return operate(flipVertically);
}

bool EngineImage::Blend(double value)
{
    return operate([value](const Subject &subject) { return blend(subject, value); });
}

bool EngineImage::Brightness(double value)
{
    return operate([value](const Subject &subject) { return brightness(subject, value); });
}

bool EngineImage::Contrast(double value)
{
    return operate([value](const Subject &subject) { return contrast(subject, value); });
}

bool EngineImage::Gamma(double value)
{
    return operate([value](const Subject &subject) { return vandrel::gamma(subject, value); });
}

bool EngineImage::Sharpen(double value)
{
    return operate([value](const Subject &subject) { return sharpen(subject, value); });
}

bool EngineImage::Mosaic(double size)
{
    return operate([size](const Subject &subject) { return mosaic(subject, size); });
}

bool EngineImage::Rotate(double degrees)
{
    return operate([degrees](const Subject &subject) { return rotate(subject, degrees); });
}

bool EngineImage::BumpMap(qint16 depth, bool inverted)
{
    return operate([=](const Subject &subject) { return bumpMap(subject, depth, inverted); });
}

bool EngineImage::Warp(const std::array<qint16, 8> &points)
{
    return operate([&points](const Subject &subject) {
        return warp(subject,
                    {PlanePoint{points[0], points[1]}, PlanePoint{points[2], points[3]},
                     PlanePoint{points[4], points[5]}, PlanePoint{points[6], points[7]}});
    });
}

bool EngineImage::Matrix(const std::array<qint16, 9> &kernel, qint16 divisor, qint16 bias)
{
    Kernel weights{};
    std::copy(kernel.begin(), kernel.end(), weights.begin());
    return operate([&](const Subject &subject) { return matrix(subject, weights, divisor, bias); });
}

bool EngineImage::ReplaceColors(qint32 from, qint32 to, qint32 replacement)
{
    return operate([=](const Subject &subject) {
        return replaceColours(subject, colourOf(from), colourOf(to), colourOf(replacement));
    });
}

bool EngineImage::Buttonize(double intensity, double width)
{
    return operate([=](const Subject &subject) { return buttonize(subject, intensity, width); });
}

bool EngineImage::AdjustRGB(double red, double green, double blue)
{
    return operate([=](const Subject &subject) { return adjustRgb(subject, red, green, blue); });
}

bool EngineImage::AdjustHSL(double hue, double saturation, double luminosity)
{
    return operate([=](const Subject &subject) { return adjustHsl(subject, hue, saturation, luminosity); });
}

bool EngineImage::ResampleColors(double bitsPerPixel, qint32 depthType, qint16 dither)
{
    const bool isWhole
        = bitsPerPixel >= 1 && bitsPerPixel <= 24 && bitsPerPixel == static_cast<int>(bitsPerPixel);
    const int bits = isWhole ? static_cast<int>(bitsPerPixel) : 0;
    return operate([=](const Subject &subject) {
        return resample(subject, bits, choiceOf(depthType), ditherOf(depthType, dither));
    });
}

} // namespace vandrel
