#pragma once

#include <QPoint>
#include <QPushButton>

namespace vandrel {

/// The button between the two scroll bars. Dragged, it takes the lower right corner of the view along.
class CornerHandle : public QPushButton
{
    Q_OBJECT

public:
    explicit CornerHandle(QWidget *parent);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QPoint m_pressedAt;
};

} // namespace vandrel
