"""Files, over to a server and back, as somebody does it in the window."""

import os
import random
import unittest

from ftp_server import PASSWORD, USER, FtpServer
from scenario import Scenario

REMOTE_BUTTONS = ("Refresh File List", "  Rename           File", "   Delete            File", " Download        File",
                  " Current Directory", "    Set Directory", " Create  Directory", " Remove  Directory", "UpLoad")
NEVER_DISABLED = ("Connect", "C l o s e", "A b o r t", "Initial Path")


class Ftp(Scenario):
    def setUp(self):
        super().setUp()
        self.serve()

    def serve(self, *options):
        """Starts a server, which takes the place of the one there was."""
        self.server = self.enterContext(FtpServer(*options))

    # Steps.

    def client(self):
        self.open_tool(self.launcher(), "Internet", "FTP client")
        self.window = self.suite.window("FTP client")

    def connect(self, password=PASSWORD):
        self.enter("FTP server address", self.server.address)
        self.enter("Username", USER)
        self.enter("Password", password)
        self.press(self.window, "Connect")

    def connected(self):
        """A client that has connected and shows what the server has."""
        self.client()
        self.connect()
        self.await_status("Connected to : " + self.server.address)

    def enter(self, box, text):
        """Replaces what a text box holds."""
        node = self.window.find(role="text", name=box)
        self.suite.focus(node)
        self.suite.keys("ctrl+a")
        self.suite.type(text)
        self.await_box(box, text)

    def await_box(self, box, text):
        node = self.window.find(role="text", name=box)

        def reads():
            node.forget()
            return node.text == text

        self.suite.await_that(reads, f'"{box}" to read "{text}"')

    def await_status(self, text):
        self.window.find(role="label", name=text)

    def await_status_with(self, part):
        """Waits for a status text with that part; returns it."""
        return self.suite.await_that(
            lambda: next((node.name for node in self.window.all(role="label") if part in node.name), None),
            f'a status text with "{part}"')

    def names(self):
        """The names that the remote list shows, sorted."""
        lines = self.window.find(role="list", name="Remote files").all(role="list item")
        return sorted(line.name.split("/")[0][:-2] for line in lines)

    def await_names(self, *names):
        self.suite.await_that(lambda: self.names() == sorted(names), f"the server's files to be {names}")

    def line(self, name):
        """The line of a remote name."""
        return self.suite.await_that(
            lambda: next((line for line in self.window.find(role="list", name="Remote files").all(role="list item")
                          if line.name.startswith(name + "  /")), None),
            f'the line of "{name}"')

    def pick(self, name):
        """Chooses a line, which puts its name into the box above."""
        self.suite.click(self.line(name), where=(0.1, 0.5))
        self.await_box("Remote file", name)

    def pick_local(self, name):
        self.suite.click(self.window.find(role="list", name="Files").find(role="list item", name=name))
        self.await_box("Local file", "c:\\" + name)

    def select(self, kind):
        button = self.window.find(role="radio button", name=kind)
        self.suite.click(button)

        def is_checked():
            button.forget()
            return button.has("checked")

        self.suite.await_that(is_checked, f'"{kind}" to be chosen')

    def confirm(self, text):
        """Says yes to a question."""
        self.answer(self.box(" ", text), "Yes")
        self.suite.await_no_window(" ", holding=text)

    def prompt(self, title, answer):
        box = self.suite.window(title)
        self.suite.focus(box.find(role="text"))
        self.suite.type(answer)
        self.suite.keys("Return")
        self.suite.await_no_window(title)

    def upload(self, local, remote):
        self.pick_local(local)
        self.enter("Remote file", remote)
        self.press(self.window, "UpLoad")
        self.confirm(f"c:\\{local} will be upload to {self.server.address} with remote file name : {remote}")

    def download(self, remote, local):
        self.pick(remote)
        self.enter("Local file", "c:\\" + local)
        self.press(self.window, " Download        File")
        self.confirm(f"{remote} will be download  from {self.server.address} with local file name : c:\\{local}")

    def local(self, name):
        return os.path.join(self.suite.home, name)

    def write_local(self, name, content):
        with open(self.local(name), "wb") as file:
            file.write(content)

    def read_local(self, name):
        with open(self.local(name), "rb") as file:
            return file.read()

    def enabled(self, button):
        return self.window.find(role="push button", name=button).has("enabled")

    # What files go through.

    def test_a_session_from_the_first_connection_to_the_last_file_deleted(self):
        picture = random.Random(4711).randbytes(3_000_000)
        self.write_local("picture.bin", picture)
        self.server.write("readme.txt", b"Welcome\r\n")
        self.connected()
        self.await_names("readme.txt")

        self.enter("Remote file", "New pictures")
        self.press(self.window, " Create  Directory")
        self.await_names("New pictures", "readme.txt")
        self.pick("New pictures")
        self.press(self.window, "    Set Directory")
        self.await_status("Current directory is :  /New pictures")
        self.await_box("Remote file", "/New pictures")
        self.window = self.suite.window("FTP - " + self.server.address)
        self.await_names()

        self.select("Binary")
        self.upload("picture.bin", "sent picture.bin")
        self.await_status("File has been uploaded to  : " + self.server.address)
        self.await_names("sent picture.bin")
        self.assertEqual(self.server.read("New pictures", "sent picture.bin"), picture)

        self.pick("sent picture.bin")
        self.press(self.window, "  Rename           File")
        self.prompt("Rename remote file", "renamed.bin")
        self.await_status("Remote File sent picture.bin rename to renamed.bin")
        self.await_names("renamed.bin")

        self.download("renamed.bin", "back.bin")
        self.await_status("File has been downloaded from " + self.server.address)
        self.assertEqual(self.read_local("back.bin"), picture)
        self.window.find(role="list", name="Files").find(role="list item", name="back.bin")

        self.pick("renamed.bin")
        self.press(self.window, "   Delete            File")
        self.await_status("Remote File renamed.bin has been deleted ")
        self.await_names()
        self.assertEqual(os.listdir(self.server.path("New pictures")), [])

        self.enter("Remote file", "..")
        self.press(self.window, "    Set Directory")
        self.await_status("Current directory is :  /")
        self.await_names("New pictures", "readme.txt")
        self.pick("New pictures")
        self.press(self.window, " Remove  Directory")
        self.await_status("Remote Directory New pictures has been removed ")
        self.await_names("readme.txt")

        self.press(self.window, "C l o s e")
        self.await_status("Disconnected from : " + self.server.address)
        self.assertFalse(any(self.enabled(button) for button in REMOTE_BUTTONS))
        self.assertTrue(all(self.enabled(button) for button in NEVER_DISABLED))

    def test_text_is_converted_and_binary_is_not(self):
        self.write_local("notes.txt", b"one\ntwo\n")
        self.connected()
        self.upload("notes.txt", "ascii.txt")
        self.await_names("ascii.txt")
        self.select("Binary")
        self.upload("notes.txt", "binary.txt")
        self.await_names("ascii.txt", "binary.txt")
        self.assertEqual(self.server.read("ascii.txt").replace(b"\r\n", b"\n"), b"one\ntwo\n")
        self.assertEqual(self.server.read("binary.txt"), b"one\ntwo\n")
        self.server.write("dos.txt", b"one\r\ntwo\r\n")
        self.press(self.window, "Refresh File List")
        self.select("Ascii")
        self.download("dos.txt", "dos.txt")
        self.await_status("File has been downloaded from " + self.server.address)
        self.assertEqual(self.read_local("dos.txt"), b"one\ntwo\n")

    def test_an_initial_path_is_gone_to_at_the_connection(self):
        os.makedirs(self.server.path("pub", "new"))
        self.client()
        self.press(self.window, "Initial Path")
        self.prompt("Initial Path", "/pub/new")
        self.connect()
        self.await_status("Current directory is :  /pub/new")
        self.await_box("Remote file", "/pub/new")

    def test_a_wrong_password_is_told_in_the_servers_words_and_can_be_mended(self):
        self.client()
        self.connect(password="wrong-one")
        status = self.await_status_with("( 530)")
        self.assertNotIn("wrong-one", status)
        self.assertFalse(any(self.enabled(button) for button in REMOTE_BUTTONS))
        self.connect()
        self.await_status("Connected to : " + self.server.address)

    def test_what_the_server_refuses_leaves_a_usable_session(self):
        self.server.write("there.txt", b"x")
        self.connected()
        self.enter("Remote file", "not-there.txt")
        self.press(self.window, "   Delete            File")
        self.await_status_with("( 550)")
        self.pick("there.txt")
        self.press(self.window, "   Delete            File")
        self.await_names()

    def test_a_question_answered_with_no_and_an_empty_name_send_nothing(self):
        self.write_local("notes.txt", b"one\n")
        self.connected()
        self.press(self.window, "UpLoad")
        self.answer(self.box("Vandrel", "Please enter remote file name"), "OK")
        self.suite.await_no_window("Vandrel")
        self.pick_local("notes.txt")
        self.enter("Remote file", "notes.txt")
        self.press(self.window, "UpLoad")
        self.answer(self.suite.window(" ", holding_text=" will be upload to "), "No")
        self.press(self.window, "Refresh File List")
        self.await_status("Receiving file list from : " + self.server.address)
        self.await_names()
        self.assertEqual(os.listdir(self.server.root), [])

    def test_a_name_in_another_encoding_is_read_and_comes_back_exactly(self):
        name = "Übersicht.txt".encode("latin-1")
        with open(os.path.join(os.fsencode(self.server.root), name), "wb") as file:
            file.write(b"a b c")
        self.connected()
        self.suite.click(self.window.find(role="list", name="Remote files").find(role="list item"), where=(0.1, 0.5))
        self.await_box("Remote file", "Übersicht.txt")
        self.enter("Local file", "c:\\copy.txt")
        self.press(self.window, " Download        File")
        self.answer(self.suite.window(" ", holding_text="Übersicht.txt will be download"), "Yes")
        self.await_status("File has been downloaded from " + self.server.address)
        self.assertEqual(self.read_local("copy.txt"), b"a b c")
        self.press(self.window, "  Rename           File")
        self.prompt("Rename remote file", "overview.txt")
        self.await_status("Remote File Übersicht.txt rename to overview.txt")
        self.assertEqual(os.listdir(self.server.root), ["overview.txt"])

    def test_the_keyboard_alone_connects_picks_and_downloads(self):
        self.server.write("letter.txt", b"Dear Anna\r\n")
        self.server.write("other.txt", b"Dear Bea\r\n")
        self.write_local("old.txt", b"old")
        self.client()
        self.suite.activate(self.window)
        self.suite.type(self.server.address)
        self.suite.keys("Tab")
        self.suite.type(USER)
        self.suite.keys("Tab")
        self.suite.type(PASSWORD)
        self.suite.keys("Return")
        self.await_status("Connected to : " + self.server.address)
        self.await_names("letter.txt", "other.txt")
        self.suite.keys(*["Tab"] * 7)
        self.await_focus("list", "Remote files")
        self.suite.type("le")
        self.await_box("Remote file", "letter.txt")
        self.suite.keys(*["Tab"] * 9)
        self.await_focus("text", "Local file")
        self.suite.type("c:\\letter.txt")
        self.suite.keys(*["shift+Tab"] * 5)
        self.await_focus("push button", " Download        File")
        self.suite.keys("space")
        question = self.suite.window(" ", holding_text="letter.txt will be download")
        self.suite.await_active(question)
        self.suite.keys("alt+y")
        self.await_status("File has been downloaded from " + self.server.address)
        self.assertEqual(self.read_local("letter.txt"), b"Dear Anna\n")

    def await_focus(self, role, name):
        node = self.window.find(role=role, name=name)

        def has_focus():
            node.forget()
            return node.has("focused")

        self.suite.await_that(has_focus, f'"{name}" to take the keys')

    def test_closing_the_window_in_a_session_ends_it(self):
        self.connected()
        self.suite.close(self.window)
        self.suite.await_no_window("FTP client")
        self.assertTrue(self.suite.runs)

    def test_an_aborted_download_leaves_the_old_file_and_can_be_made_again(self):
        self.serve("--rate", "100000")
        self.server.write("large.bin", bytes(20_000_000))
        self.server.write("small.bin", b"small")
        self.write_local("copy.bin", b"the old one")
        self.connected()
        self.select("Binary")
        self.download("large.bin", "copy.bin")
        self.await_status("Downloading file from : " + self.server.address)
        self.window.find(role="progress bar", name="Transfer")
        self.press(self.window, "A b o r t")
        self.window.await_gone(role="progress bar", name="Transfer")
        self.suite.await_that(lambda: not self.enabled("UpLoad"), "the remote buttons to be disabled")
        self.assertEqual(self.read_local("copy.bin"), b"the old one")
        self.assertEqual([name for name in os.listdir(self.suite.home) if "copy.bin" in name], ["copy.bin"])

        self.connect()
        self.await_status("Connected to : " + self.server.address)
        self.select("Binary")
        self.download("small.bin", "copy.bin")
        self.await_status("File has been downloaded from " + self.server.address)
        self.assertEqual(self.read_local("copy.bin"), b"small")


if __name__ == "__main__":
    unittest.main()
