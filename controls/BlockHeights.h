#pragma once

#include <vector>

#include <QtGlobal>

namespace vandrel {

/// The heights of a document's paragraphs, many of them only estimated, and the sums that turn a paragraph into a
/// place and a place into a paragraph.
///
/// Heights are in 64ths of a pixel. Paragraphs are numbered from 0. The heights lie in pieces of some hundred with
/// a sum each, so that finding, changing, inserting and removing touch a few thousand numbers at most in a
/// document of a million paragraphs; only a change of very many paragraphs at once walks through all.
class BlockHeights
{
public:
    struct Entry {
        quint32 height : 30 = 0;
        /// The height is the true one, not an estimate.
        quint32 isMeasured : 1 = 0;
        /// The paragraph has its lines, made for the present width.
        quint32 isLaidOut : 1 = 0;
    };

    /// Starts again with `count` paragraphs of one estimated height.
    void reset(int count, int estimate);
    /// Puts `added` paragraphs of an estimated height in place of `removed` ones.
    void replace(int first, int removed, int added, int estimate);
    /// Turns all heights into estimates and calls `forget` with the number of each paragraph that has its lines.
    template<typename Forget>
    void invalidateAll(Forget &&forget);

    int count() const { return m_count; }
    qint64 total() const { return m_total; }
    int laidOut() const { return m_laidOut; }
    /// The sum of the heights before a paragraph; its number may be count().
    qint64 top(int index) const;
    /// The paragraph at a height from the top; the first or the last one for a place outside.
    int indexAt(qint64 y) const;
    Entry at(int index) const;
    void set(int index, Entry entry);
    /// The numbers of the paragraphs that have their lines.
    std::vector<int> laidOutIndices() const;

    static constexpr int greatestHeight = (1 << 30) - 1;

private:
    struct Piece {
        std::vector<Entry> entries;
        qint64 sum = 0;
    };
    struct Place {
        std::size_t piece = 0;
        std::size_t offset = 0;
    };

    Place find(int index) const;
    void rebuild(const std::vector<Entry> &entries);
    void recount(Piece &piece);
    void replaceInside(Place place, int removed, const std::vector<Entry> &added);

    std::vector<Piece> m_pieces;
    /// The piece found last and the number of its first paragraph: who walks through the paragraphs does not look
    /// for each from the start.
    mutable std::size_t m_foundPiece = 0;
    mutable int m_foundStart = 0;
    int m_count = 0;
    int m_laidOut = 0;
    qint64 m_total = 0;
};

template<typename Forget>
void BlockHeights::invalidateAll(Forget &&forget)
{
    int index = 0;
    for (Piece &piece : m_pieces) {
        for (Entry &entry : piece.entries) {
            if (entry.isLaidOut)
                forget(index);
            entry.isMeasured = 0;
            entry.isLaidOut = 0;
            ++index;
        }
    }
    m_laidOut = 0;
}

} // namespace vandrel
