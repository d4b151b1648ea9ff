#include "controls/RichTextPrinting.h"

#include <algorithm>

#include <QFile>
#include <QMarginsF>
#include <QPageLayout>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPrinter>
#include <QTextDocument>
#include <QTextFrame>

#include "controls/LazyTextLayout.h"
#include "controls/RichTextCopy.h"
#include "controls/RichTextObjects.h"

namespace vandrel {

namespace {

constexpr double marginMillimetres = 20;
constexpr double millimetresPerInch = 25.4;

// Copying is so much of the work.
constexpr double copyingShare = 0.3;
// Rules of tables may stand this far, in inches, outside of the text's part of a page.
constexpr double ruleRoom = 0.05;

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

// The document is laid out for the device while the original stays laid out for the screen.
LazyTextLayout *layOutFor(QPagedPaintDevice &device, QTextDocument &copy, QTextDocument *original)
{
    copy.setUseDesignMetrics(true);
    auto *layout = new LazyTextLayout(&copy);
    layout->setPaintDevice(&device);
    copy.setDocumentLayout(layout);
    registerRichTextObjects(copy, original);
    setUpPages(copy, device);
    return layout;
}

void drawPage(QTextDocument &document, QPainter &painter, int page)
{
    const QSizeF size = document.pageSize();
    const QTextFrameFormat frame = document.rootFrame()->frameFormat();
    const qreal room = ruleRoom * painter.device()->logicalDpiY();
    painter.save();
    painter.translate(0, -page * size.height());
    QAbstractTextDocumentLayout::PaintContext context;
    context.clip = QRectF(0, page * size.height(), size.width(), size.height());
    // What has no colour of its own is black on paper, whatever the screen's colours are.
    context.palette.setColor(QPalette::Text, Qt::black);
    painter.setClipRect(context.clip.adjusted(0, frame.topMargin() - room, 0, room - frame.bottomMargin()));
    document.documentLayout()->draw(&painter, context);
    painter.restore();
}

bool copyInPieces(const QTextCursor &selection, QTextDocument &copy, const std::function<bool(double)> &goOn)
{
    RichTextCopy pieces(selection, copy);
    while (pieces.step()) {
        if (!goOn(copyingShare * pieces.progress()))
            return false;
    }
    return true;
}

// A printer forgets what it was given; of a file, nothing is left that looks like a document.
PrintResult abandoned(QPrinter &device)
{
    device.abort();
    if (!device.outputFileName().isEmpty())
        QFile::remove(device.outputFileName());
    return PrintResult::Cancelled;
}

} // namespace

PrintResult
printRichText(const QTextCursor &selection, QPrinter &device, const std::function<bool(double)> &goOn)
{
    QTextDocument document;
    if (!copyInPieces(selection, document, goOn))
        return PrintResult::Cancelled;
    LazyTextLayout *layout = layOutFor(device, document, selection.document());
    QPainter painter;
    if (!painter.begin(&device))
        return PrintResult::Failed;
    const qreal height = document.pageSize().height();
    for (int page = 0;; ++page) {
        drawPage(document, painter, page);
        // The number of pages is known when the last paragraph has been reached.
        if (layout->isMeasured() && page + 1 >= layout->pageCount())
            break;
        layout->dropLinesAbove((page + 1) * height);
        const double drawn = (page + 1) * height / std::max(1.0, layout->documentSize().height());
        if (!goOn(copyingShare + (1 - copyingShare) * std::min(1.0, drawn)))
            return abandoned(device);
        if (!device.newPage())
            return PrintResult::Failed;
    }
    return painter.end() ? PrintResult::Printed : PrintResult::Failed;
}

} // namespace vandrel
