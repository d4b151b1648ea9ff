#include "controls/StatusBar.h"

#include <QStyleOptionFocusRect>
#include <QStylePainter>

#include "controls/Label.h"
#include "runtime/Events.h"

namespace vandrel {

/// The one text of a status bar.
class StatusText final : public Label
{
public:
    explicit StatusText(QWidget *parent) : Label(QString(), parent)
    {
        // What a server says may look like markup.
        setTextFormat(Qt::PlainText);
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        setFocusPolicy(Qt::TabFocus);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QStylePainter painter(this);
        drawFrame(&painter);
        painter.drawItemText(
            contentsRect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, palette(), isEnabled(),
            fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width()), foregroundRole());
        if (!hasFocus())
            return;
        QStyleOptionFocusRect option;
        option.initFrom(this);
        painter.drawPrimitive(QStyle::PE_FrameFocusRect, option);
    }
};

StatusBar::StatusBar(QWidget *parent) : QStatusBar(parent), m_text(new StatusText(this))
{
    m_text->setObjectName(QStringLiteral("SimpleText"));
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
    auto *panel = new StatusText(this);
    panel->setObjectName(name);
    panel->setFocusPolicy(Qt::NoFocus);
    panel->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    panel->setMinimumWidth(panel->fontMetrics().horizontalAdvance(sample + QStringLiteral("  ")));
    addWidget(panel, stretch);
    return panel;
}

} // namespace vandrel
