#pragma once

#include <array>

class QFrame;
class QMainWindow;
class QWidget;

namespace vandrel {

class ComboBox;
class CoolBar;
class Label;
class StyleButton;

/// The formatting tool bar of the text editor's frame. The widgets belong to the frame.
class TextToolBar
{
public:
    explicit TextToolBar(QMainWindow &frame);

    CoolBar *CoolBar1 = nullptr;
    QWidget *Frame1 = nullptr;
    /// Font names, and font sizes in points.
    ComboBox *cb1 = nullptr;
    ComboBox *cb2 = nullptr;
    /// Bold, italic, underline.
    StyleButton *Command2 = nullptr;
    StyleButton *Command3 = nullptr;
    StyleButton *Command4 = nullptr;
    /// The colour swatch.
    Label *Label1 = nullptr;
    /// Decoration.
    std::array<QFrame *, 3> Line1{};

    void setEnabled(bool enabled) const;

private:
    void createLists();
    void createButtons();
    void createSwatch();
    void createLines();
    void arrange();
};

} // namespace vandrel
