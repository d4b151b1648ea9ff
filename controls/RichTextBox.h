#pragma once

#include <memory>
#include <optional>

#include <QTextEdit>

#include "controls/DocumentFiles.h"

class QPrinter;

namespace vandrel {

/// The rich-text box.
///
/// Positions and lengths count the UTF-16 units of `text`, in which every paragraph end is CR LF and counts
/// two; so is every border of a table cell. A line break inside a paragraph is LF. A position inside a CR LF
/// pair, or inside a surrogate pair, is taken as the one before it. Pictures and other embedded objects are
/// one blank in `text`.
///
/// A property of a selection that holds more than one value reads as Null (an empty optional). Without a
/// selection it is the value that typed text would get.
///
/// Change is raised once for each operation that changes the text, by the user or by the program, never for a
/// change of format alone and never by loading. SelChange is raised when the selection or the caret moves.
/// SelChange is also raised when the format of text typed at the caret changes, and when a document is
/// loaded. Both are raised from inside the operation, as its last step; Change first.
///
/// Ctrl+click opens a link to the Web or to a mail address with the desktop's own program (QDesktopServices);
/// links of any other kind stay closed. The clipboard and drags carry the text plain and as RTF.
///
/// While a document is being loaded in the background the box is empty, and the operations that change its
/// text or format do nothing.
class RichTextBox : public QTextEdit
{
    Q_OBJECT

public:
    /// `files` reads and writes the box's files; shared, never null.
    explicit RichTextBox(std::shared_ptr<const DocumentFiles> files, QWidget *parent = nullptr);
    ~RichTextBox() override;

    struct Font {
        QString Name;
        double size = 0; ///< points
    };

    /// A text for the owner's use; the box does not look at it.
    QString Tag;

    QString text() const;
    void setText(const QString &text);
    /// The length of text(), without making it.
    qint32 textLength() const;

    qint32 SelStart() const;
    /// Moves the caret; the selection becomes empty. Clamped to the text; negative raises Invalid property
    /// value (380).
    void setSelStart(qint32 position);
    qint32 SelLength() const;
    void setSelLength(qint32 length);
    QString SelText() const;
    /// Replaces the selection; the caret ends behind the new text. One undo step.
    void setSelText(const QString &text);

    std::optional<bool> SelBold() const;
    void setSelBold(bool bold);
    std::optional<bool> SelItalic() const;
    void setSelItalic(bool italic);
    std::optional<bool> SelUnderline() const;
    void setSelUnderline(bool underline);
    /// RGB Long, 0x00BBGGRR; automatic colour reads as 0, and a negative value (a system colour) sets it.
    std::optional<qint32> SelColor() const;
    void setSelColor(qint32 rgb);
    std::optional<QString> SelFontName() const;
    void setSelFontName(const QString &name);
    /// Points. Setting a size below 1 or above 2160 raises Invalid property value (380).
    std::optional<float> SelFontSize() const;
    void setSelFontSize(float points);

    /// The box's default font.
    Font font() const;

    /// Finds `what`, ignoring case. With no `start` the whole text is searched from its beginning, whatever
    /// is selected; with `start` the search begins there, and the match ends at or before `end` (the end of
    /// the text when left out). A `start` inside a CR LF pair or a surrogate pair is taken as the position
    /// behind it, so that searching on from one past a match moves on. The match is selected and its position
    /// returned; -1 when there is none, or `what` is empty, and then the selection stays. A line break in
    /// `what` is CR LF (a lone CR or LF matches it too).
    ///
    /// Finding the same text again and again from the beginning while replacing what was found takes a time
    /// linear in the text; see RichTextSearch.
    qint32 find(const QString &what, std::optional<qint32> start = {}, std::optional<qint32> end = {});

    /// Replaces the document by the file's. A file small enough is there on return; a larger one is read in
    /// the background while the box shows its progress and takes no input, and loadFinished() follows.
    /// Errors: DocumentFiles::probe at once, those of reading when they occur.
    void LoadFile(const QString &dosPath);
    bool isLoading() const;
    /// Stops a background load; the box stays empty and loadFinished(false) follows.
    void cancelLoading();
    /// Writes the text as RTF; see DocumentFiles::save. The window stays painted during a long save. Raises
    /// Permission denied (70) while a document is being loaded or saved: an empty or half-known text must not
    /// take the place of a file.
    void SaveFile(const QString &dosPath);

    /// Prints the selection, or the whole text when nothing is selected, with margins of 2 cm. Null prints
    /// nothing. During a long print the program's windows stay alive; a small window shows how far it has come, and
    /// its Cancel ends the print. Raises Printer error (482) when the device cannot be started or fails.
    void SelPrint(QPrinter *device);

    void SetFocus();

    /// While one exists, changes of the text are one undo step, the layout waits for its end, and Change and
    /// SelChange are raised once at its end. `pause()` closes the step so that the window can be painted and
    /// the user's input be taken; after `resume()` the next change joins it again, unless the user has
    /// changed the text in between. The window must not be painted nor take input while a group is open and
    /// not paused. The box outlives its groups.
    class ChangeGroup
    {
    public:
        explicit ChangeGroup(RichTextBox &box);
        ~ChangeGroup();
        ChangeGroup(const ChangeGroup &) = delete;
        ChangeGroup &operator=(const ChangeGroup &) = delete;
        void pause();
        void resume();

    private:
        class Private;
        std::unique_ptr<Private> d;
    };

Q_SIGNALS:
    void Change();
    void SelChange();
    /// Loading has ended; `notices` are sentences for the user. Emitted by LoadFile itself for a small file.
    void loadFinished(bool loaded, const QStringList &notices);

protected:
    QMimeData *createMimeDataFromSelection() const override;
    bool canInsertFromMimeData(const QMimeData *source) const override;
    void insertFromMimeData(const QMimeData *source) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace vandrel
