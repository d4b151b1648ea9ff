#pragma once

#include <QPushButton>

namespace vandrel {

/// A push button whose caption stands on two lines where two or more blanks part its words; blanks at the caption's
/// ends are not shown. The caption itself, which assistive tools read, keeps them. Enter presses the button that has
/// the focus.
class CommandButton : public QPushButton
{
    Q_OBJECT

public:
    explicit CommandButton(const QString &caption, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString shownCaption() const;
};

} // namespace vandrel
