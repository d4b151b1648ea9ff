#include "controls/RichTextLoading.h"

#include <utility>

#include <QTextEdit>

#include "controls/LoadProgress.h"
#include "runtime/Events.h"

namespace vandrel {

namespace {

// Most files are there before anyone wonders.
constexpr int progressDelay = 1000;
constexpr int progressInterval = 100;

} // namespace

RichTextLoading::RichTextLoading(QTextEdit &box, std::shared_ptr<const DocumentFiles> files)
    : m_box(box), m_loader(std::move(files))
{
    onEvent(&m_timer, &QTimer::timeout, this, [this] { showProgress(); });
    onEvent(&m_loader, &RichTextLoader::loaded, this, [this](const std::shared_ptr<LoadedDocument> &result) {
        release();
        Q_EMIT loaded(result);
    });
    onEvent(&m_loader, &RichTextLoader::failed, this, [this](const RuntimeError &failure) {
        release();
        Q_EMIT failed(failure);
    });
}

RichTextLoading::~RichTextLoading() = default;

void RichTextLoading::start(const QString &dosPath)
{
    if (!isRunning())
        m_wasReadOnly = m_box.isReadOnly();
    m_box.setReadOnly(true);
    m_loader.start(dosPath);
    if (!m_progress)
        m_timer.start(progressDelay);
}

void RichTextLoading::cancel()
{
    if (!isRunning())
        return;
    stop();
    Q_EMIT cancelled();
}

void RichTextLoading::stop()
{
    if (!isRunning())
        return;
    m_loader.cancel();
    release();
}

void RichTextLoading::release()
{
    m_timer.stop();
    if (m_progress)
        m_progress->deleteLater();
    m_progress = nullptr;
    m_box.setReadOnly(m_wasReadOnly);
}

void RichTextLoading::showProgress()
{
    if (!m_progress) {
        m_progress = new LoadProgress(m_box.viewport());
        onEvent(m_progress, &LoadProgress::cancelled, this, &RichTextLoading::cancel);
        m_progress->center();
        m_progress->show();
        m_timer.start(progressInterval);
    }
    m_progress->setProgress(m_loader.progress());
}

void RichTextLoading::boxResized()
{
    if (m_progress)
        m_progress->center();
}

} // namespace vandrel
