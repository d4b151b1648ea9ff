#pragma once

#include <functional>

#include <QPointer>
#include <QWidget>

namespace vandrel {

/// The one application-wide reference to a window. It is empty until first use, and empty again once the
/// window is closed; the next use creates the window afresh. A window that refuses to close stays.
/// User-interface thread only.
class WindowSlot
{
public:
    /// Makes the window, without a parent; its constructor is the load handler. What it throws goes through
    /// ensure(), and the slot stays empty.
    using Factory = std::function<QWidget *()>;

    WindowSlot() = default;
    explicit WindowSlot(Factory factory) : m_factory(std::move(factory)) { }
    WindowSlot(WindowSlot &&other) noexcept;
    WindowSlot &operator=(WindowSlot &&) = delete;
    /// Takes a window that was never closed with it.
    ~WindowSlot();

    /// Whether the window can be made at all.
    bool hasFactory() const { return m_factory != nullptr; }
    /// The window, null when the reference is empty.
    QWidget *window() const;
    /// The window, made when the reference is empty.
    QWidget *ensure();
    /// Shows the window non-modally, made when needed; one that is visible, minimised or behind others comes
    /// forward.
    void show();

private:
    Factory m_factory;
    QPointer<QWidget> m_window;
    bool m_wasShown = false;
};

} // namespace vandrel
