#pragma once

#include <QHash>
#include <QTextBlock>
#include <QTextList>

#include "platform/richtext/RtfLists.h"
#include "platform/richtext/RtfPrologue.h"
#include "platform/richtext/RtfWriterOutput.h"

namespace vandrel {

/// The lists of a document while it is written: a list that was loaded keeps its number and its definition, any
/// other gets one. Items are counted as they are written, since the toolkit finds the number of an item only by
/// searching the list.
class RtfWriterLists
{
public:
    explicit RtfWriterLists(const RtfPrologue &prologue);

    /// Makes the list known before the tables are written.
    void enter(const QTextList &list);

    /// \lsN of the list of a block.
    int number(const QTextList &list) const { return m_uses.value(&list).number; }
    /// What stands before the block's text ("3.", a bullet), for readers that know no lists; counts the item.
    QString nextMarker(const QTextBlock &item);

    /// Writes the list and the override table.
    void writeTables(RtfOutput &output) const;

private:
    struct Use {
        int number = 0;
        int counted = -1; ///< items before the next one; -1 before the first
    };

    bool isDefined(int number, int level, const QTextListFormat &format) const;
    int define(const QTextListFormat &format);

    QByteArray m_listTable;
    QByteArray m_overrideTable;
    RtfLists m_lists;
    int m_highest = 0;
    QHash<const QTextList *, Use> m_uses;
};

} // namespace vandrel
