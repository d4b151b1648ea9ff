#pragma once

#include <optional>

#include "runtime/RuntimeError.h"

namespace vandrel::test {

/// What the operation raises.
template<typename Operation>
std::optional<RuntimeError> failureOf(Operation operation)
{
    try {
        operation();
    } catch (const RuntimeError &failure) {
        return failure;
    }
    return {};
}

/// The number of what the operation raises, 0 for nothing.
template<typename Operation>
int numberOf(Operation operation)
{
    const auto failure = failureOf(operation);
    return failure ? failure->number() : 0;
}

} // namespace vandrel::test
