#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>

#include <QObject>
#include <QSet>
#include <QTimer>

#include "platform/ftp/FtpData.h"
#include "platform/ftp/FtpLink.h"
#include "platform/ftp/FtpRequest.h"

namespace vandrel {

class FtpTransfer;

/// A session with one server at a time: carries out requests in the order in which they are made. It never connects
/// again by itself. It lives on the thread that it was moved to, with all its connections and files.
class FtpSession : public QObject
{
    Q_OBJECT

public:
    explicit FtpSession(const FtpPatience &patience = {});
    ~FtpSession() override;

    /// Queues a request; finished() tells how it ended.
    void request(const FtpRequest &request);
    /// Forgets what is queued and ends what runs, without an outcome. A session with a server stays usable; where the
    /// server does not come to rest within a few seconds it is given up, which finished() tells.
    void abort();
    /// Forgets what is queued and ends the session in good order, without an outcome.
    void close();

Q_SIGNALS:
    /// Also the end of a session that nobody asked for, as a failure.
    void finished(const vandrel::FtpOutcome &outcome);
    void progress(qint64 transferred, qint64 total);

private:
    void runNext();
    void run(const FtpRequest &request);
    void connectTo(const FtpRequest &request);
    void transfer(const FtpRequest &request);
    void command(const QByteArray &command, const std::function<void(const FtpReply &)> &onCompletion);
    void rename(const QByteArray &from, const QByteArray &to);
    void reportDirectory();
    void changeDirectory(const FtpRequest &request);
    void runTransfer(FtpTransfer *transfer);

    void succeed(const QString &text = {});
    void fail(const FtpOutcome &why);
    void finish(FtpOutcome outcome);
    void endOperation();
    void linkLost(const FtpOutcome &why);
    void disconnectFromServer();

    void resynchronise(std::function<void()> then);
    void awaitDirectory();
    void resynchronised();
    void keepAlive();

    const FtpPatience m_patience;
    std::unique_ptr<FtpLink> m_link;
    bool m_isConnected = false;
    std::deque<FtpRequest> m_queue;
    std::optional<FtpRequest> m_current;
    /// The login or transfer that runs.
    QObject *m_operation = nullptr;
    bool m_isTransferring = false;
    QSet<QByteArray> m_features;
    FtpDataRules m_dataRules;
    /// What follows once the server is at rest; also set while it is being brought there.
    std::function<void()> m_afterRest;
    QTimer m_restLimit;
    QTimer m_keepAlive;
    int m_keptAlive = 0;
    bool m_isKeepingAlive = false;
};

} // namespace vandrel
