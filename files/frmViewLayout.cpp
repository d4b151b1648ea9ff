#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include "controls/CommandButton.h"
#include "controls/DirListBox.h"
#include "controls/DriveListBox.h"
#include "controls/FileListBox.h"
#include "controls/ImageBox.h"
#include "controls/UpDown.h"
#include "files/frmView.h"
#include "runtime/Events.h"

namespace vandrel {

namespace {

// The size of the window where the screen has room for it, in characters and lines of its font.
constexpr int windowColumns = 140;
constexpr int windowLines = 40;
constexpr int frameMargin = 40;
constexpr int intervalColumns = 8;

} // namespace

frmView::frmView(ViewerControls controls) : QWidget(nullptr, Qt::Window), m_controls(std::move(controls))
{
    setObjectName(QStringLiteral("frmView"));
    setFont(QFont(QStringLiteral("Arial")));
    c1[0] = m_controls.decoders->make();
    arrange();
    setTabOrders();
    connectAll();
    Form_Load();
}

frmView::~frmView() = default;

void frmView::arrange()
{
    Image1 = new ImageBox(this);
    Image1->setObjectName(QStringLiteral("Image1"));
    Image1->setAccessibleName(tr("Slide"));
    Image1->setFrameShape(QFrame::StyledPanel);
    Image1->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);

    auto *controls = new QVBoxLayout;
    controls->addLayout(arrangeLists(), 1);
    controls->addLayout(arrangeButtons());
    auto *row = new QHBoxLayout(this);
    row->addLayout(controls, 2);
    row->addWidget(Image1, 3);

    const QSize wanted(fontMetrics().averageCharWidth() * windowColumns,
                       fontMetrics().lineSpacing() * windowLines);
    resize(wanted.boundedTo(screen()->availableSize() - QSize(frameMargin, frameMargin)));
}

QLayout *frmView::arrangeLists()
{
    Drive1 = new DriveListBox(m_controls.folders, this);
    Drive1->setObjectName(QStringLiteral("Drive1"));
    Dir1 = new DirListBox(m_controls.folders, this);
    Dir1->setObjectName(QStringLiteral("Dir1"));
    File1 = new FileListBox(m_controls.folders, this);
    File1->setObjectName(QStringLiteral("File1"));
    File1->setMultiSelect(true);
    File1->setPattern(QStringLiteral("*.bmp;*.pcx;*.dib;*.wmf;*.wpg;*.jpg;*.tif"));
    auto *column = new QVBoxLayout;
    column->addWidget(Drive1);
    column->addWidget(Dir1, 2);
    column->addWidget(File1, 3);
    return column;
}

QLayout *frmView::arrangeButtons()
{
    Text1 = new QLineEdit(QStringLiteral("2"), this);
    Text1->setObjectName(QStringLiteral("Text1"));
    Text1->setAccessibleName(tr("Slide interval in seconds"));
    Text1->setToolTip(Text1->accessibleName());
    Text1->setFixedWidth(fontMetrics().averageCharWidth() * intervalColumns);
    UpDown1 = new UpDown(this);
    UpDown1->setObjectName(QStringLiteral("UpDown1"));
    UpDown1->setAccessibleName(tr("Slide interval arrows"));
    Command2.add(1, new CommandButton(tr("Select all"), this));
    Command1.add(0, new CommandButton(tr("Slide Show"), this));
    Command1.add(1, new CommandButton(tr("Thumbnails"), this));

    auto *interval = new QHBoxLayout;
    interval->setSpacing(0);
    interval->addWidget(Text1);
    interval->addWidget(UpDown1);
    auto *row = new QHBoxLayout;
    row->addWidget(Command2[1], 1);
    row->addWidget(Command1[1], 1);
    row->addWidget(Command1[0], 1);
    row->addLayout(interval);
    return row;
}

void frmView::setTabOrders()
{
    const QList<QWidget *> order{Drive1, Dir1, File1, Command2[1], Command1[1], Command1[0], Text1, UpDown1};
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order[i - 1], order[i]);
    Dir1->setFocus();
}

void frmView::connectAll()
{
    onEvent(Drive1, &DriveListBox::Change, this, &frmView::Drive1_Change);
    onEvent(Dir1, &DirListBox::Change, this, &frmView::Dir1_Change);
    onEvent(Text1, &QLineEdit::textChanged, this, &frmView::Text1_Change);
    onEvent(UpDown1, &UpDown::UpClick, this, &frmView::UpDown1_UpClick);
    onEvent(UpDown1, &UpDown::DownClick, this, &frmView::UpDown1_DownClick);
    onEvent(&Timer1, &Timer::Elapsed, this, &frmView::Timer1_Timer);
    Command1.onEvent(&QPushButton::clicked, this, &frmView::Command1_Click);
    Command2.onEvent(&QPushButton::clicked, this, &frmView::Command2_Click);
}

} // namespace vandrel
