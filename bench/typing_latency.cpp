// How long a key takes, from the press to the painted window, in a document of 5 MB: at its start, in its middle
// and at its end, in plain and in formatted text, beside the toolkit's own text boxes.

#include <algorithm>

#include <QApplication>
#include <QKeyEvent>
#include <QPlainTextEdit>
#include <QTextEdit>

#include "BenchText.h"
#include "controls/RichTextBox.h"

using namespace vandrel;
using namespace vandrel::bench;

namespace {

constexpr int documentSize = 5'000'000;
constexpr int keys = 40;

template<typename Edit>
void moveTo(Edit &edit, double part)
{
    QTextCursor cursor = edit.textCursor();
    cursor.setPosition(static_cast<int>((edit.document()->characterCount() - 1) * part));
    edit.setTextCursor(cursor);
    settle();
}

void press(QWidget &widget, QChar key)
{
    QKeyEvent down(QEvent::KeyPress, 0, Qt::NoModifier, QString(key));
    QApplication::sendEvent(&widget, &down);
    settle();
}

template<typename Edit>
std::vector<double> typeInto(Edit &edit, double part)
{
    moveTo(edit, part);
    for (int i = 0; i < 10; ++i)
        settle();
    std::vector<double> times;
    for (int i = 0; i < keys; ++i) {
        const QChar key = i % 10 == 9 ? u'\r' : QChar(u'a' + i % 26);
        times.push_back(milliseconds([&] { press(edit, key); }));
    }
    return times;
}

template<typename Edit>
void show(Edit &edit)
{
    edit.resize(800, 600);
    edit.show();
    settle();
}

// Milliseconds: a key that takes longer is seen to lag on a screen of 60 pictures a second.
constexpr double oneFrame = 16;

template<typename Peer>
void compare(const char *text, RichTextBox &ours, Peer &peer, const char *peerName)
{
    double slowest = 0;
    const std::pair<const char *, double> places[] = {{"start", 0}, {"middle", 0.5}, {"end", 1}};
    for (const auto &[name, part] : places) {
        const std::vector<double> our = typeInto(ours, part);
        const std::vector<double> their = typeInto(peer, part);
        char label[80];
        std::snprintf(label, sizeof label, "%s, %s, median of a key", text, name);
        report(label, median(our), peerName, median(their));
        std::snprintf(label, sizeof label, "%s, %s, worst key", text, name);
        report(label, worst(our), peerName, worst(their));
        slowest = std::max(slowest, worst(our));
    }
    char label[80];
    std::snprintf(label, sizeof label, "%s, the slowest key of all", text);
    reportAlone(label, slowest, "ms", oneFrame);
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const auto files = documentFiles();
    const QString text = plainText(documentSize);
    {
        RichTextBox ours(files);
        ours.setText(text);
        show(ours);
        QPlainTextEdit plainPeer;
        plainPeer.setPlainText(text);
        show(plainPeer);
        compare("plain text", ours, plainPeer, "QPlainTextEdit");
        QTextEdit peer;
        peer.setPlainText(text);
        show(peer);
        compare("plain text", ours, peer, "QTextEdit");
    }
    {
        RichTextBox ours(files);
        fillRich(*ours.document(), documentSize);
        show(ours);
        QTextEdit peer;
        fillRich(*peer.document(), documentSize);
        show(peer);
        compare("formatted text", ours, peer, "QTextEdit");
    }
    return 0;
}
