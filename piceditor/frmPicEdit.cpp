#include "piceditor/frmPicEdit.h"

#include <utility>

#include <QAction>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QFile>
#include <QKeyEvent>
#include <QMenu>
#include <QScrollBar>

#include "controls/Label.h"
#include "controls/PictureBox.h"
#include "controls/StatusBar.h"
#include "piceditor/ClientArea.h"
#include "piceditor/Form2.h"
#include "piceditor/Form3.h"
#include "piceditor/Form4.h"
#include "piceditor/Form5.h"
#include "piceditor/Form6.h"
#include "piceditor/Form7.h"
#include "piceditor/GuideWindow.h"
#include "piceditor/WorkReport.h"
#include "runtime/Events.h"
#include "runtime/Numbers.h"
#include "runtime/PopUp.h"

namespace vandrel {

namespace {

constexpr int defaultWidth = 960;
constexpr int defaultHeight = 700;

template<typename Form>
WindowSlot dialogSlot(frmPicEdit &editor)
{
    return WindowSlot([&editor] { return new Form(editor); });
}

} // namespace

frmPicEdit::frmPicEdit(PictureEditorControls controls, QWidget *parent)
    : QMainWindow(parent), c1(std::move(controls.c1)), c2(std::move(controls.c2)),
      cd1(std::move(controls.cd1)), cd2(std::move(controls.cd2)), client(new ClientArea(this)), menus(*this),
      toolbar(client), view(client, toolbar.CoolBar1->sizeHint().height()), StatusBar1(new StatusBar(client)),
      Form2(dialogSlot<vandrel::Form2>(*this)), Form3(dialogSlot<vandrel::Form3>(*this)),
      Form4(dialogSlot<vandrel::Form4>(*this)), Form5(dialogSlot<vandrel::Form5>(*this)),
      Form6(dialogSlot<vandrel::Form6>(*this)), Form7(dialogSlot<vandrel::Form7>(*this)),
      m_drives(std::move(controls.drives)),
      m_help([this] { return new GuideWindow(tr("Picture editor"), this); })
{
    setObjectName(QStringLiteral("frmPicEdit"));
    setWindowTitle(tr("EditMe!"));
    setCentralWidget(client);
    createStatusBar();
    connectFileMenus();
    connectProcessMenus();
    connectDialogs();
    connectView();
    resize(defaultWidth, defaultHeight);
    Form_Load();
}

frmPicEdit::~frmPicEdit() = default;

void frmPicEdit::createStatusBar()
{
    StatusBar1->setObjectName(QStringLiteral("StatusBar1"));
    m_infoPanel = StatusBar1->addPanel(QStringLiteral("Panel1"), QStringLiteral("88888x88888 88 bits/pixel"));
    m_pointerPanel = StatusBar1->addPanel(QStringLiteral("Panel2"), QStringLiteral("-88888, -88888"));
    m_report = std::make_unique<WorkReport>(*StatusBar1->addPanel(QStringLiteral("Panel3"), {}, 1));
    m_report->follow(*c1);
    m_report->follow(*c2);
}

void frmPicEdit::connectFileMenus()
{
    const std::pair<QAction *, int> files[]
        = {{menus.opn, 1}, {menus.sav, 2}, {menus.savas, 3}, {menus.prnt, 4}};
    for (const auto &[item, Index] : files)
        onEvent(item, &QAction::triggered, this, [this, i = Index] { Command1_Click(i); });
    onEvent(menus.undo, &QAction::triggered, this, [this] { Command2_Click(8); });
    const std::pair<QAction *, void (frmPicEdit::*)()> others[] = {
        {menus.exit, &frmPicEdit::exit_Click}, {menus.cpy, &frmPicEdit::cpy_Click},
        {menus.hlp, &frmPicEdit::hlp_Click},   {menus.in, &frmPicEdit::in_Click},
        {menus.out, &frmPicEdit::out_Click},
    };
    for (const auto &[item, handler] : others)
        onEvent(item, &QAction::triggered, this, handler);
}

void frmPicEdit::connectProcessMenus()
{
    const std::pair<QAction *, void (frmPicEdit::*)()> handlers[] = {
        {menus.autocon, &frmPicEdit::autocon_Click}, {menus.deskew, &frmPicEdit::deskew_Click},
        {menus.blur, &frmPicEdit::blur_Click},       {menus.equ, &frmPicEdit::equ_Click},
        {menus.neg, &frmPicEdit::neg_Click},         {menus.conc, &frmPicEdit::conc_Click},
        {menus.conv, &frmPicEdit::conv_Click},       {menus.rmbr, &frmPicEdit::rmbr_Click},
        {menus.btv, &frmPicEdit::btv_Click},         {menus.emboss, &frmPicEdit::emboss_Click},
        {menus.hor, &frmPicEdit::hor_Click},         {menus.ver, &frmPicEdit::ver_Click},
        {menus.blend, &frmPicEdit::blend_Click},     {menus.brt, &frmPicEdit::brt_Click},
        {menus.con, &frmPicEdit::con_Click},         {menus.gam, &frmPicEdit::gam_Click},
        {menus.sharp, &frmPicEdit::sharp_Click},     {menus.mos, &frmPicEdit::mos_Click},
        {menus.rot, &frmPicEdit::rot_Click},         {menus.mapping, &frmPicEdit::mapping_Click},
        {menus.warp, &frmPicEdit::warp_Click},       {menus.mat, &frmPicEdit::mat_Click},
        {menus.replace, &frmPicEdit::replace_Click},
    };
    for (const auto &[item, handler] : handlers)
        onEvent(item, &QAction::triggered, this, handler);
}

void frmPicEdit::connectDialogs()
{
    const std::pair<QAction *, WindowSlot *> dialogs[] = {
        {menus.but, &Form2},      {menus.rgb, &Form3}, {menus.hsl, &Form4},
        {menus.resample, &Form5}, {menus.str, &Form6}, {menus.set, &Form7},
    };
    for (const auto &[item, dialog] : dialogs)
        onEvent(item, &QAction::triggered, this, [form = dialog] { form->show(); });
}

void frmPicEdit::connectView()
{
    toolbar.Command1.onEvent(&PicToolButton::clicked, this, &frmPicEdit::Command1_Click);
    toolbar.Command2.onEvent(&PicToolButton::clicked, this, &frmPicEdit::Command2_Click);
    onEvent(client, &ClientArea::Resize, this, &frmPicEdit::Form_Resize);
    onEvent(client, &ClientArea::DragDrop, this, &frmPicEdit::Form_DragDrop);
    onEvent(view.Pic1, &PictureBox::DragDrop, this, &frmPicEdit::Pic1_DragDrop);
    onEvent(view.Pic1, &PictureBox::MouseDown, this, &frmPicEdit::Pic1_MouseDown);
    onEvent(view.Pic1, &PictureBox::MouseMove, this, &frmPicEdit::Pic1_MouseMove);
    onEvent(view.Pic1, &PictureBox::MouseUp, this, &frmPicEdit::Pic1_MouseUp);
    onEvent(view.hs1, &QScrollBar::valueChanged, this, &frmPicEdit::hs1_Change);
    onEvent(view.VS1, &QScrollBar::valueChanged, this, &frmPicEdit::VS1_Change);
}

void frmPicEdit::Form_Load()
{
    c1->Clear();
    c2->Clear();
    const QByteArray folder = QFile::encodeName(QCoreApplication::applicationDirPath());
    m_drives->setCurrentFolder(m_drives->toDos(folder));
    dZoom = 1.0;
    bZoomed = false;
    bModified = false;
    updateCommands();
}

const QString &frmPicEdit::openPicture() const
{
    return view.Pic1->Tag;
}

// Without a picture there is nothing to write or to copy, and a path to write it to is missing as well.
void frmPicEdit::updateCommands()
{
    const bool hasPicture = !openPicture().isEmpty();
    for (QAction *item : {menus.sav, menus.savas, menus.cpy})
        item->setEnabled(hasPicture);
    toolbar.Command1[2]->setEnabled(hasPicture);
}

void frmPicEdit::Command2_Click(int Index)
{
    switch (Index) {
    case 0:
    case 1:
        popUp(menus.shp, toolbar.Command2[Index]);
        break;
    case 2:
        popUp(menus.zoom, toolbar.Command2[Index]);
        break;
    case 3:
        popUp(menus.txt, toolbar.Command2[Index]);
        break;
    case 4:
        popUp(menus.proc, toolbar.Command2[Index]);
        break;
    case 5:
        popUp(menus.size, toolbar.Command2[Index]);
        break;
    case 6:
        popUp(menus.flip, toolbar.Command2[Index]);
        break;
    case 7:
        popUp(menus.text, toolbar.Command2[Index]);
        break;
    case 8:
        if (!openPicture().isEmpty()) {
            m_report->clear();
            c2->Undo();
            RedrawPicture(*c2);
        }
        break;
    default:
        break;
    }
}

void frmPicEdit::ShowPictureInfo()
{
    m_infoPanel->setText(toText(c2->Width()) + u'x' + toText(c2->Height()) + u' ' + toText(c2->BitsPerPixel())
                         + QStringLiteral(" bits/pixel"));
}

void frmPicEdit::Form_GotFocus()
{
    ShowPictureInfo();
}

void frmPicEdit::hlp_Click()
{
    QCoreApplication::postEvent(this, new QKeyEvent(QEvent::KeyPress, Qt::Key_F1, Qt::NoModifier));
}

void frmPicEdit::exit_Click()
{
    close();
}

void frmPicEdit::Form_QueryUnload(bool &Cancel)
{
    Cancel = bModified && !savesChanges();
    if (Cancel)
        return;
    bModified = false;
    for (const WindowSlot *dialog : {&Form2, &Form3, &Form4, &Form5, &Form6, &Form7, &m_help}) {
        if (QWidget *window = dialog->window())
            window->close();
    }
}

bool frmPicEdit::event(QEvent *event)
{
    if (event->type() == QEvent::WindowActivate)
        guarded([this] { Form_GotFocus(); });
    return QMainWindow::event(event);
}

void frmPicEdit::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_F1)
        guarded([this] { m_help.show(); });
    else
        QMainWindow::keyPressEvent(event);
}

void frmPicEdit::closeEvent(QCloseEvent *event)
{
    // A failure on the way must not take the picture.
    bool Cancel = true;
    guarded([&] {
        Form_QueryUnload(Cancel);
        if (!Cancel)
            c2->Clear();
    });
    event->setAccepted(!Cancel);
}

} // namespace vandrel
