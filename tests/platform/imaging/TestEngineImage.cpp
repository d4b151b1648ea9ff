#include <atomic>
#include <cmath>
#include <limits>

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QPainter>
#include <QPrinter>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include "controls/DriveView.h"
#include "platform/imaging/codecs/PictureFiles.h"
#include "platform/imaging/control/EngineImage.h"
#include "platform/imaging/operations/Filters.h"
#include "platform/imaging/operations/Tones.h"
#include "runtime/RuntimeError.h"
#include "tests/platform/filesystem/Restrictions.h"
#include "tests/platform/filesystem/SmallDisk.h"
#include "tests/platform/imaging/TestPictures.h"
#include "tests/runtime/FailureOf.h"

using namespace vandrel;

namespace {

/// A printer whose dialog is answered by the test: a PDF file, or Cancel.
class PdfPrinter final : public Printer
{
public:
    QPrinter *hDC(QWidget *, const QString &) override
    {
        ++asked;
        return isCancelled ? nullptr : &device;
    }

    QPrinter device{QPrinter::HighResolution};
    bool isCancelled = false;
    int asked = 0;
};

QImage painted(const SharedPicture &picture, const QRect &part)
{
    QImage image(part.size(), QImage::Format_RGB32);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    picture.pixels()->paint(painter, QRectF(QPointF(), QSizeF(part.size())), part);
    return image;
}

QRgb rgbOf(Colour colour)
{
    return qRgb(colour.red, colour.green, colour.blue);
}

} // namespace

/// The picture control on real files, pixels and paper.
class TestEngineImage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void loadsAndTellsWhatItHas();
    void aFailedLoadLeavesNoImageAndTellsWhy();
    void savesInEveryFormat();
    void savingRaisesWhatIsWrong();
    void aFailedSaveLeavesTheFile();
    void aFullDiskLeavesTheFile_data();
    void aFullDiskLeavesTheFile();
    void aSizeLimitLeavesTheFile_data();
    void aSizeLimitLeavesTheFile();
    void undoTakesBackTheLastOperationOnly();
    void undoOfAChangedSizeShowsTheWholeArea();
    void anotherFilesPictureForgetsTheUndoCopy();
    void operationsKeepToTheArea();
    void anAreaOutsideIsRefusedWithANotice();
    void withoutAnImageEverythingIsRefused();
    void everyOperationReachesTheEngine();
    void handedOutPicturesDoNotChange();
    void picturesAreSharedNotCopied();
    void aViewsSizeCostsNothing();
    void aScaledImageIsProcessedAtItsSize();
    void enlargedPixelsAreBlocks();
    void reducedPicturesGetBetterLater();
    void thumbnailsFillTheirBox();
    void replacesColoursFromLongs();
    void resamplingCodes_data();
    void resamplingCodes();
    void copiesToTheClipboard();
    void printsToPdf();
    void aCancelledPrintDialogPrintsNothing();
    void longWorkPaintsAndReports();

private:
    QString save(const Raster &picture, const QString &name, SaveFormat format = SaveFormat::Bmp);
    QString dos(const QString &name) const { return QStringLiteral("c:\\") + name; }
    EngineImage &loaded(const Raster &picture);
    /// Saves a picture that has no room over the file "disk/kept".
    void saveWithoutRoom(CImage::Format format);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::shared_ptr<DriveView> m_drives;
    std::shared_ptr<PdfPrinter> m_printer;
    std::unique_ptr<EngineImage> m_image;
};

void TestEngineImage::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_drives = std::make_shared<DriveView>();
    m_drives->setDrive('c', m_folder->path().toLocal8Bit());
    m_printer = std::make_shared<PdfPrinter>();
    m_image = std::make_unique<EngineImage>(EngineServices{m_drives, m_printer, {}});
}

QString TestEngineImage::save(const Raster &picture, const QString &name, SaveFormat format)
{
    const QString path = m_folder->filePath(name);
    savePicture(picture, path.toLocal8Bit(), path, format);
    return dos(name);
}

EngineImage &TestEngineImage::loaded(const Raster &picture)
{
    m_image->LoadImageFile(save(picture, QStringLiteral("loaded.bmp")));
    return *m_image;
}

void TestEngineImage::loadsAndTellsWhatItHas()
{
    for (const int depth : {1, 4, 8, 16, 24, 32}) {
        EngineImage &image = loaded(noisePicture(depth, 40, 30));
        QCOMPARE(image.Width(), 40);
        QCOMPARE(image.Height(), 30);
        QCOMPARE(int{image.BitsPerPixel()}, depth);
        QCOMPARE(image.Picture().size(), QSize(40, 30));
        QVERIFY(image.Picture().Handle() != 0);
    }
    m_image->Clear();
    QCOMPARE(m_image->Width(), 0);
    QCOMPARE(m_image->BitsPerPixel(), qint16(0));
    QCOMPARE(m_image->Picture().Handle(), quintptr(0));
}

void TestEngineImage::aFailedLoadLeavesNoImageAndTellsWhy()
{
    QFile letter(m_folder->filePath(QStringLiteral("letter.bmp")));
    QVERIFY(letter.open(QIODevice::WriteOnly));
    letter.write("Dear reader");
    letter.close();
    loaded(noisePicture(24, 9, 9));
    m_image->LoadImageFile(dos(QStringLiteral("letter.bmp")));
    QCOMPARE(m_image->Width(), 0);
    QCOMPARE(m_image->Picture().failure()->number(), error::InvalidPicture);
    QVERIFY(m_image->Picture().failure()->text().contains(u"letter.bmp"));
    m_image->LoadImageFile(dos(QStringLiteral("missing.bmp")));
    QCOMPARE(m_image->Picture().failure()->number(), error::FileNotFound);

    // Who is handed such a picture keeps the old one.
    EngineImage other({m_drives, m_printer, {}});
    other.LoadImageFile(save(noisePicture(24, 9, 9), QStringLiteral("good.bmp")));
    QVERIFY_THROWS_EXCEPTION(RuntimeError, other.setPicture(m_image->Picture()));
    QCOMPARE(other.Width(), 9);
}

void TestEngineImage::savesInEveryFormat()
{
    const Raster picture = noisePicture(24, 30, 20);
    EngineImage &image = loaded(picture);
    for (const CImage::Format format :
         {CImage::Jpeg, CImage::Tiff, CImage::Bmp, CImage::Pcx, CImage::Dib, CImage::Wpg}) {
        const QString path = dos(QStringLiteral("saved%1").arg(format));
        image.SaveImageFile(path, format);
        EngineImage again({m_drives, m_printer, {}});
        again.LoadImageFile(path);
        QCOMPARE(again.Width(), 30);
        QCOMPARE(again.BitsPerPixel(), qint16(24));
        if (format != CImage::Jpeg)
            QCOMPARE(painted(again.Picture(), QRect(0, 0, 30, 20)),
                     painted(image.Picture(), QRect(0, 0, 30, 20)));
    }
}

void TestEngineImage::savingRaisesWhatIsWrong()
{
    const auto failure = [this](const QString &path, int format) {
        return test::numberOf([&] { m_image->SaveImageFile(path, static_cast<qint16>(format)); });
    };
    QCOMPARE(failure(dos(QStringLiteral("x.bmp")), CImage::Bmp), error::InvalidPicture);
    loaded(noisePicture(24, 9, 9));
    QCOMPARE(failure(dos(QStringLiteral("x.bmp")), 2), error::InvalidProcedureCall);
    QCOMPARE(failure(dos(QStringLiteral("x.bmp")), -1), error::InvalidProcedureCall);
    QCOMPARE(failure(dos(QStringLiteral("missing\\x.bmp")), CImage::Bmp), error::PathNotFound);
    QCOMPARE(failure(dos(QStringLiteral("x.bmp")), CImage::Bmp), 0);
}

void TestEngineImage::aFailedSaveLeavesTheFile()
{
    const QString path = save(noisePicture(8, 9, 9), QStringLiteral("kept.wpg"), SaveFormat::Wpg);
    loaded(noisePicture(8, 40000, 1));
    QVERIFY_THROWS_EXCEPTION(RuntimeError, m_image->SaveImageFile(path, CImage::Wpg));
    m_image->LoadImageFile(path);
    QCOMPARE(m_image->Width(), 9);
}

void TestEngineImage::saveWithoutRoom(CImage::Format format)
{
    const QString folder = m_folder->filePath(QStringLiteral("disk"));
    QFile kept(folder + QStringLiteral("/kept"));
    QVERIFY(kept.open(QIODevice::WriteOnly));
    kept.write("old");
    kept.close();
    const auto failure
        = test::failureOf([&] { m_image->SaveImageFile(dos(QStringLiteral("disk\\kept")), format); });
    QVERIFY(failure);
    QCOMPARE(failure->number(), error::DiskFull);
    QVERIFY2(failure->text().contains(u"\"c:\\disk\\kept\" could not be written"),
             qPrintable(failure->text()));
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), QByteArray("old"));
    QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("kept")});
}

void TestEngineImage::aFullDiskLeavesTheFile_data()
{
    QTest::addColumn<int>("format");
    QTest::newRow("bmp") << static_cast<int>(CImage::Bmp);
    QTest::newRow("jpg") << static_cast<int>(CImage::Jpeg);
    QTest::newRow("tif") << static_cast<int>(CImage::Tiff);
    QTest::newRow("pcx") << static_cast<int>(CImage::Pcx);
    QTest::newRow("wpg") << static_cast<int>(CImage::Wpg);
    QTest::newRow("dib") << static_cast<int>(CImage::Dib);
}

void TestEngineImage::aFullDiskLeavesTheFile()
{
    QFETCH(int, format);
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("disk")));
    const test::SmallDisk disk(m_folder->filePath(QStringLiteral("disk")).toUtf8(), "size=128k");
    if (!disk.isThere())
        QSKIP("no file system can be mounted here");
    loaded(noisePicture(24, 900, 700));
    saveWithoutRoom(static_cast<CImage::Format>(format));
}

void TestEngineImage::aSizeLimitLeavesTheFile_data()
{
    aFullDiskLeavesTheFile_data();
}

void TestEngineImage::aSizeLimitLeavesTheFile()
{
    QFETCH(int, format);
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("disk")));
    loaded(noisePicture(24, 900, 700));
    const test::FileSizeLimit limit(100'000);
    saveWithoutRoom(static_cast<CImage::Format>(format));
}

void TestEngineImage::undoTakesBackTheLastOperationOnly()
{
    EngineImage &image = loaded(noisePicture(24, 30, 20));
    const QRect all(0, 0, 30, 20);
    const QImage first = painted(image.Picture(), all);
    image.Undo();
    QCOMPARE(painted(image.Picture(), all), first);
    image.KeepUndo(true);
    QVERIFY(image.Negative());
    const QImage second = painted(image.Picture(), all);
    image.KeepUndo(true);
    QVERIFY(image.Blur());
    const QImage third = painted(image.Picture(), all);
    image.Undo();
    QCOMPARE(painted(image.Picture(), all), second);
    image.Undo();
    QCOMPARE(painted(image.Picture(), all), third);
    QVERIFY(first != second && second != third);
    image.KeepUndo(false);
    image.Undo();
    QCOMPARE(painted(image.Picture(), all), third);
}

void TestEngineImage::undoOfAChangedSizeShowsTheWholeArea()
{
    EngineImage &image = loaded(noisePicture(24, 30, 20));
    image.KeepUndo(true);
    QVERIFY(image.Rotate(90));
    QCOMPARE(image.Width(), 20);
    image.SetProcessingArea(0, 0, 5, 5);
    image.Undo();
    QCOMPARE(image.Width(), 30);
    // The area of the turned picture is no longer the area.
    const QImage before = painted(image.Picture(), QRect(0, 0, 30, 20));
    QVERIFY(image.Negative());
    QVERIFY(painted(image.Picture(), QRect(0, 0, 30, 20)).pixel(29, 19) != before.pixel(29, 19));
}

void TestEngineImage::anotherFilesPictureForgetsTheUndoCopy()
{
    EngineImage first({m_drives, m_printer, {}});
    first.LoadImageFile(save(noisePicture(24, 30, 20), QStringLiteral("first.bmp")));
    EngineImage &working = *m_image;
    working.setPicture(first.Picture());
    working.KeepUndo(true);
    QVERIFY(working.Negative());
    // The same file's picture leaves it.
    first.setPicture(working.Picture());
    working.setPicture(first.Picture());
    working.Undo();
    QVERIFY(painted(working.Picture(), QRect(0, 0, 30, 20)) != painted(first.Picture(), QRect(0, 0, 30, 20)));
    first.LoadImageFile(save(noisePicture(24, 7, 7), QStringLiteral("second.bmp")));
    working.setPicture(first.Picture());
    working.Undo();
    QCOMPARE(working.Width(), 7);
}

void TestEngineImage::operationsKeepToTheArea()
{
    const Raster picture = noisePicture(24, 30, 20);
    EngineImage &image = loaded(picture);
    image.SetProcessingArea(5, 6, 7, 8);
    QVERIFY(image.Negative());
    const Raster expected = negative({picture, PixelArea{5, 6, 7, 8}}).picture;
    const QImage shown = painted(image.Picture(), QRect(0, 0, 30, 20));
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 30; ++x)
            QCOMPARE(shown.pixel(x, y), rgbOf(expected.colourAt(x, y)));
    }
}

void TestEngineImage::anAreaOutsideIsRefusedWithANotice()
{
    EngineImage &image = loaded(noisePicture(24, 30, 20));
    QSignalSpy notices(&image, &CImage::Notice);
    const quintptr before = image.Picture().Handle();
    for (const QRect &area : {QRect(30, 0, 5, 5), QRect(0, 0, 0, 0), QRect(-9, -9, 5, 5)}) {
        image.SetProcessingArea(area.x(), area.y(), area.width(), area.height());
        QVERIFY(!image.Negative());
        QCOMPARE(image.Picture().Handle(), before);
    }
    QCOMPARE(notices.size(), 3);
    QVERIFY(!image.Brightness(std::numeric_limits<double>::quiet_NaN()));
    QCOMPARE(notices.size(), 4);
}

void TestEngineImage::withoutAnImageEverythingIsRefused()
{
    QVERIFY(!m_image->Blur());
    QVERIFY(!m_image->Resize(10, 10, 1));
    QVERIFY(!m_image->ResampleTo(1000, 1000, 0));
    QVERIFY(!m_image->ResampleColors(8, 0, 0));
    m_image->KeepUndo(true);
    m_image->Undo();
    m_image->CopyToClipboard();
    QCOMPARE(m_image->Picture().Handle(), quintptr(0));
    QVERIFY_THROWS_EXCEPTION(RuntimeError, m_image->PrintImage(nullptr, 0, 0, 5, 5));
}

void TestEngineImage::everyOperationReachesTheEngine()
{
    using Call = std::function<bool(CImage &)>;
    const std::vector<std::pair<const char *, Call>> calls{
        {"AutoContrast", [](CImage &i) { return i.AutoContrast(); }},
        {"Equalize", [](CImage &i) { return i.Equalize(); }},
        {"Blur", [](CImage &i) { return i.Blur(); }},
        {"Negative", [](CImage &i) { return i.Negative(); }},
        {"ConcaveSpectrum", [](CImage &i) { return i.ConcaveSpectrum(); }},
        {"ConvexSpectrum", [](CImage &i) { return i.ConvexSpectrum(); }},
        {"Rembrand", [](CImage &i) { return i.Rembrand(); }},
        {"BrokenTV", [](CImage &i) { return i.BrokenTV(); }},
        {"Emboss", [](CImage &i) { return i.Emboss(); }},
        {"FlipHorizontal", [](CImage &i) { return i.FlipHorizontal(); }},
        {"FlipVertical", [](CImage &i) { return i.FlipVertical(); }},
        {"Blend", [](CImage &i) { return i.Blend(30); }},
        {"Brightness", [](CImage &i) { return i.Brightness(30); }},
        {"Contrast", [](CImage &i) { return i.Contrast(30); }},
        {"Gamma", [](CImage &i) { return i.Gamma(2); }},
        {"Sharpen", [](CImage &i) { return i.Sharpen(30); }},
        {"Mosaic", [](CImage &i) { return i.Mosaic(4); }},
        {"Rotate", [](CImage &i) { return i.Rotate(45); }},
        {"BumpMap", [](CImage &i) { return i.BumpMap(12, false); }},
        {"Warp",
         [](CImage &i) {
             return i.Warp({20, 20, 400, 20, 20, 400, 400, 400});
         }},
        {"Matrix",
         [](CImage &i) {
             return i.Matrix({-1, 2, -1, -1, 9, -1, -1, 2, -1}, 1, 2);
         }},
        {"ReplaceColors", [](CImage &i) { return i.ReplaceColors(0, 0x808080, 0x00FF00); }},
        {"Buttonize", [](CImage &i) { return i.Buttonize(40, 3); }},
        {"AdjustRGB", [](CImage &i) { return i.AdjustRGB(10, 0, 0); }},
        {"AdjustHSL", [](CImage &i) { return i.AdjustHSL(90, 0, 0); }},
        {"ResampleColors", [](CImage &i) { return i.ResampleColors(4, 1, 1); }},
        {"Resize", [](CImage &i) { return i.Resize(20, 10, 0); }},
    };
    const QString path = save(contrast({noisePicture(24, 60, 40)}, -40).picture, QStringLiteral("start.bmp"));
    QList<QImage> seen;
    for (const auto &[name, call] : calls) {
        m_image->LoadImageFile(path);
        const SharedPicture before = m_image->Picture();
        QVERIFY2(call(*m_image), name);
        QVERIFY2(m_image->Picture().Handle() != before.Handle(), name);
        const QImage shown = painted(m_image->Picture(), QRect(QPoint(), m_image->Picture().size()));
        // No two do the same.
        QVERIFY2(!seen.contains(shown), name);
        seen.append(shown);
    }
    m_image->LoadImageFile(path);
    QVERIFY(m_image->Deskew());
}

void TestEngineImage::handedOutPicturesDoNotChange()
{
    EngineImage &image = loaded(noisePicture(24, 30, 20));
    const SharedPicture before = image.Picture();
    const QImage shown = painted(before, QRect(0, 0, 30, 20));
    QVERIFY(image.Negative());
    image.Clear();
    QCOMPARE(painted(before, QRect(0, 0, 30, 20)), shown);
}

void TestEngineImage::picturesAreSharedNotCopied()
{
    EngineImage &image = loaded(noisePicture(24, 30, 20));
    EngineImage other({m_drives, m_printer, {}});
    other.setPicture(image.Picture());
    QCOMPARE(other.Picture().Handle(), image.Picture().Handle());
    // What changes nothing keeps even the handle.
    QVERIFY(image.Brightness(0));
    QCOMPARE(other.Picture().Handle(), image.Picture().Handle());
    other.setPicture(SharedPicture());
    QCOMPARE(other.Width(), 0);
}

void TestEngineImage::aViewsSizeCostsNothing()
{
    EngineImage &image = loaded(noisePicture(24, 9000, 40));
    QVERIFY(image.Resize(72000, 320, 1));
    QCOMPARE(image.Width(), 72000);
    QCOMPARE(image.Picture().size(), QSize(72000, 320));
    QVERIFY(image.Resize(9000, 40, 1));
    // What a view may show, nothing can be done to.
    QVERIFY(image.Resize(72000, 320, 1));
    QSignalSpy notices(&image, &CImage::Notice);
    QVERIFY(!image.Negative());
    QCOMPARE(notices.size(), 1);
    for (const double size : {0.0, -5.0, 0.4, 1e9, std::numeric_limits<double>::quiet_NaN()})
        QVERIFY(!image.Resize(size, 10, 1));
    QCOMPARE(image.Width(), 72000);
}

void TestEngineImage::aScaledImageIsProcessedAtItsSize()
{
    EngineImage &image = loaded(noisePicture(24, 30, 20));
    QVERIFY(image.Resize(60, 40, 1));
    image.SetProcessingArea(50, 30, 10, 10);
    QVERIFY(image.Negative());
    QCOMPARE(image.Width(), 60);
    image.SaveImageFile(dos(QStringLiteral("scaled.bmp")), CImage::Bmp);
    image.LoadImageFile(dos(QStringLiteral("scaled.bmp")));
    QCOMPARE(image.Width(), 60);
    QCOMPARE(image.Height(), 40);
}

void TestEngineImage::enlargedPixelsAreBlocks()
{
    for (const int depth : {1, 8, 24, 32}) {
        Raster picture = noisePicture(depth, 30, 20);
        EngineImage &image = loaded(picture);
        image.SaveImageFile(dos(QStringLiteral("opaque.jpg")), CImage::Pcx);
        image.LoadImageFile(dos(QStringLiteral("opaque.jpg")));
        QVERIFY(image.Resize(240, 160, 1));
        const QImage shown = painted(image.Picture(), QRect(43, 51, 100, 90));
        for (int y = 0; y < 90; ++y) {
            for (int x = 0; x < 100; ++x)
                QCOMPARE(shown.pixel(x, y), rgbOf(picture.colourAt((43 + x) / 8, (51 + y) / 8)));
        }
    }
}

void TestEngineImage::reducedPicturesGetBetterLater()
{
    EngineImage &image = loaded(noisePicture(24, 1600, 1200));
    QVERIFY(image.Resize(200, 150, 1));
    const SharedPicture picture = image.Picture();
    QSignalSpy refined(picture.pixels().get(), &PicturePixels::refined);
    const QImage first = painted(picture, QRect(0, 0, 200, 150));
    QTRY_COMPARE(refined.size(), 1);
    const QImage second = painted(picture, QRect(0, 0, 200, 150));
    // Means of noise are gray; single pixels of it are not.
    const auto isGrayish
        = [](QRgb rgb) { return std::abs(qRed(rgb) - 128) < 60 && std::abs(qBlue(rgb) - 128) < 60; };
    int before = 0;
    int after = 0;
    for (int y = 0; y < 150; ++y) {
        for (int x = 0; x < 200; ++x) {
            before += isGrayish(first.pixel(x, y)) ? 1 : 0;
            after += isGrayish(second.pixel(x, y)) ? 1 : 0;
        }
    }
    QVERIFY(before < 200 * 150 / 2);
    QVERIFY(after > 200 * 150 * 9 / 10);
}

void TestEngineImage::thumbnailsFillTheirBox()
{
    EngineImage &image = loaded(smoothPicture(400, 200));
    image.SetOption(4, 70);
    QVERIFY(image.ResampleTo(1500, 1500, 0));
    QCOMPARE(image.Width(), 100);
    QCOMPARE(image.Height(), 50);
    QVERIFY(image.ResampleTo(3000, 3000, 0));
    QCOMPARE(image.Width(), 200);
    QVERIFY(!image.ResampleTo(0, 1500, 0));
    QVERIFY(!image.ResampleTo(std::numeric_limits<float>::quiet_NaN(), 1500, 0));
}

void TestEngineImage::replacesColoursFromLongs()
{
    EngineImage &image = loaded(plainPicture({1, 2, 3}, 4, 4));
    QVERIFY(image.ReplaceColors(0x030201, 0x030201, 0x0A141E));
    QCOMPARE(painted(image.Picture(), QRect(0, 0, 4, 4)).pixel(2, 2), qRgb(0x1E, 0x14, 0x0A));
}

void TestEngineImage::resamplingCodes_data()
{
    QTest::addColumn<double>("bits");
    QTest::addColumn<int>("depth");
    QTest::newRow("1") << 1.0 << 1;
    QTest::newRow("4") << 4.0 << 4;
    QTest::newRow("8") << 8.0 << 8;
    QTest::newRow("16") << 16.0 << 16;
    QTest::newRow("24") << 24.0 << 24;
    QTest::newRow("none chosen") << 0.0 << 0;
    QTest::newRow("between") << 4.5 << 0;
    QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN() << 0;
    QTest::newRow("too many") << 1e300 << 0;
}

void TestEngineImage::resamplingCodes()
{
    QFETCH(double, bits);
    QFETCH(int, depth);
    for (const qint32 type : {0, 1, 2, 5, 6, 99}) {
        for (const auto dither : std::initializer_list<qint16>{0, 1, 2, 3, 99}) {
            EngineImage &image = loaded(noisePicture(24, 30, 20));
            QCOMPARE(image.ResampleColors(bits, type, dither), depth != 0);
            QCOMPARE(int{image.BitsPerPixel()}, depth != 0 ? depth : 24);
        }
    }
}

void TestEngineImage::copiesToTheClipboard()
{
    const Raster picture = noisePicture(8, 30, 20);
    loaded(picture).CopyToClipboard();
    const QImage pasted = QGuiApplication::clipboard()->image();
    QCOMPARE(pasted.size(), QSize(30, 20));
    QCOMPARE(pasted.pixel(7, 9), rgbOf(picture.colourAt(7, 9)));
}

void TestEngineImage::printsToPdf()
{
    const QString pdf = m_folder->filePath(QStringLiteral("page.pdf"));
    m_printer->device.setOutputFormat(QPrinter::PdfFormat);
    m_printer->device.setOutputFileName(pdf);
    loaded(smoothPicture(300, 200)).PrintImage(nullptr, 0, 0, 300, 200);
    QCOMPARE(m_printer->asked, 1);
    QFile file(pdf);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray octets = file.readAll();
    QVERIFY(octets.startsWith("%PDF"));
    QVERIFY(octets.contains("/Image"));
    // Places outside of the picture leave nothing to print.
    QVERIFY_THROWS_EXCEPTION(RuntimeError, m_image->PrintImage(nullptr, 900, 0, 5, 5));
}

void TestEngineImage::aCancelledPrintDialogPrintsNothing()
{
    m_printer->isCancelled = true;
    loaded(smoothPicture(30, 20)).PrintImage(nullptr, 0, 0, 30, 20);
    QCOMPARE(m_printer->asked, 1);
}

void TestEngineImage::longWorkPaintsAndReports()
{
    // Work that ends only when it was reported, so that the test waits for no clock.
    std::atomic<int> reports = 0;
    QList<double> told;
    doLongWork(
        [&reports](WorkProgress &progress) {
            progress = 40;
            while (reports < 2)
                QThread::yieldCurrentThread();
        },
        [&](double done) {
            told.append(done);
            ++reports;
        });
    QVERIFY(told.size() >= 3);
    QCOMPARE(told.first(), 0.4);
    QCOMPARE(told.last(), 1.0);
    QVERIFY_THROWS_EXCEPTION(RuntimeError,
                             doLongWork([](WorkProgress &) { throw RuntimeError(5); }, [](double) {}));
}

QTEST_MAIN(TestEngineImage)
#include "TestEngineImage.moc"
