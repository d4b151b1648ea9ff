#include "tests/support/FakeDocumentFiles.h"

#include <QTextCursor>
#include <QThread>

namespace vandrel::test {

void FakeDocumentFiles::add(const QString &dosPath, const File &file)
{
    const std::lock_guard lock(m_mutex);
    m_files[dosPath] = file;
}

QString FakeDocumentFiles::text(const QString &dosPath) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_files.find(dosPath);
    return found == m_files.end() ? QString() : found->second.text;
}

bool FakeDocumentFiles::contains(const QString &dosPath) const
{
    const std::lock_guard lock(m_mutex);
    return m_files.contains(dosPath);
}

QStringList FakeDocumentFiles::calls() const
{
    const std::lock_guard lock(m_mutex);
    return m_calls;
}

FakeDocumentFiles::File FakeDocumentFiles::find(const QString &dosPath) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_files.find(dosPath);
    if (found == m_files.end())
        throw RuntimeError(error::FileNotFound);
    return found->second;
}

qint64 FakeDocumentFiles::probe(const QString &dosPath) const
{
    return find(dosPath).size;
}

LoadedDocument FakeDocumentFiles::load(const QString &dosPath, DocumentProgress &progress) const
{
    const File file = find(dosPath);
    {
        const std::lock_guard lock(m_mutex);
        m_calls.append(QStringLiteral("load %1").arg(dosPath));
    }
    while (m_held && !progress.cancelled)
        QThread::msleep(1);
    if (progress.cancelled)
        return {};
    if (file.failure)
        throw RuntimeError(*file.failure);
    LoadedDocument loaded;
    loaded.document = std::make_unique<RichTextDocument>();
    // What is loaded is not to be undone.
    loaded.document->setUndoRedoEnabled(false);
    QTextCharFormat format;
    if (file.points)
        format.setFontPointSize(*file.points);
    if (file.font)
        format.setFontFamilies({*file.font});
    QTextCursor(loaded.document.get()).insertText(file.text, format);
    loaded.notices = file.notices;
    return loaded;
}

void FakeDocumentFiles::save(const QString &dosPath,
                             const QTextDocument &document,
                             const std::function<void()> &betweenBlocks) const
{
    if (m_saveFailure)
        throw RuntimeError(*m_saveFailure);
    betweenBlocks();
    const std::lock_guard lock(m_mutex);
    m_calls.append(QStringLiteral("save %1").arg(dosPath));
    m_files[dosPath].text = document.toPlainText();
}

QByteArray FakeDocumentFiles::toRtf(const QTextDocument &, int, int) const
{
    return {};
}

LoadedDocument FakeDocumentFiles::fromRtf(const QByteArray &) const
{
    throw RuntimeError(error::InvalidFileFormat);
}

} // namespace vandrel::test
