#pragma once

#include <optional>

#include <QList>
#include <QPoint>
#include <QSize>
#include <QString>

namespace vandrel {

/// A mode that a monitor offers, or that is in force.
struct WlrMode {
    QSize size;
    /// In pictures in a thousand seconds; 0 where nobody tells.
    int frequency = 0;

    bool operator==(const WlrMode &) const = default;
};

/// A monitor of a compositor that offers zwlr_output_manager_v1.
struct WlrHead {
    QString name;
    bool isOn = false;
    /// Whether it is no thing with a measure in the world, and therefore shows pictures of any size.
    bool isVirtual = false;
    bool isUpright = false;
    QPoint place;
    /// The modes to choose from.
    QList<WlrMode> modes;
    /// The mode in force of a monitor that is on.
    WlrMode current;

    /// The resolution in force as it is looked at; empty for a monitor that is off.
    QSize resolution() const;
    /// The mode that gives that resolution, the one with the highest frequency; nothing where it is not offered.
    std::optional<WlrMode> best(const QSize &resolution) const;
};

/// All monitors, as the compositor has told of them.
struct WlrState {
    QList<WlrHead> heads;

    const WlrHead *head(const QString &name) const;
    /// The monitor at the upper left, or the first of several there: such compositors know no primary one. Null where none
    /// is on.
    const WlrHead *primary() const;
};

} // namespace vandrel
