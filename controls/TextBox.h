#pragma once

#include <QPlainTextEdit>

namespace vandrel {

/// A text box of several lines. Its text is plain, every line break of it is CR LF, and all other characters are
/// kept as they are. Tab goes on to the next control.
///
/// Change is raised once for each operation that changes the text, by the user or by the program, from inside the
/// operation as its last step.
class TextBox : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit TextBox(QWidget *parent = nullptr);

    QString text() const;
    /// Replaces the text. CR LF, CR and LF are line breaks.
    void setText(const QString &text);
    /// Adds to the end of the text, without a line break of its own. The caret and the selection stay; a view that
    /// showed the end goes on showing it, one that the user has scrolled back stays where it is.
    void append(const QString &text);

Q_SIGNALS:
    void Change();
};

} // namespace vandrel
