// Fails in the way its argument names, as a tool of the suite might. Each box is told on the standard output
// and answered with its default button.

#include <cstdio>
#include <functional>
#include <new>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <vector>

#include <QCloseEvent>
#include <QDialog>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

#include "runtime/EventGate.h"
#include "runtime/Events.h"
#include "runtime/Prompts.h"
#include "runtime/SuiteApplication.h"

using namespace vandrel;

namespace {

constexpr int answerDelay = 50; // milliseconds: long enough for what happens behind a box

// Tells each box that opens, once, and presses its default button a little later.
class BoxReader : public QObject
{
    Q_OBJECT

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *const box = qobject_cast<QDialog *>(watched);
        if (box && event->type() == QEvent::Show)
            QTimer::singleShot(answerDelay, box, [box] { answer(*box); });
        return false;
    }

private:
    static void answer(QDialog &box)
    {
        // A box under another one waits until it is on top again.
        if (QApplication::activeModalWidget() != &box) {
            QTimer::singleShot(answerDelay, &box, [&box] { answer(box); });
            return;
        }
        const auto *const label = box.findChild<QLabel *>(QStringLiteral("text"));
        QString text = label->text();
        text.replace(u'\n', u'|');
        std::printf("box [%s] %s\n", qPrintable(box.windowTitle()), qPrintable(text));
        for (QPushButton *const button : box.findChildren<QPushButton *>()) {
            if (button->isDefault())
                button->click();
        }
    }
};

[[noreturn]] void overflow()
{
    throw RuntimeError(error::Overflow);
}

class Form : public QWidget
{
    Q_OBJECT

public:
    std::function<void()> onShow = [] {};
    std::function<void()> onClose = [] {};
    std::function<void()> onCloseUnguarded = [] {};

protected:
    void showEvent(QShowEvent *) override { guarded(onShow); }
    void closeEvent(QCloseEvent *event) override
    {
        guarded([&] {
            // The unload handler of a program that ends by itself never runs.
            std::puts("unloading");
            onClose();
            event->accept();
        });
        onCloseUnguarded();
    }
};

struct Failures {
    Form form;
    QPushButton button;
    QTimer timer;

    // The button's handler fails with what is thrown here.
    void onClick(const std::function<void()> &handler)
    {
        onEvent(&button, &QPushButton::clicked, &form, [handler] { handler(); });
        QMetaObject::invokeMethod(&button, &QPushButton::click, Qt::QueuedConnection);
    }

    void onTimer(const std::function<void()> &handler)
    {
        onEvent(&timer, &QTimer::timeout, &form, [handler] { handler(); });
        timer.start(1);
    }

    void closeLater() { QMetaObject::invokeMethod(&form, &QWidget::close, Qt::QueuedConnection); }
};

struct Way {
    std::string_view name;
    std::function<void(Failures &)> prepare;
};

void prepareTimerBehindBox(Failures &f)
{
    f.onClick([&f] {
        f.onTimer(overflow);
        MsgBox(QStringLiteral("open"));
        std::puts("went on");
    });
}

void prepareBoxBehindErrorBox(Failures &f)
{
    f.onClick([&f] {
        f.onTimer([] { MsgBox(QStringLiteral("second")); });
        overflow();
    });
}

void prepareFailureBehindErrorBox(Failures &f)
{
    f.onClick([&f] {
        QTimer::singleShot(1, &f.form, [] { throw std::runtime_error("second"); });
        f.onTimer([] { throw RuntimeError(error::DiskFull); });
        overflow();
    });
}

void prepareEventBehindErrorBox(Failures &f)
{
    f.onClick([&f] {
        EventGate::raise(&f.form, [] { std::puts("went on"); });
        overflow();
    });
}

void prepareWorker(Failures &f)
{
    f.onClick([] { std::thread([] { guarded(overflow); }).join(); });
}

void prepareOwnText(Failures &f)
{
    f.onClick([] { throw RuntimeError(error::DiskFull, QStringLiteral("No room for letter.rtf.")); });
}

void prepareFarTooMuchMemory(Failures &f)
{
    f.onClick([] {
        const volatile auto size = std::numeric_limits<std::ptrdiff_t>::max();
        std::vector<char>().reserve(static_cast<std::size_t>(size));
    });
}

const std::vector<Way> &ways()
{
    static const std::vector<Way> all{
        {"slot", [](Failures &f) { f.onClick(overflow); }},
        {"own-text", prepareOwnText},
        {"bad-alloc", [](Failures &f) { f.onClick([] { throw std::bad_alloc(); }); }},
        {"too-much-memory", prepareFarTooMuchMemory},
        {"exception", [](Failures &f) { f.onClick([] { throw std::runtime_error("broken"); }); }},
        {"non-standard", [](Failures &f) { f.onClick([] { throw 7; }); }},
        {"timer", [](Failures &f) { f.onTimer(overflow); }},
        {"timer-behind-box", prepareTimerBehindBox},
        {"control-event", [](Failures &f) { EventGate::raise(&f.form, overflow); }},
        {"show", [](Failures &f) { f.form.onShow = overflow; }},
        {"close",
         [](Failures &f) {
             f.form.onClose = overflow;
             f.closeLater();
         }},
        {"unguarded-slot",
         [](Failures &f) {
             QObject::connect(&f.button, &QPushButton::clicked, &f.form, overflow);
             QMetaObject::invokeMethod(&f.button, &QPushButton::click, Qt::QueuedConnection);
         }},
        {"unguarded-close",
         [](Failures &f) {
             f.form.onCloseUnguarded = overflow;
             f.closeLater();
         }},
        {"box-behind-error-box", prepareBoxBehindErrorBox},
        {"failure-behind-error-box", prepareFailureBehindErrorBox},
        {"event-behind-error-box", prepareEventBehindErrorBox},
        {"worker", prepareWorker},
        {"end", [](Failures &f) { f.onClick([] { endProgram(0); }); }},
    };
    return all;
}

// Prompts that cannot show a box.
class NoPrompts : public Prompts
{
public:
    Answer messageBox(const MessageBoxRequest &) override { throw std::bad_alloc(); }
    QString inputBox(const InputBoxRequest &) override { throw std::bad_alloc(); }
    void errorBox(const RuntimeError &) override { throw std::bad_alloc(); }
};

} // namespace

int main(int argc, char **argv)
{
    const std::string_view name = argc > 1 ? argv[1] : "";
    if (name == "no-application") {
        guarded(overflow);
        return 3;
    }
    SuiteApplication application(argc, argv);
    BoxReader reader;
    application.installEventFilter(&reader);
    Failures failures;
    NoPrompts none;
    if (name == "no-box") {
        setPrompts(&none);
        failures.onClick(overflow);
    }
    for (const Way &way : ways()) {
        if (way.name == name)
            way.prepare(failures);
    }
    failures.form.show();
    QTimer::singleShot(std::chrono::seconds(20), &failures.form, [] { std::_Exit(2); });
    return SuiteApplication::exec();
}

#include "failing_program.moc"
