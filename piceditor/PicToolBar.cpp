#include "piceditor/PicToolBar.h"

#include <array>

#include <QCoreApplication>

#include "controls/RgbLong.h"
#include "piceditor/ToolIcon.h"

namespace vandrel {

namespace {

// The side of a button and of its picture, in device-independent pixels: large enough to be hit at any scale.
constexpr int buttonSide = 34;
constexpr int pictureSide = 24;
// The bands may be cut down to that many buttons.
constexpr int fileButtons = 3;
constexpr int fewestPictureButtons = 6;

struct Button {
    int index;
    const char *picture;
    const char *toolTip;
    // Of a button that has no tool tip.
    const char *accessibleName;
};

constexpr std::array fileBand{
    Button{1, "open", QT_TRANSLATE_NOOP("vandrel::PicToolBar", "Open a picture"), nullptr},
    Button{2, "save", QT_TRANSLATE_NOOP("vandrel::PicToolBar", "Save picture"), nullptr},
    Button{3, "save", nullptr, QT_TRANSLATE_NOOP("vandrel::PicToolBar", "Save picture as")},
    Button{4, "print", QT_TRANSLATE_NOOP("vandrel::PicToolBar", "Print picture"), nullptr},
};

constexpr std::array pictureBand{
    Button{0, "freehand", nullptr, QT_TRANSLATE_NOOP("vandrel::PicToolBar", "Draw a shape")},
    Button{1, "shapes", nullptr, QT_TRANSLATE_NOOP("vandrel::PicToolBar", "Choose a shape")},
    Button{2, "zoom", QT_TRANSLATE_NOOP("vandrel::PicToolBar", "Zoom picture"), nullptr},
    Button{3, "texture", QT_TRANSLATE_NOOP("vandrel::PicToolBar", "Add texture"), nullptr},
    Button{4, "process", QT_TRANSLATE_NOOP("vandrel::PicToolBar", "Process picture"), nullptr},
    Button{5, "resize", QT_TRANSLATE_NOOP("vandrel::PicToolBar", "Resize picture"), nullptr},
    Button{6, "flip", QT_TRANSLATE_NOOP("vandrel::PicToolBar", "Flip/Rotate picture"), nullptr},
    Button{7, "text", nullptr, QT_TRANSLATE_NOOP("vandrel::PicToolBar", "Add text")},
    Button{8, "undo", QT_TRANSLATE_NOOP("vandrel::PicToolBar", "Undo"), nullptr},
};

QString visible(const char *text)
{
    return QCoreApplication::translate("vandrel::PicToolBar", text);
}

void addButton(const Button &stated, ControlArray<PicToolButton> &buttons, QWidget *frame)
{
    auto *button = new PicToolButton(QString::fromLatin1(stated.picture), frame);
    buttons.add(stated.index, button);
    button->setAccessibleName(visible(stated.toolTip ? stated.toolTip : stated.accessibleName));
    if (stated.toolTip)
        button->setToolTip(visible(stated.toolTip));
}

} // namespace

PicToolButton::PicToolButton(const QString &picture, QWidget *parent)
    : QToolButton(parent), m_picture(picture)
{
    setIcon(toolIcon(picture));
    setIconSize({pictureSide, pictureSide});
    setFixedSize(buttonSide, buttonSide);
    setAutoRaise(true);
    setFocusPolicy(Qt::TabFocus);
}

qint32 PicToolButton::BackColor() const
{
    return rgbLongOf(palette().color(QPalette::Button));
}

void PicToolButton::setBackColor(qint32 rgbLong)
{
    QPalette own = palette();
    own.setColor(QPalette::Button, colorOf(rgbLong));
    setPalette(own);
    setAutoFillBackground(true);
    setIcon(toolIcon(m_picture, QColor(0x20, 0x20, 0x20)));
}

PicToolBar::PicToolBar(QWidget *parent) : CoolBar1(new CoolBar(visible(QT_TR_NOOP("Picture tools")), parent))
{
    CoolBar1->setObjectName(QStringLiteral("CoolBar1"));
    createFrame1();
    CoolBar1->addSeparator();
    createFrame2();
}

void PicToolBar::createFrame1()
{
    auto *Frame1 = new QWidget(CoolBar1);
    Frame1->setObjectName(QStringLiteral("Frame1"));
    for (const Button &stated : fileBand)
        addButton(stated, Command1, Frame1);
    Command1[3]->hide();
    addBand(Frame1, Command1, fileButtons);
}

// The buttons whose menus do nothing yet look like paper: near-white, white and white. "Replace Colors..." takes these
// three colours, and so cleans the paper of a scanned page.
void PicToolBar::createFrame2()
{
    auto *Frame2 = new QWidget(CoolBar1);
    Frame2->setObjectName(QStringLiteral("Frame2"));
    for (const Button &stated : pictureBand)
        addButton(stated, Command2, Frame2);
    Command2[0]->setBackColor(0x00E6E6E6);
    Command2[1]->setBackColor(0x00FFFFFF);
    Command2[7]->setBackColor(0x00FFFFFF);
    addBand(Frame2, Command2, fewestPictureButtons);
}

// Side by side from the left; a window too narrow cuts the last ones off.
void PicToolBar::addBand(QWidget *frame, const ControlArray<PicToolButton> &buttons, int fewestButtons) const
{
    int count = 0;
    for (const auto &[index, button] : buttons) {
        if (!button->isHidden())
            button->move(buttonSide * count++, 0);
    }
    frame->setFixedHeight(buttonSide);
    frame->setMinimumWidth(buttonSide * fewestButtons);
    frame->setMaximumWidth(buttonSide * count);
    frame->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    CoolBar1->addBand(frame);
}

} // namespace vandrel
