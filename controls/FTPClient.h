#pragma once

#include <cstdint>

#include <QObject>
#include <QString>

namespace vandrel {

/// A session with an FTP server (RFC 959, 2428, 3659, 4217). Texts are assigned, and an operation starts when
/// its trigger is set to true; setting a trigger to false does nothing. User-interface thread only. Setters
/// return at once; every outcome comes back as an event from the event loop, held back while a message box is
/// open. An operation takes the texts as they stand when it is asked for; one asked for while another runs is
/// queued and carried out in order. Nothing is retried silently. Destroying the control ends everything at
/// once and raises nothing more.
///
/// Names on the server come and go as texts, each of which stands for the same octets again: one that is no UTF-8 is a
/// private character U+F000 + octet, and so is one that a listing's line could not hold.
///
/// Members are known by number; the number stands in each comment.
class FTPClient : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// 0x68030000: ends the session in good order; what is queued is dropped.
    virtual void setCloseNow(bool start) = 0;
    /// 0x68030001: connects to ServerAddress and logs in.
    virtual void setConnectNow(bool start) = 0;
    /// 0x68030002: sends LocalFileName as RemoteFileName.
    virtual void setUploadNow(bool start) = 0;
    /// 0x68030003: receives RemoteFileName into LocalFileName, which is replaced when the transfer is complete.
    virtual void setDownloadNow(bool start) = 0;
    /// 0x68030004: asks for the listing of the remote current directory.
    virtual void setListNow(bool start) = 0;
    /// 0x68030005: asks for the remote current directory.
    virtual void setReportDirectoryNow(bool start) = 0;
    /// 0x68030006: changes the remote current directory to DirectoryPath.
    virtual void setChangeDirectoryNow(bool start) = 0;
    /// 0x68030007: removes the directory DirectoryName.
    virtual void setRemoveDirectoryNow(bool start) = 0;
    /// 0x68030008: creates the directory DirectoryName.
    virtual void setCreateDirectoryNow(bool start) = 0;
    /// 0x68030009: deletes RemoteFileName.
    virtual void setDeleteNow(bool start) = 0;
    /// 0x6803000A: the name of a directory to create or remove.
    virtual void setDirectoryName(const QString &name) = 0;
    /// 0x6803000B: the local file, DOS-style.
    virtual void setLocalFileName(const QString &path) = 0;
    /// 0x6803000C: the name a remote file gets.
    virtual void setNewRemoteFileName(const QString &name) = 0;
    /// 0x6803000D: the remote file to receive, send, delete or rename.
    virtual void setRemoteFileName(const QString &name) = 0;
    /// 0x6803000E: the directory that becomes the current one.
    virtual void setDirectoryPath(const QString &path) = 0;
    /// 0x6803000F
    virtual void setPassword(const QString &password) = 0;
    /// 0x68030010
    virtual void setUserName(const QString &user) = 0;
    /// 0x68030011: "ascii" converts line ends, "binary" does not.
    virtual void setTransferType(const QString &type) = 0;
    /// 0x68030012: "host", "host:port", "[IPv6]:port", "ftp://host" or "ftps://host", as typed.
    virtual void setServerAddress(const QString &server) = 0;
    virtual QString ServerAddress() const = 0;
    /// 0x68030013: renames RemoteFileName to NewRemoteFileName.
    virtual void setRenameNow(bool start) = 0;
    /// 0x68030014: cancels the running operation and all that are queued, also while connecting.
    virtual void setAbortNow(bool start) = 0;

Q_SIGNALS:
    // The events, in the control's order. The values that say nothing are true.
    /// `number` is the server's reply number, or one of the control's own for a local failure.
    void Error(bool failed, std::int32_t number, const QString &text);
    void Connected(bool connected);
    void Downloaded(bool done);
    void Uploaded(bool done);
    void FileDeleted(bool done);
    void FileRenamed(bool done);
    /// One line an entry, each ended by CR LF: the name, two characters, "/", then kind, size and date.
    void FileList(const QString &listing);
    void CurrentDirectory(const QString &path);
    void DirectoryCreated(bool done);
    void DirectoryRemoved(bool done);

    /// How far the running transfer has come, in octets, at most ten times a second; `total` is -1 where the size is
    /// not known. A pair of zeros when no transfer runs.
    void TransferProgress(qint64 transferred, qint64 total);
};

} // namespace vandrel
