#pragma once

#include <QHash>
#include <QTextCursor>
#include <QTextDocument>

class QTextList;

namespace vandrel {

/// Copies a selection, or a whole document, into another document piece by piece, so that a window that shows the
/// original can go on between the pieces. The original must not change meanwhile.
///
/// Formats, lists (numbers go on across pieces), tables and objects are copied; pictures are named as in the original
/// and stay its own. A table is one piece.
class RichTextCopy
{
public:
    /// `selection` is what to copy; the whole document when it is empty. `copy` is empty.
    RichTextCopy(const QTextCursor &selection, QTextDocument &copy);

    /// Copies the next piece. Returns whether there is more.
    bool step();
    /// How much is copied, 0 to 1.
    double progress() const;

private:
    int endOfPiece() const;
    void joinLists(int from, int to, int copiedFrom);

    QTextDocument &m_original;
    QTextDocument &m_copy;
    QTextCursor m_selection;
    /// The end of what is copied so far.
    int m_position = 0;
    int m_start = 0;
    int m_end = 0;
    /// Each list's copy.
    QHash<QTextList *, QTextList *> m_lists;
};

} // namespace vandrel
