#include "platform/richtext/RtfReader.h"

#include <algorithm>

#include <QTextFrame>
#include <QTextOption>

#include "platform/richtext/RtfParser.h"
#include "runtime/RuntimeError.h"
#include "runtime/Twips.h"

namespace vandrel {

namespace {

/// What may stand before the first brace.
QByteArrayView withoutLead(QByteArrayView octets)
{
    constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF");
    if (octets.startsWith(byteOrderMark))
        octets = octets.sliced(byteOrderMark.size());
    const auto *first = std::find_if(octets.begin(), octets.end(), [](char octet) {
        return octet != ' ' && octet != '\t' && octet != '\r' && octet != '\n' && octet != '\0';
    });
    return octets.sliced(first - octets.begin());
}

void keepPrologue(QTextDocument &document, RtfPrologue &&prologue)
{
    const RtfProloguePointer kept = std::make_shared<const RtfPrologue>(std::move(prologue));
    QTextFrameFormat format = document.rootFrame()->frameFormat();
    format.setProperty(richtext::Prologue, QVariant::fromValue(kept));
    document.rootFrame()->setFrameFormat(format);
}

void setTabDistance(QTextDocument &document, int twips)
{
    if (twips == 0)
        return;
    QTextOption option = document.defaultTextOption();
    option.setTabStopDistance(static_cast<double>(twips) / twipsPerPixel);
    document.setDefaultTextOption(option);
}

} // namespace

bool looksLikeRtf(QByteArrayView start)
{
    return withoutLead(start)
               .first(std::min<qsizetype>(withoutLead(start).size(), 5))
               .compare("{\\rtf", Qt::CaseInsensitive)
        == 0;
}

LoadedDocument
readRtf(const QByteArray &rtf, DocumentProgress &progress, RtfExtent extent, const RtfLimits &limits)
{
    const QByteArrayView octets = withoutLead(rtf);
    if (!looksLikeRtf(octets))
        throw RuntimeError(error::InvalidFileFormat,
                           QStringLiteral("The document cannot be opened: it is not rich text (RTF)."));
    LoadedDocument loaded;
    auto document = std::make_unique<RichTextDocument>();
    document->setUndoRedoEnabled(false);
    progress.total = octets.size();
    RtfParser parser(octets, *document, progress, extent, limits);
    if (!parser.run())
        return loaded;
    const RtfContents contents = parser.takeContents();
    progress.done = octets.size();
    progress.total = octets.size() + contents.body.text().size() + contents.notes.text().size();
    if (!assembleRtf(*document, contents, progress))
        return loaded;
    setTabDistance(*document, parser.tabDistance());
    keepPrologue(*document, parser.takePrologue());
    document->setUndoRedoEnabled(true);
    document->setModified(false);
    progress.done = progress.total.load();
    loaded.document = std::move(document);
    loaded.notices = rtfNotices(parser.losses());
    return loaded;
}

} // namespace vandrel
