#pragma once

#include <QTextBlock>
#include <QTextFormat>
#include <QTextOption>

class QPaintDevice;

namespace vandrel {

/// Where the lines of a paragraph may stand. Lengths are in dots of the device that the document is laid out for.
struct TextArea {
    /// The room between the margins; 0 when lines are as long as their text.
    qreal width = 0;
    /// No line begins further left than this, counted from the left margin; 0 or less.
    qreal leftmost = 0;
};

/// The pages of a document that is laid out for paper, one below the other.
struct Pages {
    /// The height of a page; 0 when there are none.
    qreal height = 0;
    qreal topMargin = 0;
    qreal bottomMargin = 0;

    bool exist() const { return height > 0; }
    /// What of a page can hold text.
    qreal room() const { return height - topMargin - bottomMargin; }
    /// The first place at or below `y` where something that high stands on one page. Something higher than a page
    /// begins a page.
    qreal fit(qreal y, qreal itsHeight) const;
    /// The place where the next page's text begins.
    qreal nextPage(qreal y) const;
    /// Whether nothing of the page that `y` is on lies above it.
    bool isPageTop(qreal y) const;
};

/// What came out of breaking a paragraph into lines.
struct ParagraphSize {
    /// From the top of the paragraph to the top of what follows.
    qreal height = 0;
    /// The right end of the widest line, with the paragraph's right indent, counted from the left margin.
    qreal widest = 0;
};

/// How a document's lengths become a device's dots.
struct DeviceScale {
    /// Dots for each of the document's pixels, 96 to the inch.
    qreal lengths = 1;
    /// The same for tab stops, which the toolkit scales in part by itself.
    qreal tabs = 1;

    /// For a device; null stands for the screen at 96 dots per inch.
    static DeviceScale of(const QPaintDevice *device);
};

/// Breaks a paragraph into lines as a word processor does.
///
/// Tab stops count from the margin, whatever the paragraph's indents are (Rich Text Format specification, \tx). The
/// left indent of a paragraph whose first line hangs out is a tab stop of its own. Behind the last stop, stops
/// follow at the document's distance (QTextOption::tabStopDistance), also counted from the margin. In a
/// right-to-left paragraph all of them count from the right margin. Where the first line of a paragraph has another
/// indent than the others, and tabs stand in both, those of the others are off by the difference.
///
/// A paragraph with a word of several thousand letters is broken between any two letters.
///
/// The lines are placed relative to the left margin and to the paragraph's top, which stands at `top` on the pages:
/// no line crosses the end of a page.
ParagraphSize breakParagraph(
    const QTextBlock &block, const TextArea &area, const DeviceScale &scale, const Pages &pages, qreal top);

/// How far the first line of a paragraph of that format hangs out over the left margin, in pixels; 0 for what does not,
/// or is no paragraph. No more than two inches: the margin is moved in by as much, so that every letter can be seen.
qreal hangOf(const QTextFormat &format);

} // namespace vandrel
