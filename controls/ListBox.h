#pragma once

#include <optional>
#include <set>
#include <utility>
#include <vector>

#include <QAbstractListModel>
#include <QIcon>
#include <QListView>
#include <QString>
#include <QStringList>

namespace vandrel {

/// A line of a list box.
struct ListBoxItem {
    QString text;
    /// How many steps it is indented.
    int depth = 0;
    QIcon icon;
};

/// What tells a line from the others when lines are replaced: its depth and its text.
using ListBoxLine = std::pair<int, QString>;

/// The lines of a list box.
class ListBoxModel final : public QAbstractListModel
{
    Q_OBJECT

public:
    static constexpr int DepthRole = Qt::UserRole;

    using QAbstractListModel::QAbstractListModel;

    void setItems(std::vector<ListBoxItem> items);
    void append(ListBoxItem item);
    void remove(int index);
    const std::vector<ListBoxItem> &items() const { return m_items; }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    std::vector<ListBoxItem> m_items;
};

/// A list of lines, of which one is chosen, or any number when MultiSelect is set. Long lists are no burden: all
/// lines are of one height. Typing the beginning of a line goes to it.
///
/// Click is raised by every choice: the user's by mouse, keyboard or assistive tool, also of the line already
/// chosen, and the program's through ListIndex. It is raised from inside the choice, as its last step.
class ListBox : public QListView
{
    Q_OBJECT

public:
    explicit ListBox(QWidget *parent = nullptr);

    void Clear();
    void AddItem(const QString &item);
    /// Removes a line; a choice of it goes with it, and no other line takes its place. Raises no event, and Invalid
    /// procedure call (5) for an index that has none.
    void RemoveItem(int index);
    /// Adds many lines at once.
    void addItems(const QStringList &items);
    int ListCount() const;
    /// The line at a 0-based index; "" for an index that has none, so that a loop may look one step too far.
    QString List(int index) const;

    /// The chosen line's 0-based index, -1 when none is: the line that merely has the keyboard's focus is not chosen.
    /// With MultiSelect, the index of the line with the focus.
    int ListIndex() const;
    /// Chooses a line, or none with -1, and raises Click. Raises Invalid property value (380) for an index outside
    /// the list.
    void setListIndex(int index);
    /// The chosen line, "" when there is none.
    QString Text() const { return List(ListIndex()); }

    /// Whether several lines can be chosen, with Ctrl and Shift.
    void setMultiSelect(bool several);
    bool Selected(int index) const;
    /// Chooses a line in addition, or no more; with one choice at a time, instead. Raises Click, and Invalid property
    /// value (380) for an index outside the list.
    void setSelected(int index, bool selected);
    /// How many lines are chosen.
    int SelCount() const;

Q_SIGNALS:
    void Click();
    /// A double click, or Enter, on a line.
    void DblClick();
    void MouseDown();
    /// Raised before a choice follows the pointer.
    void MouseMove();
    void MouseUp();

protected:
    ListBoxModel &lines() { return m_lines; }
    const ListBoxModel &lines() const { return m_lines; }
    /// Replaces all lines; none is chosen then, and no event is raised.
    void setLines(std::vector<ListBoxItem> items);
    /// Chooses a line without an event.
    void choose(int index);
    /// Replaces all lines without an event. What is chosen, what has the focus and what is seen stays as it was, as far
    /// as those lines are still there.
    void updateLines(std::vector<ListBoxItem> items);
    /// The same, but only after the user has let go of the mouse button.
    void updateLinesAtRest(std::vector<ListBoxItem> items);

    /// True when the mouse button is down that was pressed on the list, and the pointer has left that place by more
    /// than a hand's tremble. Asking keeps the choice from following the pointer until the next move.
    bool isPulled();
    /// The button that was pressed is up, though nobody told the list.
    void letGo();

    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex &index,
                                                         const QEvent *event) const override;
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;

private:
    void requireLine(int index) const;
    std::set<ListBoxLine> chosenLines() const;
    int topLine() const;
    void restore(const std::set<ListBoxLine> &chosen, const std::optional<ListBoxLine> &current);
    void showAtTop(const std::optional<ListBoxLine> &line, int otherwise);

    ListBoxModel m_lines;
    /// What happens now is ours to report, or not to be reported at all.
    bool m_isQuiet = false;
    bool m_isPressed = false;
    /// Where the button was pressed, and where the pointer is.
    QPoint m_pressedAt;
    QPoint m_pointer;
    bool m_isPullAsked = false;
    int m_chosenBefore = -1;
    /// What is shown once the mouse button is up.
    std::optional<std::vector<ListBoxItem>> m_awaited;
};

} // namespace vandrel
