#pragma once

#include <QObject>
#include <QTextDocument>

class QTextEdit;

namespace vandrel {

class LazyTextLayout;

/// Gives a text box's documents their layout, tells it what is visible, and keeps the visible text in place when the
/// layout corrects its estimates.
class RichTextLayouts : public QObject
{
    Q_OBJECT

public:
    explicit RichTextLayouts(QTextEdit &box);

    /// Prepares a document that the box does not show yet.
    void prepare(QTextDocument &document);

private:
    void tellViewport();
    void keepInPlace(qreal y, qreal growth);
    LazyTextLayout *lazyLayout() const;

    QTextEdit &m_box;
};

} // namespace vandrel
