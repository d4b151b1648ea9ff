#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <QByteArrayList>
#include <QHostAddress>
#include <QSslSocket>
#include <QTcpServer>

#include "tests/platform/net/TestCertificates.h"

namespace vandrel {

/// One thing that a scripted server does.
struct ServerStep {
    enum class Kind {
        Say,
        SayInOctets,
        SayForEver,
        Hear,
        HearUntil,
        Encrypt,
        Close,
        CutOff,
        Reset,
        Do,
    };

    Kind kind = Kind::Say;
    QByteArray octets;
    std::function<void()> action;
};

/// Sends octets.
ServerStep say(const QByteArray &octets);
/// Sends octets one at a time.
ServerStep sayInOctets(const QByteArray &octets);
/// Sends octets again and again until the client goes.
ServerStep sayForEver(const QByteArray &octets);
/// Waits for a line that begins with `prefix`; any other line is a mismatch, and the server hangs up.
ServerStep hear(const QByteArray &prefix);
/// Passes over lines up to one that is exactly `line`.
ServerStep hearUntil(const QByteArray &line);
/// Begins the server's side of TLS with the server's identity.
ServerStep encrypt();
/// Ends the connection in good order.
ServerStep hangUp();
/// Ends the connection at once when everything is sent, without the end of TLS.
ServerStep cutOff();
/// Breaks the connection: what is sent may be lost, and the client is told that the connection was reset.
ServerStep resetConnection();
/// Calls a function of the test.
ServerStep act(std::function<void()> action);

/// A port of this machine on which nobody listens.
quint16 portWithoutServer();

/// A server on loopback that follows a script for each connection and writes down what it hears. It runs on the
/// test's own event loop.
class ScriptedServer : public QTcpServer
{
    Q_OBJECT

public:
    using Script = std::vector<ServerStep>;

    explicit ScriptedServer(Script script,
                            const QHostAddress &address = QHostAddress::LocalHost,
                            quint16 port = 0);

    void setIdentity(const TestIdentity &identity) { m_identity = identity; }
    int connections() const { return m_connections; }
    /// Every line heard, without its end.
    const QByteArrayList &heard() const { return m_heard; }
    /// The first line heard that the script did not expect; empty when there was none.
    QByteArray mismatch() const { return m_mismatch; }
    bool isScriptDone() const { return m_done; }
    /// True while a client is connected.
    bool hasClient() const;

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    struct Client {
        QSslSocket *socket = nullptr;
        std::deque<ServerStep> steps;
        QByteArray buffer;
        // Where in it the next line begins.
        qsizetype position = 0;
        bool encrypting = false;
    };

    void go(const std::shared_ptr<Client> &client);
    // False when the step has to wait.
    bool perform(const std::shared_ptr<Client> &client, ServerStep &step);
    bool hearLine(Client &client, const QByteArray &prefix);
    bool hearLinesUntil(Client &client, const QByteArray &last);
    // The next whole line, written down; nothing when there is none yet.
    std::optional<QByteArray> nextLine(Client &client);
    void beginEncryption(Client &client);

    Script m_script;
    TestIdentity m_identity;
    int m_connections = 0;
    QByteArrayList m_heard;
    QByteArray m_mismatch;
    bool m_done = false;
};

} // namespace vandrel
