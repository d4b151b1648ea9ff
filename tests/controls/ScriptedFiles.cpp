#include "ScriptedFiles.h"

#include <QTextCursor>
#include <QTextDocumentFragment>

#include "runtime/RuntimeError.h"

namespace vandrel {

void ScriptedFiles::add(const QString &path,
                        qint64 size,
                        std::function<LoadedDocument(DocumentProgress &)> load)
{
    m_files[path] = {size, std::move(load)};
}

void ScriptedFiles::addText(const QString &path, const QString &text, qint64 size)
{
    add(path, size, [text](DocumentProgress &) { return textDocument(text); });
}

const ScriptedFiles::File &ScriptedFiles::file(const QString &path) const
{
    const auto found = m_files.find(path);
    if (found == m_files.end())
        throw RuntimeError(error::FileNotFound);
    return found->second;
}

qint64 ScriptedFiles::probe(const QString &dosPath) const
{
    return file(dosPath).size;
}

LoadedDocument ScriptedFiles::load(const QString &dosPath, DocumentProgress &progress) const
{
    return file(dosPath).load(progress);
}

void ScriptedFiles::save(const QString &dosPath,
                         const QTextDocument &document,
                         const std::function<void()> &betweenBlocks) const
{
    if (whileSaving)
        whileSaving(betweenBlocks);
    saved[dosPath] = document.toPlainText();
}

QByteArray ScriptedFiles::toRtf(const QTextDocument &document, int from, int to) const
{
    QTextCursor cursor(const_cast<QTextDocument *>(&document));
    cursor.setPosition(from);
    cursor.setPosition(to, QTextCursor::KeepAnchor);
    return cursor.selection().toHtml().toUtf8();
}

LoadedDocument ScriptedFiles::fromRtf(const QByteArray &rtf) const
{
    if (!rtf.contains("<html>"))
        throw RuntimeError(error::InvalidFileFormat);
    LoadedDocument loaded;
    loaded.document = std::make_unique<RichTextDocument>();
    loaded.document->setHtml(QString::fromUtf8(rtf));
    return loaded;
}

LoadedDocument textDocument(const QString &text)
{
    LoadedDocument loaded;
    loaded.kind = LoadedDocument::Kind::PlainText;
    loaded.document = std::make_unique<RichTextDocument>();
    loaded.document->setUndoRedoEnabled(false);
    QTextCursor(loaded.document.get()).insertText(text);
    return loaded;
}

} // namespace vandrel
