#include "platform/capture/PreviewWindow.h"

#include <utility>

#include <QCloseEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>

namespace vandrel {

namespace {

// Smaller than this no window is made, in pixels.
constexpr int smallestSize = 160;

} // namespace

// Halving averages every pixel, which a painter that reduces to a small part at once does not.
PictureSizes pictureSizes(QImage picture)
{
    PictureSizes sizes{std::move(picture)};
    while (sizes.last().width() >= 2 * smallestSize && sizes.last().height() >= 2 * smallestSize)
        sizes.append(
            sizes.last().scaled(sizes.last().size() / 2, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    return sizes;
}

PreviewWindow::PreviewWindow()
{
    setObjectName(QStringLiteral("Preview"));
    setAccessibleDescription(tr("The captured screen"));
}

void PreviewWindow::present(const PictureSizes &sizes, const QString &name)
{
    m_sizes = sizes;
    setWindowTitle(tr("Preview - %1").arg(name));
    if (!isVisible()) {
        const QSize most = screen()->availableSize() / 2;
        const QSize whole = m_sizes.first().size() / devicePixelRatioF();
        const bool fits = whole.width() <= most.width() && whole.height() <= most.height();
        resize((fits ? whole : whole.scaled(most, Qt::KeepAspectRatio))
                   .expandedTo({smallestSize, smallestSize}));
    }
    update();
    show();
    raise();
}

// Of the sizes that are large enough, the smallest.
void PreviewWindow::paintEvent(QPaintEvent *)
{
    if (m_sizes.isEmpty())
        return;
    const QSizeF shown = QSizeF(m_sizes.first().size()).scaled(size(), Qt::KeepAspectRatio);
    const qreal needed = shown.width() * devicePixelRatioF();
    qsizetype chosen = 0;
    while (chosen + 1 < m_sizes.size() && m_sizes[chosen + 1].width() >= needed)
        ++chosen;
    QRectF place(QPointF(), shown);
    place.moveCenter(QRectF(rect()).center());
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, m_sizes[chosen]);
}

void PreviewWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Cancel))
        close();
    else
        QWidget::keyPressEvent(event);
}

// A picture of a large desktop is worth its memory only while it is seen.
void PreviewWindow::closeEvent(QCloseEvent *event)
{
    event->accept();
    m_sizes.clear();
}

} // namespace vandrel
