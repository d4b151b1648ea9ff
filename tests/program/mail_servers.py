"""Two mail servers on loopback for the tests of the whole program: one takes mail, the other hands it out."""

import contextlib
import json
import os
import shutil
import subprocess
import sys
import tempfile

from session import await_condition

SERVERS = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "servers")
USER, PASSWORD = "vandrel", "s3cret"


class Server:
    """A server of tests/servers in a process of its own, which ends with its standard input."""

    def __init__(self, log, script, *arguments):
        self._log = log
        with open(log, "wb") as output:
            self._process = subprocess.Popen(
                [sys.executable, os.path.join(SERVERS, script), *arguments],
                stdin=subprocess.PIPE, stdout=output, stderr=subprocess.STDOUT)

    def said(self):
        """The lines that it has written so far."""
        with open(self._log, encoding="utf-8", errors="replace") as log:
            return log.read().splitlines()

    def await_line(self, beginning):
        """Waits for a line of that beginning; returns its words."""
        def look():
            if self._process.poll() is not None:
                raise RuntimeError(f"{self._log}: ended with {self._process.returncode}: {self.said()}")
            return next((line.split() for line in self.said() if line.startswith(beginning)), None)

        return await_condition(look, f'"{beginning}" from {self._log}')

    def stop(self):
        self._process.stdin.close()
        try:
            self._process.wait(5)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()


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
        certificate, key = (os.path.join(self.folder, name) for name in ("certificate.pem", "key.pem"))
        subprocess.run(
            ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
             "-days", "2", "-subj", "/CN=localhost", "-keyout", key, "-out", certificate],
            check=True, capture_output=True, timeout=60)
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
