#pragma once

#include <QDialog>

#include "runtime/Prompts.h"

class QAbstractButton;
class QDialogButtonBox;

namespace vandrel {

/// What a box of these buttons answers when it is closed or left with Esc.
Answer answerWhenClosed(Buttons buttons);

/// The window of a message box. The first button is the default one; a button's underlined letter presses it
/// with and without Alt; the page keys scroll a long text; the copy key copies the whole text.
class MessageDialog : public QDialog
{
    Q_OBJECT

public:
    MessageDialog(const MessageBoxRequest &request, QWidget *parent);

    /// The button pressed; before that, what closing the box answers.
    Answer answer() const { return m_answer; }

protected:
    void showEvent(QShowEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void addIcon(BoxIcon icon);
    void addButtons(Buttons buttons);
    void answerWith(const QAbstractButton *button);
    bool pressLetter(const QKeyEvent &event);
    bool scroll(QKeyEvent &event);

    QString m_message;
    QWidget *m_text;
    QDialogButtonBox *m_buttons;
    Answer m_answer;
};

} // namespace vandrel
