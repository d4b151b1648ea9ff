#pragma once

#include <QString>
#include <QUrl>

namespace vandrel {

class DriveView;

/// What a person typed into an address box stands for.
struct BrowserAddress {
    enum class Kind {
        /// Nothing was typed: the blank page.
        Blank,
        /// A page, at `url`.
        Page,
        /// A script for the page shown, in `script`.
        Script,
        /// Nothing that a page can be fetched from.
        Unusable
    };

    Kind kind = Kind::Blank;
    QUrl url;
    QString script;
    /// The scheme was not typed: the page is at `url`, encrypted, or else at its plain twin.
    bool schemeGuessed = false;

    /// Reads what was typed; blanks around it are dropped. Paths of files are the drive view's or begin with "/"; a path
    /// on a drive that is not there is unusable. Addresses that belong to the engine itself are unusable: among them
    /// are some that end it.
    static BrowserAddress parse(const QString &typed, const DriveView &drives);
};

/// The same address over an unencrypted connection. A port that was stated stays.
QUrl plainTwin(const QUrl &encrypted);

/// Whether a page may be at an address of that scheme (http, https, file, about, data, blob, view-source, and the
/// suite's own pages).
bool isPageScheme(const QString &scheme);

} // namespace vandrel
