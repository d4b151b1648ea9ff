#pragma once

#include <QComboBox>

namespace vandrel {

/// A drop-down list whose Click event is raised by every choice: the user's, also of the item already shown, and
/// the program's through ListIndex. Click is raised from inside the choice, as its last step.
class ComboBox : public QComboBox
{
    Q_OBJECT

public:
    explicit ComboBox(QWidget *parent = nullptr);

    void AddItem(const QString &item);
    int ListCount() const { return count(); }
    /// The item at a 0-based index; "" for an index that has none, so that a loop may look one step too far.
    QString List(int index) const;
    /// The chosen item's 0-based index, -1 when none is.
    int ListIndex() const { return currentIndex(); }
    /// Chooses an item, or none with -1, and raises Click. Raises Invalid property value (380) for an index
    /// outside the list.
    void setListIndex(int index);
    /// The chosen item, "" when none is.
    QString Text() const { return currentText(); }

    /// Opens the list, wide enough for its longest item.
    void showPopup() override;

Q_SIGNALS:
    void Click();

protected:
    /// The wheel turns over a list in passing; it chooses only in a list that has the focus.
    void wheelEvent(QWheelEvent *event) override;
};

} // namespace vandrel
