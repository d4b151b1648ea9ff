#include "controls/ListMarker.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPalette>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextLayout>
#include <QTextList>

namespace vandrel {

namespace {

bool isBullet(int style)
{
    return style == QTextListFormat::ListDisc || style == QTextListFormat::ListCircle
        || style == QTextListFormat::ListSquare;
}

void drawBullet(QPainter *painter, const QRectF &rect, int style, const QBrush &brush)
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

void drawListMarker(QPainter *painter,
                    const QTextBlock &block,
                    const QPalette &palette,
                    const QTextCharFormat *selection)
{
    const QTextList *list = block.textList();
    if (!list || block.layout()->lineCount() == 0)
        return;
    int style = list->format().style();
    if (block.blockFormat().hasProperty(QTextFormat::ListStyle))
        style = block.blockFormat().intProperty(QTextFormat::ListStyle);
    if (style == QTextListFormat::ListStyleUndefined)
        return;

    const QTextCharFormat format = QTextCursor(block).charFormat();
    const QFont font = format.font();
    const QFontMetrics metrics(font);
    const Qt::LayoutDirection direction = block.textDirection();
    const QString number = isBullet(style) ? QString() : list->itemText(block);
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
