#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include <QByteArray>
#include <QByteArrayView>
#include <QIODevice>
#include <QTemporaryFile>

#include "platform/mail/text/MailText.h"

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
    /// Waits for octets and puts all there are in the place of `octets`, whose room is used again for what comes; nothing
    /// at the end of the mail, and when it is unwanted.
    void take(QByteArray &octets);

private:
    std::mutex m_mutex;
    std::condition_variable m_change;
    QByteArray m_waiting;
    bool m_ended = false;
    bool m_discarded = false;
};

/// What came through a spool as a device that can be read again from any place: kept in memory up to a limit, beyond it
/// in a temporary file that goes with the device, whatever happens to the program. Of what need not be kept, most is
/// not; reading ends there. Reading waits for what has not come yet. For one thread, which is not the user interface's
/// unless the mail is whole.
class SpooledMail : public QIODevice, public MailKeeper
{
    Q_OBJECT

public:
    /// `inMemory` in octets. The device is open.
    SpooledMail(std::shared_ptr<MailSpool> spool, qint64 inMemory);

    /// Why the mail could not be kept, in which case it ends early; empty when it was.
    QString problem() const { return m_problem; }
    /// How many octets had to be written to a file.
    qint64 writtenToFile() const { return m_writtenToFile; }

    void keepOnlyTo(qint64 offset) override;
    void keepAgain() override;

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

    struct Range {
        qint64 begin = 0;
        qint64 end = 0;
    };

    bool waitFor(qint64 position);
    void takeMore();
    void putLatestAway();
    void leaveOut(Range octets);
    void writeLatest();
    qint64 endOfReadable(qint64 position) const;
    void fail();

    const std::shared_ptr<MailSpool> m_spool;
    const qint64 m_inMemory;
    // The mail's beginning; what came latest, which ends at m_come; and between them what is in the file, each octet at
    // its place in the mail, or was left out.
    QByteArray m_beginning;
    QByteArray m_latest;
    std::unique_ptr<File> m_file;
    std::vector<Range> m_leftOut;
    qint64 m_come = 0;
    std::optional<qint64> m_keptTo;
    qint64 m_writtenToFile = 0;
    bool m_ended = false;
    QString m_problem;
};

} // namespace vandrel
