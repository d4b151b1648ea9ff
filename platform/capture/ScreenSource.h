#pragma once

#include <functional>
#include <memory>

#include <QImage>
#include <QObject>
#include <QString>

namespace vandrel {

/// Hands over a picture of the screen, in Format_RGB32 and the screen's own pixels. Called once, on any one thread,
/// where it may take its time. Raises a RuntimeError that tells the reason where there is none.
using ScreenPicture = std::function<QImage()>;

/// Where pictures of the screen come from. User-interface thread only.
class ScreenSource : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Asks for the screen as it is now; given() or refused() follows, possibly from inside the call. Not to be called
    /// again before that. Destroying the source withdraws the question.
    virtual void ask() = 0;

    /// The source that fits the desktop that the program runs on.
    static std::unique_ptr<ScreenSource> ofDesktop();

Q_SIGNALS:
    void given(const vandrel::ScreenPicture &picture);
    /// `reason` is a whole sentence for the user.
    void refused(const QString &reason);
};

} // namespace vandrel
