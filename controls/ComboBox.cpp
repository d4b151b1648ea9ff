#include "controls/ComboBox.h"

#include <QWheelEvent>

#include "runtime/RuntimeError.h"

namespace vandrel {

ComboBox::ComboBox(QWidget *parent) : QComboBox(parent)
{
    connect(this, &QComboBox::activated, this, &ComboBox::Click);
}

void ComboBox::AddItem(const QString &item)
{
    // The toolkit would choose the first item by itself.
    const int chosen = currentIndex();
    addItem(item);
    setCurrentIndex(chosen);
}

QString ComboBox::List(int index) const
{
    return itemText(index);
}

void ComboBox::setListIndex(int index)
{
    if (index < -1 || index >= count())
        throw RuntimeError(error::InvalidPropertyValue);
    setCurrentIndex(index);
    Q_EMIT Click();
}

void ComboBox::wheelEvent(QWheelEvent *event)
{
    if (hasFocus())
        QComboBox::wheelEvent(event);
    else
        event->ignore();
}

} // namespace vandrel
