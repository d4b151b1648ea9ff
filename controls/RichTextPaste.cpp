#include "controls/RichTextPaste.h"

#include <memory>
#include <vector>

#include <QTextBlock>
#include <QTextDocumentFragment>
#include <QTextFrame>
#include <QTextImageFormat>

#include "controls/RichTextNotes.h"

namespace vandrel {

namespace {

struct PictureRun {
    int position = 0;
    int length = 0;
    QTextImageFormat format;
};

std::vector<PictureRun> picturesOf(const QTextDocument &document)
{
    std::vector<PictureRun> runs;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            if (fragment.charFormat().isImageFormat())
                runs.push_back(
                    {fragment.position(), fragment.length(), fragment.charFormat().toImageFormat()});
        }
    }
    return runs;
}

// Pictures are known by name in their own document only.
void adoptPictures(RichTextDocument &part, RichTextDocument &target)
{
    for (PictureRun &run : picturesOf(part)) {
        const DocumentPicture *picture = part.picture(run.format.name());
        if (!picture)
            continue;
        run.format.setName(target.addPicture(*picture));
        QTextCursor cursor(&part);
        cursor.setPosition(run.position);
        cursor.setPosition(run.position + run.length, QTextCursor::KeepAnchor);
        cursor.setCharFormat(run.format);
    }
}

bool isEmpty(const QTextBlock &block)
{
    return block.length() == 1;
}

// A table begins behind an empty block of its own, which is no paragraph.
bool beginsWithTable(const QTextDocument &part)
{
    const QList<QTextFrame *> frames = part.rootFrame()->childFrames();
    return !frames.isEmpty() && frames.first()->firstPosition() <= 2;
}

/// Inserts several paragraphs.
class ParagraphPaste
{
public:
    ParagraphPaste(QTextCursor &cursor, RichTextDocument &part)
        : m_cursor(cursor), m_part(part), m_bringsFirst(cursor.atBlockStart() && !beginsWithTable(part)),
          m_keepsLast(!cursor.atBlockEnd() || !cursor.atBlockStart() || isEmpty(part.lastBlock())),
          m_format(cursor.blockFormat()), m_mark(cursor.blockCharFormat())
    { }

    void run()
    {
        const int start = m_cursor.position();
        // Only what is behind a break comes with its format.
        if (m_bringsFirst)
            QTextCursor(&m_part).insertBlock();
        m_cursor.insertFragment(QTextDocumentFragment(&m_part));
        if (m_keepsLast) {
            m_cursor.setBlockFormat(m_format);
            m_cursor.setBlockCharFormat(m_mark);
        }
        if (m_bringsFirst) {
            QTextCursor before(m_cursor);
            before.setPosition(start);
            before.deleteChar();
        }
    }

private:
    QTextCursor &m_cursor;
    RichTextDocument &m_part;
    bool m_bringsFirst;
    bool m_keepsLast;
    QTextBlockFormat m_format;
    QTextCharFormat m_mark;
};

} // namespace

void insertRichText(QTextCursor cursor, RichTextDocument &part)
{
    if (auto *target = qobject_cast<RichTextDocument *>(cursor.document()))
        adoptPictures(part, *target);
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    const std::unique_ptr<QTextDocument> notes = takeNotes(part, *cursor.document());
    if (part.blockCount() > 1)
        ParagraphPaste(cursor, part).run();
    else
        cursor.insertFragment(QTextDocumentFragment(&part));
    if (notes) {
        cursor.movePosition(QTextCursor::End);
        cursor.insertFragment(QTextDocumentFragment(notes.get()));
    }
    cursor.endEditBlock();
}

} // namespace vandrel
