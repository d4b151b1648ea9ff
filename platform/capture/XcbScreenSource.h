#pragma once

#include "platform/capture/ScreenSource.h"

namespace vandrel {

/// The root window of the X server that DISPLAY names: all monitors at one instant. Where no monitor shows anything the
/// picture is black.
class XcbScreenSource final : public ScreenSource
{
    Q_OBJECT

public:
    using ScreenSource::ScreenSource;

    void ask() override;

    /// Grabs the screen now, on the calling thread. Raises Device unavailable (68) where there is no such screen or no
    /// memory for its picture.
    static QImage grab();
};

} // namespace vandrel
