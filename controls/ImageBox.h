#pragma once

#include <memory>

#include <QFrame>
#include <QPointer>

#include "controls/PictureDecoder.h"

namespace vandrel {

/// Shows a picture in its middle, smaller where the box is smaller, with its proportions kept and at the resolution of
/// the screen. A picture that is still coming appears when it is there.
class ImageBox : public QFrame
{
    Q_OBJECT

public:
    explicit ImageBox(QWidget *parent = nullptr);
    ~ImageBox() override;

    /// The picture, or null for none.
    const std::shared_ptr<ComingPicture> &Picture() const { return m_picture; }
    void setPicture(std::shared_ptr<ComingPicture> picture);

    /// In twips.
    float Width() const;
    float Height() const;

Q_SIGNALS:
    /// The picture was painted for the first time since it was set.
    void shown();

protected:
    void paintEvent(QPaintEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void moveEvent(QMoveEvent *event) override;

private:
    void renew();
    void leaveSight();
    const QImage &fitted(const QSize &size);

    std::shared_ptr<ComingPicture> m_picture;
    /// The picture as the box shows it, in the screen's own pixels.
    QImage m_fitted;
    bool m_wasShown = false;
};

} // namespace vandrel
