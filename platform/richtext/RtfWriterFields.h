#pragma once

#include <QByteArray>
#include <QList>
#include <QTextCharFormat>

#include "platform/richtext/RtfWriterOutput.h"

namespace vandrel {

/// The fields that are open while runs are written. Neighbouring runs of one field stand in one field, also
/// across the ends of paragraphs.
class RtfWriterFields
{
public:
    struct Field {
        int id = 0; ///< 0 for a link that was not loaded
        QByteArray instruction; ///< {\*\fldinst ...}

        bool operator==(const Field &) const = default;
    };
    using Chain = QList<Field>;

    /// The fields that a run of that format is in, outermost first.
    static Chain chainOf(const QTextCharFormat &format);

    /// Closes and opens fields so that exactly those of `chain` are open. True when one was closed that was
    /// opened in an earlier paragraph: closing a group takes the paragraph's format back to the one in force
    /// when it was opened, so the caller has to state it again.
    bool moveTo(const Chain &chain, RtfOutput &output);
    bool closeAll(RtfOutput &output) { return moveTo({}, output); }
    /// Closes what goes on neither in the end of a paragraph nor in the run behind it. Same result.
    bool endParagraph(const Chain &end, const Chain &next, RtfOutput &output);
    /// The paragraph has ended.
    void nextParagraph() { m_crossed = m_open.size(); }

private:
    qsizetype commonWith(const Chain &chain) const;
    bool closeDownTo(qsizetype count, RtfOutput &output);

    Chain m_open;
    /// How many of the open fields were opened in an earlier paragraph.
    qsizetype m_crossed = 0;
};

} // namespace vandrel
