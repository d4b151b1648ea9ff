#pragma once

#include <QString>

namespace vandrel {

/// The system's clipboard, as text. User-interface thread only.
class Clipboard
{
public:
    /// The one format that the suite exchanges.
    static constexpr qint32 PlainText = 1;

    /// Replaces what the clipboard holds. The text's line breaks (CR LF) become the system's own. Raises
    /// Invalid procedure call (5) for a format other than PlainText.
    static void SetText(const QString &text, qint32 format = PlainText);

    /// The clipboard's text with line breaks as CR LF; "" when it holds none. Raises Invalid procedure call
    /// (5) for a format other than PlainText.
    static QString GetText(qint32 format = PlainText);
};

} // namespace vandrel
