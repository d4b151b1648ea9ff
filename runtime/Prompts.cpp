#include "runtime/Prompts.h"

#include <QApplication>
#include <QInputDialog>
#include <QMessageBox>

#include "runtime/EventGate.h"

namespace vandrel {

namespace {

class RealPrompts : public Prompts
{
public:
    Answer messageBox(const MessageBoxRequest &request) override;
    QString inputBox(const InputBoxRequest &request) override;
    void errorBox(const RuntimeError &failure) override;
};

// The toolkit would show the program's name for an empty title.
QString shownTitle(const QString &title)
{
    return title.isEmpty() ? QStringLiteral(" ") : title;
}

Answer RealPrompts::messageBox(const MessageBoxRequest &request)
{
    const EventGate::Hold hold;
    QMessageBox box(QApplication::activeWindow());
    box.setWindowTitle(shownTitle(request.title));
    box.setTextFormat(Qt::PlainText);
    box.setText(request.text);
    switch (request.buttons) {
    case Buttons::OkOnly:
        box.setStandardButtons(QMessageBox::Ok);
        break;
    case Buttons::YesNo:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        break;
    case Buttons::YesNoCancel:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
        break;
    }
    switch (request.icon) {
    case BoxIcon::None:
        break;
    case BoxIcon::Critical:
        box.setIcon(QMessageBox::Critical);
        break;
    case BoxIcon::Information:
        box.setIcon(QMessageBox::Information);
        break;
    }
    switch (box.exec()) {
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    case QMessageBox::Cancel:
        return Answer::Cancel;
    default:
        return Answer::Ok;
    }
}

QString RealPrompts::inputBox(const InputBoxRequest &request)
{
    const EventGate::Hold hold;
    return QInputDialog::getText(QApplication::activeWindow(), shownTitle(request.title), request.prompt,
                                 QLineEdit::Normal, request.defaultText);
}

void RealPrompts::errorBox(const RuntimeError &failure)
{
    messageBox({QStringLiteral("Run-time error '%1':\n\n%2").arg(failure.number()).arg(failure.text()),
                applicationTitle(), Buttons::OkOnly, BoxIcon::Critical});
}

Prompts *current = nullptr;

} // namespace

Prompts &prompts()
{
    static RealPrompts real;
    return current ? *current : real;
}

void setPrompts(Prompts *replacement)
{
    current = replacement;
}

QString applicationTitle()
{
    return QStringLiteral("Vandrel");
}

Answer MsgBox(const QString &text, Buttons buttons, BoxIcon icon)
{
    return MsgBox(text, buttons, icon, applicationTitle());
}

Answer MsgBox(const QString &text, Buttons buttons, BoxIcon icon, const QString &title)
{
    return prompts().messageBox({text, title, buttons, icon});
}

QString InputBox(const QString &prompt, const QString &title, const QString &defaultText)
{
    return prompts().inputBox({prompt, title, defaultText});
}

} // namespace vandrel
