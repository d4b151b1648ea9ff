#include "runtime/WindowSlot.h"

#include <utility>

namespace vandrel {

WindowSlot::WindowSlot(WindowSlot &&other) noexcept
    : m_factory(std::exchange(other.m_factory, nullptr)), m_window(std::exchange(other.m_window, nullptr)),
      m_wasShown(std::exchange(other.m_wasShown, false))
{ }

WindowSlot::~WindowSlot()
{
    delete m_window;
}

// A closed window deletes itself only when control returns to the event loop that closed it, which a busy
// loop further down can delay. It is out of use from the moment it is hidden.
QWidget *WindowSlot::window() const
{
    return m_window && m_wasShown && m_window->isHidden() ? nullptr : m_window.data();
}

QWidget *WindowSlot::ensure()
{
    if (!window()) {
        QWidget *made = m_factory();
        made->setAttribute(Qt::WA_DeleteOnClose);
        m_window = made;
        m_wasShown = false;
    }
    return m_window;
}

void WindowSlot::show()
{
    QWidget *shown = ensure();
    shown->setWindowState(shown->windowState() & ~Qt::WindowMinimized);
    shown->show();
    shown->raise();
    shown->activateWindow();
    m_wasShown = true;
}

} // namespace vandrel
