#include "texteditor/StyleButton.h"

namespace vandrel {

StyleButton::StyleButton(Style style, const QString &caption, QWidget *parent)
    : QToolButton(parent), m_style(style)
{
    setText(caption);
    setCheckable(true);
    setAutoRaise(true);
    setFocusPolicy(Qt::TabFocus);
    setFontStyle(true);
}

bool StyleButton::FontStyle() const
{
    switch (m_style) {
    case Style::Bold:
        return font().bold();
    case Style::Italic:
        return font().italic();
    case Style::Underline:
        return font().underline();
    }
    return false;
}

void StyleButton::setFontStyle(bool drawn)
{
    QFont changed = font();
    switch (m_style) {
    case Style::Bold:
        changed.setBold(drawn);
        break;
    case Style::Italic:
        changed.setItalic(drawn);
        break;
    case Style::Underline:
        changed.setUnderline(drawn);
        break;
    }
    setFont(changed);
    setChecked(!drawn);
}

} // namespace vandrel
