// A folder of 100,000 files until it is shown: the file list beside `ls -U` and the toolkit's own file model, and how
// long the event loop is away while files keep coming.
//
//     local_folder [RUNS]

#include <fstream>
#include <string>

#include <QApplication>
#include <QElapsedTimer>
#include <QFileSystemModel>
#include <QListView>
#include <QProcess>
#include <QTemporaryDir>

#include "BenchText.h"
#include "controls/FileListBox.h"
#include "platform/filesystem/DriveTable.h"
#include "platform/filesystem/NativeFolders.h"

using namespace vandrel;

namespace {

constexpr int fileCount = 100'000;
constexpr int changes = 200;

class PaintCount : public QObject
{
public:
    explicit PaintCount(QAbstractItemView *view) { view->viewport()->installEventFilter(this); }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            ++paints;
        return false;
    }

    int paints = 0;
};

void makeFile(const QTemporaryDir &folder, int number)
{
    std::ofstream(folder.filePath(QStringLiteral("file%1.bin").arg(number)).toStdString());
}

void showList(FileListBox &list, const QString &folder)
{
    list.setPath(QStringLiteral("z:\\"));
    bench::settle();
    const PaintCount count(&list);
    list.setPath(folder);
    while (count.paints == 0)
        bench::settle();
}

void showModel(const QString &folder)
{
    QListView view;
    view.setUniformItemSizes(true);
    view.resize(300, 400);
    view.show();
    QFileSystemModel model;
    view.setModel(&model);
    view.setRootIndex(model.setRootPath(folder));
    while (model.rowCount(view.rootIndex()) < fileCount)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    const PaintCount count(&view);
    while (count.paints == 0) {
        view.viewport()->update();
        bench::settle();
    }
}

void list(const QString &folder)
{
    QProcess ls;
    ls.setStandardOutputFile(QProcess::nullDevice());
    ls.start(QStringLiteral("ls"), {QStringLiteral("-U"), folder});
    ls.waitForFinished(-1);
}

double longestAwayWhileFilesCome(const QTemporaryDir &folder, FileListBox &list)
{
    QElapsedTimer timer;
    bench::LoopWatch watch;
    const int before = list.ListCount();
    for (int i = 0; i < changes; ++i) {
        makeFile(folder, fileCount + i);
        timer.start();
        while (timer.elapsed() < 20)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    while (list.ListCount() < before + changes)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return watch.worstGap();
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const int runs = argc > 1 ? std::stoi(argv[1]) : 5;
    const QTemporaryDir folder;
    for (int i = 0; i < fileCount; ++i)
        makeFile(folder, i);
    const auto view = std::make_shared<DriveView>();
    const std::unique_ptr<DriveTable> drives = DriveTable::create(*view);
    const auto folders = std::make_shared<NativeFolders>(view, *drives);
    FileListBox box(folders);
    box.resize(300, 400);
    box.show();
    const QString dosFolder = view->toDosOn('z', folder.path().toUtf8());
    std::vector<double> ours;
    std::vector<double> model;
    std::vector<double> ls;
    for (int i = 0; i < runs; ++i) {
        ours.push_back(bench::milliseconds([&] { showList(box, dosFolder); }));
        ls.push_back(bench::milliseconds([&] { list(folder.path()); }));
        model.push_back(bench::milliseconds([&] { showModel(folder.path()); }));
    }
    bench::report("100,000 files until shown", bench::median(ours), "ls -U", bench::median(ls));
    bench::report("100,000 files until shown", bench::median(ours), "file model", bench::median(model), 1);
    bench::reportAlone("loop away while 200 more files come", longestAwayWhileFilesCome(folder, box), "ms",
                       50);
    return box.ListCount() == fileCount + changes ? 0 : 1;
}
