#pragma once

#include <limits>

#include <QList>

namespace vandrel {

/// Stands for "says nothing about it" in a style's formatting.
inline constexpr int rtfUnset = std::numeric_limits<int>::min();

/// Formatting of characters while reading. Numbers are the file's own: indices of its tables, half-points.
struct RtfCharState {
    enum Flag : quint16 {
        Bold = 1 << 0,
        Italic = 1 << 1,
        Underline = 1 << 2,
        Strike = 1 << 3,
        DoubleStrike = 1 << 4,
        Super = 1 << 5,
        Sub = 1 << 6,
        Caps = 1 << 7,
        SmallCaps = 1 << 8,
        Hidden = 1 << 9,
        Deleted = 1 << 10,
    };

    int font = -1; ///< \fN; -1 is the document's default font
    int halfPoints = 24;
    int colour = -1; ///< \cfN; -1 is automatic
    int background = -1; ///< \highlightN or \cbN; -1 is none
    int baseline = 0; ///< half-points above (below) the line
    int style = 0; ///< \csN; 0 is none
    int kept = 0; ///< see RtfKeptWords
    int field = -1; ///< see RtfFields
    quint16 flags = 0;
    quint16 flagsSet = 0; ///< the flags that have been given a value, on or off

    /// Formatting that says nothing, for styles to fill in.
    static RtfCharState unset();

    bool has(Flag flag) const { return (flags & flag) != 0; }
    void set(Flag flag, bool on);
    /// Back to the default, as \plain does; what the run belongs to stays.
    void reset();
    /// Applies what `from` says, except for the kept words: they stay with the style sheet, or every save would
    /// write them out once more.
    void overlay(const RtfCharState &from);

    /// Equal formatting of the result; flagsSet does not count.
    friend bool operator==(const RtfCharState &a, const RtfCharState &b);
    friend size_t qHash(const RtfCharState &state, size_t seed);
};

struct RtfTab {
    enum Type { Left, Right, Centre, Decimal };
    /// What fills the room in front of the tab stop.
    enum Leader { Blank, Dots, MiddleDots, Hyphens, Underline, ThickLine, EqualSigns };
    int position = 0; ///< twips
    Type type = Left;
    Leader leader = Blank;

    bool operator==(const RtfTab &) const = default;
};

/// Formatting of paragraphs while reading, in twips and the file's own indices.
struct RtfParaState {
    enum Alignment { AlignLeft, AlignRight, AlignCentre, AlignJustify };

    int alignment = AlignLeft;
    int left = 0;
    int right = 0;
    int first = 0;
    int before = 0;
    int after = 0;
    int lineSpacing = 0;
    int lineSpacingMultiple = 0; ///< 1 when lineSpacing is 240ths of a line
    int keepLines = 0;
    int keepNext = 0;
    int pageBreakBefore = 0;
    int rightToLeft = 0;
    int style = 0; ///< \sN
    int list = 0; ///< \lsN; 0 is none
    int level = 0; ///< \ilvlN
    int legacyList = -1; ///< index of a \pn; -1 is none
    int shading = -1; ///< \cbpatN
    int kept = 0; ///< see RtfKeptWords
    int inTable = 0; ///< \intbl
    int tableDepth = 0; ///< \itapN
    RtfTab nextTab;
    QList<RtfTab> tabs;

    static RtfParaState unset();

    void reset() { *this = RtfParaState(); }
    /// See RtfCharState::overlay.
    void overlay(const RtfParaState &from);

    /// How many tables the paragraph is in.
    int depth() const { return inTable || tableDepth > 0 ? qMax(tableDepth, 1) : 0; }

    bool operator==(const RtfParaState &) const = default;
};

size_t qHash(const RtfParaState &state, size_t seed = 0);

} // namespace vandrel
