// Times loading and saving each format, on a picture of that many million pixels.
//
//     picture_files time MILLIONS FOLDER RUNS [WORD ...]
//     picture_files memory MILLIONS FOLDER [WORD ...]
//     picture_files durable MILLIONS FOLDER RUNS
//
// `time` writes the picture into the folder for others to read, in 24 bits, in grays and in black and white (picture24.ppm,
// picture8.pgm, picture1.pbm), and the files of each format and depth (ours24.jpg and so on); a line for each row: its
// name, and the milliseconds of the best run by the clock. A drawing.wmf that lies there is read as well. `memory` prints instead what loading and saving take beyond the
// picture, in hundredths of it. `durable` prints what it takes to have a file safely on the disk of the folder. Words
// choose the rows that have one of them in their names. bench/picture-files runs it beside its peers.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include <QCoreApplication>
#include <QFile>
#include <QString>

#include "Memory.h"
#include "Photograph.h"
#include "platform/imaging/codecs/PictureFiles.h"

using namespace vandrel;

namespace {

struct Format {
    const char *name;
    const char *suffix;
    SaveFormat code;
    /// Whether it has depths below 24 bits that differ.
    bool hasOneBit;
};

constexpr std::array<Format, 6> formats{{{"JPEG", "jpg", SaveFormat::Jpeg, false},
                                         {"TIFF", "tif", SaveFormat::Tiff, true},
                                         {"BMP", "bmp", SaveFormat::Bmp, true},
                                         {"DIB", "dib", SaveFormat::Dib, true},
                                         {"PCX", "pcx", SaveFormat::Pcx, true},
                                         {"WPG", "wpg", SaveFormat::Wpg, true}}};

struct Options {
    double millions = 12;
    std::string folder;
    int runs = 3;
    std::vector<std::string> words;

    bool has(const std::string &name) const
    {
        return words.empty() || std::any_of(words.begin(), words.end(), [&](const std::string &word) {
                   return name.find(word) != std::string::npos;
               });
    }
};

Raster inGrays(const Raster &picture)
{
    auto pixels = PixelBuffer::make(picture.width(), picture.height(), 1);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            *pixels->view().at(x, y) = static_cast<std::uint8_t>(luma(picture.colourAt(x, y)));
    }
    return Raster(std::move(pixels), 8, grayPalette(256));
}

/// What looks like a page of print from afar.
Raster blackOnWhite(int width, int height)
{
    auto pixels = PixelBuffer::make(width, height, 1);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool isLine = y % 64 < 40 && x > width / 10 && x < width * 9 / 10;
            const bool isStroke = (x * 7 + y / 5 * 3) % 37 < 9 && (x / 9 + y / 64 * 5) % 7 != 0;
            *pixels->view().at(x, y) = isLine && isStroke ? 0 : 1;
        }
    }
    return Raster(std::move(pixels), 1, grayPalette(2));
}

Raster pictureOfDepth(double millions, int bits)
{
    const Raster colours = bench::photograph(millions);
    if (bits == 24)
        return colours;
    return bits == 8 ? inGrays(colours) : blackOnWhite(colours.width(), colours.height());
}

std::string fileOf(const Options &options, const Format &format, int bits)
{
    return options.folder + "/ours" + std::to_string(bits) + "." + format.suffix;
}

void save(const Raster &picture, const std::string &file, SaveFormat format)
{
    savePicture(picture, QByteArray::fromStdString(file), QStringLiteral("picture"), format);
}

DecodedPicture load(const std::string &file)
{
    return loadPicture(QByteArray::fromStdString(file), QStringLiteral("picture"));
}

double bestTime(int runs, const std::function<void()> &work)
{
    double best = 1e12;
    for (int run = 0; run < runs; ++run) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - start;
        best = std::min(best, passed.count());
    }
    return best;
}

void print(const std::string &name, double figure)
{
    std::printf("%s\t%.2f\n", name.c_str(), figure);
    std::fflush(stdout);
}

/// Calls `row` for saving and for loading each format at each depth that it has.
void forEachRow(
    const Options &options,
    const std::function<void(
        const std::string &name, const Raster *toSave, const Format &format, const std::string &file)> &row)
{
    for (const int bits : {24, 8, 1}) {
        Raster picture = pictureOfDepth(options.millions, bits);
        for (const bool isSaving : {true, false}) {
            for (const Format &format : formats) {
                if (bits == 1 && !format.hasOneBit)
                    continue;
                const std::string what
                    = std::string(format.name) + ", " + std::to_string(bits) + (bits == 1 ? " bit" : " bits");
                const std::string name = (isSaving ? "save " : "load ") + what;
                if (options.has(name) || options.has("load " + what))
                    row(name, isSaving ? &picture : nullptr, format, fileOf(options, format, bits));
            }
            picture = isSaving ? Raster() : picture;
        }
    }
}

/// The pictures as the simplest of formats.
void writePortable(const Raster &picture, const std::string &file)
{
    std::ofstream out(file, std::ios::binary);
    const ConstPixelView view = picture.view();
    const int bits = picture.bitsPerPixel();
    out << (bits == 24      ? "P6\n"
                : bits == 8 ? "P5\n"
                            : "P4\n")
        << view.width << ' ' << view.height << (bits == 1 ? "\n" : "\n255\n");
    std::vector<char> row;
    for (int y = 0; y < view.height; ++y) {
        const std::uint8_t *from = view.row(y);
        row.assign(static_cast<std::size_t>(bits == 1 ? (view.width + 7) / 8 : view.width * view.channels),
                   0);
        for (int x = 0; x < view.width; ++x) {
            const auto at = static_cast<std::size_t>(x);
            if (bits == 1)
                row[at / 8] = static_cast<char>(row[at / 8] | (from[x] ^ 1) << (7 - x % 8));
            else if (bits == 8)
                row[at] = static_cast<char>(from[x]);
            else
                for (std::size_t colour = 0; colour < 3; ++colour)
                    row[at * 3 + colour] = static_cast<char>(from[at * 3 + 2 - colour]);
        }
        out.write(row.data(), static_cast<std::streamsize>(row.size()));
    }
}

void measureTimes(const Options &options)
{
    writePortable(pictureOfDepth(options.millions, 24), options.folder + "/picture24.ppm");
    writePortable(pictureOfDepth(options.millions, 8), options.folder + "/picture8.pgm");
    writePortable(pictureOfDepth(options.millions, 1), options.folder + "/picture1.pbm");
    forEachRow(
        options,
        [&](const std::string &name, const Raster *picture, const Format &format, const std::string &file) {
            print(name, bestTime(options.runs, [&] {
                      if (picture != nullptr)
                          save(*picture, file, format.code);
                      else
                          load(file);
                  }));
        });
}

void measureDrawing(const Options &options)
{
    const std::string file = options.folder + "/drawing.wmf";
    const std::string name = "load WMF, a drawing";
    if (options.has(name) && QFile::exists(QString::fromStdString(file)))
        print(name, bestTime(options.runs, [&] { load(file); }));
}

double octetsOf(const Raster &picture)
{
    return static_cast<double>(picture.view().stride) * picture.height();
}

void measureMemory(const Options &options)
{
    forEachRow(
        options,
        [&](const std::string &name, const Raster *picture, const Format &format, const std::string &file) {
            PixelBuffer::releaseSpare();
            const long before = bench::forgetMostResident();
            double octets = picture != nullptr ? octetsOf(*picture) : 0;
            double beyond = 0;
            if (picture != nullptr) {
                save(*picture, file, format.code);
            } else {
                octets = octetsOf(load(file).picture);
                beyond = -octets;
            }
            beyond += static_cast<double>(bench::mostResidentKilobytes() - before) * 1024;
            print(name, std::max(0.0, beyond) * 100 / octets);
        });
}

/// The same octets with and without what AtomicFile does to have them on the disk before the old file is gone.
void measureDurability(const Options &options)
{
    const Raster picture = bench::photograph(options.millions);
    for (const Format &format : {formats[0], formats[2]}) {
        const std::string file = fileOf(options, format, 24);
        print(std::string(format.name) + ", durable",
              bestTime(options.runs, [&] { save(picture, file, format.code); }));
        print(std::string(format.name) + ", plain", bestTime(options.runs, [&] {
                  QFile plain(QString::fromStdString(file + ".plain"));
                  if (plain.open(QIODevice::WriteOnly))
                      encodePicture(picture, plain, format.code);
              }));
    }
}

int usage()
{
    std::fprintf(stderr, "usage: picture_files time|memory|durable MILLIONS FOLDER [RUNS] [WORD ...]\n");
    return 2;
}

} // namespace

int main(int argc, char **argv)
{
    // The drawing program is found by the way from this one.
    const QCoreApplication application(argc, argv);
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() < 3)
        return usage();
    Options options;
    options.millions = std::atof(arguments[1].c_str());
    options.folder = arguments[2];
    std::size_t next = 3;
    if (arguments[0] != "memory" && arguments.size() > next)
        options.runs = std::max(1, std::atoi(arguments[next++].c_str()));
    options.words.assign(arguments.begin() + static_cast<std::ptrdiff_t>(next), arguments.end());
    if (!(options.millions >= 0.01 && options.millions <= 300))
        return usage();
    if (arguments[0] == "time") {
        measureTimes(options);
        measureDrawing(options);
    } else if (arguments[0] == "memory") {
        measureMemory(options);
    } else if (arguments[0] == "durable") {
        measureDurability(options);
    } else {
        return usage();
    }
    return 0;
}
