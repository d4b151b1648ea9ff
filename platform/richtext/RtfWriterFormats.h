#pragma once

#include <QByteArray>
#include <QHash>
#include <QTextBlock>
#include <QTextCharFormat>

#include "platform/richtext/RtfState.h"
#include "platform/richtext/RtfWriterLists.h"
#include "platform/richtext/RtfWriterTables.h"

namespace vandrel {

/// Turns the toolkit's formats into control words, each once. Every property that is not the format's own
/// default is written, for readers that know no styles; and so is every one that a style would set otherwise.
class RtfWriterFormats
{
public:
    /// Both are filled with what formats need; they outlive this object.
    RtfWriterFormats(const QTextDocument &document, RtfWriterTables &tables, RtfWriterLists &lists);

    /// The words of a run's format in a paragraph of style \sN, behind \plain. `index` tells formats of one
    /// document apart. Empty when the run has the default format.
    const QByteArray &characterWords(int index, const QTextCharFormat &format, int paragraphStyle);

    /// What comes behind the words of a run that holds East Asian characters: readers keep a font of its own for
    /// those. Empty when the run says nothing about its font.
    QByteArray eastAsianWords(const QTextCharFormat &format);

    /// The words of a paragraph's format, \pard\plain first. `depth` is the number of tables around it.
    const QByteArray &paragraphWords(const QTextBlock &block, int depth);

private:
    RtfCharState characterState(const QTextCharFormat &format);
    void setPosition(RtfCharState &state, const QTextCharFormat &format) const;
    RtfCharState characterBase(int paragraphStyle, int characterStyle);
    QByteArray makeCharacterWords(const QTextCharFormat &format, int paragraphStyle);
    int halfPoints(const QTextCharFormat &format) const;

    RtfParaState paragraphState(const QTextBlock &block);
    QByteArray makeParagraphWords(const QTextBlock &block, int depth);
    int colourOf(const QTextFormat &format, QTextFormat::Property brush);

    RtfWriterTables &m_tables;
    RtfWriterLists &m_lists;
    double m_defaultPointSize;
    double m_indentWidth;
    QHash<std::pair<int, int>, QByteArray> m_characterWords;
    QHash<std::pair<int, int>, QByteArray> m_paragraphWords;
};

} // namespace vandrel
