#pragma once

#include <memory>

#include <QDir>
#include <QObject>
#include <QSignalSpy>
#include <QStringList>
#include <QTemporaryDir>

#include "controls/DriveView.h"
#include "platform/ftp/SocketFTPClient.h"

namespace vandrel::test {

/// What the tests of the FTP control have in common: the control, what it raises, and a local folder, its drive d:.
class FtpClientTest : public QObject
{
    Q_OBJECT

protected:
    static constexpr int patience = 30'000;

    /// Before and after each test.
    void setUp(const FtpPatience &times = {});
    void tearDown();

    /// Connects with the password "s3cret"; false where that fails. What was raised is forgotten.
    bool connectTo(const QString &address, const QString &user = QStringLiteral("vandrel"));
    void download(const QString &remote, const QString &local);
    void upload(const QString &local, const QString &remote);
    /// The listing of the current directory; none when it does not come.
    QString listing();
    /// The number of the next error; 0 when none comes.
    int nextError();
    /// The text of the last error.
    QString errorText() const { return m_errorText; }

    QByteArray contents(const QString &name) const;
    void put(const QString &name, const QByteArray &octets) const;
    /// As the control is told it.
    static QString local(const QString &name) { return QStringLiteral("d:\\") + name; }
    /// Whatever is in the local folder, hidden files as well.
    QStringList localFiles() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    QDir m_local;
    std::shared_ptr<DriveView> m_drives;
    std::unique_ptr<SocketFTPClient> m_control;
    std::unique_ptr<QSignalSpy> m_errors;
    /// What the control has raised: "Error 550", "Uploaded", or a directory.
    QStringList m_events;

private:
    void note(const QString &event) { m_events.append(event); }

    QString m_errorText;
};

} // namespace vandrel::test
