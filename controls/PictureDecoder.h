#pragma once

#include <memory>

#include <QImage>
#include <QObject>
#include <QSize>
#include <QString>

namespace vandrel {

/// A picture that a decoder hands over, perhaps before it is decoded: boxes show it when it comes. Whoever holds it
/// keeps it wanted; when the last one lets go of it, decoding it ends. User-interface thread only.
class ComingPicture : public QObject
{
    Q_OBJECT

public:
    enum class State {
        Coming, ///< not decoded yet, or not any more: memory was needed for others
        Ready,
        Unreadable, ///< nothing could be decoded: its handle is 0
    };

    using QObject::QObject;

    virtual State state() const = 0;
    /// The picture turned as its file says, as large as it was asked for or smaller; null unless it is ready.
    virtual QImage image() const = 0;
    /// The picture at a size no larger than its own. At once for the size that its box has where the decoder was told
    /// of that; others are made of image() while the caller waits.
    virtual QImage scaledTo(const QSize &size) const;
    /// One that is seen is decoded before others, and kept as long as it is seen.
    virtual void setSeen(bool seen) = 0;

    /// How large a picture is shown in a box of that many pixels: with its proportions kept, at least one pixel a side,
    /// and never larger than it is.
    static QSize sizeIn(const QSize &box, const QSize &picture);

Q_SIGNALS:
    /// The state is another one. Emitted from the event loop.
    void changed();
};

/// One decoder of picture files. Nothing it is asked for waits for a file. Destroying it takes back what was prepared;
/// pictures handed over stay. User-interface thread only.
class PictureDecoder
{
public:
    virtual ~PictureDecoder() = default;

    /// Makes a picture file the one to decode, as large as the screen can show it. `path` is DOS-style. A file that
    /// cannot be read, is no picture, or is too large for memory raises no error; its Picture is unreadable.
    virtual void LoadImageFile(const QString &path) = 0;
    /// Tells how large the inside of the box is in which the pictures asked for from now on are shown, in
    /// device-independent pixels, so that they are scaled for it ahead as well. ResampleTo makes none larger than it.
    virtual void ShowIn(const QSize &inside) = 0;
    /// Decodes the file that will be loaded next, so that its Picture is there at once; in place of what was prepared
    /// before.
    virtual void Prepare(const QString &path) = 0;
    /// Makes the loaded picture small enough for a box of that size, in twips; its proportions stay. Mode 0 is the only
    /// one there is.
    virtual void ResampleTo(float width, float height, qint32 mode) = 0;
    /// Code 4 is the quality of resampling in percent: below 50 it is quick, else smooth. Other codes raise Invalid
    /// procedure call (5).
    virtual void SetOption(qint16 code, qint16 value) = 0;
    /// The loaded picture; null before LoadImageFile.
    virtual std::shared_ptr<ComingPicture> Picture() = 0;
};

/// Makes the elements of a decoder array. They share threads and memory.
class PictureDecoders
{
public:
    virtual ~PictureDecoders() = default;
    virtual std::unique_ptr<PictureDecoder> make() = 0;
};

} // namespace vandrel
