#include "platform/display/MutterConfig.h"

#include <algorithm>
#include <cmath>

namespace vandrel {

namespace {

/// Monitors, and how large the place that they share is in the units of the desktop.
QSize extent(const MutterState &state, const MutterPlace &place, const QSize &mode, double scale)
{
    const QSize size = place.isUpright() ? mode.transposed() : mode;
    if (state.countsPixels() || scale <= 0)
        return size;
    return {static_cast<int>(std::lround(size.width() / scale)),
            static_cast<int>(std::lround(size.height() / scale))};
}

QSize currentSize(const MutterState &state, const MutterPlace &place)
{
    const MutterOutput *output = place.names.isEmpty() ? nullptr : state.output(place.names.first());
    const MutterMode *mode = output ? output->current() : nullptr;
    return mode ? mode->size() : QSize();
}

// A scale that the new mode does not know is given up.
double scaleFor(const MutterMode &mode, double scale)
{
    const auto isAlike = [scale](double each) { return std::abs(each - scale) < 0.01; };
    return std::any_of(mode.scales.begin(), mode.scales.end(), isAlike) ? scale : 1.0;
}

// The modes that the monitors at a place get: the wanted one, or the one in force for an empty size.
QList<MutterChosenMode> modesFor(const MutterState &state, const MutterPlace &place, const QSize &wanted)
{
    QList<MutterChosenMode> chosen;
    for (const MutterName &name : place.names) {
        const MutterOutput *output = state.output(name);
        const MutterMode *mode = nullptr;
        if (output)
            mode = wanted.isEmpty() ? output->current() : output->best(wanted);
        if (!mode)
            return {};
        chosen.append({name.connector, mode->id, {}});
    }
    return chosen;
}

} // namespace

const MutterMode *MutterOutput::current() const
{
    const auto found
        = std::find_if(modes.begin(), modes.end(), [](const MutterMode &mode) { return mode.isCurrent(); });
    return found == modes.end() ? nullptr : &*found;
}

const MutterMode *MutterOutput::best(const QSize &size) const
{
    const MutterMode *best = nullptr;
    for (const MutterMode &mode : modes) {
        if (mode.size() == size && (!best || mode.frequency > best->frequency))
            best = &mode;
    }
    return best;
}

const MutterOutput *MutterState::output(const MutterName &name) const
{
    const auto found = std::find_if(outputs.begin(), outputs.end(), [&name](const MutterOutput &output) {
        return output.name.connector == name.connector;
    });
    return found == outputs.end() ? nullptr : &*found;
}

qsizetype MutterState::primary() const
{
    for (qsizetype i = 0; i < places.size(); ++i) {
        if (places[i].isPrimary)
            return i;
    }
    return places.isEmpty() ? -1 : 0;
}

QList<MutterChosenPlace> mutterConfig(const MutterState &state, const QSize &wanted)
{
    const qsizetype primary = state.primary();
    if (primary < 0 || wanted.isEmpty())
        return {};
    const MutterPlace &changed = state.places[primary];
    const QSize mode = changed.isUpright() ? wanted.transposed() : wanted;
    const MutterOutput *output = changed.names.isEmpty() ? nullptr : state.output(changed.names.first());
    const MutterMode *best = output ? output->best(mode) : nullptr;
    if (!best)
        return {};
    const double scale = scaleFor(*best, changed.scale);
    const QSize before = extent(state, changed, currentSize(state, changed), changed.scale);
    const QSize growth = extent(state, changed, mode, scale) - before;

    QList<MutterChosenPlace> config;
    for (qsizetype i = 0; i < state.places.size(); ++i) {
        const MutterPlace &place = state.places[i];
        const bool isChanged = i == primary;
        MutterChosenPlace chosen{
            place.x,         place.y,         isChanged ? scale : place.scale,
            place.transform, place.isPrimary, modesFor(state, place, isChanged ? mode : QSize())};
        if (chosen.modes.isEmpty())
            return {};
        if (!isChanged && place.x >= changed.x + before.width())
            chosen.x += growth.width();
        if (!isChanged && place.y >= changed.y + before.height())
            chosen.y += growth.height();
        config.append(chosen);
    }
    return config;
}

QDBusArgument &operator<<(QDBusArgument &to, const MutterChosenMode &mode)
{
    to.beginStructure();
    to << mode.connector << mode.mode << mode.properties;
    to.endStructure();
    return to;
}

const QDBusArgument &operator>>(const QDBusArgument &from, MutterChosenMode &mode)
{
    from.beginStructure();
    from >> mode.connector >> mode.mode >> mode.properties;
    from.endStructure();
    return from;
}

QDBusArgument &operator<<(QDBusArgument &to, const MutterChosenPlace &place)
{
    to.beginStructure();
    to << place.x << place.y << place.scale << place.transform << place.isPrimary << place.modes;
    to.endStructure();
    return to;
}

const QDBusArgument &operator>>(const QDBusArgument &from, MutterChosenPlace &place)
{
    from.beginStructure();
    from >> place.x >> place.y >> place.scale >> place.transform >> place.isPrimary >> place.modes;
    from.endStructure();
    return from;
}

const QDBusArgument &operator>>(const QDBusArgument &from, MutterMode &mode)
{
    from.beginStructure();
    from >> mode.id >> mode.width >> mode.height >> mode.frequency >> mode.preferredScale >> mode.scales
        >> mode.properties;
    from.endStructure();
    return from;
}

const QDBusArgument &operator>>(const QDBusArgument &from, MutterName &name)
{
    from.beginStructure();
    from >> name.connector >> name.vendor >> name.product >> name.serial;
    from.endStructure();
    return from;
}

const QDBusArgument &operator>>(const QDBusArgument &from, MutterOutput &output)
{
    from.beginStructure();
    from >> output.name >> output.modes >> output.properties;
    from.endStructure();
    return from;
}

const QDBusArgument &operator>>(const QDBusArgument &from, MutterPlace &place)
{
    from.beginStructure();
    from >> place.x >> place.y >> place.scale >> place.transform >> place.isPrimary >> place.names
        >> place.properties;
    from.endStructure();
    return from;
}

} // namespace vandrel
