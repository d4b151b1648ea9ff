"""Two mail servers on loopback for the tests of the whole program: one takes mail, the other hands it out."""

import contextlib
import json
import os
import shutil
import tempfile

from servers import Server, make_certificate

USER, PASSWORD = "vandrel", "s3cret"


class MailServers:
    """Both servers; a context manager. `smtp` and `pop` are what is typed into the server fields."""

    def __enter__(self):
        with contextlib.ExitStack() as stack:
            self.folder = tempfile.mkdtemp(prefix="vandrel-mail-")
            stack.callback(shutil.rmtree, self.folder, ignore_errors=True)
            self.taken, self.mailbox = (os.path.join(self.folder, name) for name in ("taken", "mailbox"))
            os.mkdir(self.taken)
            os.mkdir(self.mailbox)
            self._start(stack)
            self._stack = stack.pop_all()
        return self

    def __exit__(self, *failure):
        self._stack.close()

    def _start(self, stack):
        certificate, key = make_certificate(self.folder)
        taking = Server(os.path.join(self.folder, "smtp.log"), "smtp_server.py", self.taken)
        stack.callback(taking.stop)
        handing = Server(os.path.join(self.folder, "pop.log"), "pop3_server.py", "--mail", self.mailbox,
                         "--certificate", certificate, "--key", key, "--without-stls")
        stack.callback(handing.stop)
        self.smtp = "127.0.0.1:" + taking.await_line("port ")[1]
        self.pop = "127.0.0.1:" + handing.await_line("ready ")[1]

    def envelope(self, number):
        """The envelope of the message taken with that number; None as long as there is none."""
        path = os.path.join(self.taken, f"{number}.json")
        if not os.path.exists(path):
            return None
        with open(path, encoding="utf-8") as file:
            return json.load(file)

    def message(self, number):
        """The octets of the message taken with that number."""
        with open(os.path.join(self.taken, f"{number}.eml"), "rb") as file:
            return file.read()

    def put(self, octets):
        """Puts a message into the mailbox, behind those that are there. The server wants its lines ended as this
        system ends them, and hands them out with CR LF."""
        path = os.path.join(self.mailbox, f"{len(self.mails()) + 1:04}.eml")
        with open(path, "wb") as file:
            file.write(octets.replace(b"\r\n", b"\n"))

    def mails(self):
        """The files of the mailbox, in the order of their numbers."""
        return sorted(os.listdir(self.mailbox))
