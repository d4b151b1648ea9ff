#pragma once

#include <QByteArray>
#include <QString>

namespace vandrel {

/// Text in a code page whose characters take more than one octet, decoded by the system's converter.
class MultiByteText
{
public:
    /// The converter's name for a code page (932, 936, 949, 950, 1361, 65001); null when it is none of these.
    static const char *encodingOfCodePage(int page);

    explicit MultiByteText(int page);
    ~MultiByteText();
    MultiByteText(const MultiByteText &) = delete;
    MultiByteText &operator=(const MultiByteText &) = delete;

    /// Octets that form no character become characters of the same value.
    QString decode(QByteArrayView octets);

private:
    void *m_converter;
};

} // namespace vandrel
