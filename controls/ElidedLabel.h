#pragma once

#include "controls/Label.h"

namespace vandrel {

/// A label of one line that takes the room there is: a caption that does not fit is cut with an ellipsis, and then
/// shown whole in a tool tip.
class ElidedLabel : public Label
{
    Q_OBJECT

public:
    /// `where` the ellipsis stands.
    explicit ElidedLabel(Qt::TextElideMode where, QWidget *parent = nullptr);

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QString shownText() const;

    Qt::TextElideMode m_where;
};

} // namespace vandrel
