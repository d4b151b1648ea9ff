#pragma once

#include <memory>

#include "controls/DocumentFiles.h"
#include "controls/DriveView.h"

namespace vandrel {

/// The rich-text box's files: RTF (Rich Text Format, read up to version 1.9.1, written as 7-bit text) and, for
/// reading only, plain text. Holds no state of its own between calls; the drive view is only read, on the
/// caller's thread in save() and on any thread in load().
class RichTextFiles final : public DocumentFiles
{
public:
    /// `drives` turns DOS-style paths into native ones; never null.
    explicit RichTextFiles(std::shared_ptr<const DriveView> drives);

    qint64 probe(const QString &dosPath) const override;
    LoadedDocument load(const QString &dosPath, DocumentProgress &progress) const override;
    void save(const QString &dosPath,
              const QTextDocument &document,
              const std::function<void()> &betweenBlocks) const override;
    QByteArray toRtf(const QTextDocument &document, int from, int to) const override;
    LoadedDocument fromRtf(const QByteArray &rtf) const override;

private:
    std::shared_ptr<const DriveView> m_drives;
};

} // namespace vandrel
