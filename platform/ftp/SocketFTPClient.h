#pragma once

#include <memory>

#include <QThread>

#include "controls/DriveView.h"
#include "controls/FTPClient.h"
#include "platform/ftp/FtpLink.h"
#include "platform/ftp/FtpRequest.h"

namespace vandrel {

class FtpSession;

/// An FTP session over sockets. It runs on a thread of its own, which is started with the first request: neither
/// encryption nor a slow disk holds the window. Names on the server are shown as RemoteNames.h says.
///
/// The numbers of its own failures are those of FtpProblem and, for local files, the runtime's.
class SocketFTPClient final : public FTPClient
{
    Q_OBJECT

public:
    /// `drives` turns local file names into native ones.
    explicit SocketFTPClient(std::shared_ptr<const DriveView> drives, const FtpPatience &patience = {});
    ~SocketFTPClient() override;

    void setCloseNow(bool start) override;
    void setConnectNow(bool start) override;
    void setUploadNow(bool start) override;
    void setDownloadNow(bool start) override;
    void setListNow(bool start) override;
    void setReportDirectoryNow(bool start) override;
    void setChangeDirectoryNow(bool start) override;
    void setRemoveDirectoryNow(bool start) override;
    void setCreateDirectoryNow(bool start) override;
    void setDeleteNow(bool start) override;
    void setDirectoryName(const QString &name) override { m_directoryName = name; }
    void setLocalFileName(const QString &path) override { m_localFileName = path; }
    void setNewRemoteFileName(const QString &name) override { m_newRemoteFileName = name; }
    void setRemoteFileName(const QString &name) override { m_remoteFileName = name; }
    void setDirectoryPath(const QString &path) override { m_directoryPath = path; }
    void setPassword(const QString &password) override { m_password = password; }
    void setUserName(const QString &user) override { m_userName = user; }
    void setTransferType(const QString &type) override { m_transferType = type; }
    void setServerAddress(const QString &server) override { m_serverAddress = server; }
    QString ServerAddress() const override { return m_serverAddress; }
    void setRenameNow(bool start) override;
    void setAbortNow(bool start) override;

private:
    FtpRequest localRequest(FtpRequest::Kind kind) const;
    void post(FtpRequest::Kind kind, const QString &name = {});
    void post(const FtpRequest &request);
    void raise(const FtpOutcome &outcome);
    void report(const FtpOutcome &outcome);
    FtpSession &session();

    std::shared_ptr<const DriveView> m_drives;
    const FtpPatience m_patience;
    QThread m_thread;
    /// Lives on the thread and ends with it.
    FtpSession *m_session = nullptr;

    QString m_directoryName;
    QString m_localFileName;
    QString m_newRemoteFileName;
    QString m_remoteFileName;
    QString m_directoryPath;
    QString m_password;
    QString m_userName;
    QString m_transferType;
    QString m_serverAddress;
};

} // namespace vandrel
