#include "controls/ComboBox.h"

#include <algorithm>

#include <QAbstractItemView>
#include <QScreen>
#include <QStyle>
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

void ComboBox::showPopup()
{
    const int longest = view()->sizeHintForColumn(0) + style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    view()->setMinimumWidth(std::min(longest, screen()->availableSize().width()));
    QComboBox::showPopup();
}

void ComboBox::wheelEvent(QWheelEvent *event)
{
    if (hasFocus())
        QComboBox::wheelEvent(event);
    else
        event->ignore();
}

} // namespace vandrel
