#pragma once

#include <QString>

#include "runtime/RuntimeError.h"

namespace vandrel {

/// The buttons and icon of a message box. Values are the ones the runtime's message box has always had.
enum class Buttons { OkOnly = 0, YesNoCancel = 3, YesNo = 4 };
enum class BoxIcon { None = 0, Critical = 16, Exclamation = 48, Information = 64 };

/// What a message box answered.
enum class Answer { Ok = 1, Cancel = 2, Yes = 6, No = 7 };

struct MessageBoxRequest {
    QString text;
    /// Empty stands for a title that is empty on purpose; a box without a stated title carries "Vandrel".
    QString title;
    Buttons buttons = Buttons::OkOnly;
    BoxIcon icon = BoxIcon::None;
};

struct InputBoxRequest {
    QString prompt;
    QString title;
    QString defaultText;
};

/// Everything the suite asks the user in a modal box. One object serves the whole program; a test replaces it
/// with one that answers in advance. While a box is open the EventGate is held.
class Prompts
{
public:
    virtual ~Prompts() = default;

    /// Shows the box and returns the button pressed. Closing it, or Esc, answers Cancel where there is such a
    /// button, Ok where it is the only one, and No for Yes/No.
    virtual Answer messageBox(const MessageBoxRequest &request) = 0;

    /// Returns the typed text; "" for Cancel, Esc and the close box.
    virtual QString inputBox(const InputBoxRequest &request) = 0;

    /// The default error box: "Run-time error '6':", a blank line, the text; title "Vandrel".
    virtual void errorBox(const RuntimeError &failure) = 0;
};

/// The prompts in force: real boxes, unless replaced.
Prompts &prompts();

/// Replaces the prompts for tests; null restores the real boxes. Not owned.
void setPrompts(Prompts *replacement);

/// The application's title, carried by boxes without a stated one.
QString applicationTitle();

/// A message box with the application's title.
Answer MsgBox(const QString &text, Buttons buttons = Buttons::OkOnly, BoxIcon icon = BoxIcon::None);
/// A message box with a stated title, which may be empty.
Answer MsgBox(const QString &text, Buttons buttons, BoxIcon icon, const QString &title);
/// An input box; see Prompts::inputBox.
QString InputBox(const QString &prompt, const QString &title, const QString &defaultText = {});

} // namespace vandrel
