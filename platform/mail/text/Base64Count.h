#pragma once

#include <cstdint>

#include <QByteArrayView>

namespace vandrel {

/// Without branches, so that the compiler makes it look at many octets at once.
inline bool isDigitOfBase64(char octet)
{
    constexpr unsigned letters = 26;
    constexpr unsigned decimals = 10;
    const auto value = static_cast<unsigned char>(octet);
    const auto letter = static_cast<unsigned char>((value | 0x20U) - 'a');
    const auto decimal = static_cast<unsigned char>(value - '0');
    return static_cast<bool>((letter < letters) | (decimal < decimals) | (value == '+') | (value == '/'));
}

/// How many octets base64 stands for: four of its digits for three of them, with whatever else between. It is counted,
/// since decoding a large file for its size alone would take several times as long.
class Base64Count
{
public:
    /// The next octets of the encoded text, in pieces of any size.
    void add(QByteArrayView octets);
    qint64 size();

private:
    void endGroup();

    qint64 m_digits = 0;
    qint64 m_size = 0;
};

} // namespace vandrel
