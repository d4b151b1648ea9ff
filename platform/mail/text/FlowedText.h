#pragma once

#include <QString>
#include <QStringView>

#include "platform/mail/text/ReadableText.h"

namespace vandrel {

/// Joins the lines of flowing paragraphs (RFC 3676): a line that ends in a blank goes on with the next one of the
/// same quotation depth. Each paragraph comes out as one line, after its quotation marks.
class FlowedText
{
public:
    /// `deletesSpace`: the blank at a flowing line's end is not part of the text.
    FlowedText(ReadableText &out, bool deletesSpace) : m_out(out), m_deletesSpace(deletesSpace) { }

    /// Lines may be split over several calls.
    void add(QStringView text);
    void finish();

private:
    void endLine();
    void beginLine();
    void breakOff();

    ReadableText &m_out;
    bool m_deletesSpace;
    QString m_line; // what of the current line is not written yet
    qsizetype m_depth = 0;
    bool m_flowing = false; // the paragraph written last goes on
    bool m_begun = false; // the current line's beginning is written
    bool m_signature = false;
    bool m_afterReturn = false;
};

} // namespace vandrel
