#include "controls/RichTextLayouts.h"

#include <cmath>

#include <QScrollBar>
#include <QTextEdit>
#include <QTextFrame>

#include "controls/LazyTextLayout.h"
#include "controls/RichTextObjects.h"
#include "runtime/Events.h"

namespace vandrel {

namespace {

bool hasFrames(const QTextDocument &document)
{
    return !document.rootFrame()->childFrames().isEmpty();
}

bool isLazy(const QTextDocument &document)
{
    return qobject_cast<LazyTextLayout *>(document.documentLayout()) != nullptr;
}

} // namespace

RichTextLayouts::RichTextLayouts(QTextEdit &box) : m_box(box)
{
    onEvent(box.verticalScrollBar(), &QScrollBar::valueChanged, this, [this] { tellViewport(); });
    onEvent(box.verticalScrollBar(), &QScrollBar::rangeChanged, this, [this] { tellViewport(); });
}

void RichTextLayouts::prepare(QTextDocument &document)
{
    if (document.characterCount() > lazyFrom && !hasFrames(document))
        document.setDocumentLayout(new LazyTextLayout(&document));
    setUp(document);
}

bool RichTextLayouts::isUnsuited(int characters) const
{
    const QTextDocument &document = *m_box.document();
    if (hasFrames(document))
        return isLazy(document);
    return characters > lazyFrom && !isLazy(document);
}

void RichTextLayouts::change()
{
    QTextDocument &document = *m_box.document();
    const int cursorWidth = m_box.cursorWidth();
    // Without a layout of ours the document makes itself the toolkit's.
    document.setDocumentLayout(isLazy(document) ? nullptr : new LazyTextLayout(&document));
    setUp(document);
    m_box.setCursorWidth(cursorWidth);
    // Makes the box tell the layout its width.
    m_box.setLineWrapColumnOrWidth(m_box.lineWrapColumnOrWidth());
    tellViewport();
}

void RichTextLayouts::setUp(QTextDocument &document)
{
    document.documentLayout()->setPaintDevice(m_box.viewport());
    registerRichTextObjects(document);
    if (auto *lazy = qobject_cast<LazyTextLayout *>(document.documentLayout()))
        onEvent(lazy, &LazyTextLayout::heightCorrected, this, &RichTextLayouts::keepInPlace);
}

LazyTextLayout *RichTextLayouts::lazyLayout() const
{
    return qobject_cast<LazyTextLayout *>(m_box.document()->documentLayout());
}

void RichTextLayouts::tellViewport()
{
    if (LazyTextLayout *lazy = lazyLayout())
        lazy->setViewport(QRectF(QPointF(0, m_box.verticalScrollBar()->value()), m_box.viewport()->size()));
}

void RichTextLayouts::keepInPlace(qreal y, qreal growth)
{
    QScrollBar *bar = m_box.verticalScrollBar();
    if (y <= bar->value())
        bar->setValue(bar->value() + static_cast<int>(std::lround(growth)));
}

} // namespace vandrel
