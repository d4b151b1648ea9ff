#include "controls/ListBox.h"

#include <algorithm>
#include <utility>

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QScopedValueRollback>
#include <QStyledItemDelegate>
#include <QTextDocument>

#include "runtime/Events.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

constexpr int indentation = 14;

std::optional<ListBoxLine> lineAt(const std::vector<ListBoxItem> &items, int row)
{
    if (row < 0 || static_cast<std::size_t>(row) >= items.size())
        return {};
    const ListBoxItem &item = items[static_cast<std::size_t>(row)];
    return ListBoxLine(item.depth, item.text);
}

// Moves what is below something to the right of it.
class IndentingDelegate final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        QStyleOptionViewItem indented = option;
        indented.rect.setLeft(option.rect.left() + indentation * index.data(ListBoxModel::DepthRole).toInt());
        QStyledItemDelegate::paint(painter, indented, index);
    }
};

} // namespace

void ListBoxModel::setItems(std::vector<ListBoxItem> items)
{
    beginResetModel();
    m_items = std::move(items);
    endResetModel();
}

void ListBoxModel::append(ListBoxItem item)
{
    const int row = rowCount();
    beginInsertRows({}, row, row);
    m_items.push_back(std::move(item));
    endInsertRows();
}

void ListBoxModel::remove(int index)
{
    beginRemoveRows({}, index, index);
    m_items.erase(m_items.begin() + index);
    endRemoveRows();
}

int ListBoxModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_items.size());
}

QVariant ListBoxModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const ListBoxItem &item = m_items[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return item.text;
    // A name is no markup, whatever it looks like.
    case Qt::ToolTipRole:
        return Qt::mightBeRichText(item.text) ? Qt::convertFromPlainText(item.text) : item.text;
    case Qt::DecorationRole:
        return item.icon.isNull() ? QVariant() : QVariant(item.icon);
    case DepthRole:
        return item.depth;
    default:
        return {};
    }
}

ListBox::ListBox(QWidget *parent) : QListView(parent)
{
    setModel(&m_lines);
    setItemDelegate(new IndentingDelegate(this));
    setSelectionMode(SingleSelection);
    setUniformItemSizes(true);
    setEditTriggers(NoEditTriggers);
    setVerticalScrollMode(ScrollPerItem);
    setTextElideMode(Qt::ElideMiddle);
}

void ListBox::Clear()
{
    setLines({});
}

void ListBox::AddItem(const QString &item)
{
    m_lines.append({item, 0, {}});
}

void ListBox::RemoveItem(int index)
{
    if (index < 0 || index >= ListCount())
        throw RuntimeError(error::InvalidProcedureCall);
    const QScopedValueRollback quiet(m_isQuiet, true);
    // The toolkit would choose a neighbour instead.
    if (index == currentIndex().row())
        selectionModel()->setCurrentIndex({}, QItemSelectionModel::NoUpdate);
    m_lines.remove(index);
}

void ListBox::addItems(const QStringList &items)
{
    std::vector<ListBoxItem> all = m_lines.items();
    all.reserve(all.size() + static_cast<std::size_t>(items.size()));
    for (const QString &item : items)
        all.push_back({item, 0, {}});
    const int chosen = ListIndex();
    setLines(std::move(all));
    choose(chosen);
}

int ListBox::ListCount() const
{
    return m_lines.rowCount();
}

QString ListBox::List(int index) const
{
    return index < 0 || index >= ListCount() ? QString()
                                             : m_lines.items()[static_cast<std::size_t>(index)].text;
}

int ListBox::ListIndex() const
{
    if (selectionMode() != SingleSelection)
        return currentIndex().row();
    const QModelIndexList chosen = selectionModel()->selectedIndexes();
    return chosen.isEmpty() ? -1 : chosen.constFirst().row();
}

void ListBox::setListIndex(int index)
{
    if (index != -1)
        requireLine(index);
    choose(index);
    Q_EMIT Click();
}

void ListBox::setMultiSelect(bool several)
{
    setSelectionMode(several ? ExtendedSelection : SingleSelection);
}

bool ListBox::Selected(int index) const
{
    return selectionModel()->isSelected(m_lines.index(index));
}

int ListBox::SelCount() const
{
    int count = 0;
    for (const QItemSelectionRange &range : selectionModel()->selection())
        count += range.height();
    return count;
}

void ListBox::setSelected(int index, bool selected)
{
    requireLine(index);
    {
        const QScopedValueRollback quiet(m_isQuiet, true);
        const bool isOnly = selectionMode() == SingleSelection;
        const auto how = !selected ? QItemSelectionModel::Deselect
            : isOnly               ? QItemSelectionModel::ClearAndSelect
                                   : QItemSelectionModel::Select;
        selectionModel()->select(m_lines.index(index), how);
        if (selected && isOnly)
            selectionModel()->setCurrentIndex(m_lines.index(index), QItemSelectionModel::NoUpdate);
    }
    Q_EMIT Click();
}

void ListBox::requireLine(int index) const
{
    if (index < 0 || index >= ListCount())
        throw RuntimeError(error::InvalidPropertyValue);
}

void ListBox::setLines(std::vector<ListBoxItem> items)
{
    const QScopedValueRollback quiet(m_isQuiet, true);
    m_awaited.reset();
    m_lines.setItems(std::move(items));
}

void ListBox::choose(int index)
{
    const QScopedValueRollback quiet(m_isQuiet, true);
    if (index < 0 || index >= ListCount()) {
        selectionModel()->clear();
        return;
    }
    selectionModel()->setCurrentIndex(m_lines.index(index), QItemSelectionModel::ClearAndSelect);
}

void ListBox::updateLines(std::vector<ListBoxItem> items)
{
    const auto isSame = [](const ListBoxItem &one, const ListBoxItem &other) {
        return one.depth == other.depth && one.text == other.text;
    };
    const std::vector<ListBoxItem> &before = m_lines.items();
    if (std::equal(items.begin(), items.end(), before.begin(), before.end(), isSame))
        return;
    const std::set<ListBoxLine> chosen = chosenLines();
    const std::optional<ListBoxLine> current = lineAt(before, currentIndex().row());
    const int top = topLine();
    const std::optional<ListBoxLine> seenFirst = lineAt(before, top);
    setLines(std::move(items));
    restore(chosen, current);
    showAtTop(seenFirst, top);
}

void ListBox::updateLinesAtRest(std::vector<ListBoxItem> items)
{
    if (m_isPressed)
        m_awaited = std::move(items);
    else
        updateLines(std::move(items));
}

std::set<ListBoxLine> ListBox::chosenLines() const
{
    std::set<ListBoxLine> chosen;
    const QModelIndexList indexes = selectionModel()->selectedIndexes();
    for (const QModelIndex &index : indexes)
        chosen.insert(*lineAt(m_lines.items(), index.row()));
    return chosen;
}

int ListBox::topLine() const
{
    return indexAt(viewport()->rect().topLeft()).row();
}

// Neighbours are chosen together, since the toolkit takes very long for very many choices of one line each.
void ListBox::restore(const std::set<ListBoxLine> &chosen, const std::optional<ListBoxLine> &current)
{
    if (chosen.empty() && !current)
        return;
    QItemSelection again;
    int currentRow = -1;
    int chosenFrom = -1;
    const int count = ListCount();
    for (int row = 0; row <= count; ++row) {
        const std::optional<ListBoxLine> line = lineAt(m_lines.items(), row);
        if (line && line == current)
            currentRow = row;
        const bool isChosen = line && chosen.contains(*line);
        if (isChosen && chosenFrom < 0)
            chosenFrom = row;
        if (!isChosen && chosenFrom >= 0)
            again.append(
                QItemSelectionRange(m_lines.index(std::exchange(chosenFrom, -1)), m_lines.index(row - 1)));
    }
    const QScopedValueRollback quiet(m_isQuiet, true);
    selectionModel()->select(again, QItemSelectionModel::ClearAndSelect);
    if (currentRow >= 0)
        selectionModel()->setCurrentIndex(m_lines.index(currentRow), QItemSelectionModel::NoUpdate);
}

void ListBox::showAtTop(const std::optional<ListBoxLine> &line, int otherwise)
{
    if (!line || ListCount() == 0)
        return;
    const std::vector<ListBoxItem> &items = m_lines.items();
    const auto found = std::find_if(items.begin(), items.end(), [&line](const ListBoxItem &item) {
        return item.depth == line->first && item.text == line->second;
    });
    const int row = found == items.end() ? std::min(otherwise, ListCount() - 1)
                                         : static_cast<int>(found - items.begin());
    scrollTo(m_lines.index(row), PositionAtTop);
}

void ListBox::mousePressEvent(QMouseEvent *event)
{
    guarded([this, event] {
        m_isPressed = true;
        m_pressedAt = m_pointer = event->position().toPoint();
        Q_EMIT MouseDown();
        m_chosenBefore = ListIndex();
        QListView::mousePressEvent(event);
    });
}

void ListBox::mouseMoveEvent(QMouseEvent *event)
{
    guarded([this, event] {
        m_pointer = event->position().toPoint();
        m_isPullAsked = false;
        // A drag is over when the handler returns, and much may have happened in it.
        const QPointer<ListBox> self(this);
        Q_EMIT MouseMove();
        if (self && !m_isPullAsked && (m_isPressed || event->buttons() == Qt::NoButton))
            QListView::mouseMoveEvent(event);
    });
}

bool ListBox::isPulled()
{
    m_isPullAsked = true;
    return m_isPressed && (m_pointer - m_pressedAt).manhattanLength() >= QApplication::startDragDistance();
}

void ListBox::letGo()
{
    m_isPressed = false;
    if (m_awaited)
        updateLines(*std::exchange(m_awaited, std::nullopt));
}

// The choice counts when the button is let go: dragging over the list is one choice, not many.
void ListBox::mouseReleaseEvent(QMouseEvent *event)
{
    guarded([this, event] {
        QListView::mouseReleaseEvent(event);
        const bool wasPressed = std::exchange(m_isPressed, false);
        const bool isOnLine
            = event->button() == Qt::LeftButton && indexAt(event->position().toPoint()).isValid();
        if (wasPressed && (isOnLine || ListIndex() != m_chosenBefore))
            Q_EMIT Click();
        letGo();
        Q_EMIT MouseUp();
    });
}

void ListBox::mouseDoubleClickEvent(QMouseEvent *event)
{
    guarded([this, event] {
        QListView::mouseDoubleClickEvent(event);
        if (event->button() == Qt::LeftButton && indexAt(event->position().toPoint()).isValid())
            Q_EMIT DblClick();
    });
}

void ListBox::keyPressEvent(QKeyEvent *event)
{
    guarded([this, event] {
        const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
        if (isEnter && currentIndex().isValid()) {
            event->accept();
            Q_EMIT DblClick();
            return;
        }
        const bool choosesMore = event->key() == Qt::Key_Space || event->matches(QKeySequence::SelectAll);
        QListView::keyPressEvent(event);
        if (choosesMore && currentIndex().isValid() && selectionMode() == ExtendedSelection)
            Q_EMIT Click();
    });
}

// The toolkit gives the focus to the first line, which is no choice.
void ListBox::focusInEvent(QFocusEvent *event)
{
    const QScopedValueRollback quiet(m_isQuiet, true);
    QListView::focusInEvent(event);
}

// One choice at a time stays until there is another: neither Ctrl nor the empty space takes it away.
QItemSelectionModel::SelectionFlags ListBox::selectionCommand(const QModelIndex &index,
                                                              const QEvent *event) const
{
    if (selectionMode() == SingleSelection)
        return index.isValid() ? QItemSelectionModel::ClearAndSelect : QItemSelectionModel::NoUpdate;
    return QListView::selectionCommand(index, event);
}

void ListBox::currentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    QListView::currentChanged(current, previous);
    if (!m_isQuiet && !m_isPressed && selectionMode() != SingleSelection)
        guarded([this] { Q_EMIT Click(); });
}

// Assistive tools choose a line without moving to it first.
void ListBox::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QListView::selectionChanged(selected, deselected);
    if (m_isQuiet || m_isPressed || selectionMode() != SingleSelection || selected.isEmpty())
        return;
    selectionModel()->setCurrentIndex(selected.indexes().constFirst(), QItemSelectionModel::NoUpdate);
    guarded([this] { Q_EMIT Click(); });
}

} // namespace vandrel
