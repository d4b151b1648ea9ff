#pragma once

#include <QList>
#include <QPointer>
#include <QPushButton>

namespace vandrel {

/// Buttons that are enabled and disabled together while an operation comes and goes. A button that had the
/// keyboard's focus when the group was disabled gets it back, so that one key repeats what it did; unless the user
/// has gone elsewhere meanwhile.
class CommandGroup
{
public:
    /// The buttons belong to their window, which outlives the group.
    explicit CommandGroup(QList<QPushButton *> buttons);

    void setEnabled(bool enabled);

private:
    void enable();
    void disable();

    QList<QPushButton *> m_buttons;
    QPointer<QWidget> m_hadFocus;
    /// Where the toolkit moved the focus when the group was disabled.
    QPointer<QWidget> m_refuge;
};

} // namespace vandrel
