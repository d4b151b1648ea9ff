#include "platform/pictures/WantedFile.h"

#include <utility>

namespace vandrel {

WantedFile::WantedFile(std::unique_ptr<QFile> file, std::function<bool()> isWanted)
    : m_file(std::move(file)), m_isWanted(std::move(isWanted))
{
    open(QIODevice::ReadOnly);
}

bool WantedFile::seek(qint64 position)
{
    return QIODevice::seek(position) && m_file->seek(position);
}

qint64 WantedFile::readData(char *data, qint64 maxSize)
{
    return m_isWanted() ? m_file->read(data, maxSize) : -1;
}

qint64 WantedFile::writeData(const char *, qint64)
{
    return -1;
}

} // namespace vandrel
