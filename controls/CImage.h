#pragma once

#include <array>

#include <QObject>
#include <QString>

#include "controls/SharedPicture.h"

class QWidget;

namespace vandrel {

/// Holds one image, loads and saves it, and processes it. User-interface thread only.
///
/// Every member is synchronous: when a call returns, its work is done and can be read. Work that takes longer than
/// half a second lets the windows paint meanwhile and emits Progress; the user's keys and clicks wait until it has
/// ended, and so do the events of all other controls. What is painted of the image meanwhile is what it was before the
/// call.
///
/// *Area.* Operations read and change the processing area alone: the part of SetProcessingArea that lies in the image.
/// A new image, and an operation that changes the image's size, make the whole image the area.
///
/// *Undo.* The image remembers at most one copy of itself, kept by KeepUndo and by nothing else.
///
/// *Results.* An operation returns false when it refuses: there is no image, the area lies outside of it or is empty, a
/// number is infinite or not a number, or the result would be larger than the control holds (65535 pixels a side, 300
/// million pixels). The image is then as it was, and Notice says why. Other numbers outside a stated range count as the
/// nearest within; a value that stands for no change returns true and leaves the image as it is. What cannot be carried
/// out for lack of memory is refused as well. Operations raise no errors.
class CImage : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// File formats by their codes, as saving takes them.
    enum Format : qint16 { Jpeg = 0, Tiff = 1, Bmp = 7, Pcx = 8, Dib = 9, Wpg = 15 };

    /// Releases the image and the undo copy.
    virtual void Clear() = 0;

    /// Loads a picture file by its content: BMP, DIB, PCX, WMF, WPG, JPEG or TIFF. `path` is DOS-style. It raises no
    /// error: a file that cannot be read leaves no image, and Picture then tells the failure. A file that is damaged
    /// but shows something is an image, and Notice tells what is wrong with it. The undo copy goes.
    virtual void LoadImageFile(const QString &path) = 0;

    /// Writes the image in a format, through a temporary file, so that a failure leaves a former file as it was.
    /// Raises the system's failures (61, 70, 76 ...), Invalid procedure call (5) for an unknown format, and Invalid
    /// picture (481) when there is no image or the format cannot hold it.
    virtual void SaveImageFile(const QString &path, qint16 format) = 0;

    /// Prints the image on paper, or into a PDF file, chosen in the system's print dialog over `owner`: the part from
    /// `left`, `top`, `width` by `height` pixels, in its own size, smaller where the page is smaller. A cancelled
    /// dialog prints nothing. Raises Printer error (482) when the print service cannot be used and Invalid picture (481)
    /// when there is no image.
    virtual void PrintImage(QWidget *owner, double left, double top, double width, double height) = 0;

    /// Puts the image on the clipboard, in formats that other programs paste. Nothing happens without an image.
    virtual void CopyToClipboard() = 0;

    /// The image as it stands; later operations do not change the picture handed out. Without an image it has no
    /// handle, and holds the failure of a load.
    virtual SharedPicture Picture() const = 0;
    /// Makes a copy of a picture the image, and the whole of it the area; one without a handle clears the image. The
    /// undo copy stays, but for one of a picture that was loaded from another file: that goes. Raises the failure that
    /// `picture` holds, and leaves the image as it was.
    virtual void setPicture(const SharedPicture &picture) = 0;

    /// In pixels; 0 without an image.
    virtual qint32 Width() const = 0;
    virtual qint32 Height() const = 0;
    /// 1, 4, 8, 16, 24 or 32; 0 without an image.
    virtual qint16 BitsPerPixel() const = 0;

    /// Restricts later operations to a rectangle, in pixels. Any numbers are taken as they are; without an image
    /// nothing is remembered.
    virtual void SetProcessingArea(qint32 left, qint32 top, qint32 width, qint32 height) = 0;

    /// True remembers the image as it is, in place of what was remembered; false forgets it.
    virtual void KeepUndo(bool keep) = 0;
    /// Exchanges the image with what is remembered: a second Undo takes back the first. The area stays, unless the
    /// sizes differ: the whole image becomes the area then. Nothing happens when nothing is remembered.
    virtual void Undo() = 0;

    /// Scales the image to that many pixels, rounded to the nearest. Mode 1 is a view's: the size and the picture handed
    /// out change at once, and painting shows each pixel of an image that grows as a block, so that there may be more
    /// pixels than the control could hold. They are computed, with smooth transitions, when the image is saved, copied or
    /// processed. Any other mode computes them at once.
    virtual bool Resize(double width, double height, qint32 mode) = 0;
    /// Scales the image to fill a box of a picture window, in twips; its proportions stay. Mode 0 computes a smooth
    /// small picture, for a thumbnail; other modes are as 0.
    virtual bool ResampleTo(float width, float height, qint32 mode) = 0;
    /// Sets an option of the decoder: 4 is the quality of a resampled picture, 0 to 100. Other codes have no meaning
    /// and are passed over.
    virtual void SetOption(qint16 code, qint16 value) = 0;

    /// Brings the darkest level to black and the lightest to white.
    virtual bool AutoContrast() = 0;
    /// Turns the image so that its lines of text lie level; without such lines it stays.
    virtual bool Deskew() = 0;
    virtual bool Blur() = 0;
    /// Spreads the levels of lightness evenly.
    virtual bool Equalize() = 0;
    virtual bool Negative() = 0;
    /// A tone curve that darkens the middle tones.
    virtual bool ConcaveSpectrum() = 0;
    /// A tone curve that lightens the middle tones.
    virtual bool ConvexSpectrum() = 0;
    /// Light from the upper left that falls off into warm darkness.
    virtual bool Rembrand() = 0;
    virtual bool BrokenTV() = 0;
    virtual bool Emboss() = 0;
    virtual bool FlipHorizontal() = 0;
    virtual bool FlipVertical() = 0;

    /// Fades to white by that share: 0 to 100 percent; 0 changes nothing.
    virtual bool Blend(double value) = 0;
    /// -100 to 100 percent; 0 changes nothing.
    virtual bool Brightness(double value) = 0;
    /// -100 to 100 percent; 0 changes nothing.
    virtual bool Contrast(double value) = 0;
    /// 0.1 to 10; more than 1 lightens. 1, 0 and less than 0 change nothing.
    virtual bool Gamma(double value) = 0;
    /// 0 to 100 percent; 0 changes nothing.
    virtual bool Sharpen(double value) = 0;
    /// Pieces of `size` pixels a side, from the area's upper left corner; less than 2 changes nothing.
    virtual bool Mosaic(double size) = 0;
    /// Turns clockwise by degrees. The whole image grows to hold all of itself; an area keeps its size and is turned
    /// within. 0 and full turns change nothing.
    virtual bool Rotate(double degrees) = 0;

    /// Relief lit from the upper left, or from the lower right when inverted. `depth` is -100 to 100.
    virtual bool BumpMap(qint16 depth, bool inverted) = 0;
    /// Points (x, y in turn) of the image that the area's corners upper left, upper right, lower left and lower right
    /// move to. Refused where three lie on a line, or the edges cross.
    virtual bool Warp(const std::array<qint16, 8> &points) = 0;
    /// Convolution with a 3 by 3 kernel, row by row: the sum is divided by `divisor` (0 stands for the kernel's sum, or 1
    /// where that is 0), then `bias` is added.
    virtual bool Matrix(const std::array<qint16, 9> &kernel, qint16 divisor, qint16 bias) = 0;
    /// Gives every pixel between the colours `from` and `to`, in each channel and whichever is less, the colour
    /// `replacement`. All are RGB Longs (0x00BBGGRR).
    virtual bool ReplaceColors(qint32 from, qint32 to, qint32 replacement) = 0;

    /// A raised border of `width` pixels; `intensity` is 0 to 100 percent, 0 in either changes nothing.
    virtual bool Buttonize(double intensity, double width) = 0;
    /// -255 to 255, added to each channel.
    virtual bool AdjustRGB(double red, double green, double blue) = 0;
    /// Degrees that the hue turns by, then percent (-100 to 100) of saturation and of lightness.
    virtual bool AdjustHSL(double hue, double saturation, double luminosity) = 0;

    /// Brings the image to 1, 4, 8, 16 or 24 bits per pixel; others are refused. `depthType` chooses the palette: 0
    /// optimized, 1 fixed, 2 gray scale, 5 optimized with dither, 6 gray scale with dither; others count as 0.
    /// `dither` is 0 none, 1 Floyd-Steinberg, 2 ordered, 3 random diffuse; others count as 0. The area is not asked.
    virtual bool ResampleColors(double bitsPerPixel, qint32 depthType, qint16 dither) = 0;

Q_SIGNALS:
    // Both are emitted from inside a call, before it returns.
    /// How far the work of a call has come, 0 to 1, about a dozen times a second once it has taken half a second. The
    /// last one is 1, whether the work was done or refused. Work that takes less time emits none.
    void Progress(double done);
    /// A sentence for the user: why an operation was refused, what a damaged file lacks, what a format cannot keep.
    void Notice(const QString &sentence);
};

} // namespace vandrel
