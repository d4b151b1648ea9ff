#include "texteditor/Paper.h"

#include <QPalette>
#include <QWidget>

namespace vandrel {

void showAsPaper(QWidget *widget)
{
    QPalette paper = widget->palette();
    paper.setColor(QPalette::Base, Qt::white);
    paper.setColor(QPalette::Text, Qt::black);
    paper.setColor(QPalette::Link, Qt::darkBlue);
    widget->setPalette(paper);
}

} // namespace vandrel
