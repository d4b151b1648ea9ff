#include "controls/ListMarker.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPalette>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextLayout>
#include <QTextList>

#include "controls/RichTextDocument.h"

namespace vandrel {

namespace {

QString bullet(QTextListFormat::Style style)
{
    switch (style) {
    case QTextListFormat::ListCircle:
        return QStringLiteral("\u25E6");
    case QTextListFormat::ListSquare:
        return QStringLiteral("\u25AA");
    default:
        return QStringLiteral("\u2022");
    }
}

QString letters(int number)
{
    QString text;
    for (int rest = number; rest > 0; rest = (rest - 1) / 26)
        text.prepend(QChar(u'a' + (rest - 1) % 26));
    return text;
}

QString roman(int number)
{
    struct Numeral {
        int value;
        const char *text;
    };
    static constexpr Numeral numerals[]
        = {{1000, "m"}, {900, "cm"}, {500, "d"}, {400, "cd"}, {100, "c"}, {90, "xc"}, {50, "l"},
           {40, "xl"},  {10, "x"},   {9, "ix"},  {5, "v"},    {4, "iv"},  {1, "i"}};
    QString text;
    for (const Numeral &numeral : numerals) {
        for (; number >= numeral.value; number -= numeral.value)
            text += QLatin1String(numeral.text);
    }
    return text;
}

bool hasSign(QTextListFormat::Style style, int number)
{
    constexpr int largestRoman = 4999;
    constexpr int largestLetters = 32'767;
    const bool isRoman = style == QTextListFormat::ListUpperRoman || style == QTextListFormat::ListLowerRoman;
    return number >= 1 && number <= (isRoman ? largestRoman : largestLetters);
}

void drawBullet(QPainter *painter, const QRectF &rect, QTextListFormat::Style style, const QBrush &brush)
{
    if (style == QTextListFormat::ListSquare) {
        painter->fillRect(rect, brush);
    } else if (style == QTextListFormat::ListCircle) {
        painter->setPen(QPen(brush, 0));
        painter->setBrush(Qt::NoBrush);
        // Half a pixel on, the thin line falls onto whole pixels.
        painter->drawEllipse(rect.translated(0.5, 0.5));
    } else {
        painter->setPen(Qt::NoPen);
        painter->setBrush(brush);
        painter->drawEllipse(rect);
    }
}

void drawNumber(QPainter *painter,
                const QPointF &position,
                const QString &number,
                const QFont &font,
                Qt::LayoutDirection direction)
{
    QTextLayout layout(number, font);
    QTextOption option(Qt::AlignLeft | Qt::AlignAbsolute);
    option.setTextDirection(direction);
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    if (line.isValid())
        line.setLeadingIncluded(true);
    layout.endLayout();
    layout.draw(painter, position);
}

} // namespace

bool isBullet(QTextListFormat::Style style)
{
    return style == QTextListFormat::ListDisc || style == QTextListFormat::ListCircle
        || style == QTextListFormat::ListSquare;
}

QString listNumeral(QTextListFormat::Style style, int number)
{
    if (!hasSign(style, number))
        return QString::number(number);
    switch (style) {
    case QTextListFormat::ListUpperRoman:
        return roman(number).toUpper();
    case QTextListFormat::ListLowerRoman:
        return roman(number);
    case QTextListFormat::ListUpperAlpha:
        return letters(number).toUpper();
    case QTextListFormat::ListLowerAlpha:
        return letters(number);
    default:
        return QString::number(number);
    }
}

QString listMarkerText(const QTextListFormat &format, int index)
{
    if (format.style() == QTextListFormat::ListStyleUndefined)
        return {};
    if (isBullet(format.style()))
        return bullet(format.style());
    // The toolkit writes a full stop where a list says nothing.
    const QString suffix
        = format.hasProperty(QTextFormat::ListNumberSuffix) ? format.numberSuffix() : QStringLiteral(".");
    const int start = format.hasProperty(richtext::ListStart) ? format.intProperty(richtext::ListStart) : 1;
    return format.numberPrefix() + listNumeral(format.style(), start + index) + suffix;
}

void drawListMarker(QPainter *painter,
                    const QTextBlock &block,
                    const QPalette &palette,
                    const QTextCharFormat *selection)
{
    const QTextList *list = block.textList();
    if (!list || block.layout()->lineCount() == 0)
        return;
    const QTextListFormat::Style style = list->format().style();
    if (style == QTextListFormat::ListStyleUndefined)
        return;

    const QTextCharFormat format = QTextCursor(block).charFormat();
    const QFont font = format.font();
    const QFontMetrics metrics(font);
    const Qt::LayoutDirection direction = block.textDirection();
    const QString number
        = isBullet(style) ? QString() : listMarkerText(list->format(), list->itemNumber(block));
    const int bulletSize = metrics.lineSpacing() / 3;
    const QSizeF size = isBullet(style) ? QSizeF(bulletSize, bulletSize)
                                        : QSizeF(metrics.horizontalAdvance(number), metrics.height());

    const QRectF text = block.layout()->lineAt(0).naturalTextRect();
    QPoint start = block.layout()->position().toPoint() + text.topLeft().toPoint();
    qreal gap = metrics.horizontalAdvance(u' ');
    if (direction == Qt::RightToLeft)
        start.rx() += static_cast<int>(text.width());
    else
        gap = -gap - size.width();
    QRectF rect(start, size);
    const int middle = metrics.height() / 2;
    rect.translate(gap, middle - size.height() / 2);

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (selection) {
        painter->setPen(QPen(selection->foreground(), 0));
        painter->fillRect(rect, selection->background());
    } else {
        const QBrush ink = format.foreground();
        painter->setPen(QPen(ink.style() == Qt::NoBrush ? palette.text() : ink, 0));
    }
    if (isBullet(style))
        drawBullet(painter, rect, style, palette.brush(QPalette::Text));
    else
        drawNumber(painter, QPointF(rect.left(), start.y()), number, font, direction);
    painter->restore();
}

} // namespace vandrel
