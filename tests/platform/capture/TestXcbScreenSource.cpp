#include <QColorSpace>
#include <QTemporaryDir>
#include <QTest>

#include "platform/capture/XcbScreenSource.h"
#include "runtime/RuntimeError.h"
#include "tests/platform/xserver/XServer.h"
#include "tests/platform/xserver/XcbRootPattern.h"
#include "tests/runtime/FailureOf.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

namespace {

QStringList screenOf(const QString &size)
{
    return {u"-screen"_s, u"0"_s, size};
}

// The screen as another program grabs it; null where that failed.
QImage grabbedByImport()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"screen.png"_s);
    XServer::output({u"import"_s, u"-window"_s, u"root"_s, file});
    QImage image(file);
    // Pictures are alike only if what they tell of their colours is.
    image.setColorSpace({});
    return image.convertToFormat(QImage::Format_RGB32);
}

bool setMonitor(const QString &name, const QString &geometry, const QString &output)
{
    return !XServer::output({u"xrandr"_s, u"--setmonitor"_s, name, geometry, output}).isNull();
}

} // namespace

/// Pictures of real X servers, beside those that another program takes.
class TestXcbScreenSource : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thePictureIsThatOfAnotherGrabber_data()
    {
        QTest::addColumn<QStringList>("server");
        QTest::newRow("24 bit") << screenOf(u"800x600x24"_s);
        QTest::newRow("an odd width") << screenOf(u"803x331x24"_s);
        QTest::newRow("large, a piece at a time")
            << screenOf(u"2600x1700x24"_s) + QStringList{u"-extension"_s, u"MIT-SHM"_s};
        QTest::newRow("without shared memory")
            << screenOf(u"803x331x24"_s) + QStringList{u"-extension"_s, u"MIT-SHM"_s};
        QTest::newRow("without monitors")
            << screenOf(u"640x480x24"_s) + QStringList{u"-extension"_s, u"RANDR"_s};
    }
    void thePictureIsThatOfAnotherGrabber()
    {
        QFETCH(QStringList, server);
        const XServer screen(u"Xvfb"_s, server);
        QVERIFY(screen.isThere());
        const QStringList size = server.at(2).split(u'x');
        const QImage shown = pattern({size[0].toInt(), size[1].toInt()});
        QVERIFY(paintRoot(shown));
        const QImage picture = XcbScreenSource::grab();
        QCOMPARE(picture.format(), QImage::Format_RGB32);
        QCOMPARE(picture, shown);
        QCOMPARE(picture, grabbedByImport());
    }

    void fewerColoursAreTakenAsTheyAre_data()
    {
        QTest::addColumn<QStringList>("server");
        QTest::newRow("16 bit") << screenOf(u"403x300x16"_s);
        QTest::newRow("15 bit") << screenOf(u"403x300x15"_s);
        QTest::newRow("16 bit, without shared memory")
            << screenOf(u"403x300x16"_s) + QStringList{u"-extension"_s, u"MIT-SHM"_s};
    }
    void fewerColoursAreTakenAsTheyAre()
    {
        QFETCH(QStringList, server);
        const XServer screen(u"Xvfb"_s, server);
        QVERIFY(screen.isThere());
        QVERIFY(!XServer::output({u"xsetroot"_s, u"-solid"_s, u"#ff0000"_s}).isNull());
        const QImage picture = XcbScreenSource::grab();
        QCOMPARE(picture.size(), QSize(403, 300));
        QCOMPARE(picture.pixel(402, 299), qRgb(255, 0, 0));
        QVERIFY(!XServer::output({u"xsetroot"_s, u"-mod"_s, u"5"_s, u"7"_s, u"-fg"_s, u"#0000ff"_s, u"-bg"_s,
                                  u"#ffffff"_s})
                     .isNull());
        QCOMPARE(XcbScreenSource::grab(), grabbedByImport());
    }

    void coloursFromATableCannotBeCaptured()
    {
        const XServer screen(u"Xvfb"_s, screenOf(u"320x200x8"_s));
        QVERIFY(screen.isThere());
        const auto failure = failureOf([] { XcbScreenSource::grab(); });
        QVERIFY(failure);
        QCOMPARE(failure->number(), error::DeviceUnavailable);
        QVERIFY2(failure->text().contains(u"bits per pixel"), failure->what());
    }

    void twoMonitorsAreOnePicture()
    {
        const XServer screen(u"Xvfb"_s, screenOf(u"1000x500x24"_s));
        QVERIFY(screen.isThere());
        const QImage shown = pattern({1000, 500});
        QVERIFY(paintRoot(shown));
        QVERIFY(setMonitor(u"left"_s, u"600/150x500/120+0+0"_s, u"screen"_s));
        QVERIFY(setMonitor(u"right"_s, u"400/100x500/120+600+0"_s, u"none"_s));
        QCOMPARE(XcbScreenSource::grab(), shown);
    }

    void whereNoMonitorShowsAnythingThePictureIsBlack()
    {
        const XServer screen(u"Xvfb"_s, screenOf(u"1000x500x24"_s));
        QVERIFY(screen.isThere());
        QImage shown = pattern({1000, 500});
        QVERIFY(paintRoot(shown));
        QVERIFY(setMonitor(u"left"_s, u"600/150x500/120+0+0"_s, u"screen"_s));
        QVERIFY(setMonitor(u"right"_s, u"400/100x300/80+600+100"_s, u"none"_s));
        const QImage picture = XcbScreenSource::grab();
        for (int y = 0; y < 500; ++y) {
            for (int x = 600; x < 1000 && (y < 100 || y >= 400); ++x)
                shown.setPixel(x, y, qRgb(0, 0, 0));
        }
        QCOMPARE(picture, shown);
    }

    void anXServerThatIsNotThereIsSaid()
    {
        const QByteArray before = qgetenv("DISPLAY");
        qputenv("DISPLAY", ":987654");
        QCOMPARE(numberOf([] { XcbScreenSource::grab(); }), error::DeviceUnavailable);
        qputenv("DISPLAY", before);
    }
};

QTEST_GUILESS_MAIN(TestXcbScreenSource)
#include "TestXcbScreenSource.moc"
