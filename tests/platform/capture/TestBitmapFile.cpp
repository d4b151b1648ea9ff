#include <QBuffer>
#include <QTest>

#include "platform/capture/BitmapFile.h"
#include "runtime/RuntimeError.h"
#include "tests/runtime/FailureOf.h"

using namespace Qt::StringLiterals;
using namespace vandrel;

namespace {

QByteArray written(const QImage &picture)
{
    QBuffer file;
    file.open(QIODevice::WriteOnly);
    return writeBitmap(picture, file, [] { return true; }) ? file.data() : QByteArray();
}

QImage colourful(int width, int height)
{
    QImage picture(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            picture.setPixel(x, y, qRgb(x * 40 + 1, y * 3 + 2, x * y + 3));
    }
    return picture;
}

/// Takes so many octets and no more.
class FullDisk : public QIODevice
{
public:
    explicit FullDisk(qint64 room) : m_room(room) { open(WriteOnly | Unbuffered); }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *, qint64 size) override
    {
        m_room -= size;
        return m_room >= 0 ? size : -1;
    }

private:
    qint64 m_room;
};

} // namespace

/// Bitmap files, octet by octet.
class TestBitmapFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aWholeFile()
    {
        QImage picture(2, 2, QImage::Format_RGB32);
        picture.setPixel(0, 0, 0x00112233);
        picture.setPixel(1, 0, 0xff445566);
        picture.setPixel(0, 1, 0x80778899);
        picture.setPixel(1, 1, 0xffaabbcc);
        const QByteArray expected = QByteArray::fromHex("424d 46000000 0000 0000 36000000"
                                                        "28000000 02000000 02000000 0100 1800 00000000"
                                                        "10000000 c40e0000 c40e0000 00000000 00000000"
                                                        "998877 ccbbaa 0000"
                                                        "332211 665544 0000");
        QCOMPARE(written(picture).toHex(' '), expected.toHex(' '));
    }

    void everyWidthIsReadBackByAnotherReader_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        for (int width = 1; width <= 9; ++width)
            QTest::addRow("%d wide", width) << width << 3;
        for (const int height : {63, 64, 65, 200})
            QTest::addRow("%d high", height) << 6 << height;
    }
    void everyWidthIsReadBackByAnotherReader()
    {
        QFETCH(int, width);
        QFETCH(int, height);
        const QImage picture = colourful(width, height);
        const QImage read = QImage::fromData(written(picture), "bmp");
        QCOMPARE(read.convertToFormat(QImage::Format_RGB32), picture);
    }

    void anEmptyPictureIsRefused()
    {
        QBuffer file;
        file.open(QIODevice::WriteOnly);
        QCOMPARE(test::numberOf([&] { writeBitmap(QImage(), file, [] { return true; }); }),
                 error::InvalidPropertyValue);
        QVERIFY(file.data().isEmpty());
    }

    void aFullDiskEndsTheWriting()
    {
        FullDisk disk(5000);
        QVERIFY(!writeBitmap(colourful(100, 100), disk, [] { return true; }));
    }

    void itStopsWhenToldTo()
    {
        QBuffer file;
        file.open(QIODevice::WriteOnly);
        int asked = 0;
        QVERIFY(!writeBitmap(colourful(10, 1000), file, [&asked] { return ++asked < 3; }));
        QVERIFY(file.size() < 10 * 3 * 1000);
    }
};

QTEST_APPLESS_MAIN(TestBitmapFile)
#include "TestBitmapFile.moc"
