#pragma once

#include <memory>
#include <optional>

#include <QObject>

#include "controls/DocumentFiles.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

/// Reads one document at a time on a thread of its own. Destroying the loader, or starting it again, cancels
/// the reading under way at once; the thread then ends by itself and touches nothing of the loader's.
///
/// To be used on the user-interface thread.
class RichTextLoader : public QObject
{
    Q_OBJECT

public:
    explicit RichTextLoader(std::shared_ptr<const DocumentFiles> files, QObject *parent = nullptr);
    ~RichTextLoader() override;

    void start(const QString &dosPath);
    bool isRunning() const { return m_job != nullptr; }
    /// Stops the reading; no signal follows.
    void cancel();
    /// How much of the file is read, 0 to 1; negative while its size is not known.
    double progress() const;

Q_SIGNALS:
    /// The document is read and belongs to this thread; the receiver takes it from `result`.
    void loaded(const std::shared_ptr<vandrel::LoadedDocument> &result);
    /// Reading failed with what stopped it.
    void failed(const vandrel::RuntimeError &failure);

private:
    struct Job;
    void finish(const std::shared_ptr<Job> &job);

    std::shared_ptr<const DocumentFiles> m_files;
    std::shared_ptr<Job> m_job;
};

} // namespace vandrel
