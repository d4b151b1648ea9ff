#include "internet/FormParts.h"

namespace vandrel {

QLabel *captionOf(const QString &name, const QString &caption, QWidget *buddy, QWidget *parent)
{
    auto *label = new QLabel(caption, parent);
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setBuddy(buddy);
    return label;
}

} // namespace vandrel
