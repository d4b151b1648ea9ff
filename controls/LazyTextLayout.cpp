#include "controls/LazyTextLayout.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QFontMetricsF>
#include <QPainter>
#include <QStyle>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextLayout>
#include <QTextList>
#include <QTimerEvent>

#include "controls/ListMarker.h"

namespace vandrel {

namespace {

// Heights are kept in 64ths of a pixel, the toolkit's own unit of text.
constexpr qreal unitsPerPixel = 64;
// Idle work runs in slices between which the window takes its input.
constexpr qint64 sliceMilliseconds = 4;
// A change of up to so many paragraphs is laid out at once, to repaint no more than what has changed.
constexpr int smallChange = 64;
// Beyond so many paragraphs with lines, those far from the visible part give theirs back.
constexpr int mostLaidOut = 4000;
// New paragraphs beyond this number are estimated between events.
constexpr int mostEstimatedAtOnce = 10'000;
constexpr int estimatesBetweenClockReadings = 256;

qint64 units(qreal pixels)
{
    return static_cast<qint64>(pixels * unitsPerPixel);
}

qreal pixels(qint64 heightUnits)
{
    return static_cast<qreal>(heightUnits) / unitsPerPixel;
}

struct LineHeight {
    /// From this line's top to the next one's.
    qreal advance = 0;
    /// From this line's top to the paragraph's bottom, were it the last.
    qreal bottom = 0;
    /// How far the line is moved up.
    qreal raise = 0;
};

// A paragraph's line spacing counts from the full height of a line, leading included.
LineHeight lineHeight(const QTextBlockFormat &format, const QTextLine &line)
{
    const qreal natural = std::ceil(line.ascent() + line.descent() + line.leading());
    LineHeight height{format.lineHeight(natural, 1), format.lineHeight(line.height(), 1), 0};
    if (format.lineHeightType() == QTextBlockFormat::FixedHeight)
        height.raise = line.ascent() + std::max(line.leading(), 0.0) - height.advance * 4 / 5;
    else if (format.lineHeightType() == QTextBlockFormat::MinimumHeight)
        height.raise = line.height() - height.advance;
    return height;
}

bool hasLinesOfItsText(const QTextBlock &block)
{
    const QTextLayout *layout = block.layout();
    if (layout->lineCount() == 0)
        return false;
    const QTextLine last = layout->lineAt(layout->lineCount() - 1);
    return last.textStart() + last.textLength() == block.length() - 1 + layout->preeditAreaText().size();
}

QVector<QTextLayout::FormatRange> selectionsIn(const QAbstractTextDocumentLayout::PaintContext &context,
                                               const QTextBlock &block)
{
    QVector<QTextLayout::FormatRange> ranges;
    for (const QAbstractTextDocumentLayout::Selection &selection : context.selections) {
        const int start = selection.cursor.selectionStart() - block.position();
        const int end = selection.cursor.selectionEnd() - block.position();
        if (start >= block.length() || end <= 0 || end <= start)
            continue;
        QTextLayout::FormatRange range;
        range.start = start;
        range.length = end - start;
        range.format = selection.format;
        ranges.append(range);
    }
    return ranges;
}

// A list's marker is selected together with the paragraph end before it.
const QTextCharFormat *markerSelection(const QAbstractTextDocumentLayout::PaintContext &context,
                                       const QTextBlock &block)
{
    for (const QAbstractTextDocumentLayout::Selection &selection : context.selections) {
        if (selection.cursor.selectionStart() < block.position()
            && selection.cursor.selectionEnd() > block.position())
            return &selection.format;
    }
    return nullptr;
}

void drawRule(QPainter *painter, const QPalette &palette, const QTextBlock &block, const QRectF &rect)
{
    const QTextBlockFormat format = block.blockFormat();
    if (!format.hasProperty(QTextFormat::BlockTrailingHorizontalRulerWidth))
        return;
    const qreal width
        = format.lengthProperty(QTextFormat::BlockTrailingHorizontalRulerWidth).value(rect.width());
    const qreal y = block.length() == 1 ? rect.center().y() : rect.bottom();
    const qreal middle = rect.center().x();
    painter->setPen(palette.color(QPalette::Dark));
    painter->drawLine(QLineF(middle - width / 2, y, middle + width / 2, y));
}

} // namespace

LazyTextLayout::LazyTextLayout(QTextDocument *document) : QAbstractTextDocumentLayout(document)
{
    measureDefaultFont();
}

// Inside an edit block the document is ahead of what the layout was told.
bool LazyTextLayout::isInStep() const
{
    return m_heights.count() == document()->blockCount();
}

LazyTextLayout::Margins LazyTextLayout::margins() const
{
    const QTextFrameFormat format = document()->rootFrame()->frameFormat();
    const qreal around = format.border() + format.padding();
    return {format.leftMargin() + around, format.topMargin() + around, format.rightMargin() + around,
            format.bottomMargin() + around};
}

// The room between the margins; 0 when lines are as long as their text.
qreal LazyTextLayout::width() const
{
    const qreal page = document()->pageSize().width();
    const Margins around = margins();
    return page > 0 ? std::max(0.0, page - around.left - around.right) : 0;
}

QTextBlock LazyTextLayout::blockAt(int index) const
{
    return document()->findBlockByNumber(index);
}

qreal LazyTextLayout::top(int index) const
{
    return margins().top + pixels(m_heights.top(index));
}

qreal LazyTextLayout::spaceBefore(const QTextBlock &block) const
{
    const QTextBlock previous = block.previous();
    if (!previous.isValid() || !block.isVisible())
        return 0;
    return std::max(block.blockFormat().topMargin(), previous.blockFormat().bottomMargin());
}

void LazyTextLayout::place(const QTextBlock &block, int index) const
{
    block.layout()->setPosition(QPointF(margins().left, top(index) + spaceBefore(block)));
}

void LazyTextLayout::measureDefaultFont()
{
    const QFontMetricsF metrics(document()->defaultFont());
    m_lineHeight = std::ceil(metrics.ascent() + metrics.descent() + metrics.leading());
    m_characterWidth = std::max(1.0, metrics.averageCharWidth());
}

void LazyTextLayout::resetEstimates()
{
    measureDefaultFont();
    const int count = document()->blockCount();
    const qreal perLine
        = width() > 0 ? std::max(1.0, width() / m_characterWidth) : document()->characterCount();
    const qreal lines = std::ceil(document()->characterCount() / perLine / count);
    m_heights.reset(count, static_cast<int>(units(std::max(1.0, lines) * m_lineHeight)));
    m_widest = 0;
    m_nextEstimate = 0;
}

// The heights known so far stay as the best estimates there are.
void LazyTextLayout::invalidateLines()
{
    measureDefaultFont();
    m_heights.invalidateAll([this](int index) { blockAt(index).clearLayout(); });
    m_widest = 0;
    m_nextEstimate = 0;
}

int LazyTextLayout::estimate(const QTextBlock &block) const
{
    if (!block.isVisible())
        return 0;
    const qreal lines
        = width() > 0 ? std::ceil(block.length() * m_characterWidth / std::max(1.0, width())) : 1;
    return static_cast<int>(
        std::min<qint64>(units(std::max(1.0, lines) * m_lineHeight), BlockHeights::greatestHeight));
}

void LazyTextLayout::documentChanged(int from, int charsRemoved, int charsAdded)
{
    const int blocks = document()->blockCount();
    const bool sameText = charsRemoved == 0 && charsAdded == document()->characterCount();
    QTextBlock first = document()->findBlock(from);
    QTextBlock last = document()->findBlock(from + charsAdded);
    if (!last.isValid())
        last = document()->lastBlock();
    // The space between two paragraphs belongs to the second and depends on both.
    if ((charsRemoved == charsAdded || blocks != m_heights.count()) && last.next().isValid())
        last = last.next();
    const int firstIndex = first.blockNumber();
    int now = last.blockNumber() - firstIndex + 1;
    int before = now - (blocks - m_heights.count());
    // With lists about, the document reports the end of a change of several places a little too early.
    for (last = last.next(); last.isValid() && before > 0 && firstIndex + before < m_heights.count()
         && m_heights.at(firstIndex + before).isLaidOut && !hasLinesOfItsText(last);
         last = last.next()) {
        ++now;
        ++before;
    }

    if (!first.isValid() || before <= 0 || firstIndex + before > m_heights.count()) {
        resetEstimates();
    } else if (sameText) {
        invalidateLines();
    } else {
        changeBlocks(first, firstIndex, before, now);
        return;
    }
    reportSize();
    Q_EMIT update();
    startIdleWork();
}

void LazyTextLayout::changeBlocks(const QTextBlock &first, int firstIndex, int before, int now)
{
    const qint64 oldHeight = m_heights.top(firstIndex + before) - m_heights.top(firstIndex);
    if (before != now)
        m_heights.replace(firstIndex, before, now, static_cast<int>(units(m_lineHeight)));
    m_nextEstimate = std::min(m_nextEstimate, now > mostEstimatedAtOnce ? firstIndex : m_heights.count());
    QTextBlock block = first;
    for (int i = 0; i < now; ++i, block = block.next()) {
        BlockHeights::Entry entry = m_heights.at(firstIndex + i);
        if (before == now && !entry.isLaidOut && !entry.isMeasured)
            continue;
        block.clearLayout();
        entry.isLaidOut = 0;
        entry.isMeasured = 0;
        if (before != now && now <= mostEstimatedAtOnce)
            entry.height = static_cast<quint32>(estimate(block)) & BlockHeights::greatestHeight;
        m_heights.set(firstIndex + i, entry);
    }
    if (now <= smallChange) {
        block = first;
        for (int i = 0; i < now; ++i, block = block.next())
            layOut(block, firstIndex + i);
    }
    reportChange(firstIndex, now, oldHeight);
}

void LazyTextLayout::reportChange(int first, int count, qint64 oldHeight)
{
    const qint64 height = m_heights.top(first + count) - m_heights.top(first);
    const qreal everything = std::numeric_limits<int>::max();
    QRectF changed(0, top(first), everything, everything);
    if (height == oldHeight && count <= smallChange)
        changed.setHeight(pixels(height) + m_lineHeight);
    reportSize();
    Q_EMIT update(changed);
    startIdleWork();
}

void LazyTextLayout::reportSize()
{
    const QSizeF size = documentSize();
    if (size == m_reportedSize)
        return;
    m_reportedSize = size;
    Q_EMIT documentSizeChanged(size);
}

QTextOption LazyTextLayout::textOption(const QTextBlock &block) const
{
    const QTextBlockFormat format = block.blockFormat();
    QTextOption option = document()->defaultTextOption();
    const Qt::LayoutDirection direction = block.textDirection();
    const Qt::Alignment alignment
        = format.hasProperty(QTextFormat::BlockAlignment) ? format.alignment() : option.alignment();
    option.setTextDirection(direction);
    option.setTabs(format.tabPositions());
    option.setAlignment(QStyle::visualAlignment(direction, alignment));
    if (format.nonBreakableLines() || width() <= 0)
        option.setWrapMode(QTextOption::ManualWrap);
    return option;
}

// Breaks the paragraph into lines and returns their height.
qreal LazyTextLayout::layOutLines(const QTextBlock &block)
{
    const QTextBlockFormat format = block.blockFormat();
    const bool leftToRight = block.textDirection() == Qt::LeftToRight;
    qreal indent = format.indent();
    if (const QTextList *list = block.textList())
        indent += list->format().indent();
    indent *= document()->indentWidth();
    const qreal left = format.leftMargin() + (leftToRight ? indent : 0);
    const qreal right = format.rightMargin() + (leftToRight ? 0 : indent);

    QTextLayout *layout = block.layout();
    layout->setTextOption(textOption(block));
    layout->beginLayout();
    qreal y = 0;
    qreal bottom = 0;
    qreal firstIndent = format.textIndent();
    const Margins around = margins();
    for (QTextLine line = layout->createLine(); line.isValid(); line = layout->createLine()) {
        line.setLeadingIncluded(true);
        line.setLineWidth(std::max(0.0, width() - left - right - firstIndent));
        const LineHeight height = lineHeight(format, line);
        line.setPosition(QPointF(left + (leftToRight ? firstIndent : 0), y - height.raise));
        bottom = y + height.bottom;
        y += height.advance;
        m_widest
            = std::max(m_widest, around.left + line.x() + line.naturalTextWidth() + right + around.right);
        firstIndent = 0;
    }
    layout->endLayout();
    return std::max(y, bottom);
}

// Returns whether there was anything to do.
bool LazyTextLayout::layOut(const QTextBlock &block, int index)
{
    BlockHeights::Entry entry = m_heights.at(index);
    if (entry.isLaidOut && block.layout()->lineCount() > 0)
        return false;
    const qreal height = block.isVisible() ? spaceBefore(block) + layOutLines(block) : 0;
    entry.height
        = static_cast<quint32>(std::min<qint64>(units(height), BlockHeights::greatestHeight)) & 0x3FFFFFFF;
    entry.isMeasured = 1;
    entry.isLaidOut = 1;
    m_heights.set(index, entry);
    ++m_paragraphsLaidOut;
    return true;
}

// Lays out a paragraph together with as much around it as is seen at once: whoever asks for it is about to show
// it, and must not see it move when its neighbours turn out higher than estimated.
void LazyTextLayout::layOutAround(const QTextBlock &block, int index)
{
    if (m_heights.at(index).isLaidOut && block.layout()->lineCount() > 0)
        return;
    const qint64 oldTop = m_heights.top(index);
    const qint64 room = units(m_viewport.height());
    layOut(block, index);
    qint64 above = 0;
    QTextBlock neighbour = block.previous();
    for (int i = index - 1; i >= 0 && above < room; --i, neighbour = neighbour.previous()) {
        layOut(neighbour, i);
        above += m_heights.at(i).height;
    }
    qint64 below = 0;
    neighbour = block.next();
    for (int i = index + 1; i < m_heights.count() && below < room; ++i, neighbour = neighbour.next()) {
        layOut(neighbour, i);
        below += m_heights.at(i).height;
    }
    m_needsRepaint = true;
    correctedAbove(index, oldTop);
    startIdleWork();
}

// Tells of a change of what lies above a paragraph. The document's size is told first when it grows and last when
// it shrinks, so that a scroll bar can follow at any time.
void LazyTextLayout::correctedAbove(int index, qint64 oldTop)
{
    const qint64 growth = m_heights.top(index) - oldTop;
    const qreal y = margins().top + pixels(oldTop);
    if (growth > 0)
        reportSize();
    if (growth != 0)
        Q_EMIT heightCorrected(y, pixels(growth));
    reportSize();
}

QRectF LazyTextLayout::blockBoundingRect(const QTextBlock &block) const
{
    if (!block.isValid() || !block.isVisible() || document()->pageSize().isNull())
        return {};
    const int index = block.blockNumber();
    if (isInStep()) {
        self()->layOutAround(block, index);
        place(block, index);
    } else if (block.layout()->lineCount() == 0) {
        self()->layOutLines(block);
    }
    const QTextLayout *layout = block.layout();
    QRectF rect = layout->boundingRect();
    rect.moveTopLeft(layout->position());
    return rect;
}

QRectF LazyTextLayout::frameBoundingRect(QTextFrame *frame) const
{
    if (frame == document()->rootFrame())
        return {QPointF(0, 0), documentSize()};
    QRectF rect = blockBoundingRect(document()->findBlock(frame->firstPosition()));
    return rect.united(blockBoundingRect(document()->findBlock(frame->lastPosition())));
}

QSizeF LazyTextLayout::documentSize() const
{
    const Margins around = margins();
    return {std::max(document()->pageSize().width(), m_widest),
            around.top + pixels(m_heights.total()) + around.bottom};
}

int LazyTextLayout::hitTest(const QPointF &point, Qt::HitTestAccuracy accuracy) const
{
    if (!isInStep())
        return accuracy == Qt::ExactHit ? -1 : 0;
    const qint64 y = units(point.y() - margins().top);
    int index = m_heights.indexAt(y);
    QTextBlock block = blockAt(index);
    self()->layOutAround(block, index);
    // What was estimated may have turned out lower or higher, and what is not shown has no height.
    while (block.next().isValid()
           && (!block.isVisible() || m_heights.top(index) + qint64{m_heights.at(index).height} <= y)) {
        block = block.next();
        self()->layOut(block, ++index);
    }
    place(block, index);
    return positionInside(block, point - block.layout()->position(), accuracy);
}

int LazyTextLayout::positionInside(const QTextBlock &block,
                                   const QPointF &point,
                                   Qt::HitTestAccuracy accuracy) const
{
    const QTextLayout *layout = block.layout();
    const int last = document()->characterCount() - 1;
    // The room below the lines belongs to what follows.
    if (point.y() > layout->boundingRect().bottom())
        return accuracy == Qt::ExactHit ? -1 : std::min(block.position() + block.length(), last);
    int position = 0;
    bool exact = false;
    for (int i = 0; i < layout->lineCount(); ++i) {
        const QTextLine line = layout->lineAt(i);
        const QRectF rect = line.naturalTextRect();
        if (rect.top() > point.y())
            break;
        if (rect.bottom() <= point.y()) {
            position = line.textStart() + line.textLength();
            continue;
        }
        exact = rect.left() <= point.x() && point.x() <= rect.right();
        position = line.xToCursor(point.x(),
                                  accuracy == Qt::ExactHit ? QTextLine::CursorOnCharacter
                                                           : QTextLine::CursorBetweenCharacters);
        break;
    }
    if (accuracy == Qt::ExactHit && !exact)
        return -1;
    return std::min(block.position() + position, last + static_cast<int>(layout->preeditAreaText().size()));
}

void LazyTextLayout::draw(QPainter *painter, const PaintContext &context)
{
    if (!isInStep())
        return;
    const QRectF all(QPointF(0, 0), documentSize());
    const QRectF clip = context.clip.isValid() ? context.clip : all;
    const QBrush paper = document()->rootFrame()->frameFormat().background();
    if (paper.style() != Qt::NoBrush)
        painter->fillRect(clip, paper);
    const Margins around = margins();
    const QRectF textClip = clip & all.adjusted(around.left, 0, -around.right, 0);

    const qint64 oldTotal = m_heights.total();
    int index = m_heights.indexAt(units(clip.top() - around.top));
    for (QTextBlock block = blockAt(index); block.isValid() && top(index) <= clip.bottom();
         block = block.next(), ++index) {
        layOut(block, index);
        if (!block.isVisible())
            continue;
        place(block, index);
        drawBlock(painter, context, block, textClip);
    }
    // What lies outside the clip may have moved.
    if (m_heights.total() != oldTotal)
        m_needsRepaint = true;
    startIdleWork();
}

void LazyTextLayout::drawBlock(QPainter *painter,
                               const PaintContext &context,
                               const QTextBlock &block,
                               const QRectF &clip) const
{
    const QTextLayout *layout = block.layout();
    const QRectF rect = layout->boundingRect().translated(layout->position());
    const QBrush background = block.blockFormat().background();
    if (background.style() != Qt::NoBrush) {
        painter->setBrushOrigin(rect.topLeft());
        painter->fillRect(rect, background);
    }
    drawListMarker(painter, block, context.palette, markerSelection(context, block));

    const QPen oldPen = painter->pen();
    painter->setPen(context.palette.color(QPalette::Text));
    layout->draw(painter, QPointF(), selectionsIn(context, block), clip);
    drawCursor(painter, context, block);
    drawRule(painter, context.palette, block, rect);
    painter->setPen(oldPen);
}

void LazyTextLayout::drawCursor(QPainter *painter, const PaintContext &context, const QTextBlock &block) const
{
    const QTextLayout *layout = block.layout();
    int position = context.cursorPosition - block.position();
    // A caret inside text that an input method has not yet committed is told as a number below -1.
    if (context.cursorPosition < -1 && !layout->preeditAreaText().isEmpty())
        position = layout->preeditAreaPosition() - (context.cursorPosition + 2);
    else if (!block.contains(context.cursorPosition))
        return;
    layout->drawCursor(painter, QPointF(), position, m_cursorWidth);
}

void LazyTextLayout::resizeInlineObject(QTextInlineObject item, int position, const QTextFormat &format)
{
    const QTextCharFormat characters = format.toCharFormat();
    QTextObjectInterface *handler = handlerForObject(characters.objectType());
    if (!handler)
        return;
    const QSizeF size = handler->intrinsicSize(document(), position, format);
    item.setWidth(size.width());
    item.setAscent(size.height());
    item.setDescent(0);
    if (characters.verticalAlignment() == QTextCharFormat::AlignMiddle) {
        const qreal halfLetter = QFontMetrics(characters.font()).xHeight() / 2.0;
        item.setAscent((size.height() + halfLetter) / 2);
        item.setDescent((size.height() - halfLetter) / 2);
    }
}

void LazyTextLayout::setViewport(const QRectF &viewport)
{
    m_viewport = viewport;
    startIdleWork();
}

void LazyTextLayout::startIdleWork()
{
    if (!m_idle.isActive())
        m_idle.start(0, this);
}

void LazyTextLayout::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_idle.timerId()) {
        QAbstractTextDocumentLayout::timerEvent(event);
        return;
    }
    if (!isInStep())
        return;
    QElapsedTimer slice;
    slice.start();
    if (!layOutZone(slice) && !refineEstimates(slice)) {
        dropFarLines();
        m_idle.stop();
    }
    reportSize();
    if (m_needsRepaint) {
        m_needsRepaint = false;
        Q_EMIT update();
    }
}

// Lays out a screen above and a screen below the visible part, so that scrolling meets no surprises. Returns
// whether more is left to do.
bool LazyTextLayout::layOutZone(const QElapsedTimer &slice)
{
    const qreal height = std::max(1.0, m_viewport.height());
    const qint64 above = units(m_viewport.top() - margins().top - height);
    const int visible = m_heights.indexAt(units(m_viewport.top() - margins().top));
    const qint64 oldTop = m_heights.top(visible);
    bool changed = false;
    int index = visible;
    QTextBlock block = blockAt(index);
    const auto hasTime = [&slice] { return slice.elapsed() < sliceMilliseconds; };
    for (; index >= 0 && m_heights.top(index) + qint64{m_heights.at(index).height} > above && hasTime();
         --index, block = block.previous())
        changed |= layOut(block, index);
    correctedAbove(visible, oldTop);
    index = visible;
    for (block = blockAt(index); block.isValid() && top(index) < m_viewport.bottom() + height && hasTime();
         block = block.next(), ++index)
        changed |= layOut(block, index);
    m_needsRepaint |= changed;
    return !hasTime();
}

// Replaces the common first estimate by one from each paragraph's own length. Returns whether more is left to do.
bool LazyTextLayout::refineEstimates(const QElapsedTimer &slice)
{
    if (m_nextEstimate >= m_heights.count())
        return false;
    const int visible = m_heights.indexAt(units(m_viewport.top() - margins().top));
    const qint64 oldTop = m_heights.top(visible);
    QTextBlock block = blockAt(m_nextEstimate);
    for (int done = 0; block.isValid(); block = block.next(), ++m_nextEstimate, ++done) {
        if (done % estimatesBetweenClockReadings == 0 && slice.elapsed() >= sliceMilliseconds)
            break;
        BlockHeights::Entry entry = m_heights.at(m_nextEstimate);
        if (entry.isMeasured)
            continue;
        entry.height = static_cast<quint32>(estimate(block)) & BlockHeights::greatestHeight;
        m_heights.set(m_nextEstimate, entry);
    }
    correctedAbove(visible, oldTop);
    return m_nextEstimate < m_heights.count();
}

void LazyTextLayout::dropFarLines()
{
    if (m_heights.laidOut() <= mostLaidOut)
        return;
    const int visible = m_heights.indexAt(units(m_viewport.top() - margins().top));
    const int first = visible - mostLaidOut / 4;
    const int last = visible + mostLaidOut / 4;
    for (const int index : m_heights.laidOutIndices()) {
        if (index >= first && index <= last)
            continue;
        blockAt(index).clearLayout();
        BlockHeights::Entry entry = m_heights.at(index);
        entry.isLaidOut = 0;
        m_heights.set(index, entry);
    }
}

} // namespace vandrel
