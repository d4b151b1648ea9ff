#pragma once

#include <functional>
#include <map>
#include <memory>

#include <QList>
#include <QStringList>

#include "controls/CImage.h"

namespace vandrel::test {

/// The pixels of a fake picture: none, but a size and a name that tells its history ("a.bmp+Blur").
class FakePixels final : public PicturePixels
{
    Q_OBJECT

public:
    FakePixels(QString name, QSize size, qint16 bitsPerPixel)
        : m_name(std::move(name)), m_size(size), m_bitsPerPixel(bitsPerPixel)
    { }

    const QString &name() const { return m_name; }
    qint16 bitsPerPixel() const { return m_bitsPerPixel; }
    QSize size() const override { return m_size; }
    /// Fills the target with one colour, and remembers the part.
    void paint(QPainter &painter, const QRectF &target, const QRect &part) const override;

    /// The parts that were painted, in order.
    mutable QList<QRect> painted;

private:
    QString m_name;
    QSize m_size;
    qint16 m_bitsPerPixel;
};

/// A fake picture of that name.
SharedPicture newPicture(const QString &name, QSize size, qint16 bitsPerPixel = 24);

/// The name of a fake picture; "none" for one without a handle.
QString nameOf(const SharedPicture &picture);

/// A picture control that has no pixels. It records every call with its arguments, in order with those of the fakes that
/// share its log: "c2.Blend 25", "c1.Picture = a.bmp" (assigned), "c2.Picture" (handed out). Reading sizes and depths is
/// not recorded.
class FakeCImage final : public CImage
{
    Q_OBJECT

public:
    struct File {
        QSize size;
        qint16 bitsPerPixel = 24;
    };

    FakeCImage(QString name, std::shared_ptr<QStringList> log)
        : m_name(std::move(name)), m_log(std::move(log))
    { }

    /// What can be loaded, by DOS-style paths; other paths are File not found (53).
    std::map<QString, File> files;
    /// The next save raises it, once.
    std::optional<RuntimeError> saveFailure;
    /// Runs within every operation, after it has been recorded and before it changes the image.
    std::function<void()> duringOperation;
    /// Who owns the print dialog.
    QWidget *printOwner = nullptr;

    void Clear() override;
    void LoadImageFile(const QString &path) override;
    void SaveImageFile(const QString &path, qint16 format) override;
    void PrintImage(QWidget *owner, double left, double top, double width, double height) override;
    void CopyToClipboard() override;
    SharedPicture Picture() const override;
    void setPicture(const SharedPicture &picture) override;
    qint32 Width() const override { return m_image.picture.size().width(); }
    qint32 Height() const override { return m_image.picture.size().height(); }
    qint16 BitsPerPixel() const override { return m_image.bitsPerPixel; }
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
    struct Image {
        SharedPicture picture;
        qint16 bitsPerPixel = 0;
    };

    void record(const QString &member, const QStringList &arguments = {}) const;
    bool operate(const QString &operation, const QStringList &arguments = {});
    bool scale(const QString &operation, const QStringList &arguments, QSizeF size);

    QString m_name;
    std::shared_ptr<QStringList> m_log;
    Image m_image;
    Image m_undo;
};

} // namespace vandrel::test
