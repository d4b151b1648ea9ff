#include "controls/NoteMark.h"

#include <QAbstractTextDocumentLayout>
#include <QFontMetricsF>
#include <QPaintDevice>
#include <QPainter>
#include <QTextDocument>

#include "controls/RichTextDocument.h"

namespace vandrel {

namespace {

// As the toolkit draws raised and lowered letters.
constexpr qreal smallLetters = 2.0 / 3.0;

bool isSmall(const QTextCharFormat &format)
{
    return format.verticalAlignment() == QTextCharFormat::AlignSuperScript
        || format.verticalAlignment() == QTextCharFormat::AlignSubScript;
}

QFont fontOf(const QTextDocument &document, const QTextCharFormat &format)
{
    QFont font = format.font().resolve(document.defaultFont());
    if (isSmall(format) && font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * smallLetters);
    // A printer has more dots than the screen.
    QPaintDevice *device = document.documentLayout()->paintDevice();
    return device ? QFont(font, device) : font;
}

QFontMetricsF metricsOf(const QTextDocument &document, const QFont &font)
{
    QPaintDevice *device = document.documentLayout()->paintDevice();
    return device ? QFontMetricsF(font, device) : QFontMetricsF(font);
}

} // namespace

QSizeF NoteMark::intrinsicSize(QTextDocument *document, int, const QTextFormat &format)
{
    const QTextCharFormat characters = format.toCharFormat();
    const QFontMetricsF metrics = metricsOf(*document, fontOf(*document, characters));
    const QString number = characters.stringProperty(richtext::NoteNumber);
    if (number.isEmpty())
        return {0, 0};
    // A raised number stands as high as a full letter, which makes no line higher.
    const bool isRaised = characters.verticalAlignment() == QTextCharFormat::AlignSuperScript;
    return {metrics.horizontalAdvance(number), metrics.ascent() / (isRaised ? smallLetters : 1)};
}

void NoteMark::drawObject(
    QPainter *painter, const QRectF &rect, QTextDocument *document, int, const QTextFormat &format)
{
    const QTextCharFormat characters = format.toCharFormat();
    const QFont font = fontOf(*document, characters);
    const QFontMetricsF metrics = metricsOf(*document, font);
    const bool isRaised = characters.verticalAlignment() == QTextCharFormat::AlignSuperScript;
    const qreal baseline = isRaised ? rect.top() + metrics.ascent() : rect.bottom();
    painter->save();
    painter->setFont(font);
    if (characters.foreground().style() != Qt::NoBrush)
        painter->setPen(QPen(characters.foreground(), 0));
    painter->drawText(QPointF(rect.left(), baseline), characters.stringProperty(richtext::NoteNumber));
    painter->restore();
}

} // namespace vandrel
