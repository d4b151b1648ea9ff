#pragma once

class QAction;
class QMainWindow;
class QMenu;

namespace vandrel {

/// The menus of the picture editor. Menus and items are members under their own names, which are their object names
/// too. Some of the menus pop up from buttons of the tool bar as well. Items without a handler are kept all the same.
class PicMenus
{
public:
    /// Builds the menu bar of `frame`, which owns everything.
    explicit PicMenus(QMainWindow &frame);

    QMenu *file;
    QAction *opn;
    QAction *sav;
    QAction *savas;
    QAction *prnt;
    QAction *exit;

    QMenu *edit;
    QAction *undo;
    QAction *cpy;
    QAction *set;
    QMenu *shp;
    QAction *hnd;
    QAction *line;
    QAction *rect;
    QAction *cir;

    QMenu *proc;
    QAction *rgb;
    QAction *hsl;
    QAction *autocon;
    QAction *resample;
    QAction *deskew;
    QAction *mapping;
    QAction *merge;
    QAction *alpha;
    QAction *blur;
    QAction *blend;
    QAction *brt;
    QAction *con;
    QAction *equ;
    QAction *gam;
    QAction *mat;
    QAction *neg;
    QAction *conc;
    QAction *conv;
    QAction *rmbr;
    QAction *replace;
    QAction *warp;
    QAction *sharp;

    QMenu *txt;
    QAction *btv;
    QAction *but;
    QAction *mos;
    QAction *emboss;

    QMenu *zoom;
    QAction *in;
    QAction *out;

    QMenu *size;
    QAction *str;

    QMenu *flip;
    QAction *hor;
    QAction *ver;
    QAction *rot;

    QMenu *text;
    QAction *fnt;
    QAction *text2;

    QAction *hlp;

private:
    void createFile(QMainWindow &frame);
    void createEdit(QMainWindow &frame);
    void createProcess(QMainWindow &frame);
    void createOthers(QMainWindow &frame);
    void assignShortcuts() const;
};

} // namespace vandrel
