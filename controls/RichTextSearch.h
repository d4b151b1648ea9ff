#pragma once

#include <optional>

#include <QString>
#include <QTextDocument>

namespace vandrel {

/// Finds a text in a document, ignoring case. A match may cross paragraph ends; a no-break blank and a blank
/// are different letters, and so are "ß" and "ss".
///
/// Searching the whole document again and again for the same text, each time after replacing what was found,
/// is linear: the search remembers up to where the document is known to be free of the text, and a change of
/// the document moves that frontier back to just before the change.
class RichTextSearch
{
public:
    struct Match {
        int start = 0; ///< document position
        int end = 0; ///< document position behind the match
    };

    /// The first match that lies between two document positions. A line break in `what` may be CR LF, CR or
    /// LF.
    std::optional<Match> find(const QTextDocument &document, const QString &what, int from, int to);

    /// To be told of every change of the document's text.
    void textChanged(int position);
    /// To be told that the document is another one.
    void reset();

    /// How many characters were looked at so far: what a search costs, without a clock.
    qint64 charactersRead() const { return m_charactersRead; }

private:
    std::optional<Match> scan(const QTextDocument &document, int from, int to);

    QString m_what;
    /// No match starts before this document position.
    int m_frontier = 0;
    qint64 m_charactersRead = 0;
};

} // namespace vandrel
