#pragma once

#include <vector>

#include "platform/richtext/RtfAssembler.h"
#include "platform/richtext/RtfNotices.h"
#include "platform/richtext/RtfReader.h"
#include "platform/richtext/RtfTextSink.h"

namespace vandrel {

/// Reads one RTF text into stories, tables and a prologue. Open groups are kept on a stack of its own, so nesting
/// costs no call depth. Groups that do not take part in the flow of text are skipped whole and read by small
/// readers of their own.
class RtfParser
{
public:
    /// Pictures go to `document` as they are read; nothing else is changed there.
    RtfParser(QByteArrayView rtf,
              RichTextDocument &document,
              DocumentProgress &progress,
              RtfExtent extent,
              const RtfLimits &limits);

    /// Reads everything. False when cancelled.
    bool run();

    /// What was read; refers to this object. Take it once, after run().
    RtfContents takeContents();
    RtfPrologue takePrologue();
    RtfLosses losses() const;
    /// Between the tab stops of a paragraph that has none of its own, in twips; 0 when the file does not say.
    int tabDistance() const { return m_tabDistance; }

private:
    /// What is to be done when a group ends.
    enum class Role : quint8 {
        Plain,
        Alternatives, ///< \upr: the first group in it is the poorer one
        ListText,
        Field,
        FieldResult,
        Note,
        TextBox,
        Shape,
        ShapePicture,
        Object,
        NestedRow,
    };
    struct Group {
        RtfCharState characters;
        RtfParaState paragraph;
        RtfStory *story = nullptr;
        int fallback = 1; ///< \ucN
        int baseDepth = 0; ///< tables around the text box that the group is in
        Role role = Role::Plain;
        bool isSilent = false; ///< text is not shown
        bool isFresh = true; ///< only control words so far: it may become a destination
        bool isOptional = false; ///< began with \*
        int field = -1;
        qsizetype start = 0; ///< offset of the opening brace
        qsizetype runs = 0; ///< runs of the open paragraph when the role began
        qsizetype mark = 0; ///< runs, or contents, when the role began
        qsizetype paragraphs = 0; ///< paragraphs when the role began
    };
    /// The note being read.
    struct Note {
        int id = 0;
        int mark = -1; ///< format of the mark in the text
        bool isNumbered = false; ///< its mark is a number
        QString number; ///< shown by the mark
        qsizetype paragraphs = 0; ///< paragraphs of all notes when it began
        qsizetype openRuns = 0; ///< runs of the open paragraph when its text began
    };
    /// A group that was skipped whole.
    struct Skipped {
        QByteArrayView inner; ///< without braces
        QByteArray whole; ///< with braces; empty when it was damaged
    };

    bool isCancelled();
    void take(const RtfToken &token);
    void openGroup();
    void closeGroup();
    void finish();
    void endBody();
    void endPart();
    void endWithParagraph();
    void noteTail();

    void takeText(QByteArrayView text);
    void takeOctet(const RtfToken &token);
    void takeSymbol(const RtfToken &token);
    void takeWord(const RtfToken &token);
    void takeFlowWord(RtfWordInfo info, const RtfToken &token);
    void takeCharacterWord(RtfWord word, const RtfToken &token);
    void takeParagraphWord(RtfWord word, const RtfToken &token);
    void takeSpecial(RtfWord word);
    void takeUnicode(RtfWord word, const RtfToken &token);
    void takeCodePage(RtfWord word, const RtfToken &token);
    void takePageWord(RtfWord word, const RtfToken &token);
    void keepHeaderWord(RtfWordInfo info, const RtfToken &token);

    void takeBreak(RtfWord word);
    void endParagraph(int depth);
    void endSection();
    void endCell(int depth);
    void endRow(int depth);
    bool tablesAreFull() const { return m_cells >= m_limits.tableCells || m_tables > m_limits.tables; }
    int paragraphDepth() const;
    RtfListUse listUse(const RtfParaState &paragraph) const;
    int leftOfList(const RtfListUse &use) const;

    bool takeDestination(RtfWord word);
    bool takeTable(RtfWord word);
    bool takeKept(RtfWord word);
    bool takeFlowDestination(RtfWord word);
    bool takeShapeDestination(RtfWord word);
    void takeUnknownOptional();
    Skipped skipGroup();
    void keepInHeader(const QByteArray &whole);
    void keepInline(const QByteArray &whole);

    void beginRole(Role role);
    void endRole(const Group &ended);
    void beginField();
    void beginResult();
    void addSymbol(int field, const RtfSymbolField &symbol);
    void endField(const Group &ended);
    void beginNote(bool isComment);
    void endNote();
    void takeNoteWord(RtfWord word);
    int addNoteMark(const QByteArray &word, const QString &number);
    void linkNote(bool isComment);
    void makeEndnote();
    bool isInNote() const { return m_groups.back().story == &m_notes; }
    bool takeNoteGroup(const QByteArray &whole);
    void beginShape();
    void beginTextBox();
    void beginObject();
    void endTextBox(const Group &ended);
    void endShape(const Group &ended);
    bool keepAsPicture(const Group &ended);
    void endObject(const Group &ended);
    void takeInstruction();
    void takePicture();
    void takeShapeProperty();
    void takeAuthor(RtfWord word);
    void takeLegacyList();
    void takeHeaderOrFooter(RtfWord word);

    Group &group() { return m_groups.back(); }
    RtfStory &story() { return *m_groups.back().story; }
    void flush() { m_sink.flush(story(), group().characters); }
    void addText(QStringView text);
    bool isInHeader() const;
    QByteArray wholeGroup(const Group &group) const;
    bool hasGrown(const Group &group) const;

    QByteArrayView m_rtf;
    RichTextDocument &m_document;
    DocumentProgress &m_progress;
    RtfExtent m_extent;
    RtfLimits m_limits;
    RtfTokenizer m_tokens;
    std::vector<Group> m_groups;
    bool m_isDone = false;
    qsizetype m_nextCheck = 0;
    int m_toSkip = 0; ///< items left of the fallback behind \uN

    RtfPrologue m_prologue;
    RtfFontTable m_fonts;
    QList<QColor> m_colours;
    RtfStyleSheet m_styles;
    RtfKeptWords m_kept;
    RtfLists m_lists;
    QList<RtfLegacyList> m_legacyLists;
    RtfFields m_fields;
    RtfRowReader m_rows;
    QList<QByteArray> m_sections;
    RtfFormats m_formats;
    RtfTextSink m_sink;
    RtfStory m_body;
    RtfStory m_notes;
    RtfLosses m_losses;

    int m_tabDistance = 0;
    int m_basePage = codepage::Western;
    bool m_sawGroup = false;
    bool m_sawParagraph = false;
    bool m_sectionIsOpen = false;
    bool m_sectionBegins = false; ///< only words have come since the last \sect
    bool m_paragraphBorders = false;
    int m_shapeDepth = 0;
    bool m_isPictureProperty = false; ///< the shape's property being read is its picture
    int m_objectDepth = 0;
    qsizetype m_shapeContents = 0;
    qsizetype m_cells = 0;
    qsizetype m_tables = 0;
    int m_lastDepth = 0;
    QList<qsizetype> m_rowCells; ///< cells of the open row, by depth
    Note m_note;
    int m_lastMark = -1; ///< format of the last mark in the text, whose note may follow
    int m_numbers = 0; ///< footnotes that were numbered, endnotes counted with them
    int m_endnotes = 0;
    QByteArray m_commentHead; ///< who commented, as it stands in the file
    QString m_commentAuthor;
};

} // namespace vandrel
