#include "controls/RichTextPrinting.h"

#include <algorithm>
#include <memory>

#include <QAbstractTextDocumentLayout>
#include <QMarginsF>
#include <QPageLayout>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <QTextFrame>

#include "controls/RichTextObjects.h"

namespace vandrel {

namespace {

constexpr double marginMillimetres = 20;
constexpr double millimetresPerInch = 25.4;

// A copy that can be laid out for the device while the original stays laid out for the screen.
std::unique_ptr<QTextDocument> copyFor(const QTextCursor &selection, QPagedPaintDevice &device)
{
    const QTextDocument &original = *selection.document();
    std::unique_ptr<QTextDocument> copy(selection.hasSelection() ? new QTextDocument : original.clone());
    copy->setUndoRedoEnabled(false);
    copy->setDefaultFont(original.defaultFont());
    copy->setUseDesignMetrics(true);
    if (selection.hasSelection()) {
        copy->setDefaultTextOption(original.defaultTextOption());
        QTextCursor(copy.get()).insertFragment(selection.selection());
    }
    copy->documentLayout()->setPaintDevice(&device);
    registerRichTextObjects(*copy, selection.document());
    return copy;
}

// The margins inside the device's printable area, in its dots.
QMarginsF marginsInside(const QPagedPaintDevice &device)
{
    const QPageLayout layout = device.pageLayout();
    const int dpi = device.logicalDpiY();
    const double margin = dpi * marginMillimetres / millimetresPerInch;
    const QRect paper = layout.fullRectPixels(dpi);
    const QRect printable = layout.paintRectPixels(dpi);
    const auto inside = [margin](int edge) { return std::max(0.0, margin - edge); };
    return {inside(printable.left() - paper.left()), inside(printable.top() - paper.top()),
            inside(paper.right() - printable.right()), inside(paper.bottom() - printable.bottom())};
}

void setUpPages(QTextDocument &document, const QPagedPaintDevice &device)
{
    const QMarginsF margins = marginsInside(device);
    QTextFrameFormat format = document.rootFrame()->frameFormat();
    format.setLeftMargin(margins.left());
    format.setTopMargin(margins.top());
    format.setRightMargin(margins.right());
    format.setBottomMargin(margins.bottom());
    document.rootFrame()->setFrameFormat(format);
    document.setPageSize(QSizeF(device.width(), device.height()));
}

void drawPage(QTextDocument &document, QPainter &painter, int page)
{
    const QSizeF size = document.pageSize();
    painter.save();
    painter.translate(0, -page * size.height());
    QAbstractTextDocumentLayout::PaintContext context;
    context.clip = QRectF(0, page * size.height(), size.width(), size.height());
    // What has no colour of its own is black on paper, whatever the screen's colours are.
    context.palette.setColor(QPalette::Text, Qt::black);
    painter.setClipRect(context.clip);
    document.documentLayout()->draw(&painter, context);
    painter.restore();
}

// Pages are laid out as they are drawn. Only when the last paragraph has its lines is the number of pages
// known; asking earlier would lay out the whole document at once.
bool isLastPage(const QTextDocument &document, int page)
{
    const QTextBlock last = document.lastBlock();
    return (!last.isVisible() || last.layout()->lineCount() > 0) && page + 1 >= document.pageCount();
}

} // namespace

bool printRichText(const QTextCursor &selection,
                   QPagedPaintDevice &device,
                   const std::function<void()> &betweenPages)
{
    const std::unique_ptr<QTextDocument> document = copyFor(selection, device);
    setUpPages(*document, device);
    QPainter painter;
    if (!painter.begin(&device))
        return false;
    for (int page = 0;; ++page) {
        drawPage(*document, painter, page);
        if (isLastPage(*document, page))
            break;
        betweenPages();
        device.newPage();
    }
    return painter.end();
}

} // namespace vandrel
