#pragma once

namespace vandrel {

/// How long is waited for what, in milliseconds; the usual values are those of RFC 5321, section 4.5.3.2.
struct SmtpTimes {
    /// For a connection, all addresses of the server together.
    int connecting = 30'000;
    /// For the greeting and the replies to commands.
    int reply = 5 * 60'000;
    /// For the server to take more of the message.
    int block = 3 * 60'000;
    /// For the confirmation once the whole message was sent.
    int confirmation = 10 * 60'000;
    /// For the reply to the farewell, which no longer matters.
    int farewell = 10'000;
    /// For the answer which hosts take mail for a domain.
    int exchangers = 30'000;
};

} // namespace vandrel
