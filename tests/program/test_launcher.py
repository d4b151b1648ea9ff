"""The about box, the launcher and the tool windows' comings and goings."""

import unittest

from scenario import Scenario

POP_UPS = {
    "My Computer": ["File manager", "Control panel items", "Screen resolution", "System Info"],
    "Internet": ["Browse the Internet", "Receive e-mail", "Send e-mail", "FTP client", "Utilities"],
    "Utilities": ["Picture viewer", "Picture editor", "Screen capture", "Text editor"],
}
SUBMENUS = {
    ("My Computer", "Control panel items"): [
        "Add/Remove programs", "Add new hardware", "Dial-up Wiazrd", "Display", "System", "Windows Setup",
        "Printers", "Add printer Wizard", "Passwords", "Modem", "Mouse", "Internet", "Time/Date",
        "Regional Settings", "Multimedia", "Fonts", "Sounds",
    ],
    ("Internet", "Utilities"): ["Ping", "Get local IP"],
}
TOOLS = {"File manager": "File Manager - c:\\", "Screen resolution": "Screen resolution control",
         "Picture viewer": "Picture viewer - c:\\", "Screen capture": "Screen Capture", "System Info": "System Info",
         "Browse the Internet": "Internet - ", "Receive e-mail": "Read POP mail", "Send e-mail": "Send SMTP mail",
         "FTP client": "FTP client", "Ping": "Ping", "Get local IP": "My IP", "Text editor": "Text - Untitled 1",
         "Picture editor": "EditMe!"}
"""The tools that are built, by their items, and the titles their windows open with."""


def item_names(menu):
    """The captions that an open menu shows, in order."""
    menu.forget()
    return [item.name for item in menu.children if item.has("showing") and item.role != "separator"]


class Launcher(Scenario):
    def open_pop_up(self, launcher, button):
        self.suite.click(launcher.find(role="push button", name=button))
        return self.suite.menu()

    def test_continue_shows_the_launcher_and_takes_the_about_box_away(self):
        self.launcher()
        self.suite.await_no_window(" ", holding="Continue")
        self.assertTrue(self.suite.runs)

    def test_quit_ends_the_program_at_once(self):
        self.suite.click(self.about_box().find(role="push button", name="Quit"))
        self.assertEqual(self.suite.await_end(), 0)

    def test_closing_the_about_box_leaves_no_invisible_process(self):
        self.suite.close(self.about_box())
        self.assertEqual(self.suite.await_end(), 0)

    def test_the_keyboard_alone_reaches_the_launcher_and_its_menus(self):
        self.suite.activate(self.about_box())
        self.suite.keys("alt+c")
        launcher = self.suite.window(" ", holding="My Computer")
        self.suite.await_active(launcher)
        self.suite.keys("space")
        self.suite.menu()
        self.suite.keys("Escape")
        self.suite.await_no_menu()

    def test_the_pop_ups_show_exactly_their_items(self):
        launcher = self.launcher()
        for button, items in POP_UPS.items():
            with self.subTest(button):
                self.assertEqual(item_names(self.open_pop_up(launcher, button)), items)
                self.suite.close_menus()

    def test_the_submenus_show_exactly_their_items(self):
        launcher = self.launcher()
        for (button, submenu), items in SUBMENUS.items():
            with self.subTest(submenu):
                self.open_pop_up(launcher, button)
                self.suite.choose_in_menu(submenu)
                self.assertEqual(item_names(self.suite.submenu(submenu)), items)
                self.suite.close_menus()

    def test_items_whose_tool_is_not_built_are_disabled(self):
        launcher = self.launcher()
        for button, items in POP_UPS.items():
            self.open_pop_up(launcher, button)
            for name in items:
                if (button, name) in SUBMENUS:
                    continue
                with self.subTest(name):
                    item = self.suite.menu_item(name)
                    self.assertEqual(item.has("enabled"), name in TOOLS)
            self.suite.close_menus()

    def test_every_window_has_the_icon_in_its_sizes(self):
        sizes = [16, 22, 24, 32, 48, 64, 96, 128]
        self.about_box()
        self.assertEqual(sorted(self.suite.session.screen.icon_sizes(" ")), sizes)
        launcher = self.launcher()
        self.suite.await_no_window(" ", holding="Continue")
        self.assertEqual(sorted(self.suite.session.screen.icon_sizes(" ")), sizes)
        self.open_tool(launcher, "Utilities", "Text editor")
        editor = self.suite.window(TOOLS["Text editor"])
        self.assertEqual(sorted(self.suite.session.screen.icon_sizes(editor.name)), sizes)

    def test_a_tool_opens_once_however_often_it_is_chosen(self):
        launcher = self.launcher()
        for _ in range(3):
            self.open_tool(launcher, "Utilities", "Text editor")
            self.suite.window(TOOLS["Text editor"])
        editors = [window for window in self.suite.windows() if window.name == TOOLS["Text editor"]]
        self.assertEqual(len(editors), 1)

    def test_choosing_an_open_tool_brings_it_forward(self):
        launcher = self.launcher()
        self.open_tool(launcher, "Utilities", "Text editor")
        editor = self.suite.window(TOOLS["Text editor"])
        self.suite.activate(launcher)
        self.open_tool(launcher, "Utilities", "Text editor")
        self.suite.await_active(editor)

    def test_a_closed_tool_opens_afresh(self):
        launcher = self.launcher()
        self.open_tool(launcher, "Utilities", "Text editor")
        editor = self.suite.window(TOOLS["Text editor"])
        self.suite.choose(editor, "File", "New")
        editor = self.suite.window("Text - Untitled 2")
        self.suite.close(editor)
        self.suite.await_no_window("Text - Untitled 2")
        self.open_tool(launcher, "Utilities", "Text editor")
        self.suite.window(TOOLS["Text editor"])

    def test_closing_the_launcher_leaves_an_open_tool_working_until_it_closes_too(self):
        launcher = self.launcher()
        self.open_tool(launcher, "Utilities", "Text editor")
        editor = self.suite.window(TOOLS["Text editor"])
        # Until the new window has the keyboard, the key that closes could still reach either.
        self.suite.await_active(editor)
        self.suite.close(launcher)
        self.suite.await_no_window(" ", holding="My Computer")
        self.suite.choose(editor, "File", "New")
        editor = self.suite.window("Text - Untitled 2")
        self.assertTrue(self.suite.runs)
        self.suite.close(editor)
        self.assertEqual(self.suite.await_end(), 0)

    def test_closing_the_launcher_alone_ends_the_program(self):
        self.suite.close(self.launcher())
        self.assertEqual(self.suite.await_end(), 0)

    def test_a_settings_item_no_desktop_offers_is_named_in_a_message(self):
        launcher = self.launcher()
        self.open_tool(launcher, "My Computer", "Control panel items", "Fonts")
        box = self.suite.window("Vandrel", holding_text="Fonts")
        self.answer(box, "OK")
        self.suite.await_no_window("Vandrel")
        self.assertTrue(self.suite.runs)


if __name__ == "__main__":
    unittest.main()
