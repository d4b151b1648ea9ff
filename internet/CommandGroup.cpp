#include "internet/CommandGroup.h"

#include <utility>

namespace vandrel {

CommandGroup::CommandGroup(QList<QPushButton *> buttons) : m_buttons(std::move(buttons)) { }

void CommandGroup::setEnabled(bool enabled)
{
    if (enabled)
        enable();
    else
        disable();
}

void CommandGroup::enable()
{
    for (QPushButton *button : std::as_const(m_buttons))
        button->setEnabled(true);
    if (m_hadFocus && m_hadFocus->window()->focusWidget() == m_refuge)
        m_hadFocus->setFocus();
    m_hadFocus.clear();
}

void CommandGroup::disable()
{
    const QWidget *window = m_buttons.first()->window();
    QWidget *const focused = window->focusWidget();
    const bool hadFocus = m_buttons.contains(focused);
    for (QPushButton *button : std::as_const(m_buttons))
        button->setEnabled(false);
    if (!hadFocus)
        return;
    m_hadFocus = focused;
    m_refuge = window->focusWidget();
}

} // namespace vandrel
