#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>
#include <QTextCursor>
#include <QUrl>

#include "controls/RichTextDocument.h"

using namespace vandrel;

namespace {

QByteArray png(QSize size, QColor colour)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray data;
    QBuffer buffer(&data);
    image.save(&buffer, "png");
    return data;
}

QImage resource(const QTextDocument &document, const QString &name)
{
    return document.resource(QTextDocument::ImageResource, QUrl(name)).value<QImage>();
}

} // namespace

class TestRichTextDocument : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void equalPicturesShareAName()
    {
        RichTextDocument one;
        RichTextDocument other;
        const DocumentPicture red{png({2, 2}, Qt::red), {30, 30}};
        const QString name = one.addPicture(red);
        QCOMPARE(one.addPicture(red), name);
        QCOMPARE(other.addPicture(red), name);
        QVERIFY(one.addPicture({red.data, {60, 30}}) != name);
        QVERIFY(one.addPicture({png({2, 2}, Qt::blue), {30, 30}}) != name);
        QCOMPARE(one.picture(name)->data, red.data);
        QVERIFY(!one.picture(QStringLiteral("other")));
    }

    void decodesItsPictures()
    {
        RichTextDocument document;
        const QString name = document.addPicture({png({3, 2}, Qt::red), {45, 30}});
        for (int time = 0; time < 2; ++time) {
            const QImage image = resource(document, name);
            QCOMPARE(image.size(), QSize(3, 2));
            QCOMPARE(image.pixelColor(1, 1), QColor(Qt::red));
        }
    }

    void showsAFrameForWhatCannotBeShown_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::newRow("metafile") << QByteArray();
        QTest::newRow("damaged") << QByteArray("\x89PNG and no more");
        QByteArray bomb = png({1, 1}, Qt::red);
        // Width and height of the header, made 100,000 each.
        bomb.replace(16, 8, QByteArray::fromHex("000186a0000186a0"));
        QTest::newRow("far too large") << bomb;
    }

    void showsAFrameForWhatCannotBeShown()
    {
        QFETCH(QByteArray, data);
        RichTextDocument document;
        QCOMPARE(resource(document, document.addPicture({data, {1500, 750}})).size(), QSize(100, 50));
    }

    void neverFetchesAForeignName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("remote") << QStringLiteral("http://127.0.0.1:1/x.png");
        QTest::newRow("resource") << QStringLiteral(
            "qrc:/qt-project.org/styles/commonstyle/images/file-16.png");
        QTest::newRow("data") << QStringLiteral("data:image/png;base64,AAAA");
        QTest::newRow("unknown picture") << QStringLiteral("vandrel-picture:0");
    }

    void neverFetchesAForeignName()
    {
        QFETCH(QString, name);
        const RichTextDocument document;
        const QImage image = resource(document, name);
        QCOMPARE(image.size(), QSize(48, 48));
        QCOMPARE(image.pixelColor(1, 24).alpha(), 0);
    }

    // Painting must not read the file either, as the toolkit does for a name it gets no picture for.
    void paintsNoForeignFile()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("secret.png"));
        QVERIFY(QImage::fromData(png({40, 40}, Qt::red)).save(path));
        RichTextDocument document;
        QTextCursor(&document).insertHtml(QStringLiteral("<img src=\"%1\" width=40 height=40>").arg(path));
        QImage painted(100, 100, QImage::Format_RGB32);
        painted.fill(Qt::white);
        QPainter painter(&painted);
        document.drawContents(&painter);
        painter.end();
        for (int y = 0; y < painted.height(); ++y) {
            for (int x = 0; x < painted.width(); ++x)
                QVERIFY(painted.pixelColor(x, y) != QColor(Qt::red));
        }
    }

    void offersNothingButPictures()
    {
        const RichTextDocument document;
        QVERIFY(
            !document.resource(QTextDocument::StyleSheetResource, QUrl(QStringLiteral("file:///etc/passwd")))
                 .isValid());
        QVERIFY(!document.resource(QTextDocument::HtmlResource, QUrl(QStringLiteral("file:///etc/passwd")))
                     .isValid());
    }
};

QTEST_MAIN(TestRichTextDocument)
#include "TestRichTextDocument.moc"
