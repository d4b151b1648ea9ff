#pragma once

#include <array>

#include <QDialog>

#include "controls/ControlArray.h"
#include "runtime/Integer.h"

class QCheckBox;
class QLineEdit;
class QPushButton;

namespace vandrel {

class RichTextBox;
class frmText;

/// The replace dialog of the text editor: replaces one occurrence, or all, in the document that is active when
/// Ok is pressed. It stays open, with its texts, until it is cancelled. A long run keeps the windows alive;
/// "&Cancel", and closing the dialog, the document or the frame, end it.
class frmRep : public QDialog
{
    Q_OBJECT

public:
    explicit frmRep(frmText &frame);

    ControlArray<QLineEdit> Text1{QStringLiteral("Text1")};
    ControlArray<QPushButton> Command1{QStringLiteral("Command1")};
    QCheckBox *Check1 = nullptr;

    /// Index 0 is Ok, index 1 Cancel. Raises Overflow (6) for a match beyond position 32767, and Object
    /// variable not set (91) when no document is open.
    void Command1_Click(int Index);

    bool isReplacing() const { return m_replacing; }
    /// Ends the run under way before its next search.
    void stop() { KeepGoing = false; }
    /// Closes the dialog, as Esc does.
    void reject() override;

Q_SIGNALS:
    /// The run has ended, well or not.
    void replacingEnded();
    /// The dialog is going away, with its texts.
    void unloaded();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void arrange();
    void updateOk();
    void replaceIn(RichTextBox &rt1);

    frmText &m_frame;
    bool m_replacing = false;
    Integer FoundAt;
    bool KeepGoing = false;
};

} // namespace vandrel
