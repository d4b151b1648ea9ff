#pragma once

#include <QByteArray>

#include "platform/richtext/CodePages.h"
#include "platform/richtext/RtfFormats.h"
#include "platform/richtext/RtfStory.h"

namespace vandrel {

/// Takes the text of a document, as octets or as characters, and appends it to a story in the formatting in force.
/// Octets are collected and decoded whole, so that a double-byte character may come in pieces.
class RtfTextSink
{
public:
    /// All are used for the sink's lifetime. A story longer than `mostCharacters` raises Invalid file format (321).
    RtfTextSink(RtfFormats &formats, const RtfFontTable &fonts, qsizetype mostCharacters);

    /// The code page of text whose font does not state one.
    void setDocumentPage(int page) { m_documentPage = page; }
    int documentPage() const { return m_documentPage; }

    void addOctets(QByteArrayView octets) { m_octets.append(octets); }
    void addOctet(char octet) { m_octets.append(octet); }
    /// Appends what was collected; call it before the formatting or the story changes.
    void flush(RtfStory &story, const RtfCharState &state);
    /// Appends characters, which may be anything: those that would break the document are replaced.
    void addText(RtfStory &story, const RtfCharState &state, QStringView text);
    /// Appends a character that the document model knows, a break of a line or page among them, as it is.
    void addCharacter(RtfStory &story, const RtfCharState &state, QChar character)
    {
        append(story, state, QStringView(&character, 1));
    }
    /// Appends an object, a picture or a kept fragment, in a character format of its own.
    void addObject(RtfStory &story, int format);
    /// Appends hidden text that waits to be complete; call it before a paragraph ends or the story changes.
    void settleHidden(RtfStory &story);

    bool metHiddenText() const { return m_metHidden; }
    bool metDeletedText() const { return m_metDeleted; }

private:
    void append(RtfStory &story, const RtfCharState &state, QStringView text);
    int pageOf(const RtfCharState &state) const;

    RtfFormats &m_formats;
    const RtfFontTable &m_fonts;
    qsizetype m_mostCharacters;
    CodePageDecoder m_decoder;
    int m_documentPage = codepage::Western;
    QByteArray m_octets;
    QString m_hidden;
    RtfCharState m_hiddenState;
    bool m_metHidden = false;
    bool m_metDeleted = false;
};

} // namespace vandrel
