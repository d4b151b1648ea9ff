#pragma once

#include <optional>

#include <QString>
#include <QTextCharFormat>
#include <QTextCursor>

namespace vandrel {

/// The character properties that the rich-text box shows of a selection; a property with more than one value
/// is empty.
struct RichTextFormats {
    std::optional<bool> bold;
    std::optional<bool> italic;
    std::optional<bool> underline;
    /// 0x00BBGGRR; 0 for the automatic colour.
    std::optional<qint32> color;
    std::optional<QString> fontName;
    /// Points.
    std::optional<float> fontSize;

    /// The properties of text in `format`; what it leaves open comes from the document's default font.
    static RichTextFormats of(const QTextCharFormat &format, const QFont &defaultFont);
    /// The properties of the selected text; without a selection, those of text typed at the cursor.
    static RichTextFormats of(const QTextCursor &cursor);

    bool operator==(const RichTextFormats &) const = default;

private:
    void keepCommon(const RichTextFormats &other);
    bool isAllMixed() const;
};

/// The colour as the box's users write it, and back. A negative value stands for a system colour and is taken
/// as the automatic one.
qint32 toRgbLong(const QBrush &foreground);
QBrush fromRgbLong(qint32 rgb);

/// `format` without what makes it an object, a picture or a part of a field: the format of text that takes
/// the place of such a thing.
QTextCharFormat plainTextFormat(const QTextCharFormat &format);

} // namespace vandrel
