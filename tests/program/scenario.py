"""What every test of the whole program starts from: a desktop of its own and the suite running on it."""

import contextlib
import os
import subprocess
import sys
import unittest

from session import Session, main_program

_program = main_program(sys.argv)


class Scenario(unittest.TestCase):
    """Each test gets a fresh home and a fresh process; a failure leaves a picture of the screen."""

    @classmethod
    def setUpClass(cls):
        cls.session = cls.enterClassContext(Session())

    def setUp(self):
        self.suite = self.session.start(_program)
        self.addCleanup(self.suite.kill)
        self.addCleanup(self._keep_picture)

    def _keep_picture(self):
        folder = os.environ.get("VANDREL_FAILURES")
        outcome = self._outcome.result
        failed = outcome.failures + outcome.errors
        if folder and any(test is self for test, _ in failed):
            os.makedirs(folder, exist_ok=True)
            with contextlib.suppress(OSError, subprocess.SubprocessError):
                self.session.picture(os.path.join(folder, self.id() + ".png"))

    # The first steps of nearly every scenario.

    def about_box(self):
        return self.suite.window(" ", holding="Continue")

    def launcher(self):
        """Goes on from the about box to the launcher."""
        self.suite.click(self.about_box().find(role="push button", name="Continue"))
        return self.suite.window(" ", holding="My Computer")

    def open_tool(self, launcher, button, *items):
        """Chooses a tool from one of the launcher's pop-ups."""
        self.suite.click(launcher.find(role="push button", name=button))
        self.suite.choose_in_menu(*items)

    # What the boxes say.

    def box(self, title, text):
        """Waits for a message box of that title that says that text."""
        return self.suite.window(title, holding=text)

    def answer(self, box, button):
        self.suite.click(box.find(role="push button", name=button))

    # What every window has.

    def press(self, window, button):
        self.suite.press(window, button)

    def await_enabled(self, window, button):
        return self.suite.await_enabled(window, button)

    def await_text(self, window, name, *parts):
        return self.suite.await_text(window, name, *parts)
