#pragma once

#include <QObject>
#include <QString>

namespace vandrel {

/// Sends ICMP echo requests (RFC 792, RFC 4443), one at a time, and waits for the reply. User-interface thread only;
/// raises no events.
///
/// Ping set to true is synchronous: when the assignment returns the ping has ended, well or not, and its results can
/// be read. Meanwhile the windows go on painting, the user's keys and clicks wait, and so do the events of all other
/// controls. Destroying the control while it waits ends the wait at once.
class Ping : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// The data that came back with the last reply; empty before the first one.
    virtual QString EchoData() const = 0;
    /// The data to send, as UTF-8. At most 65507 octets go to an IPv4 address, 65527 to an IPv6 one; more of them is
    /// a failure of the ping.
    virtual QString DataToSend() const = 0;
    virtual void setDataToSend(const QString &data) = 0;
    /// What came of the last ping, as a sentence without a line break; empty before the first one.
    virtual QString StatusText() const = 0;
    /// A name, or an IPv4 or IPv6 address; blanks around it and before its last number ("192.0.2. 5") do not count.
    virtual void setHost(const QString &host) = 0;
    /// True sends one request and waits until it is answered, proves unanswerable, or the time-out has passed. False
    /// ends a wait, which then counts as failed; without one it does nothing. True while one waits does nothing.
    virtual void setPing(bool start) = 0;
    /// How many octets of data the last reply brought; 0 before the first one.
    virtual quint16 DataSize() const = 0;
    /// From the last reply's request to its arrival, in whole milliseconds.
    virtual qint32 RoundTripTime() const = 0;
    /// How long to wait for a reply, in milliseconds; 1000 until assigned. Less than 1 is a failure of the ping. A
    /// host's name is looked up before that time begins, for five seconds at most.
    virtual void setTimeOut(qint16 milliseconds) = 0;
    /// True when the last ping failed, whatever the reason; the status text has it.
    virtual bool ErrorFlag() const = 0;
};

} // namespace vandrel
