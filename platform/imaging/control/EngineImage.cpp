#include "platform/imaging/control/EngineImage.h"

#include <algorithm>

#include "platform/imaging/operations/Resize.h"
#include "platform/imaging/raster/PixelBuffer.h"

namespace vandrel {

namespace {

OperationProgress reportTo(WorkProgress &progress)
{
    return [&progress](int percent) { progress = percent; };
}

} // namespace

EngineImage::EngineImage(EngineServices services, QObject *parent)
    : CImage(parent), m_services(std::move(services))
{ }

EngineImage::~EngineImage() = default;

void EngineImage::Clear()
{
    setImage({{}, QSize(0, 0), 0});
    m_undo = m_image;
    m_failure.reset();
    PixelBuffer::releaseSpare();
}

SharedPicture EngineImage::Picture() const
{
    if (m_image.isNull())
        return m_failure ? SharedPicture(*m_failure) : SharedPicture();
    if (!m_shared)
        m_shared = std::make_shared<RasterPicture>(m_image);
    return SharedPicture(m_shared);
}

void EngineImage::setPicture(const SharedPicture &picture)
{
    if (picture.failure())
        throw RuntimeError(*picture.failure());
    if (picture.Handle() == 0) {
        Clear();
        return;
    }
    const auto pixels = std::dynamic_pointer_cast<const RasterPicture>(picture.pixels());
    if (!pixels)
        throw RuntimeError(error::InvalidPicture);
    if (pixels->picture().source != m_undo.source)
        m_undo = {{}, QSize(0, 0), 0};
    m_failure.reset();
    setImage(pixels->picture());
    m_shared = std::const_pointer_cast<RasterPicture>(pixels);
    showWholeArea();
}

qint16 EngineImage::BitsPerPixel() const
{
    return static_cast<qint16>(m_image.raster.bitsPerPixel());
}

void EngineImage::SetProcessingArea(qint32 left, qint32 top, qint32 width, qint32 height)
{
    if (!m_image.isNull())
        m_area = {left, top, width, height};
}

void EngineImage::KeepUndo(bool keep)
{
    m_undo = keep ? m_image : ScaledRaster{{}, QSize(0, 0), 0};
}

void EngineImage::Undo()
{
    if (m_undo.isNull())
        return;
    const ScaledRaster current = m_image;
    setImage(m_undo);
    m_undo = current;
}

bool EngineImage::Resize(double width, double height, qint32 mode)
{
    constexpr qint32 forView = 1;
    if (m_image.isNull())
        return refuse(tr("There is no picture to resize."));
    if (mode != forView) {
        return operate([=](const Subject &subject) { return resize(subject, width, height); });
    }
    // A size for a view may be larger than a picture can be.
    constexpr double longestSide = 8 * 65535.0;
    if (!(width >= 1 && height >= 1 && width <= longestSide && height <= longestSide))
        return refuse(tr("A picture cannot be %1 x %2 pixels large.").arg(width).arg(height));
    ScaledRaster scaled = m_image;
    scaled.size = QSize(qRound(width), qRound(height));
    setImage(scaled);
    return true;
}

bool EngineImage::operate(const WholeOperation &operation)
{
    if (m_image.isNull())
        return refuse(tr("There is no picture to process."));
    const Raster raster = computedRaster();
    if (raster.isNull())
        return false;
    // Held by whoever shows it; the engine's memory should not hold the image a second time.
    Subject subject{raster};
    if (m_area != raster.area())
        subject.area = m_area;
    Outcome outcome;
    work([&](WorkProgress &progress) {
        subject.progress = reportTo(progress);
        outcome = operation(subject);
    });
    if (!outcome.done)
        return refuse(whyRefused(subject));
    if (!outcome.picture.sharesPixelsWith(raster) || m_image.isScaled())
        setImage({outcome.picture, QSize(outcome.picture.width(), outcome.picture.height()), m_image.source});
    return true;
}

Raster EngineImage::computedRaster()
{
    if (!m_image.isScaled())
        return m_image.raster;
    Outcome outcome;
    work([&](WorkProgress &progress) {
        outcome
            = resize({m_image.raster, {}, reportTo(progress)}, m_image.size.width(), m_image.size.height());
    });
    if (outcome.done)
        return outcome.picture;
    refuse(tr("%1 x %2 pixels are more than a picture can have, or than there is memory for.")
               .arg(m_image.size.width())
               .arg(m_image.size.height()));
    return {};
}

void EngineImage::setImage(const ScaledRaster &image)
{
    const bool keepsSize = image.size == m_image.size;
    m_image = image;
    m_shared.reset();
    if (!keepsSize)
        showWholeArea();
}

void EngineImage::showWholeArea()
{
    m_area = {0, 0, m_image.size.width(), m_image.size.height()};
}

void EngineImage::work(const std::function<void(WorkProgress &)> &task)
{
    doLongWork(task, [this](double done) { Q_EMIT Progress(done); });
}

bool EngineImage::refuse(const QString &sentence)
{
    Q_EMIT Notice(sentence);
    return false;
}

QString EngineImage::whyRefused(const Subject &subject) const
{
    if (workingArea(subject).isEmpty())
        return tr("The processing area is empty or lies outside of the picture.");
    return tr("This cannot be done with these values, or the result would be larger than a picture can be.");
}

} // namespace vandrel
