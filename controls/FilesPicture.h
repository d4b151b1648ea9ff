#pragma once

#include <QPixmap>
#include <QPoint>

class QWidget;

namespace vandrel {

/// What is seen at the pointer while files are dragged: a small pile of them, and how many there are.
class FilesPicture
{
public:
    /// In the font, the colours and the resolution of `widget`.
    FilesPicture(int count, const QWidget &widget);

    const QPixmap &pixmap() const { return m_pixmap; }
    /// The place of the pointer on it.
    QPoint hotSpot() const;

private:
    QPixmap m_pixmap;
};

/// "1 file", "3 files".
QString fileCountText(int count);

} // namespace vandrel
