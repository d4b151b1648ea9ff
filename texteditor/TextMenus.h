#pragma once

class QAction;
class QMainWindow;
class QMenu;

namespace vandrel {

/// The menus of the text editor's frame, under their own names (an underscore ends the names that the language
/// keeps for itself). Menus and items belong to the frame.
class TextMenus
{
public:
    explicit TextMenus(QMainWindow &frame);

    QMenu *file = nullptr;
    QAction *new_ = nullptr;
    QAction *open = nullptr;
    QAction *save = nullptr;
    QAction *saveas = nullptr;
    QAction *print = nullptr;
    QAction *exit = nullptr;

    QMenu *edit = nullptr;
    QAction *copy = nullptr;
    QAction *cut = nullptr;
    QAction *paste = nullptr;
    QAction *delete_ = nullptr;
    QAction *clear = nullptr;
    QAction *timedate = nullptr;
    QAction *selall = nullptr;

    QMenu *search = nullptr;
    QAction *find = nullptr;
    QAction *findn = nullptr;
    QAction *replace = nullptr;

    QMenu *win = nullptr;
    QAction *tile = nullptr;
    QAction *cascade = nullptr;
    /// "(Empty)": seen, without an action, while no child is listed.
    QAction *a = nullptr;

    /// Enables the commands that need a child, and those that need a child whose text is there.
    void setEnabled(bool hasChild, bool textReady) const;

private:
    void createFile(QMainWindow &frame);
    void createEdit(QMainWindow &frame);
    void createSearch(QMainWindow &frame);
    void createWindow(QMainWindow &frame);
};

} // namespace vandrel
