#pragma once

#include <QStyledItemDelegate>

namespace vandrel {

/// Draws a line of a remote listing in columns: the name, as wide as the list allows, and size, date and kind as far
/// as there is room beside it. A line of another form is drawn as it is. The tool tip has all of the line.
class ListingDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void
    paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    bool helpEvent(QHelpEvent *event,
                   QAbstractItemView *view,
                   const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;
    /// The line as the pointer is told it: all of the name, readable, and the rest where there is any. Rich text, in
    /// which nothing of the line is markup.
    static QString toolTipOf(const QString &line);

    /// The parts of a line, without the blanks around them; all but `name` are empty where the line has another form.
    struct Columns {
        QString name;
        QString kind;
        QString size;
        QString date;
    };
    static Columns columnsOf(const QString &line);
};

} // namespace vandrel
