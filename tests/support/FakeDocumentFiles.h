#pragma once

#include <atomic>
#include <map>
#include <mutex>
#include <optional>

#include <QString>
#include <QStringList>

#include "controls/DocumentFiles.h"
#include "runtime/RuntimeError.h"

namespace vandrel::test {

/// Documents kept in memory, by path. Saving keeps the text; everything is recorded.
class FakeDocumentFiles final : public DocumentFiles
{
public:
    struct File {
        QString text;
        QStringList notices;
        /// What probe() says; a large one makes the box read in the background.
        qint64 size = 0;
        /// What reading raises, instead of giving the text.
        std::optional<RuntimeError> failure;
        /// The whole text's size in points, when it has one.
        std::optional<qreal> points;
        /// The whole text's font, when it has one.
        std::optional<QString> font;
    };

    void add(const QString &dosPath, const File &file);
    /// The text that was saved under that path, or added; a null text when there is none.
    QString text(const QString &dosPath) const;
    bool contains(const QString &dosPath) const;
    /// "load c:\a.rtf", "save c:\a.rtf", in order.
    QStringList calls() const;
    /// What the next saves raise.
    void failSaving(const RuntimeError &failure) { m_saveFailure = failure; }

    /// Readings in the background wait from now until they are let go or cancelled.
    void holdReading() { m_held = true; }
    void releaseReading() { m_held = false; }

    qint64 probe(const QString &dosPath) const override;
    LoadedDocument load(const QString &dosPath, DocumentProgress &progress) const override;
    void save(const QString &dosPath,
              const QTextDocument &document,
              const std::function<void()> &betweenBlocks) const override;
    QByteArray toRtf(const QTextDocument &document, int from, int to) const override;
    LoadedDocument fromRtf(const QByteArray &rtf) const override;

private:
    File find(const QString &dosPath) const;

    mutable std::mutex m_mutex;
    mutable std::map<QString, File> m_files;
    mutable QStringList m_calls;
    std::optional<RuntimeError> m_saveFailure;
    std::atomic<bool> m_held{false};
};

} // namespace vandrel::test
