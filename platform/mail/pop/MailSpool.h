#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>

#include <QByteArray>
#include <QByteArrayView>
#include <QIODevice>
#include <QTemporaryFile>

namespace vandrel {

/// Hands one mail on, as it is received, to the thread that reads it. Usable from any thread.
class MailSpool
{
public:
    /// Adds octets; they are dropped once the mail is unwanted.
    void add(QByteArrayView octets);
    /// The mail is whole.
    void finish();
    /// The mail is unwanted: what waits is dropped, whatever comes is, and the reader waits no more.
    void discard();
    /// Waits for octets and takes all there are; nothing at the end of the mail, and when it is unwanted.
    QByteArray take();

private:
    std::mutex m_mutex;
    std::condition_variable m_change;
    QByteArray m_waiting;
    bool m_ended = false;
    bool m_discarded = false;
};

/// What came through a spool as a device that can be read again from any place: kept in memory up to a limit, beyond it
/// in a temporary file that goes with the device, whatever happens to the program. Reading waits for what has not come
/// yet. For one thread, which is not the user interface's unless the mail is whole.
class SpooledMail : public QIODevice
{
    Q_OBJECT

public:
    /// `inMemory` in octets. The device is open.
    SpooledMail(std::shared_ptr<MailSpool> spool, qint64 inMemory);

    /// Why the mail could not be kept, in which case it ends early; empty when it was.
    QString problem() const { return m_problem; }

protected:
    qint64 readData(char *data, qint64 most) override;
    qint64 writeData(const char *data, qint64 size) override;

private:
    // Unbuffered: octets are read as soon as they are written.
    class File : public QTemporaryFile
    {
    public:
        File();
        bool openForBoth() { return QTemporaryFile::open(ReadWrite | Unbuffered); }
    };

    bool waitFor(qint64 position);
    void keep(const QByteArray &octets);
    void moveToFile(const QByteArray &more);
    void fail();

    const std::shared_ptr<MailSpool> m_spool;
    const qint64 m_inMemory;
    // All of the mail, or of one in a file the octets that came last.
    QByteArray m_memory;
    std::unique_ptr<File> m_file;
    qint64 m_kept = 0;
    bool m_ended = false;
    QString m_problem;
};

} // namespace vandrel
