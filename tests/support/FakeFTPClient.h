#pragma once

#include <QStringList>

#include "controls/FTPClient.h"

namespace vandrel::test {

/// An FTP control that does nothing but record what it is told, in order: "ServerAddress = host", "ConnectNow = True".
/// A test raises its events by emitting its signals.
class FakeFTPClient final : public FTPClient
{
    Q_OBJECT

public:
    void setCloseNow(bool start) override { record("CloseNow", start); }
    void setConnectNow(bool start) override { record("ConnectNow", start); }
    void setUploadNow(bool start) override { record("UploadNow", start); }
    void setDownloadNow(bool start) override { record("DownloadNow", start); }
    void setListNow(bool start) override { record("ListNow", start); }
    void setReportDirectoryNow(bool start) override { record("ReportDirectoryNow", start); }
    void setChangeDirectoryNow(bool start) override { record("ChangeDirectoryNow", start); }
    void setRemoveDirectoryNow(bool start) override { record("RemoveDirectoryNow", start); }
    void setCreateDirectoryNow(bool start) override { record("CreateDirectoryNow", start); }
    void setDeleteNow(bool start) override { record("DeleteNow", start); }
    void setDirectoryName(const QString &name) override { record("DirectoryName", name); }
    void setLocalFileName(const QString &path) override { record("LocalFileName", path); }
    void setNewRemoteFileName(const QString &name) override { record("NewRemoteFileName", name); }
    void setRemoteFileName(const QString &name) override { record("RemoteFileName", name); }
    void setDirectoryPath(const QString &path) override { record("DirectoryPath", path); }
    void setPassword(const QString &password) override { record("Password", password); }
    void setUserName(const QString &user) override { record("UserName", user); }
    void setTransferType(const QString &type) override { record("TransferType", type); }
    void setServerAddress(const QString &server) override
    {
        serverAddress = server;
        record("ServerAddress", server);
    }
    QString ServerAddress() const override { return serverAddress; }
    void setRenameNow(bool start) override { record("RenameNow", start); }
    void setAbortNow(bool start) override { record("AbortNow", start); }

    /// What was told since the last time this was asked.
    QStringList takeCalls();

    /// What is read back.
    QString serverAddress;

private:
    void record(const char *member, const QString &value);
    void record(const char *trigger, bool value);

    QStringList m_calls;
};

} // namespace vandrel::test
