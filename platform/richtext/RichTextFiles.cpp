#include "platform/richtext/RichTextFiles.h"

#include <utility>

#include <QBuffer>
#include <QFile>

#include "platform/filesystem/AtomicFile.h"
#include "platform/filesystem/NativeFile.h"
#include "platform/richtext/FileKind.h"
#include "platform/richtext/PlainText.h"
#include "platform/richtext/RtfReader.h"
#include "platform/richtext/RtfWriter.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

constexpr qint64 readSize = 1024 * 1024;
// Pictures are written in RTF as two digits an octet, so that a document may be larger than any text.
constexpr qint64 maximumFileOctets = 1024LL * 1024 * 1024;

[[noreturn]] void failReading(const QString &dosPath)
{
    throw RuntimeError(
        error::DeviceIoError,
        QStringLiteral("%1. \"%2\" could not be read. Check the disk or the network connection.")
            .arg(runtimeErrorText(error::DeviceIoError), dosPath));
}

[[noreturn]] void failTooLarge(const QString &dosPath)
{
    throw RuntimeError(error::InvalidFileFormat,
                       QStringLiteral("%1. \"%2\" is larger than 1 GB. Split it into smaller files first.")
                           .arg(runtimeErrorText(error::InvalidFileFormat), dosPath));
}

QByteArray readPiece(QFile &file, qint64 size, const QString &dosPath)
{
    QByteArray piece = file.read(size);
    if (piece.isEmpty() && file.error() != QFileDevice::NoError)
        failReading(dosPath);
    return piece;
}

// The whole file, or nothing when cancelled. The size told by the system is only a first guess: a file may
// grow while it is read.
QByteArray readWhole(QFile &file, const QString &dosPath, DocumentProgress &progress)
{
    QByteArray octets;
    octets.reserve(std::min(file.size(), maximumFileOctets));
    progress.total = file.size();
    while (!progress.cancelled) {
        const QByteArray piece = readPiece(file, readSize, dosPath);
        if (piece.isEmpty())
            return octets;
        if (octets.size() + piece.size() > maximumFileOctets)
            failTooLarge(dosPath);
        octets += piece;
        progress.done = octets.size();
    }
    return {};
}

} // namespace

RichTextFiles::RichTextFiles(std::shared_ptr<const DriveView> drives) : m_drives(std::move(drives)) { }

qint64 RichTextFiles::probe(const QString &dosPath) const
{
    const auto file = openForReading(m_drives->toNative(dosPath), dosPath);
    recogniseFile(readPiece(*file, fileHeadSize, dosPath), dosPath);
    return file->size();
}

LoadedDocument RichTextFiles::load(const QString &dosPath, DocumentProgress &progress) const
{
    const auto file = openForReading(m_drives->toNative(dosPath), dosPath);
    const QByteArray octets = readWhole(*file, dosPath, progress);
    if (progress.cancelled)
        return {};
    if (recogniseFile(octets.first(std::min(octets.size(), fileHeadSize)), dosPath) == FileKind::RichText)
        return readRtf(octets, progress);
    return readPlainText(octets, progress);
}

void RichTextFiles::save(const QString &dosPath,
                         const QTextDocument &document,
                         const std::function<void()> &betweenBlocks) const
{
    AtomicFile file(m_drives->toNative(dosPath), dosPath);
    file.begin();
    writeRtf(document, file, betweenBlocks);
    file.commit();
}

QByteArray RichTextFiles::toRtf(const QTextDocument &document, int from, int to) const
{
    return writeRtf(document, from, to);
}

LoadedDocument RichTextFiles::fromRtf(const QByteArray &rtf) const
{
    DocumentProgress progress;
    return readRtf(rtf, progress, RtfExtent::Part);
}

} // namespace vandrel
