#pragma once

#include <memory>

#include <QByteArray>
#include <QString>

namespace vandrel {

/// Code page numbers with a meaning of their own.
namespace codepage {
inline constexpr int Utf8 = 65001;
/// Octets of a symbol font: 0x21 to 0xFF stand for U+F021 to U+F0FF.
inline constexpr int Symbol = 42;
inline constexpr int Western = 1252;
inline constexpr int MacRoman = 10000;
} // namespace codepage

/// The code page that a font's \fcharset stands for; 0 for one that leaves it to the document (default, 1,
/// and everything unknown).
int codePageOfCharset(int charset);

/// True for a page that decode() knows.
bool isKnownCodePage(int page);

/// Decodes octets of any code page. Keeps the system's converters open between calls; one object serves one
/// thread.
class CodePageDecoder
{
public:
    CodePageDecoder();
    ~CodePageDecoder();

    /// Decodes `octets` whole. Nothing is lost: an octet that the page leaves undefined becomes the C1
    /// character of the same value. An unknown page is taken as Western.
    QString decode(int page, QByteArrayView octets);

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace vandrel
