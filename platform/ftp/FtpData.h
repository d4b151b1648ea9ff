#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <QByteArrayView>
#include <QObject>
#include <QTcpServer>
#include <QTimer>

#include "platform/ftp/FtpLink.h"
#include "platform/net/LineConnection.h"

namespace vandrel {

/// What data connections of a session have in common.
struct FtpDataRules {
    bool isProtected = false;
    /// The server has refused EPSV or PASV for good.
    bool withoutExtended = false;
    bool withoutPassive = false;
};

/// One data connection: agreed on with the server (EPSV, else PASV, else EPRT or PORT), always made with the host of
/// the control connection, encrypted with that connection's TLS session where the session protects its data.
class FtpData : public QObject
{
    Q_OBJECT

public:
    FtpData(FtpLink &link, FtpDataRules &rules, QObject *parent);
    ~FtpData() override;

    /// Agrees on the connection. ready() or failed() follows.
    void prepare();
    /// The transfer's command has been sent: encrypts where that is due. opened() follows.
    void begin();
    /// Sends of these octets, without the first `from`, what there is room for now: how many. sent() tells when there may
    /// be room again.
    [[nodiscard]] qsizetype write(const QByteArray &octets, qsizetype from);
    /// Ends the connection when everything written has arrived. ended() follows.
    void finish();
    /// Ends the connection at once; nothing more is raised.
    void drop();

Q_SIGNALS:
    /// The transfer's command can be sent.
    void ready();
    /// Octets can be written.
    void opened();
    void received(QByteArrayView octets);
    void sent();
    /// The connection has ended; `isWhole` is false for an encrypted one that was cut off.
    void ended(bool isWhole);
    void failed(const vandrel::FtpOutcome &why);

private:
    using PortOf = std::optional<std::uint16_t> (*)(const FtpReply &reply);

    /// A way to a data connection that the server may refuse.
    struct Way {
        QByteArray command;
        PortOf portOf;
        /// Refused to this connection, and to all that follow.
        bool &isRefusedNow;
        bool &isRefusedForGood;
    };

    /// Asks the server where it listens; where it refuses to say, that is noted and the next way taken.
    void askPort(const Way &way);
    void dial(quint16 port);
    void listen();
    void connectedToPeer();
    void open();

    FtpLink &m_link;
    FtpDataRules &m_rules;
    LineConnection m_connection;
    std::unique_ptr<QTcpServer> m_listener;
    /// Runs while the server is to connect back.
    QTimer m_connectingBack;
    bool m_isExtendedRefused = false;
    bool m_isPassiveRefused = false;
    bool m_isConnected = false;
    bool m_isOpen = false;
    bool m_isFinishing = false;
};

} // namespace vandrel
