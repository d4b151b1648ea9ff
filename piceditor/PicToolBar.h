#pragma once

#include <QToolButton>

#include "controls/ControlArray.h"
#include "controls/CoolBar.h"

namespace vandrel {

/// A button of the editor's tool bar: a picture on a colour.
class PicToolButton : public QToolButton
{
    Q_OBJECT

public:
    /// `picture` names the icon.
    PicToolButton(const QString &picture, QWidget *parent);

    /// The colour behind the picture, an RGB Long (0x00BBGGRR).
    qint32 BackColor() const;
    /// Gives the button a colour of its own, and its picture a dark ink on it; it must be light.
    void setBackColor(qint32 rgbLong);

private:
    QString m_picture;
};

/// The editor's tool bar: one band with the buttons of the files, one with those of the picture.
class PicToolBar
{
public:
    /// The bar becomes a child of `parent`.
    explicit PicToolBar(QWidget *parent);

    CoolBar *CoolBar1;
    /// 1 open, 2 save, 3 save as (never seen), 4 print.
    ControlArray<PicToolButton> Command1{QStringLiteral("Command1")};
    /// 0 and 1 shape, 2 zoom, 3 texture, 4 process, 5 resize, 6 flip and rotate, 7 text, 8 undo.
    ControlArray<PicToolButton> Command2{QStringLiteral("Command2")};

private:
    void createFrame1();
    void createFrame2();
    void addBand(QWidget *frame, const ControlArray<PicToolButton> &buttons, int fewestButtons) const;
};

} // namespace vandrel
