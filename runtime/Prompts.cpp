#include "runtime/Prompts.h"

#include <QApplication>
#include <QPointer>

#include "runtime/EventGate.h"
#include "runtime/InputDialog.h"
#include "runtime/MessageDialog.h"

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

// An open menu keeps the mouse and the keyboard to itself; a box that opens behind it could not be answered.
void closeMenus()
{
    while (QWidget *const menu = QApplication::activePopupWidget()) {
        menu->close();
        if (QApplication::activePopupWidget() == menu)
            return;
    }
}

QWidget *owner()
{
    QWidget *const modal = QApplication::activeModalWidget();
    return modal ? modal : QApplication::activeWindow();
}

// Shows the box over whatever is active and runs it to its end. The owner may be closed and destroyed
// meanwhile, and the box with it: then there is no box left to ask.
template<typename Dialog, typename Request, typename Result>
Result runBox(const Request &request, Result (Dialog::*result)() const, const Result &whenGone)
{
    const EventGate::Hold hold;
    closeMenus();
    const QPointer<Dialog> box = new Dialog(request, owner());
    box->setWindowTitle(shownTitle(request.title));
    box->setWindowIcon(QApplication::windowIcon());
    box->setAttribute(Qt::WA_QuitOnClose, false);
    box->exec();
    const Result given = box ? (box->*result)() : whenGone;
    delete box;
    return given;
}

Answer RealPrompts::messageBox(const MessageBoxRequest &request)
{
    return runBox(request, &MessageDialog::answer, answerWhenClosed(request.buttons));
}

QString RealPrompts::inputBox(const InputBoxRequest &request)
{
    return runBox(request, &InputDialog::typed, QString());
}

void RealPrompts::errorBox(const RuntimeError &failure)
{
    // No window can open before the application is there, nor after it has gone.
    if (!qobject_cast<QApplication *>(QCoreApplication::instance()) || QCoreApplication::closingDown())
        throw failure;
    messageBox(
        {QStringLiteral("Run-time error '%1':\n\n%2").arg(QString::number(failure.number()), failure.text()),
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
