#include "texteditor/frmText.h"

#include <utility>

#include <QAction>
#include <QCloseEvent>
#include <QMdiSubWindow>
#include <QShortcut>

#include "controls/ComboBox.h"
#include "controls/Label.h"
#include "controls/MdiArea.h"
#include "controls/RichTextBox.h"
#include "runtime/Events.h"
#include "runtime/Numbers.h"
#include "texteditor/StyleButton.h"
#include "texteditor/WindowList.h"
#include "texteditor/frmDoc.h"
#include "texteditor/frmRep.h"

namespace vandrel {

namespace {

constexpr int defaultWidth = 960;
constexpr int defaultHeight = 700;

frmDoc *documentIn(const QMdiSubWindow *child)
{
    return child ? qobject_cast<frmDoc *>(child->widget()) : nullptr;
}

} // namespace

frmText::frmText(TextEditorControls controls, QWidget *parent)
    : QMainWindow(parent), cd1(std::move(controls.cd1)), cd2(std::move(controls.cd2)),
      c1(std::move(controls.c1)), menus(*this), toolbar(*this), m_printer(std::move(controls.printer)),
      m_files(std::move(controls.files)), m_screenFonts(std::move(controls.screenFonts)),
      m_area(new MdiArea(this)), m_windowList(new WindowList(menus.win, menus.a, this))
{
    setObjectName(QStringLiteral("frmText"));
    setCentralWidget(m_area);
    resize(defaultWidth, defaultHeight);
    setUpDialogs();
    connectMenus();
    connectToolBar();
    onEvent(m_area, &QMdiArea::subWindowActivated, this, [this](QMdiSubWindow *child) {
        if (frmDoc *document = documentIn(child); m_documents.contains(document))
            activate(document);
    });
    onEvent(m_windowList, &WindowList::chosen, this, [this](frmDoc *document) {
        m_area->setActiveSubWindow(qobject_cast<QMdiSubWindow *>(document->parentWidget()));
    });
    childrenChanged();
    MDIForm_Load();
}

frmText::~frmText()
{
    // The children go down with the area, and raise events on their way that nobody is left to take.
    for (frmDoc *document : std::as_const(m_documents)) {
        document->disconnect(this);
        document->rt1->disconnect(document);
    }
    m_area->disconnect(this);
}

void frmText::setUpDialogs()
{
    cd1->DialogTitle = tr("Open");
    cd1->FileName = QStringLiteral("*.txt;*.doc;*.wri;*.rtf");
    cd1->Filter = QStringLiteral("*.txt||*.rtf||*.wri||*.doc");
    cd1->InitDir = QStringLiteral("c:\\windows");
    cd2->DialogTitle = tr("Save");
    cd2->FileName = QStringLiteral("*.rtf");
    cd2->Filter = QStringLiteral("*.rtf||*.txt");
    cd2->InitDir = QStringLiteral("c:\\");
}

void frmText::connectMenus()
{
    const std::pair<QAction *, void (frmText::*)()> handlers[] = {
        {menus.new_, &frmText::new_Click},      {menus.open, &frmText::open_Click},
        {menus.save, &frmText::save_Click},     {menus.saveas, &frmText::saveas_Click},
        {menus.print, &frmText::print_Click},   {menus.exit, &frmText::exit_Click},
        {menus.copy, &frmText::copy_Click},     {menus.cut, &frmText::cut_Click},
        {menus.paste, &frmText::paste_Click},   {menus.delete_, &frmText::delete_Click},
        {menus.clear, &frmText::clear_Click},   {menus.timedate, &frmText::timedate_Click},
        {menus.selall, &frmText::selall_Click}, {menus.find, &frmText::find_Click},
        {menus.findn, &frmText::findn_Click},   {menus.replace, &frmText::replace_Click},
        {menus.tile, &frmText::tile_Click},     {menus.cascade, &frmText::cascade_Click},
    };
    for (const auto &[item, handler] : handlers)
        onEvent(item, &QAction::triggered, this, handler);
}

void frmText::connectToolBar()
{
    onEvent(toolbar.cb1, &ComboBox::Click, this, &frmText::cb1_Click);
    onEvent(toolbar.cb2, &ComboBox::Click, this, &frmText::cb2_Click);
    onEvent(toolbar.Command2, &QToolButton::clicked, this, &frmText::Command2_Click);
    onEvent(toolbar.Command3, &QToolButton::clicked, this, &frmText::Command3_Click);
    onEvent(toolbar.Command4, &QToolButton::clicked, this, &frmText::Command4_Click);
    onEvent(toolbar.Label1, &Label::Click, this, &frmText::Label1_Click);
    onEvent(toolbar.Label1, &Label::DblClick, this, &frmText::Label1_DblClick);
    const auto *key = new QShortcut(Qt::Key_F6, this);
    onEvent(key, &QShortcut::activated, this, &frmText::goToOtherPart);
}

// Tab is text in a document, so another key goes between it and the tool bar.
void frmText::goToOtherPart()
{
    if (toolbar.Frame1->isAncestorOf(focusWidget()) && isTextReady())
        activeText().SetFocus();
    else
        toolbar.cb1->setFocus(Qt::ShortcutFocusReason);
}

void frmText::MDIForm_Load()
{
    DocCount = 1;
    NewDocument();
    ComboBox &cb1 = *toolbar.cb1;
    ComboBox &cb2 = *toolbar.cb2;
    const Integer FontCount = m_screenFonts.size();
    for (Integer i = 0; i < FontCount; ++i)
        cb1.AddItem(m_screenFonts[i]);
    for (Integer i = 0; i < FontCount; ++i) {
        if (cb1.List(i) == activeText().font().Name)
            cb1.setListIndex(i);
    }
    // The list of sizes is still empty here, so the document's own size is never chosen: 12 is, below.
    for (Integer i = 0; i < FontCount; ++i) {
        if (cb2.List(i) == toText(activeText().font().size))
            cb2.setListIndex(i);
    }
    for (const int size : {8, 9, 10, 11, 12, 14, 16, 18, 20, 22, 24, 26, 28, 36, 48, 72})
        cb2.AddItem(toText(size));
    cb2.setListIndex(4);
    ActiveForm().Tag = QStringLiteral("0");
}

void frmText::MDIForm_Activate()
{
    updateCaption();
}

void frmText::NewDocument()
{
    showChild(newChild(tr("Untitled %1").arg(DocCount.value())));
    ++DocCount;
}

frmDoc *frmText::newChild(const QString &caption)
{
    auto *document = new frmDoc(*this, m_files);
    document->setCaption(caption);
    onEvent(document, &frmDoc::captionChanged, this, &frmText::childrenChanged);
    onEvent(document, &frmDoc::loadingEnded, this, &frmText::childrenChanged);
    onEvent(document, &frmDoc::unloaded, this, [this, document] { forget(document); });
    return document;
}

void frmText::showChild(frmDoc *document)
{
    m_documents.append(document);
    m_area->addChild(document);
    activate(document);
    document->rt1->SetFocus();
}

void frmText::activate(frmDoc *document)
{
    if (m_active == document)
        return;
    const bool replacesAnother = std::exchange(m_active, document) != nullptr;
    childrenChanged();
    if (replacesAnother)
        document->rt1_SelChange();
}

void frmText::forget(frmDoc *document)
{
    m_documents.removeOne(document);
    if (m_active == document)
        m_active = m_documents.isEmpty() ? nullptr : m_documents.last();
    childrenChanged();
}

frmDoc &frmText::ActiveForm() const
{
    if (!m_active)
        throw RuntimeError(error::ObjectNotSet);
    return *m_active;
}

RichTextBox &frmText::activeText() const
{
    return *ActiveForm().rt1;
}

frmRep *frmText::replaceDialog() const
{
    return m_rep;
}

bool frmText::isTextReady() const
{
    return m_active && !m_active->rt1->isLoading();
}

void frmText::childrenChanged()
{
    menus.setEnabled(m_active != nullptr, isTextReady());
    toolbar.setEnabled(isTextReady());
    m_windowList->setDocuments(m_documents, m_active);
    updateCaption();
    Q_EMIT textReadyChanged();
}

void frmText::updateCaption()
{
    m_caption = tr("Text - %1").arg(m_active ? m_active->windowTitle() : QString());
    setWindowTitle(m_caption);
}

bool frmText::closesAfterReplacing(QWidget *window)
{
    if (!m_rep || !m_rep->isReplacing())
        return false;
    m_rep->stop();
    m_closeAfterReplacing.append(window);
    return true;
}

void frmText::replace_Click()
{
    if (!m_rep) {
        m_rep = new frmRep(*this);
        onEvent(m_rep.data(), &frmRep::unloaded, this, [this] { m_rep = nullptr; });
        onEvent(m_rep.data(), &frmRep::replacingEnded, this, [this] {
            for (const QPointer<QWidget> &window : std::exchange(m_closeAfterReplacing, {})) {
                if (window)
                    QMetaObject::invokeMethod(window, &QWidget::close, Qt::QueuedConnection);
            }
        });
    }
    m_rep->show();
    m_rep->raise();
    m_rep->activateWindow();
}

// The children are asked one after the other, and none goes before all have agreed.
bool frmText::queryUnload()
{
    const QList<frmDoc *> asked = m_documents;
    for (frmDoc *document : asked) {
        bool Cancel = false;
        document->Form_QueryUnload(Cancel);
        if (Cancel)
            return false;
    }
    return true;
}

bool frmText::event(QEvent *event)
{
    if (event->type() == QEvent::WindowActivate)
        guarded([this] { MDIForm_Activate(); });
    return QMainWindow::event(event);
}

void frmText::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    // The toolkit adds the name of a maximised child, which the title already carries.
    if (event->type() == QEvent::WindowTitleChange && windowTitle() != m_caption)
        setWindowTitle(m_caption);
}

void frmText::closeEvent(QCloseEvent *event)
{
    // A failure on the way must not take the documents.
    bool Cancel = true;
    guarded([&] {
        if (!closesAfterReplacing(this))
            Cancel = !queryUnload();
    });
    event->setAccepted(!Cancel);
    if (Cancel)
        return;
    if (m_rep)
        m_rep->close();
    // Every child has agreed to go; closing it by itself would ask again.
    for (frmDoc *document : std::exchange(m_documents, {}))
        document->parentWidget()->deleteLater();
    m_active = nullptr;
    childrenChanged();
}

} // namespace vandrel
