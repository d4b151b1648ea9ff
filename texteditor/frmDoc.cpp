#include "texteditor/frmDoc.h"

#include <cmath>

#include <QAction>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QMdiSubWindow>
#include <QMenu>
#include <QShortcut>
#include <QVBoxLayout>

#include "controls/ComboBox.h"
#include "controls/CommonDialog.h"
#include "controls/Label.h"
#include "controls/RichTextBox.h"
#include "runtime/Events.h"
#include "runtime/Numbers.h"
#include "runtime/Prompts.h"
#include "texteditor/NoticeBar.h"
#include "texteditor/Paper.h"
#include "texteditor/StyleButton.h"
#include "texteditor/frmText.h"

namespace vandrel {

namespace {

// Keys that the box would take for itself, and that are commands of the frame.
bool isFrameCommand(const QKeyEvent &key)
{
    return key.matches(QKeySequence::Copy) || key.matches(QKeySequence::Cut)
        || key.matches(QKeySequence::Paste) || key.matches(QKeySequence::SelectAll);
}

} // namespace

frmDoc::frmDoc(frmText &frame, std::shared_ptr<const DocumentFiles> files, QWidget *parent)
    : QWidget(parent), rt1(new RichTextBox(std::move(files), this)), m_frame(frame),
      m_notices(new NoticeBar(this))
{
    setObjectName(QStringLiteral("frmDoc"));
    rt1->setObjectName(QStringLiteral("rt1"));
    rt1->setAccessibleName(tr("Document text"));
    rt1->Tag = QStringLiteral("1");
    rt1->setFrameShape(QFrame::NoFrame);
    showAsPaper(rt1);
    rt1->setContextMenuPolicy(Qt::CustomContextMenu);
    rt1->installEventFilter(this);
    arrange();

    const auto *redo = new QShortcut(Qt::CTRL | Qt::Key_Y, rt1, nullptr, nullptr, Qt::WidgetShortcut);
    onEvent(redo, &QShortcut::activated, rt1, &QTextEdit::redo);
    onEvent(rt1, &RichTextBox::Change, this, &frmDoc::rt1_Change);
    onEvent(rt1, &RichTextBox::SelChange, this, &frmDoc::rt1_SelChange);
    onEvent(rt1, &RichTextBox::loadFinished, this, &frmDoc::rt1_LoadFinished);
    onEvent(rt1, &QWidget::customContextMenuRequested, this, &frmDoc::showContextMenu);
    Form_Load();
}

frmDoc::~frmDoc() = default;

// The box fills the window, below the notices while there are any.
void frmDoc::arrange()
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_notices);
    column->addWidget(rt1, 1);
    setFocusProxy(rt1);
}

void frmDoc::setCaption(const QString &caption)
{
    m_caption = caption;
    // The toolkit takes "[*]" in a title for a mark of its own; doubled, it stands for itself.
    QString title = caption;
    setWindowTitle(title.replace(QStringLiteral("[*]"), QStringLiteral("[*][*]")));
    Q_EMIT captionChanged();
}

bool frmDoc::isUntitled() const
{
    return m_caption.left(8) == u"Untitled";
}

void frmDoc::unload()
{
    if (parentWidget())
        parentWidget()->close();
}

void frmDoc::Form_Load()
{
    Tag = QStringLiteral("0");
}

void frmDoc::rt1_Change()
{
    Tag = toText(Val(Tag) + 1);
}

void frmDoc::rt1_SelChange()
{
    // The tool bar is the active document's; another one may change too, when it is loaded behind it.
    if (m_frame.activeDocument() != this)
        return;
    const frmText::ShowingSelection showing(m_frame);
    const TextToolBar &toolbar = m_frame.toolbar;
    if (const auto bold = rt1->SelBold())
        toolbar.Command2->setFontStyle(!*bold);
    if (const auto italic = rt1->SelItalic())
        toolbar.Command3->setFontStyle(!*italic);
    if (const auto underline = rt1->SelUnderline())
        toolbar.Command4->setFontStyle(!*underline);
    if (const auto color = rt1->SelColor(); color && *color >= 0)
        toolbar.Label1->setForeColor(*color);
    showFontSize();
    showFontName();
}

// The lists are searched to one step past their last item, where List gives an empty text that no size and no
// name equals.
void frmDoc::showFontSize()
{
    const auto size = rt1->SelFontSize();
    if (!size || !(*size > 0))
        return;
    ComboBox &cb2 = *m_frame.toolbar.cb2;
    const QString wholePoints = toText(CLng(std::floor(static_cast<double>(*size))));
    for (LoopIndex = 0; LoopIndex <= cb2.ListCount(); ++LoopIndex) {
        if (cb2.List(LoopIndex) == wholePoints)
            cb2.setListIndex(LoopIndex);
    }
}

void frmDoc::showFontName()
{
    const auto name = rt1->SelFontName();
    // A document can name a font with an empty text, and that is no reason to choose past the end of the list.
    if (!name || name->isEmpty())
        return;
    ComboBox &cb1 = *m_frame.toolbar.cb1;
    for (LoopIndex = 0; LoopIndex <= cb1.ListCount(); ++LoopIndex) {
        if (cb1.List(LoopIndex) == *name)
            cb1.setListIndex(LoopIndex);
    }
}

void frmDoc::Form_QueryUnload(bool &Cancel)
{
    if (Val(Tag) < 1)
        return;
    LoopIndex = static_cast<int>(MsgBox(tr("Do you want to save changes made to document %1?").arg(Caption()),
                                        Buttons::YesNoCancel, BoxIcon::None, QString()));
    if (LoopIndex == static_cast<int>(Answer::Cancel)) {
        Cancel = true;
    } else if (LoopIndex == static_cast<int>(Answer::Yes)) {
        if (isUntitled()) {
            Cancel = !saveUntitled();
        } else {
            rt1->SaveFile(Caption());
            Tag = QStringLiteral("0");
        }
    }
}

// False when the user gave no name.
bool frmDoc::saveUntitled()
{
    CommonDialog &cd2 = *m_frame.cd2;
    OldFileName = cd2.FileName;
    cd2.ShowSave(&m_frame);
    if (cd2.FileName == OldFileName)
        return false;
    rt1->SaveFile(cd2.FileName);
    setCaption(cd2.FileName);
    cd2.FileName = OldFileName;
    Tag = QStringLiteral("0");
    return true;
}

void frmDoc::rt1_LoadFinished(bool loaded, const QStringList &notices)
{
    Q_EMIT loadingEnded();
    m_notices->setNotices(notices);
    // Kept open, the empty text could be saved over the file that was not read.
    if (!loaded)
        unload();
}

void frmDoc::showContextMenu(const QPoint &position)
{
    if (rt1->isLoading())
        return;
    QMenu menu;
    QAction *undo = menu.addAction(QIcon::fromTheme(QStringLiteral("edit-undo")), tr("Undo"));
    undo->setEnabled(rt1->document()->isUndoAvailable());
    onEvent(undo, &QAction::triggered, rt1, [this] { rt1->undo(); });
    QAction *redo = menu.addAction(QIcon::fromTheme(QStringLiteral("edit-redo")), tr("Redo"));
    redo->setEnabled(rt1->document()->isRedoAvailable());
    onEvent(redo, &QAction::triggered, rt1, [this] { rt1->redo(); });
    menu.addSeparator();
    const TextMenus &menus = m_frame.menus;
    menu.addActions({menus.copy, menus.cut, menus.paste, menus.delete_});
    menu.addSeparator();
    menu.addAction(menus.selall);
    menu.exec(rt1->viewport()->mapToGlobal(position));
}

void frmDoc::closeEvent(QCloseEvent *event)
{
    // A failure on the way must not take the window, with the text in it.
    bool Cancel = true;
    guarded([&] {
        if (m_frame.closesAfterReplacing(parentWidget()))
            return;
        bool refused = false;
        Form_QueryUnload(refused);
        Cancel = refused;
    });
    event->setAccepted(!Cancel);
    if (!Cancel)
        Q_EMIT unloaded();
}

bool frmDoc::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == rt1 && event->type() == QEvent::ShortcutOverride
        && isFrameCommand(*static_cast<QKeyEvent *>(event))) {
        event->ignore();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace vandrel
