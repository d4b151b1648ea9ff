#pragma once

#include <QObject>
#include <QString>

namespace vandrel {

/// Finds out the computer's own address and domain name. User-interface thread only.
///
/// Query set to true is synchronous: the events, in the order of their declaration, are raised from inside the
/// assignment, and when it returns both answers can be read. It asks this computer alone and never the network, so
/// that it takes no time.
class MyIP : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// The domain name found by the last query; empty when there is none.
    virtual QString DomainName() const = 0;
    /// The address found by the last query, IPv4 or IPv6; empty when there is none.
    virtual QString IPAddress() const = 0;
    /// True looks both up; false does nothing.
    virtual void setQuery(bool start) = 0;

Q_SIGNALS:
    // The events, in the control's order.
    /// Raised with true when no network is there at all: no interface runs but the computer's own loopback.
    void SocketError(bool failed);
    void NoDomainName();
    /// A network is there, but no address of it belongs to this computer.
    void NoIPAddress();
};

} // namespace vandrel
