#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <QWidget>

#include "controls/CommonDialog.h"
#include "controls/Smtp.h"
#include "internet/CommandGroup.h"

class QGridLayout;
class QGroupBox;
class QLineEdit;
class QPushButton;

namespace vandrel {

class ListBox;
class TextBox;

/// The SMTP mail sender: composes one message with its attachments and hands it to the control. It keeps nothing
/// but what its fields show, and checks none of them: the control says what it makes of them.
class frmSend : public QWidget
{
    Q_OBJECT

public:
    /// Makes the dialog that asks for a file to attach; called for each one anew.
    using DialogFactory = std::function<std::unique_ptr<CommonDialog>()>;

    frmSend(std::unique_ptr<Smtp> smtp, DialogFactory dialogs);
    ~frmSend() override;

    QLineEdit *MailDomain = nullptr;
    QLineEdit *Recipient = nullptr;
    QLineEdit *Sender = nullptr;
    QLineEdit *CC = nullptr;
    QLineEdit *MailSubject = nullptr;
    TextBox *MailMessage = nullptr;
    QGroupBox *Frame2 = nullptr;
    ListBox *FilesAttachmentListing = nullptr;
    QPushButton *AddFileCommand = nullptr;
    QPushButton *RemoveFileCommand = nullptr;
    QGroupBox *Frame1 = nullptr;
    TextBox *StatusText = nullptr;
    QPushButton *SendCommand = nullptr;
    std::unique_ptr<CommonDialog> ComDialog;
    std::unique_ptr<Smtp> Smtp1;

    void MailDomain_Change();
    void MailMessage_Change();
    void MailSubject_Change();
    void Recipient_Change();
    void Sender_Change();
    void AddFileCommand_Click();
    void RemoveFileCommand_Click();
    void SendCommand_Click();
    void Smtp1_Busy(bool busy);
    void Smtp1_Disconnected(bool ended);
    void Smtp1_Error(const QString &description);
    void Smtp1_MailSent();
    void Smtp1_StatusText(const QString &text);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void arrange();
    QGridLayout *arrangeFields();
    QGroupBox *arrangeAttachments();
    QGroupBox *arrangeStatus();
    void addField(QGridLayout *grid, const QString &labelName, const QString &caption, QWidget *box);
    QLineEdit *addBox(const QString &name);
    QPushButton *addButton(const QString &name, const QString &caption);
    void connectFields();
    void connectControl();
    void setTabOrders();
    void fitToScreen();

    DialogFactory m_dialogs;
    std::optional<CommandGroup> m_commands;
};

} // namespace vandrel
