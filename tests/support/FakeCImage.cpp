#include "tests/support/FakeCImage.h"

#include <utility>

#include <QPainter>

namespace vandrel::test {

namespace {

QString text(bool value)
{
    return value ? QStringLiteral("True") : QStringLiteral("False");
}

QString text(double value)
{
    return QString::number(value, 'g', 10);
}

QString text(qint32 value)
{
    return QString::number(value);
}

template<std::size_t count>
QStringList texts(const std::array<qint16, count> &values)
{
    QStringList texts;
    for (const qint16 value : values)
        texts.append(text(value));
    return texts;
}

} // namespace

void FakePixels::paint(QPainter &painter, const QRectF &target, const QRect &part) const
{
    painted.append(part);
    painter.fillRect(target, Qt::red);
}

SharedPicture newPicture(const QString &name, QSize size, qint16 bitsPerPixel)
{
    return SharedPicture(std::make_shared<FakePixels>(name, size, bitsPerPixel));
}

QString nameOf(const SharedPicture &picture)
{
    const auto *pixels = qobject_cast<const FakePixels *>(picture.pixels().get());
    return pixels ? pixels->name() : QStringLiteral("none");
}

void FakeCImage::record(const QString &member, const QStringList &arguments) const
{
    const QString call = m_name + u'.' + member;
    m_log->append(arguments.isEmpty() ? call : call + u' ' + arguments.join(QStringLiteral(", ")));
}

void FakeCImage::Clear()
{
    record(QStringLiteral("Clear"));
    m_image = {};
    m_undo = {};
}

void FakeCImage::LoadImageFile(const QString &path)
{
    record(QStringLiteral("LoadImageFile"), {path});
    m_undo = {};
    const auto found = files.find(path);
    if (found == files.end()) {
        m_image = {SharedPicture(RuntimeError(error::FileNotFound)), 0};
        return;
    }
    const File &file = found->second;
    m_image = {newPicture(path.section(u'\\', -1), file.size, file.bitsPerPixel), file.bitsPerPixel};
}

void FakeCImage::SaveImageFile(const QString &path, qint16 format)
{
    record(QStringLiteral("SaveImageFile"), {path, text(format)});
    if (const auto failure = std::exchange(saveFailure, std::nullopt))
        throw *failure;
}

void FakeCImage::PrintImage(QWidget *owner, double left, double top, double width, double height)
{
    printOwner = owner;
    record(QStringLiteral("PrintImage"), {text(left), text(top), text(width), text(height)});
}

void FakeCImage::CopyToClipboard()
{
    record(QStringLiteral("CopyToClipboard"));
}

SharedPicture FakeCImage::Picture() const
{
    record(QStringLiteral("Picture"));
    return m_image.picture;
}

void FakeCImage::setPicture(const SharedPicture &picture)
{
    record(QStringLiteral("Picture ="), {nameOf(picture)});
    if (picture.failure())
        throw *picture.failure();
    const auto *pixels = qobject_cast<const FakePixels *>(picture.pixels().get());
    m_image = {picture, pixels ? pixels->bitsPerPixel() : qint16{0}};
}

void FakeCImage::SetProcessingArea(qint32 left, qint32 top, qint32 width, qint32 height)
{
    record(QStringLiteral("SetProcessingArea"), {text(left), text(top), text(width), text(height)});
}

void FakeCImage::KeepUndo(bool keep)
{
    record(QStringLiteral("KeepUndo"), {text(keep)});
    m_undo = keep ? m_image : Image{};
}

void FakeCImage::Undo()
{
    record(QStringLiteral("Undo"));
    if (m_undo.picture.Handle())
        std::swap(m_image, m_undo);
}

bool FakeCImage::operate(const QString &operation, const QStringList &arguments)
{
    record(operation, arguments);
    if (duringOperation)
        duringOperation();
    if (m_image.picture.Handle())
        m_image.picture = newPicture(nameOf(m_image.picture) + u'+' + operation, m_image.picture.size(),
                                     m_image.bitsPerPixel);
    return true;
}

bool FakeCImage::scale(const QString &operation, const QStringList &arguments, QSizeF size)
{
    record(operation, arguments);
    m_image.picture
        = newPicture(nameOf(m_image.picture) + u'+' + operation, size.toSize(), m_image.bitsPerPixel);
    return true;
}

bool FakeCImage::Resize(double width, double height, qint32 mode)
{
    return scale(QStringLiteral("Resize"), {text(width), text(height), text(mode)}, {width, height});
}

bool FakeCImage::ResampleTo(float width, float height, qint32 mode)
{
    return scale(QStringLiteral("ResampleTo"),
                 {text(static_cast<double>(width)), text(static_cast<double>(height)), text(mode)},
                 {static_cast<double>(width), static_cast<double>(height)});
}

void FakeCImage::SetOption(qint16 code, qint16 value)
{
    record(QStringLiteral("SetOption"), {text(code), text(value)});
}

bool FakeCImage::AutoContrast()
{
    return operate(QStringLiteral("AutoContrast"));
}

bool FakeCImage::Deskew()
{
    return operate(QStringLiteral("Deskew"));
}

bool FakeCImage::Blur()
{
    return operate(QStringLiteral("Blur"));
}

bool FakeCImage::Equalize()
{
    return operate(QStringLiteral("Equalize"));
}

bool FakeCImage::Negative()
{
    return operate(QStringLiteral("Negative"));
}

bool FakeCImage::ConcaveSpectrum()
{
    return operate(QStringLiteral("ConcaveSpectrum"));
}

bool FakeCImage::ConvexSpectrum()
{
    return operate(QStringLiteral("ConvexSpectrum"));
}

bool FakeCImage::Rembrand()
{
    return operate(QStringLiteral("Rembrand"));
}

bool FakeCImage::BrokenTV()
{
    return operate(QStringLiteral("BrokenTV"));
}

bool FakeCImage::Emboss()
{
    return operate(QStringLiteral("Emboss"));
}

bool FakeCImage::FlipHorizontal()
{
    return operate(QStringLiteral("FlipHorizontal"));
}

bool FakeCImage::FlipVertical()
{
    return operate(QStringLiteral("FlipVertical"));
}

bool FakeCImage::Blend(double value)
{
    return operate(QStringLiteral("Blend"), {text(value)});
}

bool FakeCImage::Brightness(double value)
{
    return operate(QStringLiteral("Brightness"), {text(value)});
}

bool FakeCImage::Contrast(double value)
{
    return operate(QStringLiteral("Contrast"), {text(value)});
}

bool FakeCImage::Gamma(double value)
{
    return operate(QStringLiteral("Gamma"), {text(value)});
}

bool FakeCImage::Sharpen(double value)
{
    return operate(QStringLiteral("Sharpen"), {text(value)});
}

bool FakeCImage::Mosaic(double size)
{
    return operate(QStringLiteral("Mosaic"), {text(size)});
}

bool FakeCImage::Rotate(double degrees)
{
    return operate(QStringLiteral("Rotate"), {text(degrees)});
}

bool FakeCImage::BumpMap(qint16 depth, bool inverted)
{
    return operate(QStringLiteral("BumpMap"), {text(depth), text(inverted)});
}

bool FakeCImage::Warp(const std::array<qint16, 8> &points)
{
    return operate(QStringLiteral("Warp"), texts(points));
}

bool FakeCImage::Matrix(const std::array<qint16, 9> &kernel, qint16 divisor, qint16 bias)
{
    return operate(QStringLiteral("Matrix"), texts(kernel) + QStringList{text(divisor), text(bias)});
}

bool FakeCImage::ReplaceColors(qint32 from, qint32 to, qint32 replacement)
{
    return operate(QStringLiteral("ReplaceColors"), {text(from), text(to), text(replacement)});
}

bool FakeCImage::Buttonize(double intensity, double width)
{
    return operate(QStringLiteral("Buttonize"), {text(intensity), text(width)});
}

bool FakeCImage::AdjustRGB(double red, double green, double blue)
{
    return operate(QStringLiteral("AdjustRGB"), {text(red), text(green), text(blue)});
}

bool FakeCImage::AdjustHSL(double hue, double saturation, double luminosity)
{
    return operate(QStringLiteral("AdjustHSL"), {text(hue), text(saturation), text(luminosity)});
}

bool FakeCImage::ResampleColors(double bitsPerPixel, qint32 depthType, qint16 dither)
{
    m_image.bitsPerPixel = static_cast<qint16>(bitsPerPixel);
    return operate(QStringLiteral("ResampleColors"), {text(bitsPerPixel), text(depthType), text(dither)});
}

} // namespace vandrel::test
