#include "platform/web/FindBar.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QWebEngineFindTextResult>
#include <QWebEnginePage>

#include "runtime/Events.h"

namespace vandrel {

FindBar::FindBar(QWebEnginePage *page, QWidget *parent)
    : QWidget(parent), m_page(page), m_words(new QLineEdit(this)), m_found(new QLabel(this))
{
    setObjectName(QStringLiteral("FindBar"));
    m_words->setObjectName(QStringLiteral("findWords"));
    m_words->setAccessibleName(tr("Find"));
    m_found->setObjectName(QStringLiteral("found"));
    m_found->setAccessibleName(tr("Found"));
    auto *next = new QPushButton(tr("&Next"), this);
    auto *previous = new QPushButton(tr("&Previous"), this);
    auto *close = new QPushButton(tr("&Close"), this);
    auto *label = new QLabel(tr("&Find:"), this);
    label->setBuddy(m_words);

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(4, 2, 4, 2);
    row->addWidget(label);
    row->addWidget(m_words, 1);
    for (QWidget *each : std::initializer_list<QWidget *>{m_found, previous, next, close})
        row->addWidget(each);

    onEvent(m_words, &QLineEdit::textChanged, this, [this] { find(false); });
    onEvent(next, &QPushButton::clicked, this, [this] { find(false); });
    onEvent(previous, &QPushButton::clicked, this, [this] { find(true); });
    onEvent(close, &QPushButton::clicked, this, [this] { closeRow(); });
    onEvent(m_page, &QWebEnginePage::findTextFinished, this, [this](const QWebEngineFindTextResult &result) {
        m_found->setText(m_words->text().isEmpty()
                             ? QString()
                             : tr("%1 of %2").arg(result.activeMatch()).arg(result.numberOfMatches()));
    });
    hide();
}

void FindBar::open()
{
    show();
    m_words->setFocus(Qt::ShortcutFocusReason);
    m_words->selectAll();
}

void FindBar::find(bool backward)
{
    m_page->findText(m_words->text(), backward ? QWebEnginePage::FindBackward : QWebEnginePage::FindFlags());
}

void FindBar::closeRow()
{
    m_page->findText({});
    hide();
    parentWidget()->setFocus();
}

void FindBar::keyPressEvent(QKeyEvent *event)
{
    guarded([&] {
        if (event->key() == Qt::Key_Escape)
            closeRow();
        else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
            find(event->modifiers().testFlag(Qt::ShiftModifier));
        else
            QWidget::keyPressEvent(event);
    });
}

} // namespace vandrel
