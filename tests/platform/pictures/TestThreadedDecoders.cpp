#include <memory>
#include <vector>

#include <QBuffer>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include "platform/pictures/PictureReader.h"
#include "platform/pictures/ThreadedDecoders.h"
#include "runtime/RuntimeError.h"
#include "runtime/Twips.h"

using namespace Qt::StringLiterals;
using namespace vandrel;

namespace {

/// What a thumbnail of the tests takes in memory: 100 by 50 pixels.
constexpr qint64 oneThumbnail = qint64{100} * 50 * 4;

/// The left half red, the right half blue.
QImage twoHalves(const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::red);
    QPainter(&image).fillRect(size.width() / 2, 0, size.width(), size.height(), Qt::blue);
    return image;
}

QByteArray encoded(const QImage &image,
                   const char *format,
                   QImageIOHandler::Transformations turned = QImageIOHandler::TransformationNone)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setTransformation(turned);
    return writer.write(image) ? buffer.data() : QByteArray();
}

bool isAlmost(const QColor &one, const QColor &other)
{
    return std::abs(one.red() - other.red()) < 12 && std::abs(one.green() - other.green()) < 12
        && std::abs(one.blue() - other.blue()) < 12;
}

/// The application's picture files, and what is made of them.
class TestThreadedDecoders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void picturesAreMadeToFit_data();
    void picturesAreMadeToFit();
    void aSmallPictureStaysAsItIs();
    void aPictureIsMadeReadyForWhereItIsShown();
    void linesStayEven();
    void aPictureIsTurnedAsItSays();
    void whatIsNoPictureIsNull_data();
    void whatIsNoPictureIsNull();
    void aHugePictureIsNull();

    void aPictureComes();
    void whatCannotBeReadIsUnreadable_data();
    void whatCannotBeReadIsUnreadable();
    void thumbnailsFitTheirBox();
    void thumbnailsFitTheInsideOfTheirBox();
    void aSlideIsScaledAhead();
    void aPreparedSlideIsThereAtOnce();
    void anotherFileThanThePreparedOne();
    void onlyKnownModesAndOptions();
    void picturesComeInOrder();
    void whatIsSeenComesFirst();
    void lettingGoEndsTheWork();
    void memoryIsBounded();
    void whatIsSeenIsKept();
    void aSlideIsKept();
    void decodersMayGoBeforeTheirPictures();

private:
    QString put(const QString &name, const QByteArray &contents) const;
    /// What is made of a file with these contents.
    QImage read(const QByteArray &contents, const PictureWish &wish) const
    {
        return readBoth(contents, wish).image;
    }
    ReadPicture readBoth(const QByteArray &contents, const PictureWish &wish) const;
    QString putPicture(const QString &name, const QSize &size = {200, 100}) const
    {
        return put(name, encoded(twoHalves(size), "bmp"));
    }
    std::shared_ptr<ComingPicture> thumbnail(ThreadedDecoders &decoders, const QString &path);
    std::vector<QString> putMany(int count) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::shared_ptr<DriveView> m_view;
    std::vector<std::unique_ptr<PictureDecoder>> m_decoders;
};

using State = ComingPicture::State;

} // namespace

void TestThreadedDecoders::init()
{
    m_decoders.clear();
    m_folder = std::make_unique<QTemporaryDir>();
    m_view = std::make_shared<DriveView>();
    m_view->setDrive('c', m_folder->path().toUtf8());
}

QString TestThreadedDecoders::put(const QString &name, const QByteArray &contents) const
{
    QFile file(m_folder->filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
        qFatal("the test's file cannot be written");
    return u"c:\\"_s + name;
}

ReadPicture TestThreadedDecoders::readBoth(const QByteArray &contents, const PictureWish &wish) const
{
    const QString path = put(u"picture.jpg"_s, contents);
    return readPicture(m_view->toNative(path), path, wish);
}

std::vector<QString> TestThreadedDecoders::putMany(int count) const
{
    std::vector<QString> paths;
    for (int i = 0; i < count; ++i)
        paths.push_back(putPicture(u"many%1.bmp"_s.arg(i)));
    return paths;
}

std::shared_ptr<ComingPicture> TestThreadedDecoders::thumbnail(ThreadedDecoders &decoders,
                                                               const QString &path)
{
    m_decoders.push_back(decoders.make());
    PictureDecoder &decoder = *m_decoders.back();
    decoder.LoadImageFile(path);
    decoder.ResampleTo(float(twips(100)), float(twips(100)), 0);
    decoder.SetOption(4, 70);
    return decoder.Picture();
}

void TestThreadedDecoders::picturesAreMadeToFit_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QSize>("made");
    for (const char *format : {"jpg", "bmp"}) {
        QTest::addRow("wide %s", format) << QByteArray(format) << QSize(800, 200) << QSize(100, 25);
        QTest::addRow("high %s", format) << QByteArray(format) << QSize(300, 600) << QSize(40, 80);
        QTest::addRow("thin %s", format) << QByteArray(format) << QSize(2000, 2) << QSize(100, 1);
    }
}

void TestThreadedDecoders::picturesAreMadeToFit()
{
    QFETCH(QByteArray, format);
    QFETCH(QSize, size);
    QFETCH(QSize, made);
    const QImage image = read(encoded(twoHalves(size), format.constData()), {{100, 80}, 70});
    QCOMPARE(image.size(), made);
    if (made.height() > 1) {
        QVERIFY(isAlmost(image.pixelColor(made.width() / 4, made.height() / 2), Qt::red));
        QVERIFY(isAlmost(image.pixelColor(made.width() * 3 / 4, made.height() / 2), Qt::blue));
    }
}

void TestThreadedDecoders::aSmallPictureStaysAsItIs()
{
    QCOMPARE(read(encoded(twoHalves({20, 10}), "bmp"), {{100, 100}, 100}), twoHalves({20, 10}));
}

void TestThreadedDecoders::aPictureIsMadeReadyForWhereItIsShown()
{
    const QByteArray file = encoded(twoHalves({800, 400}), "bmp");
    const ReadPicture both = readBoth(file, {{400, 400}, 100, {100, 60}});
    QCOMPARE(both.image.size(), QSize(400, 200));
    QCOMPARE(both.shown.size(), QSize(100, 50));
    QVERIFY(isAlmost(both.shown.pixelColor(20, 20), Qt::red));
    QVERIFY(isAlmost(both.shown.pixelColor(80, 20), Qt::blue));
    QVERIFY(readBoth(file, {{400, 400}, 100, {400, 400}}).shown.isNull());
    QVERIFY(readBoth(file, {{400, 400}, 100, {}}).shown.isNull());
}

// A pattern finer than the picture can be shown becomes its mean all over, with no stripes of its own.
void TestThreadedDecoders::linesStayEven()
{
    QImage lines({600, 40}, QImage::Format_RGB32);
    lines.fill(Qt::black);
    QPainter painter(&lines);
    for (int x = 0; x < lines.width(); x += 2)
        painter.fillRect(x, 0, 1, lines.height(), Qt::white);
    painter.end();
    const QImage image = read(encoded(lines, "bmp"), {{222, 200}, 100});
    QCOMPARE(image.width(), 222);
    for (int x = 1; x < image.width() - 1; ++x)
        QVERIFY2(std::abs(image.pixelColor(x, 5).red() - 128) < 50, qPrintable(QString::number(x)));
}

void TestThreadedDecoders::aPictureIsTurnedAsItSays()
{
    const QImage image = read(encoded(twoHalves({400, 200}), "jpg", QImageIOHandler::TransformationRotate90),
                              {{100, 50}, 100});
    QCOMPARE(image.size(), QSize(25, 50));
    QVERIFY(isAlmost(image.pixelColor(12, 10), Qt::red));
    QVERIFY(isAlmost(image.pixelColor(12, 40), Qt::blue));
}

void TestThreadedDecoders::whatIsNoPictureIsNull_data()
{
    QTest::addColumn<QByteArray>("contents");
    const QByteArray picture = encoded(twoHalves({100, 100}), "jpg");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("Dear Anna,\n");
    QTest::newRow("zeros") << QByteArray(10'000, '\0');
    QTest::newRow("header alone") << picture.left(20);
}

void TestThreadedDecoders::whatIsNoPictureIsNull()
{
    QFETCH(QByteArray, contents);
    QVERIFY(read(contents, {{100, 100}, 100}).isNull());
}

// 60000 by 60000 pixels, by the word of a file of a few octets.
void TestThreadedDecoders::aHugePictureIsNull()
{
    QByteArray data = encoded(twoHalves({16, 16}), "bmp");
    for (const int offset : {18, 22}) {
        data[offset] = char(0x60);
        data[offset + 1] = char(0xEA);
    }
    QVERIFY(read(data, {{100, 100}, 100}).isNull());
}

void TestThreadedDecoders::aPictureComes()
{
    ThreadedDecoders decoders(m_view);
    const auto decoder = decoders.make();
    QVERIFY(!decoder->Picture());
    decoder->LoadImageFile(putPicture(u"a.bmp"_s));
    const auto picture = decoder->Picture();
    QVERIFY(picture);
    QVERIFY(picture->state() == State::Coming);
    QSignalSpy changes(picture.get(), &ComingPicture::changed);
    QVERIFY(changes.wait());
    QVERIFY(picture->state() == State::Ready);
    QCOMPARE(picture->image(), twoHalves({200, 100}));
    QCOMPARE(decoder->Picture(), picture);
    QCOMPARE(changes.count(), 1);
}

void TestThreadedDecoders::whatCannotBeReadIsUnreadable_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("no picture") << u"c:\\text.jpg"_s;
    QTest::newRow("no file") << u"c:\\gone.jpg"_s;
    QTest::newRow("no drive") << u"q:\\gone.jpg"_s;
    QTest::newRow("a folder") << u"c:\\"_s;
    QTest::newRow("a device") << u"/dev/zero"_s;
}

void TestThreadedDecoders::whatCannotBeReadIsUnreadable()
{
    QFETCH(QString, path);
    put(u"text.jpg"_s, "Dear Anna,\n");
    ThreadedDecoders decoders(m_view);
    const auto decoder = decoders.make();
    decoder->LoadImageFile(path);
    const auto picture = decoder->Picture();
    QTRY_VERIFY(picture->state() == State::Unreadable);
    QVERIFY(picture->image().isNull());
}

void TestThreadedDecoders::thumbnailsFitTheirBox()
{
    ThreadedDecoders decoders(m_view);
    const auto picture = thumbnail(decoders, putPicture(u"a.bmp"_s, {800, 400}));
    QTRY_VERIFY(picture->state() == State::Ready);
    QCOMPARE(picture->image().size(), QSize(100, 50) * qGuiApp->devicePixelRatio());
}

void TestThreadedDecoders::thumbnailsFitTheInsideOfTheirBox()
{
    ThreadedDecoders decoders(m_view);
    const auto decoder = decoders.make();
    decoder->ShowIn({98, 98});
    decoder->LoadImageFile(putPicture(u"a.bmp"_s, {800, 400}));
    decoder->ResampleTo(float(twips(100)), float(twips(100)), 0);
    const auto picture = decoder->Picture();
    QTRY_VERIFY(picture->state() == State::Ready);
    QCOMPARE(picture->image().size(), QSize(98, 49) * qGuiApp->devicePixelRatio());
}

void TestThreadedDecoders::aSlideIsScaledAhead()
{
    ThreadedDecoders decoders(m_view);
    const auto decoder = decoders.make();
    decoder->ShowIn(QSize(50, 50) / qGuiApp->devicePixelRatio());
    decoder->LoadImageFile(putPicture(u"a.bmp"_s));
    const auto picture = decoder->Picture();
    QTRY_VERIFY(picture->state() == State::Ready);
    QCOMPARE(picture->image().size(), QSize(200, 100));
    const QImage once = picture->scaledTo({50, 25});
    QCOMPARE(once.size(), QSize(50, 25));
    // What is made ready is handed out, not made again.
    QCOMPARE(picture->scaledTo({50, 25}).constBits(), once.constBits());
    QCOMPARE(picture->scaledTo({200, 100}), picture->image());
    QCOMPARE(picture->scaledTo({40, 20}).size(), QSize(40, 20));
}

void TestThreadedDecoders::aPreparedSlideIsThereAtOnce()
{
    ThreadedDecoders decoders(m_view);
    const auto decoder = decoders.make();
    decoder->LoadImageFile(putPicture(u"a.bmp"_s));
    const auto first = decoder->Picture();
    const QString second = putPicture(u"b.bmp"_s, {60, 60});
    decoder->Prepare(second);
    // A second decoder's picture of the same file is ready no earlier.
    const auto witness = decoders.make();
    QTRY_VERIFY(first->state() == State::Ready);
    for (int i = 0; i < 4; ++i) {
        witness->LoadImageFile(second);
        const auto seen = witness->Picture();
        QTRY_VERIFY(seen->state() == State::Ready);
    }
    decoder->LoadImageFile(second);
    const auto picture = decoder->Picture();
    QVERIFY(picture->state() == State::Ready);
    QCOMPARE(picture->image().size(), QSize(60, 60));
}

void TestThreadedDecoders::anotherFileThanThePreparedOne()
{
    ThreadedDecoders decoders(m_view);
    const auto decoder = decoders.make();
    decoder->Prepare(putPicture(u"a.bmp"_s));
    decoder->LoadImageFile(putPicture(u"b.bmp"_s, {60, 60}));
    const auto picture = decoder->Picture();
    QTRY_VERIFY(picture->state() == State::Ready);
    QCOMPARE(picture->image().size(), QSize(60, 60));
}

void TestThreadedDecoders::onlyKnownModesAndOptions()
{
    ThreadedDecoders decoders(m_view);
    const auto decoder = decoders.make();
    decoder->LoadImageFile(putPicture(u"a.bmp"_s));
    QVERIFY_THROWS_EXCEPTION(RuntimeError, decoder->ResampleTo(10, 10, 1));
    QVERIFY_THROWS_EXCEPTION(RuntimeError, decoder->SetOption(5, 70));
}

// Where the room ends, as many more may be under way as there are threads, twice.
void TestThreadedDecoders::picturesComeInOrder()
{
    const int inThreeQuarters = 6 * QThread::idealThreadCount() + 6;
    ThreadedDecoders decoders(m_view, oneThumbnail * inThreeQuarters / 3 * 4);
    std::vector<std::shared_ptr<ComingPicture>> pictures;
    for (const QString &path : putMany(inThreeQuarters * 2))
        pictures.push_back(thumbnail(decoders, path));
    QTRY_VERIFY(decoders.size() >= oneThumbnail * inThreeQuarters);
    for (int i = 0; i < inThreeQuarters / 2; ++i)
        QTRY_VERIFY(pictures[static_cast<std::size_t>(i)]->state() == State::Ready);
    QVERIFY(pictures.back()->state() == State::Coming);
}

void TestThreadedDecoders::whatIsSeenComesFirst()
{
    const int inThreeQuarters = 6 * QThread::idealThreadCount() + 6;
    ThreadedDecoders decoders(m_view, oneThumbnail * inThreeQuarters / 3 * 4);
    std::vector<std::shared_ptr<ComingPicture>> pictures;
    for (const QString &path : putMany(inThreeQuarters * 2))
        pictures.push_back(thumbnail(decoders, path));
    QTRY_VERIFY(decoders.size() >= oneThumbnail * inThreeQuarters);
    pictures.back()->setSeen(true);
    QTRY_VERIFY(pictures.back()->state() == State::Ready);
    QVERIFY(pictures[pictures.size() - 2]->state() == State::Coming);
}

void TestThreadedDecoders::lettingGoEndsTheWork()
{
    ThreadedDecoders decoders(m_view);
    std::vector<std::shared_ptr<ComingPicture>> pictures;
    for (const QString &path : putMany(200))
        pictures.push_back(thumbnail(decoders, path));
    const auto last = pictures.back();
    pictures.clear();
    m_decoders.clear();
    QTRY_VERIFY(last->state() == State::Ready);
    QCOMPARE(decoders.size(), last->image().sizeInBytes());
}

void TestThreadedDecoders::memoryIsBounded()
{
    ThreadedDecoders decoders(m_view, oneThumbnail * 10);
    std::vector<std::shared_ptr<ComingPicture>> pictures;
    for (const QString &path : putMany(50))
        pictures.push_back(thumbnail(decoders, path));
    QTRY_VERIFY(decoders.size() >= oneThumbnail * 7);
    // The last is decoded as soon as it is seen, and room is made for it.
    pictures.back()->setSeen(true);
    QTRY_VERIFY(pictures.back()->state() == State::Ready);
    QVERIFY(decoders.size() <= oneThumbnail * 10);
    // One that had to go comes again.
    for (const auto &picture : pictures) {
        picture->setSeen(true);
        QTRY_VERIFY(picture->state() == State::Ready);
        picture->setSeen(false);
        QVERIFY(decoders.size() <= oneThumbnail * 10);
    }
}

void TestThreadedDecoders::whatIsSeenIsKept()
{
    ThreadedDecoders decoders(m_view, oneThumbnail * 3);
    std::vector<std::shared_ptr<ComingPicture>> pictures;
    for (const QString &path : putMany(12)) {
        pictures.push_back(thumbnail(decoders, path));
        pictures.back()->setSeen(true);
    }
    for (const auto &picture : pictures)
        QTRY_VERIFY(picture->state() == State::Ready);
    QCOMPARE(decoders.size(), oneThumbnail * 12);
}

void TestThreadedDecoders::aSlideIsKept()
{
    ThreadedDecoders decoders(m_view, 1);
    const auto decoder = decoders.make();
    decoder->LoadImageFile(putPicture(u"a.bmp"_s));
    const auto picture = decoder->Picture();
    QTRY_VERIFY(picture->state() == State::Ready);
    QCOMPARE(decoders.size(), qint64{0});
    QVERIFY(!picture->image().isNull());
}

void TestThreadedDecoders::decodersMayGoBeforeTheirPictures()
{
    auto decoders = std::make_unique<ThreadedDecoders>(m_view);
    const auto picture = thumbnail(*decoders, putPicture(u"a.bmp"_s));
    m_decoders.clear();
    decoders.reset();
    QTRY_VERIFY(picture->state() == State::Ready);
}

QTEST_MAIN(TestThreadedDecoders)
#include "TestThreadedDecoders.moc"
