#pragma once

#include <QToolButton>

namespace vandrel {

/// A button whose caption is drawn in the style that pressing it will give the text: the opposite of the style
/// that the text has. The button looks pressed while the text has the style.
class StyleButton : public QToolButton
{
    Q_OBJECT

public:
    enum class Style { Bold, Italic, Underline };

    StyleButton(Style style, const QString &caption, QWidget *parent);

    /// Whether the caption is drawn bold, italic or underlined.
    bool FontStyle() const;
    void setFontStyle(bool drawn);

private:
    Style m_style;
};

} // namespace vandrel
