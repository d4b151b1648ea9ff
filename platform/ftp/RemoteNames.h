#pragma once

#include <optional>

#include <QByteArray>
#include <QString>
#include <QStringView>

namespace vandrel {

/// Names of files on a server as the user sees them, and back. A server's names are octets; every one of them has
/// a text, and the text gives the same octets again, so that what is picked from a listing is what is sent.
///
/// A name that is valid UTF-8 is shown as it is. An octet b that would be misread becomes the private character
/// U+F000 + b: control octets, a final blank (which the tools trim), in a name also "/" (which ends the name in a
/// line of the listing), each octet above 7F of a name that is not UTF-8, and each octet of a private character
/// U+F000 to U+F0FF that the name itself holds.
QString shownRemoteName(const QByteArray &name);
/// The same for a path, whose "/" stay what they are.
QString shownRemotePath(const QByteArray &path);

/// The octets of a name or path that was shown or typed; none for half a surrogate pair. They may hold CR, LF or
/// NUL when the server's name did: whoever sends them must refuse those.
std::optional<QByteArray> sentRemoteName(QStringView text);

} // namespace vandrel
