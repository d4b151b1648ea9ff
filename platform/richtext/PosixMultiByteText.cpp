#include "platform/richtext/PosixMultiByteText.h"

#include <array>
#include <cerrno>

#include <iconv.h>

namespace vandrel {

namespace {

const auto noConverter = reinterpret_cast<iconv_t>(-1);

} // namespace

const char *MultiByteText::encodingOfCodePage(int page)
{
    switch (page) {
    case 932:
        return "CP932";
    case 936:
        return "GBK";
    case 949:
        return "CP949";
    case 950:
        return "BIG5";
    case 1361:
        return "JOHAB";
    case 65001:
        return "UTF-8";
    default:
        return nullptr;
    }
}

MultiByteText::MultiByteText(int page) : m_converter(iconv_open("UTF-16LE", encodingOfCodePage(page))) { }

MultiByteText::~MultiByteText()
{
    if (m_converter != noConverter)
        iconv_close(m_converter);
}

QString MultiByteText::decode(QByteArrayView octets)
{
    if (m_converter == noConverter)
        return QString::fromLatin1(octets);
    iconv(m_converter, nullptr, nullptr, nullptr, nullptr);
    QString text;
    // The converter's interface lacks a const that its promise has.
    char *in = const_cast<char *>(octets.data()); // NOLINT(cppcoreguidelines-pro-type-const-cast)
    auto left = static_cast<std::size_t>(octets.size());
    std::array<char16_t, 512> buffer;
    while (left > 0) {
        char *out = reinterpret_cast<char *>(buffer.data());
        std::size_t room = sizeof(buffer);
        const std::size_t done = iconv(m_converter, &in, &left, &out, &room);
        const bool stopped = done == static_cast<std::size_t>(-1) && errno != E2BIG;
        text.append(
            QStringView(buffer.data(), static_cast<qsizetype>((sizeof(buffer) - room) / sizeof(char16_t))));
        if (stopped && left > 0) {
            // An octet without its partner, or one that the page leaves undefined.
            text.append(QLatin1Char(*in));
            ++in;
            --left;
        }
    }
    return text;
}

} // namespace vandrel
