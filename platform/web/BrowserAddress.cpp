#include "platform/web/BrowserAddress.h"

#include <QRegularExpression>
#include <QStringList>

#include "controls/DriveView.h"
#include "platform/web/BuiltInPages.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

using Kind = BrowserAddress::Kind;

bool isDrivePath(const QString &text)
{
    static const QRegularExpression drive(QStringLiteral(R"(^[A-Za-z]:($|[\\/]))"));
    return text.startsWith(u'\\') || drive.match(text).hasMatch();
}

BrowserAddress filePage(const QString &path, const DriveView &drives)
{
    try {
        return {Kind::Page, QUrl::fromLocalFile(QString::fromUtf8(drives.toNative(path))), {}, false};
    } catch (const RuntimeError &) {
        return {Kind::Unusable, {}, {}, false};
    }
}

// The scheme of a full address; empty where there is none, as in "host:80/path".
QString schemeOf(const QString &text)
{
    static const QRegularExpression scheme(QStringLiteral("^([A-Za-z][A-Za-z0-9+.-]*):(?!\\d+(/|$|\\?|#))"));
    const QRegularExpressionMatch match = scheme.match(text);
    return match.hasMatch() ? match.captured(1).toLower() : QString();
}

// A name that can be a host's: "localhost", or one with a point, a port or a path behind it. A lone word is none.
bool looksLikeHost(const QUrl &url, const QString &typed)
{
    const QString host = url.host();
    if (host.isEmpty() || typed.contains(u' '))
        return false;
    return host == QStringLiteral("localhost") || host.contains(u'.') || host.contains(u':')
        || url.port() >= 0 || typed.contains(u'/');
}

BrowserAddress hostPage(const QString &typed)
{
    const QUrl url(QStringLiteral("https://") + typed, QUrl::TolerantMode);
    if (!url.isValid() || !looksLikeHost(url, typed))
        return {Kind::Unusable, {}, {}, false};
    return {Kind::Page, url, {}, true};
}

BrowserAddress fullAddress(const QString &scheme, const QString &typed)
{
    if (scheme == QStringLiteral("javascript"))
        return {Kind::Script, {}, QUrl::fromPercentEncoding(typed.mid(scheme.size() + 1).toUtf8()), false};
    const QUrl url(typed, QUrl::TolerantMode);
    const bool needsHost = scheme.startsWith(QStringLiteral("http"));
    if (!isPageScheme(scheme) || !url.isValid() || (needsHost && url.host().isEmpty()))
        return {Kind::Unusable, {}, {}, false};
    return {Kind::Page, url, {}, false};
}

} // namespace

BrowserAddress BrowserAddress::parse(const QString &typed, const DriveView &drives)
{
    const QString text = typed.trimmed();
    if (text.isEmpty())
        return {};
    if (isDrivePath(text) || text.startsWith(u'/'))
        return filePage(text, drives);
    const QString scheme = schemeOf(text);
    return scheme.isEmpty() ? hostPage(text) : fullAddress(scheme, text);
}

QUrl plainTwin(const QUrl &encrypted)
{
    QUrl plain = encrypted;
    plain.setScheme(QStringLiteral("http"));
    return plain;
}

bool isPageScheme(const QString &scheme)
{
    static const QStringList schemes{QStringLiteral("http"),        QStringLiteral("https"),
                                     QStringLiteral("file"),        QStringLiteral("about"),
                                     QStringLiteral("data"),        QStringLiteral("blob"),
                                     QStringLiteral("view-source"), builtInScheme()};
    return schemes.contains(scheme);
}

} // namespace vandrel
