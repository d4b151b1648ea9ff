#pragma once

#include <functional>

#include <QObject>
#include <QTextDocument>

class QTextEdit;

namespace vandrel {

class LazyTextLayout;

/// Gives a text box's document the layout that suits it: the toolkit's own, which knows tables and frames, or the
/// lazy one for a long document without them. Keeps the visible text in place when the lazy layout corrects its
/// estimates.
class RichTextLayouts : public QObject
{
    Q_OBJECT

public:
    /// From so many characters on a document without tables and frames is laid out lazily.
    static constexpr int lazyFrom = 100'000;

    explicit RichTextLayouts(QTextEdit &box);

    /// Prepares a document that the box does not show yet.
    void prepare(QTextDocument &document);
    /// Whether the box's document would be better off with the other layout when it is going to have
    /// `characters` characters.
    bool isUnsuited(int characters) const;
    /// Changes the layout of the box's document. The document reports this as a change of its contents.
    void change();

private:
    void setUp(QTextDocument &document);
    void tellViewport();
    void keepInPlace(qreal y, qreal growth);
    LazyTextLayout *lazyLayout() const;

    QTextEdit &m_box;
};

} // namespace vandrel
