#include "controls/FilesPicture.h"

#include <algorithm>

#include <QObject>
#include <QPainter>
#include <QStyle>
#include <QWidget>

namespace vandrel {

namespace {

constexpr int fileIconSide = 32;
// How far each file of the pile lies beside the one above it, and how many are drawn at most.
constexpr int pileStep = 4;
constexpr int pileHeight = 3;
constexpr int textMargin = 5;
constexpr double textBoxRadius = 4;

} // namespace

QString fileCountText(int count)
{
    return count == 1 ? QObject::tr("1 file") : QObject::tr("%1 files").arg(count);
}

FilesPicture::FilesPicture(int count, const QWidget &widget)
{
    const QString text = fileCountText(count);
    const QFontMetrics metrics = widget.fontMetrics();
    const int piled = std::clamp(count, 1, pileHeight);
    const int pileSide = fileIconSide + (pileHeight - 1) * pileStep;
    const QSize textSize(metrics.horizontalAdvance(text) + 2 * textMargin, metrics.height() + textMargin);
    const QSize size(pileSide + textMargin + textSize.width(), std::max(pileSide, textSize.height()));
    const double ratio = widget.devicePixelRatioF();
    m_pixmap = QPixmap((QSizeF(size) * ratio).toSize());
    m_pixmap.setDevicePixelRatio(ratio);
    m_pixmap.fill(Qt::transparent);

    QPainter painter(&m_pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QIcon icon = widget.style()->standardIcon(QStyle::SP_FileIcon, nullptr, &widget);
    for (int file = piled - 1; file >= 0; --file)
        icon.paint(&painter, QRect(file * pileStep, file * pileStep, fileIconSide, fileIconSide));
    const QRectF box(QPointF(pileSide + textMargin - 1, (size.height() - textSize.height()) / 2.0),
                     QSizeF(textSize));
    painter.setPen(Qt::NoPen);
    painter.setBrush(widget.palette().highlight());
    painter.drawRoundedRect(box, textBoxRadius, textBoxRadius);
    painter.setPen(widget.palette().color(QPalette::HighlightedText));
    painter.setFont(widget.font());
    painter.drawText(box, Qt::AlignCenter, text);
}

QPoint FilesPicture::hotSpot() const
{
    return {fileIconSide / 4, fileIconSide / 4};
}

} // namespace vandrel
