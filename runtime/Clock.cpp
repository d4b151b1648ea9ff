#include "runtime/Clock.h"

#include <optional>

namespace vandrel {

namespace {
std::optional<QDateTime> fixedMoment;
}

QDateTime Clock::now()
{
    return fixedMoment ? *fixedMoment : QDateTime::currentDateTime();
}

void Clock::set(const QDateTime &moment)
{
    fixedMoment = moment;
}

void Clock::reset()
{
    fixedMoment.reset();
}

} // namespace vandrel
