#include "runtime/MessageDialog.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStyle>

#include "runtime/PromptText.h"

namespace vandrel {

namespace {

struct OfferedButton {
    QDialogButtonBox::StandardButton button;
    Answer answer;
};

// In the order of preference: the first is the default button.
const QList<OfferedButton> &offered(Buttons buttons)
{
    static const QList<OfferedButton> ok{{QDialogButtonBox::Ok, Answer::Ok}};
    static const QList<OfferedButton> yesNo{{QDialogButtonBox::Yes, Answer::Yes},
                                            {QDialogButtonBox::No, Answer::No}};
    static const QList<OfferedButton> yesNoCancel{{QDialogButtonBox::Yes, Answer::Yes},
                                                  {QDialogButtonBox::No, Answer::No},
                                                  {QDialogButtonBox::Cancel, Answer::Cancel}};
    switch (buttons) {
    case Buttons::OkOnly:
        return ok;
    case Buttons::YesNo:
        return yesNo;
    case Buttons::YesNoCancel:
        return yesNoCancel;
    }
    return ok;
}

struct ShownIcon {
    QStyle::StandardPixmap picture;
    QString name;
};

ShownIcon shownIcon(BoxIcon icon)
{
    switch (icon) {
    case BoxIcon::Critical:
        return {QStyle::SP_MessageBoxCritical, MessageDialog::tr("Error")};
    case BoxIcon::Exclamation:
        return {QStyle::SP_MessageBoxWarning, MessageDialog::tr("Warning")};
    case BoxIcon::Information:
    case BoxIcon::None:
        break;
    }
    return {QStyle::SP_MessageBoxInformation, MessageDialog::tr("Information")};
}

constexpr const char *answerProperty = "answer";

// Screen readers read an alert out as a whole, a mere dialog only by its title.
QAccessibleInterface *alertInterface(const QString &, QObject *object)
{
    auto *const dialog = qobject_cast<MessageDialog *>(object);
    return dialog ? new QAccessibleWidget(dialog, QAccessible::AlertMessage) : nullptr;
}

void announceAlerts()
{
    static const bool installed = [] {
        QAccessible::installFactory(alertInterface);
        return true;
    }();
    Q_UNUSED(installed)
}

} // namespace

Answer answerWhenClosed(Buttons buttons)
{
    return offered(buttons).last().answer;
}

MessageDialog::MessageDialog(const MessageBoxRequest &request, QWidget *parent)
    : QDialog(parent), m_message(request.text), m_text(makePromptText(request.text, this)),
      m_buttons(new QDialogButtonBox(this)), m_answer(answerWhenClosed(request.buttons))
{
    announceAlerts();
    auto *const layout = new QGridLayout(this);
    layout->addWidget(m_text, 0, 1);
    layout->addWidget(m_buttons, 1, 0, 1, 2);
    layout->setColumnStretch(1, 1);
    layout->setRowStretch(0, 1);
    layout->setHorizontalSpacing(0);
    addIcon(request.icon);
    addButtons(request.buttons);
    keepOnScreen(this);
}

void MessageDialog::addIcon(BoxIcon icon)
{
    if (icon == BoxIcon::None)
        return;
    const ShownIcon shown = shownIcon(icon);
    const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    auto *const label = new QLabel(this);
    label->setObjectName(QStringLiteral("icon"));
    label->setAccessibleName(shown.name);
    label->setPixmap(
        style()->standardIcon(shown.picture, nullptr, this).pixmap(QSize(size, size), devicePixelRatio()));
    auto *const grid = qobject_cast<QGridLayout *>(layout());
    grid->setHorizontalSpacing(size / 2);
    grid->addWidget(label, 0, 0, Qt::AlignTop);
}

void MessageDialog::addButtons(Buttons buttons)
{
    for (const OfferedButton &each : offered(buttons)) {
        QPushButton *const button = m_buttons->addButton(each.button);
        button->setProperty(answerProperty, static_cast<int>(each.answer));
    }
    QPushButton *const first = m_buttons->button(offered(buttons).first().button);
    first->setDefault(true);
    first->setFocus();
    // No onEvent here: this may be the error box itself, which must answer while all handlers rest.
    connect(m_buttons, &QDialogButtonBox::clicked, this, &MessageDialog::answerWith);
}

void MessageDialog::answerWith(const QAbstractButton *button)
{
    m_answer = static_cast<Answer>(button->property(answerProperty).toInt());
    accept();
}

void MessageDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void MessageDialog::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Copy))
        QApplication::clipboard()->setText(m_message);
    else if (!pressLetter(*event) && !scroll(*event))
        QDialog::keyPressEvent(event);
}

bool MessageDialog::pressLetter(const QKeyEvent &event)
{
    if (event.modifiers() != Qt::NoModifier)
        return false;
    const QKeySequence shortcut(Qt::ALT | static_cast<Qt::Key>(event.key()));
    for (QAbstractButton *const button : m_buttons->buttons()) {
        if (button->shortcut() == shortcut) {
            button->animateClick();
            return true;
        }
    }
    return false;
}

bool MessageDialog::scroll(QKeyEvent &event)
{
    auto *const view = qobject_cast<QPlainTextEdit *>(m_text);
    const bool scrolls = event.key() == Qt::Key_PageUp || event.key() == Qt::Key_PageDown
        || event.key() == Qt::Key_Home || event.key() == Qt::Key_End;
    if (!view || !scrolls || view->hasFocus())
        return false;
    QCoreApplication::sendEvent(view, &event);
    return true;
}

} // namespace vandrel
