#include "controls/RichTextClipboard.h"

#include <array>

#include <QTextDocumentFragment>

#include "controls/RichTextPaste.h"
#include "controls/RichTextPositions.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

// Programs do not agree on the name of the format.
constexpr std::array rtfFormats{"text/rtf", "application/rtf", "text/richtext"};

// Formatting a selection takes time, and the desktop asks for every selection made with the mouse.
constexpr int largestRtfSelection = 10'000'000;

QByteArray rtfOf(const QMimeData &data)
{
    for (const char *format : rtfFormats) {
        const QByteArray rtf = data.data(QString::fromLatin1(format));
        if (!rtf.isEmpty())
            return rtf;
    }
    return {};
}

std::unique_ptr<RichTextDocument> documentOf(const QByteArray &rtf, const DocumentFiles &files)
{
    if (rtf.isEmpty())
        return {};
    try {
        return files.fromRtf(rtf).document;
    } catch (const RuntimeError &) {
        // What another program offers may be broken; its plain text is then as good as it gets.
        return {};
    }
}

QString plainTextOf(const QMimeData &data)
{
    if (data.hasText() && !data.text().isEmpty())
        return data.text();
    return QTextDocumentFragment::fromHtml(data.html()).toPlainText();
}

} // namespace

std::unique_ptr<QMimeData> richTextMimeData(const QTextCursor &selection, const DocumentFiles &files)
{
    const QTextDocument &document = *selection.document();
    const int from = selection.selectionStart();
    const int to = selection.selectionEnd();
    auto data = std::make_unique<QMimeData>();
    data->setText(RichTextPositions(document).text(from, to, u"\n"));
    if (to - from <= largestRtfSelection) {
        const QByteArray rtf = files.toRtf(document, from, to);
        for (const char *format : rtfFormats)
            data->setData(QString::fromLatin1(format), rtf);
    }
    return data;
}

bool hasRichText(const QMimeData &data)
{
    return data.hasText() || data.hasHtml() || !rtfOf(data).isEmpty();
}

void insertRichTextMimeData(QTextCursor cursor, const QMimeData &data, const DocumentFiles &files)
{
    const std::unique_ptr<RichTextDocument> pasted = documentOf(rtfOf(data), files);
    if (!pasted) {
        cursor.insertText(plainTextOf(data));
        return;
    }
    insertRichText(cursor, *pasted);
}

} // namespace vandrel
