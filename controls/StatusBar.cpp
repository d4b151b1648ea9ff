#include "controls/StatusBar.h"

#include "controls/ElidedLabel.h"
#include "runtime/Events.h"

namespace vandrel {

StatusBar::StatusBar(QWidget *parent) : QStatusBar(parent), m_text(new ElidedLabel(Qt::ElideRight, this))
{
    m_text->setObjectName(QStringLiteral("SimpleText"));
    m_text->setFocusPolicy(Qt::TabFocus);
    addWidget(m_text, 1);
    m_text->hide();
    onEvent(m_text, &Label::Click, this, &StatusBar::Click);
}

void StatusBar::setStyle(StyleKind style)
{
    m_style = style;
    m_text->setVisible(style == Simple);
}

QString StatusBar::SimpleText() const
{
    return m_text->text();
}

void StatusBar::setSimpleText(const QString &text)
{
    m_text->setText(text);
}

Label *StatusBar::addPanel(const QString &name, const QString &sample, int stretch)
{
    auto *panel = new ElidedLabel(Qt::ElideRight, this);
    panel->setObjectName(name);
    panel->setFocusPolicy(Qt::NoFocus);
    panel->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    // A panel without a stretch is never narrower than its text.
    if (stretch == 0)
        panel->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    panel->setMinimumWidth(panel->fontMetrics().horizontalAdvance(sample + QStringLiteral("  ")));
    // A text of any length beside it leaves the panel its room.
    if (stretch == 0)
        panel->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    addWidget(panel, stretch);
    return panel;
}

} // namespace vandrel
