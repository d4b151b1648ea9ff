#include "platform/imaging/operations/Workspace.h"

#include <array>

#include "platform/imaging/operations/Bands.h"
#include "platform/imaging/raster/Conversions.h"

namespace vandrel {

namespace {

std::array<std::uint8_t, 256> fiveBitTable()
{
    std::array<std::uint8_t, 256> table{};
    for (std::size_t value = 0; value < table.size(); ++value)
        table[value] = onFiveBits(static_cast<int>(value));
    return table;
}

} // namespace

Raster asValues(const Raster &picture, GrayResult result)
{
    if (!picture.isIndexed())
        return picture;
    if (picture.bitsPerPixel() == 8 && result == GrayResult::StaysGray && isGray(picture.palette()))
        return asGrayRamp(picture);
    return asTrueColour(picture);
}

Workspace::Workspace(const Subject &subject, GrayResult result)
    : m_source(asValues(subject.picture, result)), m_area(workingArea(subject)), m_progress(subject.progress)
{
    const ConstPixelView from = source();
    m_target = coversPicture(m_area, m_source) ? PixelBuffer::make(from.width, from.height, from.channels)
                                               : copyOfPixels(m_source);
}

Outcome Workspace::finish()
{
    if (target().channels == 4)
        inBands(m_area, {}, [this](int first, int end) { restoreAlpha(first, end); });
    else if (m_source.bitsPerPixel() == 16)
        inBands(m_area, {}, [this](int first, int end) { requantise(first, end); });
    return {true, m_source.withPixels(std::move(m_target))};
}

void Workspace::restoreAlpha(int first, int end)
{
    for (int y = first; y < end; ++y) {
        const std::uint8_t *from = source().at(m_area.left, y);
        std::uint8_t *to = target().at(m_area.left, y);
        for (int x = 0; x < m_area.width; ++x)
            to[x * 4 + 3] = from[x * 4 + 3];
    }
}

void Workspace::requantise(int first, int end)
{
    static const std::array<std::uint8_t, 256> table = fiveBitTable();
    for (int y = first; y < end; ++y) {
        std::uint8_t *row = target().at(m_area.left, y);
        for (int octet = 0; octet < m_area.width * 3; ++octet)
            row[octet] = table[row[octet]];
    }
}

Outcome operate(const Subject &subject, GrayResult result, const std::function<void(Workspace &)> &work)
{
    return refusingOnFailure(subject, [&] {
        Workspace workspace(subject, result);
        work(workspace);
        return workspace.finish();
    });
}

} // namespace vandrel
