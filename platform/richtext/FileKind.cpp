#include "platform/richtext/FileKind.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/richtext/PlainText.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

using namespace std::string_view_literals;

constexpr auto saveAsRtf = u"Open it in a program that knows it and save it there as RTF.";
constexpr auto unpackFirst = u"Unpack it first and open what it holds.";
constexpr auto notADocument = u"It is no document that a text editor could show.";

struct Signature {
    std::string_view octets;
    const char16_t *format;
    const char16_t *advice;
};

// Longer signatures stand before shorter ones that begin alike.
constexpr std::array signatures{
    Signature{"\xD0\xCF\x11\xE0"sv, u"a binary word processor document (OLE compound file)", saveAsRtf},
    Signature{"\x31\xBE"sv, u"a Write document", saveAsRtf},
    Signature{"\x32\xBE"sv, u"a Write document", saveAsRtf},
    Signature{"\x9B\xA5"sv, u"an old binary word processor document", saveAsRtf},
    Signature{"\xDB\xA5"sv, u"an old binary word processor document", saveAsRtf},
    Signature{"\xFFWPC"sv, u"a binary word processor document", saveAsRtf},
    Signature{"PK\x03\x04"sv, u"a zip archive", unpackFirst},
    Signature{"PK\x05\x06"sv, u"an empty zip archive", unpackFirst},
    Signature{"%PDF-"sv, u"a PDF document", u"Open it in a PDF viewer and copy the text from there."},
    Signature{"\x1F\x8B"sv, u"a gzip archive", unpackFirst},
    Signature{"BZh"sv, u"a bzip2 archive", unpackFirst},
    Signature{"\xFD"
              "7zXZ\0"sv,
              u"an xz archive", unpackFirst},
    Signature{"7z\xBC\xAF\x27\x1C"sv, u"a 7z archive", unpackFirst},
    Signature{"Rar!\x1A\x07"sv, u"a rar archive", unpackFirst},
    Signature{"\x28\xB5\x2F\xFD"sv, u"a zstd archive", unpackFirst},
    Signature{"\x89PNG\r\n\x1A\n"sv, u"a PNG picture", notADocument},
    Signature{"\xFF\xD8\xFF"sv, u"a JPEG picture", notADocument},
    Signature{"GIF87a"sv, u"a GIF picture", notADocument},
    Signature{"GIF89a"sv, u"a GIF picture", notADocument},
    Signature{"II*\0"sv, u"a TIFF picture", notADocument},
    Signature{"MM\0*"sv, u"a TIFF picture", notADocument},
    Signature{"\x7F"
              "ELF"sv,
              u"a program", notADocument},
    Signature{"SQLite format 3\0"sv, u"a database", notADocument},
};

[[noreturn]] void refuse(const QString &shownName, const char16_t *format, const char16_t *advice)
{
    throw RuntimeError(error::InvalidFileFormat,
                       QStringLiteral("%1. \"%2\" is %3, which cannot be shown. %4")
                           .arg(runtimeErrorText(error::InvalidFileFormat), shownName,
                                QString::fromUtf16(format), QString::fromUtf16(advice)));
}

// A short signature could also begin a text, such as a recipe's "1\u00BE cups"; but a text has none of the
// small values that fill every binary header.
bool couldBeText(const QByteArray &head, std::string_view signature)
{
    return signature.size() <= 3
        && std::none_of(head.begin(), head.end(), [](char octet) { return octet >= 0 && octet < 8; });
}

void refuseKnownFormats(const QByteArray &head, const QString &shownName)
{
    // The two documents that are zip archives inside have a name of their own for their users.
    if (head.startsWith("PK\x03\x04") && head.contains("application/vnd.oasis.opendocument"))
        refuse(shownName, u"an OpenDocument file", saveAsRtf);
    if (head.startsWith("PK\x03\x04") && head.contains("[Content_Types].xml"))
        refuse(shownName, u"an Office Open XML document (such as .docx)", saveAsRtf);
    for (const Signature &signature : signatures) {
        const QByteArray octets = QByteArray::fromRawData(signature.octets.data(),
                                                          static_cast<qsizetype>(signature.octets.size()));
        if (head.startsWith(octets) && !couldBeText(head, signature.octets))
            refuse(shownName, signature.format, signature.advice);
    }
}

bool isControl(char octet)
{
    constexpr auto usedInTexts = "\t\n\v\f\r\b\x1A\x1B"sv;
    const auto value = static_cast<unsigned char>(octet);
    return value < 0x20 && usedInTexts.find(octet) == std::string_view::npos;
}

// A text may hold a few stray control characters, such as the zeros that a crash leaves in a log.
bool looksBinary(const QByteArray &head)
{
    const auto controls = std::count_if(head.begin(), head.end(), isControl);
    const bool zeros = head.contains('\0');
    return controls * (zeros ? 64 : 8) > head.size();
}

QByteArray withoutMarkAndBlanks(const QByteArray &head)
{
    const QByteArray rest = head.startsWith("\xEF\xBB\xBF") ? head.mid(3) : head;
    const auto isBlank
        = [](char octet) { return octet == ' ' || (octet >= '\t' && octet <= '\r') || octet == '\0'; };
    const auto first = std::find_if_not(rest.begin(), rest.end(), isBlank);
    return rest.mid(first - rest.begin());
}

} // namespace

FileKind recogniseFile(const QByteArray &head, const QString &shownName)
{
    if (withoutMarkAndBlanks(head).left(5).toLower() == "{\\rtf")
        return FileKind::RichText;
    refuseKnownFormats(head, shownName);
    const TextEncoding encoding = detectEncoding(head, Extent::Beginning);
    const bool zerosAreUsual = encoding != TextEncoding::Utf8 && encoding != TextEncoding::Windows1252;
    if (!zerosAreUsual && looksBinary(head))
        refuse(shownName, u"a binary file of an unknown kind", notADocument);
    return FileKind::PlainText;
}

} // namespace vandrel
