"""The picture viewer: its slide show, and the thumbnails."""

import os
import unittest

import drawings
from scenario import Scenario


def bitmap(width, height, red, green, blue):
    """A bitmap file of one colour."""
    row = bytes((blue, green, red)) * width
    row += bytes(-len(row) % 4)
    pixels = row * height
    header = b"BM" + (54 + len(pixels)).to_bytes(4, "little") + bytes(4) + (54).to_bytes(4, "little")
    info = (40).to_bytes(4, "little") + width.to_bytes(4, "little") + height.to_bytes(4, "little") \
        + (1).to_bytes(2, "little") + (24).to_bytes(2, "little") + bytes(24)
    return header + info + pixels


class Pictures(Scenario):
    def setUp(self):
        super().setUp()
        self.put("a.bmp", bitmap(400, 300, 255, 0, 0))
        self.put("b.bmp", b"BM is no bitmap")
        self.put("c.bmp", bitmap(300, 400, 0, 0, 255))
        self.put("Drawings/a.wmf", drawings.metafile())
        self.put("Drawings/b.wmf", drawings.metafile()[:60])
        self.put("Drawings/c.wpg", drawings.vector_wpg())
        self.open_tool(self.launcher(), "Utilities", "Picture viewer")
        self.window = self.suite.window("Picture viewer - c:\\")

    def put(self, name, contents):
        path = os.path.join(self.suite.home, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(contents)

    def go_to(self, folder):
        """Opens a folder of the home."""
        self.suite.click(self.window.find(role="list", name="Folders").find(role="list item", name=folder), times=2)
        self.window = self.suite.window("Picture viewer - c:\\" + folder)

    def show(self, interval):
        """Starts a slide show of all files."""
        self.suite.press(self.window, "Select all")
        self.suite.focus(self.window.find(role="text", name="Slide interval in seconds"), times=2)
        self.suite.type(interval)
        self.suite.press(self.window, "Slide Show")

    def await_colour(self, node, colour):
        """Waits until the middle of something shows that colour (red, green, blue)."""
        wanted = bytes(reversed(colour))

        def shows():
            node.forget()
            x, y, width, height = node.rectangle
            return self.session.screen.pixels(x + width // 2, y + height // 2, 1, 1)[:3] == wanted

        self.suite.await_that(shows, f"{colour} to be seen")

    def test_a_show_passes_over_what_is_broken_and_stops_at_the_last(self):
        self.show("0.3")
        self.await_colour(self.window.find(name="Slide"), (0, 0, 255))

    def test_thumbnails_are_shown_and_closed(self):
        self.suite.press(self.window, "Select all")
        self.suite.press(self.window, "Thumbnails")
        thumbnails = self.suite.window("Thumbnails view")
        self.await_colour(thumbnails.find(name="Thumbnail 1"), (255, 0, 0))
        self.await_colour(thumbnails.find(name="Thumbnail 3"), (0, 0, 255))
        self.suite.close(thumbnails)
        self.suite.await_no_window("Thumbnails view")
        self.suite.press(self.window, "Thumbnails")
        self.await_colour(self.suite.window("Thumbnails view").find(name="Thumbnail 1"), (255, 0, 0))

    def test_drawings_are_slides_and_thumbnails_too(self):
        self.go_to("Drawings")
        # The metafile is shown for as long as this test takes.
        self.show("60")
        self.await_colour(self.window.find(name="Slide"), drawings.RED)
        self.suite.press(self.window, "Thumbnails")
        thumbnails = self.suite.window("Thumbnails view")
        self.await_colour(thumbnails.find(name="Thumbnail 1"), drawings.RED)
        self.await_colour(thumbnails.find(name="Thumbnail 3"), drawings.RED)

    def test_thumbnails_closed_while_they_come_leave_the_viewer_at_work(self):
        for number in range(300):
            self.put(f"Many/{number:03}.bmp", bitmap(1000, 700, 0, number % 256, 0))
        self.go_to("Many")
        self.suite.press(self.window, "Select all")
        self.suite.press(self.window, "Thumbnails")
        thumbnails = self.suite.window("Thumbnails view")
        self.suite.close(thumbnails)
        self.suite.await_no_window("Thumbnails view")
        self.show("60")
        self.await_colour(self.window.find(name="Slide"), (0, 0, 0))
        self.suite.close(self.window)
        self.suite.await_no_window(self.window.name)
        self.assertTrue(self.suite.runs)


if __name__ == "__main__":
    unittest.main()
