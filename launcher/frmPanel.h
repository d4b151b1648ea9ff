#pragma once

#include <memory>

#include <QMap>
#include <QPushButton>
#include <QWidget>

#include "controls/ControlArray.h"
#include "controls/ControlPanel.h"
#include "launcher/ToolSlots.h"

class QAction;
class QMenu;

namespace vandrel {

struct MenuItem;

/// The launcher: three stacked buttons, each of which pops up a menu of tools and settings items. It keeps no
/// data of its own, and stays open and usable while tools are open.
class frmPanel : public QWidget
{
    Q_OBJECT

public:
    /// `tools` outlives the panel.
    frmPanel(ToolSlots &tools, std::unique_ptr<ControlPanel> controlPanel);

    /// Pops up the menu of that button index; another index does nothing.
    void Command1_Click(int index);

    /// A menu of the tree by its name, null when there is none.
    QMenu *menu(const QString &name) const { return m_menus.value(name); }

    ControlArray<QPushButton> Command1{QStringLiteral("Command1")};

private:
    void placeButtons();
    void buildMenus();
    void addItem(const MenuItem &item);
    QAction *addMenu(const MenuItem &item);
    QAction *addCommand(const MenuItem &item);
    void connectItem(QAction *action, const MenuItem &item);
    void showTool(const QString &name);

    ToolSlots &m_tools;
    std::unique_ptr<ControlPanel> cp1;
    QMap<QString, QMenu *> m_menus;
};

} // namespace vandrel
