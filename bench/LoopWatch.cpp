#include "LoopWatch.h"

#include <algorithm>

#include <QElapsedTimer>
#include <QTimerEvent>

namespace vandrel::bench {

class LoopWatch::Private
{
public:
    QElapsedTimer sinceLast;
    double worst = 0;
};

LoopWatch::LoopWatch(int interval) : d(std::make_unique<Private>())
{
    d->sinceLast.start();
    startTimer(interval, Qt::PreciseTimer);
}

LoopWatch::~LoopWatch() = default;

double LoopWatch::worstGap() const
{
    return std::max(d->worst, static_cast<double>(d->sinceLast.nsecsElapsed()) / 1e6);
}

void LoopWatch::restart()
{
    d->worst = 0;
    d->sinceLast.restart();
}

void LoopWatch::timerEvent(QTimerEvent *)
{
    d->worst = worstGap();
    d->sinceLast.restart();
}

} // namespace vandrel::bench
