#pragma once

#include <QColor>
#include <QHash>

#include "platform/richtext/CodePages.h"
#include "platform/richtext/RtfFormatting.h"
#include "platform/richtext/RtfPrologue.h"
#include "platform/richtext/RtfReader.h"

namespace vandrel {

/// The fonts of a document by number.
class RtfFontTable
{
public:
    /// Reads the octets between the braces of a {\fonttbl ...} group. Entries add to those read before. `page`
    /// decodes the names of fonts without a character set of their own.
    void read(QByteArrayView group, int page, qsizetype limit, CodePageDecoder &decoder);

    /// The font's name; empty for an unknown number.
    QString name(int number) const;
    /// The code page of text in that font; 0 where the font leaves it to the document.
    int codePage(int number) const;
    /// The number of the font of that name, -1 when there is none.
    int numberOf(const QString &name) const { return m_numbers.value(name, -1); }
    const QList<RtfFont> &entries() const { return m_entries; }

private:
    class Reader;

    QList<RtfFont> m_entries;
    QHash<int, qsizetype> m_positions;
    QHash<int, int> m_codePages;
    QHash<QString, int> m_numbers;
};

/// Reads the octets between the braces of a {\colortbl ...} group. An entry without components is automatic, an
/// invalid colour here.
QList<QColor> readRtfColours(QByteArrayView group, qsizetype limit);

/// The styles of a document, resolved to what they say about text.
class RtfStyleSheet
{
public:
    struct Formatting {
        RtfCharState characters = RtfCharState::unset();
        RtfParaState paragraph = RtfParaState::unset();
    };

    /// Reads the octets between the braces of a {\stylesheet ...} group.
    void read(QByteArrayView group, RtfKeptWords &kept);

    /// What style \sN (\csN) and the styles it is based on say; nothing for an unknown one.
    const Formatting &paragraphStyle(int number);
    const Formatting &characterStyle(int number);
    /// What style \sN itself says about paragraphs. A paragraph has no more of it: programs state a style in full,
    /// and leave out what has its usual value, whatever the style below says.
    const RtfParaState &ownParagraph(int number) const;

private:
    struct Style {
        Formatting own;
        int basedOn = -1;
    };
    using Styles = QHash<int, Style>;

    void readStyle(QByteArrayView group, RtfKeptWords &kept);
    static const Formatting &resolved(const Styles &styles, QHash<int, Formatting> &cache, int number);

    Styles m_paragraphStyles;
    Styles m_characterStyles;
    QHash<int, Formatting> m_resolvedParagraphs;
    QHash<int, Formatting> m_resolvedCharacters;
};

} // namespace vandrel
