#pragma once

#include <QDialog>

#include "runtime/Prompts.h"

class QLabel;
class QLineEdit;

namespace vandrel {

/// The window of an input box: the prompt, one line to type with the default text selected, OK and Cancel.
class InputDialog : public QDialog
{
    Q_OBJECT

public:
    InputDialog(const InputBoxRequest &request, QWidget *parent);

    /// The typed text; "" unless the box was left with OK.
    QString typed() const;

private:
    void label(QWidget *prompt, const QString &text);

    QLineEdit *m_edit;
};

} // namespace vandrel
