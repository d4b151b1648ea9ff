#include "platform/mail/text/Base64Count.h"

namespace vandrel {

void Base64Count::add(QByteArrayView octets)
{
    while (!octets.isEmpty()) {
        const qsizetype padding = octets.indexOf('=');
        const QByteArrayView run = octets.first(padding < 0 ? octets.size() : padding);
        std::uint32_t count = 0;
        for (const char octet : run)
            count += isDigitOfBase64(octet) ? 1 : 0;
        m_digits += count;
        if (padding < 0)
            return;
        endGroup();
        octets = octets.sliced(padding + 1);
    }
}

qint64 Base64Count::size()
{
    endGroup();
    return m_size;
}

// The first "=" ends what has been begun; a second one finds nothing.
void Base64Count::endGroup()
{
    m_size += m_digits * 3 / 4;
    m_digits = 0;
}

} // namespace vandrel
