// 200 JPEGs of 12 megapixels in the thumbnails window beside vipsthumbnail, and the change of slides of that size.
//
//     apt-get install libvips-tools
//     thumbnails [RUNS] [FILES]

#include <cmath>
#include <cstdlib>
#include <string>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QImage>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include "BenchText.h"
#include "controls/FileListBox.h"
#include "controls/ImageBox.h"
#include "files/frmPic.h"
#include "files/frmView.h"
#include "platform/filesystem/DriveTable.h"
#include "platform/filesystem/NativeFileOperations.h"
#include "platform/filesystem/NativeFolders.h"
#include "platform/pictures/ThreadedDecoders.h"

using namespace vandrel;

namespace {

constexpr int width = 4000;
constexpr int height = 3000;
constexpr int different = 4;
constexpr int boxesSeenAtOnce = 4;
constexpr int slides = 8;

/// Something like a photograph: soft shapes, edges and noise.
QImage photograph(int seed)
{
    QImage image(width, height, QImage::Format_RGB32);
    unsigned noise = 12345U + static_cast<unsigned>(seed);
    for (int y = 0; y < height; ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            noise = noise * 1664525U + 1013904223U;
            const int grain = static_cast<int>(noise >> 28);
            const int soft
                = static_cast<int>(100 + 80 * std::sin((x + seed * 50) / 300.0) * std::cos(y / 200.0));
            const int edge = ((x / 160 + y / 120) % 2) * 30;
            line[x] = qRgb(soft + grain, soft / 2 + edge + grain, 200 - soft + grain);
        }
    }
    return image;
}

class Bench
{
public:
    explicit Bench(int files) : m_files(files), m_view(std::make_shared<DriveView>())
    {
        m_view->setDrive('c', m_folder.path().toUtf8());
        m_table = DriveTable::create(*m_view);
        m_view->setDrive('c', m_folder.path().toUtf8());
        for (int i = 0; i < different; ++i)
            photograph(i).save(path(i), "jpg", 90);
        for (int i = different; i < files; ++i)
            QFile::copy(path(i % different), path(i));
    }

    void thumbnails();
    double vips();
    void slideShow();

    std::vector<double> firstRow;
    std::vector<double> all;
    std::vector<double> changes;

private:
    QString path(int number) const { return m_folder.filePath(QStringLiteral("p%1.jpg").arg(number)); }
    std::unique_ptr<frmView> viewer();
    static bool areReady(const frmPic &window, int count);

    QTemporaryDir m_folder;
    int m_files;
    std::shared_ptr<DriveView> m_view;
    std::unique_ptr<DriveTable> m_table;
    WindowSlot m_thumbnails{[] { return new frmPic; }};
};

std::unique_ptr<frmView> Bench::viewer()
{
    auto view = std::make_unique<frmView>(ViewerControls{
        std::make_shared<NativeFolders>(m_view, *m_table), std::make_unique<NativeFileOperations>(m_view),
        std::make_shared<ThreadedDecoders>(m_view), &m_thumbnails});
    view->show();
    bench::settle();
    view->Command2[1]->click();
    return view;
}

bool Bench::areReady(const frmPic &window, int count)
{
    for (int i = 0; i < count; ++i) {
        if (window.Pic1[i]->Picture()->state() != ComingPicture::State::Ready)
            return false;
    }
    return true;
}

void Bench::thumbnails()
{
    const auto view = viewer();
    int painted = 0;
    QElapsedTimer timer;
    timer.start();
    view->Command1[1]->click();
    auto &window = static_cast<frmPic &>(*m_thumbnails.window());
    for (int i = 0; i < boxesSeenAtOnce; ++i)
        QObject::connect(window.Pic1[i], &ImageBox::shown, &window, [&painted] { ++painted; });
    while (painted < boxesSeenAtOnce)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    firstRow.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
    while (!areReady(window, m_files))
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    all.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
    window.close();
    bench::settle();
}

double Bench::vips()
{
    QStringList arguments{QStringLiteral("-s"), QStringLiteral("160x120"), QStringLiteral("-o"),
                          QStringLiteral("t_%s.jpg")};
    for (int i = 0; i < m_files; ++i)
        arguments.append(path(i));
    return bench::milliseconds([&arguments] {
        QProcess process;
        process.start(QStringLiteral("vipsthumbnail"), arguments);
        if (!process.waitForFinished(-1) || process.exitCode() != 0)
            std::exit(1);
    });
}

void Bench::slideShow()
{
    const auto view = viewer();
    int painted = 0;
    QObject::connect(view->Image1, &ImageBox::shown, view.get(), [&painted] { ++painted; });
    view->Text1->setText(QStringLiteral("65"));
    view->Command1[0]->click();
    while (painted == 0)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    for (int slide = 1; slide < slides; ++slide) {
        // Asleep but for events: a real-time process that only turned round would be stopped by the system for a while.
        QEventLoop decodedAhead;
        QTimer::singleShot(1000, &decodedAhead, &QEventLoop::quit);
        decodedAhead.exec();
        changes.push_back(bench::milliseconds([&] {
            view->Timer1_Timer();
            while (painted <= slide)
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }));
    }
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const int runs = argc > 1 ? std::stoi(argv[1]) : 3;
    const int files = argc > 2 ? std::stoi(argv[2]) : 200;
    Bench pictures(files);
    std::vector<double> theirs;
    for (int i = 0; i < runs; ++i) {
        pictures.thumbnails();
        theirs.push_back(pictures.vips());
    }
    bench::report("all thumbnails", bench::median(pictures.all), "vipsthumbnail", bench::median(theirs), 1);
    bench::reportAlone("first row painted", bench::median(pictures.firstRow), "ms", 300);
    pictures.slideShow();
    bench::reportAlone("slide decoded ahead painted", bench::median(pictures.changes), "ms", 20);
    bench::reportAlone("the slowest of the slides", bench::worst(pictures.changes), "ms");
    return 0;
}
