#pragma once

#include <optional>

#include <QList>
#include <QRect>
#include <QSize>

namespace vandrel {

/// A mode that a monitor offers.
struct RandrMode {
    quint32 id = 0;
    QSize size;
    /// In pictures a second.
    double frequency = 0;
};

/// A picture that a monitor, or several alike, show.
struct RandrPicture {
    /// The controller that makes it.
    quint32 controller = 0;
    quint32 mode = 0;
    /// The mode's size as the monitor has it.
    QSize modeSize;
    /// Which part of the screen it shows.
    QRect area;
    /// Whether the monitor stands on its side.
    bool isUpright = false;
};

/// What a screen of the X server is like.
struct RandrState {
    QSize size;
    QSize smallest;
    QSize largest;
    QList<RandrPicture> pictures;
    /// Which of the pictures the primary monitor shows; -1 where no monitor is on.
    qsizetype primary = -1;
    /// What the primary monitor offers.
    QList<RandrMode> modes;
};

/// A screen of an X server, by the RandR extension (version 1.3).
class RandrScreen
{
public:
    virtual ~RandrScreen() = default;

    /// Nothing where the server cannot be asked.
    virtual std::optional<RandrState> state() = 0;
    /// Keeps every other program from changing or drawing anything, until released.
    virtual void hold() = 0;
    virtual void release() = 0;
    /// Changes the size of the whole screen, which holds all pictures.
    virtual bool resize(const QSize &size) = 0;
    /// Gives a controller another mode and leaves all else of it as it is.
    virtual bool setMode(quint32 controller, quint32 mode) = 0;
};

/// Changes the primary monitor's mode to the one of that size with the highest frequency, and the screen's size with it;
/// other monitors keep mode and place. False where there is none or a step failed: the steps before are taken back then.
bool changeMode(RandrScreen &screen, const QSize &wanted);

} // namespace vandrel
