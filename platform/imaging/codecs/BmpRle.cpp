#include "platform/imaging/codecs/BmpRle.h"

#include <algorithm>

namespace vandrel {

namespace {

class RleDecoder
{
public:
    RleDecoder(OctetReader &file, bool fourBits, const PixelView &pixels)
        : m_file(file), m_fourBits(fourBits), m_pixels(pixels)
    { }

    bool decode(const DecodeRequest &request)
    {
        while (m_y < m_pixels.height && !m_file.ended()) {
            const int count = m_file.octet();
            const int value = m_file.octet();
            if (count > 0)
                putRun(count, value);
            else if (value == 1)
                return m_isSound;
            else
                escape(value, request);
        }
        // Rows can be full without the mark of the end.
        return m_isSound && !m_file.ended();
    }

private:
    void escape(int code, const DecodeRequest &request)
    {
        if (code == 0) {
            m_x = 0;
            ++m_y;
            atRow(request, m_y, m_pixels.height);
        } else if (code == 2) {
            m_x += m_file.octet();
            m_y += m_file.octet();
        } else {
            putLiteral(code);
        }
    }

    void putRun(int count, int value)
    {
        for (int index = 0; index < count; ++index)
            put(m_fourBits ? (index % 2 == 0 ? value >> 4 : value & 15) : value);
    }

    void putLiteral(int count)
    {
        const int octets = m_fourBits ? (count + 1) / 2 : count;
        int value = 0;
        for (int index = 0; index < count; ++index) {
            if (!m_fourBits || index % 2 == 0)
                value = m_file.octet();
            put(m_fourBits ? (index % 2 == 0 ? value >> 4 : value & 15) : value);
        }
        // Literals end on even octets.
        if (octets % 2 == 1)
            m_file.octet();
    }

    void put(int value)
    {
        if (m_x >= m_pixels.width || m_y >= m_pixels.height) {
            m_isSound = false;
            return;
        }
        *m_pixels.at(m_x, m_y) = static_cast<std::uint8_t>(value);
        ++m_x;
    }

    OctetReader &m_file;
    bool m_fourBits;
    PixelView m_pixels;
    int m_x = 0;
    int m_y = 0;
    bool m_isSound = true;
};

} // namespace

bool readBmpRle(OctetReader &file, bool fourBits, const PixelView &pixels, const DecodeRequest &request)
{
    return RleDecoder(file, fourBits, pixels).decode(request);
}

void reverseRows(const PixelView &pixels)
{
    const auto octets = static_cast<std::ptrdiff_t>(pixels.width) * pixels.channels;
    for (int top = 0, bottom = pixels.height - 1; top < bottom; ++top, --bottom)
        std::swap_ranges(pixels.row(top), pixels.row(top) + octets, pixels.row(bottom));
}

} // namespace vandrel
