#pragma once

#include <vector>

#include <QByteArray>
#include <QList>
#include <QString>

namespace vandrel {

/// A piece of text in one format; `format` is an index of RtfFormats.
struct RtfRun {
    qsizetype start = 0;
    qsizetype length = 0;
    int format = 0;
    bool isListText = false; ///< the number of a list item, written out
};

/// The list a paragraph belongs to, if any.
struct RtfListUse {
    int override = 0; ///< \lsN; 0 for none
    int legacy = -1; ///< index of a legacy list; -1 for none
    int level = 0;

    bool isNone() const { return override == 0 && legacy < 0; }
};

struct RtfParagraph {
    qsizetype firstRun = 0;
    qsizetype runs = 0;
    int format = 0; ///< paragraph format, an index of RtfFormats
    int markFormat = 0; ///< format of the paragraph's end, which an empty paragraph shows
    int section = -1; ///< index of the section that ends here; -1 for none
    int note = 0; ///< the note that the paragraph belongs to; 0 for none
    RtfListUse list;
};

/// What follows what: paragraphs, and the ends of cells and rows that they are in.
struct RtfItem {
    enum Kind : quint8 { Paragraph, CellEnd, RowEnd };

    Kind kind = Paragraph;
    quint8 depth = 0; ///< how many tables the paragraph, cell or row is in
    qsizetype index = 0; ///< paragraph, or row definition
};

/// A flow of text as it is read: runs, collected to paragraphs, collected to a list of items.
class RtfStory
{
public:
    /// Adds text to the open paragraph. `format` is the text's format.
    void append(QStringView text, int format);
    /// Ends the open paragraph; what append() added goes with it, without list text for a paragraph of a list.
    void endParagraph(RtfParagraph paragraph, int depth);
    /// Adds what is open to the paragraph that ended last.
    void joinLastParagraph();
    void endCell(int depth) { m_items.push_back({RtfItem::CellEnd, static_cast<quint8>(depth), 0}); }
    void endRow(int depth, qsizetype definition)
    {
        m_items.push_back({RtfItem::RowEnd, static_cast<quint8>(depth), definition});
    }

    /// Puts the open paragraph aside, so that paragraphs can be put before it; resume() takes it up again.
    void suspend();
    void resume();

    /// The place behind the last run of the open paragraph, which gets no further text: a mark for the members
    /// below.
    qsizetype mark();
    qsizetype openRuns() const { return m_open.size(); }
    const RtfRun &openRun(qsizetype index) const { return m_open[index]; }
    /// Declares the open paragraph's runs from `mark` on the written number of a list item.
    void makeListText(qsizetype mark);
    /// The paragraph that ended last, null when something else was last.
    RtfParagraph *lastParagraph();

    const QString &text() const { return m_text; }
    const QList<RtfRun> &runs() const { return m_runs; }
    const std::vector<RtfParagraph> &paragraphs() const { return m_paragraphs; }
    const std::vector<RtfItem> &items() const { return m_items; }

private:
    void joinSurrogates(QStringView text);
    void settleSurrogate();

    QString m_text;
    QList<RtfRun> m_open;
    QList<QList<RtfRun>> m_suspended;
    QList<RtfRun> m_runs;
    std::vector<RtfParagraph> m_paragraphs;
    std::vector<RtfItem> m_items;
    /// The text ends in the first half of a surrogate pair.
    bool m_halfPair = false;
    /// The next text begins a run of its own.
    bool m_isMarked = false;
};

} // namespace vandrel
