#pragma once

#include <memory>
#include <optional>
#include <utility>

#include <QObject>
#include <QRectF>
#include <QSize>

#include "runtime/RuntimeError.h"

class QPainter;

namespace vandrel {

/// The pixels behind a picture object, served by whoever made it. They never change, so that any number of owners
/// share them. Made, used and destroyed on the user-interface thread only.
class PicturePixels : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// In pixels; at least 1 x 1. A scaled picture may have millions a side, though nothing of that size is stored.
    virtual QSize size() const = 0;

    /// Paints `part`, in this picture's pixels and wholly inside it, so that it fills `target`, in the painter's
    /// units. It costs what is painted, not what the picture has, never waits for long work and never fails: where
    /// the pixels are not ready it paints the nearest it has and emits refined() later. Each enlarged pixel is a
    /// block of its colour; what is see-through lets the background shine through.
    virtual void paint(QPainter &painter, const QRectF &target, const QRect &part) const = 0;

Q_SIGNALS:
    /// Painting it again would look better than it did. Emitted from the event loop.
    void refined() const;
};

/// A finished picture as controls hand it to each other: a copy shares the pixels and costs nothing. One without a
/// handle is no picture, and may know why.
class SharedPicture
{
public:
    /// No picture.
    SharedPicture() = default;
    explicit SharedPicture(std::shared_ptr<const PicturePixels> pixels) : m_pixels(std::move(pixels)) { }
    /// No picture, because of that failure: the file could not be read, or is none of a known format.
    explicit SharedPicture(RuntimeError failure) : m_failure(std::move(failure)) { }

    /// 0 for no picture; otherwise a value that equal pictures have in common.
    quintptr Handle() const { return reinterpret_cast<quintptr>(m_pixels.get()); }
    /// In pixels; 0 x 0 for no picture.
    QSize size() const { return m_pixels ? m_pixels->size() : QSize(0, 0); }
    /// Null for no picture.
    const std::shared_ptr<const PicturePixels> &pixels() const { return m_pixels; }
    /// Why there is no picture, where that is known.
    const std::optional<RuntimeError> &failure() const { return m_failure; }

private:
    std::shared_ptr<const PicturePixels> m_pixels;
    std::optional<RuntimeError> m_failure;
};

} // namespace vandrel
