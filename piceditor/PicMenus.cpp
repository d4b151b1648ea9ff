#include "piceditor/PicMenus.h"

#include <QAction>
#include <QCoreApplication>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

namespace vandrel {

namespace {

QString caption(const char *text)
{
    return QCoreApplication::translate("vandrel::PicMenus", text);
}

QAction *named(QAction *item, const char *name)
{
    item->setObjectName(QString::fromLatin1(name));
    item->setMenuRole(QAction::NoRole);
    return item;
}

template<typename Parent>
QMenu *addMenu(Parent *parent, const char *name, const char *text)
{
    QMenu *menu = parent->addMenu(caption(text));
    menu->setObjectName(QString::fromLatin1(name));
    return menu;
}

QAction *addItem(QMenu *menu, const char *name, const char *text)
{
    return named(menu->addAction(caption(text)), name);
}

} // namespace

PicMenus::PicMenus(QMainWindow &frame)
{
    createFile(frame);
    createEdit(frame);
    createProcess(frame);
    createOthers(frame);
    assignShortcuts();
}

void PicMenus::createFile(QMainWindow &frame)
{
    file = addMenu(frame.menuBar(), "file", QT_TR_NOOP("&File"));
    opn = addItem(file, "opn", QT_TR_NOOP("&Open.."));
    sav = addItem(file, "sav", QT_TR_NOOP("&Save"));
    savas = addItem(file, "savas", QT_TR_NOOP("S&ave as.."));
    prnt = addItem(file, "prnt", QT_TR_NOOP("&Print"));
    file->addSeparator();
    exit = addItem(file, "exit", QT_TR_NOOP("E&xit"));
}

void PicMenus::createEdit(QMainWindow &frame)
{
    edit = addMenu(frame.menuBar(), "edit", QT_TR_NOOP("&Edit"));
    undo = addItem(edit, "undo", QT_TR_NOOP("&Undo"));
    cpy = addItem(edit, "cpy", QT_TR_NOOP("&Copy"));
    set = addItem(edit, "set", QT_TR_NOOP("&Set processing area..."));
    shp = addMenu(edit, "shp", QT_TR_NOOP("shape"));
    hnd = addItem(shp, "hnd", QT_TR_NOOP("Free Hand"));
    line = addItem(shp, "line", QT_TR_NOOP("Line"));
    rect = addItem(shp, "rect", QT_TR_NOOP("Rectangle"));
    cir = addItem(shp, "cir", QT_TR_NOOP("Circle"));
}

void PicMenus::createProcess(QMainWindow &frame)
{
    proc = addMenu(frame.menuBar(), "proc", QT_TR_NOOP("&Process"));
    rgb = addItem(proc, "rgb", QT_TR_NOOP("Adjust RGB"));
    hsl = addItem(proc, "hsl", QT_TR_NOOP("Adjust HSL"));
    autocon = addItem(proc, "autocon", QT_TR_NOOP("Auto-Contrast"));
    resample = addItem(proc, "resample", QT_TR_NOOP("Resample Colors"));
    deskew = addItem(proc, "deskew", QT_TR_NOOP("Deskew"));
    mapping = addItem(proc, "mapping", QT_TR_NOOP("Bump Mapping"));
    merge = addItem(proc, "merge", QT_TR_NOOP("Merge..."));
    alpha = addItem(proc, "alpha", QT_TR_NOOP("Alpha Effect..."));
    blur = addItem(proc, "blur", QT_TR_NOOP("Blur"));
    blend = addItem(proc, "blend", QT_TR_NOOP("Blend"));
    brt = addItem(proc, "brt", QT_TR_NOOP("Brightness"));
    con = addItem(proc, "con", QT_TR_NOOP("Contrast"));
    equ = addItem(proc, "equ", QT_TR_NOOP("Equalize"));
    gam = addItem(proc, "gam", QT_TR_NOOP("Gamma"));
    mat = addItem(proc, "mat", QT_TR_NOOP("Matrix..."));
    neg = addItem(proc, "neg", QT_TR_NOOP("Negative"));
    conc = addItem(proc, "conc", QT_TR_NOOP("Concave spectrum"));
    conv = addItem(proc, "conv", QT_TR_NOOP("Convex Spectrum"));
    rmbr = addItem(proc, "rmbr", QT_TR_NOOP("Rembrand"));
    replace = addItem(proc, "replace", QT_TR_NOOP("Replace Colors..."));
    warp = addItem(proc, "warp", QT_TR_NOOP("Warp..."));
    sharp = addItem(proc, "sharp", QT_TR_NOOP("Sharpen"));
}

void PicMenus::createOthers(QMainWindow &frame)
{
    txt = addMenu(frame.menuBar(), "txt", QT_TR_NOOP("&Texture"));
    btv = addItem(txt, "btv", QT_TR_NOOP("Broken &TV"));
    but = addItem(txt, "but", QT_TR_NOOP("&Buttonize"));
    mos = addItem(txt, "mos", QT_TR_NOOP("&Mosaic"));
    emboss = addItem(txt, "emboss", QT_TR_NOOP("&Emboss"));

    zoom = addMenu(frame.menuBar(), "zoom", QT_TR_NOOP("&Zoom"));
    in = addItem(zoom, "in", QT_TR_NOOP("Zoom &In"));
    out = addItem(zoom, "out", QT_TR_NOOP("Zoom &Out"));

    size = addMenu(frame.menuBar(), "size", QT_TR_NOOP("&Resize"));
    str = addItem(size, "str", QT_TR_NOOP("&Resize.."));

    flip = addMenu(frame.menuBar(), "flip", QT_TR_NOOP("&Flip"));
    hor = addItem(flip, "hor", QT_TR_NOOP("Flip &Horizontally"));
    ver = addItem(flip, "ver", QT_TR_NOOP("Flip &Vertically"));
    rot = addItem(flip, "rot", QT_TR_NOOP("&Rotate.."));

    text = addMenu(frame.menuBar(), "text", QT_TR_NOOP("text"));
    fnt = addItem(text, "fnt", QT_TR_NOOP("Font..."));
    text2 = addItem(text, "text2", QT_TR_NOOP("Text..."));

    hlp = named(frame.menuBar()->addAction(caption(QT_TR_NOOP("&Help"))), "hlp");
}

// F1 is the window's own key, which "&Help" sends.
void PicMenus::assignShortcuts() const
{
    opn->setShortcuts(QKeySequence::Open);
    sav->setShortcuts(QKeySequence::Save);
    savas->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_S);
    prnt->setShortcuts(QKeySequence::Print);
    exit->setShortcut(Qt::CTRL | Qt::Key_Q);
    undo->setShortcuts(QKeySequence::Undo);
    cpy->setShortcuts(QKeySequence::Copy);
    // The key of the plus sign carries the equals sign on many keyboards.
    in->setShortcuts({Qt::CTRL | Qt::Key_Plus, Qt::CTRL | Qt::Key_Equal});
    out->setShortcut(Qt::CTRL | Qt::Key_Minus);
}

} // namespace vandrel
