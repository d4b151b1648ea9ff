#include "platform/capture/DesktopScreenCapture.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <utility>

#include <QCoreApplication>
#include <QPointer>
#include <QThreadPool>

#include "platform/capture/BitmapFile.h"
#include "platform/filesystem/AtomicFile.h"
#include "runtime/ErrorReport.h"
#include "runtime/EventGate.h"
#include "runtime/Prompts.h"

namespace vandrel {

namespace {

constexpr double longestDelay = 24.0 * 24 * 60 * 60;

QString withoutBlanksAround(const QString &text)
{
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && text[first] == u' ')
        ++first;
    while (last > first && text[last - 1] == u' ')
        --last;
    return text.mid(first, last - first);
}

} // namespace

/// What the worker and the control share. Each side holds it, so neither outlives it.
struct DesktopScreenCapture::Job {
    Order order;
    std::atomic<bool> isCancelled = false;
    PictureSizes sizes;
    QString problem;

    void run(const DriveView &drives, const ScreenPicture &picture)
    {
        QByteArray native;
        QImage image;
        try {
            native = drives.toNative(order.file);
            image = picture();
        } catch (...) {
            problem = notCaptured(order.file, currentFailure().text());
            return;
        }
        try {
            save(native, image);
        } catch (...) {
            problem = currentFailure().text();
        }
    }

    // Failures to write name the file themselves.
    void save(const QByteArray &native, const QImage &image)
    {
        AtomicFile file(native, order.file);
        file.begin();
        writeBitmap(image, file, [this] { return !isCancelled; });
        if (isCancelled)
            return;
        file.commit();
        if (order.preview)
            sizes = pictureSizes(image);
    }

    static QString notCaptured(const QString &file, const QString &reason)
    {
        return tr("The screen could not be captured to \"%1\". %2").arg(file, reason);
    }
};

DesktopScreenCapture::DesktopScreenCapture(std::shared_ptr<const DriveView> drives,
                                           std::unique_ptr<ScreenSource> source)
    : m_drives(std::move(drives)), m_source(std::move(source))
{
    m_wait.setSingleShot(true);
    m_wait.setTimerType(Qt::PreciseTimer);
    connect(&m_wait, &QTimer::timeout, this, [this] {
        m_due.enqueue(m_delayed);
        if (m_due.size() == 1)
            m_source->ask();
    });
    connect(m_source.get(), &ScreenSource::given, this, &DesktopScreenCapture::save);
    connect(m_source.get(), &ScreenSource::refused, this, [this](const QString &reason) {
        report(Job::notCaptured(m_due.head().file, reason));
        end();
    });
}

DesktopScreenCapture::~DesktopScreenCapture()
{
    if (m_job)
        m_job->isCancelled = true;
}

void DesktopScreenCapture::setDelay(double seconds)
{
    m_delay = static_cast<int>(std::lround(std::clamp(seconds, 0.0, longestDelay) * 1000));
}

void DesktopScreenCapture::setFile(const QString &dosPath)
{
    m_next.file = withoutBlanksAround(dosPath);
}

// Without a delay the capture waits for the next turn of the event loop, when menus have closed and buttons are up.
void DesktopScreenCapture::setCapture(bool start)
{
    m_wait.stop();
    if (!start)
        return;
    m_delayed = m_next;
    m_wait.start(m_delay);
}

// The result travels through the application object: the control may be gone by then, which only its own thread can
// tell.
void DesktopScreenCapture::save(const ScreenPicture &picture)
{
    m_job = std::make_shared<Job>();
    m_job->order = m_due.head();
    const QPointer<DesktopScreenCapture> self(this);
    QThreadPool::globalInstance()->start([job = m_job, drives = m_drives, picture, self] {
        job->run(*drives, picture);
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [job, self] {
                if (self)
                    self->finish(job);
            },
            Qt::QueuedConnection);
    });
}

void DesktopScreenCapture::finish(const std::shared_ptr<Job> &job)
{
    m_job.reset();
    if (!job->problem.isEmpty()) {
        report(job->problem);
    } else if (!job->sizes.isEmpty()) {
        EventGate::raise(this, [this, job] {
            if (!m_preview)
                m_preview = std::make_unique<PreviewWindow>();
            m_preview->present(job->sizes, job->order.file);
        });
    }
    end();
}

void DesktopScreenCapture::end()
{
    m_due.dequeue();
    if (!m_due.isEmpty())
        m_source->ask();
}

void DesktopScreenCapture::report(const QString &text)
{
    EventGate::raise(this, [text] { MsgBox(text, Buttons::OkOnly, BoxIcon::Critical); });
}

} // namespace vandrel
