// Copying one file of 1 GiB, and 10,000 small ones, through the file manager's operations and with cp.
//
//     copy_files [RUNS] [FOLDER]
//
// The two take turns, the median counts. Each copies into an empty folder; what it wrote is not waited for on the disk.

#include <cstdlib>
#include <fstream>
#include <string>

#include <QApplication>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QWidget>

#include "BenchText.h"
#include "platform/filesystem/NativeFileOperations.h"

using namespace vandrel;

namespace {

constexpr int smallFiles = 10'000;
constexpr int smallSize = 4'000;
constexpr int mebibytes = 1024;

QString nameOf(int number)
{
    return QStringLiteral("file%1.bin").arg(number);
}

void makeFile(const QString &path, int pieces, int pieceSize)
{
    std::string piece(static_cast<std::size_t>(pieceSize), '\0');
    for (std::size_t i = 0; i < piece.size(); ++i)
        piece[i] = static_cast<char>(i * 7 + i / 251);
    std::ofstream out(path.toStdString(), std::ios::binary);
    for (int i = 0; i < pieces; ++i)
        out.write(piece.data(), static_cast<std::streamsize>(piece.size()));
}

/// A folder of files, and for each run an empty one for their copies.
class Bench
{
public:
    Bench(const QString &below, int files)
        : m_top(below + QStringLiteral("/copy-files-XXXXXX")), m_view(std::make_shared<DriveView>()),
          m_operations(m_view), m_files(files)
    {
        QDir(m_top.path()).mkdir(QStringLiteral("from"));
        m_view->setDrive('c', m_top.path().toUtf8());
    }

    QString source(int number) const { return m_top.filePath(QStringLiteral("from/") + nameOf(number)); }

    double ours()
    {
        takeNewTarget();
        std::vector<FileOperations::Copy> copies;
        for (int i = 0; i < m_files; ++i)
            copies.push_back({QStringLiteral("c:\\from\\") + nameOf(i),
                              QStringLiteral("c:\\%1\\").arg(m_target) + nameOf(i)});
        return bench::milliseconds([&] {
            if (m_operations.FileCopy(copies, m_owner).done != m_files)
                std::exit(1);
        });
    }

    double cp()
    {
        takeNewTarget();
        return bench::milliseconds([this] {
            QProcess process;
            process.start(
                QStringLiteral("cp"),
                {QStringLiteral("-r"), m_top.filePath(QStringLiteral("from/.")), m_top.filePath(m_target)});
            if (!process.waitForFinished(-1) || process.exitCode() != 0)
                std::exit(1);
        });
    }

private:
    // Where many files have just been deleted, a file system is slow for some seconds; one large file needs the room.
    void takeNewTarget()
    {
        if (m_files == 1)
            QDir(m_top.filePath(m_target)).removeRecursively();
        m_target = QStringLiteral("to%1").arg(++m_runs);
        QDir(m_top.path()).mkdir(m_target);
    }

    QTemporaryDir m_top;
    std::shared_ptr<DriveView> m_view;
    NativeFileOperations m_operations;
    QWidget m_owner;
    int m_files;
    QString m_target = QStringLiteral("to0");
    int m_runs = 0;
};

void compare(const char *what, Bench &files, int runs)
{
    std::vector<double> ours;
    std::vector<double> theirs;
    for (int i = 0; i < runs; ++i) {
        ours.push_back(files.ours());
        theirs.push_back(files.cp());
    }
    bench::report(what, bench::median(ours), "cp", bench::median(theirs), 1.2);
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const int runs = argc > 1 ? std::stoi(argv[1]) : 5;
    const QString below = argc > 2 ? QString::fromLocal8Bit(argv[2]) : QDir::tempPath();
    {
        Bench small(below, smallFiles);
        for (int i = 0; i < smallFiles; ++i)
            makeFile(small.source(i), 1, smallSize);
        compare("10,000 files of 4 KB", small, runs);
    }
    Bench large(below, 1);
    makeFile(large.source(0), mebibytes, 1024 * 1024);
    compare("a file of 1 GiB", large, runs);
    return 0;
}
