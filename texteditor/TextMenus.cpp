#include "texteditor/TextMenus.h"

#include <QAction>
#include <QCoreApplication>
#include <QIcon>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

namespace vandrel {

namespace {

QString caption(const char *text)
{
    return QCoreApplication::translate("vandrel::TextMenus", text);
}

QMenu *addMenu(QMainWindow &frame, const char *name, const char *text)
{
    QMenu *menu = frame.menuBar()->addMenu(caption(text));
    menu->setObjectName(QString::fromLatin1(name));
    return menu;
}

QAction *addItem(QMenu *menu, const char *name, const char *text, const char *icon = nullptr)
{
    QAction *item = menu->addAction(caption(text));
    item->setObjectName(QString::fromLatin1(name));
    item->setMenuRole(QAction::NoRole);
    if (icon)
        item->setIcon(QIcon::fromTheme(QString::fromLatin1(icon)));
    return item;
}

void addSeparator(QMenu *menu, const char *name)
{
    menu->addSeparator()->setObjectName(QString::fromLatin1(name));
}

} // namespace

TextMenus::TextMenus(QMainWindow &frame)
{
    createFile(frame);
    createEdit(frame);
    createSearch(frame);
    createWindow(frame);
}

void TextMenus::createFile(QMainWindow &frame)
{
    file = addMenu(frame, "file", QT_TR_NOOP("File"));
    new_ = addItem(file, "new", QT_TR_NOOP("New"), "document-new");
    new_->setShortcuts(QKeySequence::New);
    open = addItem(file, "open", QT_TR_NOOP("Open..."), "document-open");
    open->setShortcuts(QKeySequence::Open);
    save = addItem(file, "save", QT_TR_NOOP("Save"), "document-save");
    save->setShortcuts(QKeySequence::Save);
    saveas = addItem(file, "saveas", QT_TR_NOOP("Save as..."), "document-save-as");
    saveas->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_S);
    addSeparator(file, "s1");
    print = addItem(file, "print", QT_TR_NOOP("Print"), "document-print");
    print->setShortcuts(QKeySequence::Print);
    addSeparator(file, "s2");
    exit = addItem(file, "exit", QT_TR_NOOP("Exit"), "application-exit");
    exit->setShortcut(Qt::CTRL | Qt::Key_Q);
}

// "Delete" has no shortcut of its own: the key of that name edits the text, in this window and in any box.
void TextMenus::createEdit(QMainWindow &frame)
{
    edit = addMenu(frame, "edit", QT_TR_NOOP("Edit"));
    copy = addItem(edit, "copy", QT_TR_NOOP("Copy"), "edit-copy");
    copy->setShortcuts(QKeySequence::Copy);
    cut = addItem(edit, "cut", QT_TR_NOOP("Cut"), "edit-cut");
    cut->setShortcuts(QKeySequence::Cut);
    paste = addItem(edit, "paste", QT_TR_NOOP("Paste"), "edit-paste");
    paste->setShortcuts(QKeySequence::Paste);
    delete_ = addItem(edit, "delete", QT_TR_NOOP("Delete"), "edit-delete");
    clear = addItem(edit, "clear", QT_TR_NOOP("Clear"), "edit-clear");
    addSeparator(edit, "s3");
    timedate = addItem(edit, "timedate", QT_TR_NOOP("Insert Time/Date"));
    timedate->setShortcut(Qt::Key_F5);
    addSeparator(edit, "s4");
    selall = addItem(edit, "selall", QT_TR_NOOP("Select all"), "edit-select-all");
    selall->setShortcuts(QKeySequence::SelectAll);
}

void TextMenus::createSearch(QMainWindow &frame)
{
    search = addMenu(frame, "search", QT_TR_NOOP("Search"));
    find = addItem(search, "find", QT_TR_NOOP("Find..."), "edit-find");
    find->setShortcuts(QKeySequence::Find);
    findn = addItem(search, "findn", QT_TR_NOOP("Find Next"));
    findn->setShortcut(Qt::Key_F3);
    replace = addItem(search, "replace", QT_TR_NOOP("Replace"), "edit-find-replace");
    replace->setShortcut(Qt::CTRL | Qt::Key_H);
}

void TextMenus::createWindow(QMainWindow &frame)
{
    win = addMenu(frame, "win", QT_TR_NOOP("Window"));
    tile = addItem(win, "tile", QT_TR_NOOP("Tile"));
    cascade = addItem(win, "cascade", QT_TR_NOOP("Cascade"));
    addSeparator(win, "s5");
    a = addItem(win, "a", QT_TR_NOOP("(Empty)"));
    a->setEnabled(false);
}

void TextMenus::setEnabled(bool hasChild, bool textReady) const
{
    for (QAction *item : {tile, cascade})
        item->setEnabled(hasChild);
    for (QAction *item :
         {save, saveas, print, copy, cut, paste, delete_, clear, timedate, selall, find, findn, replace})
        item->setEnabled(textReady);
}

} // namespace vandrel
