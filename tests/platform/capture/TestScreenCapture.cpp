#include <memory>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>

#include "platform/capture/DesktopScreenCapture.h"
#include "runtime/EventGate.h"
#include "runtime/RuntimeError.h"
#include "tests/platform/filesystem/SmallDisk.h"
#include "tests/support/ScriptedPrompts.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

namespace {

constexpr QSize screenSize(801, 600);

/// A screen that hands over what a test wants.
class ScriptedScreen final : public ScreenSource
{
    Q_OBJECT

public:
    void ask() override
    {
        ++asked;
        if (!refusal.isEmpty())
            Q_EMIT refused(refusal);
        else if (picture)
            Q_EMIT given(picture);
    }

    static QImage inColour(QRgb colour)
    {
        QImage image(screenSize, QImage::Format_RGB32);
        image.fill(colour);
        return image;
    }

    /// How often a picture was asked for.
    int asked = 0;
    QString refusal;
    /// Without one a question stays unanswered.
    ScreenPicture picture = [] { return inColour(0xff123456); };
};

/// The control on its scripted screen, with a home of its own.
class Desk
{
public:
    Desk()
    {
        drives->setDrive('c', QFile::encodeName(home.path()));
        auto scripted = std::make_unique<ScriptedScreen>();
        screen = scripted.get();
        control = std::make_unique<DesktopScreenCapture>(drives, std::move(scripted));
        control->setFile(u"c:\\shot.bmp"_s);
    }

    ~Desk()
    {
        control.reset();
        QThreadPool::globalInstance()->waitForDone();
    }

    QString path(const QString &name) const { return home.filePath(name); }
    QRgb colourIn(const QString &name) const { return QImage(path(name)).pixel(0, 0); }
    bool isSaved(const QString &name, QRgb colour) const
    {
        return QFile::exists(path(name)) && colourIn(name) == colour;
    }
    QStringList files() const { return QDir(home.path()).entryList(QDir::Files | QDir::Hidden); }

    static QWidget *preview()
    {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (window->isVisible() && window->objectName() == u"Preview")
                return window;
        }
        return nullptr;
    }

    const QTemporaryDir home;
    const std::shared_ptr<DriveView> drives = std::make_shared<DriveView>();
    ScriptedPrompts prompts;
    ScriptedScreen *screen = nullptr;
    std::unique_ptr<DesktopScreenCapture> control;
};

constexpr QRgb shown = 0xff123456;

} // namespace

/// The capture control: what it asks for, when, and what becomes of the picture.
class TestScreenCapture : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thePictureIsSavedAsABitmapOf24Bits()
    {
        const Desk desk;
        desk.control->setCapture(true);
        QCOMPARE(desk.screen->asked, 0);
        QTRY_VERIFY(desk.isSaved(u"shot.bmp"_s, shown));
        const QImage saved(desk.path(u"shot.bmp"_s), "bmp");
        QCOMPARE(saved.size(), screenSize);
        QCOMPARE(QFile(desk.path(u"shot.bmp"_s)).size(), 54 + (801 * 3 + 1) * 600);
        QCOMPARE(desk.files(), QStringList{u"shot.bmp"_s});
        QCOMPARE(desk.prompts.shown(), 0);
        QVERIFY(!Desk::preview());
    }

    void blanksAroundTheNameDoNotCount()
    {
        const Desk desk;
        desk.control->setFile(u"  c:\\my shot.bmp "_s);
        desk.control->setCapture(true);
        QTRY_VERIFY(desk.isSaved(u"my shot.bmp"_s, shown));
    }

    void theDelayIsWaitedFor()
    {
        const Desk desk;
        desk.control->setDelay(0.25);
        QElapsedTimer since;
        since.start();
        desk.control->setCapture(true);
        QTRY_COMPARE(desk.screen->asked, 1);
        QVERIFY(since.elapsed() >= 250);
    }

    void noDelayIsTheNextTurn_data()
    {
        QTest::addColumn<double>("delay");
        QTest::newRow("none") << 0.0;
        QTest::newRow("negative") << -3.0;
        QTest::newRow("minus infinity") << -std::numeric_limits<double>::infinity();
    }
    void noDelayIsTheNextTurn()
    {
        QFETCH(double, delay);
        const Desk desk;
        desk.control->setDelay(delay);
        desk.control->setCapture(true);
        QCoreApplication::processEvents();
        QCOMPARE(desk.screen->asked, 1);
    }

    void anEndlessDelayIsALongOne()
    {
        const Desk desk;
        desk.control->setDelay(1e300);
        desk.control->setCapture(true);
        QCoreApplication::processEvents();
        QCOMPARE(desk.screen->asked, 0);
        desk.control->setDelay(0);
        desk.control->setCapture(true);
        QTRY_VERIFY(desk.isSaved(u"shot.bmp"_s, shown));
        QCOMPARE(desk.screen->asked, 1);
    }

    void falseCallsOffACaptureThatWaits()
    {
        const Desk desk;
        desk.control->setCapture(true);
        desk.control->setCapture(false);
        QCoreApplication::processEvents();
        QCOMPARE(desk.screen->asked, 0);
        QCOMPARE(desk.files(), QStringList());
    }

    void theMembersCountAsTheyWereWhenAsked()
    {
        const Desk desk;
        desk.control->setPreview(false);
        desk.control->setCapture(true);
        desk.control->setFile(u"c:\\other.bmp"_s);
        desk.control->setPreview(true);
        QTRY_VERIFY(desk.isSaved(u"shot.bmp"_s, shown));
        QCOMPARE(desk.files(), QStringList{u"shot.bmp"_s});
    }

    void thoseThatAreDueAreDoneInOrder()
    {
        const Desk desk;
        QSemaphore mayGoOn;
        desk.screen->picture = [&mayGoOn] {
            mayGoOn.acquire();
            return ScriptedScreen::inColour(0xff000001);
        };
        desk.control->setCapture(true);
        QCoreApplication::processEvents();
        QCOMPARE(desk.screen->asked, 1);
        desk.control->setFile(u"c:\\second.bmp"_s);
        desk.control->setCapture(true);
        QCoreApplication::processEvents();
        QCOMPARE(desk.screen->asked, 1);
        desk.screen->picture = [] { return ScriptedScreen::inColour(0xff000002); };
        mayGoOn.release();
        QTRY_VERIFY(desk.isSaved(u"second.bmp"_s, 0xff000002));
        QVERIFY(desk.isSaved(u"shot.bmp"_s, 0xff000001));
    }

    void thePreviewComesOnceTheFileIsThere()
    {
        const Desk desk;
        desk.control->setPreview(true);
        desk.control->setCapture(true);
        QTRY_VERIFY(Desk::preview());
        QVERIFY(desk.isSaved(u"shot.bmp"_s, shown));
        QWidget *window = Desk::preview();
        QCOMPARE(window->windowTitle(), u"Preview - c:\\shot.bmp"_s);
        const QSize half = window->screen()->availableSize() / 2;
        QVERIFY(window->width() <= half.width() && window->height() <= half.height());
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QCOMPARE(window->grab().toImage().pixel(window->width() / 2, window->height() / 2), shown);
    }

    void thePreviewFitsThePictureToTheWindow()
    {
        const Desk desk;
        desk.control->setPreview(true);
        desk.control->setCapture(true);
        QTRY_VERIFY(Desk::preview());
        QWidget *window = Desk::preview();
        window->resize(640, 240);
        const QImage seen = window->grab().toImage();
        const int width = 240 * screenSize.width() / screenSize.height();
        QCOMPARE(seen.pixel(320, 2), shown);
        QCOMPARE(seen.pixel(320, 237), shown);
        QCOMPARE(seen.pixel(320 - width / 2 + 3, 120), shown);
        QVERIFY(seen.pixel(320 - width / 2 - 3, 120) != shown);
        QVERIFY(seen.pixel(320 + width / 2 + 3, 120) != shown);
    }

    void oneWindowServesAllPreviews()
    {
        const Desk desk;
        desk.control->setPreview(true);
        desk.control->setCapture(true);
        QTRY_VERIFY(Desk::preview());
        QWidget *const first = Desk::preview();
        desk.control->setFile(u"c:\\second.bmp"_s);
        desk.control->setCapture(true);
        QTRY_COMPARE(first->windowTitle(), u"Preview - c:\\second.bmp"_s);
        QTest::keyClick(first, Qt::Key_Escape);
        QVERIFY(!Desk::preview());
        desk.control->setCapture(true);
        QTRY_COMPARE(Desk::preview(), first);
    }

    void thePreviewWaitsBehindABox()
    {
        const Desk desk;
        desk.control->setPreview(true);
        {
            const EventGate::Hold box;
            desk.control->setCapture(true);
            QTRY_VERIFY(desk.isSaved(u"shot.bmp"_s, shown));
            QThreadPool::globalInstance()->waitForDone();
            QCoreApplication::processEvents();
            QVERIFY(!Desk::preview());
        }
        QTRY_VERIFY(Desk::preview());
    }

    void aRefusalIsToldWithTheFilesName()
    {
        Desk desk;
        desk.screen->refusal = u"The desktop refused."_s;
        desk.prompts
            .expect(u"The screen could not be captured to \"c:\\shot.bmp\". The desktop refused."_s,
                    u"Vandrel"_s)
            .buttons(Buttons::OkOnly)
            .icon(BoxIcon::Critical);
        desk.control->setCapture(true);
        QTRY_VERIFY(desk.prompts.allShown());
        QCOMPARE(desk.files(), QStringList());
    }

    void aPictureThatCannotBeTakenIsToldWithTheFilesName()
    {
        Desk desk;
        desk.screen->picture
            = []() -> QImage { throw RuntimeError(error::DeviceUnavailable, u"It is dark."_s); };
        desk.prompts
            .expect(u"The screen could not be captured to \"c:\\shot.bmp\". It is dark."_s, u"Vandrel"_s)
            .icon(BoxIcon::Critical);
        desk.control->setCapture(true);
        QTRY_VERIFY(desk.prompts.allShown());
    }

    void aFileThatCannotBeWrittenIsToldAndLeftAsItWas_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("text");
        QTest::newRow("no such folder") << u"c:\\nowhere\\shot.bmp"_s
                                        << u"Path not found. \"c:\\nowhere\\shot.bmp\" could not be written, "
                                           u"and what was saved there before is "
                                           "unchanged. Choose an existing folder."_s;
        QTest::newRow("no such drive")
            << u"q:\\shot.bmp"_s
            << u"The screen could not be captured to \"q:\\shot.bmp\". Device unavailable"_s;
        QTest::newRow("read-only file")
            << u"c:\\kept.bmp"_s
            << u"Permission denied. \"c:\\kept.bmp\" could not be written, and what was saved there before "
               u"is "
               "unchanged. Check the rights of the file and of its folder, or choose another place."_s;
        QTest::newRow("a folder")
            << u"c:\\"_s
            << u"Path/File access error. \"c:\\\" could not be written, and what was saved there before is unchanged. Choose a plain file."_s;
    }
    void aFileThatCannotBeWrittenIsToldAndLeftAsItWas()
    {
        QFETCH(QString, file);
        QFETCH(QString, text);
        Desk desk;
        QFile kept(desk.path(u"kept.bmp"_s));
        QVERIFY(kept.open(QIODevice::WriteOnly));
        kept.write("kept");
        kept.close();
        kept.setPermissions(QFileDevice::ReadOwner);
        QString told;
        Witness witness(told);
        desk.control->setFile(file);
        desk.control->setCapture(true);
        QTRY_VERIFY(!told.isEmpty());
        QCOMPARE(told, text);
        QVERIFY(kept.open(QIODevice::ReadOnly));
        QCOMPARE(kept.readAll(), QByteArray("kept"));
        QCOMPARE(desk.files(), QStringList{u"kept.bmp"_s});
    }

    /// 801 x 600 pixels do not go onto a disk of one million octets.
    void aFullDiskLeavesThePreviousFile()
    {
        Desk desk;
        QVERIFY(QDir(desk.home.path()).mkdir(u"disk"_s));
        const SmallDisk disk(QFile::encodeName(desk.path(u"disk"_s)));
        if (!disk.isThere())
            QSKIP("no file system can be mounted here");
        QFile kept(desk.path(u"disk/shot.bmp"_s));
        QVERIFY(kept.open(QIODevice::WriteOnly));
        kept.write("kept");
        kept.close();
        QString told;
        {
            Witness witness(told);
            desk.control->setFile(u"c:\\disk\\shot.bmp"_s);
            desk.control->setCapture(true);
            QTRY_VERIFY(!told.isEmpty());
        }
        QVERIFY2(told.startsWith(u"Disk full. \"c:\\disk\\shot.bmp\" could not be written"_s),
                 qPrintable(told));
        QVERIFY(kept.open(QIODevice::ReadOnly));
        QCOMPARE(kept.readAll(), QByteArray("kept"));
        kept.close();
        QCOMPARE(QDir(desk.path(u"disk"_s)).entryList(QDir::Files | QDir::Hidden),
                 QStringList(u"shot.bmp"_s));
        QThreadPool::globalInstance()->waitForDone();
    }

    void afterAFailureTheNextCaptureIsMade()
    {
        Desk desk;
        desk.screen->refusal = u"No."_s;
        desk.prompts.expect(u"The screen could not be captured to \"c:\\shot.bmp\". No."_s, u"Vandrel"_s);
        desk.control->setCapture(true);
        QTRY_VERIFY(desk.prompts.allShown());
        desk.screen->refusal.clear();
        desk.control->setCapture(true);
        QTRY_VERIFY(desk.isSaved(u"shot.bmp"_s, shown));
    }

    void aControlThatGoesSavesNothingMore()
    {
        Desk desk;
        QFile before(desk.path(u"shot.bmp"_s));
        QVERIFY(before.open(QIODevice::WriteOnly));
        before.write("before");
        before.close();
        QSemaphore isTaken;
        QSemaphore mayGoOn;
        desk.screen->picture = [&] {
            isTaken.release();
            mayGoOn.acquire();
            return ScriptedScreen::inColour(shown);
        };
        desk.control->setPreview(true);
        desk.control->setCapture(true);
        QTRY_COMPARE(isTaken.available(), 1);
        desk.control.reset();
        mayGoOn.release();
        QVERIFY(QThreadPool::globalInstance()->waitForDone(60'000));
        QCoreApplication::processEvents();
        QVERIFY(before.open(QIODevice::ReadOnly));
        QCOMPARE(before.readAll(), QByteArray("before"));
        QCOMPARE(desk.files(), QStringList{u"shot.bmp"_s});
        QVERIFY(!Desk::preview());
    }

    void aControlThatGoesTakesThePreviewWithIt()
    {
        Desk desk;
        desk.control->setPreview(true);
        desk.control->setCapture(true);
        QTRY_VERIFY(Desk::preview());
        desk.control.reset();
        QVERIFY(!Desk::preview());
    }

private:
    /// Prompts that note what they are told.
    class Witness final : public Prompts
    {
    public:
        explicit Witness(QString &told) : m_told(told) { setPrompts(this); }
        ~Witness() override { setPrompts(nullptr); }
        Witness(const Witness &) = delete;
        Witness &operator=(const Witness &) = delete;

        Answer messageBox(const MessageBoxRequest &request) override
        {
            m_told = request.text;
            return Answer::Ok;
        }
        QString inputBox(const InputBoxRequest &) override { return {}; }
        void errorBox(const RuntimeError &failure) override { m_told = failure.text(); }

    private:
        QString &m_told;
    };
};

QTEST_MAIN(TestScreenCapture)
#include "TestScreenCapture.moc"
