#pragma once

#include <memory>
#include <optional>

#include <QQueue>
#include <QTimer>

#include "controls/DriveView.h"
#include "controls/ScreenCapture.h"
#include "platform/capture/PreviewWindow.h"
#include "platform/capture/ScreenSource.h"

namespace vandrel {

/// Captures the desktop that the program runs on. Pictures are taken apart, written and reduced on a worker thread.
class DesktopScreenCapture final : public ScreenCapture
{
    Q_OBJECT

public:
    explicit DesktopScreenCapture(std::shared_ptr<const DriveView> drives,
                                  std::unique_ptr<ScreenSource> source = ScreenSource::ofDesktop());
    ~DesktopScreenCapture() override;

    void setPreview(bool show) override { m_next.preview = show; }
    void setCapture(bool start) override;
    void setDelay(double seconds) override;
    void setFile(const QString &dosPath) override;

private:
    /// One capture as it was asked for.
    struct Order {
        QString file;
        bool preview = false;
    };
    struct Job;

    void save(const ScreenPicture &picture);
    void finish(const std::shared_ptr<Job> &job);
    void end();
    void report(const QString &text);

    const std::shared_ptr<const DriveView> m_drives;
    const std::unique_ptr<ScreenSource> m_source;
    /// What the members say now.
    Order m_next;
    int m_delay = 0;
    /// The capture that waits for its delay.
    Order m_delayed;
    QTimer m_wait;
    /// Those whose delay is over; the first is being done.
    QQueue<Order> m_due;
    std::shared_ptr<Job> m_job;
    std::unique_ptr<PreviewWindow> m_preview;
};

} // namespace vandrel
