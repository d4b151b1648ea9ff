#pragma once

#include <QListWidget>

namespace vandrel {

/// A list of texts of which at most one is selected. The selected one is what the user sees as such: the row that
/// merely has the keyboard's focus is not.
class ListBox : public QListWidget
{
    Q_OBJECT

public:
    explicit ListBox(QWidget *parent = nullptr);

    /// Appends a row. The selection stays.
    void AddItem(const QString &item);
    /// Removes a row; a selection on it goes with it, and no other row takes its place. Raises Invalid procedure
    /// call (5) for an index that has none.
    void RemoveItem(int index);
    int ListCount() const { return count(); }
    /// The text of a row; "" for an index that has none.
    QString List(int index) const;
    /// The selected row's 0-based index, -1 when none is.
    int ListIndex() const;
    /// Selects a row, or none with -1. Raises Invalid property value (380) for an index outside the list.
    void setListIndex(int index);
};

} // namespace vandrel
