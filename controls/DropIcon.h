#pragma once

#include <QIcon>
#include <QToolButton>

namespace vandrel {

/// An icon that takes what is dragged in its own window. It lights up while something is held over it. A single click
/// does nothing; from the keyboard, Enter is a double click, and Space (like an assistive tool's press) raises
/// clicked().
class DropIcon : public QToolButton
{
    Q_OBJECT

public:
    /// `action` is what the pointer tells of a drop here: Qt::CopyAction or Qt::MoveAction.
    DropIcon(QIcon icon, Qt::DropAction action, QWidget *parent = nullptr);

    /// Draws the icon pale, for one that has no use yet.
    void setFaint(bool faint);

Q_SIGNALS:
    void MouseUp();
    void DblClick();
    /// Something was dropped; `source` is the control that it came from. Comes once the drag is over.
    void DragDrop(QObject *source);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    bool take(QDropEvent *event) const;
    void setLit(bool lit);

    QIcon m_icon;
    Qt::DropAction m_action;
    bool m_isLit = false;
};

} // namespace vandrel
