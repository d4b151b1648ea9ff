#pragma once

#include <memory>

#include <QPointer>
#include <QWidget>

#include "controls/ControlArray.h"
#include "controls/ImageBox.h"
#include "runtime/Integer.h"

class QScrollBar;

namespace vandrel {

class frmView;

/// The thumbnails: a grid of small pictures, four to a row and three rows at a time, and a scroll bar that moves
/// through the rows. The picture viewer fills the boxes; closing the window releases them.
class frmPic : public QWidget
{
    Q_OBJECT

public:
    frmPic();

    ControlArray<ImageBox> Pic1{QStringLiteral("Pic1")};
    QScrollBar *VScroll1 = nullptr;

    /// The loop index that layout, scrolling and unloading share.
    Integer ThumbIndex;

    /// Releases the boxes but the first, for new ones. The pictures are those of `view` from now on.
    void Empty(frmView *view);
    /// Makes the box with an index of 1 or more.
    ImageBox *LoadBox(int index);
    /// Places the boxes and sizes the window and the scroll bar.
    void LayoutThumbnails();

    // The handlers.
    void VScroll1_Change();
    void Form_QueryUnload();

protected:
    void closeEvent(QCloseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void makeBar();
    ImageBox *makeBox(int index);
    int boxCount() const { return static_cast<int>(std::distance(Pic1.begin(), Pic1.end())); }
    void place(int index, int first);
    void setScrolling(int boxes);
    int cellWidth() const;
    int cellHeight() const;

    QPointer<frmView> m_view;
};

} // namespace vandrel
