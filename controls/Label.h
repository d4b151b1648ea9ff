#pragma once

#include <QLabel>

namespace vandrel {

/// A label that can be clicked. A double click raises Click for its first press and DblClick for its second.
/// Both are raised when the button is let go, inside the label. A label given a focus policy can be worked
/// from the keyboard: Space is a click, Enter a double click (Click, then DblClick).
class Label : public QLabel
{
    Q_OBJECT

public:
    explicit Label(const QString &caption, QWidget *parent = nullptr);

    /// The colour of the caption, an RGB Long (0x00BBGGRR).
    qint32 ForeColor() const { return m_foreColor; }
    void setForeColor(qint32 rgbLong);

Q_SIGNALS:
    void Click();
    void DblClick();
    /// A mouse button was let go that was pressed here, wherever the pointer is by now.
    void MouseUp();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

    /// Draws the frame that shows where the keyboard works, while that is here.
    void drawFocus();

private:
    enum class Press { None, Single, Double };

    qint32 m_foreColor = 0;
    Press m_press = Press::None;
};

} // namespace vandrel
