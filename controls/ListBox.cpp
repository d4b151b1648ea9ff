#include "controls/ListBox.h"

#include <memory>

#include "runtime/RuntimeError.h"

namespace vandrel {

ListBox::ListBox(QWidget *parent) : QListWidget(parent)
{
    setSelectionMode(SingleSelection);
    setUniformItemSizes(true);
}

void ListBox::AddItem(const QString &item)
{
    addItem(item);
}

void ListBox::RemoveItem(int index)
{
    if (index < 0 || index >= count())
        throw RuntimeError(error::InvalidProcedureCall);
    // The toolkit would select a neighbour instead.
    if (index == currentRow())
        setCurrentItem(nullptr);
    const std::unique_ptr<QListWidgetItem> removed(takeItem(index));
}

QString ListBox::List(int index) const
{
    const QListWidgetItem *found = item(index);
    return found ? found->text() : QString();
}

int ListBox::ListIndex() const
{
    const QModelIndexList selected = selectedIndexes();
    return selected.isEmpty() ? -1 : selected.first().row();
}

void ListBox::setListIndex(int index)
{
    if (index < -1 || index >= count())
        throw RuntimeError(error::InvalidPropertyValue);
    setCurrentRow(index);
    if (index == -1)
        clearSelection();
    else
        item(index)->setSelected(true);
}

} // namespace vandrel
