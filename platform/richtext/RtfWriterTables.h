#pragma once

#include <QColor>
#include <QHash>
#include <QTextDocument>

#include "platform/richtext/RtfPrologue.h"
#include "platform/richtext/RtfTables.h"
#include "platform/richtext/RtfWriterOutput.h"

namespace vandrel {

/// The fonts, colours and styles that a document is written with: the ones it was loaded with first and under
/// their own numbers, because kept fragments refer to them; behind them what the document uses besides.
class RtfWriterTables
{
public:
    explicit RtfWriterTables(const QTextDocument &document);

    /// What the document was loaded with, or a fresh one.
    const RtfPrologue &prologue() const { return *m_prologue; }

    /// The number of a font, entered when it is new.
    int font(const QString &family);
    /// The number of the font that text has when nothing is said.
    int defaultFont() const { return m_defaultFont; }
    /// False when the document does not say which font that is.
    bool hasDefaultFont() const;

    /// The number of a colour, entered when it is new. Never 0, which many readers take for "automatic" or
    /// "none" whatever the table says.
    int colour(const QColor &colour);
    /// The number of an entry that stands for the automatic colour.
    int automaticColour();

    RtfStyleSheet &styles() { return m_styles; }

    /// Writes character set, font, colour and style tables.
    void write(RtfOutput &output) const;

private:
    void enterLoadedFont(const RtfFont &font);
    int enterColour(const QColor &colour);
    void writeFonts(RtfOutput &output) const;
    void writeColours(RtfOutput &output) const;

    RtfProloguePointer m_prologue;
    QList<RtfFont> m_fonts;
    QHash<QString, int> m_fontNumbers;
    int m_highestFont = -1;
    int m_defaultFont = 0;
    QList<QColor> m_colours;
    QHash<QRgb, int> m_colourNumbers;
    RtfStyleSheet m_styles;
};

} // namespace vandrel
