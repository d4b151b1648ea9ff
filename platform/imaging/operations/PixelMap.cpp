#include "platform/imaging/operations/PixelMap.h"

#include "platform/imaging/operations/Bands.h"

namespace vandrel {

namespace {

Palette mappedPalette(const Palette &palette, const RowMap &map)
{
    std::vector<std::uint8_t> from;
    from.reserve(palette.size() * 3);
    for (const Colour colour : palette)
        from.insert(from.end(), {colour.blue, colour.green, colour.red});
    std::vector<std::uint8_t> to(from.size());
    map(from.data(), to.data(), static_cast<int>(palette.size()), 3);
    Palette mapped(palette.size());
    for (std::size_t number = 0; number < mapped.size(); ++number)
        mapped[number] = {to[number * 3 + 2], to[number * 3 + 1], to[number * 3]};
    return mapped;
}

} // namespace

Outcome mapPixels(const Subject &subject, GrayResult result, const RowMap &map)
{
    if (subject.picture.isIndexed() && coversPicture(workingArea(subject), subject.picture)) {
        return refusingOnFailure(subject, [&]() -> Outcome {
            return {true, subject.picture.withPalette(mappedPalette(subject.picture.palette(), map))};
        });
    }
    return operate(subject, result, [&map](Workspace &work) {
        const PixelArea &area = work.area();
        inBands(area, work.progress(), [&](int first, int end) {
            ValueRows source = work.source();
            for (int y = first; y < end; ++y)
                map(source.at(area.left, y, area.width), work.targetRow(y), area.width, work.channels());
        });
    });
}

} // namespace vandrel
