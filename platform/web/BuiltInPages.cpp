#include "platform/web/BuiltInPages.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QWebEngineUrlRequestJob>
#include <QWebEngineUrlScheme>

namespace vandrel {

namespace {

QString pageText(const char *text)
{
    return QCoreApplication::translate("BuiltInPages", text).toHtmlEscaped();
}

QString document(const QString &title, const QString &body)
{
    return QStringLiteral(
               "<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>%1</title><style>"
               ":root{color-scheme:light dark}body{font:16px/1.5 sans-serif;max-width:40em;margin:3em "
               "auto;padding:0 1em}h1{font-size:1.6em}code{font-size:1.05em}li{margin:.3em 0}"
               "</style></head><body><h1>%1</h1>%2</body></html>")
        .arg(title, body);
}

QString listItem(const QString &html)
{
    return QStringLiteral("<li>") + html + QStringLiteral("</li>");
}

QString startDocument()
{
    const std::pair<const char *, const char *> ways[]{
        {"example.org", QT_TRANSLATE_NOOP("BuiltInPages", "a host, with or without a port and a path")},
        {"https://example.org/page", QT_TRANSLATE_NOOP("BuiltInPages", "a full address")},
        {"c:\\page.htm", QT_TRANSLATE_NOOP("BuiltInPages", "a file on one of the drives")},
        {"/usr/share/doc/", QT_TRANSLATE_NOOP("BuiltInPages", "a file or a folder by the system's own path")},
    };
    QString items;
    for (const auto &[example, meaning] : ways)
        items += listItem(
            QStringLiteral("<code>%1</code>: %2").arg(QString::fromLatin1(example), pageText(meaning)));
    const QString body
        = QStringLiteral("<p>%1</p><ul>%2</ul><p>%3</p>")
              .arg(pageText("Type into the box above and press Enter:"), items,
                   pageText("Ctrl+L goes to the box, Ctrl+F finds in the page, Ctrl+plus, Ctrl+minus "
                            "and Ctrl+0 zoom, Ctrl+P prints."));
    return document(pageText("Start page"), body);
}

QString searchDocument()
{
    const std::pair<const char *, const char *> services[]{
        {"DuckDuckGo", "https://duckduckgo.com/"},  {"Startpage", "https://www.startpage.com/"},
        {"Qwant", "https://www.qwant.com/"},        {"Ecosia", "https://www.ecosia.org/"},
        {"Bing", "https://www.bing.com/"},          {"Google", "https://www.google.com/"},
        {"Wikipedia", "https://www.wikipedia.org/"}};
    QString items;
    for (const auto &[name, address] : services)
        items += listItem(QStringLiteral("<a href=\"%2\">%1</a>")
                              .arg(QString::fromLatin1(name), QString::fromLatin1(address)));
    return document(pageText("Search"),
                    QStringLiteral("<p>%1</p><ul>%2</ul>")
                        .arg(pageText("Nothing is sent before you choose one of these:"), items));
}

QUrl builtIn(const QString &page)
{
    QUrl url;
    url.setScheme(builtInScheme());
    url.setHost(page);
    return url;
}

QString documentAt(const QUrl &url)
{
    if (url.host() == startPage().host())
        return startDocument();
    if (url.host() == searchPage().host())
        return searchDocument();
    return {};
}

} // namespace

QString builtInScheme()
{
    return QStringLiteral("vandrel");
}

QUrl startPage()
{
    return builtIn(QStringLiteral("start"));
}

QUrl searchPage()
{
    return builtIn(QStringLiteral("search"));
}

void registerBuiltInScheme()
{
    QWebEngineUrlScheme scheme(builtInScheme().toLatin1());
    scheme.setSyntax(QWebEngineUrlScheme::Syntax::Host);
    scheme.setFlags(QWebEngineUrlScheme::SecureScheme);
    QWebEngineUrlScheme::registerScheme(scheme);
}

void BuiltInPages::requestStarted(QWebEngineUrlRequestJob *job)
{
    const QString html = documentAt(job->requestUrl());
    if (html.isEmpty()) {
        job->fail(QWebEngineUrlRequestJob::UrlNotFound);
        return;
    }
    auto *text = new QBuffer(job);
    text->setData(html.toUtf8());
    job->reply("text/html", text);
}

QString failurePage(const QString &heading, const QString &text)
{
    return document(heading.toHtmlEscaped(), QStringLiteral("<p>%1</p>").arg(text.toHtmlEscaped()));
}

} // namespace vandrel
