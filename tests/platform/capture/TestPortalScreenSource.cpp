#include <memory>

#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QFile>
#include <QImage>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include "platform/capture/PortalScreenSource.h"
#include "platform/capture/XcbScreenSource.h"
#include "runtime/RuntimeError.h"
#include "tests/platform/bus/PrivateBus.h"
#include "tests/runtime/FailureOf.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

namespace {

const QString portalName = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString requestInterface = u"org.freedesktop.portal.Request"_s;

/// A desktop's portal as its documentation describes it, with a user who answers as a test wants.
class Portal : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Screenshot")

public:
    explicit Portal(const QDBusConnection &bus) : m_bus(bus)
    {
        m_bus.registerObject(portalPath, this, QDBusConnection::ExportAllSlots);
        m_bus.registerService(portalName);
    }

    void respond()
    {
        QDBusMessage signal
            = QDBusMessage::createTargetedSignal(asker, request, requestInterface, u"Response"_s);
        m_bus.send(signal << response << results);
    }

    bool answersBeforeTheCall = false;
    bool namesTheRequestAsItLikes = false;
    uint response = 0;
    QVariantMap results;
    /// What it was asked for.
    QString asker;
    QString request;
    QVariantMap options;

public Q_SLOTS:
    QDBusObjectPath Screenshot(const QString &, const QVariantMap &asked)
    {
        asker = message().service();
        options = asked;
        QString sender = asker.mid(1);
        sender.replace(u'.', u'_');
        request = namesTheRequestAsItLikes ? u"/org/freedesktop/portal/desktop/request/old/1"_s
                                           : u"/org/freedesktop/portal/desktop/request/%1/%2"_s.arg(
                                               sender, asked.value(u"handle_token"_s).toString());
        if (answersBeforeTheCall)
            respond();
        return QDBusObjectPath(request);
    }

private:
    QDBusConnection m_bus;
};

/// The source on a bus of its own, with a portal on it.
class Desk
{
public:
    Desk() { image.fill(0xff123456); }

    void savePicture()
    {
        image.save(file);
        portal.results = {{u"uri"_s, QUrl::fromLocalFile(file).toString(QUrl::FullyEncoded)}};
    }

    // Asks and waits for the answer; the reason of a refusal, or null.
    QString refusal(PortalScreenSource &source)
    {
        QSignalSpy refused(&source, &ScreenSource::refused);
        source.ask();
        return refused.wait(60'000) ? refused.first().first().toString() : QString();
    }

    PrivateBus bus;
    Portal portal{bus.connection(u"portal"_s)};
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"picture of the screen ü.png"_s);
    QImage image{321, 200, QImage::Format_RGB32};
};

} // namespace

/// The screenshot portal, played by the test on a bus of its own.
class TestPortalScreenSource : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thePictureOfTheDesktopIsRead_data()
    {
        QTest::addColumn<bool>("before");
        QTest::addColumn<bool>("old");
        QTest::newRow("answered later") << false << false;
        QTest::newRow("answered before the call returns") << true << false;
        QTest::newRow("an old portal") << false << true;
    }
    void thePictureOfTheDesktopIsRead()
    {
        QFETCH(bool, before);
        QFETCH(bool, old);
        Desk desk;
        desk.savePicture();
        desk.portal.answersBeforeTheCall = before;
        desk.portal.namesTheRequestAsItLikes = old;
        PortalScreenSource source(desk.bus.connection(u"suite"_s));
        QImage taken;
        connect(&source, &ScreenSource::given, this,
                [&taken](const ScreenPicture &picture) { taken = picture(); });
        source.ask();
        QTRY_VERIFY(!desk.portal.asker.isEmpty());
        QCOMPARE(desk.portal.options.value(u"interactive"_s), QVariant(false));
        if (old) // Nobody can listen before the name is known.
            QTRY_VERIFY(answersOnceTheNameIsKnown(desk, taken));
        else if (!before)
            desk.portal.respond();
        QTRY_COMPARE(taken, desk.image);
        QCOMPARE(taken.format(), QImage::Format_RGB32);
        QVERIFY(!QFile::exists(desk.file));
    }

    void aRefusalIsSaid_data()
    {
        QTest::addColumn<uint>("response");
        QTest::addColumn<QString>("uri");
        QTest::addColumn<QString>("reason");
        QTest::newRow("refused by the user")
            << 1U << QString() << u"The desktop refused to give a picture of the screen."_s;
        QTest::newRow("failed") << 2U << QString()
                                << u"The desktop could not take a picture of the screen."_s;
        QTest::newRow("no picture") << 0U << QString()
                                    << u"The desktop could not take a picture of the screen."_s;
        QTest::newRow("a picture elsewhere") << 0U << u"https://example.org/a.png"_s
                                             << u"The desktop could not take a picture of the screen."_s;
    }
    void aRefusalIsSaid()
    {
        QFETCH(uint, response);
        QFETCH(QString, uri);
        QFETCH(QString, reason);
        Desk desk;
        desk.portal.answersBeforeTheCall = true;
        desk.portal.response = response;
        desk.portal.results = {{u"uri"_s, uri}};
        PortalScreenSource source(desk.bus.connection(u"suite"_s));
        QCOMPARE(desk.refusal(source), reason);
        // It may be asked again.
        QCOMPARE(desk.refusal(source), reason);
    }

    void aDesktopWithoutPortalIsSaid()
    {
        Desk desk;
        desk.bus.connection(u"portal"_s).unregisterService(portalName);
        PortalScreenSource source(desk.bus.connection(u"suite"_s));
        const QString reason = desk.refusal(source);
        QVERIFY2(reason.startsWith(u"This desktop has no portal"), qPrintable(reason));
    }

    void aPortalThatEndsIsSaid()
    {
        Desk desk;
        PortalScreenSource source(desk.bus.connection(u"suite"_s));
        QSignalSpy refused(&source, &ScreenSource::refused);
        source.ask();
        QTRY_VERIFY(!desk.portal.asker.isEmpty());
        desk.bus.connection(u"portal"_s).unregisterService(portalName);
        QVERIFY(refused.wait(60'000));
        QCOMPARE(refused.first().first().toString(),
                 u"The desktop's portal ended before it gave a picture of the screen."_s);
    }

    void aPortalThatNeverAnswersIsGivenUp()
    {
        Desk desk;
        PortalScreenSource source(desk.bus.connection(u"suite"_s), 50);
        QCOMPARE(desk.refusal(source),
                 u"The desktop did not answer the question for a picture of the screen."_s);
    }

    void withoutABusItIsRefused()
    {
        PortalScreenSource source{QDBusConnection(u"no such bus"_s)};
        QSignalSpy refused(&source, &ScreenSource::refused);
        source.ask();
        QCOMPARE(refused.size(), 1);
    }

    void aFileThatIsNoPictureIsSaid_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::newRow("missing") << QByteArray();
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("no picture") << QByteArray(3000, 'x');
        QTest::newRow("cut off") << QByteArray::fromHex("89504e470d0a1a0a0000000d49484452");
    }
    void aFileThatIsNoPictureIsSaid()
    {
        QFETCH(QByteArray, contents);
        Desk desk;
        desk.savePicture();
        QFile::remove(desk.file);
        QFile file(desk.file);
        if (!contents.isNull()) {
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(contents);
            file.close();
        }
        desk.portal.answersBeforeTheCall = true;
        PortalScreenSource source(desk.bus.connection(u"suite"_s));
        ScreenPicture taken;
        connect(&source, &ScreenSource::given, this,
                [&taken](const ScreenPicture &picture) { taken = picture; });
        source.ask();
        QTRY_VERIFY(taken);
        const auto failure = test::failureOf(taken);
        QVERIFY(failure);
        QVERIFY2(failure->text().startsWith(u"The desktop's picture of the screen cannot be read"),
                 failure->what());
        QVERIFY(!QFile::exists(desk.file));
    }

    void theSourceFitsTheDesktop_data()
    {
        QTest::addColumn<QByteArray>("wayland");
        QTest::addColumn<bool>("isPortal");
        QTest::newRow("X11") << QByteArray() << false;
        QTest::newRow("a variable left empty") << QByteArray("") << false;
        QTest::newRow("Wayland") << QByteArray("wayland-0") << true;
    }
    void theSourceFitsTheDesktop()
    {
        QFETCH(QByteArray, wayland);
        QFETCH(bool, isPortal);
        const QByteArray before = qgetenv("WAYLAND_DISPLAY");
        qunsetenv("WAYLAND_DISPLAY");
        if (!wayland.isNull())
            qputenv("WAYLAND_DISPLAY", wayland);
        const std::unique_ptr<ScreenSource> source = ScreenSource::ofDesktop();
        qputenv("WAYLAND_DISPLAY", before);
        QCOMPARE(qobject_cast<PortalScreenSource *>(source.get()) != nullptr, isPortal);
        QCOMPARE(qobject_cast<XcbScreenSource *>(source.get()) != nullptr, !isPortal);
    }

    void aSourceThatGoesHearsNothingMore()
    {
        Desk desk;
        desk.savePicture();
        auto source = std::make_unique<PortalScreenSource>(desk.bus.connection(u"suite"_s));
        source->ask();
        QTRY_VERIFY(!desk.portal.asker.isEmpty());
        source.reset();
        desk.portal.respond();
        QCoreApplication::processEvents();
        QVERIFY(QFile::exists(desk.file));
    }

private:
    // Whether the picture has come, after the answer was sent once more.
    static bool answersOnceTheNameIsKnown(Desk &desk, const QImage &taken)
    {
        if (taken.isNull())
            desk.portal.respond();
        return !taken.isNull();
    }
};

QTEST_GUILESS_MAIN(TestPortalScreenSource)
#include "TestPortalScreenSource.moc"
