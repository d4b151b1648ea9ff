#pragma once

#include <vector>

#include <QObject>
#include <QPointer>
#include <QTextDocument>

namespace vandrel {

/// Tells changes of a document's text from changes of its format, which the toolkit reports alike, also when
/// they are undone and done again.
class RichTextChanges : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Watches another document from now on.
    void watch(QTextDocument *document);

Q_SIGNALS:
    /// The text has changed, from this document position on. Emitted once for each operation, before the
    /// document's layout and cursors know of it.
    void textChanged(int position);

private:
    void contentsChange(int position, int removed, int added);
    bool isNewText(int position, int removed, int added) const;
    bool isText(int fromStep, int toStep) const;

    QPointer<QTextDocument> m_document;
    /// Whether the command that led to each step of the undo stack changed the text.
    std::vector<bool> m_stepIsText;
    int m_step = 0;
    bool m_commandAdded = false;
};

} // namespace vandrel
