#pragma once

#include <vector>

#include <QByteArray>
#include <QString>
#include <QStringView>

#include "platform/mail/text/ReadableText.h"

namespace vandrel {

/// The attributes of an element that its text depends on.
struct HtmlAttributes {
    QString address; // href
    QString description; // alt
    int start = 1; // of a numbered list
    bool hidden = false;

    void set(QByteArrayView name, const char *value);
};

/// Turns the elements and characters of an HTML document, in their order, into plain text.
class HtmlWriter
{
public:
    explicit HtmlWriter(ReadableText &out) : m_out(out) { }

    /// Every element that starts ends, the innermost first.
    void startElement(const QByteArray &name, const HtmlAttributes &attributes);
    void endElement();
    void addText(const QString &text);
    void finish();

private:
    enum class Kind {
        Inline,
        Block, // on lines of its own
        Paragraph, // with blank lines around it
        Quotation,
        Bullets,
        Numbers,
        Item,
        Row,
        Cell,
        Preformatted,
        Break,
        Rule,
        Link,
        Picture,
        Left, // left out with all that is in it
    };

    struct Element {
        Kind kind = Kind::Inline;
        QString address; // of a link
    };

    struct Row {
        bool filled = false; // there is text in it
        int cells = 0;
    };

    struct List {
        bool numbered;
        int next;
    };

    static Kind kindOf(const QByteArray &name);
    void open(Element &element, const HtmlAttributes &attributes);
    void close(const Element &element);
    void startItem();
    void startCell();
    void endRow();
    void closeLink(const Element &link);
    void addPicture(const QString &description);
    void addPreformatted(QStringView text);
    void addCollapsed(QStringView text);
    void addWord(QStringView word);
    void write(QStringView text);
    void beginLine();
    void breakLine(int count);
    void breakAgain();

    ReadableText &m_out;
    std::vector<Element> m_open;
    qsizetype m_left = 0; // open elements from the outermost left out on
    int m_quotations = 0;
    std::vector<List> m_lists;
    std::vector<Row> m_rows; // the open ones
    int m_preformatted = 0;
    int m_breaks = 0; // line breaks due before the next text
    bool m_written = false; // there is any text
    bool m_space = false; // a blank is due before the next text
    bool m_cell = false; // a tab is due before the next text
    bool m_fresh = false; // at the beginning of a cell or item, which goes on the same line
    QString m_marker; // of a list item, due before the next text
    QString m_linkText; // the current link's, up to a bound
    bool m_inLink = false;
};

} // namespace vandrel
