"""The screen goes away while every tool is open."""

import unittest

from scenario import Scenario
from test_suite import TOOLS


class LostScreen(Scenario):
    def test_the_suite_ends_by_itself_when_the_screen_goes_away(self):
        launcher = self.launcher()
        for route, title in TOOLS:
            self.suite.choose_window(launcher)
            self.open_tool(launcher, *route)
            self.suite.window(title)
        self.session.lose_screen()
        # The toolkit's own way out; a signal would be a negative number.
        self.assertEqual(self.suite.await_end(), 1)


if __name__ == "__main__":
    unittest.main()
