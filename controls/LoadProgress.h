#pragma once

#include <QFrame>

class QProgressBar;

namespace vandrel {

/// The quiet box in the middle of a rich-text box that is being filled: how far it has come, and Cancel.
class LoadProgress : public QFrame
{
    Q_OBJECT

public:
    explicit LoadProgress(QWidget *parent);

    /// 0 to 1; negative when it is not known.
    void setProgress(double progress);
    /// Moves the box to the middle of its parent.
    void center();

Q_SIGNALS:
    void cancelled();

private:
    QProgressBar *m_bar;
};

} // namespace vandrel
