#pragma once

#include <QDialog>
#include <QLabel>
#include <QPushButton>

#include "controls/ControlArray.h"
#include "runtime/WindowSlot.h"

namespace vandrel {

/// The about box, the first window of the process. Its load creates the launcher, hidden, and hands it the
/// suite's icon. Closing it without going on leaves no window, which ends the program.
class Form1 : public QDialog
{
    Q_OBJECT

public:
    /// `launcher` is the reference to the launcher's window and outlives the about box.
    explicit Form1(WindowSlot &launcher);

    /// Index 0 goes on to the launcher, any other index ends the program at once.
    void Command1_Click(int index);

    QLabel *Label1;
    QLabel *Label2;
    QLabel *Label3;
    QLabel *Label4;
    QLabel *Label5;
    QLabel *Label6;
    QLabel *Label7;
    ControlArray<QPushButton> Command1{QStringLiteral("Command1")};

private:
    void Form_Load();
    QLabel *addLabel(const QString &name, const QString &text);
    void setFonts();
    void placeControls();
    void centreOnScreen();

    WindowSlot &frmPanel;
};

} // namespace vandrel
