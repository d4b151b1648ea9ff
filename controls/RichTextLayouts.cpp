#include "controls/RichTextLayouts.h"

#include <cmath>

#include <QScrollBar>
#include <QTextEdit>

#include "controls/LazyTextLayout.h"
#include "controls/RichTextObjects.h"
#include "runtime/Events.h"

namespace vandrel {

RichTextLayouts::RichTextLayouts(QTextEdit &box) : m_box(box)
{
    onEvent(box.verticalScrollBar(), &QScrollBar::valueChanged, this, [this] { tellViewport(); });
    onEvent(box.verticalScrollBar(), &QScrollBar::rangeChanged, this, [this] { tellViewport(); });
}

void RichTextLayouts::prepare(QTextDocument &document)
{
    auto *layout = new LazyTextLayout(&document);
    layout->setPaintDevice(m_box.viewport());
    document.setDocumentLayout(layout);
    registerRichTextObjects(document);
    onEvent(layout, &LazyTextLayout::heightCorrected, this, &RichTextLayouts::keepInPlace);
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
