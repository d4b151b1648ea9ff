#pragma once

#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QSize>
#include <QString>
#include <QVariantMap>

namespace vandrel {

/// The values of org.gnome.Mutter.DisplayConfig, in the order in which they stand in its messages.

struct MutterMode {
    QString id;
    int width = 0;
    int height = 0;
    double frequency = 0;
    double preferredScale = 1;
    QList<double> scales;
    QVariantMap properties;

    QSize size() const { return {width, height}; }
    bool isCurrent() const { return properties.value(QStringLiteral("is-current")).toBool(); }
};

/// What a monitor is told by.
struct MutterName {
    QString connector;
    QString vendor;
    QString product;
    QString serial;
};

struct MutterOutput {
    MutterName name;
    QList<MutterMode> modes;
    QVariantMap properties;

    /// The mode in force; null for a monitor that is off.
    const MutterMode *current() const;
    /// Of that size, the one with the highest frequency; null where there is none.
    const MutterMode *best(const QSize &size) const;
};

/// One or several monitors that show the same part of the desktop.
struct MutterPlace {
    int x = 0;
    int y = 0;
    double scale = 1;
    uint transform = 0;
    bool isPrimary = false;
    QList<MutterName> names;
    QVariantMap properties;

    /// Whether the monitors stand on their sides.
    bool isUpright() const { return transform % 2 == 1; }
};

/// The answer of GetCurrentState.
struct MutterState {
    uint serial = 0;
    QList<MutterOutput> outputs;
    QList<MutterPlace> places;
    QVariantMap properties;

    /// The output of that name; null where there is none.
    const MutterOutput *output(const MutterName &name) const;
    /// The place of the primary monitor, or else the first; -1 where no monitor is on.
    qsizetype primary() const;
    /// Whether places count in the monitors' own pixels, whatever the scale.
    bool countsPixels() const { return properties.value(QStringLiteral("layout-mode"), 1U).toUInt() == 2; }
};

/// A monitor in the arguments of ApplyMonitorsConfig.
struct MutterChosenMode {
    QString connector;
    QString mode;
    QVariantMap properties;
};

/// A place there.
struct MutterChosenPlace {
    int x = 0;
    int y = 0;
    double scale = 1;
    uint transform = 0;
    bool isPrimary = false;
    QList<MutterChosenMode> modes;
};

/// What ApplyMonitorsConfig is to be told so that the primary monitor has that resolution and all else stays; empty
/// where its monitor does not offer it.
QList<MutterChosenPlace> mutterConfig(const MutterState &state, const QSize &wanted);

QDBusArgument &operator<<(QDBusArgument &to, const MutterChosenMode &mode);
const QDBusArgument &operator>>(const QDBusArgument &from, MutterChosenMode &mode);
QDBusArgument &operator<<(QDBusArgument &to, const MutterChosenPlace &place);
const QDBusArgument &operator>>(const QDBusArgument &from, MutterChosenPlace &place);

const QDBusArgument &operator>>(const QDBusArgument &from, MutterMode &mode);
const QDBusArgument &operator>>(const QDBusArgument &from, MutterName &name);
const QDBusArgument &operator>>(const QDBusArgument &from, MutterOutput &output);
const QDBusArgument &operator>>(const QDBusArgument &from, MutterPlace &place);

} // namespace vandrel

Q_DECLARE_METATYPE(vandrel::MutterChosenMode)
Q_DECLARE_METATYPE(vandrel::MutterChosenPlace)
