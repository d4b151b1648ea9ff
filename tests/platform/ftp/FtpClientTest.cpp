#include "tests/platform/ftp/FtpClientTest.h"

#include <QFile>
#include <QTest>

namespace vandrel::test {

void FtpClientTest::setUp(const FtpPatience &times)
{
    m_events.clear();
    m_errorText.clear();
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    m_local = QDir(m_folder->filePath(QStringLiteral("local")));
    QVERIFY(QDir().mkpath(m_local.path()));
    m_drives = std::make_shared<DriveView>();
    m_drives->setDrive('d', QFile::encodeName(m_local.path()));

    m_control = std::make_unique<SocketFTPClient>(m_drives, times);
    m_control->setTransferType(QStringLiteral("binary"));
    m_errors = std::make_unique<QSignalSpy>(m_control.get(), &FTPClient::Error);
    FTPClient *control = m_control.get();
    connect(control, &FTPClient::Error, this, [this](bool, std::int32_t number, const QString &text) {
        m_errorText = text;
        note(QStringLiteral("Error %1").arg(number));
    });
    connect(control, &FTPClient::Connected, this, [this] { note(QStringLiteral("Connected")); });
    connect(control, &FTPClient::Downloaded, this, [this] { note(QStringLiteral("Downloaded")); });
    connect(control, &FTPClient::Uploaded, this, [this] { note(QStringLiteral("Uploaded")); });
    connect(control, &FTPClient::FileDeleted, this, [this] { note(QStringLiteral("FileDeleted")); });
    connect(control, &FTPClient::FileRenamed, this, [this] { note(QStringLiteral("FileRenamed")); });
    connect(control, &FTPClient::FileList, this, [this] { note(QStringLiteral("FileList")); });
    connect(control, &FTPClient::CurrentDirectory, this, [this](const QString &path) { note(path); });
    connect(control, &FTPClient::DirectoryCreated, this,
            [this] { note(QStringLiteral("DirectoryCreated")); });
    connect(control, &FTPClient::DirectoryRemoved, this,
            [this] { note(QStringLiteral("DirectoryRemoved")); });
}

void FtpClientTest::tearDown()
{
    m_errors.reset();
    m_control.reset();
    m_folder.reset();
}

bool FtpClientTest::connectTo(const QString &address, const QString &user)
{
    m_events.clear();
    m_control->setServerAddress(address);
    m_control->setUserName(user);
    m_control->setPassword(QStringLiteral("s3cret"));
    m_control->setConnectNow(true);
    const bool hasEnded = QTest::qWaitFor([this] { return !m_events.isEmpty(); }, patience);
    const bool isConnected = hasEnded && m_events == QStringList(QStringLiteral("Connected"));
    if (!isConnected)
        qWarning("not connected: %s %s", qPrintable(m_events.join(u' ')), qPrintable(m_errorText));
    m_events.clear();
    return isConnected;
}

void FtpClientTest::download(const QString &remote, const QString &localName)
{
    m_control->setRemoteFileName(remote);
    m_control->setLocalFileName(local(localName));
    m_control->setDownloadNow(true);
}

void FtpClientTest::upload(const QString &localName, const QString &remote)
{
    m_control->setRemoteFileName(remote);
    m_control->setLocalFileName(local(localName));
    m_control->setUploadNow(true);
}

QString FtpClientTest::listing()
{
    QSignalSpy listed(m_control.get(), &FTPClient::FileList);
    m_control->setListNow(true);
    return listed.wait(patience) ? listed.takeFirst().first().toString() : QString();
}

int FtpClientTest::nextError()
{
    if (m_errors->isEmpty() && !m_errors->wait(patience))
        return 0;
    return m_errors->takeFirst().at(1).toInt();
}

QByteArray FtpClientTest::contents(const QString &name) const
{
    QFile file(m_local.filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void FtpClientTest::put(const QString &name, const QByteArray &octets) const
{
    QFile file(m_local.filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(octets), octets.size());
}

QStringList FtpClientTest::localFiles() const
{
    return m_local.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

} // namespace vandrel::test
