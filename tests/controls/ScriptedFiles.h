#pragma once

#include <atomic>
#include <functional>
#include <map>

#include <QSemaphore>

#include "controls/DocumentFiles.h"

namespace vandrel {

/// Document files in memory. "RTF" is the document's HTML here: what matters to the box is that it comes
/// back.
class ScriptedFiles : public DocumentFiles
{
public:
    /// Enters a file whose load() makes the document.
    void add(const QString &path, qint64 size, std::function<LoadedDocument(DocumentProgress &)> load);
    /// Enters a file of plain text; `size` decides how the box loads it.
    void addText(const QString &path, const QString &text, qint64 size = 1);

    qint64 probe(const QString &dosPath) const override;
    LoadedDocument load(const QString &dosPath, DocumentProgress &progress) const override;
    void save(const QString &dosPath,
              const QTextDocument &document,
              const std::function<void()> &betweenBlocks) const override;
    QByteArray toRtf(const QTextDocument &document, int from, int to) const override;
    LoadedDocument fromRtf(const QByteArray &rtf) const override;

    /// What was saved last, by path.
    mutable std::map<QString, QString> saved;
    /// Runs inside save(), in place of writing, when set.
    std::function<void(const std::function<void()> &betweenBlocks)> whileSaving;

private:
    struct File {
        qint64 size = 0;
        std::function<LoadedDocument(DocumentProgress &)> load;
    };
    const File &file(const QString &path) const;

    std::map<QString, File> m_files;
};

/// A document of plain text.
LoadedDocument textDocument(const QString &text);

} // namespace vandrel
