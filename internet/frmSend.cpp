#include "internet/frmSend.h"

#include <utility>

#include <QCloseEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include "controls/ListBox.h"
#include "controls/OneLine.h"
#include "controls/TextBox.h"
#include "internet/FormParts.h"
#include "runtime/Events.h"
#include "runtime/Prompts.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

// Room for the addresses of a long list of recipients; the toolkit would cut it at 32767 characters.
constexpr int longestField = 1'000'000;

// The window's first size, in characters and lines of its font.
constexpr int columns = 84;
constexpr int messageLines = 12;
constexpr int fewestMessageLines = 4;
constexpr int lowerLines = 6;
constexpr int fewestLowerLines = 3;
// What the window manager may draw around the window.
constexpr int frameMargin = 40;

QString folderOf(const QString &dosPath)
{
    return dosPath.left(dosPath.lastIndexOf(u'\\') + 1);
}

} // namespace

frmSend::frmSend(std::unique_ptr<Smtp> smtp, DialogFactory dialogs)
    : Smtp1(std::move(smtp)), m_dialogs(std::move(dialogs))
{
    setObjectName(QStringLiteral("frmSend"));
    setWindowTitle(tr("Send SMTP mail"));
    setFont(QFont(QStringLiteral("MS Sans Serif")));
    arrange();
    setTabOrders();
    connectFields();
    connectControl();
    fitToScreen();
}

frmSend::~frmSend() = default;

void frmSend::arrange()
{
    auto *column = new QVBoxLayout(this);
    column->addLayout(arrangeFields(), 2);
    auto *lower = new QHBoxLayout;
    lower->addWidget(arrangeAttachments(), 1);
    lower->addWidget(arrangeStatus(), 1);
    column->addLayout(lower, 1);

    SendCommand = addButton(QStringLiteral("SendCommand"), tr("&Send"));
    column->addWidget(SendCommand, 0, Qt::AlignRight);
    m_commands.emplace(QList{SendCommand, AddFileCommand, RemoveFileCommand});
}

QGridLayout *frmSend::arrangeFields()
{
    MailDomain = addBox(QStringLiteral("MailDomain"));
    Recipient = addBox(QStringLiteral("Recipient"));
    Sender = addBox(QStringLiteral("Sender"));
    CC = addBox(QStringLiteral("CC"));
    MailSubject = addBox(QStringLiteral("MailSubject"));
    MailMessage = new TextBox(this);
    MailMessage->setObjectName(QStringLiteral("MailMessage"));

    // A list copied from elsewhere has an address on each line.
    for (QLineEdit *box : {Recipient, CC})
        keepOnOneLine(box, QStringLiteral(", "));

    auto *grid = new QGridLayout;
    addField(grid, QStringLiteral("Label1"), tr(" Mail Server Domain "), MailDomain);
    addField(grid, QStringLiteral("Label2"), tr(" To "), Recipient);
    addField(grid, QStringLiteral("Label3"), tr(" From"), Sender);
    addField(grid, QStringLiteral("Label6"), tr(" CC "), CC);
    addField(grid, QStringLiteral("Label4"), tr(" Subject"), MailSubject);
    addField(grid, QStringLiteral("Label5"), tr(" Message"), MailMessage);
    grid->setRowStretch(grid->rowCount() - 1, 1);
    return grid;
}

QGroupBox *frmSend::arrangeAttachments()
{
    Frame2 = new QGroupBox(tr(" File(s)  Attachment  "), this);
    Frame2->setObjectName(QStringLiteral("Frame2"));
    FilesAttachmentListing = new ListBox(Frame2);
    FilesAttachmentListing->setObjectName(QStringLiteral("FilesAttachmentListing"));
    FilesAttachmentListing->setAccessibleName(tr("Files to attach"));
    AddFileCommand = addButton(QStringLiteral("AddFileCommand"), tr("&Add"));
    RemoveFileCommand = addButton(QStringLiteral("RemoveFileCommand"), tr("&Remove"));

    auto *grid = new QGridLayout(Frame2);
    grid->addWidget(FilesAttachmentListing, 0, 0, 3, 1);
    grid->addWidget(AddFileCommand, 0, 1);
    grid->addWidget(RemoveFileCommand, 1, 1);
    grid->setRowStretch(2, 1);
    grid->setColumnStretch(0, 1);
    return Frame2;
}

QGroupBox *frmSend::arrangeStatus()
{
    Frame1 = new QGroupBox(tr("  Connection Status  "), this);
    Frame1->setObjectName(QStringLiteral("Frame1"));
    StatusText = new TextBox(Frame1);
    StatusText->setObjectName(QStringLiteral("StatusText"));
    StatusText->setAccessibleName(tr("Connection Status"));
    StatusText->setReadOnly(true);
    StatusText->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    StatusText->setUndoRedoEnabled(false);
    auto *column = new QVBoxLayout(Frame1);
    column->addWidget(StatusText);
    return Frame1;
}

void frmSend::addField(QGridLayout *grid, const QString &labelName, const QString &caption, QWidget *box)
{
    QLabel *label = captionOf(labelName, caption, box, this);
    const int row = grid->rowCount();
    grid->addWidget(label, row, 0, box == MailMessage ? Qt::AlignTop : Qt::AlignVCenter);
    grid->addWidget(box, row, 1);
}

QLineEdit *frmSend::addBox(const QString &name)
{
    auto *box = new QLineEdit(this);
    box->setObjectName(name);
    box->setMaxLength(longestField);
    keepOnOneLine(box, QStringLiteral(" "));
    return box;
}

// Enter presses the button that has the focus; no other button answers to it, so that none sends a letter by
// accident.
QPushButton *frmSend::addButton(const QString &name, const QString &caption)
{
    auto *button = new QPushButton(caption, this);
    button->setObjectName(name);
    button->setAutoDefault(true);
    return button;
}

void frmSend::connectFields()
{
    onEvent(MailDomain, &QLineEdit::textChanged, this, [this] { MailDomain_Change(); });
    onEvent(MailMessage, &TextBox::Change, this, &frmSend::MailMessage_Change);
    onEvent(MailSubject, &QLineEdit::textChanged, this, [this] { MailSubject_Change(); });
    onEvent(Recipient, &QLineEdit::textChanged, this, [this] { Recipient_Change(); });
    onEvent(Sender, &QLineEdit::textChanged, this, [this] { Sender_Change(); });
    onEvent(AddFileCommand, &QPushButton::clicked, this, &frmSend::AddFileCommand_Click);
    onEvent(RemoveFileCommand, &QPushButton::clicked, this, &frmSend::RemoveFileCommand_Click);
    onEvent(SendCommand, &QPushButton::clicked, this, &frmSend::SendCommand_Click);
}

void frmSend::connectControl()
{
    const Smtp *control = Smtp1.get();
    onEvent(control, &Smtp::Busy, this, &frmSend::Smtp1_Busy);
    onEvent(control, &Smtp::Disconnected, this, &frmSend::Smtp1_Disconnected);
    onEvent(control, &Smtp::Error, this, &frmSend::Smtp1_Error);
    onEvent(control, &Smtp::MailSent, this, &frmSend::Smtp1_MailSent);
    onEvent(control, &Smtp::StatusText, this, &frmSend::Smtp1_StatusText);
}

void frmSend::setTabOrders()
{
    const QList<QWidget *> order{MailDomain,
                                 Recipient,
                                 Sender,
                                 CC,
                                 MailSubject,
                                 MailMessage,
                                 FilesAttachmentListing,
                                 AddFileCommand,
                                 RemoveFileCommand,
                                 StatusText,
                                 SendCommand};
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order[i - 1], order[i]);
    MailDomain->setFocus();
}

void frmSend::fitToScreen()
{
    ensurePolished();
    const int line = fontMetrics().lineSpacing();
    MailMessage->setMinimumHeight(line * fewestMessageLines);
    for (QWidget *box : {static_cast<QWidget *>(FilesAttachmentListing), static_cast<QWidget *>(StatusText)})
        box->setMinimumHeight(line * fewestLowerLines);
    const int more = line * (messageLines - fewestMessageLines + lowerLines - fewestLowerLines);
    const QSize wanted(fontMetrics().averageCharWidth() * columns, layout()->minimumSize().height() + more);
    resize(wanted.boundedTo(screen()->availableSize() - QSize(frameMargin, frameMargin)));
}

void frmSend::MailDomain_Change()
{
    Smtp1->setServerDomain(MailDomain->text());
}

void frmSend::MailMessage_Change()
{
    Smtp1->setMessageBody(MailMessage->text());
}

void frmSend::MailSubject_Change()
{
    Smtp1->setMessageSubject(MailSubject->text());
}

void frmSend::Recipient_Change()
{
    Smtp1->setToAddress(Recipient->text());
}

void frmSend::Sender_Change()
{
    Smtp1->setFromAddress(Sender->text());
}

// The dialog starts where the last file of the list came from: attachments mostly lie together.
void frmSend::AddFileCommand_Click()
{
    ComDialog = m_dialogs();
    ComDialog->InitDir = folderOf(FilesAttachmentListing->List(FilesAttachmentListing->ListCount() - 1));
    ComDialog->ShowOpen(this);
    if (!ComDialog->FileName.isEmpty())
        FilesAttachmentListing->AddItem(ComDialog->FileName);
    ComDialog.reset();
}

void frmSend::RemoveFileCommand_Click()
{
    try {
        FilesAttachmentListing->RemoveItem(FilesAttachmentListing->ListIndex());
    } catch (const RuntimeError &) {
        // With nothing selected there is nothing to remove, and nothing to say about it.
    }
}

void frmSend::SendCommand_Click()
{
    QString AttachmentList;
    for (int row = 0; row < FilesAttachmentListing->ListCount(); ++row) {
        FilesAttachmentListing->setListIndex(row);
        AttachmentList += FilesAttachmentListing->List(row) + u';';
    }
    Smtp1->setAttachmentList(AttachmentList);
    Smtp1->setServerDomain(MailDomain->text());
    Smtp1->setFromAddress(Sender->text());
    Smtp1->setToAddress(Recipient->text());
    Smtp1->setCcAddress(CC->text());
    Smtp1->setMessageSubject(MailSubject->text());
    Smtp1->setMessageBody(MailMessage->text());
    Smtp1->setSendNow(true);
}

void frmSend::Smtp1_Busy(bool busy)
{
    m_commands->setEnabled(!busy);
}

void frmSend::Smtp1_Disconnected(bool ended)
{
    if (!ended)
        return;
    StatusText->append(tr("Diconnected from SMTP server....") + QStringLiteral("\r\n"));
    SendCommand->setEnabled(true);
}

void frmSend::Smtp1_Error(const QString &description)
{
    MsgBox(description, Buttons::OkOnly, BoxIcon::Critical, tr("ERROR"));
    m_commands->setEnabled(true);
}

void frmSend::Smtp1_MailSent()
{
    StatusText->append(tr(" Mail has been sent") + QStringLiteral("\r\n"));
}

void frmSend::Smtp1_StatusText(const QString &text)
{
    StatusText->append(text);
}

// The control goes with the window, not with its memory, which the toolkit frees some time later.
void frmSend::closeEvent(QCloseEvent *event)
{
    event->accept();
    Smtp1.reset();
}

} // namespace vandrel
