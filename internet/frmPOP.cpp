#include "internet/frmPOP.h"

#include <utility>

#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <QtMath>

#include "controls/OneLine.h"
#include "controls/RichTextBox.h"
#include "controls/TextBox.h"
#include "internet/FormParts.h"
#include "runtime/Events.h"
#include "runtime/Numbers.h"
#include "runtime/Prompts.h"

namespace vandrel {

namespace {

constexpr const char *captionFamily = "MS Sans Serif";
constexpr const char *textFamily = "Arial";

// The size of the two text areas, in characters and lines of their own font.
constexpr int messageColumns = 84;
constexpr int messageLines = 22;
constexpr int fewestMessageLines = 6;
constexpr int statusLines = 4;
// What the window manager may draw around the window.
constexpr int frameMargin = 40;

QFont family(const char *name)
{
    return QFont(QString::fromLatin1(name));
}

int heightOf(int lines, const QWidget &box)
{
    return box.fontMetrics().lineSpacing() * lines;
}

} // namespace

frmPOP::frmPOP(std::unique_ptr<POPMail> popMail, std::shared_ptr<const DocumentFiles> files)
    : QWidget(nullptr,
              Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
                  | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint),
      POPMail1(std::move(popMail))
{
    setObjectName(QStringLiteral("frmPOP"));
    setWindowTitle(tr("Read POP mail"));
    setFont(family(captionFamily));
    arrange(std::move(files));
    setTabOrders();
    connectButtons();
    connectControl();
    Form_Load();
    fitToScreen();
}

frmPOP::~frmPOP() = default;

void frmPOP::arrange(std::shared_ptr<const DocumentFiles> files)
{
    auto *column = new QVBoxLayout(this);
    column->addLayout(arrangeLogin());
    column->addLayout(arrangeMailbox());
    column->addLayout(arrangeCommands());
    m_mailButtons.emplace(
        QList{First, PrevMail, NextMail, Last, GetMailCommand, DeleteMailCommand, ListMailCommand});

    MailContents = new RichTextBox(std::move(files), this);
    MailContents->setObjectName(QStringLiteral("MailContents"));
    MailContents->setAccessibleName(tr("Message text"));
    MailContents->setFont(family(textFamily));
    MailContents->setReadOnly(true);
    MailContents->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    MailContents->setTabChangesFocus(true);
    column->addWidget(MailContents, 1);

    POPConnectionStatus = new TextBox(this);
    POPConnectionStatus->setObjectName(QStringLiteral("POPConnectionStatus"));
    POPConnectionStatus->setFont(family(textFamily));
    POPConnectionStatus->setReadOnly(true);
    POPConnectionStatus->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    POPConnectionStatus->setUndoRedoEnabled(false);
    column->addWidget(
        captionOf(QStringLiteral("Label9"), tr("Connection status"), POPConnectionStatus, this));
    column->addWidget(POPConnectionStatus);
}

QGridLayout *frmPOP::arrangeLogin()
{
    constexpr int boxWidth = 30;
    ServerName = addBox(QStringLiteral("ServerName"), boxWidth);
    Username = addBox(QStringLiteral("Username"), boxWidth);
    Password = addBox(QStringLiteral("Password"), boxWidth);
    ServerName->setInputMethodHints(Qt::ImhNoAutoUppercase | Qt::ImhNoPredictiveText
                                    | Qt::ImhUrlCharactersOnly);
    Username->setInputMethodHints(Qt::ImhNoAutoUppercase | Qt::ImhNoPredictiveText);
    Password->setInputMethodHints(Qt::ImhNoAutoUppercase | Qt::ImhNoPredictiveText | Qt::ImhSensitiveData);
    Login = addButton(QStringLiteral("Login"), tr("Connect "));
    Disconnect = addButton(QStringLiteral("Disconnect"), tr("Disconnect"));

    auto *grid = new QGridLayout;
    grid->addWidget(captionOf(QStringLiteral("Label1"), tr("POP Server Name"), ServerName, this), 0, 0);
    grid->addWidget(ServerName, 0, 1);
    grid->addWidget(captionOf(QStringLiteral("Label2"), tr("Username"), Username, this), 1, 0);
    grid->addWidget(Username, 1, 1);
    grid->addWidget(captionOf(QStringLiteral("Label3"), tr("Password"), Password, this), 2, 0);
    grid->addWidget(Password, 2, 1);
    grid->addWidget(Login, 0, 2);
    grid->addWidget(Disconnect, 1, 2);
    grid->setColumnStretch(1, 1);
    return grid;
}

QHBoxLayout *frmPOP::arrangeMailbox()
{
    constexpr int countWidth = 7;
    constexpr int sizeWidth = 12;
    TotalAvailableMail = addDisplay(QStringLiteral("TotalAvailableMail"), countWidth);
    TotalMailSizeOnPOPServer = addDisplay(QStringLiteral("TotalMailSizeOnPOPServer"), sizeWidth);

    auto *row = new QHBoxLayout;
    row->addWidget(captionOf(QStringLiteral("Label4"), tr("You have"), TotalAvailableMail, this));
    row->addWidget(TotalAvailableMail);
    row->addWidget(captionOf(QStringLiteral("Label7"), tr("mail(s)"), nullptr, this));
    row->addSpacing(fontMetrics().averageCharWidth() * 2);
    row->addWidget(TotalMailSizeOnPOPServer);
    row->addWidget(captionOf(QStringLiteral("Label5"), tr("Octets"), TotalMailSizeOnPOPServer, this));
    row->addStretch(1);
    return row;
}

QHBoxLayout *frmPOP::arrangeCommands()
{
    constexpr int indexWidth = 7;
    MailIndex = addBox(QStringLiteral("MailIndex"), indexWidth);
    MailIndex->setFixedWidth(MailIndex->minimumWidth());
    First = addButton(QStringLiteral("First"), QStringLiteral("<<"), tr("First mail"));
    PrevMail = addButton(QStringLiteral("PrevMail"), QStringLiteral("<"), tr("Previous mail"));
    NextMail = addButton(QStringLiteral("NextMail"), QStringLiteral(">"), tr("Next mail"));
    Last = addButton(QStringLiteral("Last"), QStringLiteral(">>"), tr("Last mail"));
    GetMailCommand = addButton(QStringLiteral("GetMailCommand"), tr("Get  Mail"));
    DeleteMailCommand = addButton(QStringLiteral("DeleteMailCommand"), tr("Delete Mail "));
    ListMailCommand = addButton(QStringLiteral("ListMailCommand"), tr("Mail list "));

    auto *row = new QHBoxLayout;
    row->addWidget(captionOf(QStringLiteral("Label8"), tr("Mail No :"), MailIndex, this));
    row->addWidget(MailIndex);
    const int arrowWidth = fontMetrics().horizontalAdvance(QStringLiteral("<<<<<<"));
    for (QPushButton *button : {First, PrevMail, NextMail, Last}) {
        button->setFixedWidth(arrowWidth);
        row->addWidget(button);
    }
    row->addStretch(1);
    for (QPushButton *button : {GetMailCommand, DeleteMailCommand, ListMailCommand})
        row->addWidget(button);
    return row;
}

QLineEdit *frmPOP::addBox(const QString &name, int characters)
{
    auto *box = new QLineEdit(this);
    box->setObjectName(name);
    box->setMinimumWidth(box->fontMetrics().averageCharWidth() * characters);
    keepOnOneLine(box, QStringLiteral(" "));
    return box;
}

// A box that only shows; its text can be selected and copied.
QLineEdit *frmPOP::addDisplay(const QString &name, int characters)
{
    QLineEdit *box = addBox(name, characters);
    box->setReadOnly(true);
    box->setAlignment(Qt::AlignRight);
    box->setFixedWidth(box->minimumWidth());
    return box;
}

// Enter presses the button that has the focus; no other button answers to it.
QPushButton *frmPOP::addButton(const QString &name, const QString &caption, const QString &tip)
{
    auto *button = new QPushButton(caption, this);
    button->setObjectName(name);
    button->setAutoDefault(true);
    button->setToolTip(tip);
    return button;
}

void frmPOP::setTabOrders()
{
    const QList<QWidget *> order{ServerName,
                                 Username,
                                 Password,
                                 Login,
                                 Disconnect,
                                 TotalAvailableMail,
                                 TotalMailSizeOnPOPServer,
                                 MailIndex,
                                 First,
                                 PrevMail,
                                 NextMail,
                                 Last,
                                 GetMailCommand,
                                 DeleteMailCommand,
                                 ListMailCommand,
                                 MailContents,
                                 POPConnectionStatus};
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order[i - 1], order[i]);
    ServerName->setFocus();
}

void frmPOP::connectButtons()
{
    const std::pair<QPushButton *, void (frmPOP::*)()> handlers[] = {
        {Login, &frmPOP::Login_Click},
        {Disconnect, &frmPOP::Disconnect_Click},
        {First, &frmPOP::First_Click},
        {PrevMail, &frmPOP::PrevMail_Click},
        {NextMail, &frmPOP::NextMail_Click},
        {Last, &frmPOP::Last_Click},
        {GetMailCommand, &frmPOP::GetMailCommand_Click},
        {DeleteMailCommand, &frmPOP::DeleteMailCommand_Click},
        {ListMailCommand, &frmPOP::ListMailCommand_Click},
    };
    for (const auto &[button, handler] : handlers)
        onEvent(button, &QPushButton::clicked, this, handler);
}

void frmPOP::connectControl()
{
    const POPMail *control = POPMail1.get();
    onEvent(control, &POPMail::HasMail, this, &frmPOP::POPMail1_HasMail);
    onEvent(control, &POPMail::NoMail, this, &frmPOP::POPMail1_NoMail);
    onEvent(control, &POPMail::MailDownloaded, this, &frmPOP::POPMail1_MailDownloaded);
    onEvent(control, &POPMail::Disconnected, this, &frmPOP::POPMail1_Disconnected);
    onEvent(control, &POPMail::LoggedIn, this, &frmPOP::POPMail1_LoggedIn);
    onEvent(control, &POPMail::MailboxStat, this, &frmPOP::POPMail1_MailboxStat);
    onEvent(control, &POPMail::MailText, this, &frmPOP::POPMail1_MailText);
    onEvent(control, &POPMail::StatusText, this, &frmPOP::POPMail1_StatusText);
    onEvent(control, &POPMail::Error, this, &frmPOP::POPMail1_Error);
    onEvent(control, &POPMail::MailList, this, &frmPOP::POPMail1_MailList);
    onEvent(control, &POPMail::MailDeleted, this, &frmPOP::POPMail1_MailDeleted);
    onEvent(control, &POPMail::Busy, this, &frmPOP::POPMail1_Busy);
}

// The window has one size, which suits its fonts; on a small screen the message gives way.
void frmPOP::fitToScreen()
{
    ensurePolished();
    const double surround
        = POPConnectionStatus->frameWidth() + POPConnectionStatus->document()->documentMargin();
    POPConnectionStatus->setFixedHeight(heightOf(statusLines, *POPConnectionStatus) + qCeil(2 * surround));
    MailContents->setMinimumHeight(heightOf(fewestMessageLines, *MailContents));
    QSize wanted = layout()->sizeHint();
    wanted.rheight() += heightOf(messageLines, *MailContents) - MailContents->sizeHint().height();
    const int width = MailContents->fontMetrics().averageCharWidth() * messageColumns;
    const QSize available = screen()->availableSize() - QSize(frameMargin, frameMargin);
    wanted = wanted.expandedTo({width, 0}).boundedTo(available).expandedTo(layout()->minimumSize());
    setFixedSize(wanted);
    move(screen()->availableGeometry().center() - rect().center());
}

void frmPOP::setMailButtonsEnabled(bool enabled)
{
    m_mailButtons->setEnabled(enabled);
}

void frmPOP::Form_Load()
{
    setMailButtonsEnabled(false);
    MailPresent = false;
    CurrentMail = 1;
}

void frmPOP::Login_Click()
{
    POPMail1->setPOPServer(ServerName->text());
    POPMail1->setPOPUser(Username->text());
    POPMail1->setPOPPassword(Password->text());
    POPMail1->setConnectNow(true);
    // The toolkit would move the focus on to "Disconnect", where a second press of the key would end what the first
    // has begun.
    if (Login->hasFocus())
        MailIndex->setFocus();
    Login->setEnabled(false);
}

void frmPOP::Disconnect_Click()
{
    CurrentMail = 0;
    Login->setEnabled(true);
    POPMail1->setDisconnectNow(true);
}

void frmPOP::First_Click()
{
    MailContents->setText(QString());
    CurrentMail = 1;
    POPMail1->setMailNumber(CurrentMail);
    POPMail1->setRetrieveNow(true);
    MailIndex->setText(toText(CurrentMail));
}

void frmPOP::Last_Click()
{
    MailContents->setText(QString());
    POPMail1->setMailNumber(POPMail1->MailCount());
    CurrentMail = POPMail1->MailCount();
    MailIndex->setText(toText(CurrentMail));
    POPMail1->setRetrieveNow(true);
}

void frmPOP::NextMail_Click()
{
    MailContents->setText(QString());
    ++CurrentMail;
    if (CurrentMail > POPMail1->MailCount()) {
        CurrentMail = POPMail1->MailCount();
        MsgBox(tr("This is last mail in your mailbox..."), Buttons::OkOnly, BoxIcon::None, tr("Last mail"));
    }
    POPMail1->setMailNumber(CurrentMail);
    MailIndex->setText(toText(CurrentMail));
    POPMail1->setRetrieveNow(true);
}

void frmPOP::PrevMail_Click()
{
    MailContents->setText(QString());
    --CurrentMail;
    if (CurrentMail < 1) {
        CurrentMail = 1;
        MsgBox(tr("This is first mail in your mailbox..."), Buttons::OkOnly, BoxIcon::None, tr("First mail"));
    }
    POPMail1->setMailNumber(CurrentMail);
    MailIndex->setText(toText(CurrentMail));
    POPMail1->setRetrieveNow(true);
}

// CurrentMail stays: "<" and ">" go on from the message that they last reached, not from the typed number.
void frmPOP::GetMailCommand_Click()
{
    MailContents->setText(QString());
    const std::int16_t MailCount = POPMail1->MailCount();
    const double number = Val(MailIndex->text());
    if (number > MailCount || number <= 0) {
        MsgBox(tr("Mail number : %1 not available in your mailbox...").arg(MailIndex->text()),
               Buttons::OkOnly, BoxIcon::None, tr("Mail not avilable"));
        return;
    }
    POPMail1->setMailNumber(CInt(number));
    POPMail1->setRetrieveNow(true);
}

void frmPOP::DeleteMailCommand_Click()
{
    POPMail1->setDeleteNow(true);
}

void frmPOP::ListMailCommand_Click()
{
    POPMail1->setListNow(true);
}

void frmPOP::POPMail1_HasMail(bool hasMail)
{
    if (hasMail)
        MsgBox(tr("You have mail(s) !!"));
    else
        setMailButtonsEnabled(false);
}

void frmPOP::POPMail1_NoMail()
{
    MsgBox(tr("You have not mail !!!"));
    setMailButtonsEnabled(false);
    MailPresent = false;
}

void frmPOP::POPMail1_MailDownloaded(bool succeeded)
{
    if (succeeded)
        MsgBox(tr("Mail downloaded !!!"));
}

void frmPOP::POPMail1_Disconnected(bool ended)
{
    if (!ended)
        return;
    Login->setEnabled(true);
    setMailButtonsEnabled(false);
}

void frmPOP::POPMail1_LoggedIn(bool succeeded)
{
    if (succeeded)
        setMailButtonsEnabled(true);
}

void frmPOP::POPMail1_MailboxStat(std::int16_t count, std::int32_t octets)
{
    TotalAvailableMail->setText(toText(count));
    TotalMailSizeOnPOPServer->setText(toText(octets));
}

void frmPOP::POPMail1_MailText(const QString &text)
{
    MailContents->setText(text + QStringLiteral("\r\n"));
}

void frmPOP::POPMail1_StatusText(const QString &text)
{
    POPConnectionStatus->setText(text + QStringLiteral("\r\n"));
}

void frmPOP::POPMail1_Error(bool failed, std::int32_t, const QString &description)
{
    if (failed)
        MsgBox(description, Buttons::OkOnly, BoxIcon::Critical, tr(" Error connection occured !!"));
}

void frmPOP::POPMail1_MailList(const QString &listing)
{
    MsgBox(listing, Buttons::OkOnly, BoxIcon::Information, tr("Mail listing on POP server"));
}

void frmPOP::POPMail1_MailDeleted(std::int16_t number)
{
    MsgBox(tr("Mail no : %1 on POP server has been deleted !").arg(toText(number)), Buttons::OkOnly,
           BoxIcon::None, tr(" Mail has been deleted "));
}

void frmPOP::POPMail1_Busy(bool busy)
{
    setMailButtonsEnabled(!busy);
}

// The control goes with the window, not with its memory, which the toolkit frees some time later.
void frmPOP::closeEvent(QCloseEvent *event)
{
    event->accept();
    POPMail1.reset();
}

} // namespace vandrel
