#pragma once

#include <QObject>
#include <QString>

namespace vandrel {

/// Saves a picture of the whole screen, all its monitors, as a bitmap file. User-interface thread only; raises no
/// events. What goes wrong it tells the user itself, in a box that names the file.
///
/// All assignments return at once. A capture takes the members as they are when it is asked for; the picture is that of
/// the moment when its delay is over, and the file is replaced as a whole or, after a failure, stays as it was. A
/// capture that is asked for while another one still waits for its delay takes that one's place; those whose delay is
/// over are done in order. Destroying the control calls off whatever is not yet saved, closes the preview, and tells
/// nothing more.
class ScreenCapture : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Whether the picture is shown in a window of its own once it is saved; no, until assigned.
    virtual void setPreview(bool show) = 0;
    /// True captures the screen after the delay and saves it. False calls off a capture that waits for its delay.
    virtual void setCapture(bool start) = 0;
    /// How long to wait before capturing, in seconds, fractions included; less than 0 is no delay, and more than 24
    /// days are 24 days. 0 until assigned.
    virtual void setDelay(double seconds) = 0;
    /// The file to save to, a DOS-style path; blanks around it do not count.
    virtual void setFile(const QString &dosPath) = 0;
};

} // namespace vandrel
