// Replacing every match within the first 32,767 characters of a 5 MB document by the plain loop: find from the
// beginning, replace, again, until nothing is found. Shown in a window, once grouped as the replace dialog does it
// and once without, beside the same loop in the toolkit's text box and beside its quickest way, one pass over the
// document in one edit block.

#include <vector>

#include <QApplication>
#include <QPlainTextEdit>
#include <QTextEdit>

#include "BenchText.h"
#include "controls/RichTextBox.h"

using namespace vandrel;
using namespace vandrel::bench;

namespace {

constexpr int documentSize = 5'000'000;
constexpr int reachable = 32'767;
const QString needle = QStringLiteral("#q");
const QString replacement = QStringLiteral("QQ9");

QString textWith(int hits)
{
    QString text = plainText(documentSize);
    const int step = (reachable - 100) / hits;
    for (int i = 0; i < hits; ++i)
        text.replace(10 + i * step, needle.size(), needle);
    return text;
}

int replaceInBox(RichTextBox &box)
{
    int count = 0;
    while (box.find(needle) >= 0) {
        box.setSelText(replacement);
        ++count;
    }
    return count;
}

int replaceFromStart(QTextEdit &edit)
{
    int count = 0;
    for (;;) {
        edit.moveCursor(QTextCursor::Start);
        if (!edit.find(needle))
            return count;
        edit.textCursor().insertText(replacement);
        ++count;
    }
}

int replaceInOnePass(QTextEdit &edit)
{
    int count = 0;
    QTextCursor all(edit.document());
    all.beginEditBlock();
    for (QTextCursor match = edit.document()->find(needle); !match.isNull();
         match = edit.document()->find(needle, match)) {
        match.insertText(replacement);
        ++count;
    }
    all.endEditBlock();
    return count;
}

template<typename Edit>
void show(Edit &edit)
{
    edit.resize(800, 600);
    edit.show();
    settle();
}

template<typename Replace>
double timed(QTextEdit &edit, const QString &text, int hits, Replace replace)
{
    edit.setPlainText(text);
    show(edit);
    return milliseconds([&] {
        if (replace() != hits)
            std::printf("  not every match was replaced\n");
        settle();
    });
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const auto files = documentFiles();
    std::vector<double> growing;
    for (const int hits : {500, 1000, 2000, 4000}) {
        const QString text = textWith(hits);
        RichTextBox box(files);
        box.setText(text);
        show(box);
        const double loose = milliseconds([&] {
            if (replaceInBox(box) != hits)
                std::printf("  not every match was replaced\n");
            settle();
        });
        box.setText(text);
        settle();
        const double grouped = milliseconds([&] {
            {
                RichTextBox::ChangeGroup group(box);
                replaceInBox(box);
            }
            settle();
        });
        QTextEdit peer;
        const double onePass = timed(peer, text, hits, [&] { return replaceInOnePass(peer); });
        char label[80];
        std::snprintf(label, sizeof label, "%d matches, grouped", hits);
        report(label, grouped, "one pass", onePass);
        growing.push_back(grouped);
        if (hits <= 1000) {
            const double fromStart = timed(peer, text, hits, [&] { return replaceFromStart(peer); });
            std::snprintf(label, sizeof label, "%d matches, each by itself", hits);
            report(label, loose, "same loop", fromStart);
        } else {
            std::printf("%d matches, each by itself: %.2f ms\n", hits, loose);
        }
    }
    // Eight times the matches take at most eight times as long where the work is linear.
    reportAlone("4,000 matches as many times 500", growing.back() / growing.front(), "times", 8);
    return 0;
}
