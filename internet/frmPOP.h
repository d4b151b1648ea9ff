#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include <QWidget>

#include "controls/DocumentFiles.h"
#include "controls/POPMail.h"
#include "internet/CommandGroup.h"
#include "runtime/Integer.h"

class QGridLayout;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;

namespace vandrel {

class RichTextBox;
class TextBox;

/// The POP3 mail reader: logs in to a mailbox, steps through its messages, lists and deletes them. Which buttons
/// are enabled follows the control's events alone. Closing the window ends the session without "Disconnect", so
/// that nothing is deleted.
class frmPOP : public QWidget
{
    Q_OBJECT

public:
    /// `files` is what the rich-text box reads and writes files and the clipboard's RTF with; shared, never null.
    frmPOP(std::unique_ptr<POPMail> popMail, std::shared_ptr<const DocumentFiles> files);
    ~frmPOP() override;

    QLineEdit *ServerName = nullptr;
    QLineEdit *Username = nullptr;
    QLineEdit *Password = nullptr;
    QPushButton *Login = nullptr;
    QPushButton *Disconnect = nullptr;
    QLineEdit *TotalAvailableMail = nullptr;
    QLineEdit *TotalMailSizeOnPOPServer = nullptr;
    QLineEdit *MailIndex = nullptr;
    QPushButton *First = nullptr;
    QPushButton *PrevMail = nullptr;
    QPushButton *NextMail = nullptr;
    QPushButton *Last = nullptr;
    QPushButton *GetMailCommand = nullptr;
    QPushButton *DeleteMailCommand = nullptr;
    QPushButton *ListMailCommand = nullptr;
    RichTextBox *MailContents = nullptr;
    TextBox *POPConnectionStatus = nullptr;
    std::unique_ptr<POPMail> POPMail1;

    /// The number, from 1, of the message that the navigation buttons last asked for; 0 after "Disconnect".
    Integer CurrentMail;
    /// Cleared when the window is loaded and when the mailbox proves empty.
    bool MailPresent = false;

    // The handlers. Those that move CurrentMail raise Overflow (6) past 32767.
    void Form_Load();
    void Login_Click();
    void Disconnect_Click();
    void First_Click();
    void PrevMail_Click();
    void NextMail_Click();
    void Last_Click();
    /// Raises Overflow (6) for a typed number beyond what a number can be.
    void GetMailCommand_Click();
    void DeleteMailCommand_Click();
    void ListMailCommand_Click();
    void POPMail1_HasMail(bool hasMail);
    void POPMail1_NoMail();
    void POPMail1_MailDownloaded(bool succeeded);
    void POPMail1_Disconnected(bool ended);
    void POPMail1_LoggedIn(bool succeeded);
    void POPMail1_MailboxStat(std::int16_t count, std::int32_t octets);
    void POPMail1_MailText(const QString &text);
    void POPMail1_StatusText(const QString &text);
    void POPMail1_Error(bool failed, std::int32_t code, const QString &description);
    void POPMail1_MailList(const QString &listing);
    void POPMail1_MailDeleted(std::int16_t number);
    void POPMail1_Busy(bool busy);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    QGridLayout *arrangeLogin();
    QHBoxLayout *arrangeMailbox();
    QHBoxLayout *arrangeCommands();
    void arrange(std::shared_ptr<const DocumentFiles> files);
    void setTabOrders();
    void connectButtons();
    void connectControl();
    void fitToScreen();
    QLineEdit *addBox(const QString &name, int characters);
    QLineEdit *addDisplay(const QString &name, int characters);
    QPushButton *addButton(const QString &name, const QString &caption, const QString &tip = {});
    void setMailButtonsEnabled(bool enabled);

    std::optional<CommandGroup> m_mailButtons;
};

} // namespace vandrel
