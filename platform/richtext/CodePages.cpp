#include "platform/richtext/CodePages.h"

#include <algorithm>

#include <QHash>

#include "platform/richtext/CodePageTables.h"
#include "platform/richtext/PosixMultiByteText.h"

namespace vandrel {

namespace {

const CodePageTable *findTable(int page)
{
    const auto found
        = std::lower_bound(codePageTables.begin(), codePageTables.end(), page,
                           [](const CodePageTable &table, int wanted) { return table.page < wanted; });
    return found != codePageTables.end() && found->page == page ? &*found : nullptr;
}

QString decodeSingle(const CodePageTable &table, QByteArrayView octets)
{
    QString text(octets.size(), Qt::Uninitialized);
    std::transform(octets.begin(), octets.end(), text.begin(), [&table](char octet) {
        const auto value = static_cast<uchar>(octet);
        return QChar(value < 0x80 ? char16_t{value} : table.upper[value - 0x80u]);
    });
    return text;
}

QString decodeSymbols(QByteArrayView octets)
{
    QString text(octets.size(), Qt::Uninitialized);
    std::transform(octets.begin(), octets.end(), text.begin(), [](char octet) {
        const auto value = static_cast<uchar>(octet);
        return QChar(value > 0x20 ? static_cast<char16_t>(0xF000u + value) : char16_t{value});
    });
    return text;
}

} // namespace

int codePageOfCharset(int charset)
{
    switch (charset) {
    case 0:
        return codepage::Western;
    case 2:
        return codepage::Symbol;
    case 77:
        return codepage::MacRoman;
    case 78:
    case 128:
        return 932;
    case 79:
    case 129:
        return 949;
    case 130:
        return 1361;
    case 80:
    case 134:
        return 936;
    case 81:
    case 136:
        return 950;
    case 161:
        return 1253;
    case 162:
        return 1254;
    case 163:
        return 1258;
    case 177:
        return 1255;
    case 178:
        return 1256;
    case 186:
        return 1257;
    case 204:
        return 1251;
    case 222:
        return 874;
    case 238:
        return 1250;
    case 254:
        return 437;
    case 255:
        return 850;
    default:
        return 0;
    }
}

bool isKnownCodePage(int page)
{
    return page == codepage::Utf8 || page == codepage::Symbol || findTable(page)
        || MultiByteText::encodingOfCodePage(page);
}

class CodePageDecoder::Private
{
public:
    QHash<int, std::shared_ptr<MultiByteText>> converters;

    MultiByteText *converter(int page)
    {
        auto found = converters.find(page);
        if (found == converters.end())
            found = converters.insert(page, std::make_shared<MultiByteText>(page));
        return found->get();
    }
};

CodePageDecoder::CodePageDecoder() : d(std::make_unique<Private>()) { }

CodePageDecoder::~CodePageDecoder() = default;

QString CodePageDecoder::decode(int page, QByteArrayView octets)
{
    if (page == codepage::Symbol)
        return decodeSymbols(octets);
    if (const CodePageTable *table = findTable(page))
        return decodeSingle(*table, octets);
    if (page == codepage::Utf8 || MultiByteText::encodingOfCodePage(page))
        return d->converter(page)->decode(octets);
    return decodeSingle(*findTable(codepage::Western), octets);
}

} // namespace vandrel
