#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "controls/ControlPanel.h"

namespace vandrel {

/// One item of the launcher's menu tree. The whole tree is data: the launcher builds its pop-up menus from it,
/// hidden items included, and what an item does stands in its row.
struct MenuItem {
    enum class Kind {
        PopUp, ///< a top-level menu; hidden, shown only as a pop-up
        SubMenu, ///< holds the items whose `parent` is its name
        Tool, ///< shows the window named by `window`
        Settings, ///< opens the settings item `member` with `argument`
        Inert, ///< does nothing
    };

    const char *name;
    /// Null for a top-level menu.
    const char *parent;
    const char *caption;
    Kind kind;
    bool visible = true;
    bool enabled = true;
    const char *window = nullptr;
    ControlPanel::Member member{};
    std::optional<std::int32_t> argument{};
};

/// The tree in its order: every menu stands before its items.
std::span<const MenuItem> menuTree();

/// The name of the pop-up that a launcher button of that index opens; null for an index without one.
const char *popUpOf(int buttonIndex);

} // namespace vandrel
