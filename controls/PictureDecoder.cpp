#include "controls/PictureDecoder.h"

namespace vandrel {

QImage ComingPicture::scaledTo(const QSize &size) const
{
    const QImage whole = image();
    return whole.size() == size ? whole : whole.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

QSize ComingPicture::sizeIn(const QSize &box, const QSize &picture)
{
    if (picture.width() <= box.width() && picture.height() <= box.height())
        return picture;
    return picture.scaled(box.expandedTo({1, 1}), Qt::KeepAspectRatio).expandedTo({1, 1});
}

} // namespace vandrel
