#pragma once

#include <QWidget>

class QToolButton;

namespace vandrel {

/// A pair of arrows beside a box. A press raises the event at once, and again and again while it lasts; the arrow keys
/// do the same.
class UpDown : public QWidget
{
    Q_OBJECT

public:
    explicit UpDown(QWidget *parent = nullptr);

Q_SIGNALS:
    void UpClick();
    void DownClick();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QToolButton *arrow(Qt::ArrowType type, const QString &name);
};

} // namespace vandrel
