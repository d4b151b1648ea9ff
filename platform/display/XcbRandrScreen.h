#pragma once

#include <memory>

#include "platform/display/RandrScreen.h"

namespace vandrel {

/// The first screen of the X server that DISPLAY names, on a connection of its own.
class XcbRandrScreen final : public RandrScreen
{
public:
    XcbRandrScreen();
    ~XcbRandrScreen() override;

    std::optional<RandrState> state() override;
    void hold() override;
    void release() override;
    bool resize(const QSize &size) override;
    bool setMode(quint32 controller, quint32 mode) override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace vandrel
