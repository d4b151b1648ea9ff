#pragma once

#include <memory>

#include <QByteArrayView>

#include "platform/imaging/raster/PixelBuffer.h"

namespace vandrel {

/// What a row of a file's pixels consists of, before its profile is applied.
enum class ProfiledPixels { Bgr, Gray, Cmyk, InvertedCmyk };

/// Turns the colours of a file with an ICC profile into the screen's usual ones (sRGB). Usable on any one thread.
class ColourProfile
{
public:
    /// Null for a profile that is damaged, does not fit the pixels, or is that of the usual colours already.
    static std::unique_ptr<ColourProfile> make(QByteArrayView profile, ProfiledPixels pixels);

    ~ColourProfile();
    ColourProfile(const ColourProfile &) = delete;
    ColourProfile &operator=(const ColourProfile &) = delete;

    /// Turns a row; the result has the same layout for grays, else blue, green, red. Both may be the same memory.
    void apply(const std::uint8_t *from, int pixels, std::uint8_t *to) const;

private:
    explicit ColourProfile(void *transform) : m_transform(transform) { }

    void *m_transform;
};

} // namespace vandrel
