#include "controls/RichTextLoader.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>

#include "runtime/ErrorReport.h"
#include "runtime/EventGate.h"

namespace vandrel {

// What the two threads share. Each side holds it, so neither outlives it.
struct RichTextLoader::Job {
    DocumentProgress progress;
    LoadedDocument result;
    std::optional<RuntimeError> failure;
};

RichTextLoader::RichTextLoader(std::shared_ptr<const DocumentFiles> files, QObject *parent)
    : QObject(parent), m_files(std::move(files))
{ }

RichTextLoader::~RichTextLoader()
{
    cancel();
}

void RichTextLoader::start(const QString &dosPath)
{
    cancel();
    const auto job = std::make_shared<Job>();
    m_job = job;
    const QPointer<RichTextLoader> loader(this);
    // The result travels through the application object: the loader may be gone by then, which only its own
    // thread can tell.
    QThreadPool::globalInstance()->start([job, loader, dosPath, files = m_files] {
        try {
            job->result = files->load(dosPath, job->progress);
            if (job->result.document)
                job->result.document->moveToThread(QCoreApplication::instance()->thread());
        } catch (...) {
            job->failure = currentFailure();
        }
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [job, loader] {
                if (loader)
                    EventGate::raise(loader, [job, loader] { loader->finish(job); });
            },
            Qt::QueuedConnection);
    });
}

void RichTextLoader::cancel()
{
    if (m_job)
        m_job->progress.cancelled = true;
    m_job.reset();
}

double RichTextLoader::progress() const
{
    const qint64 total = m_job ? m_job->progress.total.load() : 0;
    if (total <= 0)
        return -1;
    return static_cast<double>(m_job->progress.done.load()) / static_cast<double>(total);
}

void RichTextLoader::finish(const std::shared_ptr<Job> &job)
{
    if (job != m_job)
        return;
    m_job.reset();
    if (job->failure)
        Q_EMIT failed(*job->failure);
    else
        Q_EMIT loaded(std::make_shared<LoadedDocument>(std::move(job->result)));
}

} // namespace vandrel
