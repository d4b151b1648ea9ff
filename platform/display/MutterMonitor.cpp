#include "platform/display/MutterMonitor.h"

#include <optional>
#include <utility>

#include <QDBusMessage>
#include <QDBusMetaType>

#include "platform/display/MutterConfig.h"

namespace vandrel {

namespace {

// In milliseconds. A compositor that does not answer shows nothing either.
constexpr int callPatience = 5000;
constexpr uint temporary = 1;

QDBusMessage call(const QString &method)
{
    return QDBusMessage::createMethodCall(QStringLiteral("org.gnome.Mutter.DisplayConfig"),
                                          QStringLiteral("/org/gnome/Mutter/DisplayConfig"),
                                          QStringLiteral("org.gnome.Mutter.DisplayConfig"), method);
}

std::optional<MutterState> currentState(const QDBusConnection &bus)
{
    const QDBusMessage reply = bus.call(call(QStringLiteral("GetCurrentState")), QDBus::Block, callPatience);
    if (reply.type() != QDBusMessage::ReplyMessage
        || reply.signature() != u"ua((ssss)a(siiddada{sv})a{sv})a(iiduba(ssss)a{sv})a{sv}")
        return {};
    const QVariantList values = reply.arguments();
    MutterState state;
    state.serial = values[0].toUInt();
    state.outputs = qdbus_cast<QList<MutterOutput>>(values[1].value<QDBusArgument>());
    state.places = qdbus_cast<QList<MutterPlace>>(values[2].value<QDBusArgument>());
    state.properties = qdbus_cast<QVariantMap>(values[3].value<QDBusArgument>());
    return state;
}

} // namespace

MutterMonitor::MutterMonitor(QDBusConnection bus) : m_bus(std::move(bus))
{
    qDBusRegisterMetaType<MutterChosenMode>();
    qDBusRegisterMetaType<QList<MutterChosenMode>>();
    qDBusRegisterMetaType<MutterChosenPlace>();
    qDBusRegisterMetaType<QList<MutterChosenPlace>>();
}

QSize MutterMonitor::resolution()
{
    const std::optional<MutterState> state = currentState(m_bus);
    if (!state || state->primary() < 0)
        return {};
    const MutterPlace &place = state->places[state->primary()];
    const MutterOutput *output = place.names.isEmpty() ? nullptr : state->output(place.names.first());
    const MutterMode *mode = output ? output->current() : nullptr;
    if (!mode)
        return {};
    return place.isUpright() ? mode->size().transposed() : mode->size();
}

// The compositor applies the whole or nothing; what it says it has applied is looked at once more.
bool MutterMonitor::change(const QSize &wanted)
{
    const std::optional<MutterState> state = currentState(m_bus);
    const QList<MutterChosenPlace> config = state ? mutterConfig(*state, wanted) : QList<MutterChosenPlace>();
    if (config.isEmpty())
        return false;
    QDBusMessage apply = call(QStringLiteral("ApplyMonitorsConfig"));
    apply << state->serial << temporary << QVariant::fromValue(config) << QVariantMap();
    const QDBusMessage reply = m_bus.call(apply, QDBus::Block, callPatience);
    return reply.type() == QDBusMessage::ReplyMessage && resolution() == wanted;
}

} // namespace vandrel
