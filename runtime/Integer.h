#pragma once

#include <cstdint>
#include <limits>

#include "runtime/RuntimeError.h"

namespace vandrel {

/// A 16-bit signed counter. Going past -32768 or 32767 raises Overflow (6); it never wraps.
class Integer
{
public:
    constexpr Integer() = default;
    /// Raises Overflow when `value` does not fit.
    constexpr Integer(std::int64_t value) : m_value(checked(value)) { } // NOLINT(google-explicit-constructor)

    constexpr std::int16_t value() const { return m_value; }
    constexpr operator std::int16_t() const { return m_value; } // NOLINT(google-explicit-constructor)

    constexpr Integer &operator++() { return *this += 1; }
    constexpr Integer &operator--() { return *this += -1; }
    constexpr Integer &operator+=(std::int64_t amount)
    {
        m_value = checked(std::int64_t{m_value} + checked(amount));
        return *this;
    }
    constexpr Integer &operator-=(std::int64_t amount)
    {
        m_value = checked(std::int64_t{m_value} - checked(amount));
        return *this;
    }

private:
    static constexpr std::int16_t checked(std::int64_t value)
    {
        if (value < std::numeric_limits<std::int16_t>::min()
            || value > std::numeric_limits<std::int16_t>::max())
            throw RuntimeError(error::Overflow);
        return static_cast<std::int16_t>(value);
    }

    std::int16_t m_value = 0;
};

} // namespace vandrel
