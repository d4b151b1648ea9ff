#include "platform/ftp/SocketFTPClient.h"

#include <utility>

#include <QCoreApplication>

#include "platform/ftp/FtpSession.h"
#include "platform/net/TlsTrust.h"
#include "runtime/EventGate.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

using Kind = FtpRequest::Kind;

SocketFTPClient::SocketFTPClient(std::shared_ptr<const DriveView> drives, const FtpPatience &patience)
    : m_drives(std::move(drives)), m_patience(patience)
{
    loadTls();
    m_thread.setObjectName(QStringLiteral("FTP"));
}

SocketFTPClient::~SocketFTPClient()
{
    m_thread.quit();
    m_thread.wait();
}

FtpSession &SocketFTPClient::session()
{
    if (m_session)
        return *m_session;
    qRegisterMetaType<FtpOutcome>();
    m_session = new FtpSession(m_patience);
    m_session->moveToThread(&m_thread);
    // On the thread itself, at its end; connections that the session gives up then are deleted a turn later.
    connect(&m_thread, &QThread::finished, [session = m_session] {
        delete session;
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    });
    connect(m_session, &FtpSession::finished, this, &SocketFTPClient::raise);
    connect(m_session, &FtpSession::progress, this, [this](qint64 transferred, qint64 total) {
        // The meter's old news is of no use once a message box is closed; the end of a transfer is.
        if (!EventGate::isHeld() || (transferred == 0 && total == 0))
            EventGate::raise(this, [=, this] { Q_EMIT TransferProgress(transferred, total); });
    });
    m_thread.start();
    return *m_session;
}

void SocketFTPClient::post(const FtpRequest &request)
{
    FtpSession *target = &session();
    QMetaObject::invokeMethod(
        target, [target, request] { target->request(request); }, Qt::QueuedConnection);
}

void SocketFTPClient::post(Kind kind, const QString &name)
{
    FtpRequest request;
    request.kind = kind;
    request.name = name;
    post(request);
}

FtpRequest SocketFTPClient::localRequest(Kind kind) const
{
    FtpRequest request;
    request.kind = kind;
    request.name = m_remoteFileName;
    request.localName = m_localFileName;
    request.isAscii = m_transferType.compare(QLatin1String("binary"), Qt::CaseInsensitive) != 0;
    try {
        request.localPath = m_drives->toNative(m_localFileName);
    } catch (const RuntimeError &failure) {
        request.problem = failure.number();
        request.problemText = m_localFileName.isEmpty()
            ? tr("There is no local file. Choose one, or type its name.")
            : tr("\"%1\" is no local file's name: %2.").arg(m_localFileName, failure.text());
    }
    return request;
}

void SocketFTPClient::setConnectNow(bool start)
{
    if (!start)
        return;
    FtpRequest request;
    request.kind = Kind::Connect;
    request.server = m_serverAddress;
    request.user = m_userName;
    request.password = m_password;
    post(request);
}

void SocketFTPClient::setCloseNow(bool start)
{
    if (start && m_session)
        QMetaObject::invokeMethod(m_session, &FtpSession::close, Qt::QueuedConnection);
}

void SocketFTPClient::setAbortNow(bool start)
{
    if (start && m_session)
        QMetaObject::invokeMethod(m_session, &FtpSession::abort, Qt::QueuedConnection);
}

void SocketFTPClient::setUploadNow(bool start)
{
    if (start)
        post(localRequest(Kind::Upload));
}

void SocketFTPClient::setDownloadNow(bool start)
{
    if (start)
        post(localRequest(Kind::Download));
}

void SocketFTPClient::setListNow(bool start)
{
    if (start)
        post(Kind::List);
}

void SocketFTPClient::setReportDirectoryNow(bool start)
{
    if (start)
        post(Kind::ReportDirectory);
}

void SocketFTPClient::setChangeDirectoryNow(bool start)
{
    if (start)
        post(Kind::ChangeDirectory, m_directoryPath);
}

void SocketFTPClient::setRemoveDirectoryNow(bool start)
{
    if (start)
        post(Kind::RemoveDirectory, m_directoryName);
}

void SocketFTPClient::setCreateDirectoryNow(bool start)
{
    if (start)
        post(Kind::CreateDirectory, m_directoryName);
}

void SocketFTPClient::setDeleteNow(bool start)
{
    if (start)
        post(Kind::Delete, m_remoteFileName);
}

void SocketFTPClient::setRenameNow(bool start)
{
    if (!start)
        return;
    FtpRequest request;
    request.kind = Kind::Rename;
    request.name = m_remoteFileName;
    request.newName = m_newRemoteFileName;
    post(request);
}

void SocketFTPClient::raise(const FtpOutcome &outcome)
{
    EventGate::raise(this, [this, outcome] { report(outcome); });
}

void SocketFTPClient::report(const FtpOutcome &outcome)
{
    if (!outcome.isDone) {
        Q_EMIT Error(true, outcome.number, outcome.text);
        return;
    }
    switch (outcome.kind) {
    case Kind::Connect:
        Q_EMIT Connected(true);
        break;
    case Kind::Upload:
        Q_EMIT Uploaded(true);
        break;
    case Kind::Download:
        Q_EMIT Downloaded(true);
        break;
    case Kind::List:
        Q_EMIT FileList(outcome.text);
        break;
    case Kind::ReportDirectory:
    case Kind::ChangeDirectory:
        Q_EMIT CurrentDirectory(outcome.text);
        break;
    case Kind::RemoveDirectory:
        Q_EMIT DirectoryRemoved(true);
        break;
    case Kind::CreateDirectory:
        Q_EMIT DirectoryCreated(true);
        break;
    case Kind::Delete:
        Q_EMIT FileDeleted(true);
        break;
    case Kind::Rename:
        Q_EMIT FileRenamed(true);
        break;
    }
}

} // namespace vandrel
