// What the picture editor does with a large picture: how much memory opening, processing and undoing take, and how long the
// window takes to show the picture after each step of a scroll bar.
//
//     picture_editing make MILLIONS BITS FILE
//     picture_editing memory FILE OPERATION
//     picture_editing operations
//     picture_editing redraw FILE
//
// `memory` opens the file in the editor's control, keeps the undo copy, does the operation and undoes it, and prints the
// most memory that the process had more than before it, and what the picture before and after takes, in kilobytes.
// bench/picture-editing runs it for every operation, each in a process of its own.
#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <QApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMenu>
#include <QScrollBar>

#include "Figures.h"
#include "Memory.h"
#include "Photograph.h"
#include "piceditor/frmPicEdit.h"
#include "platform/imaging/codecs/PictureFiles.h"
#include "platform/imaging/control/EngineImage.h"
#include "platform/imaging/operations/Resample.h"

using namespace vandrel;

namespace {

using Operation = std::function<bool(CImage &image)>;

const std::map<std::string, Operation> &operations()
{
    static const std::map<std::string, Operation> all{
        {"nothing", [](CImage &) { return true; }},
        {"auto-contrast", [](CImage &image) { return image.AutoContrast(); }},
        {"deskew", [](CImage &image) { return image.Deskew(); }},
        {"blur", [](CImage &image) { return image.Blur(); }},
        {"equalize", [](CImage &image) { return image.Equalize(); }},
        {"negative", [](CImage &image) { return image.Negative(); }},
        {"Rembrandt", [](CImage &image) { return image.Rembrand(); }},
        {"broken TV", [](CImage &image) { return image.BrokenTV(); }},
        {"emboss", [](CImage &image) { return image.Emboss(); }},
        {"flip", [](CImage &image) { return image.FlipHorizontal(); }},
        {"sharpen", [](CImage &image) { return image.Sharpen(50); }},
        {"mosaic", [](CImage &image) { return image.Mosaic(16); }},
        {"rotate by 90 degrees", [](CImage &image) { return image.Rotate(90); }},
        {"rotate by 45 degrees", [](CImage &image) { return image.Rotate(45); }},
        {"bump map", [](CImage &image) { return image.BumpMap(12, false); }},
        {"warp",
         [](CImage &image) {
             return image.Warp({20, 20, 400, 20, 20, 400, 400, 400});
         }},
        {"matrix",
         [](CImage &image) {
             return image.Matrix({-1, 2, -1, -1, 9, -1, -1, 2, -1}, 1, 2);
         }},
        {"replace colours", [](CImage &image) { return image.ReplaceColors(0x141414, 0x5A5A5A, 0xFF); }},
        {"buttonize", [](CImage &image) { return image.Buttonize(40, 100); }},
        {"RGB", [](CImage &image) { return image.AdjustRGB(10, -10, 5); }},
        {"HSL", [](CImage &image) { return image.AdjustHSL(30, 20, 5); }},
        {"256 colours", [](CImage &image) { return image.ResampleColors(8, 0, 1); }},
        {"16 bits", [](CImage &image) { return image.ResampleColors(16, 0, 1); }},
        {"resize to half",
         [](CImage &image) { return image.Resize(image.Width() / 2, image.Height() / 2, 0); }},
        {"resize to one and a half, half as high",
         [](CImage &image) { return image.Resize(image.Width() * 3 / 2, image.Height() / 2, 0); }},
        {"blur an area",
         [](CImage &image) {
             image.SetProcessingArea(100, 100, image.Width() - 200, image.Height() - 200);
             return image.Blur();
         }},
        {"rotate an area by 90 degrees",
         [](CImage &image) {
             image.SetProcessingArea(100, 100, image.Width() - 200, image.Height() - 200);
             return image.Rotate(90);
         }},
    };
    return all;
}

/// Answers nothing: what is opened here is named.
class NoDialog final : public CommonDialog
{
public:
    void ShowOpen(QWidget *) override { }
    void ShowSave(QWidget *) override { }
};

/// The services of a program that sees the file's folder, and the rest of the system.
EngineServices servicesFor(const QString &file)
{
    auto drives = std::make_shared<DriveView>();
    drives->setDrive('c', QFileInfo(file).absolutePath().toUtf8());
    drives->setDrive('z', "/");
    return {std::move(drives), nullptr, {}};
}

QString dosPath(const QString &file)
{
    return QStringLiteral("c:\\") + QFileInfo(file).fileName();
}

double kilobytesOf(const CImage &image)
{
    return static_cast<double>(image.Width()) * image.Height() * channelsOfDepth(image.BitsPerPixel()) / 1024;
}

int makePicture(double millions, int bits, const QString &file)
{
    Raster picture = bench::photograph(millions);
    if (bits != 24)
        picture = resample({picture}, bits, ColourChoice::Optimized, Dither::None).picture;
    const SaveFormat format = file.endsWith(u".jpg") ? SaveFormat::Jpeg : SaveFormat::Bmp;
    savePicture(picture, file.toUtf8(), file, format);
    return 0;
}

int measureMemory(const QString &file, const std::string &name)
{
    const auto operation = operations().find(name);
    if (operation == operations().end())
        return 2;
    EngineImage image(servicesFor(file));
    const long without = bench::mostResidentKilobytes();
    image.LoadImageFile(dosPath(file));
    image.KeepUndo(true);
    const double before = kilobytesOf(image);
    if (!operation->second(image) || before == 0) {
        std::fprintf(stderr, "picture_editing: %s was refused\n", name.c_str());
        return 1;
    }
    const bool changes = name != "nothing";
    const double after = changes ? kilobytesOf(image) : 0;
    image.Undo();
    std::printf("%ld\t%.0f\n", bench::mostResidentKilobytes() - without, before + after);
    return 0;
}

/// Steps both bars through the picture; how long each took until it was painted, in milliseconds.
std::vector<double> scrolled(frmPicEdit &editor, int steps)
{
    std::vector<double> times;
    for (int step = 0; step < steps; ++step) {
        // Both ways at once, so that nothing of the last view can be used again; over all of the picture.
        const bool down = step % 2 == 0;
        QScrollBar &bar = down ? *editor.view.VS1 : *editor.view.hs1;
        QElapsedTimer timer;
        timer.start();
        bar.setValue(static_cast<int>(static_cast<qint64>(bar.maximum()) * (step + 1) / steps));
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        times.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    return times;
}

int measureRedraw(const QString &file)
{
    constexpr int steps = 300;
    constexpr double longest = 8;
    const EngineServices services = servicesFor(file);
    frmPicEdit editor({std::make_unique<EngineImage>(services), std::make_unique<EngineImage>(services),
                       std::make_unique<NoDialog>(), std::make_unique<NoDialog>(), services.drives});
    editor.resize(1920, 1080);
    editor.show();
    editor.OpenPictureFile(dosPath(file));
    QCoreApplication::processEvents();
    scrolled(editor, steps / 10);
    const long before = bench::forgetMostResident();
    for (int zoom = 0; zoom < 3; ++zoom)
        editor.menus.in->trigger();
    if (editor.dZoom != 8) {
        std::fprintf(stderr, "picture_editing: the picture was not zoomed\n");
        return 1;
    }
    std::vector<double> times = scrolled(editor, steps);
    const auto growth = static_cast<double>(bench::mostResidentKilobytes() - before);
    std::sort(times.begin(), times.end());
    bench::reportAlone("a step of scrolling at zoom 8, median", times[times.size() / 2], "ms", longest);
    bench::reportAlone("the longest of them", times.back(), "ms", longest);
    // What the view shows: 1920 by 1080 pixels of four octets.
    bench::reportAlone("memory that the zoom takes", growth / 1024, "MB", 1920 * 1080 * 4 / 1048576.0);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    const QString task = arguments.value(0);
    if (task == u"make" && arguments.size() == 4)
        return makePicture(arguments[1].toDouble(), arguments[2].toInt(), arguments[3]);
    if (task == u"memory" && arguments.size() == 3)
        return measureMemory(arguments[1], arguments[2].toStdString());
    if (task == u"redraw" && arguments.size() == 2)
        return measureRedraw(arguments[1]);
    if (task != u"operations") {
        std::fprintf(stderr,
                     "usage: picture_editing make MILLIONS BITS FILE | memory FILE OPERATION | "
                     "operations | redraw FILE\n");
        return 2;
    }
    for (const auto &[name, operation] : operations())
        std::printf("%s\n", name.c_str());
    return 0;
}
