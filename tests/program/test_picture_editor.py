"""The picture editor on pictures of its own, in the whole program."""

import os
import struct
import subprocess
import unittest

import drawings
from scenario import Scenario

WIDTH, HEIGHT = 320, 200


def pixel(x, y):
    """Blue, green and red of the test picture: each tells where it lies."""
    return x * 255 // WIDTH, y * 255 // HEIGHT, (x + y) % 256


def bitmap():
    """The test picture as a BMP of 24 bits, bottom row first."""
    rows = b"".join(bytes(value for x in range(WIDTH) for value in pixel(x, y)) for y in reversed(range(HEIGHT)))
    header = struct.pack("<IiiHHIIiiII", 40, WIDTH, HEIGHT, 1, 24, 0, len(rows), 3780, 3780, 0, 0)
    return b"BM" + struct.pack("<IHHI", 54 + len(rows), 0, 0, 54) + header + rows


class PictureEditor(Scenario):
    def setUp(self):
        super().setUp()
        with open(self.path("photo.bmp"), "wb") as file:
            file.write(bitmap())
        self.panel = self.launcher()
        self.open_tool(self.panel, "Utilities", "Picture editor")
        self.editor = self.suite.window("EditMe!")

    def path(self, name):
        return os.path.join(self.suite.home, name)

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def choose(self, *names):
        self.suite.choose(self.editor, *names)

    def file_dialog(self, title, name):
        """Types a file's name into the open or save dialog and accepts it."""
        dialog = self.suite.window(title)
        self.suite.focus(dialog.find(role="text", name="File name:"), times=3)
        self.suite.type(name)
        self.suite.keys("Return")
        self.suite.await_no_window(title)

    def replace(self, dialog, fields):
        """Types into text boxes of a dialog, in place of what they offer."""
        for name, text in fields.items():
            self.suite.focus(dialog.find(role="text", name=name), times=3)
            self.suite.type(text)

    def write(self, name, contents):
        with open(self.path(name), "wb") as file:
            file.write(contents)

    def open(self, name, status):
        self.choose("File", "Open..")
        self.file_dialog("Open", name)
        self.await_status(status)

    def open_photo(self):
        self.open("photo.bmp", f"{WIDTH}x{HEIGHT} 24 bits/pixel")

    def save_as(self, name):
        self.choose("File", "Save as..")
        self.file_dialog("Save As", name)
        self.suite.await_that(lambda: os.path.exists(self.path(name)), f"{name} on the disk")

    def shown(self, at):
        """The colour (red, green, blue) that the view shows at a fraction of its size."""
        x, y, width, height = self.editor.find(name="Picture").rectangle
        blue, green, red, _ = self.session.screen.pixels(x + int(width * at[0]), y + int(height * at[1]), 1, 1)
        return red, green, blue

    def view(self):
        """The upper left of what the view shows."""
        x, y, _, _ = self.editor.find(name="Picture").rectangle
        return self.session.screen.pixels(x + 5, y + 5, 60, 60)

    def converted(self, name, to):
        """What another program makes of a file that the editor wrote: its pixels as one of the same kind."""
        subprocess.run(["convert", self.path(name), "-depth", "8", self.path(to)], check=True, timeout=60)
        return self.read(to)

    def await_status(self, text):
        """Waits until a panel of the status bar reads that."""
        def reads():
            self.editor.forget()
            return any(node.name == text for node in self.editor.all(role="label"))

        self.suite.await_that(reads, f'the status bar to read "{text}"')

    def await_pixel(self, name, x, y, expected):
        """Waits until a BMP on the disk has that blue, green and red there."""
        def found():
            file = self.read(name)
            offset, = struct.unpack_from("<I", file, 10)
            at = offset + (HEIGHT - 1 - y) * WIDTH * 3 + x * 3
            return tuple(file[at:at + 3])

        self.suite.await_that(lambda: found() == expected, f"{expected} at {x}, {y}")

    def test_a_picture_is_opened_processed_undone_and_saved(self):
        self.open_photo()
        self.choose("Process", "Negative")
        self.choose("File", "Save")
        self.await_pixel("photo.bmp", 10, 20, tuple(255 - value for value in pixel(10, 20)))
        self.choose("Edit", "Undo")
        self.choose("File", "Save")
        self.await_pixel("photo.bmp", 10, 20, pixel(10, 20))
        self.suite.close(self.editor)
        self.suite.await_no_window("EditMe!")
        self.assertTrue(self.suite.runs)

    def test_a_command_changes_the_area_that_was_typed_in(self):
        self.open_photo()
        self.choose("Edit", "Set processing area...")
        dialog = self.suite.window("Set processing area")
        self.replace(dialog, {"Left:": "100", "Top:": "50", "Right:": "200", "Bottom:": "150"})
        self.suite.press(dialog, "OK")
        self.suite.await_no_window("Set processing area")
        self.choose("Process", "Negative")
        self.choose("File", "Save")
        self.await_pixel("photo.bmp", 150, 100, tuple(255 - value for value in pixel(150, 100)))
        self.await_pixel("photo.bmp", 99, 100, pixel(99, 100))
        self.await_pixel("photo.bmp", 200, 100, pixel(200, 100))

    def test_a_command_changes_the_area_that_was_drawn(self):
        self.open_photo()
        picture = self.editor.find(name="Picture")
        x, y, width, height = picture.rectangle
        spot = lambda left, top: (left / width, top / height)
        self.suite.stroke(picture, spot(40, 30), spot(140, 90))
        self.choose("Process", "Negative")
        self.choose("File", "Save")
        self.await_pixel("photo.bmp", 90, 60, tuple(255 - value for value in pixel(90, 60)))
        self.await_pixel("photo.bmp", 20, 60, pixel(20, 60))
        self.await_pixel("photo.bmp", 160, 60, pixel(160, 60))

    def test_the_corner_drags_the_view_smaller(self):
        self.open_photo()
        picture = self.editor.find(name="Picture")
        before = picture.rectangle
        self.suite.drag(self.editor.find(name="Resize the view"), picture)

        def is_smaller():
            picture.forget()
            return picture.rectangle[2] < before[2] and picture.rectangle[3] < before[3]

        self.suite.await_that(is_smaller, "the view to shrink")

    def test_the_zoom_shows_more_and_saves_the_same(self):
        self.open_photo()
        for _ in range(3):
            self.choose("Zoom", "Zoom In")
        self.save_as("copy.bmp")
        self.await_pixel("copy.bmp", 10, 20, pixel(10, 20))

    def test_drawings_are_opened_processed_and_saved(self):
        for name, drawing in (("drawing.wmf", drawings.metafile()), ("drawing.wpg", drawings.vector_wpg())):
            self.write(name, drawing)
            self.open(name, "1000x500 24 bits/pixel")
            self.choose("Process", "Negative")
            copy = name.replace(".", "-") + ".bmp"
            self.save_as(copy)
            pixels = self.converted(copy, "drawing.rgb")
            at = lambda x, y: tuple(pixels[(y * 1000 + x) * 3:][:3])
            self.assertEqual(at(500, 250), tuple(255 - value for value in drawings.RED))
            self.assertEqual(at(100, 250), (0, 0, 0))
            # A copy was saved, so that nothing is asked; the drawing itself is as it was.
            self.assertEqual(self.read(name), drawing)

    def photograph(self):
        """A large picture with soft shapes and noise, as a camera writes it; its size."""
        self.write("hills.jpg", b"")
        subprocess.run(["convert", "-size", "1200x900", "-seed", "7", "plasma:navy-gold", "-attenuate", "0.2",
                        "+noise", "Gaussian", "-quality", "92", self.path("hills.jpg")], check=True, timeout=120)
        return 1200, 900

    def test_a_photograph_goes_all_the_way(self):
        width, height = self.photograph()
        self.open("hills.jpg", f"{width}x{height} 24 bits/pixel")
        inside, outside = (0.4, 0.4), (0.8, 0.85)
        before = self.shown(inside), self.shown(outside)
        self.suite.stroke(self.editor.find(name="Picture"), (0.2, 0.2), (0.6, 0.6))
        self.choose("Process", "Negative")
        negative = tuple(255 - value for value in before[0])
        self.suite.await_that(lambda: self.shown(inside) == negative, "the area to become its negative")
        self.assertEqual(self.shown(outside), before[1])
        self.choose("Edit", "Undo")
        self.suite.await_that(lambda: self.shown(inside) == before[0], "the area to become what it was")
        self.choose("Process", "Negative")
        self.suite.await_that(lambda: self.shown(inside) == negative, "the area to become its negative again")
        whole_size = self.view()
        self.choose("Zoom", "Zoom Out")
        self.suite.await_that(lambda: self.view() != whole_size, "the picture to be shown smaller")
        self.choose("Zoom", "Zoom In")
        self.suite.await_that(lambda: self.view() == whole_size, "the picture to be shown at its size again")
        self.save_in_each_format(width, height)

    def save_in_each_format(self, width, height):
        self.save_as("copy.bmp")
        whole = self.converted("copy.bmp", "whole.rgb")
        self.assertEqual(len(whole), width * height * 3)
        for ending in ("tif", "pcx"):
            self.save_as("copy." + ending)
            self.assertEqual(self.converted("copy." + ending, ending + ".rgb"), whole)
        self.save_as("copy.jpg")
        self.assertEqual(len(self.converted("copy.jpg", "jpg.rgb")), len(whole))
        # What other programs do not read, or not always: the editor itself has to.
        for ending in ("wpg", "dib"):
            self.save_as("copy." + ending)
            self.open("copy." + ending, f"{width}x{height} 24 bits/pixel")
            self.save_as(ending + ".bmp")
            self.assertEqual(self.converted(ending + ".bmp", ending + ".rgb"), whole)

    def test_resize_changes_the_picture(self):
        self.open_photo()
        self.choose("Resize", "Resize..")
        dialog = self.suite.window("Resize")
        self.replace(dialog, {"Dimensions ratio:": "0.5"})
        self.suite.press(dialog, "OK")
        self.await_status(f"{WIDTH // 2}x{HEIGHT // 2} 24 bits/pixel")

    def test_closing_asks_about_changes(self):
        self.open_photo()
        self.choose("Texture", "Emboss")
        self.suite.close(self.editor)
        question = "Do you want to save the changes made to picture c:\\photo.bmp?"
        self.answer(self.box("Vandrel", question), "Cancel")
        self.suite.await_no_window("Vandrel")
        self.suite.close(self.editor)
        self.answer(self.box("Vandrel", question), "No")
        self.suite.await_no_window("EditMe!")
        self.assertEqual(self.read("photo.bmp"), bitmap())

    def test_a_file_that_is_no_picture_ends_in_an_error(self):
        self.write("letter.jpg", b"Dear Anna, this is no picture.")
        self.choose("File", "Open..")
        self.file_dialog("Open", "letter.jpg")
        self.answer(self.suite.window("Vandrel", holding_text="Run-time error '481':"), "OK")
        self.assertNotEqual(self.suite.await_end(), 0)

    def test_help_shows_the_guide(self):
        self.suite.activate(self.editor)
        self.suite.keys("F1")
        self.suite.window("Help - Picture editor")


if __name__ == "__main__":
    unittest.main()
