#include "platform/pictures/ThreadedDecoders.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <QGuiApplication>
#include <QScreen>

#include "platform/pictures/PictureStore.h"
#include "runtime/RuntimeError.h"
#include "runtime/Twips.h"

namespace vandrel {

namespace {

constexpr qint16 qualityOption = 4;
constexpr int slideQuality = 100;
constexpr int bestQuality = 100;

double largestRatio()
{
    return qGuiApp ? qGuiApp->devicePixelRatio() : 1;
}

// The screen on which a picture can be largest.
QSize screenPixels()
{
    QSize largest(1, 1);
    const QList<QScreen *> screens = QGuiApplication::screens();
    for (const QScreen *screen : screens)
        largest = largest.expandedTo(screen->size() * screen->devicePixelRatio());
    return largest;
}

class ThreadedDecoder final : public PictureDecoder
{
public:
    explicit ThreadedDecoder(std::shared_ptr<PictureStore> store) : m_store(std::move(store)) { }

    void LoadImageFile(const QString &path) override;
    void ShowIn(const QSize &inside) override;
    void Prepare(const QString &path) override;
    void ResampleTo(float width, float height, qint32 mode) override;
    void SetOption(qint16 code, qint16 value) override;
    std::shared_ptr<ComingPicture> Picture() override;

private:
    std::shared_ptr<StoredPicture> slide(const QString &path) const;

    std::shared_ptr<PictureStore> m_store;
    /// In pixels of the sharpest screen; empty until it is told.
    QSize m_shownIn;
    QString m_path;
    PictureWish m_wish;
    bool m_isResampled = false;
    std::shared_ptr<StoredPicture> m_picture;
    std::shared_ptr<StoredPicture> m_prepared;
};

void ThreadedDecoder::LoadImageFile(const QString &path)
{
    m_path = path;
    m_isResampled = false;
    m_wish = {{}, bestQuality, {}};
    m_picture.reset();
}

void ThreadedDecoder::ShowIn(const QSize &inside)
{
    m_shownIn = inside * largestRatio();
}

std::shared_ptr<StoredPicture> ThreadedDecoder::slide(const QString &path) const
{
    return std::make_shared<StoredPicture>(m_store, path,
                                           PictureWish{screenPixels(), slideQuality, m_shownIn}, true);
}

void ThreadedDecoder::Prepare(const QString &path)
{
    m_prepared = slide(path);
}

void ThreadedDecoder::ResampleTo(float width, float height, qint32 mode)
{
    if (mode != 0)
        throw RuntimeError(error::InvalidProcedureCall);
    const double ratio = largestRatio() / twipsPerPixel;
    m_wish.box
        = QSize(static_cast<int>(std::lround(width * ratio)), static_cast<int>(std::lround(height * ratio)))
              .expandedTo({1, 1});
    if (!m_shownIn.isEmpty())
        m_wish.box = m_wish.box.boundedTo(m_shownIn);
    m_isResampled = true;
    m_picture.reset();
}

void ThreadedDecoder::SetOption(qint16 code, qint16 value)
{
    if (code != qualityOption)
        throw RuntimeError(error::InvalidProcedureCall);
    m_wish.quality = std::clamp<int>(value, 0, bestQuality);
    m_picture.reset();
}

// Decoding begins only now, when it is known how large.
std::shared_ptr<ComingPicture> ThreadedDecoder::Picture()
{
    if (m_path.isEmpty() || m_picture)
        return m_picture;
    if (m_isResampled)
        m_picture = std::make_shared<StoredPicture>(m_store, m_path, m_wish, false);
    else if (m_prepared && m_prepared->path() == m_path)
        m_picture = std::exchange(m_prepared, nullptr);
    else
        m_picture = slide(m_path);
    return m_picture;
}

} // namespace

ThreadedDecoders::ThreadedDecoders(std::shared_ptr<DriveView> view, qint64 budget)
    : m_store(std::make_shared<PictureStore>(std::move(view), budget))
{ }

ThreadedDecoders::~ThreadedDecoders() = default;

std::unique_ptr<PictureDecoder> ThreadedDecoders::make()
{
    return std::make_unique<ThreadedDecoder>(m_store);
}

qint64 ThreadedDecoders::size() const
{
    return m_store->size();
}

} // namespace vandrel
