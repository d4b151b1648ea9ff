#pragma once

#include <QAbstractTextDocumentLayout>
#include <QBasicTimer>
#include <QElapsedTimer>
#include <QTextBlock>
#include <QTextOption>

#include "controls/BlockHeights.h"

namespace vandrel {

/// A layout for long documents on the screen. It breaks the lines of a paragraph when the paragraph is first
/// looked at, and goes by estimates for all others, so that opening, typing and jumping to the end cost as much
/// as a screen of text does, however long the document is.
///
/// It draws paragraphs, lists and inline objects as the toolkit's own layout does. Frames and tables it does not
/// know: their paragraphs would stand below each other. A document that has any is given the toolkit's layout.
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
    int pageCount() const override { return 1; }
    QSizeF documentSize() const override;
    QRectF frameBoundingRect(QTextFrame *frame) const override;
    QRectF blockBoundingRect(const QTextBlock &block) const override;

    int cursorWidth() const { return m_cursorWidth; }
    void setCursorWidth(int width) { m_cursorWidth = width; }

    /// The visible part of the document.
    void setViewport(const QRectF &viewport);
    /// How many paragraphs were broken into lines so far: what the layout costs, without a clock.
    qint64 paragraphsLaidOut() const { return m_paragraphsLaidOut; }
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

    // The toolkit asks for places through constant functions; finding one may mean laying out first.
    LazyTextLayout *self() const { return const_cast<LazyTextLayout *>(this); }

    bool isInStep() const;
    Margins margins() const;
    qreal width() const;
    QTextBlock blockAt(int index) const;
    qreal spaceBefore(const QTextBlock &block) const;
    qreal top(int index) const;
    void place(const QTextBlock &block, int index) const;

    void measureDefaultFont();
    void resetEstimates();
    void invalidateLines();
    int estimate(const QTextBlock &block) const;
    void changeBlocks(const QTextBlock &first, int firstIndex, int before, int now);
    void reportChange(int first, int count, qint64 oldHeight);
    void reportSize();

    bool layOut(const QTextBlock &block, int index);
    void layOutAround(const QTextBlock &block, int index);
    void correctedAbove(int index, qint64 oldTop);
    qreal layOutLines(const QTextBlock &block);
    QTextOption textOption(const QTextBlock &block) const;
    int positionInside(const QTextBlock &block, const QPointF &point, Qt::HitTestAccuracy accuracy) const;

    void drawBlock(QPainter *painter,
                   const PaintContext &context,
                   const QTextBlock &block,
                   const QRectF &clip) const;
    void drawCursor(QPainter *painter, const PaintContext &context, const QTextBlock &block) const;

    void startIdleWork();
    bool layOutZone(const QElapsedTimer &slice);
    bool refineEstimates(const QElapsedTimer &slice);
    void dropFarLines();

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
    /// The first paragraph whose estimate is not yet made from its own length.
    int m_nextEstimate = 0;
};

} // namespace vandrel
