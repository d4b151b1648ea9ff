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
        guarded([&] {
            if constexpr (std::is_member_function_pointer_v<Handler>) {
                if constexpr (std::is_invocable_v<Handler, Context *, decltype(args)...>)
                    std::invoke(handler, context, std::forward<decltype(args)>(args)...);
                else
                    std::invoke(handler, context);
            } else {
                if constexpr (std::is_invocable_v<Handler, decltype(args)...>)
                    std::invoke(handler, std::forward<decltype(args)>(args)...);
                else
                    std::invoke(handler);
            }
        });
    });
}

} // namespace vandrel
