#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include <QString>
#include <QStringList>

#include "controls/RichTextDocument.h"

namespace vandrel {

/// A document read from a file.
struct LoadedDocument {
    enum class Kind { RichText, PlainText };

    std::unique_ptr<RichTextDocument> document;
    Kind kind = Kind::RichText;
    /// What the user should know, one sentence each ("1 header is kept but not shown."); often empty.
    QStringList notices;
};

/// How far a long read or write has come. `cancelled` may be set from any thread.
struct DocumentProgress {
    std::atomic<qint64> done{0};
    std::atomic<qint64> total{0};
    std::atomic<bool> cancelled{false};
};

/// Reads and writes the rich-text box's files. The implementation lives in platform/richtext.
class DocumentFiles
{
public:
    virtual ~DocumentFiles() = default;

    /// Checks that the file can be opened and is of a kind that can be read, from its first octets, and returns
    /// its size in octets. Raises File not found (53), Path not found (76), Permission denied (70),
    /// Path/File access error (75: a folder) or Invalid file format (321: a binary format, named in the text).
    virtual qint64 probe(const QString &dosPath) const = 0;

    /// Reads a document. May be called on any thread; the document belongs to the calling thread. Raises the
    /// errors of probe(), Device I/O error (57), and Invalid file format (321) for a document beyond the
    /// reader's limits. Returns a null document when cancelled.
    virtual LoadedDocument load(const QString &dosPath, DocumentProgress &progress) const = 0;

    /// Writes the document as RTF under that name, whatever its extension: to a temporary file beside it,
    /// renamed when complete, keeping permissions and following a symbolic link to its target. On failure the old
    /// file is untouched and Disk full (61), Permission denied (70), Path/File access error (75) or Path not
    /// found (76) is raised. Called on the document's thread; `betweenBlocks` is called between paragraphs, often,
    /// so that the caller can keep its window painted.
    virtual void save(const QString &dosPath,
                      const QTextDocument &document,
                      const std::function<void()> &betweenBlocks) const = 0;

    /// The part of the document between two positions as RTF, and a document made from such octets, for the
    /// clipboard. The part ends inside a paragraph: its last \par is a paragraph break like any other, and what
    /// `fromRtf` makes has one more paragraph than breaks. `fromRtf` raises Invalid file format (321).
    virtual QByteArray toRtf(const QTextDocument &document, int from, int to) const = 0;
    virtual LoadedDocument fromRtf(const QByteArray &rtf) const = 0;
};

} // namespace vandrel
