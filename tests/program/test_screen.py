"""The tools about the screen and the computer: capture, resolution, facts."""

import os
import subprocess
import unittest

import Xlib.display

from scenario import Scenario
from session import PATIENCE


def pixels(path):
    """A picture file's width, height and pixels, as another program reads them."""
    size = subprocess.run(["identify", "-format", "%w %h", path], check=True, capture_output=True, text=True,
                          timeout=PATIENCE).stdout
    octets = subprocess.run(["convert", path, "-depth", "8", "rgb:-"], check=True, capture_output=True,
                            timeout=PATIENCE).stdout
    return size, octets


class ScreenTools(Scenario):
    def setUp(self):
        super().setUp()
        self.panel = self.launcher()
        self.file = os.path.join(self.suite.home, "ScreenCaptured.bmp")

    def open_capture(self):
        self.open_tool(self.panel, "Utilities", "Screen capture")
        self.window = self.suite.window("Screen Capture")

    def await_file(self, path):
        self.suite.await_that(lambda: os.path.exists(path), f"{path} to be written")

    def set_box(self, name, text):
        self.suite.focus(self.window.find(role="text", name=name))
        self.suite.keys("ctrl+a")
        self.suite.type(text)

    def set_preview(self, wanted):
        box = self.window.find(role="check box", name="Show screen preview")
        if box.has("checked") != wanted:
            self.suite.click(box)

    def park_pointer(self):
        """Takes the pointer where it lights nothing up."""
        display = Xlib.display.Display(self.session.environment["DISPLAY"])
        display.screen().root.warp_pointer(1270, 5)
        display.sync()
        display.close()

    def test_the_file_holds_the_whole_screen_the_tool_included(self):
        self.open_capture()
        self.set_preview(False)
        self.press(self.window, "Capture now")
        self.await_file(self.file)
        os.remove(self.file)
        self.park_pointer()
        self.suite.settle([self.window])
        self.suite.keys("space")
        self.await_file(self.file)
        size, ours = pixels(self.file)
        other = os.path.join(self.suite.home, "other.png")
        self.session.picture(other)
        other_size, theirs = pixels(other)
        self.assertEqual(size, "1280 1024")
        self.assertEqual(size, other_size)
        # The button may be drawn pressed or not in either of the two.
        different = sum(ours[i:i + 3] != theirs[i:i + 3] for i in range(0, len(ours), 3))
        x, y, width, height = self.window.find(role="push button", name="Capture now").rectangle
        self.assertLessEqual(different, width * height)

    def test_the_preview_shows_the_picture_after_the_file_is_written(self):
        self.open_capture()
        self.press(self.window, "Capture now")
        preview = self.suite.window("Preview - c:\\ScreenCaptured.bmp")
        self.await_file(self.file)
        _, _, width, height = preview.rectangle
        self.assertLessEqual(width, 640)
        self.assertLessEqual(height, 512)
        self.suite.activate(preview)
        self.suite.keys("Escape")
        self.suite.await_no_window("Preview - c:\\ScreenCaptured.bmp")

    def test_capture_later_waits_for_its_delay(self):
        self.open_capture()
        self.set_preview(False)
        self.set_box(" Capture after :", "0.5s")
        self.press(self.window, "Capture later")
        self.await_file(self.file)

    def test_a_folder_that_is_not_there_is_told_by_the_files_name(self):
        self.open_capture()
        self.set_box("Save Picture to :", "c:\\nowhere\\a.bmp")
        self.press(self.window, "Capture now")
        box = self.suite.window("Vandrel", holding_text='"c:\\nowhere\\a.bmp" could not be written')
        self.answer(box, "OK")
        self.suite.await_no_window("Vandrel")

    def test_a_blank_file_name_is_refused(self):
        self.open_capture()
        self.set_box("Save Picture to :", "   ")
        self.press(self.window, "Capture now")
        self.answer(self.box("Vandrel", "File name can not be blank !!"), "OK")

    def test_browse_chooses_the_file(self):
        self.open_capture()
        self.set_preview(False)
        self.press(self.window, "Browse")
        dialog = self.suite.window("Save As")
        self.suite.focus(dialog.find(role="text", name="File name:"), times=3)
        self.suite.type("garden")
        self.suite.keys("Return")
        self.suite.await_no_window("Save As")
        self.await_text(self.window, "Save Picture to :", "c:\\garden.bmp")
        self.press(self.window, "Capture now")
        self.await_file(os.path.join(self.suite.home, "garden.bmp"))

    def test_a_screen_without_modes_refuses_and_the_suite_ends(self):
        self.open_tool(self.panel, "My Computer", "Screen resolution")
        window = self.suite.window("Screen resolution control")
        for fact in ("Width", "1280", "Height", "1024"):
            window.find(role="label", name=fact)
        # Before any change there is nothing to return to, and nothing is said.
        self.suite.activate(window)
        self.suite.keys("Escape")
        self.press(window, "Change now")
        box = self.suite.window("Vandrel", holding_text="Run-time error '424'")
        self.answer(box, "OK")
        self.assertEqual(self.suite.await_end(), 1)

    def test_the_facts_of_the_computer(self):
        self.open_tool(self.panel, "My Computer", "System Info")
        window = self.suite.window("System Info")
        self.assertEqual(window.find(role="text", name="Computer Name").text, os.uname().nodename)
        self.assertIn(os.uname().release, window.find(role="text", name="Operating System").text)


if __name__ == "__main__":
    unittest.main()
