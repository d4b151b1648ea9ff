#pragma once

#include <QAbstractTextDocumentLayout>
#include <QBasicTimer>
#include <QElapsedTimer>
#include <QTextBlock>
#include <QTextOption>

#include "controls/BlockHeights.h"
#include "controls/ParagraphLines.h"
#include "controls/TableLayouts.h"

namespace vandrel {

/// The layout of the suite's documents. It breaks the lines of a paragraph when the paragraph is first looked at, and
/// goes by estimates for all others, so that opening, typing and jumping to the end cost as much as a screen of text
/// does, however long the document is. A table is laid out as a whole when a part of it is first looked at.
///
/// Paragraphs, lists and inline objects look as in the toolkit's own layout, but tab stops and indents are those of a
/// word processor; see breakParagraph() and TableLayouts. Where first lines hang out over the left margin, the margin
/// is moved in on the screen.
///
/// A document whose pages have a height is laid out for paper, page by page from the top: a page may be drawn when
/// those before it were.
///
/// Whoever shows the document tells which part is visible (setViewport); the paragraphs around it are then laid
/// out between events, and heightCorrected() tells where the estimates above were wrong, so that what is visible
/// can be kept in place.
class LazyTextLayout : public QAbstractTextDocumentLayout
{
    Q_OBJECT
    /// The width of the caret in pixels, a property of this name in every layout.
    Q_PROPERTY(int cursorWidth READ cursorWidth WRITE setCursorWidth)

public:
    explicit LazyTextLayout(QTextDocument *document);

    void draw(QPainter *painter, const PaintContext &context) override;
    int hitTest(const QPointF &point, Qt::HitTestAccuracy accuracy) const override;
    /// On paper the number of pages, as far as the document is laid out; otherwise 1.
    int pageCount() const override;
    QSizeF documentSize() const override;
    QRectF frameBoundingRect(QTextFrame *frame) const override;
    QRectF blockBoundingRect(const QTextBlock &block) const override;

    int cursorWidth() const { return m_cursorWidth; }
    void setCursorWidth(int width) { m_cursorWidth = width; }

    /// The visible part of the document.
    void setViewport(const QRectF &viewport);
    /// How many paragraphs were broken into lines so far: what the layout costs, without a clock.
    qint64 paragraphsLaidOut() const { return m_paragraphsLaidOut; }
    /// Whether the whole document has its true height.
    bool isMeasured() const;
    /// Gives back the lines of what ends above `y` and will not be drawn again; its height stays known.
    void dropLinesAbove(qreal y);
    /// Whether there is nothing left to do between events.
    bool isIdle() const { return !m_idle.isActive(); }

Q_SIGNALS:
    /// The paragraphs that end at or above `y` have turned out `growth` pixels higher than was estimated.
    void heightCorrected(qreal y, qreal growth);

protected:
    void documentChanged(int from, int charsRemoved, int charsAdded) override;
    void resizeInlineObject(QTextInlineObject item, int position, const QTextFormat &format) override;
    void timerEvent(QTimerEvent *event) override;

private:
    struct Margins {
        qreal left = 0;
        qreal top = 0;
        qreal right = 0;
        qreal bottom = 0;
    };

    // What is laid out at once: a paragraph, or a table with all of its paragraphs. The first of them has the height.
    struct Unit {
        QTextBlock block;
        int first = 0;
        int count = 1;
        /// Null for a paragraph.
        QTextFrame *frame = nullptr;
    };

    // The toolkit asks for places through constant functions; finding one may mean laying out first.
    LazyTextLayout *self() const { return const_cast<LazyTextLayout *>(this); }

    bool isInStep() const;
    Margins margins() const;
    qreal width() const;
    qreal leftmost() const;
    Pages pages() const;
    QTextBlock blockAt(int index) const;
    Unit unitAt(const QTextBlock &block, int index) const;
    Unit unitAt(int index) const { return unitAt(blockAt(index), index); }
    Unit unitBehind(const Unit &unit) const;
    Unit unitBefore(const Unit &unit) const;
    qreal roomBefore(const Unit &unit) const;
    qreal top(int index) const;
    bool hasLines(const Unit &unit) const;
    void place(const Unit &unit) const;
    QPointF originOf(const QTextBlock &block) const;

    void measure();
    void resetEstimates();
    void invalidateLines();
    int estimate(const QTextBlock &block) const;
    void changeBlocks(const QTextBlock &first, int firstIndex, int before, int now);
    void clearBlocks(QTextBlock block, int firstIndex, int before, int now);
    void layOutChanged(Unit unit, int end, bool atOnce);
    void reportChange(int first, int count, qint64 oldHeight);
    void reportSize();

    bool layOut(const Unit &unit);
    qreal layOutParagraph(const Unit &unit, qreal top);
    qreal layOutFrame(const Unit &unit, qreal top);
    void setHeight(const Unit &unit, qreal height);
    void layOutAround(const Unit &unit);
    void correctedAbove(int index, qint64 oldTop);
    int positionInFrame(QTextFrame::iterator begin,
                        const QTextFrame::iterator &end,
                        const QPointF &point,
                        Qt::HitTestAccuracy accuracy) const;
    int positionInTable(const QTextTable &table, const QPointF &point, Qt::HitTestAccuracy accuracy) const;
    int positionInside(const QTextBlock &block, const QPointF &point, Qt::HitTestAccuracy accuracy) const;

    void startIdleWork();
    bool layOutZone(const QElapsedTimer &slice);
    bool refineEstimates(const QElapsedTimer &slice);
    void dropFarLines();
    void dropLines(const Unit &unit);

    BlockHeights m_heights;
    qint64 m_paragraphsLaidOut = 0;
    /// The right end of the widest line so far, margins included.
    qreal m_widest = 0;
    bool m_needsRepaint = false;
    QBasicTimer m_idle;
    QRectF m_viewport{0, 0, 0, 1000};
    QSizeF m_reportedSize;
    int m_cursorWidth = 1;
    qreal m_lineHeight = 0;
    qreal m_characterWidth = 0;
    /// How far the left margin is moved in.
    qreal m_hang = 0;
    qsizetype m_knownFormats = 0;
    DeviceScale m_scale;
    TableLayouts m_tables;
    /// The first paragraph whose estimate is not yet made from its own length.
    int m_nextEstimate = 0;
};

} // namespace vandrel
