#pragma once

#include <functional>

#include <QDialog>

class QGridLayout;
class QLineEdit;
class QPushButton;

namespace vandrel {

class ComboBox;
class frmPicEdit;

/// What the editor's dialogs have in common: labelled boxes below each other, OK and "&Cancel". Not modal.
class ParameterDialog : public QDialog
{
    Q_OBJECT

public:
    QPushButton *Command1;
    QPushButton *Command2;

    void Command2_Click();

protected:
    /// The dialog's name and caption.
    ParameterDialog(frmPicEdit &frame, const char *name, const QString &caption);

    /// Adds a box below the others, under its own name.
    QLineEdit *addBox(const QString &name, const QString &label, const QString &initialText);
    ComboBox *addList(const QString &name, const QString &label, const QStringList &items);

    /// What OK does.
    virtual void Command1_Click() = 0;
    /// What the five dialogs of operations have in common: `operation` reads the boxes and processes the working image,
    /// when there is a picture; the dialog is unloaded in any case.
    void process(const std::function<void()> &operation);

    frmPicEdit &editor;

private:
    void addRow(const QString &name, const QString &label, QWidget *box);

    QGridLayout *m_rows;
};

} // namespace vandrel
