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

using RtfProloguePointer = std::shared_ptr<const RtfPrologue>;

} // namespace vandrel

Q_DECLARE_METATYPE(vandrel::RtfProloguePointer)
