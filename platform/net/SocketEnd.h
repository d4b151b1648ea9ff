#pragma once

#include <QByteArrayView>

namespace vandrel {

// What the toolkit's sockets do not tell or do.

/// Another descriptor of the same connection, which stays open until both are closed; -1 where there can be none.
qintptr duplicateSocket(qintptr descriptor);
void closeSocket(qintptr descriptor);
/// Tells the peer that nothing more follows; what it sends can still be read.
void endSending(qintptr descriptor);
/// Hands octets to the system as far as it takes them at once, past the toolkit's buffer: how many, 0 when it is full or
/// the connection is broken.
qsizetype sendAtOnce(qintptr descriptor, QByteArrayView octets);
/// Has the system take more only while fewer than so many octets wait there for the network, beside what is on its way
/// (TCP_NOTSENT_LOWAT); left as it is where the system cannot.
void limitUnsent(qintptr descriptor, int octets);
/// Octets on their way that the peer's system has not confirmed; 0 where that is not known.
int unconfirmedOctets(qintptr descriptor);

} // namespace vandrel
