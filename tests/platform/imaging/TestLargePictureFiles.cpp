#include <algorithm>
#include <array>
#include <cstdlib>

#include <QBuffer>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include "platform/imaging/codecs/PictureFailure.h"
#include "platform/imaging/codecs/PictureFiles.h"
#include "tests/platform/imaging/TestPictures.h"

using namespace vandrel;

/// Pictures large enough that their files are written and read in several bands at the same time.
class TestLargePictureFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyFormatKeepsWhatItCan_data();
    void everyFormatKeepsWhatItCan();
    void jpegBandsAreTheWholePicture_data();
    void jpegBandsAreTheWholePicture();
    void jpegRefusesSidesThatReadersRefuse();
    void otherProgramsReadTheFiles_data();
    void otherProgramsReadTheFiles();
    void tiffToolsFindNothingWrong();
    void wpgToolsFindTheBitmap();
    void otherProgramsFilesAreRead_data();
    void otherProgramsFilesAreRead();
    void progressIsTold_data();
    void progressIsTold();
    void damageInOneStripShowsTheRowsBefore();
};

namespace {

constexpr int width = 901;
constexpr int height = 640;

QByteArray encoded(const Raster &picture, SaveFormat format, const FileProgress &progress = {})
{
    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    encodePicture(picture, buffer, format, progress);
    return buffer.data();
}

DecodedPicture decoded(QByteArray file, const DecodeRequest &request = {})
{
    QBuffer buffer(&file);
    buffer.open(QIODevice::ReadOnly);
    return decodePicture(buffer, QStringLiteral("picture"), request);
}

/// Black and white at one bit, since that is what every format and program has in common.
Raster picture(int bitsPerPixel)
{
    const Raster noise = noisePicture(bitsPerPixel, width, height);
    return bitsPerPixel == 1 ? noise.withPalette(grayPalette(2)) : noise;
}

bool showTheSame(const Raster &one, const Raster &other)
{
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            if (one.colourAt(x, y) != other.colourAt(x, y))
                return false;
        }
    }
    return one.area() == other.area();
}

bool write(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
}

/// What a program says and whether it ends well.
struct Answer {
    bool isGood = false;
    QByteArray output;
    QByteArray errors;
};

Answer answerOf(const QStringList &command)
{
    QProcess process;
    process.start(command.first(), command.sliced(1));
    const bool isDone = process.waitForFinished(60'000) && process.exitStatus() == QProcess::NormalExit;
    return {isDone && process.exitCode() == 0, process.readAllStandardOutput(),
            process.readAllStandardError()};
}

struct NamedFormat {
    const char *name;
    SaveFormat format;
};

constexpr std::array<NamedFormat, 6> allFormats{{{"bmp", SaveFormat::Bmp},
                                                 {"dib", SaveFormat::Dib},
                                                 {"pcx", SaveFormat::Pcx},
                                                 {"tif", SaveFormat::Tiff},
                                                 {"wpg", SaveFormat::Wpg},
                                                 {"jpg", SaveFormat::Jpeg}}};

} // namespace

void TestLargePictureFiles::everyFormatKeepsWhatItCan_data()
{
    QTest::addColumn<SaveFormat>("format");
    QTest::addColumn<int>("bits");
    for (const NamedFormat &format : allFormats) {
        for (const int bits : {1, 4, 8, 16, 24, 32}) {
            if (format.format != SaveFormat::Jpeg)
                QTest::addRow("%s, %d bits", format.name, bits) << format.format << bits;
        }
    }
}

void TestLargePictureFiles::everyFormatKeepsWhatItCan()
{
    QFETCH(SaveFormat, format);
    QFETCH(int, bits);
    const Raster noise = picture(bits);
    const DecodedPicture again = decoded(encoded(noise, format));
    QVERIFY2(again.damage.isEmpty(), qPrintable(again.damage));
    QVERIFY(showTheSame(again.picture, noise));
}

void TestLargePictureFiles::jpegBandsAreTheWholePicture_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("shared");
    QTest::newRow("a colour for each pixel") << 24 << 1;
    QTest::newRow("a colour for four pixels") << 24 << 2;
    QTest::newRow("alpha that is left out") << 32 << 1;
    QTest::newRow("grays") << 8 << 1;
}

void TestLargePictureFiles::jpegBandsAreTheWholePicture()
{
    QFETCH(int, bits);
    QFETCH(int, shared);
    const Raster whole = (bits == 8 ? noisePicture({{}, 8, true}, width, height) : picture(bits))
                             .withJpegOrigin({90, shared, shared});
    const QByteArray file = encoded(whole, SaveFormat::Jpeg);
    QVERIFY(file.contains(QByteArray("\xFF\xDD\x00\x04", 4)));
    const DecodedPicture again = decoded(file);
    QVERIFY2(again.damage.isEmpty(), qPrintable(again.damage));
    // The same rows in a file of their own are coded in the same blocks; at the edges, shared colours are blended with
    // those of neighbours, which that file has not.
    constexpr int firstRow = 192;
    constexpr int rows = 160;
    constexpr int margin = 2;
    auto pixels = PixelBuffer::make(width, rows, whole.view().channels);
    std::copy_n(whole.view().row(firstRow), pixels->octets(), pixels->view().data);
    const Raster part = whole.withPixels(std::move(pixels)).withJpegOrigin({90, shared, shared});
    const Raster partAgain = decoded(encoded(part, SaveFormat::Jpeg)).picture;
    for (int y = margin; y < rows - margin; ++y) {
        for (int x = 0; x < width; ++x)
            QVERIFY(partAgain.colourAt(x, y) == again.picture.colourAt(x, firstRow + y));
    }
}

void TestLargePictureFiles::jpegRefusesSidesThatReadersRefuse()
{
    QVERIFY_THROWS_EXCEPTION(PictureFailure, encoded(noisePicture(24, 8, 65501), SaveFormat::Jpeg));
    QVERIFY_THROWS_EXCEPTION(PictureFailure, encoded(noisePicture(24, 65501, 8), SaveFormat::Jpeg));
    const Raster longest = noisePicture(24, 8, 65500);
    QCOMPARE(decoded(encoded(longest, SaveFormat::Jpeg)).picture.height(), 65500);
}

void TestLargePictureFiles::otherProgramsReadTheFiles_data()
{
    QTest::addColumn<QStringList>("command");
    const auto magick = [](const char *name) {
        return QStringList{QString::fromLatin1(name), QStringLiteral("FILE"), QStringLiteral("-depth"),
                           QStringLiteral("8"), QStringLiteral("rgb:RESULT")};
    };
    QTest::newRow("GraphicsMagick") << QStringList{QStringLiteral("gm")} + magick("convert");
    QTest::newRow("ImageMagick") << magick("convert-im6.q16");
    QTest::newRow("libvips") << QStringList{QStringLiteral("vips"), QStringLiteral("rawsave"),
                                            QStringLiteral("FILE"), QStringLiteral("RESULT")};
}

void TestLargePictureFiles::otherProgramsReadTheFiles()
{
    QFETCH(QStringList, command);
    if (QStandardPaths::findExecutable(command.first()).isEmpty())
        QSKIP("the program is not installed");
    const bool isVips = command.first() == u"vips";
    const QTemporaryDir folder;
    const QString result = folder.filePath(QStringLiteral("result"));
    const Raster noise = picture(24);
    for (const NamedFormat &format : allFormats) {
        // What it has no reader of its own for, it hands to another of these programs.
        if (isVips && format.format != SaveFormat::Tiff && format.format != SaveFormat::Jpeg)
            continue;
        const QString path = folder.filePath(QStringLiteral("picture.") + QString::fromLatin1(format.name));
        const QByteArray file = encoded(noise, format.format);
        QVERIFY(write(path, file));
        QStringList arguments = command;
        arguments.replaceInStrings(QStringLiteral("FILE"), path)
            .replaceInStrings(QStringLiteral("RESULT"), result);
        const Answer answer = answerOf(arguments);
        QVERIFY2(answer.isGood && answer.errors.isEmpty(),
                 QByteArray(answer.errors + " of " + format.name).constData());
        QFile pixels(result);
        QVERIFY(pixels.open(QIODevice::ReadOnly));
        const QByteArray colours = pixels.readAll();
        QCOMPARE(colours.size(), qsizetype{3} * width * height);
        const Raster expected = format.format == SaveFormat::Jpeg ? decoded(file).picture : noise;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const char *at = colours.constData() + (qsizetype{y} * width + x) * 3;
                const Colour colour{static_cast<std::uint8_t>(at[0]), static_cast<std::uint8_t>(at[1]),
                                    static_cast<std::uint8_t>(at[2])};
                QVERIFY2(colour == expected.colourAt(x, y), format.name);
            }
        }
    }
}

void TestLargePictureFiles::tiffToolsFindNothingWrong()
{
    if (QStandardPaths::findExecutable(QStringLiteral("tiffinfo")).isEmpty())
        QSKIP("libtiff's tools are not installed");
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("picture.tif"));
    for (const int bits : {1, 4, 8, 16, 24, 32}) {
        QVERIFY(write(path, encoded(picture(bits), SaveFormat::Tiff)));
        const Answer answer = answerOf({QStringLiteral("tiffinfo"), QStringLiteral("-D"), path});
        QVERIFY2(answer.isGood && answer.errors.isEmpty(), answer.errors.constData());
        QVERIFY2(answer.output.contains("Image Width: 901 Image Length: 640"), answer.output.constData());
    }
}

void TestLargePictureFiles::wpgToolsFindTheBitmap()
{
    if (QStandardPaths::findExecutable(QStringLiteral("wpg2svg")).isEmpty())
        QSKIP("libwpg's tools are not installed");
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("picture.wpg"));
    for (const int bits : {1, 4, 8, 24}) {
        const Raster noise = picture(bits);
        QVERIFY(write(path, encoded(noise, SaveFormat::Wpg)));
        const Answer answer = answerOf({QStringLiteral("wpg2svg"), path});
        QVERIFY2(answer.isGood, answer.errors.constData());
        // The drawing holds the bitmap as a BMP file.
        const QByteArray mark("base64,");
        const qsizetype begin = answer.output.indexOf(mark) + mark.size();
        const qsizetype end = answer.output.indexOf('"', begin);
        const QByteArray bitmap = QByteArray::fromBase64(answer.output.sliced(begin, end - begin));
        QVERIFY(showTheSame(decoded(bitmap).picture, noise));
    }
}

void TestLargePictureFiles::otherProgramsFilesAreRead_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<int>("tolerance");
    QTest::newRow("TIFF in tiles") << QStringLiteral("tiffcp -t -w 64 -l 48 FILE.tif RESULT.tif") << 0;
    QTest::newRow("TIFF in planes") << QStringLiteral("tiffcp -p separate FILE.tif RESULT.tif") << 0;
    QTest::newRow("TIFF, deflated") << QStringLiteral("tiffcp -c zip:2 FILE.tif RESULT.tif") << 0;
    QTest::newRow("TIFF, packed") << QStringLiteral("tiffcp -c packbits FILE.tif RESULT.tif") << 0;
    QTest::newRow("TIFF in one strip") << QStringLiteral("tiffcp -r 100000 FILE.tif RESULT.tif") << 0;
    QTest::newRow("TIFF, the other octet first") << QStringLiteral("tiffcp -B FILE.tif RESULT.tif") << 0;
    QTest::newRow("TIFF of two pages") << QStringLiteral("tiffcp FILE.tif SECOND.tif RESULT.tif") << 0;
    QTest::newRow("TIFF of 16 bits a colour")
        << QStringLiteral("gm convert FILE.bmp -depth 16 RESULT.tif") << 0;
    QTest::newRow("TIFF of inks") << QStringLiteral("convert-im6.q16 FILE.bmp -colorspace CMYK RESULT.tif")
                                  << 2;
    QTest::newRow("JPEG in scans") << QStringLiteral(
        "gm convert FILE.bmp -quality 98 -interlace Line RESULT.jpg")
                                   << 16;
    QTest::newRow("JPEG of inks") << QStringLiteral(
        "convert-im6.q16 FILE.bmp -colorspace CMYK -quality 98 RESULT.jpg")
                                  << 16;
    QTest::newRow("PCX") << QStringLiteral("gm convert FILE.bmp RESULT.pcx") << 0;
    QTest::newRow("DIB") << QStringLiteral("gm convert FILE.bmp RESULT.dib") << 0;
}

void TestLargePictureFiles::otherProgramsFilesAreRead()
{
    QFETCH(QString, command);
    QFETCH(int, tolerance);
    QStringList words = command.split(u' ');
    if (QStandardPaths::findExecutable(words.first()).isEmpty())
        QSKIP("the program is not installed");
    const QTemporaryDir folder;
    const Raster smooth = smoothPicture(width, height);
    QVERIFY(write(folder.filePath(QStringLiteral("first.tif")), encoded(smooth, SaveFormat::Tiff)));
    QVERIFY(write(folder.filePath(QStringLiteral("first.bmp")), encoded(smooth, SaveFormat::Bmp)));
    QVERIFY(write(folder.filePath(QStringLiteral("second.tif")), encoded(picture(8), SaveFormat::Tiff)));
    words.replaceInStrings(QStringLiteral("FILE"), folder.filePath(QStringLiteral("first")))
        .replaceInStrings(QStringLiteral("SECOND"), folder.filePath(QStringLiteral("second")))
        .replaceInStrings(QStringLiteral("RESULT"), folder.filePath(QStringLiteral("result")));
    const Answer answer = answerOf(words);
    QVERIFY2(answer.isGood, answer.errors.constData());
    QFile file(words.last());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const DecodedPicture again = decoded(file.readAll());
    QVERIFY2(again.damage.isEmpty(), qPrintable(again.damage));
    QVERIFY(again.picture.area() == smooth.area());
    int worst = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Colour expected = smooth.colourAt(x, y);
            const Colour found = again.picture.colourAt(x, y);
            worst = std::max({worst, std::abs(found.red - expected.red),
                              std::abs(found.green - expected.green), std::abs(found.blue - expected.blue)});
        }
    }
    QVERIFY2(worst <= tolerance, qPrintable(QString::number(worst)));
}

void TestLargePictureFiles::progressIsTold_data()
{
    QTest::addColumn<SaveFormat>("format");
    for (const NamedFormat &format : allFormats)
        QTest::newRow(format.name) << format.format;
}

void TestLargePictureFiles::progressIsTold()
{
    QFETCH(SaveFormat, format);
    QList<int> told;
    const FileProgress tell = [&told](int percent) { told.append(percent); };
    const QByteArray file = encoded(picture(24), format, tell);
    QVERIFY(told.size() > 2 && std::is_sorted(told.begin(), told.end()));
    QVERIFY(told.first() < 40 && told.last() == 100);
    told.clear();
    DecodeRequest request;
    request.progress = tell;
    decoded(file, request);
    QVERIFY(told.size() > 2 && std::is_sorted(told.begin(), told.end()));
    QVERIFY(told.first() < 40 && told.last() >= 90 && told.last() <= 100);
}

void TestLargePictureFiles::damageInOneStripShowsTheRowsBefore()
{
    const Raster noise = picture(24);
    QByteArray file = encoded(noise, SaveFormat::Tiff);
    const qsizetype middle = file.size() / 2;
    file.replace(middle, 2000, QByteArray(2000, '\xFF'));
    const DecodedPicture again = decoded(file);
    QVERIFY(!again.damage.isEmpty());
    for (int x = 0; x < width; ++x)
        QVERIFY(again.picture.colourAt(x, height / 4) == noise.colourAt(x, height / 4));
}

QTEST_GUILESS_MAIN(TestLargePictureFiles)
#include "TestLargePictureFiles.moc"
