#pragma once

#include <memory>

#include <QObject>

namespace vandrel::bench {

/// Watches how long the event loop is away at a time, by a timer of 1 ms.
class LoopWatch : public QObject
{
    Q_OBJECT

public:
    LoopWatch();
    ~LoopWatch() override;
    double worstGap() const;
    /// Starts counting again.
    void restart();

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace vandrel::bench
