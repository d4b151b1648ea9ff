#include "system/frmRes.h"

#include <utility>

#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "controls/ComboBox.h"
#include "runtime/Events.h"
#include "runtime/Numbers.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

// The facts' least width, in average characters; longer ones wrap.
constexpr int factColumns = 44;

} // namespace

frmRes::frmRes(std::unique_ptr<ChangeRes> changeRes) : ChangeRes1(std::move(changeRes))
{
    setObjectName(QStringLiteral("frmRes"));
    setWindowTitle(tr("Screen resolution control"));
    setFont(QFont(QStringLiteral("MS Sans Serif")));
    arrange();
    Form_Load();
    onEvent(NewSettingCommand, &QPushButton::clicked, this, &frmRes::NewSettingCommand_Click);
    onEvent(Command1, &QPushButton::clicked, this, &frmRes::Command1_Click);
}

frmRes::~frmRes() = default;

void frmRes::arrange()
{
    auto *column = new QVBoxLayout(this);
    QLabel *heading = addLabel(QStringLiteral("Label1"), tr("Your Display information"));
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    column->addWidget(heading);
    column->addLayout(arrangeFacts());
    column->addSpacing(fontMetrics().lineSpacing());
    column->addLayout(arrangeChange());
    column->addStretch(1);
}

QGridLayout *frmRes::arrangeFacts()
{
    auto *grid = new QGridLayout;
    driver = addFact(grid, QStringLiteral("Label2"), tr("Display Driver"), QStringLiteral("driver"));
    desc = addFact(grid, QStringLiteral("Label3"), tr("Device Description"), QStringLiteral("desc"));
    id = addFact(grid, QStringLiteral("Label4"), tr("Hardware ID"), QStringLiteral("id"));
    manufacturer
        = addFact(grid, QStringLiteral("Label5"), tr("Manufacture type"), QStringLiteral("manufacturer"));
    width1 = addFact(grid, QStringLiteral("Label6"), tr("Width"), QStringLiteral("width1"));
    height1 = addFact(grid, QStringLiteral("Label7"), tr("Height"), QStringLiteral("height1"));
    grid->setColumnStretch(1, 1);
    return grid;
}

QVBoxLayout *frmRes::arrangeChange()
{
    Combo1 = new ComboBox(this);
    Combo1->setObjectName(QStringLiteral("Combo1"));
    NewSettingCommand = new QPushButton(tr("Change now"), this);
    NewSettingCommand->setObjectName(QStringLiteral("NewSettingCommand"));
    NewSettingCommand->setAutoDefault(true);
    Command1 = new QPushButton(this);
    Command1->setObjectName(QStringLiteral("Command1"));
    Command1->setAccessibleName(tr("Return to previous resolution"));
    Command1->hide();

    auto *row = new QHBoxLayout;
    row->addWidget(addLabel(QStringLiteral("Label8"), tr("New resolution"), Combo1));
    row->addWidget(Combo1, 1);
    row->addWidget(NewSettingCommand);
    auto *column = new QVBoxLayout;
    column->addLayout(row);
    column->addWidget(
        addLabel(QStringLiteral("Label9"), tr("Note: Press Esc anytime to return to previous resolution")));
    return column;
}

QLabel *frmRes::addLabel(const QString &name, const QString &caption, QWidget *buddy)
{
    auto *label = new QLabel(caption, this);
    label->setObjectName(name);
    label->setBuddy(buddy);
    return label;
}

// A fact can be selected and copied, with the keyboard too.
QLabel *
frmRes::addFact(QGridLayout *grid, const QString &labelName, const QString &caption, const QString &name)
{
    QLabel *value = addLabel(name, QString());
    value->setTextFormat(Qt::PlainText);
    value->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    value->setFocusPolicy(Qt::StrongFocus);
    value->setWordWrap(true);
    value->setMinimumWidth(value->fontMetrics().averageCharWidth() * factColumns);
    const int row = grid->rowCount();
    grid->addWidget(addLabel(labelName, caption, value), row, 0, Qt::AlignTop);
    grid->addWidget(value, row, 1);
    return value;
}

void frmRes::Form_Load()
{
    Combo1->AddItem(QStringLiteral("640x480"));
    Combo1->AddItem(QStringLiteral("800x600"));
    Combo1->AddItem(QStringLiteral("1024x768"));
    ChangeRes1->setRead(true);
    desc->setText(ChangeRes1->DeviceDescription());
    driver->setText(ChangeRes1->DisplayDriver());
    id->setText(ChangeRes1->HardwareID());
    manufacturer->setText(ChangeRes1->Manufacturer());
    height1->setText(toText(ChangeRes1->Height()));
    width1->setText(toText(ChangeRes1->Width()));
    Combo1->setFocus();
}

// The message of a refused change asks two things for their text that do not exist, and so nobody has ever read it.
void frmRes::NewSettingCommand_Click()
{
    OldWidth = ChangeRes1->Width();
    OldHeight = ChangeRes1->Height();
    switch (Combo1->ListIndex()) {
    case 0:
        ChangeRes1->setWidth(640);
        ChangeRes1->setHeight(480);
        break;
    case 1:
        ChangeRes1->setWidth(800);
        ChangeRes1->setHeight(600);
        break;
    default:
        ChangeRes1->setWidth(1024);
        ChangeRes1->setHeight(768);
    }
    ChangeRes1->setApply(true);
    if (ChangeRes1->Failed())
        throw RuntimeError(error::ObjectRequired);
}

void frmRes::Command1_Click()
{
    ChangeRes1->setWidth(OldWidth);
    ChangeRes1->setHeight(OldHeight);
    ChangeRes1->setApply(true);
}

// A key held down is one wish.
void frmRes::keyPressEvent(QKeyEvent *event)
{
    if (!event->matches(QKeySequence::Cancel))
        QWidget::keyPressEvent(event);
    else if (!event->isAutoRepeat())
        Command1->click();
}

// The control goes with the window, not with its memory, which the toolkit frees some time later.
void frmRes::closeEvent(QCloseEvent *event)
{
    event->accept();
    ChangeRes1.reset();
}

} // namespace vandrel
