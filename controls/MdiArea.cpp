#include "controls/MdiArea.h"

#include <algorithm>
#include <cmath>

#include <QAction>
#include <QMdiSubWindow>
#include <QMenu>
#include <QStyle>

namespace vandrel {

namespace {

constexpr int smallestWidth = 320;
constexpr int smallestHeight = 200;

// The toolkit gives the system menu's Close the one key of the desktop at hand; hands know both.
void closeWithEitherKey(const QMdiSubWindow &child)
{
    QList<QKeySequence> keys = QKeySequence::keyBindings(QKeySequence::Close);
    for (QAction *item : child.systemMenu()->actions()) {
        if (item->shortcuts() != keys)
            continue;
        for (const QKeySequence &key :
             {QKeySequence(Qt::CTRL | Qt::Key_F4), QKeySequence(Qt::CTRL | Qt::Key_W)}) {
            if (!keys.contains(key))
                keys.append(key);
        }
        item->setShortcuts(keys);
        return;
    }
}

} // namespace

MdiArea::MdiArea(QWidget *parent) : QMdiArea(parent)
{
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
}

void MdiArea::Arrange(Arrangement arrangement)
{
    switch (arrangement) {
    case Arrangement::Cascade:
        cascade();
        break;
    case Arrangement::TileHorizontal:
        tile();
        break;
    }
}

QMdiSubWindow *MdiArea::addChild(QWidget *content)
{
    QMdiSubWindow *child = addSubWindow(content);
    closeWithEitherKey(*child);
    if (isVisible())
        place(child);
    else
        m_waiting.append(child);
    child->show();
    return child;
}

void MdiArea::showEvent(QShowEvent *event)
{
    for (const QPointer<QMdiSubWindow> &child : std::as_const(m_waiting)) {
        if (child)
            place(child);
    }
    m_waiting.clear();
    QMdiArea::showEvent(event);
}

QList<QMdiSubWindow *> MdiArea::arrangeable(WindowOrder order) const
{
    QList<QMdiSubWindow *> children = subWindowList(order);
    children.removeIf([](const QMdiSubWindow *child) { return child->isHidden() || child->isMinimized(); });
    return children;
}

// The places of a cascade start again at the corner before a window would leave the area.
QRect MdiArea::cascadePlace(int index) const
{
    const QSize area = viewport()->size();
    const int width = std::max(smallestWidth, area.width() * 3 / 4);
    const int height = std::max(smallestHeight, area.height() * 3 / 4);
    const int step = style()->pixelMetric(QStyle::PM_TitleBarHeight);
    const int places = std::max(1, std::min(area.width() - width, area.height() - height) / step + 1);
    const int offset = index % places * step;
    return {offset, offset, width, height};
}

void MdiArea::place(QMdiSubWindow *child)
{
    child->setGeometry(cascadePlace(m_placed++));
}

void MdiArea::cascade()
{
    QMdiSubWindow *active = currentSubWindow();
    m_placed = 0;
    for (QMdiSubWindow *child : arrangeable(StackingOrder)) {
        child->showNormal();
        place(child);
        child->raise();
    }
    if (active)
        setActiveSubWindow(active);
}

void MdiArea::tile()
{
    QMdiSubWindow *active = currentSubWindow();
    const QList<QMdiSubWindow *> children = arrangeable(CreationOrder);
    const auto count = static_cast<int>(children.size());
    const auto columns = static_cast<int>(std::sqrt(count));
    const QRect area = viewport()->rect();
    int next = 0;
    for (int column = 0; column < columns; ++column) {
        // Windows that do not divide evenly go to the last columns.
        const int rows = count / columns + (column >= columns - count % columns ? 1 : 0);
        const int left = area.width() * column / columns;
        const int right = area.width() * (column + 1) / columns;
        for (int row = 0; row < rows; ++row) {
            const int top = area.height() * row / rows;
            const int bottom = area.height() * (row + 1) / rows;
            QMdiSubWindow *child = children[next++];
            child->showNormal();
            child->setGeometry(left, top, right - left, bottom - top);
        }
    }
    if (active)
        setActiveSubWindow(active);
}

} // namespace vandrel
