#include "platform/mail/pop/MailSpool.h"

#include <QCoreApplication>
#include <QDir>

namespace vandrel {

namespace {

// Small pieces are gathered to this many octets before they reach the file.
constexpr qsizetype pieceSize = 256 * 1024;

} // namespace

MailSpool::MailSpool(qsizetype inMemory) : m_inMemory(inMemory) { }

void MailSpool::write(QByteArrayView octets)
{
    m_size += octets.size();
    if (m_discarding)
        return;
    m_memory.append(octets.data(), octets.size());
    if (m_memory.size() > (m_file ? pieceSize : m_inMemory))
        moveToFile();
}

void MailSpool::moveToFile()
{
    if (!m_file) {
        m_file = std::make_unique<QTemporaryFile>(QDir::tempPath() + QStringLiteral("/vandrel-mail"));
        if (!m_file->open()) {
            fail();
            return;
        }
    }
    if (m_file->write(m_memory) != m_memory.size() || !m_file->flush())
        fail();
    else
        m_memory.resize(0);
}

void MailSpool::fail()
{
    m_problem = m_file->errorString();
    discard();
}

void MailSpool::discard()
{
    m_discarding = true;
    m_memory = QByteArray();
    m_file.reset();
}

std::unique_ptr<QIODevice> MailSpool::take()
{
    if (m_file && !m_memory.isEmpty())
        moveToFile();
    if (m_file) {
        m_file->seek(0);
        return std::move(m_file);
    }
    auto buffer = std::make_unique<QBuffer>();
    buffer->setData(std::exchange(m_memory, QByteArray()));
    buffer->open(QIODevice::ReadOnly);
    return buffer;
}

} // namespace vandrel
