#include "controls/RichTextFormats.h"

#include <algorithm>

#include <QBrush>
#include <QColor>
#include <QFontInfo>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextFragment>

#include "controls/RichTextDocument.h"

namespace vandrel {

namespace {

// From here on a weight looks bold.
constexpr int leastBold = QFont::DemiBold;

QString familyOf(const QTextCharFormat &format, const QFont &defaultFont)
{
    const QStringList families = format.fontFamilies().toStringList();
    return families.isEmpty() ? defaultFont.family() : families.constFirst();
}

double sizeOf(const QFont &font)
{
    return font.pointSizeF() > 0 ? font.pointSizeF() : QFontInfo(font).pointSizeF();
}

double sizeOf(const QTextCharFormat &format, const QFont &defaultFont)
{
    if (format.hasProperty(QTextFormat::FontPointSize) && format.fontPointSize() > 0)
        return format.fontPointSize();
    // Pasted text may give its size in pixels, or by a step from the default.
    if (format.hasProperty(QTextFormat::FontPixelSize) || format.hasProperty(QTextFormat::FontSizeAdjustment))
        return sizeOf(format.font());
    return sizeOf(defaultFont);
}

template<typename T>
void keepIfEqual(std::optional<T> &value, const std::optional<T> &other)
{
    if (value != other)
        value.reset();
}

// Every character format of a document is in its collection of formats. Where that is small and all of its
// members look alike, nobody has to walk a million paragraphs to find out that a selection is uniform.
constexpr qsizetype smallCollection = 64;

std::optional<RichTextFormats> commonToWholeDocument(const QTextDocument &document)
{
    const QList<QTextFormat> all = document.allFormats();
    if (all.size() > smallCollection)
        return {};
    const QFont font = document.defaultFont();
    const RichTextFormats unset = RichTextFormats::of(QTextCharFormat(), font);
    const bool alike = std::all_of(all.cbegin(), all.cend(), [&](const QTextFormat &format) {
        return !format.isCharFormat() || RichTextFormats::of(format.toCharFormat(), font) == unset;
    });
    return alike ? std::optional(unset) : std::nullopt;
}

} // namespace

RichTextFormats RichTextFormats::of(const QTextCharFormat &format, const QFont &defaultFont)
{
    const int weight
        = format.hasProperty(QTextFormat::FontWeight) ? format.fontWeight() : defaultFont.weight();
    const bool italic
        = format.hasProperty(QTextFormat::FontItalic) ? format.fontItalic() : defaultFont.italic();
    const bool hasUnderline = format.hasProperty(QTextFormat::TextUnderlineStyle)
        || format.hasProperty(QTextFormat::FontUnderline);
    return {weight >= leastBold,
            italic,
            hasUnderline ? format.fontUnderline() : defaultFont.underline(),
            toRgbLong(format.foreground()),
            familyOf(format, defaultFont),
            static_cast<float>(sizeOf(format, defaultFont))};
}

RichTextFormats RichTextFormats::of(const QTextCursor &cursor)
{
    const QTextDocument &document = *cursor.document();
    const QFont font = document.defaultFont();
    if (!cursor.hasSelection())
        return of(cursor.charFormat(), font);
    if (const std::optional<RichTextFormats> common = commonToWholeDocument(document))
        return *common;

    std::optional<RichTextFormats> result;
    int lastFormat = -1;
    const int end = cursor.selectionEnd();
    for (QTextBlock block = document.findBlock(cursor.selectionStart());
         block.isValid() && block.position() < end && !(result && result->isAllMixed());
         block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            if (fragment.position() >= end)
                break;
            if (fragment.position() + fragment.length() <= cursor.selectionStart()
                || fragment.charFormatIndex() == lastFormat)
                continue;
            lastFormat = fragment.charFormatIndex();
            const RichTextFormats formats = of(fragment.charFormat(), font);
            if (result)
                result->keepCommon(formats);
            else
                result = formats;
        }
    }
    return result.value_or(of(cursor.charFormat(), font));
}

void RichTextFormats::keepCommon(const RichTextFormats &other)
{
    keepIfEqual(bold, other.bold);
    keepIfEqual(italic, other.italic);
    keepIfEqual(underline, other.underline);
    keepIfEqual(color, other.color);
    keepIfEqual(fontName, other.fontName);
    keepIfEqual(fontSize, other.fontSize);
}

bool RichTextFormats::isAllMixed() const
{
    return !bold && !italic && !underline && !color && !fontName && !fontSize;
}

qint32 toRgbLong(const QBrush &foreground)
{
    if (foreground.style() == Qt::NoBrush)
        return 0;
    const QColor color = foreground.color();
    return color.red() | color.green() << 8 | color.blue() << 16;
}

QBrush fromRgbLong(qint32 rgb)
{
    if (rgb < 0)
        return QBrush(Qt::NoBrush);
    return QColor(rgb & 0xFF, rgb >> 8 & 0xFF, rgb >> 16 & 0xFF);
}

QTextCharFormat plainTextFormat(const QTextCharFormat &format)
{
    // A picture's format is a character format with more in it; its type is what makes it a picture.
    QTextCharFormat plain;
    const QMap<int, QVariant> properties = format.properties();
    for (auto it = properties.cbegin(); it != properties.cend(); ++it) {
        switch (it.key()) {
        case QTextFormat::ObjectType:
        case QTextFormat::ObjectIndex:
        case QTextFormat::ImageName:
        case QTextFormat::ImageTitle:
        case QTextFormat::ImageAltText:
        case QTextFormat::ImageWidth:
        case QTextFormat::ImageHeight:
        case QTextFormat::ImageQuality:
        case richtext::RawRtf:
        case richtext::FieldInstruction:
        case richtext::FieldId:
        case richtext::PictureRtf:
            break;
        default:
            plain.setProperty(it.key(), it.value());
        }
    }
    return plain;
}

} // namespace vandrel
