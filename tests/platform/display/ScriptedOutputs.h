#pragma once

#include <memory>

#include <QStringList>
#include <QTemporaryDir>

#include "platform/display/WlrState.h"

namespace vandrel::test {

/// A compositor with monitors and a mind of its own, which WAYLAND_DISPLAY names as long as the object is there. It runs
/// on a thread; the monitors are told as they were at its start and as it changes them.
class ScriptedOutputs
{
public:
    struct Monitor {
        QString name;
        QList<WlrMode> modes;
        /// Which of them is in force; -1 for a monitor that is off.
        int current = 0;
        QPoint place;
        int transform = 0;
        bool isVirtual = false;
    };

    /// What it does with a question: agree, say no, say that the monitors have changed, say no after it has done it, say
    /// yes and do nothing, or hang up.
    enum class Mood { Agree, Refuse, Cancel, DoAndRefuse, Forget, HangUp };

    /// Each question uses one mood up; with the last one gone it agrees.
    explicit ScriptedOutputs(QList<Monitor> monitors, QList<Mood> moods = {});
    ~ScriptedOutputs();
    ScriptedOutputs(const ScriptedOutputs &) = delete;
    ScriptedOutputs &operator=(const ScriptedOutputs &) = delete;

    bool isThere() const;

    /// Ends the compositor; what it was asked since its start, in order: "test A=1024x768@75 B=kept C=off". A size that
    /// no mode has is "custom 800x600".
    QStringList asked();

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace vandrel::test
