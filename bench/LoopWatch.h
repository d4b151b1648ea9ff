#pragma once

#include <memory>

#include <QObject>

namespace vandrel::bench {

/// Watches how long the event loop is away at a time, by a timer of so many milliseconds: what is told may be too long by
/// as much. Beside what keeps all processors busy, 1 ms takes a twentieth of one on some machines.
class LoopWatch : public QObject
{
    Q_OBJECT

public:
    explicit LoopWatch(int interval = 1);
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
