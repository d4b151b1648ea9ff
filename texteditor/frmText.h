#pragma once

#include <memory>

#include <QList>
#include <QMainWindow>
#include <QPointer>
#include <QScopedValueRollback>
#include <QString>

#include "runtime/Integer.h"
#include "texteditor/TextEditorControls.h"
#include "texteditor/TextMenus.h"
#include "texteditor/TextToolBar.h"

namespace vandrel {

class MdiArea;
class RichTextBox;
class WindowList;
class frmDoc;
class frmRep;

/// The text editor's frame: menus and tool bar over the document windows. Every command acts on the active
/// document and, but for "Select all", returns the focus to its text.
class frmText : public QMainWindow
{
    Q_OBJECT

public:
    explicit frmText(TextEditorControls controls, QWidget *parent = nullptr);
    ~frmText() override;

    /// The number of the next untitled document.
    Integer DocCount;
    /// The last text given to Find; a save through the dialog leaves the dialog's former file name in it.
    QString SearchText;

    std::unique_ptr<CommonDialog> cd1;
    std::unique_ptr<CommonDialog> cd2;
    std::unique_ptr<blsColorDialog> c1;
    const TextMenus menus;
    const TextToolBar toolbar;

    /// The active child; null when there is none.
    frmDoc *activeDocument() const { return m_active; }
    /// The active child; Object variable not set (91) when there is none.
    frmDoc &ActiveForm() const;
    /// True when there is an active child and its text is there: not while it is being loaded.
    bool isTextReady() const;
    /// The open children, in the order they were opened.
    const QList<frmDoc *> &documents() const { return m_documents; }
    /// The replace dialog; null while it is not loaded.
    frmRep *replaceDialog() const;

    /// A window that is closed while texts are being replaced stops the run, and closes when the run has ended:
    /// true is returned then, and the window stays open for now.
    bool closesAfterReplacing(QWidget *window);

    /// While one exists the tool bar is being set to show the selection's own formats, so the lists' Click
    /// applies nothing: the size shown is the whole part of the selection's.
    class ShowingSelection
    {
    public:
        explicit ShowingSelection(frmText &frame) : m_showing(frame.m_showingSelection, true) { }

    private:
        QScopedValueRollback<bool> m_showing;
    };

    void MDIForm_Load();
    void MDIForm_Activate();

    void new_Click();
    void open_Click();
    void save_Click();
    void saveas_Click();
    void print_Click();
    void exit_Click();

    void copy_Click();
    void cut_Click();
    void paste_Click();
    void delete_Click();
    void clear_Click();
    void timedate_Click();
    void selall_Click();

    void find_Click();
    void findn_Click();
    void replace_Click();

    void tile_Click();
    void cascade_Click();

    void cb1_Click();
    void cb2_Click();
    void Command2_Click();
    void Command3_Click();
    void Command4_Click();
    void Label1_Click();
    void Label1_DblClick();

Q_SIGNALS:
    /// isTextReady() may have changed.
    void textReadyChanged();

protected:
    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void setUpDialogs();
    void connectMenus();
    void connectToolBar();
    void goToOtherPart();

    RichTextBox &activeText() const;
    void NewDocument();
    frmDoc *newChild(const QString &caption);
    void showChild(frmDoc *document);
    void activate(frmDoc *document);
    void forget(frmDoc *document);
    void childrenChanged();
    void updateCaption();
    bool queryUnload();

    std::shared_ptr<Printer> m_printer;
    std::shared_ptr<const DocumentFiles> m_files;
    QStringList m_screenFonts;
    MdiArea *m_area;
    WindowList *m_windowList;
    QList<frmDoc *> m_documents;
    frmDoc *m_active = nullptr;
    QPointer<frmRep> m_rep;
    QList<QPointer<QWidget>> m_closeAfterReplacing;
    QString m_caption;
    bool m_showingSelection = false;
};

} // namespace vandrel
