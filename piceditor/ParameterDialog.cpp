#include "piceditor/ParameterDialog.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "controls/ComboBox.h"
#include "piceditor/frmPicEdit.h"
#include "runtime/Events.h"

namespace vandrel {

namespace {

constexpr int boxWidth = 160;

} // namespace

ParameterDialog::ParameterDialog(frmPicEdit &frame, const char *name, const QString &caption)
    : QDialog(&frame, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      Command1(new QPushButton(tr("OK"), this)), Command2(new QPushButton(tr("&Cancel"), this)),
      editor(frame), m_rows(new QGridLayout)
{
    setObjectName(QString::fromLatin1(name));
    setWindowTitle(caption);
    Command1->setObjectName(QStringLiteral("Command1"));
    Command1->setDefault(true);
    Command2->setObjectName(QStringLiteral("Command2"));
    auto *buttons = new QDialogButtonBox;
    buttons->addButton(Command1, QDialogButtonBox::AcceptRole);
    buttons->addButton(Command2, QDialogButtonBox::RejectRole);
    auto *column = new QVBoxLayout(this);
    column->addLayout(m_rows);
    // There is nothing to see in a larger one.
    column->setSizeConstraint(QLayout::SetFixedSize);
    column->addWidget(buttons);
    onEvent(Command1, &QPushButton::clicked, this, [this] { Command1_Click(); });
    onEvent(Command2, &QPushButton::clicked, this, &ParameterDialog::Command2_Click);
}

QLineEdit *ParameterDialog::addBox(const QString &name, const QString &label, const QString &initialText)
{
    auto *box = new QLineEdit(initialText, this);
    box->selectAll();
    addRow(name, label, box);
    return box;
}

ComboBox *ParameterDialog::addList(const QString &name, const QString &label, const QStringList &items)
{
    auto *list = new ComboBox(this);
    for (const QString &item : items)
        list->AddItem(item);
    addRow(name, label, list);
    return list;
}

// Boxes are added before the buttons in the order of Tab, although they are made after them.
void ParameterDialog::addRow(const QString &name, const QString &label, QWidget *box)
{
    box->setObjectName(name);
    box->setMinimumWidth(boxWidth);
    auto *caption = new QLabel(label, this);
    caption->setBuddy(box);
    const int row = m_rows->rowCount();
    m_rows->addWidget(caption, row, 0);
    m_rows->addWidget(box, row, 1);
    if (!focusWidget())
        box->setFocus();
    setTabOrder(box, Command1);
    setTabOrder(Command1, Command2);
}

void ParameterDialog::process(const std::function<void()> &operation)
{
    if (editor.BeginProcessing())
        editor.Perform(operation);
}

void ParameterDialog::Command2_Click()
{
    close();
}

} // namespace vandrel
