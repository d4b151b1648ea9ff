#pragma once

#include <functional>
#include <type_traits>
#include <utility>

#include <QObject>

#include "runtime/ErrorReport.h"

namespace vandrel {

/// Runs a handler at the boundary between the toolkit and the suite's own code. A failure that leaves the
/// handler is reported here, where it happened, and never travels through the toolkit's frames.
/// Overridden event functions (closeEvent and the like) wrap their bodies in it; signals use onEvent().
template<typename Handler>
void guarded(Handler &&handler)
{
    try {
        std::forward<Handler>(handler)();
    } catch (...) {
        reportCurrentFailure();
    }
}

namespace detail {

/// Calls a handler with the signal's arguments, or with none where it takes none. A function of its own: not every
/// compiler chooses the branch when a pack of arguments is used in a lambda within a lambda.
template<typename Context, typename Handler, typename... Arguments>
void deliver(Context *context, const Handler &handler, Arguments &&...arguments)
{
    if constexpr (std::is_invocable_v<const Handler &, Context *,
                                      Arguments...> && std::is_member_function_pointer_v<Handler>)
        std::invoke(handler, context, std::forward<Arguments>(arguments)...);
    else if constexpr (std::is_member_function_pointer_v<Handler>)
        std::invoke(handler, context);
    else if constexpr (std::is_invocable_v<const Handler &, Arguments...>)
        std::invoke(handler, std::forward<Arguments>(arguments)...);
    else
        std::invoke(handler);
}

} // namespace detail

/// Connects `signal` of `sender` to a handler of `context`, guarded. The handler is a member function of
/// `context` or a function object; it takes the signal's arguments, or none of them. While the error box of a
/// failure is open it does not run: the program has ended, and must not go on behind the box.
template<typename Sender, typename Signal, typename Context, typename Handler>
QMetaObject::Connection onEvent(const Sender *sender, Signal signal, Context *context, Handler handler)
{
    // The stated result keeps the toolkit's question how many arguments fit from instantiating the body.
    return QObject::connect(sender, signal, context, [context, handler](auto &&...args) -> void {
        if (isReportingFailure())
            return;
        guarded([&] { detail::deliver(context, handler, std::forward<decltype(args)>(args)...); });
    });
}

} // namespace vandrel
