// Opening a plain text of 100 MB: until it is there, how long the window is away at a time, and then the way to
// its end and a key at its start, beside the toolkit's own text boxes. The size in MB can be given.

#include <QApplication>
#include <QFile>
#include <QKeyEvent>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTextEdit>

#include "BenchText.h"
#include "controls/RichTextBox.h"

using namespace vandrel;
using namespace vandrel::bench;

namespace {

struct Times {
    double open = 0;
    double worstGap = 0;
    double toEnd = 0;
    double keyAtStart = 0;
    double close = 0;
};

void press(QWidget &widget, int key, Qt::KeyboardModifiers modifiers, const QString &text = {})
{
    QKeyEvent down(QEvent::KeyPress, key, modifiers, text);
    QApplication::sendEvent(&widget, &down);
    settle();
}

void useDocument(QWidget &widget, Times &times)
{
    times.toEnd = milliseconds([&] { press(widget, Qt::Key_End, Qt::ControlModifier); });
    press(widget, Qt::Key_Home, Qt::ControlModifier);
    times.keyAtStart = milliseconds([&] { press(widget, 0, Qt::NoModifier, QStringLiteral("x")); });
}

Times ours(const QString &path)
{
    Times times;
    auto box = std::make_unique<RichTextBox>(documentFiles());
    box->resize(800, 600);
    box->show();
    settle();
    QSignalSpy finished(box.get(), &RichTextBox::loadFinished);
    LoopWatch watch;
    times.open = milliseconds([&] {
        box->LoadFile(path);
        while (finished.isEmpty())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        settle();
    });
    // What the box still does behind the scenes belongs to opening.
    QElapsedTimer behind;
    behind.start();
    while (behind.elapsed() < 3000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    times.worstGap = watch.worstGap();
    useDocument(*box, times);
    times.close = milliseconds([&] { box.reset(); });
    return times;
}

template<typename Edit>
Times peer(const QString &path)
{
    Times times;
    auto edit = std::make_unique<Edit>();
    edit->resize(800, 600);
    edit->show();
    settle();
    times.open = milliseconds([&] {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly))
            edit->setPlainText(QString::fromUtf8(file.readAll()));
        settle();
    });
    times.worstGap = times.open;
    useDocument(*edit, times);
    times.close = milliseconds([&] { edit.reset(); });
    return times;
}

void compare(const Times &our, const char *name, const Times &their)
{
    report("open until shown", our.open, name, their.open, 1);
    report("longest time the window is away", our.worstGap, name, their.worstGap);
    report("Ctrl+End", our.toEnd, name, their.toEnd);
    report("a key at the start", our.keyAtStart, name, their.keyAtStart);
    report("close", our.close, name, their.close);
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const int megabytes = argc > 1 ? std::atoi(argv[1]) : 100;
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("large.txt"));
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return 1;
        file.write(plainText(megabytes * 1'000'000).toUtf8());
    }
    const Times our = ours(path);
    reportAlone("longest time the window is away", our.worstGap, "ms", 100);
    compare(our, "QPlainTextEdit", peer<QPlainTextEdit>(path));
    compare(our, "QTextEdit", peer<QTextEdit>(path));
    return 0;
}
