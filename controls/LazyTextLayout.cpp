#include "controls/LazyTextLayout.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QFontMetricsF>
#include <QPainter>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextLayout>
#include <QTimerEvent>

#include "controls/RichTextDocument.h"
#include "controls/TextLayoutPainter.h"

namespace vandrel {

namespace {

// Heights are kept in 64ths of a dot, the toolkit's own unit of text.
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
// A paragraph that stays with the next one stands on the page of so many of that one's lines.
constexpr int linesKeptWith = 2;
// Keeps a point inside a line when it lies on its end.
constexpr qreal aLittle = 0.01;

qint64 units(qreal pixels)
{
    return static_cast<qint64>(pixels * unitsPerPixel);
}

qreal pixelsOfHeight(qint64 heightUnits)
{
    return static_cast<qreal>(heightUnits) / unitsPerPixel;
}

bool hasLinesOfItsText(const QTextBlock &block)
{
    const QTextLayout *layout = block.layout();
    if (layout->lineCount() == 0)
        return false;
    const QTextLine last = layout->lineAt(layout->lineCount() - 1);
    return last.textStart() + last.textLength() == block.length() - 1 + layout->preeditAreaText().size();
}

void clearLines(QTextBlock block, int count)
{
    for (int i = 0; i < count && block.isValid(); ++i, block = block.next())
        block.clearLayout();
}

} // namespace

LazyTextLayout::LazyTextLayout(QTextDocument *document)
    : QAbstractTextDocumentLayout(document), m_tables(*document)
{
    measure();
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
    return {format.leftMargin() + around + m_hang * m_scale.lengths, format.topMargin() + around,
            format.rightMargin() + around, format.bottomMargin() + around};
}

// The room between the margins; 0 when lines are as long as their text.
qreal LazyTextLayout::width() const
{
    const qreal page = document()->pageSize().width();
    const Margins around = margins();
    return page > 0 ? std::max(0.0, page - around.left - around.right) : 0;
}

// How far out of the text's room a line may begin: on paper in its margin, on the screen in the part of it that was
// added for that.
qreal LazyTextLayout::leftmost() const
{
    return pages().exist() ? -margins().left : -m_hang * m_scale.lengths;
}

Pages LazyTextLayout::pages() const
{
    const Margins around = margins();
    return {std::max(0.0, document()->pageSize().height()), around.top, around.bottom};
}

int LazyTextLayout::pageCount() const
{
    const Pages paper = pages();
    if (!paper.exist())
        return 1;
    const qreal bottom = top(m_heights.count());
    return std::max(1, static_cast<int>(std::ceil((bottom - paper.topMargin) / paper.height)));
}

QTextBlock LazyTextLayout::blockAt(int index) const
{
    return document()->findBlockByNumber(index);
}

LazyTextLayout::Unit LazyTextLayout::unitAt(const QTextBlock &block, int index) const
{
    QTextFrame *frame = block.isValid() ? m_tables.outermostFrame(block.position()) : nullptr;
    if (!frame)
        return {block, index, 1, nullptr};
    const QTextBlock first = document()->findBlock(frame->firstPosition());
    const QTextBlock last = document()->findBlock(frame->lastPosition());
    return {first, first.blockNumber(), last.blockNumber() - first.blockNumber() + 1, frame};
}

LazyTextLayout::Unit LazyTextLayout::unitBehind(const Unit &unit) const
{
    const int index = unit.first + unit.count;
    return unitAt(unit.frame ? blockAt(index) : unit.block.next(), index);
}

LazyTextLayout::Unit LazyTextLayout::unitBefore(const Unit &unit) const
{
    return unitAt(unit.block.previous(), unit.first - 1);
}

qreal LazyTextLayout::top(int index) const
{
    return margins().top + pixelsOfHeight(m_heights.top(index));
}

// The room above is the greater of what a paragraph wants and of what the one before leaves; tables want none.
qreal LazyTextLayout::roomBefore(const Unit &unit) const
{
    const QTextBlock previous = unit.block.previous();
    if (!previous.isValid() || !unit.block.isVisible())
        return 0;
    const qreal own = unit.frame ? 0 : unit.block.blockFormat().topMargin();
    const bool isBehindFrame = m_tables.outermostFrame(previous.position()) != nullptr;
    return m_scale.lengths * std::max(own, isBehindFrame ? 0 : previous.blockFormat().bottomMargin());
}

bool LazyTextLayout::hasLines(const Unit &unit) const
{
    return m_heights.at(unit.first).isLaidOut && unit.block.layout()->lineCount() > 0;
}

// On paper a paragraph stays where it was laid out.
void LazyTextLayout::place(const Unit &unit) const
{
    if (!unit.frame && !pages().exist())
        unit.block.layout()->setPosition(QPointF(margins().left, top(unit.first) + roomBefore(unit)));
}

// What the places of a paragraph's lines count from: for one in a table, the content of its cell.
QPointF LazyTextLayout::originOf(const QTextBlock &block) const
{
    const Unit unit = unitAt(block, block.blockNumber());
    if (!unit.frame)
        return {};
    return QPointF(margins().left, top(unit.first) + roomBefore(unit)) + m_tables.origin(block.position());
}

// Takes in what all lengths depend on. Formats are only ever added to a document.
void LazyTextLayout::measure()
{
    m_scale = DeviceScale::of(paintDevice());
    const QFontMetricsF metrics = paintDevice() ? QFontMetricsF(document()->defaultFont(), paintDevice())
                                                : QFontMetricsF(document()->defaultFont());
    m_lineHeight = std::ceil(metrics.ascent() + metrics.descent() + metrics.leading());
    m_characterWidth = std::max(1.0, metrics.averageCharWidth());
    const QVector<QTextFormat> formats = document()->allFormats();
    for (; m_knownFormats < formats.size(); ++m_knownFormats)
        m_hang = std::max(m_hang, hangOf(formats[m_knownFormats]));
    // Paper has a margin to hang out into.
    if (document()->pageSize().height() > 0)
        m_hang = 0;
}

void LazyTextLayout::resetEstimates()
{
    const int count = document()->blockCount();
    const qreal perLine
        = width() > 0 ? std::max(1.0, width() / m_characterWidth) : document()->characterCount();
    const qreal lines = std::ceil(document()->characterCount() / perLine / count);
    m_heights.reset(count, static_cast<int>(units(std::max(1.0, lines) * m_lineHeight)));
    m_tables.clear();
    m_widest = 0;
    m_nextEstimate = 0;
}

// The heights known so far stay as the best estimates there are.
void LazyTextLayout::invalidateLines()
{
    m_heights.invalidateAll([this](int index) {
        const Unit unit = unitAt(index);
        clearLines(unit.block, unit.count);
    });
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
    const qreal oldHang = m_hang;
    measure();
    const bool sameText
        = (charsRemoved == 0 && charsAdded == document()->characterCount()) || m_hang != oldHang;
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

    const bool isKnown = first.isValid() && before > 0 && firstIndex + before <= m_heights.count();
    if (isKnown && !sameText) {
        changeBlocks(first, firstIndex, before, now);
        return;
    }
    if (isKnown && before == now)
        invalidateLines();
    else
        resetEstimates();
    reportSize();
    Q_EMIT update();
    startIdleWork();
}

// A table that is touched is laid out again as a whole, though none of its other paragraphs has changed.
void LazyTextLayout::changeBlocks(const QTextBlock &first, int firstIndex, int before, int now)
{
    const Unit head = unitAt(first, firstIndex);
    const Unit tail = unitAt(firstIndex + now - 1);
    const int trailing = std::max(0, tail.first + tail.count - firstIndex - now);
    const int oldEnd = std::min(firstIndex + before + trailing, m_heights.count());
    const qint64 oldHeight = m_heights.top(oldEnd) - m_heights.top(head.first);
    if (before != now)
        m_heights.replace(firstIndex, before, now, static_cast<int>(units(m_lineHeight)));
    m_nextEstimate = std::min(m_nextEstimate, now > mostEstimatedAtOnce ? firstIndex : m_heights.count());
    clearBlocks(first, firstIndex, before, now);
    const int end = firstIndex + now + trailing;
    layOutChanged(head, end, now <= smallChange);
    reportChange(head.first, end - head.first, oldHeight);
}

void LazyTextLayout::clearBlocks(QTextBlock block, int firstIndex, int before, int now)
{
    for (int i = 0; i < now; ++i, block = block.next()) {
        block.clearLayout();
        BlockHeights::Entry entry = m_heights.at(firstIndex + i);
        if (before == now && !entry.isLaidOut)
            continue;
        entry.isLaidOut = 0;
        entry.isMeasured = 0;
        if (before != now && now <= mostEstimatedAtOnce)
            entry.height = static_cast<quint32>(estimate(block)) & BlockHeights::greatestHeight;
        m_heights.set(firstIndex + i, entry);
    }
}

void LazyTextLayout::layOutChanged(Unit unit, int end, bool atOnce)
{
    for (; unit.block.isValid() && unit.first < end; unit = unitBehind(unit)) {
        if (unit.frame) {
            BlockHeights::Entry entry = m_heights.at(unit.first);
            entry.isLaidOut = 0;
            m_heights.set(unit.first, entry);
        }
        if (atOnce)
            layOut(unit);
    }
}

void LazyTextLayout::reportChange(int first, int count, qint64 oldHeight)
{
    const qint64 height = m_heights.top(first + count) - m_heights.top(first);
    const qreal everything = std::numeric_limits<int>::max();
    QRectF changed(0, top(first), everything, everything);
    if (height == oldHeight && count <= smallChange)
        changed.setHeight(pixelsOfHeight(height) + m_lineHeight);
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

// Returns whether there was anything to do.
bool LazyTextLayout::layOut(const Unit &unit)
{
    if (hasLines(unit))
        return false;
    const qreal y = top(unit.first);
    qreal height = 0;
    if (unit.frame)
        height = layOutFrame(unit, y);
    else if (unit.block.isVisible())
        height = layOutParagraph(unit, y);
    setHeight(unit, height);
    ++m_paragraphsLaidOut;
    return true;
}

// Breaks the paragraph into lines and returns its height, with the room above. On paper it is placed at once, and
// again when it must not be divided.
qreal LazyTextLayout::layOutParagraph(const Unit &unit, qreal top)
{
    const QTextBlockFormat format = unit.block.blockFormat();
    const Margins around = margins();
    const Pages paper = pages();
    const TextArea area{width(), leftmost()};
    qreal y = top + roomBefore(unit);
    if (paper.exist() && format.pageBreakPolicy() & QTextFormat::PageBreak_AlwaysBefore
        && !paper.isPageTop(y))
        y = paper.nextPage(y);
    ParagraphSize size = breakParagraph(unit.block, area, m_scale, paper, y);
    qreal together = format.nonBreakableLines() ? size.height : 0;
    if (format.boolProperty(richtext::KeepWithNext))
        together = size.height + linesKeptWith * m_lineHeight;
    if (const qreal moved = paper.fit(y, together); moved > y && together > 0 && together <= paper.room()) {
        y = moved;
        size = breakParagraph(unit.block, area, m_scale, paper, y);
    }
    unit.block.layout()->setPosition(QPointF(around.left, y));
    m_widest = std::max(m_widest, around.left + size.widest + around.right);
    const bool isHidden = isHiddenBeforeTable(unit.block, m_tables.outermostFrame(unit.block.position() + 1));
    return y - top + (isHidden ? 0 : size.height);
}

qreal LazyTextLayout::layOutFrame(const Unit &unit, qreal top)
{
    const Margins around = margins();
    const qreal room = roomBefore(unit);
    m_tables.setScale(m_scale);
    m_tables.setPages(pages());
    const QSizeF size = m_tables.layOut(*unit.frame, width(), top + room);
    m_widest = std::max(m_widest, around.left + size.width() + around.right);
    return room + size.height();
}

void LazyTextLayout::setHeight(const Unit &unit, qreal height)
{
    BlockHeights::Entry entry = m_heights.at(unit.first);
    entry.height
        = static_cast<quint32>(std::min<qint64>(units(height), BlockHeights::greatestHeight)) & 0x3FFFFFFF;
    entry.isMeasured = 1;
    entry.isLaidOut = 1;
    m_heights.set(unit.first, entry);
    BlockHeights::Entry inside;
    inside.isMeasured = 1;
    for (int i = 1; i < unit.count; ++i) {
        if (const BlockHeights::Entry known = m_heights.at(unit.first + i);
            !known.isMeasured || known.height > 0)
            m_heights.set(unit.first + i, inside);
    }
}

// Lays out a paragraph together with as much around it as is seen at once: whoever asks for it is about to show
// it, and must not see it move when its neighbours turn out higher than estimated.
void LazyTextLayout::layOutAround(const Unit &unit)
{
    if (hasLines(unit))
        return;
    const qint64 oldTop = m_heights.top(unit.first);
    const qint64 room = units(m_viewport.height());
    layOut(unit);
    qint64 above = 0;
    for (Unit near = unitBefore(unit); near.block.isValid() && above < room; near = unitBefore(near)) {
        layOut(near);
        above += m_heights.at(near.first).height;
    }
    qint64 below = 0;
    for (Unit near = unitBehind(unit); near.block.isValid() && below < room; near = unitBehind(near)) {
        layOut(near);
        below += m_heights.at(near.first).height;
    }
    m_needsRepaint = true;
    correctedAbove(unit.first, oldTop);
    startIdleWork();
}

// Tells of a change of what lies above a paragraph. The document's size is told first when it grows and last when
// it shrinks, so that a scroll bar can follow at any time.
void LazyTextLayout::correctedAbove(int index, qint64 oldTop)
{
    const qint64 growth = m_heights.top(index) - oldTop;
    const qreal y = margins().top + pixelsOfHeight(oldTop);
    if (growth > 0)
        reportSize();
    if (growth != 0)
        Q_EMIT heightCorrected(y, pixelsOfHeight(growth));
    reportSize();
}

QRectF LazyTextLayout::blockBoundingRect(const QTextBlock &block) const
{
    if (!block.isValid() || !block.isVisible() || document()->pageSize().isNull())
        return {};
    if (isInStep()) {
        const Unit unit = unitAt(block, block.blockNumber());
        self()->layOutAround(unit);
        place(unit);
    } else if (block.layout()->lineCount() == 0) {
        breakParagraph(block, {width(), leftmost()}, m_scale, {}, 0);
    }
    const QTextLayout *layout = block.layout();
    QRectF rect = layout->boundingRect();
    rect.moveTopLeft(layout->position() + (isInStep() ? originOf(block) : QPointF()));
    return rect;
}

QRectF LazyTextLayout::frameBoundingRect(QTextFrame *frame) const
{
    if (frame == document()->rootFrame())
        return {QPointF(0, 0), documentSize()};
    const QTextBlock first = document()->findBlock(frame->firstPosition());
    const QRectF content = blockBoundingRect(first);
    const auto *table = qobject_cast<QTextTable *>(frame);
    const TableGeometry *geometry = table ? m_tables.geometry(*table) : nullptr;
    if (geometry) {
        const QPointF corner
            = originOf(first) - m_tables.geometry(*table)->contentOrigin(table->cellAt(0, 0));
        return {corner, QSizeF(geometry->width(), geometry->height())};
    }
    return content.united(blockBoundingRect(document()->findBlock(frame->lastPosition())));
}

QSizeF LazyTextLayout::documentSize() const
{
    const Margins around = margins();
    return {std::max(document()->pageSize().width(), m_widest),
            around.top + pixelsOfHeight(m_heights.total()) + around.bottom};
}

int LazyTextLayout::hitTest(const QPointF &point, Qt::HitTestAccuracy accuracy) const
{
    if (!isInStep())
        return accuracy == Qt::ExactHit ? -1 : 0;
    const qint64 y = units(point.y() - margins().top);
    Unit unit = unitAt(m_heights.indexAt(y));
    self()->layOutAround(unit);
    // What was estimated may have turned out lower or higher, and what is not shown has no height.
    for (Unit behind = unitBehind(unit); behind.block.isValid()
         && (!unit.block.isVisible()
             || m_heights.top(unit.first) + qint64{m_heights.at(unit.first).height} <= y);
         behind = unitBehind(unit)) {
        unit = behind;
        self()->layOut(unit);
    }
    place(unit);
    if (!unit.frame)
        return positionInside(unit.block, point - unit.block.layout()->position(), accuracy);
    const QPointF inside = point - QPointF(margins().left, top(unit.first) + roomBefore(unit));
    if (const auto *table = qobject_cast<QTextTable *>(unit.frame))
        return positionInTable(*table, inside, accuracy);
    return positionInFrame(unit.frame->begin(), unit.frame->end(), inside, accuracy);
}

int LazyTextLayout::positionInTable(const QTextTable &table,
                                    const QPointF &point,
                                    Qt::HitTestAccuracy accuracy) const
{
    const TableGeometry *geometry = m_tables.geometry(table);
    if (!geometry)
        return accuracy == Qt::ExactHit ? -1 : table.firstPosition();
    const QPointF inside = point - geometry->position;
    const QTextTableCell cell = table.cellAt(geometry->rowAt(inside.y()), geometry->columnAt(inside.x()));
    return positionInFrame(cell.begin(), cell.end(), inside - geometry->contentOrigin(cell), accuracy);
}

// A point belongs to the table it is in, or else to the last paragraph that begins above it; what is below the last
// line belongs to that line.
int LazyTextLayout::positionInFrame(QTextFrame::iterator begin,
                                    const QTextFrame::iterator &end,
                                    const QPointF &point,
                                    Qt::HitTestAccuracy accuracy) const
{
    QTextFrame::iterator hit = begin;
    for (QTextFrame::iterator it = begin; it != end; ++it) {
        if (const QTextFrame *frame = it.currentFrame()) {
            const auto *table = qobject_cast<const QTextTable *>(frame);
            const TableGeometry *geometry = table ? m_tables.geometry(*table) : nullptr;
            const qreal down = geometry ? point.y() - geometry->position.y() : -1;
            if (down >= 0 && down < geometry->height())
                return positionInTable(*table, point, accuracy);
            if (down >= 0)
                hit = it;
        } else if (it.currentBlock().isVisible() && it.currentBlock().layout()->position().y() <= point.y()) {
            hit = it;
        }
    }
    if (const auto *table = qobject_cast<const QTextTable *>(hit.currentFrame()))
        return positionInTable(*table, point, accuracy);
    const QTextBlock block = hit.currentBlock();
    if (!block.isValid())
        return -1;
    const QTextLayout *layout = block.layout();
    QPointF inside = point - layout->position();
    if (accuracy == Qt::FuzzyHit)
        inside.setY(std::clamp(inside.y(), 0.0, std::max(0.0, layout->boundingRect().bottom() - aLittle)));
    return positionInside(block, inside, accuracy);
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
    const QRectF textClip = clip & all.adjusted(around.left - m_hang * m_scale.lengths, 0, -around.right, 0);
    TextLayoutPainter parts(*painter, context, m_tables, m_cursorWidth);
    parts.setPages(pages());
    parts.setScale(m_scale);

    const qint64 oldTotal = m_heights.total();
    Unit unit = unitAt(m_heights.indexAt(units(clip.top() - around.top)));
    for (; unit.block.isValid() && top(unit.first) <= clip.bottom(); unit = unitBehind(unit)) {
        layOut(unit);
        if (!unit.block.isVisible())
            continue;
        place(unit);
        if (unit.frame)
            parts.drawFrame(*unit.frame, QPointF(around.left, top(unit.first) + roomBefore(unit)), textClip);
        else
            parts.drawParagraph(unit.block, textClip);
    }
    // What lies outside the clip may have moved.
    if (m_heights.total() != oldTotal)
        m_needsRepaint = true;
    startIdleWork();
}

bool LazyTextLayout::isMeasured() const
{
    return isInStep() && m_heights.count() > 0
        && m_heights.at(unitAt(m_heights.count() - 1).first).isMeasured;
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

// What is laid out for paper is laid out as it is drawn.
void LazyTextLayout::startIdleWork()
{
    if (!m_idle.isActive() && !pages().exist())
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
    const Unit visible = unitAt(m_heights.indexAt(units(m_viewport.top() - margins().top)));
    const qint64 oldTop = m_heights.top(visible.first);
    bool changed = false;
    const auto hasTime = [&slice] { return slice.elapsed() < sliceMilliseconds; };
    Unit unit = visible;
    for (; unit.block.isValid() && m_heights.top(unit.first) + qint64{m_heights.at(unit.first).height} > above
         && hasTime();
         unit = unitBefore(unit))
        changed |= layOut(unit);
    correctedAbove(visible.first, oldTop);
    unit = visible;
    for (; unit.block.isValid() && top(unit.first) < m_viewport.bottom() + height && hasTime();
         unit = unitBehind(unit))
        changed |= layOut(unit);
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
        const Unit unit = unitAt(index);
        if (unit.first + unit.count > first && unit.first <= last)
            continue;
        dropLines(unit);
    }
}

void LazyTextLayout::dropLines(const Unit &unit)
{
    clearLines(unit.block, unit.count);
    BlockHeights::Entry entry = m_heights.at(unit.first);
    entry.isLaidOut = 0;
    m_heights.set(unit.first, entry);
}

void LazyTextLayout::dropLinesAbove(qreal y)
{
    Unit unit = unitAt(m_heights.indexAt(units(y - margins().top)));
    for (unit = unitBefore(unit); unit.block.isValid() && m_heights.at(unit.first).isLaidOut;
         unit = unitBefore(unit)) {
        if (pixelsOfHeight(m_heights.top(unit.first)) + pixelsOfHeight(m_heights.at(unit.first).height)
                + margins().top
            <= y)
            dropLines(unit);
    }
}

} // namespace vandrel
