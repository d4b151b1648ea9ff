#include "launcher/MenuTree.h"

#include <array>

namespace vandrel {

namespace {

using Member = ControlPanel::Member;
using Kind = MenuItem::Kind;

constexpr bool hidden = false;

constexpr MenuItem popUp(const char *name, const char *caption)
{
    return {name, nullptr, caption, Kind::PopUp, hidden};
}

constexpr MenuItem subMenu(const char *name, const char *parent, const char *caption)
{
    return {name, parent, caption, Kind::SubMenu};
}

constexpr MenuItem tool(const char *name, const char *parent, const char *caption, const char *window)
{
    return {name, parent, caption, Kind::Tool, true, true, window};
}

constexpr MenuItem inert(const char *name, const char *parent, const char *caption, bool visible = true)
{
    return {name, parent, caption, Kind::Inert, visible};
}

constexpr MenuItem
settings(const char *name, const char *caption, Member member, std::optional<std::int32_t> argument = {})
{
    return {name, "ctrl", caption, Kind::Settings, true, true, nullptr, member, argument};
}

// The system-colour code of button faces, which the System item has always been given as its page.
constexpr auto buttonFace = static_cast<std::int32_t>(0x8000000FU);

constexpr std::array tree{
    popUp("med", "media"),
    inert("wav", "med", "wav"),
    inert("mid", "med", "midi"),
    inert("cd", "med", "cd"),
    inert("avi", "med", "avi"),
    inert("vol", "med", "volume"),

    popUp("net", "Internet"),
    inert("con", "net", "connect", hidden),
    tool("brs", "net", "Browse the Internet", "frmBrowse"),
    inert("irc", "net", "irc", hidden),
    tool("rec", "net", "Receive e-mail", "frmPOP"),
    tool("snd", "net", "Send e-mail", "frmSend"),
    tool("ftp", "net", "FTP client", "frmFTP"),
    subMenu("util", "net", "Utilities"),
    tool("png", "util", "Ping", "frmPing"),
    inert("fing", "util", "Finger", hidden),
    tool("locip", "util", "Get local IP", "frmIP"),

    popUp("genutil", "Utilities"),
    tool("pic", "genutil", "Picture viewer", "frmView"),
    tool("image", "genutil", "Picture editor", "frmPicEdit"),
    inert("calc", "genutil", "calculator", hidden),
    inert("cal", "genutil", "calendar", hidden),
    tool("cap", "genutil", "Screen capture", "frmCapture"),
    tool("txt", "genutil", "Text editor", "frmText"),

    popUp("comp", "My computer"),
    tool("file", "comp", "File manager", "frmFile"),
    subMenu("ctrl", "comp", "Control panel items"),
    settings("prog", "Add/Remove programs", Member::AddRemovePrograms, 0),
    settings("hard", "Add new hardware", Member::AddNewHardware),
    settings("dial", "Dial-up Wiazrd", Member::DialUpWizard),
    settings("disp", "Display", Member::Display, 0),
    settings("systm", "System", Member::System, buttonFace),
    settings("win", "Windows Setup", Member::AddRemovePrograms, 2),
    settings("print", "Printers", Member::Printers),
    settings("printer", "Add printer Wizard", Member::AddPrinterWizard),
    settings("pass", "Passwords", Member::Passwords),
    settings("mod", "Modem", Member::Modem),
    settings("mouse", "Mouse", Member::Mouse),
    settings("inet", "Internet", Member::Internet),
    settings("time", "Time/Date", Member::TimeDate),
    settings("regset", "Regional Settings", Member::RegionalSettings, 0),
    settings("media", "Multimedia", Member::Multimedia, 0),
    settings("font", "Fonts", Member::Fonts),
    settings("snds", "Sounds", Member::Sounds),
    tool("res", "comp", "Screen resolution", "frmRes"),
    tool("sys", "comp", "System Info", "frmInfo"),
    inert("shut", "comp", "Shut down", hidden),

    popUp("fun", "fun"),
    inert("luck", "fun", "feel lucky?"),
    inert("smrt", "fun", "think u r smart?"),
    inert("wis", "fun", "wisdom"),
    inert("jok", "fun", "jokes"),

    popUp("prof", "profiles"),
    subMenu("cut", "prof", "my shortcuts"),
    MenuItem{"emp", "cut", "empty", Kind::Inert, true, false},
    inert("user", "prof", "change user"),
    inert("skin", "prof", "select skin"),
    inert("add", "prof", "add user"),
};

} // namespace

std::span<const MenuItem> menuTree()
{
    return tree;
}

const char *popUpOf(int buttonIndex)
{
    static constexpr std::array popUps{"med", "comp", "net", "fun", "genutil", "prof"};
    const auto index = static_cast<std::size_t>(buttonIndex);
    return index < popUps.size() ? popUps[index] : nullptr;
}

} // namespace vandrel
