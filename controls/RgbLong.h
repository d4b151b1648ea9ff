#pragma once

#include <QColor>

namespace vandrel {

/// The colour of an RGB Long (0x00BBGGRR); bits above the blue octet are ignored.
inline QColor colorOf(qint32 rgbLong)
{
    return {rgbLong & 0xFF, rgbLong >> 8 & 0xFF, rgbLong >> 16 & 0xFF};
}

/// The RGB Long of a colour; its opacity is dropped.
inline qint32 rgbLongOf(const QColor &color)
{
    return color.red() | color.green() << 8 | color.blue() << 16;
}

} // namespace vandrel
