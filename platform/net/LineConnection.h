#pragma once

#include <memory>
#include <optional>

#include <QByteArray>
#include <QByteArrayView>
#include <QHostAddress>
#include <QObject>
#include <QSslConfiguration>
#include <QString>

namespace vandrel {

class SocketLink;

/// One connection to a server that speaks in lines. It carries lines and raw blocks, plain or in TLS, and never
/// reconnects. What the lines mean is its owner's business.
///
/// It lives on the thread that made it. Signals come from the event loop, never from inside a call; the object may
/// be destroyed, closed or aborted in any of them. A connection ends with exactly one of failed() and closed(),
/// unless it is aborted or destroyed, which raises nothing; after its end it can be opened again.
///
/// Incoming data is delivered in slices of a few milliseconds, so that a fast server does not hold the event loop.
class LineConnection : public QObject
{
    Q_OBJECT

public:
    /// Times in milliseconds, sizes in octets.
    struct Limits {
        /// From open() to connected(): lookup, all addresses, and the handshake of an implicit TLS.
        int connecting = 30'000;
        /// Without progress while something is awaited.
        int idle = 30'000;
        /// The longest line, its end included.
        qsizetype line = 16 * 1024;
        /// A write is refused while more than this waits to be sent.
        qint64 unsent = 512 * 1024;
        /// How long close() waits for the rest to be sent and for the server to end its side.
        int closing = 5'000;
        /// After how long without an answer the next of the server's addresses is tried beside the earlier ones.
        int nextAddress = 250;
    };

    enum class Failure {
        /// The name is unknown or could not be looked up.
        Lookup,
        /// No address of the server accepted the connection.
        Refused,
        /// Nothing came in time.
        TimedOut,
        /// The handshake or the certificate failed.
        Tls,
        /// The server sent what no server should.
        Protocol,
        /// The connection broke.
        Lost,
    };

    /// What incoming data is delivered as.
    enum class Reading {
        Lines,
        Blocks,
    };

    explicit LineConnection(QObject *parent = nullptr);
    /// Ends the connection at once.
    ~LineConnection() override;
    LineConnection(const LineConnection &) = delete;
    LineConnection &operator=(const LineConnection &) = delete;

    void setLimits(const Limits &limits);
    const Limits &limits() const;

    /// What TLS asks for; clientTlsConfiguration() where nothing else was set. An FTP data connection gets the
    /// configuration of its control connection, so that the server recognises the session.
    void setTlsConfiguration(const QSslConfiguration &configuration);
    /// The configuration in use, with the session once there is one.
    QSslConfiguration tlsConfiguration() const;
    /// The name that the server's certificate must carry; that given to open() where nothing else was set.
    void setTlsHost(const QString &host);

    /// Looks the host up and connects to its addresses, IPv6 and IPv4 in turn: the next one starts after
    /// Limits::nextAddress or as soon as one fails, and the first to answer is kept. connected() or failed() follows.
    /// `host` is a name in ASCII-compatible form or an address. Only while there is no connection.
    void open(const QString &host, quint16 port, bool implicitTls);
    /// Takes over a socket that a listener accepted, by its descriptor; `host` names the peer in messages. False,
    /// and nothing done, when the descriptor cannot be used. connected() follows.
    bool adopt(qintptr descriptor, const QString &host, bool implicitTls);
    /// Begins the TLS handshake after the server agreed to it. encrypted() or failed() follows. Text that the server
    /// sent behind its agreement is refused, since anybody on the way may have put it there.
    void startTls();

    /// Sends a line and its CR LF. False, and nothing is sent, when the line holds CR, LF or NUL, or when there is no
    /// connection.
    [[nodiscard]] bool sendLine(QByteArrayView line);
    /// Sends octets as they are. False, and nothing is sent, when there is no connection or when more than
    /// Limits::unsent waits already; drained() tells when there is room again.
    [[nodiscard]] bool write(QByteArrayView octets);
    /// Sends of these octets, without the first `from`, what there is room for now: how many. Where that is not all,
    /// drained() or sent() tells when there may be room for the rest. A large array that waits as a whole
    /// is shared, not copied.
    [[nodiscard]] qsizetype writeSome(const QByteArray &octets, qsizetype from = 0);
    /// Octets that wait in this process, those already encrypted included.
    qint64 unsent() const;

    /// Runs the idle timer until stopAwaiting(): no progress for `milliseconds` (Limits::idle when 0) is a failure
    /// whose text says what was awaited, such as "the reply to RETR".
    void await(const QString &what, int milliseconds = 0);
    void stopAwaiting();

    /// Takes effect with what has not been delivered yet, also when called while a line or a block is delivered.
    void setReading(Reading reading);
    /// Gives the last `count` octets of a block back, which belong to what comes next; they are delivered again, as
    /// lines where setReading() says so. Only while that block is delivered.
    void unread(qsizetype count);
    /// True when the line delivered last ended in CR LF rather than in a lone LF.
    bool lineHadCarriageReturn() const;
    /// Delivers nothing more until it is resumed; the server is held up once the buffers are full.
    void setPaused(bool paused);

    /// Sends what waits, then ends the connection in good order. closed() follows, after Limits::closing at the latest.
    void close();
    /// Sends what waits, announces that nothing more follows, and drops what still comes until the server has ended
    /// its side, too: a server gets what was sent as a whole. closed() follows, at the latest when for Limits::closing
    /// the server's system has confirmed nothing more.
    void finishSending();
    /// Ends the connection at once and raises nothing more.
    void abort();

    bool isOpen() const;
    bool isEncrypted() const;
    /// "TLS 1.3" or the like; empty when the connection is not encrypted.
    QString tlsVersion() const;
    /// The host as given to open().
    QString host() const;
    QHostAddress peerAddress() const;
    QHostAddress localAddress() const;
    /// True when the peer announced the end of its data, as every end of a plain connection is; false for an
    /// encrypted one that was cut off. Meaningful from closed() on.
    bool peerAnnouncedEnd() const;

Q_SIGNALS:
    /// What is being done to connect, for a status text.
    void progress(const QString &text);
    /// The connection can be used; with implicit TLS it is encrypted.
    void connected();
    /// The handshake begun by startTls() has succeeded.
    void encrypted();
    /// A line without its end. In lines a lone LF ends a line, too; every other octet is passed on.
    void lineReceived(const QByteArray &line);
    /// Octets as they came; they are valid until the handler returns.
    void blockReceived(QByteArrayView octets);
    /// Octets have left this process; `unsent` of them still wait.
    void sent(qint64 unsent);
    /// There is room again after a write was refused or filled the queue.
    void drained();
    /// The connection has ended and everything the server sent before has been delivered, but for an unfinished line.
    void closed();
    /// The connection has ended in failure. `text` is a sentence that names the host and what was awaited.
    void failed(vandrel::LineConnection::Failure failure, const QString &text);

private:
    friend class SocketLink;

    // A link may have to outlive a signal in which it is ended.
    struct EndLater {
        void operator()(SocketLink *link) const;
    };
    using Link = std::unique_ptr<SocketLink, EndLater>;

    Link makeLink(bool implicitTls);
    void end(bool peerAnnouncedEnd);

    Limits m_limits;
    // None where clientTlsConfiguration() serves, which must not be asked for before it is loaded.
    std::optional<QSslConfiguration> m_tls;
    QString m_tlsHost;
    QString m_host;
    bool m_peerAnnouncedEnd = true;
    Link m_link;
};

} // namespace vandrel
