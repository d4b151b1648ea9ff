#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace vandrel {

/// A field of the document: an instruction and the text that came of it.
struct RtfField {
    QByteArray instruction; ///< the whole {\*\fldinst ...} group; empty when it was damaged
    QString code; ///< the text of the instruction: HYPERLINK "http://..."
    int outer = -1; ///< the field whose result this one stands in; -1 for none
};

using RtfFields = QList<RtfField>;

/// The text of an instruction group, formatting taken away.
QString rtfInstructionText(QByteArrayView group);

/// What a HYPERLINK instruction points to, as a link for the document: an http, https or mailto address, or
/// "#name" for a place in the document. Empty for other instructions and other kinds of address.
QString rtfHyperlinkTarget(QStringView code);

/// The character and the font of a SYMBOL instruction; the character is empty for other instructions.
struct RtfSymbolField {
    QString character;
    QString font;
};
RtfSymbolField rtfSymbolField(QStringView code);

} // namespace vandrel
