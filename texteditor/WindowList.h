#pragma once

#include <QList>
#include <QObject>
#include <QPointer>

class QAction;
class QMenu;

namespace vandrel {

class frmDoc;

/// The open documents at the end of the Window menu, the active one with a check mark. A document is chosen by
/// the digit before its name, up to nine.
class WindowList : public QObject
{
    Q_OBJECT

public:
    /// `empty` is the item shown while there is no document.
    WindowList(QMenu *menu, QAction *empty, QObject *parent);

    void setDocuments(const QList<frmDoc *> &documents, const frmDoc *active);

Q_SIGNALS:
    void chosen(vandrel::frmDoc *document);

private:
    QMenu *m_menu;
    QAction *m_empty;
    QList<QAction *> m_items;
};

} // namespace vandrel
