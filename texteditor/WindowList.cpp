#include "texteditor/WindowList.h"

#include <QAction>
#include <QMenu>

#include "runtime/Events.h"
#include "texteditor/frmDoc.h"

namespace vandrel {

namespace {

constexpr int mostDigits = 9;

QString itemText(int number, QString name)
{
    name.replace(u'&', QStringLiteral("&&"));
    // A tab would start the column of the shortcuts.
    name.replace(u'\t', u' ');
    return number <= mostDigits ? QStringLiteral("&%1 %2").arg(QString::number(number), name)
                                : QStringLiteral("%1 %2").arg(QString::number(number), name);
}

} // namespace

WindowList::WindowList(QMenu *menu, QAction *empty, QObject *parent)
    : QObject(parent), m_menu(menu), m_empty(empty)
{ }

void WindowList::setDocuments(const QList<frmDoc *> &documents, const frmDoc *active)
{
    // An item may be the one whose choice has led here, so it goes only when the menu is done with it.
    for (QAction *item : std::as_const(m_items)) {
        m_menu->removeAction(item);
        item->deleteLater();
    }
    m_items.clear();
    for (frmDoc *document : documents) {
        const int number = static_cast<int>(m_items.size()) + 1;
        auto *item = new QAction(itemText(number, document->Caption()), this);
        item->setObjectName(QStringLiteral("win_%1").arg(number));
        item->setCheckable(true);
        item->setChecked(document == active);
        onEvent(item, &QAction::triggered, this, [this, chosenOne = QPointer<frmDoc>(document)] {
            if (chosenOne)
                Q_EMIT chosen(chosenOne);
        });
        m_menu->addAction(item);
        m_items.append(item);
    }
    m_empty->setVisible(m_items.isEmpty());
}

} // namespace vandrel
