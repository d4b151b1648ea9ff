#include <QBuffer>
#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include "platform/imaging/codecs/ExifOrientation.h"
#include "platform/imaging/codecs/PictureFailure.h"
#include "platform/imaging/codecs/PictureFiles.h"
#include "platform/imaging/codecs/PictureFormat.h"
#include "platform/imaging/codecs/Reduction.h"
#include "platform/imaging/raster/Turning.h"
#include "runtime/RuntimeError.h"
#include "tests/platform/filesystem/Restrictions.h"
#include "tests/platform/imaging/PictureModel.h"
#include "tests/platform/imaging/TestPictures.h"
#include "tests/runtime/FailureOf.h"

using namespace vandrel;

/// Picture files: read, written, damaged and hostile.
class TestPictureFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyFormatKeepsWhatItCan_data();
    void everyFormatKeepsWhatItCan();
    void blackAndWhiteStaysOneBit();
    void otherProgramsReadTheFiles_data() { everyFormatKeepsWhatItCan_data(); }
    void otherProgramsReadTheFiles();
    void jpegLooksLikeThePicture();
    void savingAnUnchangedJpegLosesNextToNothing();
    void damagedFilesEndInAPictureOrAnError_data() { everyFormatKeepsWhatItCan_data(); }
    void damagedFilesEndInAPictureOrAnError();
    void bombsAreRefused_data();
    void bombsAreRefused();
    void theContentDecides_data();
    void theContentDecides();
    void everyOrientationStandsUpright();
    void exifBlocksOfAnyKind_data();
    void exifBlocksOfAnyKind();
    void indicesBehindThePaletteAreBlack();
    void oversizeBitmapHeaders();
    void reducedPicturesFitTheBox();
    void decodingCanBeCancelled();
    void savesReplaceTheFileAsAWhole();
    void drawingsAreDrawnByAnotherProgram();
    void programsThatMisbehaveEndInAnError_data();
    void programsThatMisbehaveEndInAnError();
    void theCorpus();
    void theCorpusCutShort();
};

namespace {

QByteArray encoded(const Raster &picture, SaveFormat format)
{
    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    encodePicture(picture, buffer, format);
    return buffer.data();
}

DecodedPicture decoded(QByteArray file, const DecodeRequest &request = {})
{
    QBuffer buffer(&file);
    buffer.open(QIODevice::ReadOnly);
    return decodePicture(buffer, QStringLiteral("c:\\picture"), request);
}

/// The error's text; empty where there is none.
QString failureOf(const QByteArray &file)
{
    try {
        decoded(file);
    } catch (const RuntimeError &failure) {
        return failure.number() == error::InvalidPicture ? failure.text() : QStringLiteral("another error");
    }
    return {};
}

QString extensionOf(SaveFormat format)
{
    switch (format) {
    case SaveFormat::Jpeg:
        return QStringLiteral("jpg");
    case SaveFormat::Tiff:
        return QStringLiteral("tif");
    case SaveFormat::Bmp:
        return QStringLiteral("bmp");
    case SaveFormat::Pcx:
        return QStringLiteral("pcx");
    case SaveFormat::Dib:
        return QStringLiteral("dib");
    case SaveFormat::Wpg:
        return QStringLiteral("wpg");
    }
    return {};
}

/// The depth at which a format holds a picture.
int depthIn(SaveFormat format, int bitsPerPixel)
{
    // Sixteen colours are the fewest that this format knows besides black and white.
    if (format == SaveFormat::Pcx && bitsPerPixel == 1)
        return 4;
    if (bitsPerPixel <= 8 || format == SaveFormat::Bmp || format == SaveFormat::Dib)
        return bitsPerPixel;
    return format == SaveFormat::Tiff && bitsPerPixel == 32 ? 32 : 24;
}

bool showTheSame(const Raster &one, const Raster &other)
{
    if (one.area() != other.area())
        return false;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            if (one.colourAt(x, y) != other.colourAt(x, y))
                return false;
        }
    }
    return true;
}

/// Blank rows and long runs beside noise, so that every kind of run occurs.
Raster writtenPicture(const PictureKind &kind, int width, int height)
{
    const Raster noise = noisePicture(kind, width, height);
    auto pixels = PixelBuffer::make(width, height, noise.view().channels);
    for (int y = 0; y < height; ++y) {
        const auto octets = static_cast<std::ptrdiff_t>(width) * noise.view().channels;
        std::copy_n(noise.view().row(y), octets, pixels->view().row(y));
        if (y % 4 == 1)
            std::fill_n(pixels->view().row(y), octets, noise.view().row(y)[0]);
        if (y % 4 == 2)
            std::fill_n(pixels->view().row(y), octets / 2, noise.view().row(y)[0]);
    }
    return noise.withPixels(std::move(pixels));
}

QByteArray run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(60'000) || process.exitCode() != 0)
        return {};
    return process.readAllStandardOutput();
}

QString picturesFolder()
{
    QString shared = qEnvironmentVariable("VANDREL_SHARED");
    if (shared.isEmpty())
        shared = qEnvironmentVariable("VANDREL_SOURCE_DIR") + QStringLiteral("/../shared");
    return shared + QStringLiteral("/data/pictures");
}

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray le16(int value)
{
    QByteArray octets(2, '\0');
    qToLittleEndian<quint16>(static_cast<quint16>(value), octets.data());
    return octets;
}

QByteArray le32(qint64 value)
{
    QByteArray octets(4, '\0');
    qToLittleEndian<quint32>(static_cast<quint32>(value), octets.data());
    return octets;
}

QByteArray bitmapHeader(qint64 width, qint64 height, int bits, int compression, qint64 colours = 0)
{
    return le32(40) + le32(width) + le32(height) + le16(1) + le16(bits) + le32(compression) + le32(0)
        + le32(0) + le32(0) + le32(colours) + le32(0);
}

/// A red box in the middle half of a page of two inches by one, and as many records more that do nothing.
QByteArray smallMetafile(int idle = 0)
{
    QByteArray records;
    const auto record = [&records](int function, const QList<int> &words) {
        records += le32(3 + words.size()) + le16(function);
        for (const int word : words)
            records += le16(word);
    };
    record(0x020B, {0, 0});
    record(0x020C, {1000, 2000});
    record(0x02FC, {0, 0x00FF, 0, 0});
    record(0x012D, {0});
    // No line around it.
    record(0x02FA, {5, 0, 0, 0, 0});
    record(0x012D, {1});
    record(0x041B, {750, 1500, 250, 500});
    for (int number = 0; number < idle; ++number)
        record(0x0102, {1});
    // Two corners, since a drawing reaches as far as its shapes.
    record(0x041B, {10, 10, 0, 0});
    record(0x041B, {1000, 2000, 990, 1990});
    record(0x0000, {});
    const QByteArray header
        = le16(1) + le16(9) + le16(0x0300) + le32(9 + records.size() / 2) + le16(2) + le32(8) + le16(0);
    QByteArray place
        = le32(0x9AC6CDD7) + le16(0) + le16(0) + le16(0) + le16(2000) + le16(1000) + le16(1000) + le32(0);
    int sum = 0;
    for (qsizetype at = 0; at < place.size(); at += 2)
        sum ^= qFromLittleEndian<quint16>(place.constData() + at);
    return place + le16(sum) + header + records;
}

/// A small JPEG file with another size in its header.
QByteArray jpegThatSays(int width, int height)
{
    QByteArray file = encoded(smoothPicture(16, 16), SaveFormat::Jpeg);
    const qsizetype frame = file.indexOf(QByteArray("\xFF\xC0\x00\x11", 4));
    qToBigEndian<quint16>(static_cast<quint16>(height), file.data() + frame + 5);
    qToBigEndian<quint16>(static_cast<quint16>(width), file.data() + frame + 7);
    return file;
}

QByteArray exifWith(int orientation, bool isBigEndian)
{
    if (isBigEndian)
        return QByteArray("MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0", 19)
            + static_cast<char>(orientation) + QByteArray(6, '\0');
    return QByteArray("II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0", 18) + static_cast<char>(orientation)
        + QByteArray(7, '\0');
}

} // namespace

void TestPictureFiles::everyFormatKeepsWhatItCan_data()
{
    QTest::addColumn<int>("format");
    for (const SaveFormat format :
         {SaveFormat::Bmp, SaveFormat::Dib, SaveFormat::Pcx, SaveFormat::Tiff, SaveFormat::Wpg})
        QTest::newRow(qPrintable(extensionOf(format))) << static_cast<int>(format);
}

void TestPictureFiles::everyFormatKeepsWhatItCan()
{
    QFETCH(int, format);
    const auto kindOfFile = static_cast<SaveFormat>(format);
    for (const PictureKind &kind : pictureKinds()) {
        for (const auto &[width, height] :
             {std::pair(1, 1), std::pair(37, 29), std::pair(640, 5), std::pair(8, 300)}) {
            const Raster picture = writtenPicture(kind, width, height);
            const DecodedPicture again = decoded(encoded(picture, kindOfFile));
            QVERIFY2(again.damage.isEmpty(), qPrintable(labelled(kind.name, again.damage)));
            const int depth = depthIn(kindOfFile, kind.bitsPerPixel);
            QVERIFY2(again.picture.bitsPerPixel() == depth, kind.name.constData());
            QVERIFY2(showTheSame(again.picture, picture), kind.name.constData());
            if (kind.bitsPerPixel == 32 && depth == 32)
                QVERIFY(areEqual(again.picture, picture));
            const Resolution resolution = again.picture.resolution();
            QVERIFY2(std::abs(resolution.horizontal - 96) < 0.1 && std::abs(resolution.vertical - 48) < 0.1,
                     kind.name.constData());
        }
    }
}

void TestPictureFiles::blackAndWhiteStaysOneBit()
{
    for (const Palette &palette :
         {Palette{{0, 0, 0}, {255, 255, 255}}, Palette{{255, 255, 255}, {0, 0, 0}}}) {
        const Raster picture = noisePicture(1, 37, 29).withPalette(palette);
        for (const SaveFormat format :
             {SaveFormat::Bmp, SaveFormat::Dib, SaveFormat::Pcx, SaveFormat::Tiff, SaveFormat::Wpg}) {
            const Raster again = decoded(encoded(picture, format)).picture;
            QCOMPARE(again.bitsPerPixel(), 1);
            QVERIFY2(showTheSame(again, picture), qPrintable(extensionOf(format)));
        }
    }
}

void TestPictureFiles::otherProgramsReadTheFiles()
{
    QFETCH(int, format);
    const auto kindOfFile = static_cast<SaveFormat>(format);
    const QString program = QStandardPaths::findExecutable(QStringLiteral("gm"));
    if (program.isEmpty())
        QSKIP("GraphicsMagick is not installed");
    const QTemporaryDir folder;
    for (const PictureKind &kind : pictureKinds()) {
        // Depths that the other program reads as something else are ours alone to test.
        if (kind.bitsPerPixel == 32 || (kind.bitsPerPixel == 16 && kindOfFile == SaveFormat::Dib))
            continue;
        const Raster picture = writtenPicture(kind, 37, 29);
        const QString path = folder.filePath(QStringLiteral("picture.") + extensionOf(kindOfFile));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(encoded(picture, kindOfFile));
        file.close();
        const QByteArray pixels = run(program,
                                      {QStringLiteral("convert"), path, QStringLiteral("-depth"),
                                       QStringLiteral("8"), QStringLiteral("rgb:-")});
        QVERIFY2(pixels.size() == 37 * 29 * 3, kind.name.constData());
        for (int y = 0; y < 29; ++y) {
            for (int x = 0; x < 37; ++x) {
                const auto *pixel
                    = reinterpret_cast<const std::uint8_t *>(pixels.constData()) + (y * 37 + x) * 3;
                const Colour colour = picture.colourAt(x, y);
                // Five bits are widened in more than one way.
                const int allowed = kind.bitsPerPixel == 16 ? 8 : 0;
                QVERIFY2(std::abs(pixel[0] - colour.red) <= allowed
                             && std::abs(pixel[1] - colour.green) <= allowed
                             && std::abs(pixel[2] - colour.blue) <= allowed,
                         kind.name.constData());
            }
        }
    }
}

void TestPictureFiles::jpegLooksLikeThePicture()
{
    const Raster picture = smoothPicture(200, 150).withResolution({300, 300});
    const Raster again = decoded(encoded(picture, SaveFormat::Jpeg)).picture;
    QCOMPARE(again.bitsPerPixel(), 24);
    QVERIFY(likeness(PictureModel(again), PictureModel(picture), 0) > 38);
    QVERIFY((again.resolution() == Resolution{300, 300}));
    const Raster gray = decoded(encoded(noisePicture({{}, 8, true}, 20, 20), SaveFormat::Jpeg)).picture;
    QCOMPARE(gray.bitsPerPixel(), 8);
    for (const int depth : {1, 4, 8, 16, 32})
        QCOMPARE(decoded(encoded(noisePicture(depth, 20, 20), SaveFormat::Jpeg)).picture.bitsPerPixel(), 24);
}

void TestPictureFiles::savingAnUnchangedJpegLosesNextToNothing()
{
    for (const JpegOrigin &origin : {JpegOrigin{60, 2, 2}, JpegOrigin{75, 2, 1}, JpegOrigin{95, 1, 1}}) {
        const QByteArray first = encoded(smoothPicture(320, 240).withJpegOrigin(origin), SaveFormat::Jpeg);
        const Raster loaded = decoded(first).picture;
        QVERIFY(loaded.jpegOrigin() == origin);
        const QByteArray second = encoded(loaded, SaveFormat::Jpeg);
        const double alike = likeness(PictureModel(decoded(second).picture), PictureModel(loaded), 0);
        QVERIFY2(alike > 45, qPrintable(QString::number(alike)));
        QVERIFY(second.size() < first.size() * 11 / 10);
    }
    const Raster changed = turned(decoded(encoded(smoothPicture(40, 40), SaveFormat::Jpeg)).picture, 1);
    QVERIFY(!changed.jpegOrigin());
}

void TestPictureFiles::damagedFilesEndInAPictureOrAnError()
{
    QFETCH(int, format);
    for (const int depth : {1, 4, 8, 24}) {
        const QByteArray file
            = encoded(writtenPicture({{}, depth, false}, 40, 30), static_cast<SaveFormat>(format));
        for (int cut = 0; cut < 20; ++cut)
            failureOf(file.first(file.size() * cut / 20));
        // Every octet of the headers wrong in several ways.
        for (qsizetype at = 0; at < std::min<qsizetype>(file.size(), 160); ++at) {
            for (const int value : {0x00, 0x7F, 0x80, 0xFF}) {
                QByteArray damaged = file;
                damaged[at] = static_cast<char>(value);
                failureOf(damaged);
            }
        }
        const QString half = failureOf(file.first(file.size() / 2));
        QVERIFY2(!half.startsWith(u"another"), qPrintable(half));
    }
    QVERIFY(!failureOf({}).isEmpty());
}

void TestPictureFiles::bombsAreRefused_data()
{
    QTest::addColumn<QByteArray>("file");
    const QByteArray fileHeader = QByteArray("BM") + le32(0) + le32(0) + le32(54);
    QTest::newRow("a bitmap of the largest numbers")
        << fileHeader + bitmapHeader(0x7FFFFFFF, 0x7FFFFFFF, 24, 0);
    QTest::newRow("a bitmap without rows") << fileHeader + bitmapHeader(5, 0, 24, 0);
    QTest::newRow("a bitmap of the least height") << fileHeader + bitmapHeader(5, 0x80000000, 24, 0);
    QTest::newRow("a large bitmap in a small file")
        << fileHeader + bitmapHeader(30000, 9000, 24, 0) + QByteArray(99, 'x');
    QTest::newRow("a large compressed bitmap in a small file")
        << fileHeader + bitmapHeader(30000, 9000, 8, 1) + QByteArray(2000, '\xFF');
    QTest::newRow("a bitmap with a depth that there is not")
        << fileHeader + bitmapHeader(5, 5, 13, 0) + QByteArray(99, 'x');
    QTest::newRow("a bitmap with a picture of another format inside")
        << fileHeader + bitmapHeader(5, 5, 24, 4) + QByteArray(99, 'x');
    QTest::newRow("a PCX of no width")
        << QByteArray("\x0A\x05\x01\x08\x05\0\0\0\x04\0\x05\0", 12) + QByteArray(200, '\0');
    QByteArray pcx = QByteArray("\x0A\x05\x01\x08\0\0\0\0\xFF\xFE\xFF\xFE", 12) + QByteArray(200, '\0');
    pcx[65] = 1;
    pcx[66] = 1;
    QTest::newRow("a PCX of four billion pixels") << pcx;
    const QByteArray wpg("\xFFWPC\x10\0\0\0\x01\x16\x01\0\0\0\0\0", 16);
    QTest::newRow("a WPG of four billion pixels")
        << wpg + QByteArray("\x0B\x20", 2) + le16(65535) + le16(65535) + le16(8) + QByteArray(40, '\0');
    QTest::newRow("a WPG without a picture") << wpg + QByteArray("\x10\0", 2);
    QTest::newRow("a TIFF of four billion pixels") << QByteArray("II*\0\x08\0\0\0\x02\0", 10) + le16(256)
            + le16(4) + le32(1) + le32(65535) + le16(257) + le16(4) + le32(1) + le32(65535) + le32(0);
    QTest::newRow("a large TIFF in a small file") << QByteArray("II*\0\x08\0\0\0\x02\0", 10) + le16(256)
            + le16(4) + le32(1) + le32(17000) + le16(257) + le16(4) + le32(1) + le32(17000) + le32(0);
    QTest::newRow("a JPEG of four billion pixels") << jpegThatSays(65500, 65500);
    QTest::newRow("a large JPEG in a small file") << jpegThatSays(16000, 16000);
    QTest::newRow("no picture") << QByteArray("Dear reader, this is a letter.");
    QTest::newRow("nothing") << QByteArray();
}

void TestPictureFiles::bombsAreRefused()
{
    QFETCH(QByteArray, file);
    // Memory would run short for what the files claim.
    const test::MemoryCeiling ceiling(192 * 1024 * 1024);
    const QString failure = failureOf(file);
    QVERIFY2(failure.contains(u"c:\\picture") && !failure.contains(u"memory"), qPrintable(failure));
}

void TestPictureFiles::theContentDecides_data()
{
    QTest::addColumn<QByteArray>("beginning");
    QTest::addColumn<QString>("extension");
    QTest::addColumn<int>("format");
    const auto row
        = [](const char *name, const QByteArray &beginning, const char *extension, PictureFormat format) {
              QTest::newRow(name) << beginning << QString::fromLatin1(extension) << static_cast<int>(format);
          };
    row("a JPEG called bmp", QByteArray("\xFF\xD8\xFF\xE0", 4), "bmp", PictureFormat::Jpeg);
    row("a small TIFF", QByteArray("II*\0", 4), "", PictureFormat::Tiff);
    row("a big-endian TIFF", QByteArray("MM\0*", 4), "", PictureFormat::Tiff);
    row("a bitmap called dib", "BM......", "dib", PictureFormat::Bmp);
    row("a bitmap without its file header", bitmapHeader(5, 5, 8, 0), "bmp", PictureFormat::Dib);
    row("a placed metafile", QByteArray("\xD7\xCD\xC6\x9A", 4), "wmf", PictureFormat::Wmf);
    row("a metafile without its place", QByteArray("\x01\0\x09\0\0\x03", 6), "x", PictureFormat::Wmf);
    row("a drawing", "\xFFWPC", "jpg", PictureFormat::Wpg);
    row("a PCX", QByteArray("\x0A\x05\x01\x08", 4), "", PictureFormat::Pcx);
    row("a letter", "Dear reader", "jpg", PictureFormat::Unknown);
    row("an empty file", "", "bmp", PictureFormat::Unknown);
}

void TestPictureFiles::theContentDecides()
{
    QFETCH(QByteArray, beginning);
    QFETCH(QString, extension);
    QFETCH(int, format);
    QCOMPARE(static_cast<int>(pictureFormat(beginning, extension)), format);
}

void TestPictureFiles::everyOrientationStandsUpright()
{
    const Raster picture = noisePicture(24, 5, 3);
    // Where the picture's upper left pixel is stored, by the standard's table: rows first, then columns.
    const std::array<std::pair<int, int>, 9> corner{
        {{0, 0}, {0, 0}, {4, 0}, {4, 2}, {0, 2}, {0, 0}, {0, 2}, {4, 2}, {4, 0}}};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const Raster stands = upright(picture, orientation);
        QCOMPARE(stands.width(), swapsSides(orientation) ? 3 : 5);
        const auto [x, y] = corner[static_cast<std::size_t>(orientation)];
        QVERIFY2(stands.colourAt(0, 0) == picture.colourAt(x, y), qPrintable(QString::number(orientation)));
    }
    QVERIFY(upright(picture, 0).sharesPixelsWith(picture));
    QVERIFY(upright(picture, 9).sharesPixelsWith(picture));
}

void TestPictureFiles::exifBlocksOfAnyKind_data()
{
    QTest::addColumn<QByteArray>("exif");
    QTest::addColumn<int>("orientation");
    QTest::newRow("small end first") << exifWith(6, false) << 6;
    QTest::newRow("large end first") << exifWith(8, true) << 8;
    QTest::newRow("a way that there is not") << exifWith(9, false) << 1;
    QTest::newRow("zero") << exifWith(0, false) << 1;
    QTest::newRow("empty") << QByteArray() << 1;
    QTest::newRow("cut short") << exifWith(6, false).first(12) << 1;
    QTest::newRow("a directory far away") << QByteArray("II*\0\xFF\xFF\xFF\x7F", 8) << 1;
    QTest::newRow("endless entries") << QByteArray("II*\0\x08\0\0\0\xFF\xFF", 10) + QByteArray(300, 'x') << 1;
}

void TestPictureFiles::exifBlocksOfAnyKind()
{
    QFETCH(QByteArray, exif);
    QTEST(exifOrientation(exif), "orientation");
}

void TestPictureFiles::indicesBehindThePaletteAreBlack()
{
    // Two colours for pixels of eight bits.
    const QByteArray file = bitmapHeader(4, 1, 8, 0, 2) + QByteArray("\x01\x02\x03\0\x04\x05\x06\0", 8)
        + QByteArray("\0\x01\x02\xFF", 4);
    const Raster picture = decoded(file).picture;
    QVERIFY((picture.colourAt(0, 0) == Colour{3, 2, 1}));
    QVERIFY((picture.colourAt(1, 0) == Colour{6, 5, 4}));
    QVERIFY((picture.colourAt(2, 0) == Colour{}));
    QVERIFY((picture.colourAt(3, 0) == Colour{}));
}

void TestPictureFiles::oversizeBitmapHeaders()
{
    // A palette longer than the depth allows, and a place of the pixels that cannot be: the computed one counts.
    QByteArray palette;
    for (int number = 0; number < 300; ++number)
        palette += le32(number);
    const QByteArray pixels("\x05\x06\x07\x08", 4);
    for (const qint64 place : {qint64{14 + 40 + 300 * 4}, qint64{0}, qint64{5}, qint64{1 << 30}}) {
        const QByteArray file = QByteArray("BM") + le32(0) + le32(0) + le32(place)
            + bitmapHeader(4, 1, 8, 0, 300) + palette + pixels;
        const Raster picture = decoded(file).picture;
        QVERIFY((picture.colourAt(0, 0) == Colour{0, 0, 5}));
        QVERIFY((picture.colourAt(3, 0) == Colour{0, 0, 8}));
    }
}

void TestPictureFiles::reducedPicturesFitTheBox()
{
    const QTemporaryDir folder;
    for (const SaveFormat format : {SaveFormat::Jpeg, SaveFormat::Bmp, SaveFormat::Tiff, SaveFormat::Wpg}) {
        const QString path = folder.filePath(QStringLiteral("picture.") + extensionOf(format));
        const Raster picture = smoothPicture(1600, 800);
        savePicture(picture, path.toLocal8Bit(), path, format);
        DecodeRequest request;
        request.box = QSize(100, 100);
        const Raster whole = loadPicture(path.toLocal8Bit(), path, request).picture;
        QVERIFY(whole.width() >= 200 && whole.height() >= 100);
        const Raster small = reduced(whole, QSize(100, 50));
        QCOMPARE(small.width(), 100);
        QCOMPARE(small.height(), 50);
        const PictureModel expected(reduced(picture, QSize(100, 50)));
        QVERIFY(likeness(PictureModel(small), expected, 0) > 30);
    }
    QVERIFY((reduced(noisePicture(8, 64, 64), QSize(64, 64)).bitsPerPixel() == 8));
}

void TestPictureFiles::decodingCanBeCancelled()
{
    DecodeRequest request;
    request.isCancelled = [] { return true; };
    for (const SaveFormat format : {SaveFormat::Bmp, SaveFormat::Pcx, SaveFormat::Tiff, SaveFormat::Wpg})
        QVERIFY_THROWS_EXCEPTION(DecodingCancelled, decoded(encoded(smoothPicture(99, 99), format), request));
}

void TestPictureFiles::savesReplaceTheFileAsAWhole()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("picture.wpg"));
    savePicture(noisePicture(8, 20, 20), path.toLocal8Bit(), path, SaveFormat::Wpg);
    const QByteArray before = contentsOf(path);
    const auto failure = test::failureOf(
        [&] { savePicture(noisePicture(8, 32768, 1), path.toLocal8Bit(), path, SaveFormat::Wpg); });
    QVERIFY(failure);
    QCOMPARE(failure->number(), error::InvalidPicture);
    QVERIFY(failure->text().contains(u"32767"));
    QCOMPARE(contentsOf(path), before);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

void TestPictureFiles::drawingsAreDrawnByAnotherProgram()
{
    const Raster picture = decoded(smallMetafile()).picture;
    QCOMPARE(picture.width(), 1000);
    QVERIFY(std::abs(picture.height() - 500) <= 2);
    QVERIFY((picture.colourAt(100, 50) == Colour{255, 255, 255}));
    QVERIFY((picture.colourAt(500, 250) == Colour{255, 0, 0}));
    // More than a pipe takes at a time.
    QVERIFY(areEqual(decoded(smallMetafile(50'000)).picture, picture));
    QVERIFY(!failureOf(smallMetafile().first(40)).isEmpty());
    QVERIFY(!failureOf(smallMetafile().first(22) + QByteArray(500, '\xFF')).isEmpty());
}

void TestPictureFiles::programsThatMisbehaveEndInAnError_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::newRow("says nothing") << QByteArray("exit 0");
    QTest::newRow("fails") << QByteArray("cat >/dev/null; exit 1");
    QTest::newRow("crashes") << QByteArray("kill -SEGV $$");
    QTest::newRow("answers something else") << QByteArray("echo This is no picture at all");
    QTest::newRow("claims too much") << QByteArray("printf 'VPIX\\377\\377\\377\\377\\377\\377\\377\\377'");
    QTest::newRow("ends early") << QByteArray("printf 'VPIX\\005\\0\\0\\0\\005\\0\\0\\0abc'");
    QTest::newRow("says too much") << QByteArray("printf 'VPIX\\001\\0\\0\\0\\001\\0\\0\\0abcdef'");
    QTest::newRow("is not there") << QByteArray();
}

void TestPictureFiles::programsThatMisbehaveEndInAnError()
{
    QFETCH(QByteArray, script);
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("draw"));
    if (!script.isEmpty()) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + script + '\n');
        file.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    }
    DecodeRequest request;
    request.drawingProgram = path;
    QVERIFY_THROWS_EXCEPTION(RuntimeError, decoded(smallMetafile(), request));
    // One that never ends is killed when nobody waits for it any more.
    QFile endless(folder.filePath(QStringLiteral("endless")));
    QVERIFY(endless.open(QIODevice::WriteOnly));
    endless.write("#!/bin/sh\nexec sleep 1000\n");
    endless.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    endless.close();
    request.drawingProgram = endless.fileName();
    int asked = 0;
    request.isCancelled = [&asked] { return ++asked > 1; };
    QVERIFY_THROWS_EXCEPTION(DecodingCancelled, decoded(smallMetafile(), request));
}

void TestPictureFiles::theCorpus()
{
    const QDir folder(picturesFolder());
    const QFileInfoList files = folder.entryInfoList(QDir::Files);
    if (files.isEmpty())
        QSKIP("the collection of pictures is not here");
    // What cannot be shown: hostile files, and kinds that are refused.
    const QStringList refused{QStringLiteral("badwidth.bmp"),  QStringLiteral("reallybig.bmp"),
                              QStringLiteral("rgb24jpeg.bmp"), QStringLiteral("broken-sos-before-sof.jpg"),
                              QStringLiteral("SOURCES.md"),    QStringLiteral("synth_a_wpg1_hugedims.wpg")};
    QStringList wrong;
    for (const QFileInfo &file : files) {
        const QString failure = failureOf(contentsOf(file.filePath()));
        const bool mayFail = refused.contains(file.fileName()) || file.fileName().startsWith(u"crash-")
            || file.fileName().startsWith(u"oom-");
        if (!failure.isEmpty() && !mayFail)
            wrong.append(file.fileName() + QStringLiteral(": ") + failure);
    }
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
}

void TestPictureFiles::theCorpusCutShort()
{
    const QFileInfoList files = QDir(picturesFolder()).entryInfoList(QDir::Files, QDir::Name);
    if (files.isEmpty())
        QSKIP("the collection of pictures is not here");
    for (const QFileInfo &file : files) {
        const QByteArray whole = contentsOf(file.filePath());
        // Each drawing is a process of its own.
        const bool isSlow = whole.size() > 100'000 || file.suffix() == u"wmf";
        const int cuts = isSlow ? 3 : 20;
        for (int cut = 0; cut < cuts; ++cut) {
            const QString failure = failureOf(whole.first(whole.size() * cut / cuts));
            QVERIFY2(!failure.startsWith(u"another"), qPrintable(file.fileName()));
        }
    }
}

QTEST_GUILESS_MAIN(TestPictureFiles)
#include "TestPictureFiles.moc"
