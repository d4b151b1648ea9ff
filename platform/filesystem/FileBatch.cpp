#include "platform/filesystem/FileBatch.h"

#include <chrono>
#include <cmath>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include <QEventLoop>
#include <QFontMetrics>
#include <QProgressDialog>
#include <QTimer>

#include "runtime/EventGate.h"
#include "runtime/Events.h"
#include "runtime/SizeText.h"

namespace vandrel {

namespace {

using namespace std::chrono_literals;

// Most batches are over before the windows need any attention.
constexpr auto quiet = 50ms;
// After this, people wonder what is going on.
constexpr auto unannounced = 450ms;
constexpr auto lookInterval = 100ms;
// How long a cancelled file may take to notice; its file system may never answer.
constexpr auto farewell = 1000ms;
constexpr int boxSteps = 1000;
constexpr int nameWidth = 60;

/// What the batch's thread and the waiting one share. The thread keeps it alive when nobody waits any more.
class SharedBatch
{
public:
    explicit SharedBatch(FileBatch work) : m_work(std::move(work)) { }

    struct Place {
        int index = 0;
        qint64 done = 0;
        qint64 size = 0;
    };

    void run();
    void cancel();
    /// True when the batch ended within that time.
    bool waitFor(std::chrono::milliseconds time);
    /// Calls `loop`'s quit when the batch ends, until leave().
    void waitIn(QEventLoop *loop);
    void leave() { waitIn(nullptr); }
    Place place() const;
    FileBatchResult result() const;

private:
    bool goOn(qint64 done, qint64 size);
    FileBatchResult runAll();

    const FileBatch m_work;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    Place m_place;
    FileBatchResult m_result;
    bool m_isCancelled = false;
    bool m_hasEnded = false;
    QEventLoop *m_waiting = nullptr;
};

void SharedBatch::run()
{
    FileBatchResult result = runAll();
    if (m_work.end)
        m_work.end();
    const std::lock_guard lock(m_mutex);
    m_result = std::move(result);
    m_hasEnded = true;
    m_changed.notify_all();
    if (m_waiting)
        QMetaObject::invokeMethod(m_waiting, &QEventLoop::quit, Qt::QueuedConnection);
}

FileBatchResult SharedBatch::runAll()
{
    FileBatchResult result;
    const FileProgress progress = [this](qint64 done, qint64 size) { return goOn(done, size); };
    try {
        const auto count = static_cast<int>(m_work.names.size());
        while (result.done < count && !result.isCancelled) {
            if (goOn(0, 0) && m_work.step(result.done, progress)) {
                const std::lock_guard lock(m_mutex);
                m_place.index = ++result.done;
            } else {
                result.isCancelled = true;
            }
        }
    } catch (const RuntimeError &failure) {
        result.failure = failure;
    } catch (const std::bad_alloc &) {
        result.failure = RuntimeError(error::OutOfMemory);
    }
    return result;
}

bool SharedBatch::goOn(qint64 done, qint64 size)
{
    const std::lock_guard lock(m_mutex);
    m_place.done = done;
    m_place.size = size;
    return !m_isCancelled;
}

void SharedBatch::cancel()
{
    const std::lock_guard lock(m_mutex);
    m_isCancelled = true;
}

bool SharedBatch::waitFor(std::chrono::milliseconds time)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, time, [this] { return m_hasEnded; });
}

void SharedBatch::waitIn(QEventLoop *loop)
{
    const std::lock_guard lock(m_mutex);
    m_waiting = loop;
    if (loop && m_hasEnded)
        QMetaObject::invokeMethod(loop, &QEventLoop::quit, Qt::QueuedConnection);
}

SharedBatch::Place SharedBatch::place() const
{
    const std::lock_guard lock(m_mutex);
    return m_place;
}

// A thread that is still busy with its file was left to itself.
FileBatchResult SharedBatch::result() const
{
    const std::lock_guard lock(m_mutex);
    if (m_hasEnded)
        return m_result;
    return {m_place.index, {}, true};
}

/// The box that tells how far a batch has come.
class BatchBox
{
public:
    BatchBox(const FileBatch &batch, QWidget &owner) : m_batch(batch)
    {
        m_dialog.setParent(&owner, m_dialog.windowFlags());
        m_dialog.setObjectName(QStringLiteral("FileProgress"));
        m_dialog.setWindowTitle(batch.title);
        m_dialog.setWindowModality(Qt::ApplicationModal);
        m_dialog.setCancelButtonText(QProgressDialog::tr("&Cancel"));
        m_dialog.setRange(0, boxSteps);
        m_dialog.setAutoClose(false);
        m_dialog.setAutoReset(false);
        m_dialog.setMinimumWidth(m_dialog.fontMetrics().averageCharWidth() * nameWidth);
    }

    QProgressDialog &dialog() { return m_dialog; }
    void tell(const SharedBatch::Place &place);

private:
    QString textAt(const SharedBatch::Place &place) const;

    const FileBatch &m_batch;
    QProgressDialog m_dialog;
};

QString BatchBox::textAt(const SharedBatch::Place &place) const
{
    const auto count = m_batch.names.size();
    const QString name
        = m_dialog.fontMetrics().elidedText(m_batch.names.value(place.index), Qt::ElideMiddle,
                                            m_dialog.fontMetrics().averageCharWidth() * (nameWidth - 10));
    QString text = m_batch.text.arg(qMin<qsizetype>(place.index + 1, count)).arg(count) + u'\n' + name;
    if (place.size > 0)
        text += u'\n' + QProgressDialog::tr("%1 of %2").arg(sizeText(place.done), sizeText(place.size));
    return text;
}

void BatchBox::tell(const SharedBatch::Place &place)
{
    const double share
        = place.size > 0 ? static_cast<double>(place.done) / static_cast<double>(place.size) : 0.0;
    const double all = (place.index + share) / static_cast<double>(m_batch.names.size());
    m_dialog.setLabelText(textAt(place));
    m_dialog.setValue(static_cast<int>(std::lround(std::fmin(all, 1.0) * (boxSteps - 1))));
}

// The windows paint, and what the user does waits as it would in front of a busy program.
bool waitUnannounced(SharedBatch &shared)
{
    QEventLoop loop;
    shared.waitIn(&loop);
    QTimer::singleShot(unannounced, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    shared.leave();
    return shared.waitFor(0ms);
}

void waitWithBox(SharedBatch &shared, const FileBatch &batch, QWidget &owner)
{
    BatchBox box(batch, owner);
    QEventLoop loop;
    QTimer look;
    onEvent(&look, &QTimer::timeout, &loop, [&] { box.tell(shared.place()); });
    onEvent(&box.dialog(), &QProgressDialog::canceled, &loop, [&] {
        shared.cancel();
        loop.quit();
    });
    look.start(lookInterval);
    box.tell(shared.place());
    box.dialog().show();
    shared.waitIn(&loop);
    loop.exec();
    shared.leave();
}

} // namespace

FileBatchResult runBatch(const FileBatch &batch, QWidget &owner)
{
    const EventGate::Hold hold;
    const auto shared = std::make_shared<SharedBatch>(batch);
    std::thread([shared] { shared->run(); }).detach();
    if (!shared->waitFor(quiet) && !waitUnannounced(*shared)) {
        waitWithBox(*shared, batch, owner);
        shared->waitFor(farewell);
    }
    return shared->result();
}

} // namespace vandrel
