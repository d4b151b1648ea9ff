#pragma once

#include <QObject>
#include <QString>

namespace vandrel {

/// Delivers one message with its attachments through an SMTP server (RFC 5321). Values are assigned, and
/// SendNow set to true sends with the values of that moment; setting it to false does nothing. User-interface
/// thread only. Setters return at once; every outcome comes back as an event from the event loop, held back
/// while a message box is open. A send asked for while one runs waits for its turn.
///
/// The order of events of one send: Busy(true), StatusText any number of times, then MailSent or Error, then
/// Disconnected(true) when there was a connection, then Busy(false). Destroying the control ends everything
/// at once and raises nothing more.
class Smtp : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Full paths of the files to attach, DOS-style, each followed by ";".
    virtual void setAttachmentList(const QString &paths) = 0;
    virtual void setMessageBody(const QString &text) = 0;
    virtual void setMessageSubject(const QString &subject) = 0;
    /// The sender's address, with or without a display name.
    virtual void setFromAddress(const QString &address) = 0;
    /// Addresses separated by commas or semicolons; empty adds nothing.
    virtual void setCcAddress(const QString &addresses) = 0;
    virtual void setToAddress(const QString &addresses) = 0;
    /// "host", "host:port", "[IPv6]:port", "smtp://host", "smtps://host", each with "user:password@" before the
    /// host where the server wants a login, or a bare mail domain that is delivered through its mail exchangers.
    virtual void setServerDomain(const QString &server) = 0;
    /// Connects, sends the message with its attachments, disconnects.
    virtual void setSendNow(bool start) = 0;

Q_SIGNALS:
    // The events, in the control's order.
    void Busy(bool busy);
    void Disconnected(bool ended);
    void Error(const QString &description);
    /// The server has accepted the message for all its recipients; `reply` is what it said.
    void MailSent(const QString &reply);
    /// A progress text of the dialogue, which carries its own line break (CR LF).
    void StatusText(const QString &text);
};

} // namespace vandrel
