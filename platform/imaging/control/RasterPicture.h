#pragma once

#include <memory>

#include "controls/SharedPicture.h"
#include "platform/imaging/raster/Raster.h"

namespace vandrel {

/// A picture as the control holds it: pixels, the size that they are to be shown at, and which file they came from.
struct ScaledRaster {
    Raster raster;
    /// In pixels, where the picture is to be scaled but has not been yet; the raster's own size otherwise.
    QSize size;
    /// A number that pictures made of the same file have in common; 0 for those made of none.
    int source = 0;

    bool isNull() const { return raster.isNull(); }
    bool isScaled() const { return !isNull() && size != QSize(raster.width(), raster.height()); }
};

/// The pixels of a picture that is handed out. A picture shown smaller than it is gets a reduced copy, made on another
/// thread the first time it is painted if that takes long.
class RasterPicture final : public PicturePixels, public std::enable_shared_from_this<RasterPicture>
{
    Q_OBJECT

public:
    explicit RasterPicture(ScaledRaster picture) : m_picture(std::move(picture)) { }

    QSize size() const override { return m_picture.size; }
    void paint(QPainter &painter, const QRectF &target, const QRect &part) const override;

    const ScaledRaster &picture() const { return m_picture; }

private:
    const Raster &shownRaster() const;
    void startReducing() const;
    void takeReduced(const Raster &reduced) const;

    ScaledRaster m_picture;
    // What painting finds out does not change the picture.
    mutable Raster m_reduced;
    mutable bool m_isReducing = false;
};

} // namespace vandrel
