#include "controls/BlockHeights.h"

#include <algorithm>
#include <iterator>

namespace vandrel {

namespace {

constexpr std::size_t pieceSize = 512;
constexpr std::size_t largestPiece = 2 * pieceSize;

BlockHeights::Entry estimated(int height)
{
    BlockHeights::Entry entry;
    entry.height = static_cast<quint32>(std::clamp(height, 0, BlockHeights::greatestHeight)) & 0x3FFFFFFF;
    return entry;
}

} // namespace

void BlockHeights::reset(int count, int estimate)
{
    rebuild(std::vector<Entry>(static_cast<std::size_t>(count), estimated(estimate)));
}

void BlockHeights::rebuild(const std::vector<Entry> &entries)
{
    m_pieces.clear();
    m_foundPiece = 0;
    m_foundStart = 0;
    m_count = static_cast<int>(entries.size());
    m_total = 0;
    m_laidOut = 0;
    for (std::size_t start = 0; start < entries.size(); start += pieceSize) {
        const auto first = entries.begin() + static_cast<std::ptrdiff_t>(start);
        const auto length = static_cast<std::ptrdiff_t>(std::min(pieceSize, entries.size() - start));
        Piece piece;
        piece.entries.assign(first, first + length);
        recount(piece);
        m_pieces.push_back(std::move(piece));
    }
}

// Brings a piece's sum up to date and the totals with it. The piece's old share of the laid out paragraphs must
// have been taken off before.
void BlockHeights::recount(Piece &piece)
{
    m_total -= piece.sum;
    piece.sum = 0;
    for (const Entry entry : piece.entries) {
        piece.sum += entry.height;
        m_laidOut += entry.isLaidOut ? 1 : 0;
    }
    m_total += piece.sum;
}

void BlockHeights::replace(int first, int removed, int added, int estimate)
{
    const std::vector<Entry> fresh(static_cast<std::size_t>(added), estimated(estimate));
    const Place place = find(first);
    if (place.piece < m_pieces.size() && added <= static_cast<int>(pieceSize)
        && place.offset + static_cast<std::size_t>(removed) <= m_pieces[place.piece].entries.size()) {
        replaceInside(place, removed, fresh);
        return;
    }
    const int count = m_count - removed + added;
    std::vector<Entry> all;
    all.reserve(static_cast<std::size_t>(count));
    for (const Piece &piece : m_pieces)
        all.insert(all.end(), piece.entries.begin(), piece.entries.end());
    const auto from = all.begin() + first;
    const auto behind = all.erase(from, from + removed);
    all.insert(behind, fresh.begin(), fresh.end());
    rebuild(all);
}

void BlockHeights::replaceInside(Place place, int removed, const std::vector<Entry> &added)
{
    Piece &piece = m_pieces[place.piece];
    m_foundPiece = 0;
    m_foundStart = 0;
    for (const Entry entry : piece.entries)
        m_laidOut -= entry.isLaidOut ? 1 : 0;
    const auto from = piece.entries.begin() + static_cast<std::ptrdiff_t>(place.offset);
    const auto behind = piece.entries.erase(from, from + removed);
    piece.entries.insert(behind, added.begin(), added.end());
    m_count += static_cast<int>(added.size()) - removed;
    recount(piece);

    const auto here = m_pieces.begin() + static_cast<std::ptrdiff_t>(place.piece);
    if (piece.entries.empty()) {
        m_pieces.erase(here);
    } else if (piece.entries.size() > largestPiece) {
        Piece second;
        const auto middle = piece.entries.begin() + static_cast<std::ptrdiff_t>(piece.entries.size() / 2);
        second.entries.assign(middle, piece.entries.end());
        piece.entries.erase(middle, piece.entries.end());
        for (const Entry entry : second.entries)
            second.sum += entry.height;
        piece.sum -= second.sum;
        m_pieces.insert(here + 1, std::move(second));
    }
}

BlockHeights::Place BlockHeights::find(int index) const
{
    if (m_foundPiece >= m_pieces.size() || index < m_foundStart) {
        m_foundPiece = 0;
        m_foundStart = 0;
    }
    while (m_foundPiece < m_pieces.size()) {
        const auto size = static_cast<int>(m_pieces[m_foundPiece].entries.size());
        const int offset = index - m_foundStart;
        // What is added at the very end goes into the last piece.
        if (offset < size || (offset == size && m_foundPiece + 1 == m_pieces.size()))
            return {m_foundPiece, static_cast<std::size_t>(offset)};
        m_foundStart += size;
        ++m_foundPiece;
    }
    return {m_foundPiece, 0};
}

std::vector<int> BlockHeights::laidOutIndices() const
{
    std::vector<int> indices;
    int index = 0;
    for (const Piece &piece : m_pieces) {
        for (const Entry entry : piece.entries) {
            if (entry.isLaidOut)
                indices.push_back(index);
            ++index;
        }
    }
    return indices;
}

qint64 BlockHeights::top(int index) const
{
    qint64 sum = 0;
    auto left = static_cast<std::size_t>(index);
    for (const Piece &piece : m_pieces) {
        if (left >= piece.entries.size()) {
            left -= piece.entries.size();
            sum += piece.sum;
            continue;
        }
        for (std::size_t i = 0; i < left; ++i)
            sum += piece.entries[i].height;
        break;
    }
    return sum;
}

int BlockHeights::indexAt(qint64 y) const
{
    int index = 0;
    for (const Piece &piece : m_pieces) {
        if (y >= piece.sum) {
            y -= piece.sum;
            index += static_cast<int>(piece.entries.size());
            continue;
        }
        for (const Entry entry : piece.entries) {
            if (y < entry.height)
                return index;
            y -= entry.height;
            ++index;
        }
    }
    return std::max(0, m_count - 1);
}

BlockHeights::Entry BlockHeights::at(int index) const
{
    const Place place = find(index);
    return m_pieces[place.piece].entries[place.offset];
}

void BlockHeights::set(int index, Entry entry)
{
    const Place place = find(index);
    Piece &piece = m_pieces[place.piece];
    Entry &old = piece.entries[place.offset];
    const qint64 more = qint64{entry.height} - qint64{old.height};
    m_laidOut += static_cast<int>(entry.isLaidOut) - static_cast<int>(old.isLaidOut);
    old = entry;
    piece.sum += more;
    m_total += more;
}

} // namespace vandrel
