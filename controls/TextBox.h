#pragma once

#include <QPlainTextEdit>

class QMimeData;

namespace vandrel {

/// A text box of several lines. Its text is plain, every line break of it is CR LF, and all other characters are
/// kept as they are. Tab goes on to the next control. A line that goes on for thousands of characters without a
/// blank makes the box break all its lines anywhere, since looking for the ends of words would take too long. A
/// paragraph of more than 8,192 characters is shown in pieces, each of which begins a line, so that a key costs no more
/// in it than in a short one; its text, a copy of it and what a key deletes know nothing of the pieces.
///
/// Change is raised once for each operation that changes the text, by the user or by the program, from inside the
/// operation as its last step.
class TextBox : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit TextBox(QWidget *parent = nullptr);

    /// The text, without making it anew: asking at every keystroke costs next to nothing.
    QString text() const { return m_text; }
    /// Replaces the text. CR LF, CR and LF are line breaks.
    void setText(const QString &text);
    /// Adds to the end of the text, without a line break of its own. The caret and the selection stay; a view that
    /// showed the end goes on showing it, one that the user has scrolled back stays where it is.
    void append(const QString &text);

Q_SIGNALS:
    void Change();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    QMimeData *createMimeDataFromSelection() const override;
    void insertFromMimeData(const QMimeData *source) override;

private:
    void insertPlain(const QTextCursor &place, QStringView text);
    void stepOverDivision(int key);
    bool editAtBound(const QKeyEvent &event);
    void follow(qsizetype position, qsizetype removed);
    void changed();
    qsizetype textBefore(qsizetype position) const;

    // What the document holds, kept in step with it change by change, and its length as the document counts: one
    // for a line break.
    QString m_text;
    qsizetype m_length = 0;
    // Where the latest change was made.
    int m_changedAt = 0;
    int m_changedCount = 0;
    bool m_mayBeDivided = false;
    bool m_isTidying = false;
};

} // namespace vandrel
