#pragma once

#include <QColor>
#include <QHash>
#include <QTextBlockFormat>
#include <QTextCharFormat>

#include "platform/richtext/RtfFields.h"
#include "platform/richtext/RtfState.h"
#include "platform/richtext/RtfTables.h"

namespace vandrel {

/// Turns formatting as the file states it into the toolkit's formats, each made once and known by its index.
class RtfFormats
{
public:
    /// All are looked up when a format is made; they outlive this object.
    RtfFormats(const RtfFontTable &fonts,
               const QList<QColor> &colours,
               const RtfFields &fields,
               const RtfKeptWords &kept);

    /// The document's default font, \deffN.
    void setDefaultFont(int font) { m_defaultFont = font; }
    int defaultFont() const { return m_defaultFont; }

    int characterFormat(const RtfCharState &state);
    int paragraphFormat(const RtfParaState &state);
    /// Adds a format that no state describes: a picture, a kept fragment.
    int addCharacterFormat(const QTextCharFormat &format);
    /// A format like characterFormat(state) for an object that keeps `rtf` and shows nothing.
    int rawObjectFormat(const RtfCharState &state, const QByteArray &rtf);

    const QTextCharFormat &character(int index) const { return m_characters[index]; }
    void setCharacter(int index, const QTextCharFormat &format) { m_characters[index] = format; }
    const QTextBlockFormat &paragraph(int index) const { return m_paragraphs[index]; }
    /// The colour of that number; invalid for automatic and for unknown numbers.
    QColor colour(int number) const { return m_colours.value(number); }

private:
    QTextCharFormat makeCharacter(const RtfCharState &state) const;
    void setFont(QTextCharFormat &format, const RtfCharState &state) const;
    void setPosition(QTextCharFormat &format, const RtfCharState &state) const;
    void setField(QTextCharFormat &format, int field) const;
    QTextBlockFormat makeParagraph(const RtfParaState &state) const;

    const RtfFontTable &m_fonts;
    const QList<QColor> &m_colours;
    const RtfFields &m_fields;
    const RtfKeptWords &m_kept;
    int m_defaultFont = 0;

    QList<QTextCharFormat> m_characters;
    QList<QTextBlockFormat> m_paragraphs;
    QHash<RtfCharState, int> m_characterIndices;
    QHash<RtfParaState, int> m_paragraphIndices;
    RtfCharState m_lastCharacters;
    RtfParaState m_lastParagraph;
    int m_lastCharactersIndex = -1;
    int m_lastParagraphIndex = -1;
};

} // namespace vandrel
