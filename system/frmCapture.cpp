#include "system/frmCapture.h"

#include <utility>

#include <QCheckBox>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

#include "runtime/Events.h"
#include "runtime/Numbers.h"
#include "runtime/Prompts.h"

namespace vandrel {

namespace {

constexpr int captureNow = 0;
constexpr int captureLater = 1;

// What the file dialog is asked to show; it says the same afterwards when nothing was chosen.
constexpr auto pattern = u"*.bmp";

// The boxes' least widths, in average characters.
constexpr int fileColumns = 44;
constexpr int delayColumns = 8;

} // namespace

frmCapture::frmCapture(std::unique_ptr<ScreenCapture> capture, std::unique_ptr<CommonDialog> dialog)
    : ScreenCapture1(std::move(capture)), CommonDialog1(std::move(dialog))
{
    setObjectName(QStringLiteral("frmCapture"));
    setWindowTitle(tr("Screen Capture"));
    setFont(QFont(QStringLiteral("MS Sans Serif")));
    arrange();
    load();
    connectHandlers();
}

frmCapture::~frmCapture() = default;

void frmCapture::arrange()
{
    auto *column = new QVBoxLayout(this);
    column->addLayout(arrangeFile());
    column->addLayout(arrangeDelay());
    column->addLayout(arrangeCommands());
    column->addStretch(1);
}

QHBoxLayout *frmCapture::arrangeFile()
{
    FileNameText = addBox(QStringLiteral("FileNameText"), QStringLiteral("c:\\ScreenCaptured.bmp"));
    FileNameText->setMinimumWidth(FileNameText->fontMetrics().averageCharWidth() * fileColumns);
    Command1 = prepared(new QPushButton(tr("Browse"), this));
    Command1->setObjectName(QStringLiteral("Command1"));
    auto *row = new QHBoxLayout;
    row->addWidget(addLabel(QStringLiteral("Label3"), tr("Save Picture to :"), FileNameText));
    row->addWidget(FileNameText, 1);
    row->addWidget(Command1);
    return row;
}

QHBoxLayout *frmCapture::arrangeDelay()
{
    TimeDelayText = addBox(QStringLiteral("TimeDelayText"), QStringLiteral("1"));
    TimeDelayText->setFixedWidth(TimeDelayText->fontMetrics().averageCharWidth() * delayColumns);
    Check1 = new QCheckBox(tr("Show screen preview"), this);
    Check1->setObjectName(QStringLiteral("Check1"));
    auto *row = new QHBoxLayout;
    row->addWidget(addLabel(QStringLiteral("Label1"), tr(" Capture after :"), TimeDelayText));
    row->addWidget(TimeDelayText);
    row->addWidget(addLabel(QStringLiteral("Label2"), tr("Sec.")));
    row->addStretch(1);
    row->addWidget(Check1);
    return row;
}

QHBoxLayout *frmCapture::arrangeCommands()
{
    auto *row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(prepared(com.add(captureNow, new QPushButton(tr("Capture now"), this))));
    row->addWidget(prepared(com.add(captureLater, new QPushButton(tr("Capture later"), this))));
    return row;
}

QLabel *frmCapture::addLabel(const QString &name, const QString &caption, QWidget *buddy)
{
    auto *label = new QLabel(caption, this);
    label->setObjectName(name);
    label->setBuddy(buddy);
    return label;
}

QLineEdit *frmCapture::addBox(const QString &name, const QString &text)
{
    auto *box = new QLineEdit(text, this);
    box->setObjectName(name);
    return box;
}

// Enter presses the button that has the focus.
QPushButton *frmCapture::prepared(QPushButton *button)
{
    button->setAutoDefault(true);
    return button;
}

void frmCapture::load()
{
    Check1->setChecked(true);
    ScreenCapture1->setPreview(true);
    ScreenCapture1->setDelay(Val(TimeDelayText->text()));
    ScreenCapture1->setFile(FileNameText->text());
    CommonDialog1->Filter = tr("Bitmaps (*.bmp)|*.bmp");
    CommonDialog1->FileName = QString::fromUtf16(pattern);
}

void frmCapture::connectHandlers()
{
    onEvent(Check1, &QCheckBox::toggled, this, [this] { Check1_Click(); });
    onEvent(TimeDelayText, &QLineEdit::textChanged, this, [this] { TimeDelayText_Change(); });
    onEvent(FileNameText, &QLineEdit::textChanged, this, [this] { FileNameText_Change(); });
    onEvent(Command1, &QPushButton::clicked, this, &frmCapture::Command1_Click);
    com.onEvent(&QPushButton::clicked, this, &frmCapture::com_Click);
}

void frmCapture::Check1_Click()
{
    ScreenCapture1->setPreview(Check1->isChecked());
}

void frmCapture::TimeDelayText_Change()
{
    ScreenCapture1->setDelay(Val(TimeDelayText->text()));
}

void frmCapture::FileNameText_Change()
{
    ScreenCapture1->setFile(FileNameText->text());
}

// The window may be gone once the dialog is closed.
void frmCapture::Command1_Click()
{
    const QPointer<frmCapture> alive(this);
    CommonDialog1->ShowSave(this);
    if (!alive || !CommonDialog1 || CommonDialog1->FileName == pattern)
        return;
    FileNameText->setText(CommonDialog1->FileName);
    CommonDialog1->FileName = QString::fromUtf16(pattern);
}

void frmCapture::com_Click(int index)
{
    ScreenCapture1->setDelay(Val(TimeDelayText->text()));
    if (index == captureNow)
        ScreenCapture1->setDelay(0);
    // A text of nothing but blanks has only trailing ones.
    if (RTrim(FileNameText->text()).isEmpty()) {
        MsgBox(tr("File name can not be blank !!"));
        return;
    }
    ScreenCapture1->setCapture(true);
}

// The controls go with the window, not with its memory, which the toolkit frees some time later.
void frmCapture::closeEvent(QCloseEvent *event)
{
    event->accept();
    ScreenCapture1.reset();
    CommonDialog1.reset();
}

} // namespace vandrel
