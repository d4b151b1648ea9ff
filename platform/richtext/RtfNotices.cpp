#include "platform/richtext/RtfNotices.h"

#include <QCoreApplication>

namespace vandrel {

namespace {

class Notices
{
    Q_DECLARE_TR_FUNCTIONS(Notices)

public:
    explicit Notices(const RtfLosses &losses) : m_losses(losses) { }

    QStringList all()
    {
        damage();
        changes();
        keptUnseen();
        return m_sentences;
    }

private:
    void damage()
    {
        sayIf(m_losses.truncated, tr("The file ends too early; the text that was there is shown."));
        sayIf(m_losses.tail, tr("The file goes on behind the end of its text; that part is left out."));
        sayIf(m_losses.tooDeep, tr("Some text is nested too deeply and is left out."));
        sayIf(m_losses.tablesAsText,
              tr("The tables are too large or too deep; some are shown as text with tabs."));
    }

    void changes()
    {
        count(m_losses.drawingsAsText, tr("1 drawing is shown as plain text; saving will not keep it."),
              tr("%1 drawings are shown as plain text; saving will not keep them."));
        count(m_losses.objectsAsText,
              tr("1 embedded object is shown as plain text; saving will not keep it."),
              tr("%1 embedded objects are shown as plain text; saving will not keep them."));
        sayIf(m_losses.deletedText, tr("Text marked as deleted is not shown; saving will not keep it."));
    }

    void keptUnseen()
    {
        count(m_losses.footnotes, tr("1 footnote is shown at the end; saving keeps it as a footnote."),
              tr("%1 footnotes are shown at the end; saving keeps them as footnotes."));
        count(m_losses.comments, tr("1 comment is shown at the end; saving keeps it as a comment."),
              tr("%1 comments are shown at the end; saving keeps them as comments."));
        count(m_losses.pictureFrames, tr("1 picture is shown as a frame; saving keeps it."),
              tr("%1 pictures are shown as frames; saving keeps them."));
        count(m_losses.drawingsHidden, tr("1 drawing is kept but not shown."),
              tr("%1 drawings are kept but not shown."));
        count(m_losses.objectsHidden, tr("1 embedded object is kept but not shown."),
              tr("%1 embedded objects are kept but not shown."));
        count(m_losses.headers, tr("1 header is kept but not shown."),
              tr("%1 headers are kept but not shown."));
        count(m_losses.footers, tr("1 footer is kept but not shown."),
              tr("%1 footers are kept but not shown."));
        sayIf(m_losses.hiddenText, tr("Hidden text is kept but not shown."));
    }

    void sayIf(bool is, const QString &sentence)
    {
        if (is)
            m_sentences.append(sentence);
    }

    void count(int number, const QString &one, const QString &several)
    {
        if (number == 1)
            m_sentences.append(one);
        else if (number > 1)
            m_sentences.append(several.arg(number));
    }

    const RtfLosses &m_losses;
    QStringList m_sentences;
};

} // namespace

QStringList rtfNotices(const RtfLosses &losses)
{
    return Notices(losses).all();
}

} // namespace vandrel
