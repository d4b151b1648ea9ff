#include "tests/support/FakeDecoders.h"

#include <utility>

#include <QColor>

namespace vandrel::test {

void FakePicture::arrive(const QImage &image)
{
    m_image = image;
    m_state = image.isNull() ? State::Unreadable : State::Ready;
    Q_EMIT changed();
}

class FakeDecoder final : public PictureDecoder
{
public:
    FakeDecoder(FakeDecoders &all, int number) : m_all(all), m_number(number), m_alive(all.m_alive)
    {
        ++*m_alive;
    }
    ~FakeDecoder() override { --*m_alive; }

    void LoadImageFile(const QString &path) override
    {
        note(QStringLiteral("load ") + path);
        m_path = path;
    }
    void ShowIn(const QSize &inside) override { m_all.shownIn = inside; }
    void Prepare(const QString &path) override { note(QStringLiteral("prepare ") + path); }
    void ResampleTo(float width, float height, qint32 mode) override
    {
        note(QStringLiteral("resample %1 %2 %3").arg(width).arg(height).arg(mode));
    }
    void SetOption(qint16 code, qint16 value) override
    {
        note(QStringLiteral("option %1 %2").arg(code).arg(value));
    }
    std::shared_ptr<ComingPicture> Picture() override
    {
        auto picture = std::make_shared<FakePicture>(m_path);
        m_all.m_pictures.push_back(picture);
        const auto known = m_all.atOnce.find(m_path);
        if (known != m_all.atOnce.end())
            picture->arrive(known->second);
        return picture;
    }

private:
    void note(const QString &call) { m_all.calls.append(QString::number(m_number) + u' ' + call); }

    FakeDecoders &m_all;
    int m_number;
    std::shared_ptr<int> m_alive;
    QString m_path;
};

std::unique_ptr<PictureDecoder> FakeDecoders::make()
{
    return std::make_unique<FakeDecoder>(*this, m_made++);
}

std::vector<std::shared_ptr<FakePicture>> FakeDecoders::pictures() const
{
    std::vector<std::shared_ptr<FakePicture>> held;
    for (const auto &each : m_pictures) {
        if (auto picture = each.lock())
            held.push_back(std::move(picture));
    }
    return held;
}

std::shared_ptr<FakePicture> FakeDecoders::picture(const QString &path) const
{
    std::shared_ptr<FakePicture> found;
    for (const auto &each : pictures()) {
        if (each->path() == path)
            found = each;
    }
    return found;
}

QImage plainPicture(const QSize &size, const QColor &color)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

} // namespace vandrel::test
