#pragma once

#include <QByteArray>
#include <QList>

#include "platform/richtext/RtfTokenizer.h"
#include "platform/richtext/RtfWords.h"

namespace vandrel {

/// One cell of a row definition.
struct RtfCellDefinition {
    enum VerticalAlignment : quint8 { Top, Middle, Bottom };

    int right = 0; ///< right edge, twips
    bool startsHorizontalMerge = false;
    bool mergedLeft = false;
    bool startsVerticalMerge = false;
    bool mergedUp = false;
    VerticalAlignment verticalAlignment = Top;
    int background = -1; ///< colour index
    QByteArray raw; ///< the cell's control words without its \cellx
};

/// What \trowd and the words behind it say.
struct RtfRowDefinition {
    enum Alignment : quint8 { Left, Centre, Right };

    int left = 0; ///< twips
    int gap = 0; ///< half the space between cells, twips
    bool isHeader = false;
    bool hasBorders = false; ///< of the row or of any cell
    Alignment alignment = Left;
    QByteArray raw; ///< \trowd and the row's own control words
    QList<RtfCellDefinition> cells;

    /// The definition as control words again.
    QByteArray toRtf() const;
};

/// Follows the row definition while a document is read.
class RtfRowReader
{
public:
    /// Takes a word that may belong to the row definition; false when it does not.
    bool take(RtfWordInfo info, const RtfToken &token);
    /// A row has ended: the next definition begins with \trowd.
    void endRow() { m_now.isOpen = false; }
    /// The words behind belong to the borders of something else.
    void endBorders() { m_now.borders = Borders::None; }
    /// Puts the definition in force aside while that of a nested row is read; resume() takes it up again.
    void suspend() { m_suspended.append(m_now); }
    void resume() { m_now = m_suspended.takeLast(); }

    /// Index of the definition in force among definitions(); it stays the same until words change it.
    qsizetype current();
    const QList<RtfRowDefinition> &definitions() const { return m_definitions; }
    /// Cells that the definition in force has.
    qsizetype cells() const { return m_now.row.cells.size(); }

private:
    bool takeCellWord(RtfWord word, const RtfToken &token);
    bool takeRowWord(RtfWord word, const RtfToken &token);
    void endCell(int right);
    bool takeUnknown(const RtfToken &token);
    static void keep(QByteArray &raw, const RtfToken &token);

    enum class Borders { None, Row, Cell };
    struct Definition {
        RtfRowDefinition row;
        RtfCellDefinition cell;
        Borders borders = Borders::None;
        bool isOpen = false;
        qsizetype stored = -1; ///< where definitions() has it, -1 when it has changed since
    };

    Definition m_now;
    QList<Definition> m_suspended;
    QList<RtfRowDefinition> m_definitions;
};

} // namespace vandrel
