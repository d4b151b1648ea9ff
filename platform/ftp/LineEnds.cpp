#include "platform/ftp/LineEnds.h"

#include <utility>

namespace vandrel {

QByteArray LineEndsReceived::convert(QByteArrayView octets)
{
    QByteArray converted;
    converted.reserve(octets.size() + 1);
    for (const char octet : octets) {
        if (m_hasReturn && octet != '\n')
            converted += '\r';
        m_hasReturn = octet == '\r';
        if (!m_hasReturn)
            converted += octet;
    }
    return converted;
}

QByteArray LineEndsReceived::rest()
{
    return std::exchange(m_hasReturn, false) ? QByteArray("\r") : QByteArray();
}

QByteArray LineEndsSent::convert(QByteArrayView octets)
{
    QByteArray converted;
    converted.reserve(octets.size() + octets.size() / 16);
    for (const char octet : octets) {
        if (octet == '\n' && m_last != '\r')
            converted += '\r';
        converted += octet;
        m_last = octet;
    }
    return converted;
}

} // namespace vandrel
