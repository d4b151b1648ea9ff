#include "launcher/Form1.h"

#include <algorithm>
#include <cstdlib>

#include <QScreen>
#include <QVBoxLayout>

#include "runtime/ErrorReport.h"
#include "runtime/Placement.h"
#include "runtime/Twips.h"

namespace vandrel {

namespace {

constexpr int clientWidth = 5160;
constexpr int clientHeight = 4215;
constexpr int buttonTop = 3720;
constexpr int margin = 180;

QFont arial(double points, bool italic = true)
{
    return fontOf({QStringLiteral("Arial"), points, true, italic});
}

} // namespace

Form1::Form1(WindowSlot &launcher)
    : QDialog(nullptr,
              Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
                  | Qt::WindowCloseButtonHint),
      Label1(addLabel(QStringLiteral("Label1"), QStringLiteral("Vandrel"))),
      Label2(addLabel(QStringLiteral("Label2"), tr("A bundle of 100% free poweful utilities!!!"))),
      Label3(addLabel(QStringLiteral("Label3"), tr("The Vandrel developers, 2026"))),
      Label4(addLabel(QStringLiteral("Label4"),
                      tr("This application uses C-Image 3.0 Technologies\n"
                         "For more information:\n"
                         "see the user guide in the docs folder"))),
      Label5(addLabel(QStringLiteral("Label5"), QStringLiteral("v1.00 (BETA)"))),
      Label6(addLabel(QStringLiteral("Label6"),
                      tr("To contact the author about comments, bugs, or advertising in future versions of "
                         "Vandrel, please feel free to send an e-mail to:"))),
      Label7(addLabel(QStringLiteral("Label7"), QStringLiteral("vandrel@example.org"))), frmPanel(launcher)
{
    setObjectName(QStringLiteral("Form1"));
    // The toolkit would show the program's name for an empty title.
    setWindowTitle(QStringLiteral(" "));
    Command1.add(0, new QPushButton(tr("&Continue"), this))->setDefault(true);
    Command1.add(1, new QPushButton(tr("&Quit"), this));
    setFonts();
    placeControls();
    Command1.onEvent(&QPushButton::clicked, this, &Form1::Command1_Click);
    Form_Load();
}

void Form1::Form_Load()
{
    frmPanel.ensure()->setWindowIcon(windowIcon());
    centreOnScreen();
}

void Form1::Command1_Click(int index)
{
    if (index == 0) {
        frmPanel.show();
        close();
    } else {
        endProgram(EXIT_SUCCESS);
    }
}

QLabel *Form1::addLabel(const QString &name, const QString &text)
{
    auto *label = new QLabel(text, this);
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

void Form1::setFonts()
{
    Label1->setFont(arial(27.75));
    Label2->setFont(arial(9.75));
    Label3->setFont(arial(9.75));
    Label5->setFont(arial(12));
    Label6->setFont(arial(8.25));
    Label7->setFont(arial(8.25, false));
    for (const auto &[index, button] : Command1)
        button->setFont(arial(9.75, false));
}

// The labels share the room above the buttons. Where a font makes them need more, the window grows, and the
// buttons move down with its lower edge.
void Form1::placeControls()
{
    auto *texts = new QWidget(this);
    auto *column = new QVBoxLayout(texts);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    for (QLabel *label : {Label1, Label2, Label3, Label4, Label5, Label6, Label7}) {
        label->setWordWrap(label == Label6);
        column->addWidget(label);
        if (label != Label6 && label != Label7)
            column->addStretch();
    }
    // Keeps the long sentence off the edges, in lines of about one length.
    Label6->setContentsMargins(pixels(margin), 0, pixels(margin), 0);
    placeInTwips(texts, margin, margin, clientWidth - 2 * margin, buttonTop - 2 * margin);
    const int width = std::max(texts->width(), column->minimumSize().width());
    const int height = std::max(texts->height(), column->totalHeightForWidth(width));
    const int wider = width - texts->width();
    const int higher = height - texts->height();
    texts->resize(width, height);

    placeInTwips(Command1[0], 720, buttonTop, 1095, 375);
    placeInTwips(Command1[1], 3353, buttonTop, 1095, 375);
    for (const auto &[index, button] : Command1)
        button->move(button->x() + wider / 2, button->y() + higher);
    setFixedSize(pixels(clientWidth) + wider, pixels(clientHeight) + higher);
}

void Form1::centreOnScreen()
{
    const QRect available = screen()->availableGeometry();
    move(available.center() - rect().center());
}

} // namespace vandrel
