#pragma once

#include <QByteArray>
#include <QCache>
#include <QHash>
#include <QImage>
#include <QSizeF>
#include <QTextDocument>
#include <QTextFormat>

namespace vandrel {

/// What the suite's documents carry beyond the toolkit's own text formats. All properties live in the
/// formats, so that cut, paste, undo and redo carry them.
namespace richtext {

enum Property : int {
    /// Character format, QByteArray: an RTF fragment (balanced braces, 8-bit) kept verbatim and written back
    /// in
    /// place. Set on an object replacement character of type RawObject, which shows nothing and is as wide as
    /// nothing: hidden text, bookmarks, empty fields, index entries.
    RawRtf = QTextFormat::UserProperty + 1,
    /// Character format, QByteArray: the raw `{\*\fldinst ...}` group of the field whose result the run is.
    FieldInstruction,
    /// Character format, int: tells the runs of one field from those of its neighbour.
    FieldId,
    /// Character format, int: rise (positive) or drop (negative) of the baseline in half-points (\up, \dn).
    BaselineHalfPoints,
    /// Character format, int: the run's \cs style number.
    CharacterStyle,
    /// Character format, bool: double strike-through (\striked); shown as a single one.
    DoubleStrike,
    /// Image format, QByteArray: the whole group as loaded: `{\pict ...}`, `{\*\shppict{\pict ...}}`, or the
    /// `{\object ...}` whose result the picture is. Absent when the loaded group was damaged; a writer then
    /// makes a picture of DocumentPicture::data.
    PictureRtf,
    /// Block format, int: the paragraph's \s style number.
    ParagraphStyle,
    /// Block format, bool: keep with the next paragraph (\keepn).
    KeepWithNext,
    /// Block format, int: 0-based list level (\ilvl).
    ListLevel,
    /// List format, int: the \ls number of the loaded document.
    ListOverride,
    /// Table format, QVariantList of QByteArray: the raw row definitions (\trowd ... ), one a row of the
    /// table.
    /// A definition has one \cellx for each cell of its row, cells covered by a vertical merge counted, cells
    /// covered by a horizontal one not; one whose count no longer fits its row is out of date.
    RowDefinitions,
    /// Root frame format, QVariant of the platform's own prologue type: tables, styles, information, page
    /// set-up,
    /// headers and footers of the loaded document, kept for writing.
    Prologue,
    /// Character format, int: a hash of RawRtf. The toolkit tells formats apart by numbers and texts quickly,
    /// by
    /// octets slowly.
    RawHash,
    /// Character format, QVariantList: the fields around the innermost one, outermost first, as alternating
    /// int
    /// (FieldId) and QByteArray (FieldInstruction). Absent when there are none.
    OuterFields,
    /// Block format, int: first-line indent (\fi) of a list paragraph in twips. The toolkit hangs the number
    /// itself, so such a block's own textIndent is 0.
    ListFirstIndent,
    /// List format, int: the number of the first item when it is not 1; the toolkit always counts from 1.
    ListStart,
    /// Block format, QByteArray: the paragraph ends a section. Begins with "\sect", then the words that set
    /// up
    /// the section that follows; stands in place of the paragraph's "\par".
    SectionEnd,
    /// Block and character formats, QString of ASCII: control words that nothing here shows (borders, language,
    /// spacing of letters ...), each with its backslash and number, written back as they stand behind the
    /// format's own words.
    KeptWords,
    /// Character format of a mark, and block format, int above 0: the note that the mark refers to, and that the
    /// paragraph belongs to. Notes are paragraphs behind the text. A mark in front of the note's own text has none.
    NoteId,
    /// Character format of a mark, QString: what the mark shows ("3", "[2]"); empty for a note whose mark is
    /// ordinary text beside it.
    NoteNumber,
    /// Character format of a mark, QByteArray: the control word it is written as (\chftn, \chatn); empty for a
    /// mark that only the screen needs.
    NoteWord,
    /// Character format of a mark with a NoteId, QByteArray: groups that stand in front of the mark (who
    /// commented).
    NoteBefore,
    /// Character format of a mark with a NoteId, QByteArray: how the note's group opens, up to its text:
    /// "{\footnote".
    NoteOpening,
    /// Block format, QVariantList: the tab stops with something in front of them, as alternating int (twips) and
    /// int (1 dots, 2 middle dots, 3 hyphens, 4 a line, 5 a thick line, 6 equal signs). Nothing here shows it.
    TabLeaders,
    /// Block and character formats: first number free for a platform's private use.
    PlatformProperty = QTextFormat::UserProperty + 100,
};

enum ObjectType : int {
    RawObject = QTextFormat::UserObject + 1,
    /// The mark of a footnote, an endnote or a comment; see NoteId. One character that draws its NoteNumber.
    NoteMark,
};

} // namespace richtext

/// The hash for richtext::RawHash.
int rawHash(const QByteArray &octets);

/// A picture of a document, as loaded.
struct DocumentPicture {
    /// PNG, JPEG or BMP data; empty for a kind that is only kept (a metafile is shown as a frame of its size).
    QByteArray data;
    /// The size the document gives it, in twips; empty when it gives none.
    QSizeF goal;
};

/// The document model of the rich-text box. It resolves its own pictures and nothing else: a name that pasted
/// text brings along, remote or local, is never fetched. May be built on a worker thread and moved.
class RichTextDocument : public QTextDocument
{
    Q_OBJECT

public:
    explicit RichTextDocument(QObject *parent = nullptr);

    /// Adds a picture and returns the resource name for a QTextImageFormat. Equal pictures share one name, in every
    /// document; the image format states width and height, so that nothing is decoded before it is painted.
    QString addPicture(const DocumentPicture &picture);
    /// The picture of that name, null when there is none.
    const DocumentPicture *picture(const QString &name) const;

    /// How far the tab stops of a document that says nothing of them are apart, in pixels: half an inch.
    static constexpr double tabStopDistance = 48;
    /// Largest picture that is decoded, in pixels; a larger one is shown as a frame of its size.
    static constexpr qint64 maximumPicturePixels = 64'000'000;

protected:
    /// The picture of that name, decoded; a frame for one that cannot be shown, and for every foreign name.
    QVariant loadResource(int type, const QUrl &name) override;

private:
    QHash<QString, DocumentPicture> m_pictures;
    /// Decoded pictures that were painted lately, by name; costs are kilobytes.
    QCache<QString, QImage> m_decoded;
};

} // namespace vandrel
