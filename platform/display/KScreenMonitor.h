#pragma once

#include <QByteArray>
#include <QString>

#include "platform/display/PrimaryMonitor.h"

namespace vandrel {

/// The primary monitor of a Wayland desktop by KDE, through its program `kscreen-doctor`. Each call runs it and waits for
/// five seconds at most.
class KScreenMonitor final : public PrimaryMonitor
{
public:
    explicit KScreenMonitor(QString program = QStringLiteral("kscreen-doctor"));

    QSize resolution() override;
    bool change(const QSize &wanted) override;

private:
    QByteArray run(const QStringList &arguments) const;

    const QString m_program;
};

/// What the program's list of outputs (a text in JSON) says of the primary monitor: the enabled one of the first
/// priority, or the first that is enabled.
struct KScreenOutput {
    /// Empty where no monitor is on.
    QString name;
    QSize resolution;
    /// The mode in force.
    QString current;
    /// The mode of the wanted size with the highest frequency; empty where there is none.
    QString mode;

    static KScreenOutput read(const QByteArray &list, const QSize &wanted = {});
};

} // namespace vandrel
