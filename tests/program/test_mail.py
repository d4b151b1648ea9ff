"""Mail, from a letter typed in one window to its text in the other."""

import email
import email.policy
import os
import random
import unittest

from mail_servers import PASSWORD, USER, MailServers
from scenario import Scenario

MAIL_BUTTONS = ("<<", "<", ">", ">>", "Get  Mail", "Delete Mail ", "Mail list ")
PICTURE_NAME = "Grüße aus dem Süden.bin"


def letter(number, lines=1):
    """A plain message as servers keep it."""
    body = "".join(f"Line {line} of letter {number}.\r\n" for line in range(1, lines + 1))
    return (f"From: Bea <bea@example.org>\r\nTo: anna@example.org\r\nSubject: Letter {number}\r\n"
            f"Date: Sat, 21 Nov 2026 08:00:00 +0100\r\n\r\n{body}").encode()


class Mail(Scenario):
    def setUp(self):
        super().setUp()
        self.servers = self.enterContext(MailServers())
        self.panel = self.launcher()

    # Steps.

    def enabled(self, window, button):
        return window.find(role="push button", name=button).has("enabled")

    def confirm(self, title, text):
        """Answers a message box that says exactly that."""
        self.answer(self.box(title, text), "OK")
        self.suite.await_no_window(title, holding=text)

    def sender(self):
        self.open_tool(self.panel, "Internet", "Send e-mail")
        return self.suite.window("Send SMTP mail")

    def reader(self):
        """The reader, logged in."""
        self.open_tool(self.panel, "Internet", "Receive e-mail")
        window = self.suite.window("Read POP mail")
        self.suite.fill(window, {"POP Server Name": self.servers.pop, "Username": USER, "Password": PASSWORD})
        self.press(window, "Connect ")
        return window

    def attach(self, window, name):
        """Adds a file of the home folder through the open dialog."""
        self.press(window, "Add")
        dialog = self.suite.window("Open")
        self.suite.click(dialog.find(role="table cell", name=name))
        self.press(dialog, "Open")
        self.suite.await_no_window("Open")
        window.find(role="list item", name="c:\\" + name)

    def fetch(self, window, button):
        """Presses a button that fetches a message and waits until it is there."""
        self.press(window, button)
        self.confirm("Vandrel", "Mail downloaded !!!")

    def write(self, name, content):
        with open(os.path.join(self.suite.home, name), "wb") as file:
            file.write(content)

    # What mail goes through.

    def test_a_letter_with_attachments_is_sent_fetched_listed_and_deleted(self):
        picture = random.Random(4711).randbytes(3_000_000)
        notes = "Bohnen, Erbsen, Möhren\n".encode()
        self.write(PICTURE_NAME, picture)
        self.write("notes.txt", notes)

        window = self.sender()
        self.suite.fill(window, {
            " Mail Server Domain ": self.servers.smtp, " To ": "bea@example.org, Carl <carl@example.org>",
            " From": "Anna <anna@example.org>", " CC ": "dora@example.org", " Subject": "The harvest",
            " Message": "Dear Bea,\n.\nthe beans are in."})
        self.attach(window, PICTURE_NAME)
        self.attach(window, "notes.txt")
        self.press(window, "Send")
        self.await_text(window, "Connection Status", " Mail has been sent\n", "Diconnected from SMTP server....\n")
        self.await_enabled(window, "Send")

        envelope = self.servers.envelope(1)
        self.assertEqual(envelope["from"], "anna@example.org")
        self.assertEqual(sorted(envelope["to"]), ["bea@example.org", "carl@example.org", "dora@example.org"])
        sent = email.message_from_bytes(self.servers.message(1), policy=email.policy.default)
        self.assertEqual(sent["Subject"], "The harvest")
        self.assertEqual(sent["Cc"], "dora@example.org")
        self.assertEqual(sent.get_body().get_content().splitlines(), ["Dear Bea,", ".", "the beans are in."])
        self.assertEqual([(part.get_filename(), part.get_payload(decode=True)) for part in sent.iter_attachments()],
                         [(PICTURE_NAME, picture), ("notes.txt", notes)])

        self.servers.put(letter(1))
        self.servers.put(self.servers.message(1))
        window = self.reader()
        self.confirm("Vandrel", "You have mail(s) !!")
        self.await_text(window, "You have", "2")
        self.fetch(window, ">")
        self.assertEqual(window.find(role="text", name="Mail No :").text, "2")
        text = self.await_text(window, "Message text", "The harvest", "anna@example.org", "carl@example.org",
                               "dora@example.org", "Dear Bea,\n.\nthe beans are in.", PICTURE_NAME, "notes.txt")
        self.assertNotIn("base64", text)

        self.press(window, "Mail list ")
        box = self.suite.window("Mail listing on POP server", holding_text="Letter 1")
        self.assertTrue(any("The harvest" in node.name for node in box.all()))
        self.answer(box, "OK")
        self.suite.await_no_window("Mail listing on POP server")

        self.press(window, "Delete Mail ")
        self.confirm(" Mail has been deleted ", "Mail no : 2 on POP server has been deleted !")
        self.assertEqual(self.servers.mails(), ["0001.eml", "0002.eml"])
        self.press(window, "Disconnect")
        self.await_enabled(window, "Connect ")
        self.suite.await_that(lambda: self.servers.mails() == ["0001.eml"], "the deletion to become final")
        self.assertFalse(any(self.enabled(window, button) for button in MAIL_BUTTONS))

    def test_a_refused_recipient_is_named_with_the_servers_words(self):
        window = self.sender()
        self.suite.fill(window, {" Mail Server Domain ": self.servers.smtp, " To ": "refused550@example.org",
                                 " From": "anna@example.org", " Subject": "Nobody there", " Message": "Hello"})
        self.press(window, "Send")
        box = self.suite.window("ERROR", holding_text="refused550@example.org")
        self.assertTrue(any("No such user" in node.name for node in box.all()))
        self.answer(box, "OK")
        self.suite.await_no_window("ERROR")
        for button in ("Send", "Add", "Remove"):
            self.await_enabled(window, button)
        self.assertIsNone(self.servers.envelope(1))
        self.assertNotIn(" Mail has been sent", self.await_text(window, "Connection Status"))

    def test_an_attachment_that_has_gone_is_named_before_anything_is_sent(self):
        self.write("gone.txt", b"soon")
        window = self.sender()
        self.suite.fill(window, {" Mail Server Domain ": self.servers.smtp, " To ": "bea@example.org",
                                 " From": "anna@example.org"})
        self.attach(window, "gone.txt")
        os.remove(os.path.join(self.suite.home, "gone.txt"))
        self.press(window, "Send")
        box = self.suite.window("ERROR", holding_text="gone.txt")
        self.answer(box, "OK")
        self.suite.await_no_window("ERROR")
        self.assertIsNone(self.servers.envelope(1))

    def test_both_ends_of_the_mailbox(self):
        for number in (1, 2):
            self.servers.put(letter(number))
        window = self.reader()
        self.confirm("Vandrel", "You have mail(s) !!")
        self.press(window, "<")
        self.confirm("First mail", "This is first mail in your mailbox...")
        self.confirm("Vandrel", "Mail downloaded !!!")
        self.await_text(window, "Message text", "Letter 1")
        self.fetch(window, ">>")
        self.await_text(window, "Message text", "Letter 2")
        self.press(window, ">")
        self.confirm("Last mail", "This is last mail in your mailbox...")
        self.confirm("Vandrel", "Mail downloaded !!!")
        self.suite.focus(window.find(role="text", name="Mail No :"), times=2)
        self.suite.type("abc")
        self.press(window, "Get  Mail")
        self.confirm("Mail not avilable", "Mail number : abc not available in your mailbox...")

    def test_an_empty_mailbox_says_so_and_leaves_nothing_to_press(self):
        window = self.reader()
        self.confirm("Vandrel", "You have not mail !!!")
        self.assertFalse(any(self.enabled(window, button) for button in MAIL_BUTTONS))
        self.press(window, "Disconnect")
        self.await_enabled(window, "Connect ")

    def test_a_wrong_password_is_an_error_that_leaves_another_try(self):
        self.servers.put(letter(1))
        self.open_tool(self.panel, "Internet", "Receive e-mail")
        window = self.suite.window("Read POP mail")
        self.suite.fill(window, {"POP Server Name": self.servers.pop, "Username": USER, "Password": "wrong-one"})
        self.press(window, "Connect ")
        box = self.suite.window(" Error connection occured !!")
        self.assertFalse(any("wrong-one" in node.name for node in box.all()))
        self.answer(box, "OK")
        self.suite.await_no_window(" Error connection occured !!")
        self.await_enabled(window, "Connect ")
        self.assertFalse(any(self.enabled(window, button) for button in MAIL_BUTTONS))
        self.assertNotIn("wrong-one", self.await_text(window, "Connection status"))

    def test_closing_the_reader_deletes_nothing(self):
        self.servers.put(letter(1))
        window = self.reader()
        self.confirm("Vandrel", "You have mail(s) !!")
        self.fetch(window, "<<")
        self.press(window, "Delete Mail ")
        self.confirm(" Mail has been deleted ", "Mail no : 1 on POP server has been deleted !")
        self.suite.close(window)
        self.suite.await_no_window("Read POP mail")
        window = self.reader()
        self.confirm("Vandrel", "You have mail(s) !!")
        self.fetch(window, "<<")
        self.await_text(window, "Message text", "Letter 1")
        self.assertEqual(self.servers.mails(), ["0001.eml"])


if __name__ == "__main__":
    unittest.main()
