#include <QTest>

#include "app/SuiteIcon.h"

using namespace vandrel;

class TestSuiteIcon : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itHasItsSizes();
    void itIsThePictureThatTheToolkitReads();
};

void TestSuiteIcon::itHasItsSizes()
{
    const QIcon icon = suiteIcon();
    QCOMPARE(icon.availableSizes().size(), 8);
    for (const int size : {16, 22, 24, 32, 48, 64, 96, 128}) {
        const QImage image = icon.pixmap(QSize(size, size), 1.0).toImage();
        QCOMPARE(image.size(), QSize(size, size));
        QVERIFY(image.hasAlphaChannel());
        QVERIFY(qAlpha(image.pixel(size / 2, size / 2)) > 0);
    }
}

void TestSuiteIcon::itIsThePictureThatTheToolkitReads()
{
    const QImage image = suiteIcon().pixmap(QSize(48, 48), 1.0).toImage();
    const QImage read = QPixmap(QStringLiteral(":/vandrel/icon-48.png")).toImage();
    QCOMPARE(image.convertToFormat(QImage::Format_ARGB32), read.convertToFormat(QImage::Format_ARGB32));
}

QTEST_MAIN(TestSuiteIcon)
#include "TestSuiteIcon.moc"
