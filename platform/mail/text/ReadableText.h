#pragma once

#include <QString>
#include <QStringView>

namespace vandrel {

/// Gathers the text that a person is to read, up to a limit; what comes after that is only counted.
///
/// Whatever ends a line (CR LF, LF, CR, form feed, the Unicode separators) becomes CR LF. Other control
/// characters, and code points that stand for no character, become U+FFFD; the tab stays.
class ReadableText
{
public:
    explicit ReadableText(qint64 limit) : m_limit(limit) { }

    /// A line break may be split over two calls.
    void add(QStringView text);
    /// Ends the current line, if it has any text.
    void startLine();
    /// Leaves a blank line before what follows, if anything comes before it.
    void startParagraph();
    /// Adds `text` as a line of its own.
    void addLine(const QString &text);

    bool isEmpty() const { return m_text.isEmpty(); }
    /// Characters that were added, shown or not.
    qint64 added() const { return m_text.size() + m_omitted; }
    /// Characters that were not shown.
    qint64 omitted() const { return m_omitted; }

    /// Ends the last line. The limit holds no longer, so that a few words can be added on what is missing.
    void lift();
    QString take() { return std::move(m_text); }

private:
    void append(QStringView text);
    void addSpecial(QChar character);

    QString m_text;
    qint64 m_limit;
    qint64 m_omitted = 0;
    bool m_afterReturn = false;
};

} // namespace vandrel
