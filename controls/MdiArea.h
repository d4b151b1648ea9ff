#pragma once

#include <QList>
#include <QMdiArea>
#include <QPointer>

namespace vandrel {

/// The part of a frame window that holds its child windows.
class MdiArea : public QMdiArea
{
    Q_OBJECT

public:
    explicit MdiArea(QWidget *parent = nullptr);

    /// Argument of Arrange, with the numbers the arrangements have always had.
    enum class Arrangement { Cascade = 0, TileHorizontal = 1 };

    /// Lays out the children that are not minimised; a maximised one becomes normal first. Tiling fills the
    /// area with windows wider than high: up to three lie one above the other, more stand in columns.
    void Arrange(Arrangement arrangement);

    /// Adds a child window around `content` and shows it, at the next place of a cascade. Ctrl+F4 and Ctrl+W
    /// close the active one, whichever of them the desktop is used to.
    QMdiSubWindow *addChild(QWidget *content);

protected:
    void showEvent(QShowEvent *event) override;

private:
    QList<QMdiSubWindow *> arrangeable(WindowOrder order) const;
    void cascade();
    void tile();
    QRect cascadePlace(int index) const;
    void place(QMdiSubWindow *child);

    int m_placed = 0;
    /// Children added before the area had a size.
    QList<QPointer<QMdiSubWindow>> m_waiting;
};

} // namespace vandrel
