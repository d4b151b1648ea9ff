"""All tools together: every window at once, in any order, closed and opened again."""

import random
import unittest

from scenario import Scenario

TOOLS = [
    (("My Computer", "File manager"), "File Manager - c:\\"),
    (("My Computer", "Screen resolution"), "Screen resolution control"),
    (("My Computer", "System Info"), "System Info"),
    (("Internet", "Browse the Internet"), "Internet - "),
    (("Internet", "Receive e-mail"), "Read POP mail"),
    (("Internet", "Send e-mail"), "Send SMTP mail"),
    (("Internet", "FTP client"), "FTP client"),
    (("Internet", "Utilities", "Ping"), "Ping"),
    (("Internet", "Utilities", "Get local IP"), "My IP"),
    (("Utilities", "Picture viewer"), "Picture viewer - c:\\"),
    (("Utilities", "Picture editor"), "EditMe!"),
    (("Utilities", "Screen capture"), "Screen Capture"),
    (("Utilities", "Text editor"), "Text - Untitled 1"),
]
"""The thirteen tools: the way to each through the launcher, and the title its window opens with."""


class WholeSuite(Scenario):
    def open_all(self, launcher, order):
        for route, title in order:
            with self.subTest(title):
                self.suite.choose_window(launcher)
                self.open_tool(launcher, *route)
                self.suite.await_active(self.suite.window(title))

    def close_all(self, order):
        for _, title in order:
            with self.subTest(title):
                window = self.suite.window(title)
                self.suite.choose_window(window)
                self.suite.close(window)
                self.suite.await_no_window(title)

    def titles(self):
        return sorted(window.name for window in self.suite.windows() if window.name != " ")

    def test_all_windows_at_once_in_any_order_and_again(self):
        launcher = self.launcher()
        shuffled = random.Random(13)
        for _ in range(2):
            self.open_all(launcher, shuffled.sample(TOOLS, len(TOOLS)))
            self.assertEqual(self.titles(), sorted(title for _, title in TOOLS))
            self.close_all(shuffled.sample(TOOLS, len(TOOLS)))
            self.assertEqual(self.titles(), [])
        self.suite.close(launcher)
        self.assertEqual(self.suite.await_end(), 0)

    def test_all_windows_outlive_the_launcher_and_the_last_ends_the_program(self):
        launcher = self.launcher()
        self.open_all(launcher, TOOLS)
        self.suite.choose_window(launcher)
        self.suite.close(launcher)
        self.suite.await_no_window(" ", holding="My Computer")
        self.assertEqual(self.titles(), sorted(title for _, title in TOOLS))
        self.close_all(TOOLS)
        self.assertEqual(self.suite.await_end(), 0)


if __name__ == "__main__":
    unittest.main()
