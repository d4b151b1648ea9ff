// Runs a fuzz target over the files, and the files of the folders, given as arguments. Stands in for the fuzzer's
// own main in builds without one.
#include <cstdint>
#include <cstdio>

#include <QDir>
#include <QFile>
#include <QFileInfo>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

QStringList filesOf(const QString &path)
{
    if (!QFileInfo(path).isDir())
        return {path};
    QStringList files;
    const QFileInfoList entries = QDir(path).entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo &entry : entries)
        files.append(entry.filePath());
    return files;
}

bool replay(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
        return false;
    }
    const QByteArray octets = file.readAll();
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(octets.constData()),
                           static_cast<std::size_t>(octets.size()));
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        const QStringList files = filesOf(QString::fromLocal8Bit(argv[i]));
        for (const QString &file : files) {
            if (!replay(file))
                return 1;
            ++replayed;
        }
    }
    std::printf("%d files replayed\n", replayed);
    return replayed > 0 ? 0 : 1;
}
