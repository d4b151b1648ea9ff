"""The file manager, with a mouse and with the keyboard alone."""

import os
import unittest

from scenario import Scenario

QUESTION = "Are you sure you want to delete the selected file(s)?"


class FileManager(Scenario):
    def setUp(self):
        super().setUp()
        os.mkdir(self.path("Copies"))
        for name in ("a.txt", "b.txt", "c.txt"):
            with open(self.path(name), "w", encoding="ascii") as file:
                file.write("This is " + name)
        self.open_tool(self.launcher(), "My Computer", "File manager")
        self.window = self.suite.window("File Manager - c:\\")

    def path(self, *names):
        return os.path.join(self.suite.home, *names)

    def read(self, *names):
        with open(self.path(*names), encoding="ascii") as file:
            return file.read()

    # Steps.

    def list(self, name):
        return self.window.find(role="list", name=name)

    def file(self, name):
        return self.list("Files").find(role="list item", name=name)

    def icon(self, name):
        return self.window.find(name=name)

    def go_to(self, folder, path):
        self.suite.click(self.list("Folders").find(role="list item", name=folder), times=2)
        self.suite.window("File Manager - " + path)

    def make_shortcut(self):
        """Makes the first icon a shortcut to the folder for copies."""
        self.go_to("Copies", "c:\\Copies")
        self.suite.click(self.icon("Folder shortcut 1"), times=2)
        self.window.find(role="label", name="c:\\Copies\\")
        self.go_to("c:\\", "c:\\")

    def select_two(self):
        self.suite.click(self.file("a.txt"))
        self.suite.keys("shift+Down")

    def await_file(self, *names):
        self.suite.await_that(lambda: os.path.exists(self.path(*names)), f"{names} to be there")

    # Scenarios.

    def test_files_are_copied_by_dragging_them_onto_a_folder(self):
        self.make_shortcut()
        self.select_two()
        self.suite.drag(self.file("b.txt"), self.icon("Folder shortcut 1"))
        self.await_file("Copies", "b.txt")
        self.assertEqual(self.read("Copies", "a.txt"), "This is a.txt")
        self.assertEqual(self.read("Copies", "b.txt"), "This is b.txt")
        self.assertFalse(os.path.exists(self.path("Copies", "c.txt")))

    def test_files_are_deleted_by_dragging_them_onto_the_last_icon(self):
        self.select_two()
        # Another press on the line that was just clicked would be a double click.
        self.suite.drag(self.file("b.txt"), self.icon("Delete"))
        self.answer(self.box(" ", QUESTION), "Yes")
        self.suite.await_that(lambda: sorted(os.listdir(self.suite.home)) == ["Copies", "c.txt"],
                              "two files to be deleted")
        self.list("Files").await_gone(role="list item", name="a.txt")

    def test_an_icon_without_a_shortcut_takes_nothing(self):
        self.suite.drag(self.file("a.txt"), self.icon("Folder shortcut 2"))
        self.suite.drag(self.file("a.txt"), self.icon("Delete"))
        self.answer(self.box(" ", QUESTION), "No")
        self.assertEqual(os.listdir(self.path("Copies")), [])
        self.assertEqual(self.read("a.txt"), "This is a.txt")

    def test_the_drive_list_ends_a_drag(self):
        self.make_shortcut()
        self.suite.click(self.file("a.txt"))
        with self.suite.dragging(self.file("a.txt"), self.window.find(role="combo box")):
            pass
        self.suite.drag(self.file("b.txt"), self.icon("Folder shortcut 1"))
        self.await_file("Copies", "b.txt")
        self.assertEqual(os.listdir(self.path("Copies")), ["b.txt"])

    def test_an_icon_lights_up_under_what_is_dragged(self):
        icon = self.icon("Folder shortcut 3")
        self.suite.point(self.file("c.txt"))
        x, y, width, height = icon.rectangle
        corner = (x, y, width // 4, height // 4)
        before = self.session.screen.pixels(*corner)
        with self.suite.dragging(self.file("c.txt"), icon):
            self.suite.await_that(lambda: self.session.screen.pixels(*corner) != before, "the icon to light up")

    def test_all_of_it_from_the_keyboard(self):
        folders = self.list("Folders")
        self.suite.focus(folders.find(role="list item", name="c:\\"))
        self.suite.keys("Down", "Return")
        self.suite.window("File Manager - c:\\Copies")
        self.suite.keys("Tab", "Tab", "Return")
        self.window.find(role="label", name="c:\\Copies\\")
        self.suite.keys("shift+Tab", "shift+Tab", "BackSpace")
        self.suite.window("File Manager - c:\\")
        self.suite.keys("Tab", "Home", "space", "Tab", "space")
        self.await_file("Copies", "a.txt")
        self.suite.keys("shift+Tab", "Delete")
        self.answer(self.box(" ", QUESTION), "Yes")
        self.suite.await_that(lambda: not os.path.exists(self.path("a.txt")), "the file to be deleted")


if __name__ == "__main__":
    unittest.main()
