// Times every picture operation, and loading and saving each format, on a picture of that many million pixels (12 where
// none is given): the processor's time of the best of three runs, in milliseconds, beside a plain copy of the pixels.
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>

#include <QBuffer>

#include "platform/imaging/codecs/PictureFiles.h"
#include "platform/imaging/operations/Colours.h"
#include "platform/imaging/operations/Effects.h"
#include "platform/imaging/operations/Filters.h"
#include "platform/imaging/operations/Flips.h"
#include "platform/imaging/operations/Resample.h"
#include "platform/imaging/operations/Resize.h"
#include "platform/imaging/operations/Rotate.h"
#include "platform/imaging/operations/Tones.h"
#include "platform/imaging/operations/Warp.h"
#include "platform/imaging/raster/Conversions.h"

using namespace vandrel;

namespace {

/// Smooth colours with noise and edges, as photographs have them; four by three.
Raster photograph(double millions)
{
    const int width = static_cast<int>(std::sqrt(millions * 1e6 * 4 / 3));
    const int height = width * 3 / 4;
    auto pixels = PixelBuffer::make(width, height, 3);
    std::uint32_t noise = 1;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            noise = noise * 1664525U + 1013904223U;
            const int edge = (x / 200 + y / 150) % 2 * 40;
            const int grain = static_cast<int>(noise >> 28);
            std::uint8_t *pixel = pixels->view().at(x, y);
            pixel[0] = static_cast<std::uint8_t>(x * 150 / width + edge + grain);
            pixel[1] = static_cast<std::uint8_t>(y * 150 / height + edge + grain);
            pixel[2] = static_cast<std::uint8_t>((x + y) * 150 / (width + height) + edge + grain);
        }
    }
    return Raster(std::move(pixels), 24);
}

void report(const char *name, const std::function<void()> &work)
{
    double cpu = 1e9;
    double wall = 1e9;
    for (int run = 0; run < 3; ++run) {
        const std::clock_t cpuStart = std::clock();
        const auto wallStart = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - wallStart;
        cpu = std::min(cpu, static_cast<double>(std::clock() - cpuStart) * 1000 / CLOCKS_PER_SEC);
        wall = std::min(wall, passed.count());
    }
    std::printf("%-22s %8.0f ms cpu %8.0f ms wall\n", name, cpu, wall);
    std::fflush(stdout);
}

void timeOperations(const Raster &picture)
{
    const Subject subject{picture};
    report("copy", [&] { copyOfPixels(picture); });
    report("negative", [&] { negative(subject); });
    report("brightness", [&] { brightness(subject, 10); });
    report("auto-contrast", [&] { autoContrast(subject); });
    report("equalize", [&] { equalize(subject); });
    report("blur", [&] { blur(subject); });
    report("sharpen", [&] { sharpen(subject, 50); });
    report("emboss", [&] { emboss(subject); });
    report("matrix", [&] { matrix(subject, {-1, 2, -1, -1, 9, -1, -1, 2, -1}, 1, 2); });
    report("mosaic 16", [&] { mosaic(subject, 16); });
    report("HSL", [&] { adjustHsl(subject, 30, 20, 5); });
    report("RGB", [&] { adjustRgb(subject, 10, -10, 5); });
    report("replace colours", [&] { replaceColours(subject, {}, {90, 90, 90}, {255, 0, 0}); });
    report("Rembrandt", [&] { rembrandt(subject); });
    report("broken TV", [&] { brokenTv(subject); });
    report("bump map", [&] { bumpMap(subject, 12, false); });
    report("buttonize", [&] { buttonize(subject, 40, 100); });
    report("flip", [&] { flipHorizontally(subject); });
    report("rotate 90", [&] { rotate(subject, 90); });
    report("rotate 45", [&] { rotate(subject, 45); });
    const int width = picture.width();
    const int height = picture.height();
    report("perspective", [&] {
        warp(subject,
             {PlanePoint{width / 10, 0},
              {width, height / 10},
              {0, height},
              {width * 9 / 10, height * 9 / 10}});
    });
    report("halve", [&] { resize(subject, width / 2, height / 2); });
    report("256 colours, diffused",
           [&] { resample(subject, 8, ColourChoice::Optimized, Dither::FloydSteinberg); });
}

void timeFiles(const Raster &picture)
{
    const std::array<std::pair<const char *, SaveFormat>, 5> formats{{{"JPEG", SaveFormat::Jpeg},
                                                                      {"TIFF", SaveFormat::Tiff},
                                                                      {"BMP", SaveFormat::Bmp},
                                                                      {"PCX", SaveFormat::Pcx},
                                                                      {"WPG", SaveFormat::Wpg}}};
    for (const auto &[name, format] : formats) {
        QByteArray file;
        report(qPrintable(QStringLiteral("save %1").arg(QLatin1String(name))), [&, chosen = format] {
            QBuffer buffer;
            buffer.open(QIODevice::ReadWrite);
            encodePicture(picture, buffer, chosen);
            file = buffer.data();
        });
        report(qPrintable(QStringLiteral("load %1").arg(QLatin1String(name))), [&] {
            QBuffer buffer(&file);
            buffer.open(QIODevice::ReadOnly);
            decodePicture(buffer, QStringLiteral("picture"));
        });
    }
}

} // namespace

int main(int argc, char **argv)
{
    const double millions = argc > 1 ? std::atof(argv[1]) : 12;
    if (!(millions >= 0.01 && millions <= 300)) {
        std::fprintf(stderr, "usage: picture_operations [million pixels, up to 300]\n");
        return 2;
    }
    const Raster picture = photograph(millions);
    timeOperations(picture);
    timeFiles(picture);
    return 0;
}
