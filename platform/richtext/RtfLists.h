#pragma once

#include <array>

#include <QHash>
#include <QList>
#include <QString>
#include <QTextListFormat>

#include "platform/richtext/RtfTokenizer.h"

namespace vandrel {

/// Numbers (\levelnfcN) the reader tells apart; the others count in decimal.
namespace rtflist {
inline constexpr int Bullet = 23;
inline constexpr int NoNumber = 255;
inline constexpr int levels = 9;
/// Stands for \ls0 of a document that defines a list of that number; otherwise 0 is no list.
inline constexpr int Zero = 1'000'000'000;
} // namespace rtflist

/// One level of a list.
struct RtfListLevel {
    int kind = 0; ///< \levelnfcN
    int start = 1; ///< \levelstartatN
    bool isDecimal = false; ///< \levellegal: the numbers of the levels above are decimal
    /// What stands before a paragraph. U+0000 to U+0008 stand for the current number of that level.
    QString text;
    int left = 0; ///< \li of the level, twips
    int first = 0; ///< \fi of the level, twips

    QTextListFormat::Style style() const;
};

/// The lists that the paragraphs of a document can belong to.
class RtfLists
{
public:
    /// Reads the octets between the braces of {\*\listtable ...} and {\*\listoverridetable ...}.
    void readLists(QByteArrayView group);
    void readOverrides(QByteArrayView group);

    /// The level of list \lsN; null when the document does not define it.
    const RtfListLevel *level(int override, int level) const;

private:
    using Levels = std::array<RtfListLevel, rtflist::levels>;

    void readList(QByteArrayView group);
    void readOverride(QByteArrayView group);

    QHash<int, Levels> m_lists;
    QHash<int, Levels> m_overrides;
};

/// A paragraph number of the old kind, {\*\pn ...}.
struct RtfLegacyList {
    RtfListLevel level;
    QString before;
    QString after;
    /// False for a number that only continues, or counts sections; its text stays text.
    bool isList = false;

    bool operator==(const RtfLegacyList &other) const;
};

/// Reads the octets between the braces of a {\*\pn ...} group.
RtfLegacyList readRtfLegacyList(QByteArrayView group);

} // namespace vandrel
