#pragma once

#include <QString>
#include <QStringView>

namespace vandrel {

/// Gathers the text that a person is to read, up to a limit; what comes after that is only counted.
///
/// Lines are broken at a blank, or else anywhere, where they grow so long that a text box would take long over them.
/// Whatever ends a line (CR LF, LF, CR, CR CR LF, form feed, the Unicode separators) becomes CR LF. Other control
/// characters, and code points that stand for no character, become U+FFFD; the tab stays.
class ReadableText
{
public:
    /// `limit` in characters of the whole text, `longestLine` in those of a line.
    ReadableText(qint64 limit, int longestLine) : m_limit(limit), m_longestLine(longestLine) { }

    /// A line break may be split over several calls.
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
    /// Characters that were not shown, or octets where they were not worth decoding.
    qint64 omitted() const { return m_omitted; }
    /// True once something was left out: whatever is added is only counted, so that nothing shorter slips in after it.
    bool isFull() const { return m_omitted > 0 && !m_lifted; }
    /// Counts what is left out without having been made into text.
    void omit(qint64 octets) { m_omitted += octets; }

    /// Ends the last line. The limit holds no longer, so that a few words can be added on what is missing.
    void lift();
    QString take() { return std::move(m_text); }

private:
    bool addWholeLine(QStringView text, qsizetype run);
    /// For how many more characters.
    qint64 room() const;
    void append(QStringView text);
    void breakLine();
    void appendRun(QStringView run);
    void addSpecial(QChar character);
    void endReturns();

    QString m_text;
    qint64 m_limit;
    qsizetype m_longestLine;
    qsizetype m_lineLength = 0;
    qint64 m_omitted = 0;
    bool m_lifted = false;
    int m_returns = 0; // CRs just before, 2 when the latest has not ended a line yet
};

} // namespace vandrel
