#include "internet/frmPing.h"

#include <utility>

#include <QCloseEvent>
#include <QCoreApplication>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include "controls/ListBox.h"
#include "controls/TextBox.h"
#include "internet/FormParts.h"
#include "runtime/Events.h"
#include "runtime/Numbers.h"
#include "runtime/Yield.h"

namespace vandrel {

namespace {

// More than a request can carry, so that data that is too long is refused in words and not cut.
constexpr int longestField = 1'000'000;

// The window's first size, in characters and lines of its font.
constexpr int columns = 92;
constexpr int statusLines = 9;
constexpr int fewestStatusLines = 3;
constexpr int fewestListLines = 3;
// How long what has changed between two addresses may stay unpainted, in milliseconds: nobody sees that.
constexpr int longestUnpainted = 50;
// What the window manager may draw around the window.
constexpr int frameMargin = 40;

} // namespace

frmPing::frmPing(std::unique_ptr<Ping> ping) : Ping1(std::move(ping))
{
    setObjectName(QStringLiteral("frmPing"));
    setWindowTitle(tr("Ping"));
    setFont(QFont(QStringLiteral("MS Sans Serif")));
    arrange();
    setTabOrders();
    connectHandlers();
    fitToScreen();
}

frmPing::~frmPing() = default;

void frmPing::arrange()
{
    auto *halves = new QHBoxLayout;
    halves->addLayout(arrangePing(), 3);
    halves->addSpacing(fontMetrics().averageCharWidth() * 2);
    halves->addLayout(arrangeScan(), 2);
    auto *column = new QVBoxLayout(this);
    column->addLayout(halves, 1);
    column->addLayout(arrangeStatus(), 1);
    m_pingCommands.emplace(QList{PingCommand});
    m_scanCommands.emplace(QList{ScanCommand, PingCommand});
}

QVBoxLayout *frmPing::arrangePing()
{
    HostIP = addBox(QStringLiteral("HostIP"));
    PingCommand = addButton(QStringLiteral("PingCommand"), tr("Pinging Host"));
    StopCommand = addButton(QStringLiteral("StopCommand"), tr("Stop"));

    auto *host = new QHBoxLayout;
    host->addWidget(captionOf(QStringLiteral("Label1"), tr(" Host IP Address :"), HostIP, this));
    host->addWidget(HostIP, 1);
    auto *commands = new QHBoxLayout;
    commands->addStretch(1);
    commands->addWidget(PingCommand);
    commands->addWidget(StopCommand);

    auto *column = new QVBoxLayout;
    column->addLayout(host);
    column->addLayout(commands);
    column->addWidget(addHeading(QStringLiteral("Label6"), tr("   Ping   Packet   Parameter")));
    column->addLayout(arrangeParameters());
    column->addWidget(captionOf(QStringLiteral("Label8"),
                                tr(" Data Size, Echo Data, Round Trip Time are READ ONLY"), nullptr, this));
    column->addStretch(1);
    return column;
}

QGridLayout *frmPing::arrangeParameters()
{
    PingingDataText = addBox(QStringLiteral("PingingDataText"));
    TimeOutText = addBox(QStringLiteral("TimeOutText"));
    DataSizeText = addDisplay(QStringLiteral("DataSizeText"));
    EchoDataText = addDisplay(QStringLiteral("EchoDataText"));
    RoundTripTimeText = addDisplay(QStringLiteral("RoundTripTimeText"));

    const std::pair<QLabel *, QLineEdit *> rows[] = {
        {captionOf(QStringLiteral("Label4"), tr(" Pinging  Data   "), PingingDataText, this),
         PingingDataText},
        {captionOf(QStringLiteral("Label5"), tr(" Time  Out  "), TimeOutText, this), TimeOutText},
        {captionOf(QStringLiteral("Label3"), tr(" Data Size"), DataSizeText, this), DataSizeText},
        {captionOf(QStringLiteral("Label7"), tr(" Echo Data"), EchoDataText, this), EchoDataText},
        {captionOf(QStringLiteral("Label2"), tr(" Round Trip Time"), RoundTripTimeText, this),
         RoundTripTimeText},
    };
    auto *grid = new QGridLayout;
    for (const auto &[label, box] : rows) {
        const int row = grid->rowCount();
        grid->addWidget(label, row, 0);
        grid->addWidget(box, row, 1);
    }
    grid->setColumnStretch(1, 1);
    return grid;
}

QVBoxLayout *frmPing::arrangeScan()
{
    IP = addBox(QStringLiteral("IP"), QStringLiteral("202.159.32."));
    IP->setAccessibleName(tr("Address prefix"));
    ScanCommand = addButton(QStringLiteral("ScanCommand"), tr("Scan"));
    LastIPScan = addDisplay(QStringLiteral("LastIPScan"));
    LastIPScan->setAccessibleName(tr("Last address tried"));
    UserList = new ListBox(this);
    UserList->setObjectName(QStringLiteral("UserList"));
    UserList->setAccessibleName(tr("Active IPs"));

    auto *commands = new QHBoxLayout;
    commands->addWidget(LastIPScan, 1);
    commands->addWidget(ScanCommand);
    auto *column = new QVBoxLayout;
    column->addWidget(addHeading(QStringLiteral("Label13"), tr(" Scanning ")));
    column->addWidget(IP);
    column->addLayout(arrangeRange());
    column->addLayout(commands);
    column->addWidget(captionOf(QStringLiteral("Label12"), tr("Active IPs"), UserList, this));
    column->addWidget(UserList, 1);
    return column;
}

QGridLayout *frmPing::arrangeRange()
{
    IPfrom = addBox(QStringLiteral("IPfrom"));
    IPto = addBox(QStringLiteral("IPto"), QStringLiteral("159"));
    Text1 = addBox(QStringLiteral("Text1"), IP->text());
    Text2 = addBox(QStringLiteral("Text2"), IP->text());
    for (QLineEdit *note : {Text1, Text2})
        note->setFocusPolicy(Qt::ClickFocus);
    Text1->setAccessibleName(tr("From Address, network"));
    Text2->setAccessibleName(tr("To Address, network"));

    auto *grid = new QGridLayout;
    grid->addWidget(captionOf(QStringLiteral("Label10"), tr("From  Address:"), IPfrom, this), 0, 0);
    grid->addWidget(Text1, 0, 1);
    grid->addWidget(IPfrom, 0, 2);
    grid->addWidget(captionOf(QStringLiteral("Label11"), tr("To  Address:"), IPto, this), 1, 0);
    grid->addWidget(Text2, 1, 1);
    grid->addWidget(IPto, 1, 2);
    grid->setColumnStretch(1, 2);
    grid->setColumnStretch(2, 1);
    return grid;
}

QVBoxLayout *frmPing::arrangeStatus()
{
    StatusText = new TextBox(this);
    StatusText->setObjectName(QStringLiteral("StatusText"));
    StatusText->setReadOnly(true);
    StatusText->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    StatusText->setUndoRedoEnabled(false);
    auto *column = new QVBoxLayout;
    column->addWidget(captionOf(QStringLiteral("Label9"), tr("  Pinging Status "), StatusText, this));
    column->addWidget(StatusText, 1);
    return column;
}

QLabel *frmPing::addHeading(const QString &name, const QString &caption)
{
    QLabel *label = captionOf(name, caption, nullptr, this);
    QFont bold = label->font();
    bold.setBold(true);
    label->setFont(bold);
    return label;
}

QLineEdit *frmPing::addBox(const QString &name, const QString &text)
{
    auto *box = new QLineEdit(text, this);
    box->setObjectName(name);
    box->setMaxLength(longestField);
    return box;
}

// A box that only shows; its text can be selected and copied.
QLineEdit *frmPing::addDisplay(const QString &name)
{
    QLineEdit *box = addBox(name);
    box->setReadOnly(true);
    return box;
}

// Enter presses the button that has the focus; no other button answers to it.
QPushButton *frmPing::addButton(const QString &name, const QString &caption)
{
    auto *button = new QPushButton(caption, this);
    button->setObjectName(name);
    button->setAutoDefault(true);
    return button;
}

void frmPing::connectHandlers()
{
    onEvent(HostIP, &QLineEdit::textChanged, this, [this] { HostIP_Change(); });
    onEvent(PingingDataText, &QLineEdit::textChanged, this, [this] { PingingDataText_Change(); });
    onEvent(TimeOutText, &QLineEdit::textChanged, this, [this] { TimeOutText_Change(); });
    onEvent(PingCommand, &QPushButton::clicked, this, &frmPing::PingCommand_Click);
    onEvent(StopCommand, &QPushButton::clicked, this, &frmPing::StopCommand_Click);
    onEvent(ScanCommand, &QPushButton::clicked, this, &frmPing::ScanCommand_Click);
}

void frmPing::setTabOrders()
{
    const QList<QWidget *> order{HostIP,      PingCommand,  StopCommand,  PingingDataText,
                                 TimeOutText, DataSizeText, EchoDataText, RoundTripTimeText,
                                 IP,          IPfrom,       IPto,         LastIPScan,
                                 ScanCommand, UserList,     StatusText};
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order[i - 1], order[i]);
    HostIP->setFocus();
}

void frmPing::fitToScreen()
{
    ensurePolished();
    const int line = fontMetrics().lineSpacing();
    StatusText->setMinimumHeight(line * fewestStatusLines);
    UserList->setMinimumHeight(line * fewestListLines);
    const int more = line * (statusLines - fewestStatusLines);
    const QSize wanted(fontMetrics().averageCharWidth() * columns, layout()->minimumSize().height() + more);
    resize(wanted.boundedTo(screen()->availableSize() - QSize(frameMargin, frameMargin)));
}

void frmPing::HostIP_Change()
{
    Ping1->setHost(HostIP->text());
}

void frmPing::PingingDataText_Change()
{
    Ping1->setDataToSend(PingingDataText->text());
}

void frmPing::TimeOutText_Change()
{
    Ping1->setTimeOut(CInt(TimeOutText->text()));
}

// After a failure the button stays disabled until "Stop".
void frmPing::PingCommand_Click()
{
    m_pingCommands->setEnabled(false);
    Ping1->setHost(RTrim(HostIP->text()));
    if (!ping())
        return;
    if (Ping1->ErrorFlag()) {
        Ping1->setPing(false);
        return;
    }
    StatusText->setText(Ping1->StatusText());
    showResults();
    m_pingCommands->setEnabled(true);
}

void frmPing::StopCommand_Click()
{
    Ping1->setPing(false);
    m_scanCommands->setEnabled(true);
}

void frmPing::ScanCommand_Click()
{
    m_scanCommands->setEnabled(false);
    StatusText->setText(QString());
    const Integer last = CInt(Val(IPto->text()));
    for (Integer i = CInt(Val(IPfrom->text())); i <= last; ++i) {
        if (!mayGoOn() || !scan(i))
            return;
    }
    m_scanCommands->setEnabled(true);
}

// Sends one request and waits. False when the window was closed meanwhile, which can have happened to any window once
// events have run.
bool frmPing::ping()
{
    const QPointer<frmPing> alive(this);
    Ping1->setPing(true);
    return alive && Ping1;
}

// Lets the user in between two addresses: a button that is enabled again, or a closed window, ends the scan.
bool frmPing::mayGoOn()
{
    const QPointer<frmPing> alive(this);
    m_isBetweenAddresses = true;
    yieldToEvents();
    if (!alive)
        return false;
    m_isBetweenAddresses = false;
    if (std::exchange(m_owesPainting, false))
        QCoreApplication::postEvent(this, new QEvent(QEvent::UpdateRequest), Qt::LowEventPriority);
    return Ping1 && !ScanCommand->isEnabled();
}

// Painting takes longer than many a reply. Between two addresses it is put off to the wait for the next reply, which
// goes on meanwhile, unless the window has not been painted for some time.
bool frmPing::event(QEvent *event)
{
    if (event->type() == QEvent::UpdateRequest) {
        if (m_isBetweenAddresses && m_sincePainting.isValid()
            && !m_sincePainting.hasExpired(longestUnpainted)) {
            m_owesPainting = true;
            return true;
        }
        m_sincePainting.start();
    }
    return QWidget::event(event);
}

// Tries one address; the prefix is read anew wherever it is used.
bool frmPing::scan(Integer i)
{
    Ping1->setHost(IP->text() + Str(i));
    Ping1->setDataToSend(Str(i));
    PingingDataText->setText(Str(i));
    LastIPScan->setText(Str(i));
    if (!ping())
        return false;
    logLine(tr("Pinging to : ") + IP->text() + Str(i));
    logLine(Ping1->StatusText());
    if (Ping1->ErrorFlag()) {
        logLine(Ping1->StatusText());
        Ping1->setPing(false);
        Ping1->setHost(IP->text() + Str(Integer(i + 1)));
    } else if (Ping1->EchoData() == Ping1->DataToSend()) {
        UserList->AddItem(IP->text() + Str(i));
        logLine(Ping1->StatusText());
        showResults();
    }
    return true;
}

void frmPing::logLine(const QString &line)
{
    StatusText->append(line + QStringLiteral("\r\n"));
}

void frmPing::showResults()
{
    DataSizeText->setText(Str(Ping1->DataSize()));
    EchoDataText->setText(Ping1->EchoData());
    RoundTripTimeText->setText(Str(Ping1->RoundTripTime()));
}

// The control goes with the window, not with its memory, which the toolkit frees some time later.
void frmPing::closeEvent(QCloseEvent *event)
{
    event->accept();
    Ping1.reset();
}

} // namespace vandrel
