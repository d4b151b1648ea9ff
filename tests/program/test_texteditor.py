"""The text editor, from the launcher to a document on the disk and back."""

import os
import unittest

from scenario import Scenario

# A word-processor file of old: the head of the container format that such files were kept in.
BINARY_DOCUMENT = bytes.fromhex("d0cf11e0a1b11ae1") + bytes(1536)


class TextEditor(Scenario):
    def setUp(self):
        super().setUp()
        launcher = self.launcher()
        self.open_tool(launcher, "Utilities", "Text editor")
        self.editor = self.suite.window("Text - Untitled 1")

    # Steps.

    def document(self):
        """The text of the document that the frame's title names."""
        child = self.editor.find(role="frame", name=self.editor.name.removeprefix("Text - "))
        return child.find(role="text", name="Document text")

    def type_text(self, text):
        self.suite.focus(self.document())
        self.suite.type(text)

    def choose(self, *names):
        self.suite.choose(self.editor, *names)

    def file_dialog(self, title, name):
        """Types a file's name into the open or save dialog and accepts it."""
        dialog = self.suite.window(title)
        box = dialog.find(role="text", name="File name:")
        self.suite.focus(box, times=3)
        self.suite.type(name)
        self.suite.keys("Return")
        self.suite.await_no_window(title)

    def await_text(self, text):
        document = self.document()

        def reads():
            document.forget()
            return document.text == text

        try:
            self.suite.await_that(reads, f'the document to read "{text}"')
        except AssertionError as failure:
            raise AssertionError(f'it reads "{document.text}": {failure}') from None

    def path(self, name):
        return os.path.join(self.suite.home, name)

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def write(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content)

    def caption_question(self, caption):
        return self.suite.window(" ", holding=f"Do you want to save changes made to document {caption}?")

    # What a document goes through.

    def test_a_document_is_typed_saved_reopened_edited_and_saved_again(self):
        self.type_text("Plain and ")
        self.suite.click(self.editor.find(name="Bold"))
        self.suite.type("strong")
        self.choose("File", "Save as...")
        self.file_dialog("Save", "letter.rtf")
        self.editor = self.suite.window("Text - c:\\letter.rtf")

        saved = self.read("letter.rtf")
        self.assertTrue(saved.startswith(b"{\\rtf1"), saved[:40])
        self.assertIn(b"Plain and ", saved)
        self.assertRegex(saved, rb"\\b\b[^}]*strong")

        self.suite.close(self.editor)
        self.suite.await_no_window("Text - c:\\letter.rtf")
        self.open_tool(self.suite.window(" ", holding="My Computer"), "Utilities", "Text editor")
        self.editor = self.suite.window("Text - Untitled 1")
        self.choose("File", "Open...")
        self.file_dialog("Open", "letter.rtf")
        self.editor = self.suite.window("Text - c:\\letter.rtf")
        self.await_text("Plain and strong")

        self.suite.focus(self.document())
        self.suite.keys("ctrl+End")
        self.suite.type(" words")
        self.choose("File", "Save")
        self.suite.await_that(lambda: b" words" in self.read("letter.rtf"), "the edited document on the disk")
        self.suite.close(self.editor)
        self.suite.await_no_window("Text - c:\\letter.rtf")
        self.assertTrue(self.suite.runs)

    def test_an_untouched_document_closes_without_a_question(self):
        self.suite.close(self.editor)
        self.suite.await_no_window("Text - Untitled 1")
        self.assertEqual(len(self.suite.windows()), 1)

    def test_cancel_keeps_a_changed_document_open(self):
        self.type_text("precious")
        self.suite.close(self.editor)
        self.answer(self.caption_question("Untitled 1"), "Cancel")
        self.await_text("precious")

    def test_no_closes_a_changed_document_and_forgets_it(self):
        self.type_text("worthless")
        self.suite.close(self.editor)
        self.answer(self.caption_question("Untitled 1"), "No")
        self.suite.await_no_window("Text - Untitled 1")
        self.assertEqual([name for name in os.listdir(self.suite.home) if not name.startswith(".")], [])

    def test_the_closing_key_asks_before_it_takes_a_changed_document(self):
        self.type_text("precious")
        self.suite.keys("ctrl+F4")
        self.answer(self.caption_question("Untitled 1"), "Cancel")
        self.await_text("precious")
        self.suite.focus(self.document())
        self.suite.keys("ctrl+F4")
        self.answer(self.caption_question("Untitled 1"), "No")
        self.suite.await_that(lambda: not self.editor.all(name="Document text"), "the document to close")
        self.suite.window("Text - ")

    def test_yes_saves_a_changed_document_through_the_dialog(self):
        self.type_text("kept")
        self.suite.close(self.editor)
        self.answer(self.caption_question("Untitled 1"), "Yes")
        self.file_dialog("Save", "kept.rtf")
        self.suite.await_no_window("Text - Untitled 1")
        self.assertIn(b"kept", self.read("kept.rtf"))

    def test_yes_with_a_cancelled_dialog_keeps_the_document(self):
        self.type_text("precious")
        self.suite.close(self.editor)
        self.answer(self.caption_question("Untitled 1"), "Yes")
        dialog = self.suite.window("Save")
        self.suite.click(dialog.find(role="push button", name="Cancel"))
        self.await_text("precious")

    def test_a_document_with_formatting_is_shown_and_nothing_of_its_code_is(self):
        self.write("rich.rtf", rb"{\rtf1\ansi\deff0{\fonttbl{\f0 Arial;}}{\*\generator Other}"
                               rb"\pard Caf\'e9 {\b bold} \u8364?\par}")
        self.choose("File", "Open...")
        self.file_dialog("Open", "rich.rtf")
        self.editor = self.suite.window("Text - c:\\rich.rtf")
        self.suite.await_that(lambda: self.document().text.startswith("Caf\u00e9 bold \u20ac"), "the document")
        weight = self.document().attributes_at(6).get("font-weight", self.document().attributes_at(6).get("weight"))
        self.assertIn(weight, ("bold", "700"))

    def test_a_binary_document_ends_in_the_error_box_and_the_program(self):
        self.write("old.doc", BINARY_DOCUMENT)
        self.choose("File", "Open...")
        self.file_dialog("Open", "old.doc")
        box = self.suite.window("Vandrel", holding_text="Run-time error '321':")
        self.answer(box, "OK")
        self.assertNotEqual(self.suite.await_end(), 0)

    def test_replace_all_replaces_every_occurrence(self):
        self.type_text("one two one two one")
        self.choose("Search", "Replace")
        dialog = self.suite.window("Replace text..")
        self.fill(dialog, "Text to replace:", "one")
        self.fill(dialog, "Text to replace with:", "three")
        self.suite.click(dialog.find(role="check box", name="Replace all"))
        self.answer(dialog, "Ok")
        self.await_text("three two three two three")
        self.answer(dialog, "Cancel")
        self.suite.await_no_window("Replace text..")

    def test_a_replacement_that_never_ends_is_stopped_by_cancel(self):
        self.type_text("a")
        self.choose("Search", "Replace")
        dialog = self.suite.window("Replace text..")
        self.fill(dialog, "Text to replace:", "a")
        self.fill(dialog, "Text to replace with:", "a")
        self.suite.click(dialog.find(role="check box", name="Replace all"))
        self.suite.click(dialog.find(role="push button", name="Ok"))
        self.suite.click(dialog.find(role="push button", name="Cancel"))
        self.suite.await_no_window("Replace text..")
        self.await_text("a")
        self.type_text("bc")
        self.suite.await_that(lambda: sorted(self.document().text) == ["a", "b", "c"], "the editor to take keys")

    def test_find_selects_the_text_asked_for(self):
        self.type_text("red green blue")
        self.choose("Search", "Find...")
        box = self.suite.window("Find", holding="Enter the text to search for:")
        self.suite.focus(box.find(role="text"))
        self.suite.type("green")
        self.answer(box, "OK")
        self.suite.await_no_window("Find")
        self.suite.type("yellow")
        self.await_text("red yellow blue")

    def test_commands_that_need_a_document_are_disabled_without_one(self):
        self.suite.focus(self.document())
        self.suite.keys("ctrl+w")
        self.suite.await_that(lambda: not self.editor.all(name="Document text"), "the document to close")
        self.editor = self.suite.window("Text - ")
        self.suite.open_menu(self.editor, "File")
        states = {name: self.suite.menu_item(name).has("enabled")
                  for name in ("New", "Open...", "Save", "Save as...", "Print", "Exit")}
        self.assertEqual(states, {"New": True, "Open...": True, "Save": False, "Save as...": False,
                                  "Print": False, "Exit": True})

    def fill(self, dialog, label, text):
        box = dialog.find(role="text", name=label)
        self.suite.focus(box, times=3)
        self.suite.type(text)


if __name__ == "__main__":
    unittest.main()
