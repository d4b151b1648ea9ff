#include "controls/RichTextSearch.h"

#include <algorithm>

#include "controls/RichTextPositions.h"

namespace vandrel {

namespace {

// A search that starts close to its match must not read far beyond it, a long one must not be cut into too
// many pieces: the pieces start small and grow.
constexpr int firstPiece = 256;
constexpr int largestPiece = 65'536;

QString withPlainLineBreaks(QString what)
{
    what.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    what.replace(u'\r', u'\n');
    what.replace(QChar::ParagraphSeparator, u'\n');
    return what;
}

// The document's characters between two positions, one for one, with LF for every line or paragraph end.
QString characters(const QTextDocument &document, int from, int to)
{
    QString text = RichTextPositions(document).characters(from, to);
    text.replace(QChar::ParagraphSeparator, u'\n');
    return text;
}

// The first match in the piece that starts at `start` and cuts no surrogate pair in two.
qsizetype firstMatch(const QTextDocument &document, int start, const QString &piece, const QString &what)
{
    const RichTextPositions positions(document);
    const auto splitsPair = [&](qsizetype at) {
        const int position = start + static_cast<int>(at);
        return positions.outsidePair(position) != position;
    };
    qsizetype at = piece.indexOf(what, 0, Qt::CaseInsensitive);
    while (at >= 0 && (splitsPair(at) || splitsPair(at + what.size())))
        at = piece.indexOf(what, at + 1, Qt::CaseInsensitive);
    return at;
}

} // namespace

std::optional<RichTextSearch::Match>
RichTextSearch::find(const QTextDocument &document, const QString &what, int from, int to)
{
    const QString needle = withPlainLineBreaks(what);
    if (needle.isEmpty())
        return {};
    if (needle != m_what) {
        m_what = needle;
        m_frontier = 0;
    }
    const bool fromKnownPart = from <= m_frontier;
    const std::optional<Match> match = scan(document, std::max(from, m_frontier), to);
    if (fromKnownPart) {
        const int length = static_cast<int>(m_what.size());
        m_frontier = match ? match->start : std::max(m_frontier, to - length + 1);
    }
    return match;
}

std::optional<RichTextSearch::Match> RichTextSearch::scan(const QTextDocument &document, int from, int to)
{
    const int length = static_cast<int>(m_what.size());
    int piece = std::max(firstPiece, 2 * length);
    for (int start = from; start + length <= to;) {
        const int end = static_cast<int>(std::min<qint64>(to, qint64{start} + piece));
        const QString text = characters(document, start, end);
        m_charactersRead += text.size();
        const qsizetype at = firstMatch(document, start, text, m_what);
        if (at >= 0) {
            const int found = start + static_cast<int>(at);
            return Match{found, found + length};
        }
        if (end == to)
            break;
        start = end - length + 1;
        piece = std::min(2 * piece, std::max(largestPiece, 2 * length));
    }
    return {};
}

void RichTextSearch::textChanged(int position)
{
    m_frontier = std::clamp(position - static_cast<int>(m_what.size()) + 1, 0, m_frontier);
}

void RichTextSearch::reset()
{
    m_frontier = 0;
}

} // namespace vandrel
