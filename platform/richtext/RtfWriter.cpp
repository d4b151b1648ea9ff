#include "platform/richtext/RtfWriter.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <QBuffer>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextFragment>
#include <QTextFrame>
#include <QTextTable>

#include "controls/RichTextDocument.h"
#include "platform/richtext/RtfWriterFields.h"
#include "platform/richtext/RtfWriterFormats.h"
#include "platform/richtext/RtfWriterLists.h"
#include "platform/richtext/RtfWriterNotes.h"
#include "platform/richtext/RtfWriterOutput.h"
#include "platform/richtext/RtfWriterPictures.h"
#include "platform/richtext/RtfWriterRows.h"
#include "platform/richtext/RtfWriterTables.h"

namespace vandrel {

namespace {

/// Positions of a document, `to` being behind the last one.
struct Range {
    int from = 0;
    int to = 0;
    bool isWhole = false;

    /// A part that ends at the beginning of a paragraph has nothing of it but the break in front.
    bool touches(const QTextBlock &block) const
    {
        const bool beginsInTime = block.position() < to || block.position() == from;
        return isWhole || (beginsInTime && block.position() + block.length() > from);
    }
    bool touches(const QTextTableCell &cell) const
    {
        return isWhole || (cell.firstPosition() <= to && cell.lastPosition() >= from);
    }
    QStringView clip(const QString &text, int position) const
    {
        if (isWhole)
            return text;
        const qsizetype start = std::clamp<qsizetype>(from - position, 0, text.size());
        const qsizetype end = std::clamp<qsizetype>(to - position, start, text.size());
        return QStringView(text).sliced(start, end - start);
    }
};

/// A frame, or one cell of a table, that is being walked through.
struct Place {
    QTextFrame::iterator at;
    QTextFrame::iterator end;
    const QTextTable *table = nullptr; ///< null for a frame
    int row = -1;
    qsizetype cell = 0;
    QList<QTextTableCell> cells = {}; ///< of the row
    bool cellHasEnded = false; ///< its end has been written with its last paragraph
};

bool isEastAsian(QChar character)
{
    const char16_t unit = character.unicode();
    return (unit >= 0x1100 && unit < 0x1200) || (unit >= 0x2E80 && unit < 0xDC00)
        || (unit >= 0xF900 && unit < 0xFB00) || (unit >= 0xFE30 && unit < 0xFE70)
        || (unit >= 0xFF00 && unit < 0xFFF0);
}

bool hasEastAsian(QStringView text)
{
    return std::any_of(text.begin(), text.end(), isEastAsian);
}

constexpr QByteArrayView sectionEnd("\\sect");

// The format of a cell's first paragraph end is also that of the cell, whose look is told by its row.
QTextCharFormat markFormat(const QTextBlock &block)
{
    QTextCharFormat format = block.charFormat();
    if (format.objectType() == QTextFormat::TableCellObject) {
        format.clearBackground();
        format.clearProperty(QTextFormat::TextVerticalAlignment);
    }
    return format;
}

/// Writes the body of a document.
class BodyWriter
{
public:
    BodyWriter(const QTextDocument &document,
               Range range,
               RtfOutput &output,
               RtfWriterTables &tables,
               RtfWriterLists &lists,
               RtfWriterFormats &formats,
               const RtfWriterNotes &notes)
        : m_document(document), m_range(range), m_output(output), m_tables(tables), m_lists(lists),
          m_formats(formats), m_notes(notes)
    { }

    void run(const std::function<void()> &betweenBlocks);

private:
    Place startingPlace() const;
    void enter(QTextFrame *frame);
    void enterRow(Place &place);
    void enterCell(Place &place);
    void finish();
    void endCell(const Place &place);
    void endRow(const Place &place);
    bool rowIsWanted(const QTextTable &table, int row) const;

    void paragraph(const QTextBlock &block, Place &place);
    bool isTableStart(const QTextBlock &block, const Place &place) const;
    void listMarker(const QTextBlock &block);
    void run(const QTextFragment &fragment, const QTextBlock &block);
    void formatted(QByteArrayView words, QByteArrayView octets);
    void objects(const QTextCharFormat &format, QByteArrayView words, qsizetype count);
    void noteMark(const QTextCharFormat &format, QByteArrayView words);
    void note(const QList<QTextBlock> &paragraphs);
    void noteParagraph(const QTextBlock &block, bool isLast);
    const QByteArray &markWords(const QTextBlock &block);
    void endParagraph(const QTextBlock &block, Place &place);
    QByteArray endWord(const QTextBlock &block, const Place &place) const;
    QByteArray nextSection(const QTextBlock &block) const;
    RtfWriterFields::Chain nextChain(const Place &place) const;
    void stateParagraph(const QTextBlock &block);
    const char *cellWord() const { return m_depth > 1 ? "\\nestcell" : "\\cell"; }

    const QTextDocument &m_document;
    Range m_range;
    RtfOutput &m_output;
    RtfWriterTables &m_tables;
    RtfWriterLists &m_lists;
    RtfWriterFormats &m_formats;
    const RtfWriterNotes &m_notes;
    RtfWriterFields m_fields;
    std::vector<Place> m_places;
    int m_depth = 0;
    bool m_isInNote = false;
};

// A part that lies in one cell is written as that cell's contents.
Place BodyWriter::startingPlace() const
{
    if (!m_range.isWhole) {
        QTextCursor cursor(const_cast<QTextDocument *>(&m_document));
        cursor.setPosition(m_range.from);
        for (QTextFrame *frame = cursor.currentFrame(); frame; frame = frame->parentFrame()) {
            const auto *table = qobject_cast<QTextTable *>(frame);
            const QTextTableCell cell = table ? table->cellAt(m_range.from) : QTextTableCell();
            if (cell.isValid() && m_range.to <= cell.lastPosition())
                return {.at = cell.begin(), .end = cell.end()};
        }
    }
    return {.at = m_document.rootFrame()->begin(), .end = m_document.rootFrame()->end()};
}

void BodyWriter::run(const std::function<void()> &betweenBlocks)
{
    m_places.push_back(startingPlace());
    while (!m_places.empty() && m_output.isSound()) {
        Place &place = m_places.back();
        if (place.at == place.end) {
            finish();
            continue;
        }
        const QTextBlock block = place.at.currentBlock();
        QTextFrame *const frame = place.at.currentFrame();
        ++place.at;
        if (frame)
            enter(frame);
        else if (m_range.touches(block) && !isTableStart(block, place) && !m_notes.isAtMark(block))
            paragraph(block, place);
        betweenBlocks();
    }
    m_fields.closeAll(m_output);
}

void BodyWriter::enter(QTextFrame *frame)
{
    const auto *table = qobject_cast<QTextTable *>(frame);
    if (!table) {
        m_places.push_back({.at = frame->begin(), .end = frame->end()});
        return;
    }
    m_fields.closeAll(m_output);
    ++m_depth;
    m_places.push_back({.at = {}, .end = {}, .table = table});
    enterRow(m_places.back());
}

bool BodyWriter::rowIsWanted(const QTextTable &table, int row) const
{
    const QList<QTextTableCell> cells = rtfRowCells(table, row);
    return std::any_of(cells.begin(), cells.end(),
                       [this](const QTextTableCell &cell) { return m_range.touches(cell); });
}

// Goes on to the next row that is wanted; leaves the table behind the last one.
void BodyWriter::enterRow(Place &place)
{
    do {
        ++place.row;
    } while (place.row < place.table->rows() && !rowIsWanted(*place.table, place.row));
    if (place.row >= place.table->rows()) {
        --m_depth;
        m_places.pop_back();
        return;
    }
    if (m_depth == 1)
        m_output << rtfRowDefinition(*place.table, place.row, m_tables) << "\n";
    place.cells = rtfRowCells(*place.table, place.row);
    place.cell = 0;
    enterCell(place);
}

void BodyWriter::enterCell(Place &place)
{
    const QTextTableCell &cell = place.cells[place.cell];
    place.at = cell.begin();
    place.end = cell.end();
    place.cellHasEnded = false;
    // A cell that began in a row above has been written there.
    if (cell.row() != place.row || !m_range.touches(cell))
        place.at = place.end;
}

void BodyWriter::finish()
{
    Place &place = m_places.back();
    if (!place.table) {
        m_places.pop_back();
        return;
    }
    endCell(place);
    if (++place.cell < place.cells.size()) {
        enterCell(place);
        return;
    }
    endRow(place);
    enterRow(place);
}

// The last paragraph of a cell writes the cell's end; a cell whose last paragraph is not written needs it here.
void BodyWriter::endCell(const Place &place)
{
    if (place.cellHasEnded)
        return;
    m_output << R"(\pard\plain\intbl)";
    if (m_depth > 1)
        m_output << "\\itap" << QByteArray::number(m_depth);
    m_output << cellWord() << "\n";
}

void BodyWriter::endRow(const Place &place)
{
    if (m_depth == 1) {
        m_output << "\\row\n";
        return;
    }
    m_output << "{\\*\\nesttableprops" << rtfRowDefinition(*place.table, place.row, m_tables)
             << "\\nestrow}{\\nonesttables\\par}\n";
}

// The toolkit begins every table behind a block; an empty one in front of a table is no paragraph.
bool BodyWriter::isTableStart(const QTextBlock &block, const Place &place) const
{
    return block.length() == 1 && place.at != place.end
        && qobject_cast<QTextTable *>(place.at.currentFrame());
}

void BodyWriter::stateParagraph(const QTextBlock &block)
{
    m_output << m_formats.paragraphWords(block, m_depth) << " ";
}

void BodyWriter::paragraph(const QTextBlock &block, Place &place)
{
    stateParagraph(block);
    if (block.textList())
        listMarker(block);
    for (auto it = block.begin(); !it.atEnd(); ++it)
        run(it.fragment(), block);
    endParagraph(block, place);
}

void BodyWriter::listMarker(const QTextBlock &block)
{
    const QString marker = m_lists.nextMarker(block);
    m_output << "{\\listtext ";
    m_output.text(marker);
    m_output << "\\tab}";
}

void BodyWriter::formatted(QByteArrayView words, QByteArrayView octets)
{
    if (words.isEmpty())
        m_output << octets;
    else
        m_output << "{" << words << " " << octets << "}";
}

void BodyWriter::run(const QTextFragment &fragment, const QTextBlock &block)
{
    const QString whole = fragment.text();
    const QStringView text = m_range.clip(whole, fragment.position());
    if (text.isEmpty())
        return;
    const QTextCharFormat format = fragment.charFormat();
    if (m_fields.moveTo(RtfWriterFields::chainOf(format), m_output))
        stateParagraph(block);
    const int style = block.blockFormat().intProperty(richtext::ParagraphStyle);
    QByteArray words = m_formats.characterWords(fragment.charFormatIndex(), format, style);
    if (format.objectType() != QTextFormat::NoObject) {
        objects(format, words, text.size());
        return;
    }
    if (hasEastAsian(text))
        words += m_formats.eastAsianWords(format);
    QByteArray octets;
    appendRtfText(octets, text);
    formatted(words, octets);
}

// Neighbouring objects of one format are one fragment.
void BodyWriter::objects(const QTextCharFormat &format, QByteArrayView words, qsizetype count)
{
    for (; count > 0; --count) {
        if (format.objectType() == richtext::RawObject)
            m_output << format.property(richtext::RawRtf).toByteArray();
        else if (format.objectType() == richtext::NoteMark)
            noteMark(format, words);
        else if (format.isImageFormat())
            formatted(words, rtfPicture(m_document, format.toImageFormat()));
    }
}

// A mark that lost its note is the number that it shows.
void BodyWriter::noteMark(const QTextCharFormat &format, QByteArrayView words)
{
    const QList<QTextBlock> paragraphs = m_isInNote ? QList<QTextBlock>() : m_notes.paragraphsAt(format);
    const bool isNumberInNote = m_isInNote && !format.hasProperty(richtext::NoteId);
    if (paragraphs.isEmpty() && !isNumberInNote) {
        QByteArray number;
        appendRtfText(number, format.stringProperty(richtext::NoteNumber));
        formatted(words, number);
        return;
    }
    m_output << format.property(richtext::NoteBefore).toByteArray();
    if (const QByteArray word = format.property(richtext::NoteWord).toByteArray(); !word.isEmpty())
        m_output << "{" << words << word << "}";
    if (paragraphs.isEmpty())
        return;
    m_output << format.property(richtext::NoteOpening).toByteArray();
    note(paragraphs);
    m_output << "}";
}

// A note is a text of its own, wherever its mark stands.
void BodyWriter::note(const QList<QTextBlock> &paragraphs)
{
    const RtfWriterFields fields = std::exchange(m_fields, RtfWriterFields());
    const int depth = std::exchange(m_depth, 0);
    const Range range = std::exchange(m_range, {0, m_document.characterCount(), true});
    m_isInNote = true;
    for (const QTextBlock &block : paragraphs)
        noteParagraph(block, block == paragraphs.last());
    m_isInNote = false;
    m_range = range;
    m_depth = depth;
    m_fields = fields;
}

void BodyWriter::noteParagraph(const QTextBlock &block, bool isLast)
{
    stateParagraph(block);
    if (block.textList())
        listMarker(block);
    for (auto it = block.begin(); !it.atEnd(); ++it)
        run(it.fragment(), block);
    m_fields.closeAll(m_output);
    // The end of the group ends the last paragraph, unless there is nothing to end.
    const bool needsEnd = !isLast || block.length() == 1;
    if (needsEnd)
        m_output << "{" << markWords(block) << "\\par}\n";
    else
        m_output << markWords(block);
}

const QByteArray &BodyWriter::markWords(const QTextBlock &block)
{
    const int style = block.blockFormat().intProperty(richtext::ParagraphStyle);
    return m_formats.characterWords(block.charFormatIndex(), markFormat(block), style);
}

// The fields of the run that follows the end of the paragraph; none where no paragraph of this place follows.
RtfWriterFields::Chain BodyWriter::nextChain(const Place &place) const
{
    const QTextBlock next = place.at != place.end ? place.at.currentBlock() : QTextBlock();
    if (!next.isValid() || next.begin().atEnd())
        return {};
    return RtfWriterFields::chainOf(next.begin().fragment().charFormat());
}

QByteArray BodyWriter::endWord(const QTextBlock &block, const Place &place) const
{
    if (place.cellHasEnded)
        return cellWord();
    // Without a paragraph of its own, the end of a section belongs to the paragraph before.
    const bool isSection = !nextSection(block).isEmpty();
    if (isSection && block.length() > 1)
        return "\\sect";
    return isSection ? "\\par\\sect" : "\\par";
}

// What is said about the section that begins behind the paragraph, and nothing where none begins. Other readers
// forget it at the end of a group.
QByteArray BodyWriter::nextSection(const QTextBlock &block) const
{
    return m_depth > 0 ? QByteArray() : block.blockFormat().property(richtext::SectionEnd).toByteArray();
}

void BodyWriter::endParagraph(const QTextBlock &block, Place &place)
{
    // A part ends inside its last paragraph; the notes behind that go with their marks.
    const bool isLast = m_range.to < block.position() + block.length() || m_notes.isAtMark(block.next());
    const bool endsHere = !m_range.isWhole && isLast;
    place.cellHasEnded = place.table && place.at == place.end;
    if (endsHere && !place.cellHasEnded) {
        m_fields.closeAll(m_output);
        return;
    }
    const QTextCharFormat format = markFormat(block);
    const auto fields = place.cellHasEnded ? RtfWriterFields::Chain() : RtfWriterFields::chainOf(format);
    if (m_fields.endParagraph(fields, nextChain(place), m_output))
        stateParagraph(block);
    const QByteArray &words = markWords(block);
    if (words.isEmpty())
        m_output << endWord(block, place) << "\n";
    else
        m_output << "{" << words << endWord(block, place) << "}\n";
    if (const QByteArray section = nextSection(block); !place.cellHasEnded && !section.isEmpty())
        m_output << QByteArrayView(section).sliced(sectionEnd.size()) << "\n";
    m_fields.nextParagraph();
}

/// Meets everything that needs an entry of a table, since the tables are written before the body.
void gather(const QTextDocument &document,
            RtfWriterTables &tables,
            RtfWriterLists &lists,
            RtfWriterFormats &formats,
            RtfWriterNotes &notes,
            Range range,
            const std::function<void()> &betweenBlocks)
{
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (const QTextList *list = block.textList())
            lists.enter(*list);
        const int style = block.blockFormat().intProperty(richtext::ParagraphStyle);
        formats.paragraphWords(block, 0);
        formats.characterWords(block.charFormatIndex(), markFormat(block), style);
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            formats.characterWords(fragment.charFormatIndex(), fragment.charFormat(), style);
            if (!range.clip(fragment.text(), fragment.position()).isEmpty())
                notes.meet(fragment, block);
        }
        notes.meet(block);
        betweenBlocks();
    }
    QList<QTextFrame *> frames = document.rootFrame()->childFrames();
    while (!frames.isEmpty()) {
        const QTextFrame *frame = frames.takeLast();
        frames += frame->childFrames();
        const auto *table = qobject_cast<const QTextTable *>(frame);
        for (int row = 0; table && row < table->rows(); ++row)
            rtfRowDefinition(*table, row, tables);
    }
}

void writeHead(RtfOutput &output, const RtfWriterTables &tables, const RtfWriterLists &lists)
{
    const RtfPrologue &prologue = tables.prologue();
    output << "{\\rtf1";
    tables.write(output);
    lists.writeTables(output);
    // The program that wrote the file last is this one.
    output << "{\\*\\generator Vandrel;}\n";
    for (const QByteArray &group : prologue.otherGroups) {
        if (!group.startsWith("{\\*\\generator"))
            output << group << "\n";
    }
    if (!prologue.pageSetup.isEmpty())
        output << prologue.pageSetup << "\n";
    for (const QByteArray &group : prologue.headersAndFooters)
        output << group << "\n";
    output << "\\uc1\n";
}

void write(const QTextDocument &document,
           Range range,
           QIODevice &device,
           const std::function<void()> &betweenBlocks)
{
    RtfWriterTables tables(document);
    RtfWriterLists lists(tables.prologue());
    RtfWriterFormats formats(document, tables, lists);
    RtfWriterNotes notes;
    gather(document, tables, lists, formats, notes, range, betweenBlocks);
    RtfOutput output(device);
    writeHead(output, tables, lists);
    BodyWriter(document, range, output, tables, lists, formats, notes).run(betweenBlocks);
    output << "}\n";
    output.flush();
}

} // namespace

void writeRtf(const QTextDocument &document, QIODevice &device, const std::function<void()> &betweenBlocks)
{
    write(document, {0, document.characterCount(), true}, device, betweenBlocks);
}

QByteArray writeRtf(const QTextDocument &document, int from, int to)
{
    QByteArray rtf;
    QBuffer buffer(&rtf);
    buffer.open(QIODevice::WriteOnly);
    const int last = document.characterCount() - 1;
    const int start = std::clamp(from, 0, last);
    write(document, {start, std::clamp(to, start, last), false}, buffer, [] {});
    return rtf;
}

} // namespace vandrel
