#pragma once

#include <functional>

#include <QObject>
#include <QSet>

#include "platform/ftp/FtpLink.h"
#include "platform/net/ServerAddress.h"

namespace vandrel {

/// Takes a session from nothing to the server's readiness: connects, encrypts where the server offers it (RFC 4217),
/// logs in, and asks what else the server can do. Ends with done() or failed(); a lost connection is the session's to
/// hear of.
class FtpLogin : public QObject
{
    Q_OBJECT

public:
    FtpLogin(FtpLink &link, const FtpRequest &request, QObject *parent);

    void start();

    /// What the server offers, from done() on.
    const QSet<QByteArray> &features() const { return m_features; }
    /// Whether data connections are encrypted, from done() on.
    bool protectsData() const { return m_protectsData; }
    /// The path behind the host in the address; "" where there is none.
    QString path() const { return m_address.path; }

Q_SIGNALS:
    void done();
    void failed(const vandrel::FtpOutcome &why);

private:
    void ask(const QByteArray &command, FtpLink::OnReply onReply);
    void greeted(const FtpReply &reply);
    void offerTls();
    void refuseIfOffered(const FtpReply &refusal);
    void sendUser();
    void sendPassword();
    void loggedIn();
    void protectData();
    void askFeatures();
    void chooseUtf8();

    FtpLink &m_link;
    ServerAddress m_address;
    QString m_user;
    QString m_password;
    QSet<QByteArray> m_features;
    bool m_protectsData = false;
};

} // namespace vandrel
