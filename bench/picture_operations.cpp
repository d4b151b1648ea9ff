// Times every picture operation on a picture of that many million pixels.
//
//     picture_operations MILLIONS FOLDER [RUNS [WORD ...]]
//
// Writes the picture into the folder as picture.ppm. A line for each row: its name, the milliseconds of the best run by
// the clock, and those of the processors. Words choose the rows that have one of them in their names.
// bench/picture-operations runs it beside its peers.
#include <algorithm>
#include <array>
#include <chrono>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "Photograph.h"
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
#include "platform/imaging/operations/Workspace.h"

using namespace vandrel;

namespace {

/// Which rows are asked for, and how often each is run.
struct Choice {
    int runs = 3;
    std::vector<std::string> words;

    bool has(const std::string &name) const
    {
        return words.empty() || std::any_of(words.begin(), words.end(), [&](const std::string &word) {
                   return name.find(word) != std::string::npos;
               });
    }
};

void report(const Choice &choice, const std::string &name, const std::function<void()> &work)
{
    if (!choice.has(name))
        return;
    double cpu = 1e9;
    double wall = 1e9;
    for (int run = 0; run < choice.runs; ++run) {
        const std::clock_t cpuStart = std::clock();
        const auto wallStart = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - wallStart;
        cpu = std::min(cpu, static_cast<double>(std::clock() - cpuStart) * 1000 / CLOCKS_PER_SEC);
        wall = std::min(wall, passed.count());
    }
    std::printf("%s\t%.2f\t%.2f\n", name.c_str(), wall, cpu);
    std::fflush(stdout);
}

void timeTones(const Raster &picture, const Choice &choice)
{
    const Subject subject{picture};
    // What it costs to read and to write every pixel once, on as many threads as an operation has, into memory that was
    // used before and into memory that was not.
    report(choice, "copy", [&] { copiedInBands(picture); });
    report(choice, "copy into fresh memory", [&] {
        PixelBuffer::releaseSpare();
        copiedInBands(picture);
    });
    report(choice, "negative", [&] { negative(subject); });
    report(choice, "concave spectrum", [&] { concaveSpectrum(subject); });
    report(choice, "convex spectrum", [&] { convexSpectrum(subject); });
    report(choice, "blend", [&] { blend(subject, 30); });
    report(choice, "brightness", [&] { brightness(subject, 10); });
    report(choice, "contrast", [&] { contrast(subject, 20); });
    report(choice, "gamma", [&] { gamma(subject, 1.5); });
    report(choice, "RGB", [&] { adjustRgb(subject, 10, -10, 5); });
    report(choice, "auto-contrast", [&] { autoContrast(subject); });
    report(choice, "equalize", [&] { equalize(subject); });
    report(choice, "HSL", [&] { adjustHsl(subject, 30, 20, 5); });
    report(choice, "replace colours", [&] {
        replaceColours(subject, {20, 20, 20}, {90, 90, 90}, {255, 0, 0});
    });
}

void timeFilters(const Raster &picture, const Choice &choice)
{
    const Subject subject{picture};
    const Kernel kernel{-1, 2, -1, -1, 9, -1, -1, 2, -1};
    report(choice, "blur", [&] { blur(subject); });
    report(choice, "sharpen", [&] { sharpen(subject, 50); });
    report(choice, "emboss", [&] { emboss(subject); });
    report(choice, "matrix", [&] { matrix(subject, kernel, 1, 2); });
    report(choice, "matrix, divided", [&] { matrix(subject, kernel, 7, 2); });
    report(choice, "mosaic 16", [&] { mosaic(subject, 16); });
    report(choice, "Rembrandt", [&] { rembrandt(subject); });
    report(choice, "broken TV", [&] { brokenTv(subject); });
    report(choice, "bump map", [&] { bumpMap(subject, 12, false); });
    report(choice, "buttonize", [&] { buttonize(subject, 40, 100); });
}

void timeGeometry(const Raster &picture, const Choice &choice)
{
    const Subject subject{picture};
    const int width = picture.width();
    const int height = picture.height();
    report(choice, "flip", [&] { flipHorizontally(subject); });
    report(choice, "flip top to bottom", [&] { flipVertically(subject); });
    report(choice, "rotate 90", [&] { rotate(subject, 90); });
    report(choice, "rotate 45", [&] { rotate(subject, 45); });
    report(choice, "deskew", [&] { deskew(subject); });
    report(choice, "perspective", [&] {
        warp(subject,
             {PlanePoint{width / 10, 0},
              {width, height / 10},
              {0, height},
              {width * 9 / 10, height * 9 / 10}});
    });
    report(choice, "halve", [&] { resize(subject, width / 2, height / 2); });
    report(choice, "two thirds", [&] { resize(subject, width * 2 / 3, height * 2 / 3); });
    report(choice, "five quarters", [&] { resize(subject, width * 5 / 4, height * 5 / 4); });
}

void timeDepths(const Raster &picture, const Choice &choice)
{
    const Subject subject{picture};
    const auto depth = [&](const char *name, int bits, ColourChoice colours, Dither dither) {
        report(choice, name, [&, bits, colours, dither] { resample(subject, bits, colours, dither); });
    };
    depth("256 colours", 8, ColourChoice::Optimized, Dither::None);
    depth("256 colours, diffused", 8, ColourChoice::Optimized, Dither::FloydSteinberg);
    depth("256 fixed colours, ordered", 8, ColourChoice::Fixed, Dither::Ordered);
    depth("256 grays", 8, ColourChoice::Gray, Dither::None);
    depth("16 fixed colours, diffused", 4, ColourChoice::Fixed, Dither::FloydSteinberg);
    depth("black and white, diffused", 1, ColourChoice::Gray, Dither::FloydSteinberg);
    depth("16 bits, diffused", 16, ColourChoice::Fixed, Dither::FloydSteinberg);
}

/// The picture for the peers.
bool writePortable(const Raster &picture, const std::string &file)
{
    std::ofstream out(file, std::ios::binary);
    const ConstPixelView view = picture.view();
    out << "P6\n" << view.width << ' ' << view.height << "\n255\n";
    std::vector<char> row(static_cast<std::size_t>(view.width) * 3);
    for (int y = 0; y < view.height; ++y) {
        const std::uint8_t *from = view.row(y);
        for (std::size_t octet = 0; octet < row.size(); octet += 3) {
            for (std::size_t colour = 0; colour < 3; ++colour)
                row[octet + colour] = static_cast<char>(from[octet + 2 - colour]);
        }
        out.write(row.data(), static_cast<std::streamsize>(row.size()));
    }
    return out.good();
}

} // namespace

int main(int argc, char **argv)
{
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const double millions = arguments.size() < 2 ? 0 : std::atof(arguments[0].c_str());
    if (!(millions >= 0.01 && millions <= 300)) {
        std::fprintf(stderr, "usage: picture_operations MILLIONS FOLDER [RUNS [WORD ...]]\n");
        return 2;
    }
    Choice choice;
    if (arguments.size() > 2) {
        choice.runs = std::max(1, std::atoi(arguments[2].c_str()));
        choice.words.assign(arguments.begin() + 3, arguments.end());
    }
    const Raster picture = bench::photograph(millions);
    if (!writePortable(picture, arguments[1] + "/picture.ppm")) {
        std::fprintf(stderr, "picture_operations: cannot write into %s\n", arguments[1].c_str());
        return 1;
    }
    timeTones(picture, choice);
    timeFilters(picture, choice);
    timeGeometry(picture, choice);
    timeDepths(picture, choice);
    return 0;
}
