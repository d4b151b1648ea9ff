#include "controls/ParagraphLines.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QGuiApplication>
#include <QPaintDevice>
#include <QScreen>
#include <QStyle>
#include <QTextDocument>
#include <QTextLayout>
#include <QTextList>

namespace vandrel {

namespace {

constexpr qreal pixelsPerInch = 96;
// What hangs out further keeps most of the window for the text.
constexpr qreal mostHang = 2 * pixelsPerInch;
// A paragraph with a longer word than this is broken anywhere.
constexpr int longestWord = 4096;
// From here on come the scripts whose lines may be broken between any two letters.
constexpr char16_t firstIdeograph = 0x2E80;
// A line without an end has so many stops at the document's distance.
constexpr int mostRegularStops = 200;
// Heights are kept in the toolkit's units of text; sums of them may be a little off.
constexpr qreal tolerance = 0.5;

struct LineHeight {
    /// From this line's top to the next one's.
    qreal advance = 0;
    /// From this line's top to the paragraph's bottom, were it the last.
    qreal bottom = 0;
    /// How far the line is moved up.
    qreal raise = 0;
};

// A paragraph's line spacing counts from the full height of a line, leading included.
LineHeight lineHeight(const QTextBlockFormat &format, const QTextLine &line, qreal scale)
{
    const qreal natural = std::ceil(line.ascent() + line.descent() + line.leading());
    LineHeight height{format.lineHeight(natural, scale), format.lineHeight(line.height(), scale), 0};
    if (format.lineHeightType() == QTextBlockFormat::FixedHeight)
        height.raise = line.ascent() + std::max(line.leading(), 0.0) - height.advance * 4 / 5;
    else if (format.lineHeightType() == QTextBlockFormat::MinimumHeight)
        height.raise = line.height() - height.advance;
    return height;
}

// A paragraph's indents. "Leading" is the side where its lines begin.
struct Indents {
    qreal leading = 0;
    qreal trailing = 0;
    qreal first = 0;
    bool leftToRight = true;
};

Indents indentsOf(const QTextBlock &block, const TextArea &area, qreal scale)
{
    const QTextBlockFormat format = block.blockFormat();
    Indents indents;
    indents.leftToRight = block.textDirection() == Qt::LeftToRight;
    qreal steps = format.indent();
    if (const QTextList *list = block.textList())
        steps += list->format().indent();
    const qreal stepped = steps * block.document()->indentWidth();
    const qreal left = format.leftMargin();
    const qreal right = format.rightMargin();
    indents.leading = scale * ((indents.leftToRight ? left : right) + stepped);
    // A line that reached beyond the trailing margin could not be read without scrolling for each.
    indents.trailing = scale * std::max(0.0, indents.leftToRight ? right : left);
    indents.first = scale * format.textIndent();
    indents.leading = std::max(indents.leading, area.leftmost);
    indents.first = std::max(indents.first, area.leftmost - indents.leading);
    return indents;
}

// Sets the tab stops of the lines that begin at `start`. The toolkit counts them from there, and knows no distance that
// counts from elsewhere: all stops of the line are stated.
class TabStops
{
public:
    TabStops(const QTextBlock &block, const Indents &indents, const TextArea &area, const DeviceScale &scale)
        : m_text(block.text()), m_toStops(scale.tabs / scale.lengths), m_width(area.width)
    {
        if (!m_text.contains(u'\t'))
            return;
        for (QTextOption::Tab stop : block.blockFormat().tabPositions()) {
            stop.position *= scale.tabs;
            m_stops.append(stop);
        }
        if (indents.first < 0)
            m_stops.append(QTextOption::Tab(indents.leading * m_toStops, QTextOption::LeftTab));
        std::stable_sort(m_stops.begin(), m_stops.end(), isBefore);
        appendRegularStops(block.document()->defaultTextOption().tabStopDistance() * scale.tabs);
    }

    void setFor(QTextLayout &layout, qreal start) const
    {
        if (m_stops.isEmpty())
            return;
        QTextOption option = layout.textOption();
        QList<QTextOption::Tab> stops = m_stops;
        for (QTextOption::Tab &stop : stops)
            stop.position -= start * m_toStops;
        option.setTabs(stops);
        layout.setTextOption(option);
    }

    bool areIn(const QTextLine &line) const
    {
        return QStringView(m_text).mid(line.textStart(), line.textLength()).contains(u'\t');
    }

private:
    static bool isBefore(const QTextOption::Tab &one, const QTextOption::Tab &other)
    {
        return one.position < other.position;
    }

    void appendRegularStops(qreal distance)
    {
        if (distance <= 0)
            return;
        const qreal last = m_stops.isEmpty() ? 0 : std::max(0.0, m_stops.last().position);
        const qreal end = m_width > 0 ? m_width * m_toStops : std::numeric_limits<qreal>::max();
        qreal position = (std::floor(last / distance) + 1) * distance;
        for (int i = 0; i < mostRegularStops && position <= end; ++i, position += distance)
            m_stops.append(QTextOption::Tab(position, QTextOption::LeftTab));
    }

    QString m_text;
    QList<QTextOption::Tab> m_stops;
    qreal m_toStops;
    qreal m_width;
};

bool mayBreakBehind(QChar c)
{
    return c.isSpace() || c == u'-' || c >= firstIdeograph;
}

// The toolkit reads a word to its end for each of the lines that it is broken into, so that a very long one would take
// hours.
bool hasEndlessWord(const QTextBlock &block)
{
    if (block.length() <= longestWord)
        return false;
    int length = 0;
    for (const QChar c : block.text()) {
        length = mayBreakBehind(c) ? 0 : length + 1;
        if (length > longestWord)
            return true;
    }
    return false;
}

QTextOption textOption(const QTextBlock &block, const TextArea &area)
{
    const QTextBlockFormat format = block.blockFormat();
    QTextOption option = block.document()->defaultTextOption();
    const Qt::LayoutDirection direction = block.textDirection();
    const Qt::Alignment alignment
        = format.hasProperty(QTextFormat::BlockAlignment) ? format.alignment() : option.alignment();
    option.setTextDirection(direction);
    option.setAlignment(QStyle::visualAlignment(direction, alignment));
    if (area.width <= 0)
        option.setWrapMode(QTextOption::ManualWrap);
    else if (hasEndlessWord(block))
        option.setWrapMode(QTextOption::WrapAnywhere);
    return option;
}

} // namespace

qreal Pages::fit(qreal y, qreal itsHeight) const
{
    if (!exist())
        return y;
    const qreal pageTop = std::floor(y / height) * height;
    if (y < pageTop + topMargin)
        return pageTop + topMargin;
    if (y + itsHeight > pageTop + height - bottomMargin + tolerance && !isPageTop(y))
        return pageTop + height + topMargin;
    return y;
}

qreal Pages::nextPage(qreal y) const
{
    return (std::floor(y / height) + 1) * height + topMargin;
}

bool Pages::isPageTop(qreal y) const
{
    return exist() && y - std::floor(y / height) * height <= topMargin + tolerance;
}

DeviceScale DeviceScale::of(const QPaintDevice *device)
{
    DeviceScale scale;
    if (!device)
        return scale;
    const qreal dots = device->logicalDpiY();
    const QScreen *screen = QGuiApplication::primaryScreen();
    scale.lengths = dots / pixelsPerInch;
    // The toolkit multiplies tab stops by the device's dots over the screen's.
    scale.tabs = screen ? screen->logicalDotsPerInchY() / pixelsPerInch : 1;
    return scale;
}

ParagraphSize breakParagraph(
    const QTextBlock &block, const TextArea &area, const DeviceScale &scale, const Pages &pages, qreal top)
{
    const QTextBlockFormat format = block.blockFormat();
    const Indents indents = indentsOf(block, area, scale.lengths);
    QTextLayout *layout = block.layout();
    layout->setTextOption(textOption(block, area));
    const TabStops stops(block, indents, area, scale);
    stops.setFor(*layout, indents.leading + indents.first);
    ParagraphSize size;
    layout->beginLayout();
    qreal y = 0;
    qreal bottom = 0;
    qreal first = indents.first;
    for (QTextLine line = layout->createLine(); line.isValid(); line = layout->createLine()) {
        line.setLeadingIncluded(true);
        line.setLineWidth(std::max(0.0, area.width - indents.leading - indents.trailing - first));
        const LineHeight height = lineHeight(format, line, scale.lengths);
        y = pages.fit(top + y, height.bottom) - top;
        const qreal x = indents.leftToRight ? indents.leading + first : indents.trailing;
        line.setPosition(QPointF(x, y - height.raise));
        bottom = y + height.bottom;
        y += height.advance;
        const qreal rightIndent = indents.leftToRight ? indents.trailing : indents.leading;
        size.widest = std::max(size.widest, line.x() + line.naturalTextWidth() + rightIndent);
        // The toolkit knows one list of stops for all lines of a paragraph.
        if (first != 0 && !stops.areIn(line))
            stops.setFor(*layout, indents.leading);
        first = 0;
    }
    layout->endLayout();
    size.height = std::max(y, bottom);
    return size;
}

qreal hangOf(const QTextFormat &format)
{
    if (!format.isBlockFormat())
        return 0;
    const QTextBlockFormat block = format.toBlockFormat();
    const qreal leading
        = block.layoutDirection() == Qt::RightToLeft ? block.rightMargin() : block.leftMargin();
    const qreal steps = block.indent() > 0 ? mostHang : 0;
    return std::clamp(-leading - steps - std::min(0.0, block.textIndent()), 0.0, mostHang);
}

} // namespace vandrel
