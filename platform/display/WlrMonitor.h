#pragma once

#include "platform/display/PrimaryMonitor.h"

namespace vandrel {

/// The primary monitor of a Wayland desktop whose compositor offers zwlr_output_manager_v1 (Sway and others on wlroots):
/// the one at the upper left, since such a desktop knows no primary one. Other monitors keep their mode and place.
class WlrMonitor final : public PrimaryMonitor
{
public:
    /// Whether the desktop's compositor offers the interface.
    static bool isOffered();

    QSize resolution() override;
    bool change(const QSize &wanted) override;
};

} // namespace vandrel
