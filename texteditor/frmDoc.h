#pragma once

#include <memory>

#include <QString>
#include <QStringList>
#include <QWidget>

#include "controls/DocumentFiles.h"
#include "runtime/Integer.h"

namespace vandrel {

class NoticeBar;
class RichTextBox;
class frmText;

/// One open document of the text editor: the content of a child window of the frame. It counts its unsaved
/// changes, keeps the frame's tool bar in step with its selection, and asks to be saved when it is closed.
class frmDoc : public QWidget
{
    Q_OBJECT

public:
    /// `frame` outlives the document.
    frmDoc(frmText &frame, std::shared_ptr<const DocumentFiles> files, QWidget *parent = nullptr);
    ~frmDoc() override;

    /// The document's name: "Untitled " and a number, or the full path of its file.
    QString Caption() const { return m_caption; }
    void setCaption(const QString &caption);
    /// True for a document that was never saved: its name begins with "Untitled".
    bool isUntitled() const;

    /// The number of changes since the document was loaded or saved, as decimal text; "0" is clean.
    QString Tag;

    RichTextBox *rt1 = nullptr;

    /// Closes the document's window, which may ask first.
    void unload();

    void Form_Load();
    void rt1_Change();
    void rt1_SelChange();
    /// Asks to save unsaved changes; sets `Cancel` when the window must stay open. Raises what saving raises.
    void Form_QueryUnload(bool &Cancel);

Q_SIGNALS:
    void captionChanged();
    /// A background load has ended.
    void loadingEnded();
    /// The document is going away and will not be asked again.
    void unloaded();

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void arrange();
    void rt1_LoadFinished(bool loaded, const QStringList &notices);
    void showContextMenu(const QPoint &position);
    void showFontSize();
    void showFontName();
    bool saveUntitled();

    frmText &m_frame;
    QString m_caption;
    NoticeBar *m_notices = nullptr;
    Integer LoopIndex;
    QString OldFileName;
};

} // namespace vandrel
