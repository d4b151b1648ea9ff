#pragma once

#include "platform/net/LineConnection.h"

namespace vandrel {

/// The bounds of a mailbox's session. Times in milliseconds, sizes in octets.
struct PopLimits {
    LineConnection::Limits connection;
    /// A mail of this size or less becomes text at once: a thread would take longer to begin than the work does.
    qint64 convertedAtOnce = 64 * 1024;
    /// A larger mail goes to a temporary file.
    qsizetype mailInMemory = 1024 * 1024;
    /// A larger mail ends the session.
    qint64 largestMail = qint64(1024) * 1024 * 1024;
    /// How long a listing asks for senders and subjects; what is missing then is listed with number and size.
    int askingForHeaders = 10'000;
    /// For how many messages a listing asks where the server answers one question at a time only.
    int headersOneByOne = 200;
    /// How long "Disconnect" waits for the rest of a transfer where no deletion depends on it.
    int endingTransfer = 3'000;
};

} // namespace vandrel
