#pragma once

#include <QString>
#include <QUrl>
#include <QWebEngineUrlSchemeHandler>

namespace vandrel {

/// The scheme of the suite's own pages.
QString builtInScheme();

/// The start page, which tells how the address box is used, and the page that lists search services. They hold no
/// script and fetch nothing.
QUrl startPage();
QUrl searchPage();

/// Makes the scheme known to the engine; before its first profile.
void registerBuiltInScheme();

/// Serves the suite's own pages to a profile.
class BuiltInPages : public QWebEngineUrlSchemeHandler
{
    Q_OBJECT

public:
    using QWebEngineUrlSchemeHandler::QWebEngineUrlSchemeHandler;

    void requestStarted(QWebEngineUrlRequestJob *job) override;
};

/// A page that tells of a failure: a heading and a paragraph, both plain texts.
QString failurePage(const QString &heading, const QString &text);

} // namespace vandrel
