#include "texteditor/NoticeBar.h"

#include <algorithm>

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QStyle>
#include <QToolButton>

#include "runtime/Events.h"

namespace vandrel {

namespace {

constexpr int mostLines = 4;

} // namespace

NoticeBar::NoticeBar(QWidget *parent)
    : QFrame(parent), m_view(new QScrollArea(this)), m_text(new QLabel(m_view))
{
    setObjectName(QStringLiteral("notices"));
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);

    m_text->setObjectName(QStringLiteral("noticeText"));
    m_text->setTextFormat(Qt::PlainText);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_text->setWordWrap(true);
    m_text->setForegroundRole(QPalette::ToolTipText);
    m_view->setWidget(m_text);
    m_view->setWidgetResizable(true);
    m_view->setFrameShape(QFrame::NoFrame);
    m_view->setFocusPolicy(Qt::NoFocus);
    m_view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_view->viewport()->setBackgroundRole(QPalette::ToolTipBase);
    m_view->viewport()->installEventFilter(this);

    auto *closeButton = new QToolButton(this);
    closeButton->setObjectName(QStringLiteral("closeNotices"));
    closeButton->setAutoRaise(true);
    closeButton->setFocusPolicy(Qt::TabFocus);
    closeButton->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    closeButton->setToolTip(tr("Close the notices"));
    closeButton->setAccessibleName(closeButton->toolTip());
    onEvent(closeButton, &QToolButton::clicked, this, &QWidget::hide);

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(8, 4, 4, 4);
    row->addWidget(m_view, 1);
    row->addWidget(closeButton, 0, Qt::AlignTop);
    hide();
}

void NoticeBar::setNotices(const QStringList &sentences)
{
    m_text->setText(sentences.join(u'\n'));
    setVisible(!sentences.isEmpty());
    if (sentences.isEmpty())
        return;
    adjustHeight();
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

// Where the lines of the text break depends on the width of its view.
bool NoticeBar::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_view->viewport() && event->type() == QEvent::Resize)
        adjustHeight();
    return QFrame::eventFilter(watched, event);
}

void NoticeBar::changeEvent(QEvent *event)
{
    QFrame::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        adjustHeight();
}

void NoticeBar::adjustHeight()
{
    if (m_text->text().isEmpty())
        return;
    const int width = std::max(1, m_view->viewport()->width());
    m_view->setFixedHeight(
        std::min(m_text->heightForWidth(width), mostLines * m_text->fontMetrics().lineSpacing()));
}

} // namespace vandrel
