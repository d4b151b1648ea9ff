#pragma once

#include <memory>

#include <QBuffer>
#include <QByteArray>
#include <QByteArrayView>
#include <QTemporaryFile>

namespace vandrel {

/// Keeps one mail while it is received: in memory up to a limit, beyond it in a temporary file that has no name and
/// goes with its last user, whatever happens to the program.
class MailSpool
{
public:
    /// `inMemory` in octets.
    explicit MailSpool(qsizetype inMemory);

    /// Adds octets. After a failure, such as a full disk, the rest is dropped.
    void write(QByteArrayView octets);
    qint64 size() const { return m_size; }
    /// Why the mail could not be kept; empty when it was.
    QString problem() const { return m_problem; }
    /// Drops what was kept and whatever comes.
    void discard();
    /// The mail, open for reading from its start. The spool is empty then.
    std::unique_ptr<QIODevice> take();

private:
    void moveToFile();
    void fail();

    qsizetype m_inMemory;
    QByteArray m_memory;
    std::unique_ptr<QTemporaryFile> m_file;
    qint64 m_size = 0;
    bool m_discarding = false;
    QString m_problem;
};

} // namespace vandrel
