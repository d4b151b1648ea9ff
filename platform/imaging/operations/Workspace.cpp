#include "platform/imaging/operations/Workspace.h"

#include <array>
#include <cstring>

#include "platform/imaging/operations/Bands.h"

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

int channelsOfValues(const Raster &picture, GrayResult result)
{
    if (!picture.isIndexed())
        return picture.view().channels;
    const bool isGrayOnly
        = picture.bitsPerPixel() == 8 && result == GrayResult::StaysGray && isGray(picture.palette());
    return isGrayOnly ? 1 : 3;
}

Raster withValues(const Raster &picture, std::shared_ptr<const PixelBuffer> values)
{
    if (!picture.isIndexed())
        return picture.withPixels(std::move(values));
    if (values->channels() == 1)
        return Raster(std::move(values), 8, grayPalette(256), picture.resolution());
    return Raster(std::move(values), 24, {}, picture.resolution());
}

std::shared_ptr<PixelBuffer> copiedInBands(const Raster &picture)
{
    const ConstPixelView from = picture.view();
    auto copy = PixelBuffer::make(from.width, from.height, from.channels);
    inBands(picture.area(), {}, [&](int first, int end) {
        std::memcpy(copy->view().row(first), from.row(first),
                    static_cast<std::size_t>(end - first) * from.stride);
    });
    return copy;
}

Workspace::Workspace(const Subject &subject, GrayResult result)
    : m_source(subject.picture), m_area(workingArea(subject)), m_progress(subject.progress)
{
    m_target = PixelBuffer::make(m_source.width(), m_source.height(), channelsOfValues(m_source, result));
    if (!coversPicture(m_area, m_source))
        inBands(m_source.area(), {}, [this](int first, int end) { takeOver(first, end); });
}

void Workspace::takeOver(int first, int end)
{
    ValueRows rows = source();
    const std::size_t octets = static_cast<std::size_t>(rows.width()) * static_cast<std::size_t>(channels());
    for (int y = first; y < end; ++y)
        std::memcpy(target().row(y), rows.row(y), octets);
}

Outcome Workspace::finish()
{
    if (target().channels == 4)
        inBands(m_area, {}, [this](int first, int end) { restoreAlpha(first, end); });
    else if (m_source.bitsPerPixel() == 16)
        inBands(m_area, {}, [this](int first, int end) { requantise(first, end); });
    return {true, withValues(m_source, std::move(m_target))};
}

void Workspace::restoreAlpha(int first, int end)
{
    for (int y = first; y < end; ++y) {
        const std::uint8_t *from = m_source.view().at(m_area.left, y);
        std::uint8_t *to = targetRow(y);
        for (int x = 0; x < m_area.width; ++x)
            to[x * 4 + 3] = from[x * 4 + 3];
    }
}

void Workspace::requantise(int first, int end)
{
    static const std::array<std::uint8_t, 256> table = fiveBitTable();
    for (int y = first; y < end; ++y) {
        std::uint8_t *row = targetRow(y);
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
