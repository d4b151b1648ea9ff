#pragma once

#include <map>
#include <memory>
#include <vector>

#include <QStringList>

#include "controls/PictureDecoder.h"

namespace vandrel::test {

/// A picture that comes when the test says so.
class FakePicture final : public ComingPicture
{
    Q_OBJECT

public:
    explicit FakePicture(QString path) : m_path(std::move(path)) { }

    const QString &path() const { return m_path; }
    bool isSeen() const { return m_isSeen; }
    /// Makes it ready, or unreadable with a null image.
    void arrive(const QImage &image);

    State state() const override { return m_state; }
    QImage image() const override { return m_image; }
    void setSeen(bool seen) override { m_isSeen = seen; }

private:
    QString m_path;
    State m_state = State::Coming;
    QImage m_image;
    bool m_isSeen = false;
};

/// Decoders that write down what they are asked, each call with the number of the decoder: "0 load c:\\a.jpg". They
/// decode nothing: files named so are ready or unreadable at once, others come when the test says so.
class FakeDecoders final : public PictureDecoders
{
public:
    QStringList calls;
    /// The box that a decoder was told of last.
    QSize shownIn;
    /// What is decoded by the time it is asked for; a null image for what cannot be read.
    std::map<QString, QImage> atOnce;
    /// All that was handed over and is still held, in order.
    std::vector<std::shared_ptr<FakePicture>> pictures() const;
    /// The last one handed over for that path; null when nobody holds it.
    std::shared_ptr<FakePicture> picture(const QString &path) const;
    int alive() const { return *m_alive; }

    std::unique_ptr<PictureDecoder> make() override;

private:
    friend class FakeDecoder;
    std::vector<std::weak_ptr<FakePicture>> m_pictures;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
    int m_made = 0;
};

/// A picture of one colour.
QImage plainPicture(const QSize &size, const QColor &color);

} // namespace vandrel::test
