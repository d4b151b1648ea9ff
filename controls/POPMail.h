#pragma once

#include <cstdint>

#include <QObject>
#include <QString>

namespace vandrel {

/// A POP3 mailbox (RFC 1939). Values are assigned, and an operation starts when its trigger is set to true;
/// setting a trigger to false does nothing. User-interface thread only. Setters return at once; every outcome
/// comes back as an event from the event loop, held back while a message box is open.
///
/// Operations asked for while one runs are queued and carried out in order. One session serves from ConnectNow
/// to Disconnected: a dropped connection is an Error followed by Disconnected(true), never a silent reconnect,
/// since the numbers of the messages would shift. Only DisconnectNow makes deletions final; destroying the
/// control ends everything at once, deletes nothing and raises nothing more.
///
/// The order of events: Busy(true), what the operation reports, Busy(false). Events that say in which state the
/// session now is have the last word, behind Busy(false). After ConnectNow: Busy(true), LoggedIn(true), MailboxStat,
/// Busy(false), then HasMail(true), or NoMail when the mailbox is empty. When a session, or the attempt at one, ends
/// for whatever reason: Busy(false) if it was busy, Error if it failed, and last Disconnected(true).
class POPMail : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// "host", "host:port", "[IPv6]:port", "pop3://host" or "pop3s://host", as typed.
    virtual void setPOPServer(const QString &server) = 0;
    virtual void setPOPUser(const QString &user) = 0;
    virtual void setPOPPassword(const QString &password) = 0;

    /// The number, from 1, of the message that RetrieveNow and DeleteNow act on.
    virtual void setMailNumber(std::int16_t number) = 0;
    virtual std::int16_t MailNumber() const = 0;

    /// Messages in the mailbox after login, those deleted in this session included; at most 32767.
    virtual std::int16_t MailCount() const = 0;

    /// Connects to POPServer and logs in.
    virtual void setConnectNow(bool start) = 0;
    /// Ends a transfer in progress and the session; deletions become final.
    virtual void setDisconnectNow(bool start) = 0;
    /// Downloads message MailNumber: MailText, then MailDownloaded(true).
    virtual void setRetrieveNow(bool start) = 0;
    /// Lists the mailbox: MailList.
    virtual void setListNow(bool start) = 0;
    /// Marks message MailNumber as deleted: MailDeleted.
    virtual void setDeleteNow(bool start) = 0;

Q_SIGNALS:
    // The events, in the control's order.
    void HasMail(bool hasMail);
    void NoMail(std::int32_t count);
    void MailDownloaded(bool succeeded);
    void Disconnected(bool ended);
    void LoggedIn(bool succeeded);
    /// The count of messages and their total size in octets, the latter at most 2,147,483,647.
    void MailboxStat(std::int16_t count, std::int32_t octets);
    /// The message in readable form: the main headers, the text, and a list of what is attached.
    void MailText(const QString &text);
    /// One line on the connection, without a line break.
    void StatusText(const QString &text);
    /// `code` is 0 for failures that no server reported.
    void Error(bool failed, std::int32_t code, const QString &description);
    /// One line a message, each ended by CR LF.
    void MailList(const QString &listing);
    void MailDeleted(std::int16_t number);
    void Busy(bool busy);
};

} // namespace vandrel
