#pragma once

#include <memory>

#include <QByteArray>
#include <QColor>
#include <QList>
#include <QMetaType>
#include <QString>

namespace vandrel {

/// One entry of a font table.
struct RtfFont {
    int index = 0; ///< N of \fN
    int charset = -1; ///< N of \fcharsetN, -1 when absent
    QString name;
    QByteArray raw; ///< the entry's own octets without its braces: "\f0\fswiss\fcharset0 Arial;"
};

/// What a loaded document held besides its body, kept so that it can be written back. Octets are as they stood in
/// the file, so they mean what they meant only under the loaded code page and with the loaded entries of the
/// font, colour, style and list tables first, under their own numbers; a writer appends new entries.
struct RtfPrologue {
    /// The control words between {\rtf1 and the first table: character set, \ansicpgN, \deffN, languages.
    QByteArray header;
    QList<RtfFont> fonts;
    /// Colours by index; an invalid one is automatic.
    QList<QColor> colours;
    /// Whole groups with their braces, empty when absent.
    QByteArray styleSheet;
    QByteArray listTable;
    QByteArray listOverrideTable;
    /// Other groups of the header in their order: file table, revision authors, \info, generator's own \* groups.
    QList<QByteArray> otherGroups;
    /// Control words of the document's and first section's page set-up: \paperwN, \marglN, \sectd ...
    QByteArray pageSetup;
    /// Header and footer groups of the first section, whole.
    QList<QByteArray> headersAndFooters;
};

/// How a document's body maps to a RichTextDocument, for whoever reads or writes one:
///
/// - Lengths are stored in device-independent pixels as exact quotients of twips (twips / 15.0), sizes of type in
///   points. Margins, tabs and widths round back to the very twips they came from.
/// - Special characters: \line U+2028, \page U+000C, \tab U+0009, \~ U+00A0, \- U+00AD, \_ U+2011.
/// - A \par ends a paragraph; the last \par before the end of the text opens no further one. So a writer ends
///   every paragraph, the last one too, and saving again adds nothing.
/// - The toolkit begins every table behind a block. An empty block directly in front of a table is that block,
///   it is not shown and is no paragraph; an empty paragraph before a table is an empty block in front of it.
///   The block behind a table is always a paragraph, unless it is such an empty block before the next table.
/// - Every run states its font and size. No foreground means automatic colour, no background none.
/// - A list paragraph's leftMargin is \li, its textIndent 0; see ListFirstIndent. Lists have indent 0.
/// - Line spacing: ProportionalHeight for \slmult1, MinimumHeight for a positive and FixedHeight for a
///   negative \sl.
/// - Fields: FieldInstruction, FieldId and OuterFields on the runs of the result; HYPERLINK to http, https,
///   mailto or a place in the document sets the anchor too. A field without a result is a RawObject.
/// - Equal objects side by side are one run of several object replacement characters, each standing for one.
/// - Vertically merged cells are one cell of the table; a cell that spans columns of the grid without being
///   merged is one cell in its row definition.

using RtfProloguePointer = std::shared_ptr<const RtfPrologue>;

} // namespace vandrel

Q_DECLARE_METATYPE(vandrel::RtfProloguePointer)
