#include "launcher/frmPanel.h"

#include <algorithm>
#include <array>

#include <QAction>
#include <QMenu>

#include "launcher/MenuTree.h"
#include "runtime/Events.h"
#include "runtime/Placement.h"
#include "runtime/PopUp.h"
#include "runtime/Twips.h"

namespace vandrel {

namespace {

constexpr int clientWidth = 1590;
constexpr int clientHeight = 1110;

struct PanelButton {
    int index;
    const char *caption;
    int top;
};

// The indices select the menus, so they stay as they are although some are missing.
constexpr std::array panelButtons{
    PanelButton{1, QT_TRANSLATE_NOOP("vandrel::frmPanel", "My Computer"), 0},
    PanelButton{2, QT_TRANSLATE_NOOP("vandrel::frmPanel", "Internet"), 360},
    PanelButton{4, QT_TRANSLATE_NOOP("vandrel::frmPanel", "Utilities"), 720},
};

} // namespace

frmPanel::frmPanel(ToolSlots &tools, std::unique_ptr<ControlPanel> controlPanel)
    : QWidget(nullptr,
              Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
                  | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint),
      m_tools(tools), cp1(std::move(controlPanel))
{
    setObjectName(QStringLiteral("frmPanel"));
    // The toolkit would show the program's name for an empty title.
    setWindowTitle(QStringLiteral(" "));
    placeButtons();
    buildMenus();
    Command1.onEvent(&QPushButton::clicked, this, &frmPanel::Command1_Click);
}

void frmPanel::placeButtons()
{
    int widest = 0;
    for (const PanelButton &stated : panelButtons) {
        QPushButton *button = Command1.add(stated.index, new QPushButton(tr(stated.caption), this));
        button->setAutoDefault(true);
        placeInTwips(button, 0, stated.top, 1575, 375);
        widest = std::max(widest, button->width());
    }
    // A caption that needs more room widens the whole column, and the window with it.
    for (const auto &[index, button] : Command1)
        button->resize(widest, button->height());
    setFixedSize(widest + pixels(clientWidth) - pixels(1575), pixels(clientHeight));
}

void frmPanel::buildMenus()
{
    for (const MenuItem &item : menuTree())
        addItem(item);
}

void frmPanel::addItem(const MenuItem &item)
{
    const bool opensMenu = item.kind == MenuItem::Kind::PopUp || item.kind == MenuItem::Kind::SubMenu;
    QAction *action = opensMenu ? addMenu(item) : addCommand(item);
    action->setObjectName(QString::fromLatin1(item.name));
    action->setVisible(item.visible);
    action->setEnabled(item.enabled && (!item.window || m_tools.has(QString::fromLatin1(item.window))));
}

QAction *frmPanel::addMenu(const MenuItem &item)
{
    const QString name = QString::fromLatin1(item.name);
    const QString caption = QString::fromLatin1(item.caption);
    QMenu *above = item.parent ? menu(QString::fromLatin1(item.parent)) : nullptr;
    auto *made = new QMenu(caption, above ? static_cast<QWidget *>(above) : this);
    made->setObjectName(name);
    m_menus.insert(name, made);
    if (above)
        above->addMenu(made);
    return made->menuAction();
}

QAction *frmPanel::addCommand(const MenuItem &item)
{
    QAction *action = menu(QString::fromLatin1(item.parent))->addAction(QString::fromLatin1(item.caption));
    connectItem(action, item);
    return action;
}

void frmPanel::connectItem(QAction *action, const MenuItem &item)
{
    if (item.kind == MenuItem::Kind::Tool) {
        onEvent(action, &QAction::triggered, this,
                [this, window = QString::fromLatin1(item.window)] { showTool(window); });
    } else if (item.kind == MenuItem::Kind::Settings) {
        onEvent(action, &QAction::triggered, this,
                [this, &item] { cp1->open(item.member, item.argument, QString::fromLatin1(item.caption)); });
    }
}

void frmPanel::Command1_Click(int index)
{
    const char *name = popUpOf(index);
    if (!name)
        return;
    const auto found = std::find_if(Command1.begin(), Command1.end(),
                                    [index](const auto &button) { return button.first == index; });
    popUp(menu(QString::fromLatin1(name)), found == Command1.end() ? nullptr : found->second);
}

void frmPanel::showTool(const QString &name)
{
    WindowSlot &tool = m_tools[name];
    tool.ensure()->setWindowIcon(windowIcon());
    tool.show();
}

} // namespace vandrel
