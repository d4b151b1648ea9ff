#include "controls/Clipboard.h"

#include <QClipboard>
#include <QGuiApplication>

#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

void requirePlainText(qint32 format)
{
    if (format != Clipboard::PlainText)
        throw RuntimeError(error::InvalidProcedureCall);
}

QString withLineFeeds(QString text)
{
    return text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n');
}

} // namespace

void Clipboard::SetText(const QString &text, qint32 format)
{
    requirePlainText(format);
    // The toolkit turns line feeds into what the system's programs expect.
    QGuiApplication::clipboard()->setText(withLineFeeds(text));
}

QString Clipboard::GetText(qint32 format)
{
    requirePlainText(format);
    return withLineFeeds(QGuiApplication::clipboard()->text()).replace(u'\n', QStringLiteral("\r\n"));
}

} // namespace vandrel
