#include "runtime/InputDialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include "runtime/PromptText.h"

namespace vandrel {

namespace {
constexpr int shortestLine = 40; // characters
}

InputDialog::InputDialog(const InputBoxRequest &request, QWidget *parent)
    : QDialog(parent), m_edit(new QLineEdit(request.defaultText, this))
{
    QWidget *const prompt = makePromptText(request.prompt, this);
    label(prompt, request.prompt);
    m_edit->setObjectName(QStringLiteral("input"));
    m_edit->setMinimumWidth(fontMetrics().averageCharWidth() * shortestLine);
    m_edit->selectAll();
    m_edit->setFocus();
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(prompt, 1);
    layout->addWidget(m_edit);
    layout->addWidget(buttons);
    keepOnScreen(this);
}

// A label with a buddy takes an ampersand for a mnemonic, and a prompt may name a file with one.
void InputDialog::label(QWidget *prompt, const QString &text)
{
    auto *const label = qobject_cast<QLabel *>(prompt);
    if (!label) {
        m_edit->setAccessibleName(text);
        return;
    }
    label->setTextInteractionFlags(Qt::NoTextInteraction);
    label->setText(label->text().replace(u'&', QStringLiteral("&&")));
    label->setBuddy(m_edit);
}

QString InputDialog::typed() const
{
    return result() == Accepted ? m_edit->text() : QString();
}

} // namespace vandrel
