#include "platform/display/RandrScreen.h"

#include <algorithm>
#include <cmath>

namespace vandrel {

namespace {

/// Keeps a screen to itself as long as it is there.
class Hold
{
public:
    explicit Hold(RandrScreen &screen) : m_screen(screen) { m_screen.hold(); }
    ~Hold() { m_screen.release(); }
    Hold(const Hold &) = delete;
    Hold &operator=(const Hold &) = delete;

private:
    RandrScreen &m_screen;
};

QSize turned(const QSize &size, bool isUpright)
{
    return isUpright ? size.transposed() : size;
}

const RandrMode *bestMode(const RandrState &state, const QSize &wanted)
{
    const QSize size = turned(wanted, state.pictures[state.primary].isUpright);
    const RandrMode *best = nullptr;
    for (const RandrMode &mode : state.modes) {
        if (mode.size == size && (!best || mode.frequency > best->frequency))
            best = &mode;
    }
    return best;
}

// A picture can be enlarged or reduced for its monitor, by factors that stay.
QRect areaWith(const RandrPicture &picture, const QSize &modeSize)
{
    const QSize before = turned(picture.modeSize, picture.isUpright);
    const QSize after = turned(modeSize, picture.isUpright);
    const auto scaled = [](int area, int mode, int newMode) {
        return mode > 0 ? static_cast<int>(std::ceil(double(area) * newMode / mode)) : newMode;
    };
    return {picture.area.topLeft(),
            QSize(scaled(picture.area.width(), before.width(), after.width()),
                  scaled(picture.area.height(), before.height(), after.height()))};
}

// The least screen that holds all pictures once the primary one has that area. It begins at the upper left corner.
QSize sizeWith(const RandrState &state, const QRect &primaryArea)
{
    QRect all(QPoint(), QSize(primaryArea.x() + primaryArea.width(), primaryArea.y() + primaryArea.height()));
    for (qsizetype i = 0; i < state.pictures.size(); ++i) {
        const QRect area = i == state.primary ? primaryArea : state.pictures[i].area;
        all |= QRect(QPoint(), QSize(area.x() + area.width(), area.y() + area.height()));
    }
    return all.size().expandedTo(state.smallest);
}

bool fits(const QSize &size, const QSize &largest)
{
    return size.width() <= largest.width() && size.height() <= largest.height();
}

// A picture must never reach beyond the screen, so that the screen grows before and shrinks afterwards.
bool apply(RandrScreen &screen, const RandrState &state, const RandrMode &mode)
{
    const RandrPicture &picture = state.pictures[state.primary];
    const QSize after = sizeWith(state, areaWith(picture, mode.size));
    const QSize meanwhile = after.expandedTo(state.size);
    if (!fits(meanwhile, state.largest) || (meanwhile != state.size && !screen.resize(meanwhile)))
        return false;
    const bool isSet = screen.setMode(picture.controller, mode.id);
    if (isSet && (after == meanwhile || screen.resize(after)))
        return true;
    if (isSet)
        screen.setMode(picture.controller, picture.mode);
    if (meanwhile != state.size)
        screen.resize(state.size);
    return false;
}

} // namespace

bool changeMode(RandrScreen &screen, const QSize &wanted)
{
    const Hold hold(screen);
    const std::optional<RandrState> state = screen.state();
    if (!state || state->primary < 0)
        return false;
    const RandrPicture &picture = state->pictures[state->primary];
    if (turned(picture.modeSize, picture.isUpright) == wanted)
        return true;
    const RandrMode *mode = bestMode(*state, wanted);
    return mode && apply(screen, *state, *mode);
}

} // namespace vandrel
