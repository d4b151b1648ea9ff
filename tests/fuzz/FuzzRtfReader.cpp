// Reads any octets as RTF. Whatever they are, the reader gives a document or its own error.
#include <cstdint>

#include <QGuiApplication>

#include "platform/richtext/RtfReader.h"
#include "runtime/RuntimeError.h"

namespace {

/// Formats ask the application for its font, so there is one, without a screen.
void ensureApplication()
{
    static int argumentCount = 1;
    static char name[] = "fuzz_rtf_reader";
    static char *arguments[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QGuiApplication application(argumentCount, arguments);
}

/// Small limits, so that their edges are met.
vandrel::RtfLimits smallLimits()
{
    vandrel::RtfLimits limits;
    limits.groups = 64;
    limits.fonts = 16;
    limits.colours = 16;
    limits.tableCells = 200;
    limits.tables = 20;
    limits.characters = 20'000;
    return limits;
}

void read(const QByteArray &rtf, vandrel::RtfExtent extent, const vandrel::RtfLimits &limits)
{
    vandrel::DocumentProgress progress;
    try {
        const vandrel::LoadedDocument loaded = vandrel::readRtf(rtf, progress, extent, limits);
        if (!loaded.document)
            qFatal("no document was read, and no error raised");
    } catch (const vandrel::RuntimeError &failure) {
        if (failure.number() != vandrel::error::InvalidFileFormat)
            throw;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    ensureApplication();
    const QByteArray rtf(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    read(rtf, vandrel::RtfExtent::Document, {});
    read(rtf, vandrel::RtfExtent::Part, smallLimits());
    return 0;
}
