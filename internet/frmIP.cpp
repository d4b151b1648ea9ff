#include "internet/frmIP.h"

#include <utility>

#include <QCloseEvent>
#include <QGridLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>

#include "internet/FormParts.h"
#include "runtime/Events.h"
#include "runtime/Prompts.h"

namespace vandrel {

namespace {

// Room for an IPv6 address, the longest of the usual answers.
constexpr int valueColumns = 40;

} // namespace

frmIP::frmIP(std::unique_ptr<vandrel::MyIP> myIP) : MyIP1(std::move(myIP))
{
    setObjectName(QStringLiteral("frmIP"));
    setWindowTitle(tr("My IP"));
    setFont(QFont(QStringLiteral("MS Sans Serif")));
    arrange();
    connectControls();
}

frmIP::~frmIP() = default;

void frmIP::arrange()
{
    GETMyIP = new QPushButton(tr("Get My IP and my domain name"), this);
    GETMyIP->setObjectName(QStringLiteral("GETMyIP"));
    GETMyIP->setAutoDefault(true);
    MyIP = addValue(QStringLiteral("MyIP"));
    Label1 = captionOf(QStringLiteral("Label1"), tr("My IP:"), MyIP, this);
    MyDomain = addValue(QStringLiteral("MyDomain"));
    Label2 = captionOf(QStringLiteral("Label2"), tr("My Domain name:"), MyDomain, this);

    auto *grid = new QGridLayout(this);
    grid->addWidget(GETMyIP, 0, 0, 1, 2);
    grid->addWidget(Label1, 1, 0);
    grid->addWidget(MyIP, 1, 1);
    grid->addWidget(Label2, 2, 0);
    grid->addWidget(MyDomain, 2, 1);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(3, 1);
}

// The answers are there to be copied: they can be selected, with the keyboard too, and a name of any length wraps.
QLabel *frmIP::addValue(const QString &name)
{
    auto *label = new QLabel(this);
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setFocusPolicy(Qt::StrongFocus);
    label->setWordWrap(true);
    label->setMinimumWidth(label->fontMetrics().averageCharWidth() * valueColumns);
    return label;
}

void frmIP::connectControls()
{
    onEvent(GETMyIP, &QPushButton::clicked, this, &frmIP::GETMyIP_Click);
    const vandrel::MyIP *control = MyIP1.get();
    onEvent(control, &vandrel::MyIP::SocketError, this, &frmIP::MyIP1_SocketError);
    onEvent(control, &vandrel::MyIP::NoDomainName, this, &frmIP::MyIP1_NoDomainName);
    onEvent(control, &vandrel::MyIP::NoIPAddress, this, &frmIP::MyIP1_NoIPAddress);
}

// The query shows message boxes, and a box runs the event loop: the window may be gone behind the last of them.
void frmIP::GETMyIP_Click()
{
    const QPointer<frmIP> alive(this);
    MyIP1->setQuery(true);
    if (!alive || !MyIP1)
        return;
    MyIP->setText(MyIP1->IPAddress());
    MyDomain->setText(MyIP1->DomainName());
    growToAnswers();
}

// A name can take several lines; the window never shrinks under the user's hands.
void frmIP::growToAnswers()
{
    layout()->activate();
    const QSize least = layout()->totalMinimumSize().expandedTo(size());
    resize(least.expandedTo({0, layout()->totalHeightForWidth(least.width())}));
}

void frmIP::MyIP1_SocketError(bool failed)
{
    if (failed)
        MsgBox(tr("Windows Socket error !!"));
}

void frmIP::MyIP1_NoDomainName()
{
    MsgBox(tr("Domain name not available ....."));
}

void frmIP::MyIP1_NoIPAddress()
{
    MsgBox(tr("IP address not available...."));
}

// The control goes with the window, not with its memory, which the toolkit frees some time later.
void frmIP::closeEvent(QCloseEvent *event)
{
    event->accept();
    MyIP1.reset();
}

} // namespace vandrel
