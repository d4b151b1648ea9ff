#pragma once

#include <memory>
#include <optional>

#include "controls/CImage.h"
#include "controls/DriveView.h"
#include "controls/Printer.h"
#include "platform/imaging/control/LongWork.h"
#include "platform/imaging/control/RasterPicture.h"
#include "platform/imaging/operations/Operation.h"

namespace vandrel {

/// What picture controls share.
struct EngineServices {
    std::shared_ptr<DriveView> drives;
    std::shared_ptr<Printer> printer;
    /// The program that draws metafiles, as DecodeRequest has it.
    QString drawingProgram;
};

/// The picture control on the suite's own engine. An image that was scaled for a view stays unscaled in memory until its
/// pixels are asked for.
class EngineImage final : public CImage
{
    Q_OBJECT

public:
    explicit EngineImage(EngineServices services, QObject *parent = nullptr);
    ~EngineImage() override;

    void Clear() override;
    void LoadImageFile(const QString &path) override;
    void SaveImageFile(const QString &path, qint16 format) override;
    void PrintImage(QWidget *owner, double left, double top, double width, double height) override;
    void CopyToClipboard() override;

    SharedPicture Picture() const override;
    void setPicture(const SharedPicture &picture) override;
    qint32 Width() const override { return m_image.size.width(); }
    qint32 Height() const override { return m_image.size.height(); }
    qint16 BitsPerPixel() const override;

    void SetProcessingArea(qint32 left, qint32 top, qint32 width, qint32 height) override;
    void KeepUndo(bool keep) override;
    void Undo() override;

    bool Resize(double width, double height, qint32 mode) override;
    bool ResampleTo(float width, float height, qint32 mode) override;
    void SetOption(qint16 code, qint16 value) override;

    bool AutoContrast() override;
    bool Deskew() override;
    bool Blur() override;
    bool Equalize() override;
    bool Negative() override;
    bool ConcaveSpectrum() override;
    bool ConvexSpectrum() override;
    bool Rembrand() override;
    bool BrokenTV() override;
    bool Emboss() override;
    bool FlipHorizontal() override;
    bool FlipVertical() override;
    bool Blend(double value) override;
    bool Brightness(double value) override;
    bool Contrast(double value) override;
    bool Gamma(double value) override;
    bool Sharpen(double value) override;
    bool Mosaic(double size) override;
    bool Rotate(double degrees) override;
    bool BumpMap(qint16 depth, bool inverted) override;
    bool Warp(const std::array<qint16, 8> &points) override;
    bool Matrix(const std::array<qint16, 9> &kernel, qint16 divisor, qint16 bias) override;
    bool ReplaceColors(qint32 from, qint32 to, qint32 replacement) override;
    bool Buttonize(double intensity, double width) override;
    bool AdjustRGB(double red, double green, double blue) override;
    bool AdjustHSL(double hue, double saturation, double luminosity) override;
    bool ResampleColors(double bitsPerPixel, qint32 depthType, qint16 dither) override;

private:
    using WholeOperation = std::function<Outcome(const Subject &)>;

    /// Does an operation on the area, its pixels computed first where the image is still to be scaled.
    bool operate(const WholeOperation &operation);
    /// The image's pixels at its own size; null, with a notice, where they cannot be made.
    Raster computedRaster();
    /// Makes other pixels the image; the area stays where the size does.
    void setImage(const ScaledRaster &image);
    void showWholeArea();
    void work(const std::function<void(WorkProgress &)> &task);
    bool refuse(const QString &sentence);
    QString whyRefused(const Subject &subject) const;

    EngineServices m_services;
    ScaledRaster m_image{{}, QSize(0, 0), 0};
    ScaledRaster m_undo{{}, QSize(0, 0), 0};
    PixelArea m_area;
    std::optional<RuntimeError> m_failure;
    // The picture handed out for the image as it is, made when first asked for.
    mutable std::shared_ptr<RasterPicture> m_shared;
};

} // namespace vandrel
