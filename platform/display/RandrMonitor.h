#pragma once

#include "platform/display/PrimaryMonitor.h"

namespace vandrel {

/// The primary monitor of the X server that DISPLAY names.
class RandrMonitor final : public PrimaryMonitor
{
public:
    QSize resolution() override;
    bool change(const QSize &wanted) override;
};

} // namespace vandrel
