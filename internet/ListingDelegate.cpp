#include "internet/ListingDelegate.h"

#include <array>

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include "internet/RemoteNameBox.h"

namespace vandrel {

namespace {

constexpr qsizetype kindLength = 6;
constexpr qsizetype sizeLength = 15;
constexpr qsizetype dateLength = 16;
constexpr qsizetype separatorLength = 2;
// The name keeps at least this many characters' room.
constexpr int leastNameWidth = 16;

struct Column {
    const QString &text;
    QString widest;
    Qt::Alignment alignment;
};

} // namespace

ListingDelegate::Columns ListingDelegate::columnsOf(const QString &line)
{
    constexpr qsizetype tail = 1 + kindLength + 1 + sizeLength + 2 + dateLength;
    const qsizetype slash = line.indexOf(u'/');
    if (slash < separatorLength || line.size() < slash + tail)
        return {line, {}, {}, {}};
    const QStringView rest = QStringView(line).sliced(slash + 1);
    return {line.left(slash - separatorLength), rest.first(kindLength).trimmed().toString(),
            rest.sliced(kindLength + 1, sizeLength).trimmed().toString(),
            rest.sliced(kindLength + 1 + sizeLength + 2, dateLength).trimmed().toString()};
}

bool ListingDelegate::helpEvent(QHelpEvent *event,
                                QAbstractItemView *view,
                                const QStyleOptionViewItem &option,
                                const QModelIndex &index)
{
    if (event->type() != QEvent::ToolTip || !index.isValid())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    QToolTip::showText(event->globalPos(), toolTipOf(index.data().toString()), view);
    return true;
}

QString ListingDelegate::toolTipOf(const QString &line)
{
    // Names of servers can be as long as they like, and a tool tip is there to be read.
    constexpr qsizetype longestName = 1'000;
    const Columns columns = columnsOf(line);
    QString text = readableRemoteText(columns.name.left(longestName)).toHtmlEscaped();
    if (!columns.kind.isEmpty()) {
        const QString rest = line.mid(line.indexOf(u'/') + 1, longestName).simplified();
        text += QLatin1String("<br>") + readableRemoteText(rest).toHtmlEscaped();
    }
    return QStringLiteral("<p style='white-space:pre-wrap'>%1</p>").arg(text);
}

void ListingDelegate::paint(QPainter *painter,
                            const QStyleOptionViewItem &option,
                            const QModelIndex &index) const
{
    QStyleOptionViewItem line = option;
    initStyleOption(&line, index);
    const Columns columns = columnsOf(line.text);
    line.text.clear();
    const QStyle *style = option.widget ? option.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &line, painter, option.widget);

    const auto role
        = line.state.testFlag(QStyle::State_Selected) ? QPalette::HighlightedText : QPalette::Text;
    const bool isEnabled = line.state.testFlag(QStyle::State_Enabled);
    const int gap = line.fontMetrics.averageCharWidth() * 2;
    QRect room = line.rect.adjusted(gap / 2, 0, -gap / 2, 0);
    const std::array<Column, 3> parts{
        Column{columns.date, QStringLiteral("0000-00-00 00:00"), Qt::AlignLeft},
        Column{columns.size, QStringLiteral("000,000,000"), Qt::AlignRight},
        Column{columns.kind, QStringLiteral("Folder"), Qt::AlignLeft},
    };
    for (const Column &part : parts) {
        const int width = line.fontMetrics.horizontalAdvance(part.widest);
        if (columns.kind.isEmpty()
            || room.width() - width - gap < line.fontMetrics.averageCharWidth() * leastNameWidth)
            break;
        QRect place = room;
        place.setLeft(room.right() + 1 - width);
        style->drawItemText(painter, place, static_cast<int>(part.alignment | Qt::AlignVCenter), line.palette,
                            isEnabled, part.text, role);
        room.setRight(place.left() - gap);
    }
    const QString name
        = line.fontMetrics.elidedText(readableRemoteText(columns.name), Qt::ElideMiddle, room.width());
    style->drawItemText(painter, room, Qt::AlignLeft | Qt::AlignVCenter, line.palette, isEnabled, name, role);
}

} // namespace vandrel
