#include "texteditor/TextToolBar.h"

#include <algorithm>

#include <QCoreApplication>
#include <QFrame>
#include <QHBoxLayout>
#include <QMainWindow>
#include <QShortcut>

#include "controls/ComboBox.h"
#include "controls/CoolBar.h"
#include "controls/Label.h"
#include "runtime/Events.h"
#include "texteditor/Paper.h"
#include "texteditor/StyleButton.h"

namespace vandrel {

namespace {

QString visible(const char *text)
{
    return QCoreApplication::translate("vandrel::TextToolBar", text);
}

StyleButton *newButton(StyleButton::Style style, const char *name, const char *caption, QWidget *strip)
{
    auto *button = new StyleButton(style, QString::fromLatin1(caption), strip);
    button->setObjectName(QString::fromLatin1(name));
    return button;
}

// The name is what a screen reader says, the shortcut what the tool tip adds to it.
void describe(StyleButton *button, const QString &name, const QKeySequence &shortcut)
{
    button->setAccessibleName(name);
    // A button's own shortcut acts only when its press has been shown, and what is typed meanwhile goes astray.
    const auto *key = new QShortcut(shortcut, button->window());
    onEvent(key, &QShortcut::activated, button, &QToolButton::click);
    button->setToolTip(QStringLiteral("%1 (%2)").arg(name, shortcut.toString(QKeySequence::NativeText)));
}

} // namespace

TextToolBar::TextToolBar(QMainWindow &frame)
    : CoolBar1(new CoolBar(visible(QT_TR_NOOP("Formatting")), &frame)), Frame1(new QWidget(CoolBar1))
{
    CoolBar1->setObjectName(QStringLiteral("CoolBar1"));
    Frame1->setObjectName(QStringLiteral("Frame1"));
    createLists();
    createButtons();
    createSwatch();
    createLines();
    arrange();
    CoolBar1->addBand(Frame1);
    frame.addToolBar(CoolBar1);
}

void TextToolBar::createLists()
{
    cb1 = new ComboBox(Frame1);
    cb1->setObjectName(QStringLiteral("cb1"));
    cb1->setAccessibleName(visible(QT_TR_NOOP("Font name")));
    cb1->setToolTip(cb1->accessibleName());
    cb1->setMaxVisibleItems(20);
    // The bar stays narrow, whatever the longest name; the open list is as wide as it needs to be.
    cb1->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    cb1->setMinimumContentsLength(18);
    cb2 = new ComboBox(Frame1);
    cb2->setObjectName(QStringLiteral("cb2"));
    cb2->setAccessibleName(visible(QT_TR_NOOP("Font size")));
    cb2->setToolTip(cb2->accessibleName());
    cb2->setMaxVisibleItems(16);
    cb2->setMinimumContentsLength(3);
}

void TextToolBar::createButtons()
{
    Command2 = newButton(StyleButton::Style::Bold, "Command2", "B", Frame1);
    describe(Command2, visible(QT_TR_NOOP("Bold")), Qt::CTRL | Qt::Key_B);
    Command3 = newButton(StyleButton::Style::Italic, "Command3", "I", Frame1);
    describe(Command3, visible(QT_TR_NOOP("Italic")), Qt::CTRL | Qt::Key_I);
    Command4 = newButton(StyleButton::Style::Underline, "Command4", "U", Frame1);
    describe(Command4, visible(QT_TR_NOOP("Underline")), Qt::CTRL | Qt::Key_U);
    // Equal squares as high as the lists, so that a caption that turns bold moves nothing.
    const int side = std::max(cb1->sizeHint().height(), Command2->sizeHint().height());
    for (StyleButton *button : {Command2, Command3, Command4})
        button->setFixedSize(side, side);
}

void TextToolBar::createSwatch()
{
    Label1 = new Label(QStringLiteral(" A"), Frame1);
    Label1->setObjectName(QStringLiteral("Label1"));
    QFont font(QStringLiteral("Arial"));
    font.setPointSizeF(Frame1->font().pointSizeF() * 1.2);
    font.setBold(true);
    Label1->setFont(font);
    Label1->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    Label1->setAutoFillBackground(true);
    Label1->setBackgroundRole(QPalette::Base);
    showAsPaper(Label1);
    Label1->setAlignment(Qt::AlignCenter);
    Label1->setFocusPolicy(Qt::TabFocus);
    Label1->setForeColor(0);
    Label1->setFixedSize(Command2->width() + Command2->width() / 4, Command2->height());
    Label1->setToolTip(visible(QT_TR_NOOP("Text color: click to use it, double-click to choose another")));
    Label1->setAccessibleDescription(
        visible(QT_TR_NOOP("Text color. Press Space to use it, Enter to choose another.")));
}

void TextToolBar::createLines()
{
    for (std::size_t index = 0; index < Line1.size(); ++index) {
        Line1[index] = new QFrame(Frame1);
        Line1[index]->setObjectName(QStringLiteral("Line1_%1").arg(index));
        Line1[index]->setFrameStyle(QFrame::VLine | QFrame::Sunken);
    }
}

void TextToolBar::arrange()
{
    auto *row = new QHBoxLayout(Frame1);
    row->setContentsMargins(4, 2, 4, 2);
    row->setSpacing(4);
    const auto addLine = [&](std::size_t index) {
        row->addSpacing(2);
        row->addWidget(Line1[index]);
        row->addSpacing(2);
    };
    addLine(0);
    row->addWidget(cb1);
    row->addWidget(cb2);
    addLine(1);
    row->addWidget(Command2);
    row->addWidget(Command3);
    row->addWidget(Command4);
    addLine(2);
    row->addWidget(Label1);
    row->addStretch();
}

void TextToolBar::setEnabled(bool enabled) const
{
    Frame1->setEnabled(enabled);
}

} // namespace vandrel
